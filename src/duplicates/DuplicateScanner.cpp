#include "duplicates/DuplicateScanner.h"

#include "clean/DevCacheCatalog.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <set>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace bv {
namespace {

// Folders that hold other people's code or packages: copies in them are expected and not
// the user's to remove. Compared in lower case; ".git" is compared exactly.
constexpr std::array<std::string_view, 12> kSkippedFolders{
    "node_modules", "bower_components", "pods", "vendor", "site-packages", ".venv",
    "venv",         ".build",           ".tox", ".gradle", ".cargo",       "carthage"};

bool isSkippedFolder(std::string_view name) {
    if (name == ".git") return true;
    if (name.size() > 16) return false; // longer than any listed name
    char lower[17];
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char c = name[i];
        lower[i] = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    }
    const std::string_view folded(lower, name.size());
    return std::find(kSkippedFolders.begin(), kSkippedFolders.end(), folded) != kSkippedFolders.end();
}

bool isBelowOrEqual(const std::string& path, const std::string& root) {
    if (root == "/") return true;
    return path == root || (path.size() > root.size() && path.compare(0, root.size(), root) == 0 &&
                            path[root.size()] == '/');
}

std::string childPath(const std::string& folder, const char* name) {
    std::string path;
    path.reserve(folder.size() + 1 + std::strlen(name));
    path = folder;
    if (path.empty() || path.back() != '/') path += '/';
    path += name;
    return path;
}

struct StorageKey {
    dev_t device;
    ino_t inode;
    friend bool operator==(const StorageKey&, const StorageKey&) = default;
};
struct StorageKeyHash {
    std::size_t operator()(const StorageKey& k) const noexcept {
        return std::hash<std::uint64_t>()(static_cast<std::uint64_t>(k.inode) ^
                                          (static_cast<std::uint64_t>(k.device) << 32));
    }
};
struct DigestHash {
    std::size_t operator()(const Sha256Digest& d) const noexcept {
        std::size_t h;
        std::memcpy(&h, d.data(), sizeof h); // a SHA-256 is already evenly spread
        return h;
    }
};

} // namespace

std::int64_t effectiveDuplicateMinimum(std::int64_t requested) {
    return std::max(requested, kDuplicateMinimumFloor);
}

std::string duplicateStandardPath(const std::string& path) {
    if (!path.empty() && path.front() == '/') return DevCacheCatalog::standardizedPath(path);
    // A relative folder (typed in a terminal) is read against the working folder.
    char cwd[PATH_MAX];
    const std::string base = ::getcwd(cwd, sizeof cwd) ? cwd : "/";
    return DevCacheCatalog::standardizedPath(base + "/" + path);
}

std::vector<std::string> reduceDuplicateRoots(const std::vector<std::string>& roots) {
    std::vector<std::string> standard;
    for (const auto& root : roots) {
        std::string s = duplicateStandardPath(root);
        if (std::find(standard.begin(), standard.end(), s) == standard.end()) standard.push_back(std::move(s));
    }
    std::vector<std::string> reduced;
    for (std::size_t i = 0; i < standard.size(); ++i) {
        bool nested = false;
        for (std::size_t j = 0; j < standard.size() && !nested; ++j)
            nested = i != j && isBelowOrEqual(standard[i], standard[j]);
        if (!nested) reduced.push_back(standard[i]);
    }
    return reduced;
}

DuplicateScanner::DuplicateScanner(std::int64_t minimumBytes, const CancellationFlag& flag,
                                   DuplicateScanProgress& progress)
    : minimumBytes_(minimumBytes), flag_(flag), progress_(progress) {}

std::vector<DuplicateGroup> DuplicateScanner::run(const std::vector<std::string>& roots) {
    auto buckets = sizePass(reduceDuplicateRoots(roots));
    auto alike = quickKeyPass(std::move(buckets));
    auto confirmed = contentPass(std::move(alike));
    return groupPass(std::move(confirmed));
}

