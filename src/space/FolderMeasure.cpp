#include "space/FolderMeasure.h"

#include <sys/stat.h>

#include <atomic>

#include "space/ParallelWalk.h"

namespace bv {
namespace {

class MeasureVisitor final : public ParallelWalk::Visitor {
public:
    explicit MeasureVisitor(FolderMeasureProgress* progress) : progress_(progress) {}

    std::int64_t enterFolder(std::int64_t, const std::string&, int) override { return 0; }

    void folderDone(std::int64_t, const std::string&, std::int64_t b, std::int64_t f, std::int64_t subfolders) override {
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

} // namespace

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
