#pragma once
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace bv {

// Measures folders on helper threads while the caller goes on finding more, so that a walk and
// the measuring of what it found overlap. Sizes are counted as the shared folder measure counts
// them (allocated size of every file below, links neither counted nor followed, other file
// systems mounted below entered), by a plain serial walk a thread: the folders are many and
// small, so the parallelism is the queue's. Folders are handed over as found and taken by the
// helpers a few at a time; `finish` lends the calling thread to what is left, waits for the
// helpers and gives every size. Each folder is measured once however often it is added.
// With no helpers everything is measured in `finish`, on the calling thread.
class FolderMeasureQueue {
public:
    using Deadline = std::optional<std::chrono::steady_clock::time_point>;
    using Sizes = std::unordered_map<std::string, std::int64_t>;

    FolderMeasureQueue(int helpers, Deadline deadline);
    FolderMeasureQueue(const FolderMeasureQueue&) = delete;
    FolderMeasureQueue& operator=(const FolderMeasureQueue&) = delete;
    ~FolderMeasureQueue();

    // `shortReadsEndListings`: every folder below these lies on a file system that fills a
    // listing buffer until the folder ends (see the walk that found them).
    void add(const std::vector<std::string>& folders, bool shortReadsEndListings = false);
    // Measures what is still queued, waits for the helpers and hands over the sizes. Call once.
    [[nodiscard]] Sizes finish();

    // One helper fewer than the machine has cores (at least one, at most three): with the
    // caller's own thread, one thread a core.
    [[nodiscard]] static int defaultHelpers();

private:
    void work(bool untilEmpty);
    void join();

    Deadline deadline_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::vector<std::pair<std::string, bool>> queue_; // folder, short reads end its listings
    std::unordered_set<std::string> seen_; // added once: measured or queued
    bool done_ = false;
    Sizes sizes_; // under mutex_
    std::vector<std::thread> helpers_; // last: they start once everything above exists
};

} // namespace bv
