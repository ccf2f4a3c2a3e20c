#include "space/DiskMapScanner.h"

#include <climits>
#include <cstdlib>

#include <algorithm>
#include <atomic>
#include <deque>
#include <mutex>

#include "platform/MountTable.h"
#include "space/ParallelWalk.h"

namespace bv {
namespace {

// A folder at most kMaxDepth below the root. Deeper folders report into their ancestor at
// that depth, so the tally is bounded by the folders near the top, not by the disk.
struct Node {
    std::string path;
    std::int64_t index;  // position in the deque
    std::int64_t parent; // the parent's index, -1 for the root
    int depth;
    std::atomic<std::int64_t> bytes{0};
    std::atomic<std::int64_t> files{0};
    Node(std::string p, std::int64_t i, std::int64_t par, int d) : path(std::move(p)), index(i), parent(par), depth(d) {}
};

// Slots handed to the walk are the nodes' addresses (a deque never moves what it holds), so
// a finished folder adds its totals without a lock. Only making a node takes the lock, and
// the progress holder is refreshed every 32nd folder from lock-free counters.
class MapVisitor final : public ParallelWalk::Visitor {
public:
    MapVisitor(const std::string& root, DiskMapProgress& progress) : progress_(progress) {
        nodes_.emplace_back(root, 0, -1, 0);
    }

    std::int64_t rootSlot() { return slotOf(&nodes_.front()); }

    std::int64_t enterFolder(std::int64_t parentSlot, const std::string& path, int depth) override {
        if (depth > DiskMapScanner::kMaxDepth) return parentSlot;
        const std::int64_t parent = reinterpret_cast<Node*>(static_cast<std::intptr_t>(parentSlot))->index;
        std::lock_guard lock(mutex_);
        nodes_.emplace_back(path, static_cast<std::int64_t>(nodes_.size()), parent, depth);
        return slotOf(&nodes_.back());
    }

    void folderDone(std::int64_t slot, const std::string& path, std::int64_t b, std::int64_t f,
                    std::int64_t subfolders, std::string_view lastFile) override {
        Node* node = reinterpret_cast<Node*>(static_cast<std::intptr_t>(slot));
        node->bytes.fetch_add(b, std::memory_order_relaxed);
        node->files.fetch_add(f, std::memory_order_relaxed);
        files_.fetch_add(f, std::memory_order_relaxed);
        bytes_.fetch_add(b, std::memory_order_relaxed);
        folders_.fetch_add(subfolders, std::memory_order_relaxed);
        if (done_.fetch_add(1, std::memory_order_relaxed) % 32 == 0) {
            // The progress names a file, not only its folder, so a long folder shows movement.
            const std::string current = lastFile.empty() ? path : path + (path == "/" ? "" : "/") + std::string(lastFile);
            publish(&current);
        }
    }

    void folderUnreadable(const std::string&) override { unreadable_.fetch_add(1, std::memory_order_relaxed); }

    // Files with more than one link are few on most disks; one lock per folder that has any.
    void linkedFiles(std::int64_t slot, const std::string& path, std::vector<ParallelWalk::LinkedFile>& files) override {
        const std::int64_t node = reinterpret_cast<Node*>(static_cast<std::intptr_t>(slot))->index;
        const std::string folder = path == "/" ? path : path + "/";
        std::lock_guard lock(linksMutex_);
        for (auto& f : files) links_.push_back({f.device, f.inode, folder + f.name, node, f.bytes});
    }

    // Brings the shared progress up to the counters; `current` names the file just counted.
    void publish(const std::string* current) {
        progress_.update([&](DiskMapCounts& c) {
            c.files = files_.load(std::memory_order_relaxed);
            c.bytes = bytes_.load(std::memory_order_relaxed);
            c.folders = folders_.load(std::memory_order_relaxed);
            c.unreadable = unreadable_.load(std::memory_order_relaxed);
            if (current) c.current = *current;
        });
    }

