#include "restore/TrashRecord.h"

#include <fcntl.h>
#include <unistd.h>

#include <sstream>

#include "clean/DevCacheCatalog.h"
#include "platform/Trash.h"
#include "platform/XdgPaths.h"

namespace bv {
namespace {

std::string joined(const std::string& dir, const std::string& name) { return dir == "/" ? "/" + name : dir + "/" + name; }

std::string readAllAt(int dirFd, const std::string& name) {
    const UniqueFd fd(::openat(dirFd, name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    std::string text;
    if (!fd.valid()) return text;
    char buf[4096];
    ssize_t n;
    // A record is a few lines; anything far larger is not one.
    while ((n = ::read(fd.get(), buf, sizeof buf)) > 0 && text.size() < 65536) text.append(buf, static_cast<size_t>(n));
    return text;
}

// The trash folder, opened without following links, except the home Trash, which may be a
// link the user set up on purpose (the Trash itself follows it too).
UniqueFd openTrashFolder(const std::string& path) {
    try {
        return openDirectoryNoLinks(path);
    } catch (const ItemChangedError& e) {
        if (e.kind() != ItemChangedError::Kind::becameLink || path != joined(XdgPaths::dataHome(), "Trash")) throw;
    }
    return UniqueFd(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

UniqueFd openSub(int parent, const char* name) {
    return UniqueFd(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// The top of the drive a drive's own Trash serves: the folder holding .Trash-$uid, or the one
// holding .Trash/$uid.
std::string topdirOf(const std::string& trashFolder) {
    const PathParts p = splitPath(trashFolder);
    if (p.name.rfind(".Trash-", 0) == 0) return p.parent;
    const PathParts up = splitPath(p.parent);
    return up.name == ".Trash" ? up.parent : p.parent;
}

} // namespace

std::optional<std::string> TrashRecord::landingOf(const ActionLogEntry& entry) {
    if (entry.putBackOf) return std::nullopt;
    if (entry.trashedPath) return entry.trashedPath;
    if (!entry.destinationPath) return std::nullopt;
    const PathParts item = splitPath(*entry.destinationPath);
    const PathParts files = splitPath(item.parent);
    if (files.name != "files" || item.name.empty()) return std::nullopt;
    try {
        // A Trash keeps info/ beside files/; the item's own record may be gone by now.
        const auto info = statNoFollow(joined(files.parent, "info"));
        if (!info || !info->isDirectory()) return std::nullopt;
    } catch (const FileSystemError&) {
        return std::nullopt; // an unreadable folder: no Trash History can use
    }
    return entry.destinationPath;
}

std::optional<std::string> TrashRecord::pathInInfo(const std::string& infoText) {
    std::istringstream lines(infoText);
    std::string line;
    bool inGroup = false;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty() && line.front() == '[') {
            inGroup = line == "[Trash Info]";
            continue;
        }
        if (inGroup && line.rfind("Path=", 0) == 0) {
            std::string path = Trash::percentDecode(line.substr(5));
            if (path.empty()) return std::nullopt;
            return path;
        }
    }
    return std::nullopt;
}

std::optional<TrashRecord> TrashRecord::find(const ActionLogEntry& entry) {
    const auto landing = landingOf(entry);
    if (!landing) return std::nullopt;
    const PathParts item = splitPath(*landing);
    const PathParts files = splitPath(item.parent);
    if (item.name.empty() || files.name != "files") return std::nullopt;

    TrashRecord r;
    r.trashFolder = files.parent;
    r.trashName = item.name;
    r.infoName = item.name + ".trashinfo";
    try {
        r.folder = openTrashFolder(r.trashFolder);
    } catch (const std::exception&) {
        return std::nullopt; // the drive is gone or the folder is no longer a Trash
    }
    if (!r.folder.valid()) return std::nullopt;
    r.files = openSub(r.folder.get(), "files");
    r.info = openSub(r.folder.get(), "info");
    if (!r.files.valid() || !r.info.valid()) return std::nullopt;

    auto path = pathInInfo(readAllAt(r.info.get(), r.infoName));
    if (!path) return std::nullopt;
    if (path->front() != '/') *path = joined(topdirOf(r.trashFolder), *path);
    r.originalPath = DevCacheCatalog::standardizedPath(*path);
    const std::string source = DevCacheCatalog::standardizedPath(entry.sourcePath);
    // The Cleaner records the path it was given; the Trash, the path with links resolved.
    // The name is the same either way; a landing History did not record must match whole.
    if (splitPath(r.originalPath).name != splitPath(source).name) return std::nullopt;
    if (!entry.trashedPath && r.originalPath != source) return std::nullopt;

    try {
        const auto st = statAt(r.files.get(), r.trashName);
        if (!st) return std::nullopt;
        r.stat = *st;
    } catch (const FileSystemError&) {
        return std::nullopt;
    }
    return r;
}

} // namespace bv
