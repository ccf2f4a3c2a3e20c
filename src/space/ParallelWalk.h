#pragma once
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace bv {

// The hot loop under every measure and map: walks a folder tree with directory handles
// (openat on the parent's handle, getdents64, statx relative to the handle, never following
// a link) on a small pool of threads that share one stack of folders still to read.
//
// Sums are kept per folder, not per file: a visitor hears once per folder how many files it
// held directly and their allocated size. Folders are given a "slot" by the visitor when they
// are found, so a visitor can fold deep folders into an ancestor (the disk map keeps folders
// down to a fixed depth only).
class ParallelWalk {
public:
    using SteadyTime = std::chrono::steady_clock::time_point;

    struct Options {
        int threads = 0;                     // 0: a number suited to this machine
        std::optional<SteadyTime> deadline;  // past it the walk ends with what it has
        std::function<bool()> shouldStop;    // asked every `checkEvery` entries per thread
        int checkEvery = 32;
        bool stayOnFileSystem = false;       // never enter a mount point below the root (another file system or a bind mount)
        // Absolute folders never entered (compared exactly against each folder's path).
        // The caller leaves out those that hold the root: a root inside one is still walked.
        std::vector<std::string> excluded;
        // Tell the visitor, folder by folder, which of its files have more than one link
        // (see Visitor::linkedFiles). Off, a walk never asks for link counts.
        bool reportLinkedFiles = false;
    };

    // A file with more than one link, as met in one folder. Its size is in that folder's sum too.
    struct LinkedFile {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::int64_t bytes = 0;
        std::string name; // the entry's name in its folder
    };

    // What a walk tells its caller. Calls come from several threads at once; each
    // implementation makes its own state safe for that.
    class Visitor {
    public:
        virtual ~Visitor() = default;
        // A subfolder about to be queued: the slot its files will be reported under.
        virtual std::int64_t enterFolder(std::int64_t parentSlot, const std::string& path, int depth) = 0;
        // A folder fully listed: its direct files and their size, how many subfolders it queued,
        // and the name of the last file it counted (empty when none), for progress texts.
        virtual void folderDone(std::int64_t slot, const std::string& path, std::int64_t bytes, std::int64_t files,
                                std::int64_t subfolders, std::string_view lastFile) = 0;
        // A folder (or the root) that could not be opened or listed to the end.
        virtual void folderUnreadable(const std::string& path) = 0;
        // With Options::reportLinkedFiles: the files of a folder that have more than one link,
        // told once per folder that has any, just before its folderDone. `files` may be moved from.
        virtual void linkedFiles(std::int64_t /*slot*/, const std::string& /*path*/, std::vector<LinkedFile>& /*files*/) {}
    };

    struct Outcome {
        bool rootOpened = false; // false: the root could not be listed at all (reported as unreadable)
        bool stopped = false;    // the deadline passed or a stop was asked before the walk ended
    };

    // Walks `root` (a folder; a link at the root itself is followed, links below it never are).
    // The root's own files are reported under `rootSlot` at depth 0.
    static Outcome run(const std::string& root, std::int64_t rootSlot, Visitor& visitor, const Options& options);

    // Walks several roots (folders, each with its slot) on one shared pool. A root that can't be
    // opened is reported unreadable and the others go on; `rootOpened` says whether any opened.
    // `stayOnFileSystem` is not honoured here: the walk crosses mounts, as `du` does.
    static Outcome runMany(const std::vector<std::pair<std::string, std::int64_t>>& roots, Visitor& visitor,
                           const Options& options);

    // A file's size as every scan counts it: the allocated size the file system reports,
    // or the file size when it reports none.
    [[nodiscard]] static std::int64_t countedSize(bool hasBlocks, std::int64_t blocks, std::int64_t size) {
        return hasBlocks ? blocks * 512 : (size > 0 ? size : 0);
    }

    [[nodiscard]] static int defaultThreads();
};

} // namespace bv
