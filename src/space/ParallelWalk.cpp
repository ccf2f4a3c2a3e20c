#include "space/ParallelWalk.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <unordered_set>

#include "platform/MountTable.h"

namespace bv {
namespace {

// An open folder handle, shared by the subfolders queued from it so they can be opened
// relative to it; closed when the last of them has been opened.
struct Handle {
    int fd = -1;
    explicit Handle(int f) : fd(f) {}
    ~Handle() {
        if (fd >= 0) ::close(fd);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
};

struct Item {
    std::shared_ptr<Handle> parent; // null for the root
    std::string path;
    std::uint32_t nameAt = 0; // where the last component starts in `path`
    int depth = 0;
    std::int64_t slot = 0;
};

constexpr int kOpenFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
constexpr std::size_t kBufferSize = 64 * 1024;

class Walk {
public:
    Walk(ParallelWalk::Visitor& visitor, const ParallelWalk::Options& options) : visitor_(visitor), options_(options) {
        excluded_.insert(options.excluded.begin(), options.excluded.end());
    }

    ParallelWalk::Outcome run(const std::string& root, std::int64_t rootSlot) {
        ParallelWalk::Outcome outcome;
        const int fd = ::open(root.c_str(), kOpenFlags);
        if (fd < 0) {
            visitor_.folderUnreadable(root);
            return outcome;
        }
        outcome.rootOpened = true;
        struct stat st {};
        if (::fstat(fd, &st) == 0) rootDevice_ = st.st_dev;
        // Staying on the root's file system: every mount point below the root is left out, which
        // also keeps bind mounts from counting the same files twice. Without a readable mount
        // table each folder's device is compared instead.
        if (options_.stayOnFileSystem) {
            const auto table = MountTable::read();
            checkDevicePerFolder_ = table.empty();
            const std::string prefix = root == "/" ? "/" : root + "/";
            for (const auto& m : table)
                if (m.mountPoint.size() > prefix.size() && m.mountPoint.compare(0, prefix.size(), prefix) == 0)
                    excluded_.insert(m.mountPoint);
        }
        // These local file systems fill a listing buffer until the folder ends, so a listing
        // that leaves plenty of the buffer unused is the last one, and the extra call that
        // would return nothing can be skipped. Only trusted when the walk never leaves them.
        struct statfs fs {};
        if (options_.stayOnFileSystem && ::fstatfs(fd, &fs) == 0) {
            const auto type = static_cast<unsigned long>(fs.f_type);
            shortReadEndsListing_ = type == EXT4_SUPER_MAGIC || type == XFS_SUPER_MAGIC || type == BTRFS_SUPER_MAGIC ||
                                    type == TMPFS_MAGIC;
        }

        // The root is read on this thread; the pool starts only when it left work behind.
        std::vector<Item> found;
        std::vector<char> buffer(kBufferSize);
        std::uint64_t entries = 0;
        Item rootItem{nullptr, root, 0, 0, rootSlot};
        readFolder(rootItem, std::make_shared<Handle>(fd), found, buffer, entries);
        drain(found);
        outcome.stopped = stop_.load(std::memory_order_relaxed);
        return outcome;
    }

    // Several roots on one pool: each root is opened and listed here, then their subfolders
    // are shared by the same threads, so many small folders cost one pool, not one each.
    ParallelWalk::Outcome runMany(const std::vector<std::pair<std::string, std::int64_t>>& roots) {
        ParallelWalk::Outcome outcome;
        std::vector<Item> found;
        std::vector<char> buffer(kBufferSize);
        std::uint64_t entries = 0;
        for (const auto& [root, slot] : roots) {
            const int fd = ::open(root.c_str(), kOpenFlags);
            if (fd < 0) {
                visitor_.folderUnreadable(root);
                continue;
            }
            outcome.rootOpened = true;
            Item rootItem{nullptr, root, 0, 0, slot};
            readFolder(rootItem, std::make_shared<Handle>(fd), found, buffer, entries);
            if (stop_.load(std::memory_order_relaxed)) break;
        }
        if (!stop_.load(std::memory_order_relaxed)) drain(found);
        outcome.stopped = stop_.load(std::memory_order_relaxed);
        return outcome;
    }

private:
    // Hands what the roots left behind to the pool and waits until it is all read.
    void drain(std::vector<Item>& found) {
        if (found.empty()) return;
        const int threads = std::max(1, options_.threads > 0 ? options_.threads : ParallelWalk::defaultThreads());
        {
            std::lock_guard lock(mutex_);
            for (auto& item : found) stack_.push_back(std::move(item));
        }
        found.clear();
        std::vector<std::thread> pool;
        pool.reserve(static_cast<std::size_t>(threads - 1));
        for (int i = 1; i < threads; ++i) pool.emplace_back([this] { work(); });
        work();
        for (auto& t : pool) t.join();
    }

