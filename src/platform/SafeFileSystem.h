#pragma once
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/Dates.h"
#include "platform/FileSystemError.h"

namespace bv {

// Which object a directory entry names: the pair stays the same for the life of the
// object, so it tells "the item I checked" from "another item under the same name".
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// What statx says about one directory entry, never following a link.
struct ItemStat {
    FileIdentity identity;
    std::uint32_t mode = 0;           // type and permission bits
    std::int64_t size = 0;            // logical size
    std::int64_t allocatedBytes = 0;  // blocks * 512
    std::optional<TimePoint> modified;
    std::uint32_t uid = 0;

    [[nodiscard]] bool isDirectory() const;
    [[nodiscard]] bool isLink() const;
    [[nodiscard]] bool isRegular() const;
};

// An owned file descriptor, closed when it goes out of scope.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept;
    ~UniqueFd();
    [[nodiscard]] int get() const noexcept { return fd_; }
    [[nodiscard]] bool valid() const noexcept { return fd_ >= 0; }
    int release() noexcept {
        const int f = fd_;
        fd_ = -1;
        return f;
    }

private:
    int fd_ = -1;
};

// Splits an absolute path into its parent folder and last name ("/a/b" -> "/a", "b";
// "/a" -> "/", "a"). Empty name for "/" or a relative path.
struct PathParts {
    std::string parent;
    std::string name;
};
[[nodiscard]] PathParts splitPath(const std::string& absolutePath);

// The entry `name` in the folder `dirFd`, not following a link. Empty when nothing is
// there; throws FileSystemError for any other failure (permission, I/O).
[[nodiscard]] std::optional<ItemStat> statAt(int dirFd, const std::string& name);
// The same for an absolute path (the last component is never followed).
[[nodiscard]] std::optional<ItemStat> statNoFollow(const std::string& path);

// Opens the folder at an absolute path without following any symbolic link on the way
// (openat2 with RESOLVE_NO_SYMLINKS, else a walk that opens one component at a time with
// O_NOFOLLOW). A link anywhere in the path throws ItemChangedError(becameLink); a missing
// component ItemChangedError(missing); other failures FileSystemError.
[[nodiscard]] UniqueFd openDirectoryNoLinks(const std::string& absolutePath);

// The item an operation is about to change, pinned: its parent folder is held open (reached
// without links) and the entry was checked to be the object the caller saw earlier.
struct PinnedItem {
    UniqueFd parent;
    std::string parentPath;
    std::string name;
    ItemStat stat;
};

// Pins the item at `absolutePath`. Throws ItemChangedError when it is missing, is now a
// link, or its identity differs from `expected`; FileSystemError for other failures.
[[nodiscard]] PinnedItem pinItem(const std::string& absolutePath, const FileIdentity& expected);

// Removes a pinned item for good. The item is first renamed into a private staging folder
// made beside it (so on the same file system), its identity is checked there (a stranger
// is put back and ItemChangedError thrown), and then it is removed with calls relative to
// open folders that never follow a link and never descend into another file system. Throws
// FileSystemError when something could not be removed; what is left then goes back under
// its own name when that name is still free.
void removePinnedItem(PinnedItem& item);

// Allocated bytes of the entry and everything below it (du -B1), not following links and
// not crossing into other file systems. Unreadable parts count as nothing.
[[nodiscard]] std::int64_t allocatedSizeAt(int dirFd, const std::string& name);

// Renames with RENAME_NOREPLACE; returns 0 or the errno value. EINVAL means the file system
// can't rename without the risk of replacing (NFS, sshfs, some FUSE drives): callers refuse
// with throwNoSafeRename and never fall back to a plain rename.
[[nodiscard]] int renameNoReplace(int fromDir, const std::string& fromName, int toDir, const std::string& toName);

// Throws FileSystemError(EINVAL) with the sentence that names the drive holding `path` and
// says nothing was moved.
[[noreturn]] void throwNoSafeRename(const std::string& path);

// Faults for tests, where a file system that shows them (FUSE, NFS, a failing disk) can't
// run: every renameNoReplace fails with `renameError`, and statAt of an entry named
// `statErrorName` fails with `statError`. Zero turns a fault off. Process-wide; set it
// while no other thread works on files.
struct FileSystemFaults {
    int renameError = 0;
    std::string statErrorName;
    int statError = 0;
};
void setFileSystemFaults(const FileSystemFaults& faults);

} // namespace bv
