#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace bv {

// What a watched folder reported. The watcher says only that something happened and to
// which name; what to do about it is the caller's business (a sweep lists the folder anew).
struct DirectoryEvent {
    enum class Kind {
        entry,     // a name inside the folder was created, written, moved in or out, removed or retouched
        folder,    // the folder itself appeared, went away or was replaced; the watch followed it
        overflow,  // the kernel dropped events: the folder must be looked at as a whole
    };
    Kind kind = Kind::entry;
    std::string name;       // the entry's name; empty for folder and overflow
    bool left = false;      // the entry was moved out of the folder or removed
    std::uint32_t mask = 0; // the kernel's event bits, for diagnostics and tests

    friend bool operator==(const DirectoryEvent&, const DirectoryEvent&) = default;
};

// Watches one folder, one level deep, for entries that are created, closed after writing,
// moved in, moved out, removed or have their attributes changed. Plain C++ without an event
// loop of its own: `fd()` is a non-blocking descriptor that becomes readable when events
// wait, so a GUI can wrap it in its own notifier, and `readEvents()` drains it.
//
// The folder's parent is watched too, for the folder's own name: when the folder is moved
// away, removed, replaced by another, or appears only after `start`, the watch follows the
// path (not the old inode) and a `folder` event tells the caller to look again. A kernel
// queue overflow comes out as one `overflow` event and re-checks the watch the same way.
//
// Not thread-safe: one thread starts, stops and reads.
class DirectoryWatcher {
public:
    DirectoryWatcher();
    ~DirectoryWatcher();
    DirectoryWatcher(const DirectoryWatcher&) = delete;
    DirectoryWatcher& operator=(const DirectoryWatcher&) = delete;

    // Begins watching `absolutePath`. Does nothing when that path is already watched and
    // armed; a different path replaces the old one. False when nothing could be watched
    // (no inotify, or neither the folder nor its parent exists): then there is no watcher
    // and no message, and a later `start` tries again.
    bool start(const std::string& absolutePath);
    // Ends watching; pending events are dropped. The descriptor stays valid.
    void stop();

    // The path being watched, if any (set while only the parent waits for it, too).
    [[nodiscard]] const std::optional<std::string>& watchedPath() const { return watchedPath_; }
    // True when the folder itself is under watch, not only its parent.
    [[nodiscard]] bool isArmed() const { return folder_.wd >= 0; }

    // Readable when events wait; -1 when inotify is unavailable.
    [[nodiscard]] int fd() const { return fd_; }
    // Every event waiting now, in order; empty when none. Never blocks.
    [[nodiscard]] std::vector<DirectoryEvent> readEvents();

private:
    // Brings the folder's watch in line with what the path names now. True when it changed.
    bool realign();
    void dropWatches();

    // One inotify watch and the object it was placed on, so a new object under the same
    // path is told from the old one.
    struct Watch {
        int wd = -1;
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
    };
    bool follow(Watch& watch, const std::string& path, std::uint32_t mask);

    int fd_ = -1;
    Watch folder_;
    Watch parent_;
    std::optional<std::string> watchedPath_;
    std::string parentPath_;
    std::string folderName_;
};

} // namespace bv
