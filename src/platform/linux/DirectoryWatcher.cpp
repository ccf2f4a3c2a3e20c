#include "platform/DirectoryWatcher.h"

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "platform/SafeFileSystem.h"

namespace bv {
namespace {

// What a download tool does to a file in the folder: make it, finish writing it, rename it
// in or out (".part" to the final name), remove it, or touch its times or attributes.
constexpr std::uint32_t kFolderMask = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                                      IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
// In the parent only the folder's own name matters: it appears, leaves or is replaced.
constexpr std::uint32_t kParentMask =
    IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

DirectoryWatcher::DirectoryWatcher() : fd_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

DirectoryWatcher::~DirectoryWatcher() {
    if (fd_ >= 0) ::close(fd_);
}

bool DirectoryWatcher::start(const std::string& absolutePath) {
    if (fd_ < 0 || absolutePath.empty()) return false;
    std::string path = absolutePath;
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    if (watchedPath_ == path && isArmed()) return true;
    if (watchedPath_ != path) {
        stop();
        const PathParts parts = splitPath(path);
        if (parts.name.empty()) return false;
        watchedPath_ = path;
        parentPath_ = parts.parent;
        folderName_ = parts.name;
    }
    realign();
    if (parent_.wd < 0 && folder_.wd < 0) {
        watchedPath_.reset();
        return false;
    }
    return true;
}

void DirectoryWatcher::stop() {
    dropWatches();
    watchedPath_.reset();
    parentPath_.clear();
    folderName_.clear();
    // Whatever is still queued belongs to the old path; the IN_IGNORED of the removed
    // watches goes with it.
    (void)readEvents();
}

void DirectoryWatcher::dropWatches() {
    for (Watch* w : {&folder_, &parent_}) {
        if (w->wd >= 0 && fd_ >= 0) ::inotify_rm_watch(fd_, w->wd);
        *w = Watch{};
    }
}

bool DirectoryWatcher::follow(Watch& watch, const std::string& path, std::uint32_t mask) {
    struct stat st{};
    const bool isFolder = ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
    if (isFolder && watch.wd >= 0 && watch.device == st.st_dev && watch.inode == st.st_ino) return false;
    const bool had = watch.wd >= 0;
    if (had) ::inotify_rm_watch(fd_, watch.wd);
    watch = Watch{};
    if (!isFolder) return had;
    const int wd = ::inotify_add_watch(fd_, path.c_str(), mask);
    if (wd < 0) return had;
    // The watch sits on whatever the path named at the moment of adding; read it again so
    // a swap between the stat and the add is caught at the next realign.
    struct stat after{};
    if (::stat(path.c_str(), &after) == 0) st = after;
    watch = Watch{wd, static_cast<std::uint64_t>(st.st_dev), static_cast<std::uint64_t>(st.st_ino)};
    return true;
}

bool DirectoryWatcher::realign() {
    if (!watchedPath_) return false;
    const bool parentChanged = follow(parent_, parentPath_, kParentMask);
    const bool folderChanged = follow(folder_, *watchedPath_, kFolderMask);
    return parentChanged || folderChanged;
}

std::vector<DirectoryEvent> DirectoryWatcher::readEvents() {
    std::vector<DirectoryEvent> events;
    if (fd_ < 0) return events;
    alignas(inotify_event) char buffer[16384];
    bool needsRealign = false;
    bool overflowed = false;
    for (;;) {
        const ssize_t got = ::read(fd_, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break; // EAGAIN: drained
        for (std::size_t offset = 0; offset + sizeof(inotify_event) <= static_cast<std::size_t>(got);) {
            inotify_event header;
            std::memcpy(&header, buffer + offset, sizeof header);
            const char* namePtr = buffer + offset + sizeof(inotify_event);
            const std::string name = header.len > 0 ? std::string(namePtr, ::strnlen(namePtr, header.len)) : std::string();
            offset += sizeof(inotify_event) + header.len;

            if (header.mask & IN_Q_OVERFLOW) {
                overflowed = true;
                continue;
            }
            if (!watchedPath_) continue; // left over from a stopped watch
            if (header.wd == folder_.wd && folder_.wd >= 0) {
                if (header.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) {
                    // IN_IGNORED means the kernel already dropped the watch.
                    if (header.mask & IN_IGNORED) folder_ = Watch{};
                    needsRealign = true;
                    continue;
                }
                events.push_back({DirectoryEvent::Kind::entry, name, (header.mask & (IN_MOVED_FROM | IN_DELETE)) != 0, header.mask});
            } else if (header.wd == parent_.wd && parent_.wd >= 0) {
                if (header.mask & IN_IGNORED) parent_ = Watch{};
                if ((header.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) || name == folderName_)
                    needsRealign = true;
            }
            // Anything else is the tail of a watch removed earlier.
        }
    }
    if (overflowed) {
        events.push_back({DirectoryEvent::Kind::overflow, {}, false, IN_Q_OVERFLOW});
        needsRealign = true;
    }
    if (needsRealign && realign()) events.push_back({DirectoryEvent::Kind::folder, {}, false, 0});
    return events;
}

} // namespace bv
