#include "autopilot/FolderCandidates.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "clean/DevCacheCatalog.h"
#include "clean/KeepNewestItems.h"
#include "foundation/AsciiCase.h"
#include "space/ParallelWalk.h"

namespace bv {
namespace {

size_t sequenceLength(unsigned char lead) {
    if ((lead >> 5) == 0x6) return 2;
    if ((lead >> 4) == 0xE) return 3;
    if ((lead >> 3) == 0x1E) return 4;
    return 1;
}

bool endsWith(std::string_view text, std::string_view tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

TimePoint modifiedOf(const struct stat& st) {
    return fromEpochSeconds(st.st_mtim.tv_sec) +
           std::chrono::duration_cast<TimePoint::duration>(std::chrono::nanoseconds(st.st_mtim.tv_nsec));
}

// A rule's name conditions prepared once: lowered names and ".ext" endings.
class NameMatcher {
public:
    explicit NameMatcher(const FolderWatchRule& rule) : rule_(rule) {
        for (const auto& n : rule.names) names_.push_back(asciiLowercased(n));
        for (const auto& e : rule.extensions) endings_.push_back("." + asciiLowercased(e));
        hasGlob_ = rule.glob && !rule.glob->empty();
    }

    bool matches(const FolderCandidate& candidate, TimePoint now) const {
        if (rule_.keepNewest) return false;
        if (rule_.directoriesOnly && !candidate.isDirectory) return false;
        if (rule_.minimumAgeDays) {
            if (!candidate.modified) return false;
            if (now - *candidate.modified < std::chrono::seconds(*rule_.minimumAgeDays * 86400)) return false;
        }
        if (names_.empty() && endings_.empty() && !hasGlob_) return rule_.minimumAgeDays.has_value();
        const std::string lowered = asciiLowercased(candidate.name);
        for (const auto& n : names_)
            if (n == lowered) return true;
        for (const auto& ending : endings_)
            if (endsWith(lowered, ending)) return true;
        return hasGlob_ && FolderCandidates::globMatches(*rule_.glob, candidate.name);
    }

private:
    const FolderWatchRule& rule_;
    std::vector<std::string> names_;
    std::vector<std::string> endings_;
    bool hasGlob_ = false;
};

// One folder still to be read.
struct Pending {
    std::string path;
    int depth = 0; // of the folder itself; its items have depth + 1
};

// The walk: workers share a stack of folders; each keeps what it found in its own list.
class Walk {
public:
    Walk(const FolderWatchRule& rule, TimePoint now, dev_t device) : rule_(rule), matcher_(rule), now_(now), device_(device) {}

    void read(const Pending& folder, std::vector<FolderCandidate>& out, std::vector<Pending>& found) const {
        // The rule's folder is opened as named; below it a link is never followed.
        const int fd = ::open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | (folder.depth > 0 ? O_NOFOLLOW : 0));
        if (fd < 0) return;
        DIR* d = ::fdopendir(fd);
        if (!d) {
            ::close(fd);
            return;
        }
        const bool goDeeper = rule_.scope == FolderScope::recursive;
        while (dirent* e = ::readdir(d)) {
            const char* n = e->d_name;
            if (n[0] == '.' && (!n[1] || (n[1] == '.' && !n[2]))) continue;
            if (e->d_type == DT_LNK) continue;
            struct stat st {};
            if (::fstatat(::dirfd(d), n, &st, AT_SYMLINK_NOFOLLOW) != 0 || S_ISLNK(st.st_mode)) continue;
            FolderCandidate c;
            c.isDirectory = S_ISDIR(st.st_mode);
            if (c.isDirectory && st.st_dev != device_) continue; // a mount point: another file system
            c.name = n;
            c.path = folder.path + "/" + c.name;
            c.bytes = c.isDirectory ? 0 : ParallelWalk::countedSize(true, st.st_blocks, st.st_size);
            c.modified = modifiedOf(st);
            c.depth = folder.depth + 1;
            if (c.isDirectory && goDeeper && KeepNewestItems::entersFolderNamed(c.name) &&
                !matcher_.matches(c, now_))
                found.push_back({c.path, c.depth});
            out.push_back(std::move(c));
        }
        ::closedir(d);
    }

    std::vector<FolderCandidate> run(const std::string& root, int threads) {
        std::vector<Pending> stack{{root, 0}};
        std::mutex m;
        std::condition_variable cv;
        int busy = 0;
        std::vector<std::vector<FolderCandidate>> lists(static_cast<size_t>(threads));
        auto worker = [&](size_t index) {
            std::vector<FolderCandidate>& out = lists[index];
            std::vector<Pending> found;
            for (;;) {
                Pending folder;
                {
                    std::unique_lock lock(m);
                    cv.wait(lock, [&] { return !stack.empty() || busy == 0; });
                    if (stack.empty()) return;
                    folder = std::move(stack.back());
                    stack.pop_back();
                    ++busy;
                }
                read(folder, out, found);
                {
                    std::lock_guard lock(m);
                    --busy;
                    for (auto& f : found) stack.push_back(std::move(f));
                }
                found.clear();
                cv.notify_all();
            }
        };
        std::vector<std::thread> pool;
        for (int i = 1; i < threads; ++i) pool.emplace_back(worker, static_cast<size_t>(i));
        worker(0);
        for (auto& t : pool) t.join();

        std::vector<FolderCandidate> all = std::move(lists[0]);
        for (size_t i = 1; i < lists.size(); ++i)
            all.insert(all.end(), std::make_move_iterator(lists[i].begin()), std::make_move_iterator(lists[i].end()));
        return all;
    }

private:
    const FolderWatchRule& rule_;
    NameMatcher matcher_;
    TimePoint now_;
    dev_t device_;
};

} // namespace

bool FolderCandidates::globMatches(std::string_view glob, std::string_view name) {
    size_t p = 0, n = 0;
    size_t starP = std::string_view::npos, starN = 0;
    while (n < name.size()) {
        if (p < glob.size() && glob[p] == '*') {
            starP = p++;
            starN = n;
            continue;
        }
        if (p < glob.size() && glob[p] == '?' && name[n] != '\n') {
            n = std::min(name.size(), n + sequenceLength(static_cast<unsigned char>(name[n])));
            ++p;
            continue;
        }
        if (p < glob.size() && glob[p] != '?' && glob[p] == name[n]) {
            ++p, ++n;
            continue;
        }
        // Let the last star take one more character, if it may.
        if (starP == std::string_view::npos || name[starN] == '\n') return false;
        starN = std::min(name.size(), starN + sequenceLength(static_cast<unsigned char>(name[starN])));
        n = starN;
        p = starP + 1;
    }
    while (p < glob.size() && glob[p] == '*') ++p;
    return p == glob.size();
}

bool FolderCandidates::matches(const FolderCandidate& candidate, const FolderWatchRule& rule, TimePoint now) {
    return NameMatcher(rule).matches(candidate, now);
}

std::optional<std::vector<FolderCandidate>> FolderCandidates::list(const FolderWatchRule& rule, TimePoint now, int threads) {
    const std::string root = DevCacheCatalog::standardizedPath(rule.parentPath);
    if (root.empty() || root.front() != '/') return std::nullopt;
    // The folder itself must open and list: a rule whose folder is gone or closed to us is off.
    const int fd = ::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    struct stat st {};
    DIR* d = ::fstat(fd, &st) == 0 ? ::fdopendir(fd) : nullptr;
    if (!d) {
        ::close(fd);
        return std::nullopt;
    }
    errno = 0;
    const bool listable = ::readdir(d) != nullptr || errno == 0;
    ::closedir(d);
    if (!listable) return std::nullopt;

    if (rule.scope == FolderScope::children) threads = 1;
    else if (threads <= 0) threads = ParallelWalk::defaultThreads();
    return Walk(rule, now, st.st_dev).run(root, threads);
}

} // namespace bv
