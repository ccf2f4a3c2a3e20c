#include "buildwatch/FolderMeasureQueue.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "buildwatch/FolderListing.h"
#include "space/FolderMeasure.h"
#include "space/ParallelWalk.h"

namespace bv {
namespace {

// Few enough that two threads share a burst of small folders, enough that a batch is worth
// the lock.
constexpr std::size_t kBatch = 16;

// One thread's measure of one folder tree: getdents64 on each folder's handle, statx relative
// to it, subfolders opened through their parent's handle; no path strings but on the rare
// fallback below.
class SerialMeasure {
public:
    SerialMeasure(FolderMeasureQueue::Deadline deadline, bool shortReads) : deadline_(deadline), shortReads_(shortReads) {}

    std::int64_t measure(const std::string& folder) {
        const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd < 0) return FolderMeasure::bytes(folder); // a file, a missing folder: the shared rule
        path_ = folder;
        bytes_ = 0;
        readFolder(fd);
        ::close(fd);
        return bytes_;
    }

private:
    void readFolder(int fd) {
        std::vector<std::string> folders;
        const bool finished = forEachEntry(fd, shortReads_, [&](const char* name, unsigned char type) {
            if (++entries_ % 32 == 0 && late()) return false;
            if (type == DT_DIR) {
                folders.emplace_back(name);
                return true;
            }
            if (type == DT_LNK) return true;
            struct statx sx {};
            if (::statx(fd, name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, STATX_TYPE | STATX_SIZE | STATX_BLOCKS, &sx) != 0)
                return true; // gone since the listing
            if (S_ISLNK(sx.stx_mode)) return true;
            if (S_ISDIR(sx.stx_mode)) {
                folders.emplace_back(name);
                return true;
            }
            bytes_ += ParallelWalk::countedSize((sx.stx_mask & STATX_BLOCKS) != 0, static_cast<std::int64_t>(sx.stx_blocks),
                                                static_cast<std::int64_t>(sx.stx_size));
            return true;
        });
        if (!finished) return;
        for (const auto& name : folders) {
            const std::size_t mark = path_.size();
            path_.append("/").append(name);
            const int child = ::openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
            if (child >= 0) {
                readFolder(child);
                ::close(child);
            } else if (errno == EMFILE || errno == ENFILE) {
                bytes_ += FolderMeasure::bytes(path_); // too deep to keep every parent open
            }
            path_.resize(mark);
            if (stopped_) return;
        }
    }

    bool late() {
        if (!stopped_ && deadline_ && std::chrono::steady_clock::now() >= *deadline_) stopped_ = true;
        return stopped_;
    }

    FolderMeasureQueue::Deadline deadline_;
    bool shortReads_;
    std::string path_; // of the folder being read, kept for the fallback only
    std::int64_t bytes_ = 0;
    std::uint64_t entries_ = 0;
    bool stopped_ = false;
};

} // namespace

FolderMeasureQueue::FolderMeasureQueue(int helpers, Deadline deadline) : deadline_(deadline) {
    for (int i = 0; i < helpers; ++i) helpers_.emplace_back([this] { work(false); });
}

FolderMeasureQueue::~FolderMeasureQueue() { join(); }

int FolderMeasureQueue::defaultHelpers() {
    const int cores = static_cast<int>(std::thread::hardware_concurrency());
    return std::clamp(cores - 1, 1, 3);
}

void FolderMeasureQueue::add(const std::vector<std::string>& folders, bool shortReadsEndListings) {
    bool added = false;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& f : folders)
            if (seen_.insert(f).second) {
                queue_.emplace_back(f, shortReadsEndListings);
                added = true;
            }
    }
    if (added) wake_.notify_one();
}

// Takes folders off the queue until it is empty and, for a helper, until `finish` was called.
void FolderMeasureQueue::work(bool untilEmpty) {
    for (;;) {
        std::vector<std::pair<std::string, bool>> batch;
        {
            std::unique_lock lock(mutex_);
            if (!untilEmpty) wake_.wait(lock, [&] { return done_ || !queue_.empty(); });
            if (queue_.empty()) return;
            const std::size_t take = std::min(queue_.size(), kBatch);
            batch.assign(std::make_move_iterator(queue_.end() - static_cast<std::ptrdiff_t>(take)),
                         std::make_move_iterator(queue_.end()));
            queue_.resize(queue_.size() - take);
        }
        std::vector<std::int64_t> results;
        for (const auto& [folder, shortReads] : batch) results.push_back(SerialMeasure(deadline_, shortReads).measure(folder));
        const std::lock_guard lock(mutex_);
        for (std::size_t i = 0; i < batch.size(); ++i) sizes_[batch[i].first] = results[i];
    }
}

void FolderMeasureQueue::join() {
    {
        const std::lock_guard lock(mutex_);
        done_ = true;
    }
    wake_.notify_all();
    for (auto& t : helpers_)
        if (t.joinable()) t.join();
}

FolderMeasureQueue::Sizes FolderMeasureQueue::finish() {
    {
        const std::lock_guard lock(mutex_);
        done_ = true;
    }
    wake_.notify_all();
    work(true);
    join();
    return std::move(sizes_);
}

} // namespace bv
