#include "restore/PutBack.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "clean/Cleaner.h"
#include "foundation/ByteText.h"
#include "platform/SafeFileSystem.h"
#include "platform/Trash.h"
#include "restore/TrashRecord.h"

namespace bv {
namespace {

std::string joined(const std::string& dir, const std::string& name) { return dir == "/" ? "/" + name : dir + "/" + name; }
std::string quoted(const std::string& s) { return "\u201c" + s + "\u201d"; }

struct OpenedFolder {
    UniqueFd fd;
    std::optional<std::string> remade; // the first folder on the way that was missing and made
};

// Opens `folder` one name at a time from the root, never following a link, and makes each
// name that is missing. A link or a file where a folder should be refuses the put-back.
OpenedFolder openOrMakeFolder(const std::string& folder) {
    OpenedFolder out;
    out.fd = UniqueFd(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!out.fd.valid()) throw FileSystemError(errno, "Couldn’t open the root folder.");
    std::string sofar = "/";
    std::size_t pos = 1;
    while (pos < folder.size()) {
        std::size_t end = folder.find('/', pos);
        if (end == std::string::npos) end = folder.size();
        const std::string name = folder.substr(pos, end - pos);
        pos = end + 1;
        if (name.empty()) continue;
        const std::string here = joined(sofar, name);
        int fd = ::openat(out.fd.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0 && errno == ENOENT) {
            if (::mkdirat(out.fd.get(), name.c_str(), 0755) == 0) {
                if (!out.remade) out.remade = here;
            } else if (errno != EEXIST) {
                throw FileSystemError(errno, "Couldn’t make the folder " + quoted(here) + " again: " + std::strerror(errno) + ".");
            }
            fd = ::openat(out.fd.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        }
        if (fd < 0) {
            const int e = errno;
            if (e == ELOOP || e == ENOTDIR) {
                const auto st = statAt(out.fd.get(), name);
                if (st && st->isLink())
                    throw PutBack::Refusal(quoted(here) + " is a link now, so it stayed in the Trash.");
                throw PutBack::Refusal(quoted(here) + " is no longer a folder, so it stayed in the Trash.");
            }
            if (e == ENOENT) throw PutBack::Refusal(quoted(here) + " changed just now, so it stayed in the Trash.");
            throw FileSystemError(e, "Couldn’t open " + quoted(here) + ": " + std::strerror(e) + ".");
        }
        out.fd = UniqueFd(fd);
        sofar = here;
    }
    return out;
}

} // namespace

std::string PutBack::titleFor(const std::string& name, std::int64_t bytes) {
    return "Put back " + name + " \u00b7 " + byteText(bytes);
}

std::string PutBack::nameTakenText(const std::string& name) {
    return "Something named " + quoted(name) + " is already there, so it stayed in the Trash.";
}

std::map<Uuid, PutBack::State> PutBack::states(const std::vector<ActionLogEntry>& log) {
    std::set<Uuid> undone;
    for (const auto& e : log)
        if (e.putBackOf) undone.insert(*e.putBackOf);
    std::map<Uuid, State> out;
    for (const auto& e : log) {
        if (!TrashRecord::landingOf(e)) continue;
        if (undone.count(e.id)) out[e.id] = State::putBack;
        else out[e.id] = TrashRecord::find(e) ? State::available : State::notInTrash;
    }
    return out;
}

PutBack::State PutBack::stateOf(const ActionLogEntry& entry, const std::vector<ActionLogEntry>& log) {
    if (!TrashRecord::landingOf(entry)) return State::none;
    for (const auto& e : log)
        if (e.putBackOf == entry.id) return State::putBack;
    return TrashRecord::find(entry) ? State::available : State::notInTrash;
}

PutBack::Outcome PutBack::putBack(const ActionLogEntry& entry, const std::string& home) const {
    auto found = TrashRecord::find(entry);
    const std::string sourceName = splitPath(entry.sourcePath).name;
    if (!found) throw Refusal(quoted(sourceName) + " is no longer in the Trash.");
    TrashRecord& r = *found;
    const PathParts dest = splitPath(r.originalPath);
    if (dest.name.empty()) throw Refusal(quoted(sourceName) + " is no longer in the Trash.");

    OpenedFolder parent = openOrMakeFolder(dest.parent);
    const std::string taken = nameTakenText(dest.name);
    if (statAt(parent.fd.get(), dest.name)) throw Refusal(taken);
    if (env_.beforeMove) env_.beforeMove();

    // The move itself: from the held files/ folder into the held destination folder, never
    // over anything that appeared there meanwhile.
    const int e = renameNoReplace(r.files.get(), r.trashName, parent.fd.get(), dest.name);
    if (e == EEXIST || e == ENOTEMPTY) throw Refusal(taken);
    if (e == ENOENT) {
        if (statAt(r.files.get(), r.trashName)) throw Refusal(quoted(dest.parent) + " changed just now, so it stayed in the Trash.");
        throw Refusal(quoted(sourceName) + " is no longer in the Trash.");
    }
    if (e == EXDEV) throw Refusal(quoted(dest.parent) + " is on another drive now, so it stayed in the Trash.");
    if (e == EINVAL) throwNoSafeRename(r.originalPath);
    if (e != 0) throw FileSystemError(e, "Couldn’t put back " + quoted(dest.name) + ": " + std::strerror(e) + ".");

    // Is what came back the item that was found? A stranger that took the Trash name in
    // between goes straight back where it was.
    std::optional<ItemStat> landed;
    try {
        landed = statAt(parent.fd.get(), dest.name);
    } catch (const FileSystemError&) {
    }
    if (!landed || landed->identity != r.stat.identity) {
        if (landed) (void)renameNoReplace(parent.fd.get(), dest.name, r.files.get(), r.trashName);
        throw Refusal(quoted(dest.name) + " changed in the Trash, so it was left there.");
    }
    ::unlinkat(r.info.get(), r.infoName.c_str(), 0);
    ::fsync(r.info.get());
    ::fsync(r.files.get());
    ::fsync(parent.fd.get());
    if (landed->isDirectory()) Trash::forgetDirectorySize(r.folder.get(), r.files.get(), r.trashName);

    Outcome out;
    out.remadeFolder = parent.remade;
    const std::int64_t bytes = std::max<std::int64_t>(0, entry.bytesReclaimed);
    ActionLogEntry& log = out.log;
    log.id = Uuid::generate();
    log.date = env_.now();
    log.title = titleFor(dest.name, bytes);
    log.subtitle = pathForPeople(r.originalPath, home) + " \u00b7 " + byteText(bytes) + " \u00b7 Back from the Trash";
    if (parent.remade) log.subtitle += "; " + pathForPeople(*parent.remade, home) + " was made again";
    log.symbolName = kSymbol;
    log.bytesReclaimed = -bytes; // no longer freed: the week's total and the lifetime figure drop by it
    log.sourcePath = joined(joined(r.trashFolder, "files"), r.trashName);
    log.destinationPath = r.originalPath;
    log.putBackOf = entry.id;
    return out;
}

} // namespace bv
