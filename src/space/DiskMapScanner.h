#pragma once
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "space/DiskMap.h"

namespace bv {

// Measures every byte under a folder or drive and returns a tree of the folders that matter.
// Blocking, read-only; meant for a background task.
//
// Files count their allocated size (see FolderMeasure for the rule); symbolic links count
// nothing and are never followed. A file with several hard links counts once per map, under
// its smallest path whatever order the threads meet them in; the other folders holding it
// show those bytes as shared (DiskMapNode::sharedBytes). The walk notes only the files with
// more than one link and settles them after it, so the rest cost nothing extra. Folders are read in parallel and summed per folder; folders deeper
// than `kMaxDepth` below the root fold into their ancestor at that depth, so however many
// folders the disk has, the tally stays bounded and the tree holds only folders at or above
// the size floor.
//
// Never entered, unless the root lies inside them: the pseudo file system trees (/proc, /sys,
// /dev, /run). Never entered at all: the mount points below the root (other file systems and
// bind mounts, which would count the same files twice), read from the mount table.
class DiskMapScanner {
public:
    static constexpr int kMaxDepth = 6;

    struct Options {
        std::string homePath;                  // a root equal to it is named "Home"
        std::string rootFileSystemName;        // the name for a root of "/" (empty: from the mount table)
        std::optional<TimePoint> now;          // scannedAt; empty: the clock when the scan ends
        int threads = 0;                       // 0: suited to this machine
        std::optional<std::vector<std::string>> excludedTrees; // empty: excludedTrees()
    };

    // One folder of the tally: everything at or below it, by path. Index 0 is the root; each
    // folder comes after its parent.
    struct FolderTally {
        std::string path;
        std::int64_t parent = -1;
        int depth = 0;
        std::int64_t bytes = 0;
        std::int64_t files = 0;
        std::int64_t sharedBytes = 0; // hard-linked bytes left out here, counted in a folder outside this one
    };

    // Scans `root`. `shouldStop` is asked at every 64th entry; once it says yes the scan ends
    // with what was counted and the map is `truncated`. A root that can't be listed gives a map
    // with totals 0, unreadableCount 1, not truncated, and a root node alone.
    [[nodiscard]] static DiskMap scan(const std::string& root, DiskMapProgress& progress,
                                      const std::function<bool()>& shouldStop, const Options& options);

    // The size floor: the total / 20000 for a total above 19999999999 bytes, else 1000000.
    [[nodiscard]] static std::int64_t sizeFloor(std::int64_t totalBytes);

    // Builds the bounded tree from a tally: folders at or above the floor (and their ancestors),
    // children largest first, equal sizes by path. The root node takes `rootName`, the total
    // bytes and the total file count.
    [[nodiscard]] static DiskMapNode buildTree(const std::vector<FolderTally>& tally, const std::string& rootName,
                                               std::int64_t floor);

    // "Home" for the home folder, the file system's name for "/", else the last component.
    [[nodiscard]] static std::string displayName(const std::string& rootPath, const std::string& homePath,
                                                 const std::string& rootFileSystemName);

    // The trees a scan never enters, and those of them that apply to a given (real) root.
    [[nodiscard]] static const std::vector<std::string>& excludedTrees();
    [[nodiscard]] static std::vector<std::string> exclusionsFor(const std::string& root,
                                                                const std::vector<std::string>& trees);

    // The real path of a folder; the path as given when it can't be resolved.
    [[nodiscard]] static std::string realPath(const std::string& path);
};

} // namespace bv
