#pragma once
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/CancellationFlag.h"
#include "foundation/ProgressHolder.h"

namespace bv {

// Counters a measure raises as it goes, once per folder read (never per file).
struct FolderMeasureCounts {
    std::int64_t files = 0;
    std::int64_t bytes = 0;
    std::int64_t folders = 0;
};
using FolderMeasureProgress = ProgressHolder<FolderMeasureCounts>;

// The folder measure every scan shares: sums what the files under a folder take on disk.
//
// - A file counts its allocated size (blocks x 512), or its file size when the file system
//   reports no allocated size. Hard links are not told apart: each name counts.
// - Symbolic links below the folder count nothing and are never followed. A link given as the
//   folder itself is followed, as opening any folder by its name does.
// - The deadline and the cancellation flag are read every 32nd entry; when either ends the
//   measure, the result holds what was counted so far and `complete` is false.
// - Subfolders are read in parallel on a few threads; the sum is the same as a serial walk.
// - It crosses onto other file systems mounted below the folder, like `du` without -x.
class FolderMeasure {
public:
    struct Options {
        std::optional<std::chrono::steady_clock::time_point> deadline; // none: always finishes
        const CancellationFlag* cancel = nullptr;
        FolderMeasureProgress* progress = nullptr;
        int threads = 0; // 0: suited to this machine; 1: on the calling thread only
    };

    struct Result {
        std::int64_t bytes = 0;
        std::int64_t files = 0;
        std::int64_t folders = 0;    // subfolders entered, the folder itself not counted
        std::int64_t unreadable = 0; // folders that could not be listed (the root included)
        bool complete = true;        // false: stopped by the deadline or the flag
    };

    // A missing folder gives zeros with unreadable 1. A regular file given as the folder
    // measures as that one file; anything else that is not a folder gives zeros.
    [[nodiscard]] static Result measure(const std::string& path, const Options& options);
    [[nodiscard]] static Result measure(const std::string& path) { return measure(path, Options{}); }

    // Measures several folders at once on one shared pool of threads: one result per path, in
    // the order given, each as `measure` would give it. Far cheaper than one measure after
    // another when there are many small folders. `progress` sees the sum of all of them.
    [[nodiscard]] static std::vector<Result> measureMany(const std::vector<std::string>& paths, const Options& options);

    // Convenience: the bytes alone, with a deadline that many seconds from now (none: no deadline).
    [[nodiscard]] static std::int64_t bytes(const std::string& path, std::optional<double> secondsAllowed = std::nullopt,
                                            const CancellationFlag* cancel = nullptr);
};

} // namespace bv