void DuplicateScanner::walk(const std::string& root,
                            std::unordered_map<std::int64_t, std::vector<Candidate>>& bySize) {
    // Depth first with an explicit stack of folder paths: no recursion depth limit, and
    // one open folder at a time.
    std::vector<std::string> pending{root};
    bool rootFolder = true;
    while (!pending.empty()) {
        const std::string folder = std::move(pending.back());
        pending.pop_back();
        // Only the root may be reached through a link; below it a folder swapped for a link
        // since it was listed is refused.
        const int dirFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (rootFolder ? 0 : O_NOFOLLOW));
        rootFolder = false;
        if (dirFd < 0) continue; // unreadable or gone: go on with the rest
        DIR* dir = ::fdopendir(dirFd);
        if (!dir) {
            ::close(dirFd);
            continue;
        }
        while (const dirent* entry = ::readdir(dir)) {
            const char* name = entry->d_name;
            if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
            if (++entries_ % 64 == 0 && flag_.isCancelled()) {
                ::closedir(dir);
                return;
            }
            unsigned char type = entry->d_type;
            struct stat st {};
            bool haveStat = false;
            if (type == DT_UNKNOWN || type == DT_REG) {
                if (::fstatat(dirFd, name, &st, AT_SYMLINK_NOFOLLOW) != 0) continue; // vanished
                haveStat = true;
                type = S_ISDIR(st.st_mode) ? DT_DIR : S_ISREG(st.st_mode) ? DT_REG : S_ISLNK(st.st_mode) ? DT_LNK : DT_UNKNOWN;
            }
            if (type == DT_DIR) {
                if (!isSkippedFolder(name)) pending.push_back(childPath(folder, name));
                continue;
            }
            // Links are never followed; sockets, pipes and devices have no contents to compare.
            if (type != DT_REG || !haveStat) continue;
            const std::int64_t size = st.st_size;
            progress_.update([name](DuplicateScanCounters& c) {
                ++c.files;
                c.current.assign(name);
            });
            if (size < minimumBytes_) continue;
            bySize[size].push_back(Candidate{childPath(folder, name), st.st_dev, st.st_ino});
        }
        ::closedir(dir);
    }
}

std::vector<DuplicateScanner::Bucket> DuplicateScanner::sizePass(const std::vector<std::string>& roots) {
    std::unordered_map<std::int64_t, std::vector<Candidate>> bySize;
    for (const auto& root : roots) {
        if (stopped()) break;
        walk(root, bySize);
    }
    std::vector<Bucket> buckets;
    for (auto& [size, files] : bySize)
        if (files.size() >= 2) buckets.push_back(Bucket{size, std::move(files)});
    // Largest first: the biggest wins are confirmed first if the user stops early.
    std::sort(buckets.begin(), buckets.end(), [](const Bucket& a, const Bucket& b) { return a.size > b.size; });
    return buckets;
}

std::vector<DuplicateScanner::Bucket> DuplicateScanner::quickKeyPass(std::vector<Bucket> buckets) {
    std::vector<Bucket> out;
    std::unordered_map<Sha256Digest, std::vector<Candidate>, DigestHash> byKey;
    std::unordered_map<StorageKey, Sha256Digest, StorageKeyHash> seen;
    for (auto& bucket : buckets) {
        if (stopped()) break;
        byKey.clear();
        seen.clear();
        for (auto& file : bucket.files) {
            dev_t device = 0;
            ino_t inode = 0;
            const int fd = ContentHasher::openRegular(file.path, device, inode);
            if (fd < 0) continue; // gone or no longer a plain file: drops out
            Sha256Digest digest{};
            // Hard links of one file have one contents: read them once.
            const auto known = seen.find(StorageKey{device, inode});
            bool ok = true;
            if (known != seen.end()) {
                digest = known->second;
            } else {
                ok = hasher_.quickKeyOfDescriptor(fd, bucket.size, digest);
                if (ok) seen.emplace(StorageKey{device, inode}, digest);
            }
            ::close(fd);
            if (!ok) continue;
            file.device = device;
            file.inode = inode;
            byKey[digest].push_back(std::move(file));
        }
        for (auto& [key, files] : byKey)
            if (files.size() >= 2) out.push_back(Bucket{bucket.size, std::move(files)});
    }
    return out;
}

