#include "platform/Trash.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <random>
#include <sstream>

#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"

namespace bv {
namespace {

constexpr std::string_view kInfoSuffix = ".trashinfo";
constexpr int kMaxAttempts = 10000;

std::string errnoText(int code) { return std::strerror(code); }

std::string joinPath(const std::string& dir, const std::string& name) {
    return dir == "/" ? "/" + name : dir + "/" + name;
}

// One opened trash folder: the folder itself, its info/ and files/, all held open so
// everything after the choice happens relative to these handles.
struct TrashFolder {
    std::string path;
    UniqueFd folder;
    UniqueFd info;
    UniqueFd files;
    std::string topdir; // empty for the home trash
};

UniqueFd openSubfolder(int parent, const char* name, bool create) {
    if (create && ::mkdirat(parent, name, 0700) != 0 && errno != EEXIST) return UniqueFd();
    return UniqueFd(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool fillInfoAndFiles(TrashFolder& t) {
    t.info = openSubfolder(t.folder.get(), "info", true);
    t.files = openSubfolder(t.folder.get(), "files", true);
    return t.info.valid() && t.files.valid();
}

std::uint64_t deviceOf(int fd) {
    struct stat st{};
    return ::fstat(fd, &st) == 0 ? st.st_dev : 0;
}

TrashFolder openHomeTrash() {
    const std::string dataHome = XdgPaths::dataHome();
    if (!makeDirectories(dataHome, 0700))
        throw FileSystemError(errno, "Couldn’t make the folder “" + dataHome + "” for the Trash.");
    TrashFolder t;
    t.path = joinPath(dataHome, "Trash");
    const UniqueFd base(::open(dataHome.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!base.valid()) throw FileSystemError(errno, "Couldn’t open “" + dataHome + "”: " + errnoText(errno) + ".");
    if (::mkdirat(base.get(), "Trash", 0700) != 0 && errno != EEXIST)
        throw FileSystemError(errno, "Couldn’t make the Trash in “" + dataHome + "”: " + errnoText(errno) + ".");
    // The home trash may be a link the user set up on purpose; it is theirs, so it is followed.
    t.folder = UniqueFd(::openat(base.get(), "Trash", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!t.folder.valid() || !fillInfoAndFiles(t))
        throw FileSystemError(errno, "Couldn’t open the Trash in “" + t.path + "”: " + errnoText(errno) + ".");
    return t;
}

// The highest folder on the way to `parentPath` that lies on `device`: the top of the
// mounted file system that holds the item (a bind mount counts as its own top).
std::string topdirFor(const std::string& parentPath, std::uint64_t device) {
    std::string prefix = "/";
    size_t pos = 1;
    for (;;) {
        struct stat st{};
        if (::lstat(prefix.c_str(), &st) == 0 && st.st_dev == device) return prefix;
        if (pos > parentPath.size()) break;
        size_t end = parentPath.find('/', pos);
        if (end == std::string::npos) end = parentPath.size();
        prefix = parentPath.substr(0, end);
        pos = end + 1;
    }
    return parentPath;
}

bool usableOwnFolder(int fd, std::uint64_t device, uid_t uid) {
    struct stat st{};
    return fd >= 0 && ::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode) && st.st_dev == device && st.st_uid == uid;
}

TrashFolder openTopdirTrash(const std::string& parentPath, std::uint64_t device) {
    const uid_t uid = ::getuid();
    const std::string uidText = std::to_string(uid);
    TrashFolder t;
    t.topdir = topdirFor(parentPath, device);
    const UniqueFd top = openDirectoryNoLinks(t.topdir);

    // $topdir/.Trash/$uid, only when .Trash is a real folder (O_NOFOLLOW) with the sticky bit.
    if (UniqueFd shared(::openat(top.get(), ".Trash", O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)); shared.valid()) {
        struct stat st{};
        if (::fstat(shared.get(), &st) == 0 && (st.st_mode & S_ISVTX) && st.st_dev == device) {
            t.folder = openSubfolder(shared.get(), uidText.c_str(), true);
            if (usableOwnFolder(t.folder.get(), device, uid) && fillInfoAndFiles(t)) {
                t.path = joinPath(joinPath(t.topdir, ".Trash"), uidText);
                return t;
            }
        }
    }
    // Else $topdir/.Trash-$uid, made 0700 and owned by us.
    const std::string own = ".Trash-" + uidText;
    t.folder = openSubfolder(top.get(), own.c_str(), true);
    if (usableOwnFolder(t.folder.get(), device, uid) && fillInfoAndFiles(t)) {
        t.path = joinPath(t.topdir, own);
        return t;
    }
    throw FileSystemError(errno ? errno : EACCES, "There is no usable Trash on the drive that holds “" + parentPath + "”.");
}

TrashFolder trashFor(const PinnedItem& item) {
    TrashFolder home = openHomeTrash();
    const std::uint64_t device = item.stat.identity.device;
    if (deviceOf(home.files.get()) == device) return home;
    return openTopdirTrash(item.parentPath, device);
}

// Returns a stranger that was moved by mistake to the name it came from. Whoever swapped it
// in may hold that name for an instant, so a few short retries are worth it.
bool putBack(int fromDir, const std::string& fromName, int toDir, const std::string& toName) {
    for (int attempt = 0; attempt < 50; ++attempt) {
        const int e = renameNoReplace(fromDir, fromName, toDir, toName);
        if (e == 0) return true;
        if (e != EEXIST && e != ENOTEMPTY) return false;
        ::usleep(200);
    }
    return false;
}

bool writeAll(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t n = ::write(fd, text.data(), text.size());
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        text.remove_prefix(static_cast<size_t>(n));
    }
    return true;
}

// Rewrites the folder size cache: drops lines for names no longer in files/ (and for
// `trashName`), then adds `addedLine` when there is one. The cache is advisory, so a failure
// here is not an error.
void rewriteDirectorySizes(int folderFd, int filesFd, const std::string& trashName, const std::string& addedLine) {
    std::string kept;
    if (const UniqueFd old(::openat(folderFd, "directorysizes", O_RDONLY | O_NOFOLLOW | O_CLOEXEC)); old.valid()) {
        std::string text;
        char buf[8192];
        ssize_t n;
        while ((n = ::read(old.get(), buf, sizeof buf)) > 0) text.append(buf, static_cast<size_t>(n));
        std::istringstream lines(text);
        std::string line;
        while (std::getline(lines, line)) {
            const auto a = line.find(' ');
            const auto b = a == std::string::npos ? a : line.find(' ', a + 1);
            if (b == std::string::npos) continue;
            const std::string name = Trash::percentDecode(line.substr(b + 1));
            if (name == trashName || name.empty() || name.find('/') != std::string::npos) continue;
            struct stat st{};
            if (::fstatat(filesFd, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) continue;
            kept += line + "\n";
        }
    }
    kept += addedLine;

    thread_local std::mt19937_64 rng{std::random_device{}()};
    const std::string tmp = "directorysizes.tmp-" + std::to_string(::getpid()) + "-" + std::to_string(rng() % 1000000000);
    const int fd = ::openat(folderFd, tmp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) return;
    const bool ok = writeAll(fd, kept) && ::fsync(fd) == 0;
    ::close(fd);
    if (!ok || ::renameat(folderFd, tmp.c_str(), folderFd, "directorysizes") != 0) ::unlinkat(folderFd, tmp.c_str(), 0);
}

// Adds the line for the folder just trashed.
void updateDirectorySizes(const TrashFolder& t, const std::string& trashName, const std::string& infoName) {
    struct stat infoSt{};
    if (::fstatat(t.info.get(), infoName.c_str(), &infoSt, AT_SYMLINK_NOFOLLOW) != 0) return;
    const std::int64_t size = allocatedSizeAt(t.files.get(), trashName);
    rewriteDirectorySizes(t.folder.get(), t.files.get(), trashName,
                          std::to_string(size) + " " + std::to_string(static_cast<long long>(infoSt.st_mtime)) + " " +
                              Trash::percentEncode(trashName) + "\n");
}

} // namespace

std::string Trash::percentEncode(std::string_view bytes) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(bytes.size());
    for (const char c : bytes) {
        const auto u = static_cast<unsigned char>(c);
        const bool plain = (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') || (u >= '0' && u <= '9') || u == '-' ||
                           u == '_' || u == '.' || u == '~' || u == '/';
        if (plain) {
            out += c;
        } else {
            out += '%';
            out += hex[u >> 4];
            out += hex[u & 15];
        }
    }
    return out;
}

std::string Trash::percentDecode(std::string_view text) {
    auto value = [](char c) -> int {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    };
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && value(text[i + 1]) >= 0 && value(text[i + 2]) >= 0) {
            out += static_cast<char>(value(text[i + 1]) * 16 + value(text[i + 2]));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string Trash::deletionDateText(TimePoint t) {
    const std::time_t secs = Clock::to_time_t(t);
    std::tm local{};
    ::localtime_r(&secs, &local);
    char buf[32];
    std::strftime(buf, sizeof buf, "%Y-%m-%dT%H:%M:%S", &local);
    return buf;
}

std::string Trash::infoText(std::string_view pathValue, TimePoint deletedAt) {
    std::string text = "[Trash Info]\nPath=";
    text += pathValue;
    text += "\nDeletionDate=" + deletionDateText(deletedAt) + "\n";
    return text;
}

std::string Trash::candidateName(const std::string& name, int n, std::size_t maxBytes) {
    // Keep a short extension so the copy still opens with the right program.
    std::string stem = name;
    std::string ext;
    if (const auto dot = name.rfind('.'); dot != std::string::npos && dot > 0 && name.size() - dot <= 16) {
        stem = name.substr(0, dot);
        ext = name.substr(dot);
    }
    const std::string suffix = (n <= 1 ? std::string() : "." + std::to_string(n)) + ext;
    if (stem.size() + suffix.size() <= maxBytes) return stem + suffix;
    size_t cut = maxBytes > suffix.size() ? maxBytes - suffix.size() : 1;
    if (cut > stem.size()) cut = stem.size();
    // Never end inside a multi-byte character: step back over continuation bytes.
    while (cut > 1 && (static_cast<unsigned char>(stem[cut]) & 0xC0) == 0x80) --cut;
    return stem.substr(0, cut) + suffix;
}

std::string Trash::homeTrashFolder() { return openHomeTrash().path; }

void Trash::forgetDirectorySize(int trashFolderFd, int filesFd, const std::string& trashName) {
    rewriteDirectorySizes(trashFolderFd, filesFd, trashName, std::string());
}

Trash::Landing Trash::moveToTrash(const std::string& absolutePath, TimePoint now) {
    const auto st = statNoFollow(absolutePath);
    if (!st) throw ItemChangedError(ItemChangedError::Kind::missing, "“" + absolutePath + "” is gone.");
    PinnedItem item = pinItem(absolutePath, st->identity);
    return moveToTrash(item, now);
}

Trash::Landing Trash::moveToTrash(PinnedItem& item, TimePoint now) {
    const std::string original = joinPath(item.parentPath, item.name);
    TrashFolder trash = trashFor(item);

    std::string pathValue;
    if (trash.topdir.empty()) {
        pathValue = percentEncode(original);
    } else {
        const std::string rel = trash.topdir == "/" ? original.substr(1) : original.substr(trash.topdir.size() + 1);
        pathValue = percentEncode(rel);
    }
    const std::string info = infoText(pathValue, now);
    const size_t maxBytes = NAME_MAX - kInfoSuffix.size();

    for (int n = 1; n <= kMaxAttempts; ++n) {
        const std::string trashName = candidateName(item.name, n, maxBytes);
        const std::string infoName = trashName + std::string(kInfoSuffix);
        const int fd = ::openat(trash.info.get(), infoName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST) continue;
            throw FileSystemError(errno, "Couldn’t write the Trash record for “" + original + "”: " + errnoText(errno) + ".");
        }
        const bool written = writeAll(fd, info) && ::fsync(fd) == 0;
        const int writeErr = errno;
        ::close(fd);
        auto dropInfo = [&] {
            ::unlinkat(trash.info.get(), infoName.c_str(), 0);
            ::fsync(trash.info.get());
        };
        if (!written) {
            dropInfo();
            throw FileSystemError(writeErr, "Couldn’t write the Trash record for “" + original + "”: " + errnoText(writeErr) + ".");
        }
        ::fsync(trash.info.get());

        const int e = renameNoReplace(item.parent.get(), item.name, trash.files.get(), trashName);
        if (e == EEXIST || e == ENOTEMPTY) { // files/ holds a leftover under that name: try the next one
            dropInfo();
            continue;
        }
        if (e != 0) {
            dropInfo();
            if (e == ENOENT) throw ItemChangedError(ItemChangedError::Kind::missing, "“" + original + "” is gone.");
            if (e == EXDEV)
                throw FileSystemError(e, "“" + original + "” is on another drive than its Trash, so it was not moved.");
            if (e == EINVAL) throwNoSafeRename(original);
            throw FileSystemError(e, "Couldn’t move “" + original + "” to the Trash: " + errnoText(e) + ".");
        }

        // Is what landed the object that was checked? If not, it goes straight back.
        std::optional<ItemStat> landed;
        try {
            landed = statAt(trash.files.get(), trashName);
        } catch (const FileSystemError&) {
        }
        if (!landed || landed->identity != item.stat.identity) {
            if (putBack(trash.files.get(), trashName, item.parent.get(), item.name)) {
                dropInfo();
                throw ItemChangedError(ItemChangedError::Kind::replaced,
                                       "“" + original + "” was replaced by another item, which was left where it was.");
            }
            // Its old name is taken again: it stays in the Trash with its record, so it can be put back.
            throw ItemChangedError(ItemChangedError::Kind::replaced, "“" + original +
                                   "” was replaced by another item while it was being moved; that item is in the Trash.");
        }
        ::fsync(trash.files.get());
        ::fsync(item.parent.get());
        if (landed->isDirectory()) updateDirectorySizes(trash, trashName, infoName);
        return {joinPath(joinPath(trash.path, "files"), trashName), joinPath(joinPath(trash.path, "info"), infoName), trash.path};
    }
    throw FileSystemError(EEXIST, "Couldn’t find a free name in the Trash for “" + original + "”.");
}

} // namespace bv
