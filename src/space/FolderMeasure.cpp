#include "space/FolderMeasure.h"

#include <sys/stat.h>

#include <atomic>
#include <mutex>

#include "space/ParallelWalk.h"

namespace bv {
namespace {

class MeasureVisitor final : public ParallelWalk::Visitor {
public:
    explicit MeasureVisitor(FolderMeasureProgress* progress) : progress_(progress) {}

    std::int64_t enterFolder(std::int64_t, const std::string&, int) override { return 0; }

    void folderDone(std::int64_t, const std::string&, std::int64_t b, std::int64_t f, std::int64_t subfolders,
                    std::string_view) override {
        bytes.fetch_add(b, std::memory_order_relaxed);
        files.fetch_add(f, std::memory_order_relaxed);
        folders.fetch_add(subfolders, std::memory_order_relaxed);
        if (progress_)
            progress_->update([&](FolderMeasureCounts& c) {
                c.files += f;
                c.bytes += b;
                c.folders += subfolders;
            });
    }

    void folderUnreadable(const std::string&) override { unreadable.fetch_add(1, std::memory_order_relaxed); }

    std::atomic<std::int64_t> bytes{0}, files{0}, folders{0}, unreadable{0};

private:
    FolderMeasureProgress* progress_;
};

// Sums per root: every folder below a root reports under the root's slot.
class ManyVisitor final : public ParallelWalk::Visitor {
public:
    ManyVisitor(std::size_t roots, FolderMeasureProgress* progress) : sums_(roots), progress_(progress) {}

    std::int64_t enterFolder(std::int64_t parentSlot, const std::string&, int) override { return parentSlot; }

    void folderDone(std::int64_t slot, const std::string&, std::int64_t b, std::int64_t f, std::int64_t subfolders,
                    std::string_view) override {
        Sums& s = sums_[static_cast<std::size_t>(slot)];
        s.bytes.fetch_add(b, std::memory_order_relaxed);
        s.files.fetch_add(f, std::memory_order_relaxed);
        s.folders.fetch_add(subfolders, std::memory_order_relaxed);
        if (progress_)
            progress_->update([&](FolderMeasureCounts& c) {
                c.files += f;
                c.bytes += b;
                c.folders += subfolders;
            });
    }

    // Unreadable folders are told by path only; the slot is found from the longest root
    // that holds it, which the caller does after the walk.
    void folderUnreadable(const std::string& path) override {
        std::lock_guard lock(mutex_);
        unreadable.push_back(path);
    }

    struct Sums {
        std::atomic<std::int64_t> bytes{0}, files{0}, folders{0};
    };
    std::vector<Sums> sums_;
    std::vector<std::string> unreadable;

private:
    FolderMeasureProgress* progress_;
    std::mutex mutex_;
};

} // namespace

std::vector<FolderMeasure::Result> FolderMeasure::measureMany(const std::vector<std::string>& paths, const Options& options) {
    std::vector<Result> results(paths.size());
    std::vector<std::pair<std::string, std::int64_t>> roots;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        struct stat st {};
        if (::stat(paths[i].c_str(), &st) != 0) {
            results[i].unreadable = 1;
        } else if (S_ISREG(st.st_mode)) {
            results[i] = measure(paths[i], options); // one file: no walk
        } else if (S_ISDIR(st.st_mode)) {
            roots.emplace_back(paths[i], static_cast<std::int64_t>(i));
        }
    }
    if (roots.empty()) return results;
    ParallelWalk::Options walk;
    walk.threads = options.threads;
    walk.deadline = options.deadline;
    walk.checkEvery = 32;
    if (const CancellationFlag* flag = options.cancel) walk.shouldStop = [flag] { return flag->isCancelled(); };
    ManyVisitor visitor(paths.size(), options.progress);
    const auto outcome = ParallelWalk::runMany(roots, visitor, walk);
    for (const auto& [path, slot] : roots) {
        Result& r = results[static_cast<std::size_t>(slot)];
        const auto& s = visitor.sums_[static_cast<std::size_t>(slot)];
        r.bytes = s.bytes.load();
        r.files = s.files.load();
        r.folders = s.folders.load();
        r.complete = !outcome.stopped;
    }
    for (const auto& bad : visitor.unreadable) {
        const std::pair<std::string, std::int64_t>* best = nullptr;
        for (const auto& root : roots)
            if ((bad == root.first || bad.starts_with(root.first + "/")) && (!best || root.first.size() > best->first.size()))
                best = &root;
        if (best) ++results[static_cast<std::size_t>(best->second)].unreadable;
    }
    return results;
}

FolderMeasure::Result FolderMeasure::measure(const std::string& path, const Options& options) {
    Result result;
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        result.unreadable = 1;
        return result;
    }
    if (S_ISREG(st.st_mode)) {
        result.files = 1;
        result.bytes = ParallelWalk::countedSize(true, static_cast<std::int64_t>(st.st_blocks), st.st_size);
        if (options.progress)
            options.progress->update([&](FolderMeasureCounts& c) {
                c.files += 1;
                c.bytes += result.bytes;
            });
        return result;
    }
    if (!S_ISDIR(st.st_mode)) return result;

    ParallelWalk::Options walk;
    walk.threads = options.threads;
    walk.deadline = options.deadline;
    walk.checkEvery = 32;
    if (const CancellationFlag* flag = options.cancel) walk.shouldStop = [flag] { return flag->isCancelled(); };
    MeasureVisitor visitor(options.progress);
    const auto outcome = ParallelWalk::run(path, 0, visitor, walk);
    result.bytes = visitor.bytes.load();
    result.files = visitor.files.load();
    result.folders = visitor.folders.load();
    result.unreadable = visitor.unreadable.load();
    result.complete = !outcome.stopped;
    return result;
}

std::int64_t FolderMeasure::bytes(const std::string& path, std::optional<double> secondsAllowed,
                                  const CancellationFlag* cancel) {
    Options options;
    if (secondsAllowed)
        options.deadline = std::chrono::steady_clock::now() +
                           std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                               std::chrono::duration<double>(*secondsAllowed));
    options.cancel = cancel;
    return measure(path, options).bytes;
}

} // namespace bv
