#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <sys/types.h>
#include <unordered_map>
#include <vector>

#include "duplicates/ContentHasher.h"
#include "duplicates/DuplicateGroup.h"
#include "duplicates/DuplicateScanProgress.h"
#include "foundation/CancellationFlag.h"

namespace bv {

// The smallest size the duplicate scan ever compares, whatever a caller asks for.
inline constexpr std::int64_t kDuplicateMinimumFloor = 100000;

// The minimum the model and the terminal pass to the scan: the request, raised to 100000.
[[nodiscard]] std::int64_t effectiveDuplicateMinimum(std::int64_t requested);

// The folders a scan searches: each in standard form (absolute, no "." or "..", no doubled
// or trailing "/"), repeats dropped, and any folder equal to or inside another dropped, so
// no file is found twice. The order of first appearance stays.
[[nodiscard]] std::vector<std::string> reduceDuplicateRoots(const std::vector<std::string>& roots);

// Standard form of one path, made absolute against the working folder when relative.
[[nodiscard]] std::string duplicateStandardPath(const std::string& path);

// Finds files stored twice under a set of folders, in four passes, each cheaper than the
// next one is dear: size, a hash of both ends, a hash of the whole contents, then which
// candidates really are separate storage. Serial by design: one thread reads one file at a
// time. Blocking; meant for a background task that shares only `flag` and `progress` with
// the model. Each pass is public so a caller (or a test) can run them one by one.
class DuplicateScanner {
public:
    // A file that reached a pass: its path and the storage object it had when last looked at.
    struct Candidate {
        std::string path;
        dev_t device = 0;
        ino_t inode = 0;
    };
    // Candidates of one size that still look alike.
    struct Bucket {
        std::int64_t size = 0;
        std::vector<Candidate> files;
    };
    struct Confirmed {
        std::int64_t size = 0;
        Sha256Digest digest{};
        std::vector<std::string> paths;
    };

    DuplicateScanner(std::int64_t minimumBytes, const CancellationFlag& flag, DuplicateScanProgress& progress);

    // Every pass in order; the groups sorted by reclaimable bytes, largest first. When the
    // flag is set the answer is whatever was found before it, and the caller drops it.
    [[nodiscard]] std::vector<DuplicateGroup> run(const std::vector<std::string>& roots);

    // Size pass over already reduced roots: regular files at or above the minimum, by size.
    // Symbolic links are neither followed nor entered; ".git" and dependency folders are
    // not entered; unreadable folders are passed over. Only sizes with two or more files
    // come back.
    [[nodiscard]] std::vector<Bucket> sizePass(const std::vector<std::string>& roots);
    // Splits each bucket by the quick key; files whose key can't be computed drop out.
    [[nodiscard]] std::vector<Bucket> quickKeyPass(std::vector<Bucket> buckets);
    // Splits each bucket by the SHA-256 of the whole contents; failures drop out.
    [[nodiscard]] std::vector<Confirmed> contentPass(std::vector<Bucket> buckets);
    // Makes groups with each file's facts, sorted largest reclaimable first.
    [[nodiscard]] std::vector<DuplicateGroup> groupPass(std::vector<Confirmed> confirmed) const;

    [[nodiscard]] bool stopped() const { return flag_.isCancelled(); }
    [[nodiscard]] std::int64_t bytesRead() const { return hasher_.bytesRead(); }

private:
    void walk(const std::string& root, std::unordered_map<std::int64_t, std::vector<Candidate>>& bySize);

    std::int64_t minimumBytes_;
    const CancellationFlag& flag_;
    DuplicateScanProgress& progress_;
    ContentHasher hasher_;
    std::uint64_t entries_ = 0;
};

// Builds one group from the paths of identical contents: files sorted by path, each stat'ed
// for its storage object, hard-link count and modification date. A file that can't be
// stat'ed counts as a storage object of its own.
[[nodiscard]] DuplicateGroup makeDuplicateGroup(std::int64_t size, const std::string& digestText,
                                                std::vector<std::string> paths);

// Sorts groups by reclaimable bytes, largest first (then larger files, then by id, so the
// order is the same on every run).
void sortDuplicateGroups(std::vector<DuplicateGroup>& groups);

} // namespace bv