std::vector<DuplicateScanner::Confirmed> DuplicateScanner::contentPass(std::vector<Bucket> buckets) {
    std::vector<Confirmed> out;
    std::unordered_map<Sha256Digest, std::vector<std::string>, DigestHash> byHash;
    std::unordered_map<StorageKey, Sha256Digest, StorageKeyHash> seen;
    for (auto& bucket : buckets) {
        if (stopped()) break;
        byHash.clear();
        seen.clear();
        for (auto& file : bucket.files) {
            if (stopped()) break;
            dev_t device = 0;
            ino_t inode = 0;
            const int fd = ContentHasher::openRegular(file.path, device, inode);
            if (fd < 0) continue;
            Sha256Digest digest{};
            const auto known = seen.find(StorageKey{device, inode});
            bool ok = true;
            if (known != seen.end()) {
                digest = known->second;
            } else {
                ok = hasher_.hashDescriptor(fd, flag_, digest);
                if (ok) seen.emplace(StorageKey{device, inode}, digest);
            }
            ::close(fd);
            if (!ok) continue;
            progress_.update([](DuplicateScanCounters& c) { ++c.hashed; });
            byHash[digest].push_back(std::move(file.path));
        }
        if (stopped()) break;
        for (auto& [digest, paths] : byHash)
            if (paths.size() >= 2) out.push_back(Confirmed{bucket.size, digest, std::move(paths)});
    }
    return out;
}

DuplicateGroup makeDuplicateGroup(std::int64_t size, const std::string& digestText, std::vector<std::string> paths) {
    std::sort(paths.begin(), paths.end());
    DuplicateGroup group;
    group.id = std::to_string(size) + "-" + digestText;
    group.fileSize = size;
    std::set<std::pair<std::uint64_t, std::uint64_t>> storage;
    std::size_t unknownStorage = 0; // each file that can't be stat'ed is its own object
    for (auto& path : paths) {
        DuplicateFile file;
        file.bytes = size;
        struct stat st {};
        if (::stat(path.c_str(), &st) == 0) {
            storage.emplace(static_cast<std::uint64_t>(st.st_dev), static_cast<std::uint64_t>(st.st_ino));
            file.sharesStorage = st.st_nlink >= 2;
            file.modified = TimePoint(std::chrono::duration_cast<TimePoint::duration>(
                std::chrono::seconds(st.st_mtim.tv_sec) + std::chrono::nanoseconds(st.st_mtim.tv_nsec)));
        } else {
            ++unknownStorage;
        }
        file.path = std::move(path);
        group.files.push_back(std::move(file));
    }
    const std::size_t objects = storage.size() + unknownStorage;
    group.reclaimableBytes = objects == 0 ? 0 : size * static_cast<std::int64_t>(objects - 1);
    return group;
}

void sortDuplicateGroups(std::vector<DuplicateGroup>& groups) {
    std::sort(groups.begin(), groups.end(), [](const DuplicateGroup& a, const DuplicateGroup& b) {
        if (a.reclaimableBytes != b.reclaimableBytes) return a.reclaimableBytes > b.reclaimableBytes;
        if (a.fileSize != b.fileSize) return a.fileSize > b.fileSize;
        return a.id < b.id;
    });
}

std::vector<DuplicateGroup> DuplicateScanner::groupPass(std::vector<Confirmed> confirmed) const {
    std::vector<DuplicateGroup> groups;
    groups.reserve(confirmed.size());
    for (auto& c : confirmed) groups.push_back(makeDuplicateGroup(c.size, digestHex(c.digest), std::move(c.paths)));
    sortDuplicateGroups(groups);
    return groups;
}

} // namespace bv