    void work() {
        std::vector<Item> found;
        std::vector<char> buffer(kBufferSize);
        std::uint64_t entries = 0;
        for (;;) {
            Item item;
            {
                std::unique_lock lock(mutex_);
                if (stack_.empty() && busy_ > 0 && !stop_.load(std::memory_order_relaxed)) {
                    ++waiting_;
                    idle_.wait(lock, [this] { return !stack_.empty() || busy_ == 0 || stop_.load(std::memory_order_relaxed); });
                    --waiting_;
                }
                if (stop_.load(std::memory_order_relaxed)) {
                    stack_.clear();
                    idle_.notify_all();
                    return;
                }
                if (stack_.empty()) { // nothing queued and nobody reading: done
                    idle_.notify_all();
                    return;
                }
                item = std::move(stack_.back());
                stack_.pop_back();
                ++busy_;
            }
            openAndRead(item, found, buffer, entries);
            // Keep one subfolder for this thread (depth first, its parent's handle still warm)
            // and share the rest; wake only as many sleepers as there is work for.
            std::optional<Item> keep;
            if (!found.empty()) {
                keep = std::move(found.back());
                found.pop_back();
            }
            while (keep && !stop_.load(std::memory_order_relaxed)) {
                if (!found.empty()) {
                    std::size_t wake = 0;
                    {
                        std::lock_guard lock(mutex_);
                        for (auto& f : found) stack_.push_back(std::move(f));
                        wake = std::min<std::size_t>(found.size(), static_cast<std::size_t>(waiting_));
                    }
                    for (std::size_t i = 0; i < wake; ++i) idle_.notify_one();
                    found.clear();
                }
                Item next = std::move(*keep);
                keep.reset();
                openAndRead(next, found, buffer, entries);
                if (!found.empty()) {
                    keep = std::move(found.back());
                    found.pop_back();
                }
            }
            std::size_t wake = 0;
            bool finished = false;
            {
                std::lock_guard lock(mutex_);
                --busy_;
                if (!stop_.load(std::memory_order_relaxed))
                    for (auto& f : found) stack_.push_back(std::move(f));
                wake = std::min<std::size_t>(found.size(), static_cast<std::size_t>(waiting_));
                finished = busy_ == 0 && stack_.empty();
            }
            found.clear();
            if (finished) idle_.notify_all();
            else
                for (std::size_t i = 0; i < wake; ++i) idle_.notify_one();
        }
    }

    void openAndRead(Item& item, std::vector<Item>& found, std::vector<char>& buffer, std::uint64_t& entries) {
        int fd = ::openat(item.parent->fd, item.path.c_str() + item.nameAt, kOpenFlags | O_NOFOLLOW);
        if (fd < 0 && (errno == EMFILE || errno == ENFILE)) fd = ::open(item.path.c_str(), kOpenFlags | O_NOFOLLOW);
        item.parent.reset();
        if (fd < 0) {
            visitor_.folderUnreadable(item.path);
            return;
        }
        if (checkDevicePerFolder_) {
            struct stat st {};
            if (::fstat(fd, &st) != 0 || st.st_dev != rootDevice_) {
                ::close(fd);
                return; // another file system mounted here: not ours to count
            }
        }
        readFolder(item, std::make_shared<Handle>(fd), found, buffer, entries);
    }

    bool shouldStop() {
        if (stop_.load(std::memory_order_relaxed)) return true;
        const bool late = options_.deadline && std::chrono::steady_clock::now() >= *options_.deadline;
        if (late || (options_.shouldStop && options_.shouldStop())) {
            stop_.store(true, std::memory_order_relaxed);
            idle_.notify_all();
            return true;
        }
        return false;
    }

    bool isExcluded(const std::string& path) const { return excluded_.count(path) > 0; }