    // After the walk: each folder's figures include its subfolders'. Parents precede their
    // children in the deque, so one backward pass adds every folder into its parent.
    std::vector<DiskMapScanner::FolderTally> tally() {
        std::vector<DiskMapScanner::FolderTally> out(nodes_.size());
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            Node& n = nodes_[i];
            out[i] = {std::move(n.path), n.parent, n.depth, n.bytes.load(), n.files.load()};
        }
        settleLinks(out);
        for (std::size_t i = out.size(); i-- > 1;) {
            auto& parent = out[static_cast<std::size_t>(out[i].parent)];
            parent.bytes += out[i].bytes;
            parent.files += out[i].files;
            parent.sharedBytes += out[i].sharedBytes;
        }
        return out;
    }

    std::int64_t unreadable() const { return unreadable_.load(); }
    // The bytes tally() took back from hard links counted under another path.
    std::int64_t sharedTotal() const { return sharedTotal_; }

private:
    struct Link {
        std::uint64_t device, inode;
        std::string path;
        std::int64_t node; // the folder (or its ancestor at the deepest kept level) it was counted in
        std::int64_t bytes;
    };

    // Every file was counted once per name during the walk. Of the names one file has here,
    // the smallest path keeps the bytes; each other name's folder gives them back. Sorting by
    // path makes the choice the same whatever order the threads met the names in.
    //
    // A given-back name is shared by the folders from its own up to, not including, the first
    // folder that also holds the kept name: that one counts the file itself. So the name's
    // folder gets the bytes as shared and that common folder gets them taken off again; the
    // pass that adds children into parents does the rest.
    void settleLinks(std::vector<DiskMapScanner::FolderTally>& out) {
        std::sort(links_.begin(), links_.end(), [](const Link& a, const Link& b) {
            if (a.device != b.device) return a.device < b.device;
            if (a.inode != b.inode) return a.inode < b.inode;
            return a.path < b.path;
        });
        std::int64_t kept = -1; // the folder of the current file's smallest path
        for (std::size_t i = 0; i < links_.size(); ++i) {
            const Link& l = links_[i];
            if (i == 0 || l.device != links_[i - 1].device || l.inode != links_[i - 1].inode) {
                kept = l.node;
                continue;
            }
            auto& folder = out[static_cast<std::size_t>(l.node)];
            folder.bytes -= l.bytes;
            folder.sharedBytes += l.bytes;
            out[static_cast<std::size_t>(commonFolder(out, l.node, kept))].sharedBytes -= l.bytes;
            sharedTotal_ += l.bytes;
        }
        links_.clear();
        links_.shrink_to_fit();
    }

    // The deepest folder holding both (tally indices; a parent always has the smaller depth).
    static std::int64_t commonFolder(const std::vector<DiskMapScanner::FolderTally>& out, std::int64_t a,
                                     std::int64_t b) {
        while (a != b) {
            if (out[static_cast<std::size_t>(a)].depth >= out[static_cast<std::size_t>(b)].depth)
                a = out[static_cast<std::size_t>(a)].parent;
            else
                b = out[static_cast<std::size_t>(b)].parent;
        }
        return a;
    }

    static std::int64_t slotOf(Node* n) { return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(n)); }
    static std::int64_t slotOf(const Node* n) { return slotOf(const_cast<Node*>(n)); }

    DiskMapProgress& progress_;
    std::mutex mutex_;
    std::deque<Node> nodes_;
    std::mutex linksMutex_;
    std::vector<Link> links_;
    std::int64_t sharedTotal_ = 0;
    std::atomic<std::int64_t> files_{0}, bytes_{0}, folders_{0}, unreadable_{0}, done_{0};
};

std::string lastComponent(const std::string& path) {
    if (path == "/") return "/";
    std::string p = path;
    while (p.size() > 1 && p.back() == '/') p.pop_back();
    const auto slash = p.rfind('/');
    return slash == std::string::npos ? p : p.substr(slash + 1);
}

} // namespace

std::int64_t DiskMapScanner::sizeFloor(std::int64_t totalBytes) {
    return totalBytes > 19'999'999'999 ? totalBytes / 20000 : 1'000'000;
}

std::string DiskMapScanner::realPath(const std::string& path) {
    char buffer[PATH_MAX];
    if (::realpath(path.c_str(), buffer)) return buffer;
    return path;
}

const std::vector<std::string>& DiskMapScanner::excludedTrees() {
    static const std::vector<std::string> trees{"/proc", "/sys", "/dev", "/run"};
    return trees;
}

