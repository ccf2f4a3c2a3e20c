#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "foundation/Json.h"
#include "foundation/ProgressHolder.h"

namespace bv {

// One folder of a disk map. `bytes` holds everything below it; `children` are only the
// folders large enough to list on their own, largest first.
//
// A file with several hard links in the map is counted once, in the folders that hold its
// smallest path (plain byte order). A folder that holds another of its names but not that
// one leaves the bytes out and shows them in `sharedBytes`: shared with a folder outside it,
// which counts them. The root's `sharedBytes` is therefore 0. `fileCount` counts every name.
struct DiskMapNode {
    std::string path;
    std::string name; // last path component, or the map's display name for the root
    std::int64_t bytes = 0;
    std::int64_t fileCount = 0;
    std::vector<DiskMapNode> children;
    std::int64_t sharedBytes = 0; // hard-linked bytes left out here, counted in a folder outside this one

    friend bool operator==(const DiskMapNode&, const DiskMapNode&) = default;
};

// A finished (or stopped) map of one folder or drive.
struct DiskMap {
    std::string rootPath;
    std::int64_t totalBytes = 0;
    std::int64_t fileCount = 0;
    std::int64_t unreadableCount = 0;
    TimePoint scannedAt{};
    bool truncated = false; // the scan was stopped before it finished
    DiskMapNode root;
    std::int64_t sharedBytes = 0; // all the bytes left out as hard links to files counted under another path
};

// Counters a map scan raises as it reads folders, polled by the screen or the terminal.
struct DiskMapCounts {
    std::int64_t files = 0;
    std::int64_t bytes = 0;
    std::int64_t folders = 0;
    std::int64_t unreadable = 0;
    std::string current; // the file counted last (its folder when it held no file)
};
using DiskMapProgress = ProgressHolder<DiskMapCounts>;

// A mounted file system people keep files on.
struct MountedVolume {
    std::string path;
    std::string name;
    std::int64_t totalBytes = 0;
    std::int64_t freeBytes = 0;

    friend bool operator==(const MountedVolume&, const MountedVolume&) = default;
};

// How long a complete map of a root took.
struct ScanTiming {
    std::int64_t bytes = 0;
    std::int64_t files = 0;
    double seconds = 0;

    friend bool operator==(const ScanTiming&, const ScanTiming&) = default;
};

// The map as the terminal's --json prints it: the fields under their own names, the tree nested;
// `sharedBytes` in total and on each folder.
[[nodiscard]] Json diskMapJson(const DiskMap& map);

} // namespace bv