    void readFolder(const Item& item, const std::shared_ptr<Handle>& handle, std::vector<Item>& found,
                    std::vector<char>& buffer, std::uint64_t& entries) {
        std::int64_t bytes = 0, files = 0;
        bool failed = false;
        std::string lastFile; // copied once per listing call, not once per file
        const int fd = handle->fd;
        const std::uint64_t every = static_cast<std::uint64_t>(std::max(1, options_.checkEvery));
        const std::size_t firstFound = found.size();
        // Link counts are part of the same answer; asking for them costs the walk nothing.
        const bool reportLinks = options_.reportLinkedFiles;
        const unsigned mask = STATX_TYPE | STATX_SIZE | STATX_BLOCKS | (reportLinks ? STATX_NLINK | STATX_INO : 0u);
        std::vector<ParallelWalk::LinkedFile> linked; // rare: allocates only when a folder holds one
        for (;;) {
            const ssize_t n = ::getdents64(fd, buffer.data(), buffer.size());
            if (n == 0) break;
            if (n < 0) {
                failed = errno != EINTR;
                if (failed) break;
                continue;
            }
            const bool last = shortReadEndsListing_ && static_cast<std::size_t>(n) + 2048 < buffer.size();
            const char* lastInBuffer = nullptr;
            for (ssize_t pos = 0; pos < n;) {
                const auto* de = reinterpret_cast<const dirent64*>(buffer.data() + pos);
                pos += de->d_reclen;
                const char* name = de->d_name;
                if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
                if (++entries % every == 0 && shouldStop()) goto done;
                unsigned char type = de->d_type;
                struct statx sx {};
                bool haveStat = false;
                if (type == DT_UNKNOWN || (type != DT_DIR && type != DT_LNK)) {
                    if (::statx(fd, name, AT_SYMLINK_NOFOLLOW | AT_STATX_DONT_SYNC, mask, &sx) != 0)
                        continue; // vanished since the listing: nothing to count
                    haveStat = true;
                    if (S_ISDIR(sx.stx_mode)) type = DT_DIR;
                    else if (S_ISLNK(sx.stx_mode)) type = DT_LNK;
                }
                if (type == DT_LNK) continue; // links count nothing and are never followed
                if (type == DT_DIR) {
                    Item child;
                    child.path.reserve(item.path.size() + 1 + std::strlen(name));
                    child.path = item.path;
                    if (child.path.empty() || child.path.back() != '/') child.path.push_back('/');
                    child.nameAt = static_cast<std::uint32_t>(child.path.size());
                    child.path += name;
                    if (!excluded_.empty() && isExcluded(child.path)) continue;
                    child.depth = item.depth + 1;
                    child.parent = handle;
                    child.slot = visitor_.enterFolder(item.slot, child.path, child.depth);
                    found.push_back(std::move(child));
                    continue;
                }
                if (!haveStat) continue;
                ++files;
                lastInBuffer = name;
                const std::int64_t size = ParallelWalk::countedSize((sx.stx_mask & STATX_BLOCKS) != 0,
                                                                    static_cast<std::int64_t>(sx.stx_blocks),
                                                                    static_cast<std::int64_t>(sx.stx_size));
                bytes += size;
                if (reportLinks && sx.stx_nlink > 1 && (sx.stx_mask & STATX_INO) != 0)
                    linked.push_back({static_cast<std::uint64_t>(::makedev(sx.stx_dev_major, sx.stx_dev_minor)),
                                      sx.stx_ino, size, name});
            }
            if (lastInBuffer) lastFile = lastInBuffer;
            if (last) break;
        }
    done:
        if (failed) visitor_.folderUnreadable(item.path);
        if (!linked.empty()) visitor_.linkedFiles(item.slot, item.path, linked);
        visitor_.folderDone(item.slot, item.path, bytes, files, static_cast<std::int64_t>(found.size() - firstFound),
                            lastFile);
    }

    ParallelWalk::Visitor& visitor_;
    const ParallelWalk::Options& options_;
    dev_t rootDevice_ = 0;
    bool shortReadEndsListing_ = false;
    bool checkDevicePerFolder_ = false;
    std::unordered_set<std::string> excluded_;
    std::atomic<bool> stop_{false};
    std::mutex mutex_;
    std::condition_variable idle_;
    std::vector<Item> stack_;
    int busy_ = 0;
    int waiting_ = 0;
};

} // namespace

ParallelWalk::Outcome ParallelWalk::run(const std::string& root, std::int64_t rootSlot, Visitor& visitor,
                                        const Options& options) {
    Walk walk(visitor, options);
    return walk.run(root, rootSlot);
}

ParallelWalk::Outcome ParallelWalk::runMany(const std::vector<std::pair<std::string, std::int64_t>>& roots,
                                            Visitor& visitor, const Options& options) {
    Options plain = options;
    plain.stayOnFileSystem = false; // each root's own file system is not tracked here
    Walk walk(visitor, plain);
    return walk.runMany(roots);
}

int ParallelWalk::defaultThreads() {
    const unsigned cores = std::thread::hardware_concurrency();
    // Reading folders is mostly waiting in the kernel (and on the disk when caches are cold),
    // so twice the cores keeps the disk queue full without crowding the machine.
    return static_cast<int>(std::clamp(cores * 2, 4u, 16u));
}

} // namespace bv
