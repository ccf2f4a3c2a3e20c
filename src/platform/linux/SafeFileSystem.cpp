#include "platform/SafeFileSystem.h"

#include "platform/MountTable.h"
#include "platform/PlatformWording.h"
#include "platform/Trash.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <random>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <atomic>
#include <vector>

namespace bv {
namespace {

// Faults a test asked for; read on every call, so kept cheap while none is set.
std::atomic<bool> faultsSet{false};
FileSystemFaults faults;

std::string errnoText(int code) { return std::strerror(code); }

TimePoint fromStatxTime(const struct statx_timestamp& t) {
    return TimePoint(std::chrono::duration_cast<TimePoint::duration>(std::chrono::seconds(t.tv_sec) +
                                                                    std::chrono::nanoseconds(t.tv_nsec)));
}

ItemStat fromStatx(const struct statx& sx) {
    ItemStat s;
    s.identity = {makedev(sx.stx_dev_major, sx.stx_dev_minor), sx.stx_ino};
    s.mode = sx.stx_mode;
    s.size = static_cast<std::int64_t>(sx.stx_size);
    s.allocatedBytes = static_cast<std::int64_t>(sx.stx_blocks) * 512;
    if (sx.stx_mask & STATX_MTIME) s.modified = fromStatxTime(sx.stx_mtime);
    s.uid = sx.stx_uid;
    return s;
}

// Opens the path one component at a time, each with O_NOFOLLOW, for kernels without openat2.
int walkNoFollow(const std::string& path) {
    int fd = ::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return -1;
    size_t pos = 1;
    while (pos < path.size()) {
        size_t end = path.find('/', pos);
        if (end == std::string::npos) end = path.size();
        const std::string part = path.substr(pos, end - pos);
        pos = end + 1;
        if (part.empty() || part == ".") continue;
        if (part == "..") {
            ::close(fd);
            errno = EINVAL;
            return -1;
        }
        const int next = ::openat(fd, part.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        const int saved = errno;
        ::close(fd);
        if (next < 0) {
            // O_NOFOLLOW with O_PATH opens a link itself; with O_DIRECTORY a link fails with ENOTDIR.
            errno = saved;
            return -1;
        }
        fd = next;
    }
    // Reopen for reading so the folder can be listed and synced.
    const int readable = ::openat(fd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const int saved = errno;
    ::close(fd);
    errno = saved;
    return readable;
}

bool pathHasLinkComponent(const std::string& path) {
    // Distinguishes "a component is a link" from "a component is a plain file" after ENOTDIR.
    size_t pos = 1;
    std::string prefix;
    while (pos <= path.size()) {
        size_t end = path.find('/', pos);
        if (end == std::string::npos) end = path.size();
        prefix = path.substr(0, end);
        pos = end + 1;
        struct stat st{};
        if (::lstat(prefix.c_str(), &st) != 0) return false;
        if (S_ISLNK(st.st_mode)) return true;
        if (end == path.size()) break;
    }
    return false;
}

std::string randomSuffix() {
    thread_local std::mt19937_64 rng{std::random_device{}()};
    char buf[20];
    std::snprintf(buf, sizeof buf, "%012llx", static_cast<unsigned long long>(rng() & 0xffffffffffffULL));
    return buf;
}

// Removes everything inside the open folder `dirFd` (on `device`), then nothing else.
// Returns 0 or the first errno met; keeps going past failures so as much as possible goes.
int emptyFolder(int dirFd, std::uint64_t device, int depth);

int removeEntryAt(int dirFd, const std::string& name, std::uint64_t device, int depth) {
    std::optional<ItemStat> st;
    try {
        st = statAt(dirFd, name);
    } catch (const FileSystemError& e) {
        return e.code() ? e.code() : EIO;
    }
    if (!st) return 0;
    if (st->identity.device != device) return EXDEV; // a mount point: never descend, never remove
    if (!st->isDirectory()) return ::unlinkat(dirFd, name.c_str(), 0) == 0 ? 0 : errno;
    if (depth > 4096) return ELOOP;
    const UniqueFd child(::openat(dirFd, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!child.valid()) return errno;
    // The folder we opened must be the one we looked at, not something swapped in.
    struct stat cs{};
    if (::fstat(child.get(), &cs) != 0 || cs.st_ino != st->identity.inode || cs.st_dev != device) return ESTALE;
    if (const int inner = emptyFolder(child.get(), device, depth + 1); inner != 0) return inner;
    return ::unlinkat(dirFd, name.c_str(), AT_REMOVEDIR) == 0 ? 0 : errno;
}

int emptyFolder(int dirFd, std::uint64_t device, int depth) {
    const int listFd = ::openat(dirFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (listFd < 0) return errno;
    DIR* dir = ::fdopendir(listFd);
    if (!dir) {
        const int e = errno;
        ::close(listFd);
        return e;
    }
    std::vector<std::string> names;
    while (dirent* d = ::readdir(dir)) {
        if (std::strcmp(d->d_name, ".") == 0 || std::strcmp(d->d_name, "..") == 0) continue;
        names.emplace_back(d->d_name);
    }
    ::closedir(dir);
    int first = 0;
    for (const auto& n : names) {
        const int e = removeEntryAt(dirFd, n, device, depth);
        if (e != 0 && first == 0) first = e;
    }
    return first;
}

std::int64_t sizeBelow(int dirFd, std::uint64_t device, int depth) {
    if (depth > 4096) return 0;
    const int listFd = ::openat(dirFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (listFd < 0) return 0;
    DIR* dir = ::fdopendir(listFd);
    if (!dir) {
        ::close(listFd);
        return 0;
    }
    std::int64_t total = 0;
    while (dirent* d = ::readdir(dir)) {
        if (std::strcmp(d->d_name, ".") == 0 || std::strcmp(d->d_name, "..") == 0) continue;
        std::optional<ItemStat> st;
        try {
            st = statAt(dirFd, d->d_name);
        } catch (const FileSystemError&) {
            continue;
        }
        if (!st || st->identity.device != device) continue;
        total += st->allocatedBytes;
        if (st->isDirectory()) {
            const UniqueFd child(::openat(dirFd, d->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
            if (child.valid()) total += sizeBelow(child.get(), device, depth + 1);
        }
    }
    ::closedir(dir);
    return total;
}

} // namespace

bool ItemStat::isDirectory() const { return S_ISDIR(mode); }
bool ItemStat::isLink() const { return S_ISLNK(mode); }
bool ItemStat::isRegular() const { return S_ISREG(mode); }

UniqueFd& UniqueFd::operator=(UniqueFd&& other) noexcept {
    if (this != &other) {
        if (fd_ >= 0) ::close(fd_);
        fd_ = other.release();
    }
    return *this;
}

UniqueFd::~UniqueFd() {
    if (fd_ >= 0) ::close(fd_);
}

PathParts splitPath(const std::string& absolutePath) {
    std::string p = absolutePath;
    while (p.size() > 1 && p.back() == '/') p.pop_back();
    if (p.empty() || p.front() != '/' || p == "/") return {};
    const auto slash = p.rfind('/');
    return {slash == 0 ? std::string("/") : p.substr(0, slash), p.substr(slash + 1)};
}

std::optional<ItemStat> statAt(int dirFd, const std::string& name) {
    if (faultsSet.load(std::memory_order_acquire) && faults.statError != 0 && name == faults.statErrorName) {
        errno = faults.statError;
        throw FileSystemError(errno, "Couldn’t read “" + name + "”: " + errnoText(errno) + ".");
    }
    struct statx sx{};
    if (::statx(dirFd, name.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
                STATX_TYPE | STATX_MODE | STATX_INO | STATX_SIZE | STATX_BLOCKS | STATX_MTIME | STATX_UID, &sx) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
        throw FileSystemError(errno, "Couldn’t read “" + name + "”: " + errnoText(errno) + ".");
    }
    return fromStatx(sx);
}

std::optional<ItemStat> statNoFollow(const std::string& path) { return statAt(AT_FDCWD, path); }

UniqueFd openDirectoryNoLinks(const std::string& absolutePath) {
    if (absolutePath.empty() || absolutePath.front() != '/')
        throw FileSystemError(EINVAL, "“" + absolutePath + "” is not an absolute path.");
    open_how how{};
    how.flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    long fd = ::syscall(SYS_openat2, AT_FDCWD, absolutePath.c_str(), &how, sizeof how);
    if (fd < 0 && (errno == ENOSYS || errno == E2BIG)) fd = walkNoFollow(absolutePath);
    if (fd >= 0) return UniqueFd(static_cast<int>(fd));
    const int e = errno;
    if (e == ELOOP || (e == ENOTDIR && pathHasLinkComponent(absolutePath)))
        throw ItemChangedError(ItemChangedError::Kind::becameLink, "A folder on the way to “" + absolutePath + "” is now a link.");
    if (e == ENOENT || e == ENOTDIR)
        throw ItemChangedError(ItemChangedError::Kind::missing, "“" + absolutePath + "” is gone.");
    throw FileSystemError(e, "Couldn’t open “" + absolutePath + "”: " + errnoText(e) + ".");
}

PinnedItem pinItem(const std::string& absolutePath, const FileIdentity& expected) {
    const PathParts parts = splitPath(absolutePath);
    if (parts.name.empty() || parts.name == "." || parts.name == "..")
        throw FileSystemError(EINVAL, "“" + absolutePath + "” can’t be moved.");
    PinnedItem item;
    item.parent = openDirectoryNoLinks(parts.parent);
    item.parentPath = parts.parent;
    item.name = parts.name;
    const auto st = statAt(item.parent.get(), item.name);
    if (!st) throw ItemChangedError(ItemChangedError::Kind::missing, "“" + absolutePath + "” is gone.");
    if (st->isLink()) throw ItemChangedError(ItemChangedError::Kind::becameLink, "“" + absolutePath + "” is now a link.");
    if (st->identity != expected)
        throw ItemChangedError(ItemChangedError::Kind::replaced, "“" + absolutePath + "” was replaced by another item.");
    item.stat = *st;
    return item;
}

void setFileSystemFaults(const FileSystemFaults& wanted) {
    faults = wanted;
    faultsSet.store(wanted.renameError != 0 || wanted.statError != 0, std::memory_order_release);
}

[[noreturn]] void throwNoSafeRename(const std::string& path) {
    const auto mount = MountTable::containing(MountTable::read(), path);
    const std::string drive = mount ? MountTable::displayName(*mount) : std::string();
    throw FileSystemError(EINVAL, noSafeMoveWording(drive));
}

int renameNoReplace(int fromDir, const std::string& fromName, int toDir, const std::string& toName) {
    if (faultsSet.load(std::memory_order_acquire) && faults.renameError != 0) return faults.renameError;
    return ::renameat2(fromDir, fromName.c_str(), toDir, toName.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
}

void removePinnedItem(PinnedItem& item) {
    const std::string shown = item.parentPath + (item.parentPath == "/" ? "" : "/") + item.name;
    // A private staging folder beside the item: the rename into it cannot cross file systems,
    // and once the item is inside, nobody else's rename can swap it back under our feet.
    std::string stagingName;
    for (int attempt = 0; attempt < 16 && stagingName.empty(); ++attempt) {
        const std::string candidate = ".brimvale-removing-" + randomSuffix();
        if (::mkdirat(item.parent.get(), candidate.c_str(), 0700) == 0) stagingName = candidate;
        else if (errno != EEXIST)
            throw FileSystemError(errno, "Couldn’t remove “" + shown + "”: " + errnoText(errno) + ".");
    }
    if (stagingName.empty()) throw FileSystemError(EEXIST, "Couldn’t remove “" + shown + "”.");
    const int stagingFd = ::openat(item.parent.get(), stagingName.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (stagingFd < 0) {
        const int e = errno;
        ::unlinkat(item.parent.get(), stagingName.c_str(), AT_REMOVEDIR);
        throw FileSystemError(e, "Couldn’t remove “" + shown + "”: " + errnoText(e) + ".");
    }
    UniqueFd staging(stagingFd);
    auto dropStaging = [&] { ::unlinkat(item.parent.get(), stagingName.c_str(), AT_REMOVEDIR); };

    if (const int e = renameNoReplace(item.parent.get(), item.name, staging.get(), item.name); e != 0) {
        dropStaging();
        if (e == ENOENT) throw ItemChangedError(ItemChangedError::Kind::missing, "“" + shown + "” is gone.");
        if (e == EINVAL) throwNoSafeRename(shown); // the drive can't rename without replacing
        throw FileSystemError(e, "Couldn’t remove “" + shown + "”: " + errnoText(e) + ".");
    }
    std::optional<ItemStat> landed;
    try {
        landed = statAt(staging.get(), item.name);
    } catch (const FileSystemError&) {
        // Can't tell what landed: it goes back untouched rather than stay hidden here.
        if (renameNoReplace(staging.get(), item.name, item.parent.get(), item.name) == 0) dropStaging();
        throw;
    }
    if (!landed || landed->identity != item.stat.identity) {
        // Someone swapped the entry between our check and the rename: give it back untouched.
        bool back = false;
        for (int attempt = 0; attempt < 50 && !back; ++attempt) {
            back = renameNoReplace(staging.get(), item.name, item.parent.get(), item.name) == 0;
            if (!back) ::usleep(200);
        }
        if (!back && landed) {
            // Its name is taken again: rather than leave it hidden in the staging folder, it
            // goes to the Trash with a record of where it came from, where it can be put back.
            PinnedItem stranger{UniqueFd(::dup(staging.get())), item.parentPath, item.name, *landed};
            try {
                (void)Trash::moveToTrash(stranger, Clock::now());
                back = true;
            } catch (const std::exception&) {
            }
        }
        if (back) dropStaging();
        throw ItemChangedError(ItemChangedError::Kind::replaced, "“" + shown + "” was replaced by another item.");
    }
    int e = 0;
    try {
        e = removeEntryAt(staging.get(), item.name, item.stat.identity.device, 0);
    } catch (const std::exception&) {
        e = EIO; // whatever the walk met, the item must not stay hidden in the staging folder
    }
    if (e != 0) {
        // What could not go returns under its own name when that is still free.
        if (renameNoReplace(staging.get(), item.name, item.parent.get(), item.name) == 0) dropStaging();
        throw FileSystemError(e, "Couldn’t remove everything in “" + shown + "”: " + errnoText(e) + ".");
    }
    dropStaging();
    ::fsync(item.parent.get());
}

std::int64_t allocatedSizeAt(int dirFd, const std::string& name) {
    std::optional<ItemStat> st;
    try {
        st = statAt(dirFd, name);
    } catch (const FileSystemError&) {
        return 0;
    }
    if (!st) return 0;
    std::int64_t total = st->allocatedBytes;
    if (st->isDirectory()) {
        const UniqueFd child(::openat(dirFd, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (child.valid()) total += sizeBelow(child.get(), st->identity.device, 1);
    }
    return total;
}

} // namespace bv