std::vector<std::string> DiskMapScanner::exclusionsFor(const std::string& root, const std::vector<std::string>& trees) {
    std::vector<std::string> out;
    for (const auto& t : trees) {
        const bool holdsRoot = root == t || (root.size() > t.size() && root.compare(0, t.size(), t) == 0 &&
                                             root[t.size()] == '/');
        if (!holdsRoot) out.push_back(t);
    }
    return out;
}

std::string DiskMapScanner::displayName(const std::string& rootPath, const std::string& homePath,
                                        const std::string& rootFileSystemName) {
    if (rootPath == "/") {
        if (!rootFileSystemName.empty()) return rootFileSystemName;
        if (auto entry = MountTable::containing(MountTable::read(), "/")) return MountTable::displayName(*entry);
        return "/";
    }
    if (!homePath.empty() && (rootPath == homePath || rootPath == realPath(homePath))) return "Home";
    return lastComponent(rootPath);
}

DiskMapNode DiskMapScanner::buildTree(const std::vector<FolderTally>& tally, const std::string& rootName,
                                      std::int64_t floor) {
    DiskMapNode root;
    if (tally.empty()) return root;
    const std::size_t n = tally.size();
    std::vector<char> kept(n, 0);
    kept[0] = 1;
    for (std::size_t i = 1; i < n; ++i) {
        if (tally[i].bytes < floor) continue;
        // The folder and its ancestors up to the root or one already kept.
        for (std::int64_t j = static_cast<std::int64_t>(i); j > 0 && !kept[static_cast<std::size_t>(j)];
             j = tally[static_cast<std::size_t>(j)].parent)
            kept[static_cast<std::size_t>(j)] = 1;
    }
    std::vector<std::vector<std::size_t>> children(n);
    for (std::size_t i = 1; i < n; ++i)
        if (kept[i]) children[static_cast<std::size_t>(tally[i].parent)].push_back(i);

    std::function<DiskMapNode(std::size_t)> make = [&](std::size_t i) {
        DiskMapNode node;
        node.path = tally[i].path;
        node.name = i == 0 ? rootName : lastComponent(tally[i].path);
        node.bytes = tally[i].bytes;
        node.fileCount = tally[i].files;
        node.sharedBytes = tally[i].sharedBytes;
        auto& list = children[i];
        // Largest first; folders of equal size keep the order the walk merged them in.
        std::stable_sort(list.begin(), list.end(),
                         [&](std::size_t a, std::size_t b) { return tally[a].bytes > tally[b].bytes; });
        node.children.reserve(list.size());
        for (std::size_t c : list) node.children.push_back(make(c));
        return node;
    };
    return make(0);
}

DiskMap DiskMapScanner::scan(const std::string& root, DiskMapProgress& progress,
                             const std::function<bool()>& shouldStop, const Options& options) {
    DiskMap map;
    // The map shows the disk as it was when the walk began, so the date is taken now.
    map.scannedAt = options.now ? *options.now : Clock::now();
    map.rootPath = realPath(root);
    const std::string name = displayName(map.rootPath, options.homePath, options.rootFileSystemName);

    ParallelWalk::Options walk;
    walk.threads = options.threads;
    walk.checkEvery = 64;
    walk.shouldStop = shouldStop;
    walk.stayOnFileSystem = true;
    walk.excluded = exclusionsFor(map.rootPath, options.excludedTrees ? *options.excludedTrees : excludedTrees());
    walk.reportLinkedFiles = true;

    MapVisitor visitor(map.rootPath, progress);
    const auto outcome = ParallelWalk::run(map.rootPath, visitor.rootSlot(), visitor, walk);
    visitor.publish(nullptr);
    map.unreadableCount = visitor.unreadable();
    if (!outcome.rootOpened) {
        map.root.path = map.rootPath;
        map.root.name = name;
        return map;
    }
    const auto tally = visitor.tally();
    map.totalBytes = tally[0].bytes;
    map.fileCount = tally[0].files;
    map.sharedBytes = visitor.sharedTotal();
    // The walk's running figure counted every link; the last one shown is the map's.
    progress.update([&](DiskMapCounts& c) { c.bytes = map.totalBytes; });
    map.truncated = outcome.stopped;
    map.root = buildTree(tally, name, sizeFloor(map.totalBytes));
    return map;
}

} // namespace bv
