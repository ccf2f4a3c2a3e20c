#include "buildwatch/BuildWatchScanner.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <unordered_set>

#include "buildwatch/BuildWatchCatalog.h"
#include "buildwatch/GitIgnoreCheck.h"
#include "buildwatch/PropertyListReader.h"
#include "platform/RunningApps.h"
#include "foundation/AsciiCase.h"
#include "space/FolderMeasure.h"

namespace bv {
namespace {

using Catalog = BuildWatchCatalog;
using Pattern = Catalog::Pattern;

struct Entry {
    std::string name;
    bool isFolder = false; // a real folder: a directory, not a link
};

std::string join(const std::string& dir, const std::string& name) {
    return dir == "/" ? "/" + name : dir + "/" + name;
}

// The entries of a folder, or nothing (errno set) when it can't be listed.
std::optional<std::vector<Entry>> listEntries(const std::string& path) {
    DIR* d = ::opendir(path.c_str());
    if (!d) return std::nullopt;
    std::vector<Entry> out;
    while (dirent* e = ::readdir(d)) {
        const char* n = e->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0))) continue;
        Entry entry{n, e->d_type == DT_DIR};
        if (e->d_type == DT_UNKNOWN) {
            struct stat st {};
            entry.isFolder = ::fstatat(::dirfd(d), n, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
        }
        out.push_back(std::move(entry));
    }
    ::closedir(d);
    return out;
}

std::vector<std::string> namesOf(const std::vector<Entry>& entries) {
    std::vector<std::string> names;
    names.reserve(entries.size());
    for (const auto& e : entries) names.push_back(e.name);
    return names;
}

bool deniedErrno(int e) { return e == EACCES || e == EPERM; }

bool sameIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

// The folders one project's rows list below it, each read once however many rows ask.
using Listings = std::unordered_map<std::string, std::optional<std::vector<Entry>>>;

// Expands a row's components against the disk from `base`: the disk's own spelling is kept
// and every step must be a real folder.
void expand(const std::string& base, const std::vector<std::string>& components, std::size_t at,
            const std::vector<Entry>* baseEntries, Listings& listings, std::vector<std::string>& out) {
    if (at == components.size()) {
        out.push_back(base);
        return;
    }
    if (!baseEntries) {
        auto it = listings.find(base);
        if (it == listings.end()) it = listings.emplace(base, listEntries(base)).first;
        if (!it->second) return;
        baseEntries = &*it->second;
    }
    const std::string& want = components[at];
    const bool wild = want.find('*') != std::string::npos;
    for (const auto& e : *baseEntries) {
        if (!e.isFolder) continue;
        const bool taken = wild ? Catalog::componentMatches(want, e.name) : sameIgnoringCase(e.name, want);
        if (taken) expand(join(base, e.name), components, at + 1, nullptr, listings, out);
    }
}

struct Candidate {
    std::string path;
    std::string anchor;
    const Pattern* row = nullptr;
    bool needsGit = false;
    std::string workTree;
};

// One project's walk before git has answered and anything is measured.
struct PendingScan {
    std::string project;
    std::vector<BuildStack> stacks;
    std::vector<Candidate> candidates;
    bool blocked = false;
    bool xcodeSeen = false;
};

class ProjectWalker {
public:
    explicit ProjectWalker(PendingScan& scan) : scan_(scan) {}

    // `parentTree` is the work tree of the folder's parent: a folder holding its own ".git"
    // starts a new one, any other shares it, so no folder is looked up twice.
    void walk(const std::string& folder, const std::vector<Entry>& entries, int depth,
              const std::optional<std::string>& parentTree) {
        std::optional<std::string> tree = parentTree;
        for (const auto& e : entries)
            if (e.name == ".git") tree = folder;
        const auto lower = Catalog::lowerNames(namesOf(entries));
        for (const BuildStack s : Catalog::recognizeStacks(lower))
            if (std::find(scan_.stacks.begin(), scan_.stacks.end(), s) == scan_.stacks.end()) scan_.stacks.push_back(s);
        for (const auto& n : lower)
            if (n.ends_with(".xcodeproj") || n.ends_with(".xcworkspace")) scan_.xcodeSeen = true;

        const auto rows = Catalog::applicablePatterns(lower, false);
        if (!rows.empty()) {
            for (const Pattern* row : rows) {
                std::vector<std::string> found;
                expand(folder, row->components, 0, &entries, listings_, found);
                for (auto& p : found)
                    scan_.candidates.push_back({std::move(p), folder, row, tree.has_value(), tree.value_or("")});
            }
        }
        if (depth > 3) return;

        std::vector<const Entry*> children;
        for (const auto& e : entries)
            if (e.isFolder && !Catalog::walkSkips(e.name)) children.push_back(&e);
        std::sort(children.begin(), children.end(), [](const Entry* a, const Entry* b) { return a->name < b->name; });
        for (const Entry* e : children) {
            const std::string child = join(folder, e->name);
            if (const auto listed = listEntries(child)) walk(child, *listed, depth + 1, tree);
        }
    }

private:
    PendingScan& scan_;
    Listings listings_;
};

// Asks git once per work tree, over every pending scan, and drops what git does not ignore.
void keepIgnoredOnly(std::vector<PendingScan>& scans) {
    std::map<std::string, std::vector<std::string>> byTree;
    for (const auto& s : scans)
        for (const auto& c : s.candidates)
            if (c.needsGit) byTree[c.workTree].push_back(c.path);
    std::map<std::string, std::set<std::string>> ignored;
    for (auto& [tree, paths] : byTree)
        ignored[tree] = GitIgnoreCheck::ignoredPaths(tree, paths).value_or(std::set<std::string>{});
    for (auto& s : scans)
        std::erase_if(s.candidates, [&](const Candidate& c) { return c.needsGit && !ignored[c.workTree].contains(c.path); });
}

void addDerivedDataCandidates(PendingScan& scan, const std::vector<BuildWatchScanner::DerivedDataFolder>& derived) {
    const std::string& p = scan.project;
    for (const auto& dd : derived) {
        const bool ours = dd.workspacePath == p ||
                          (dd.workspacePath.size() > p.size() && dd.workspacePath.starts_with(p) &&
                           (p == "/" || dd.workspacePath[p.size()] == '/'));
        if (!ours) continue;
        const auto entries = listEntries(dd.path);
        if (!entries) continue;
        Listings listings;
        for (const Pattern* row : Catalog::applicablePatterns(namesOf(*entries), true)) {
            std::vector<std::string> found;
            expand(dd.path, row->components, 0, &*entries, listings, found);
            for (auto& f : found) scan.candidates.push_back({std::move(f), dd.path, row, false, ""});
        }
    }
}

bool isInside(const std::string& path, const std::string& root) {
    return path == root || (path.size() > root.size() && path.starts_with(root) && path[root.size()] == '/');
}

// Keeps the outermost of nested matches, shortest paths first.
std::vector<Candidate> outermost(std::vector<Candidate> candidates) {
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) { return a.path.size() < b.path.size(); });
    std::vector<Candidate> kept;
    for (auto& c : candidates) {
        const bool covered = std::any_of(kept.begin(), kept.end(), [&](const Candidate& k) { return isInside(c.path, k.path); });
        if (!covered) kept.push_back(std::move(c));
    }
    return kept;
}

using Deadline = std::optional<std::chrono::steady_clock::time_point>;
using SizeCache = std::unordered_map<std::string, std::int64_t>;

// Measures the paths not in `sizes` yet, all at once on the shared pool, into `sizes`.
void measureInto(SizeCache& sizes, const std::vector<std::string>& paths, Deadline deadline) {
    std::vector<std::string> missing;
    for (const auto& p : paths)
        if (!sizes.contains(p)) missing.push_back(p);
    if (missing.empty()) return;
    FolderMeasure::Options options;
    options.deadline = deadline;
    const auto results = FolderMeasure::measureMany(missing, options);
    for (std::size_t i = 0; i < missing.size(); ++i) sizes[missing[i]] = results[i].bytes;
}

// Measures folders on a thread of its own while the look's walk goes on, so the walk and the
// measuring (mostly waiting on inodes, on a pool of its own) overlap instead of following each
// other. Paths are handed over as the walk finds them and measured in batches of whatever has
// queued meanwhile; `finish` waits for the last and gives every size.
class MeasureBehind {
public:
    explicit MeasureBehind(Deadline deadline) : deadline_(deadline), worker_([this] { run(); }) {}
    MeasureBehind(const MeasureBehind&) = delete;
    MeasureBehind& operator=(const MeasureBehind&) = delete;
    ~MeasureBehind() { stop(); }

    void add(const std::vector<std::string>& paths) {
        if (paths.empty()) return;
        {
            const std::lock_guard lock(mutex_);
            queue_.insert(queue_.end(), paths.begin(), paths.end());
        }
        wake_.notify_one();
    }
    [[nodiscard]] SizeCache finish() {
        stop();
        return std::move(sizes_);
    }

private:
    void stop() {
        if (!worker_.joinable()) return;
        {
            const std::lock_guard lock(mutex_);
            done_ = true;
        }
        wake_.notify_one();
        worker_.join();
    }
    void run() {
        FolderMeasure::Options options;
        options.deadline = deadline_;
        for (;;) {
            std::vector<std::string> batch;
            {
                std::unique_lock lock(mutex_);
                wake_.wait(lock, [&] { return done_ || !queue_.empty(); });
                if (queue_.empty()) return;
                batch.swap(queue_);
            }
            const auto results = FolderMeasure::measureMany(batch, options);
            for (std::size_t i = 0; i < batch.size(); ++i) sizes_[batch[i]] = results[i].bytes;
        }
    }

    Deadline deadline_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::vector<std::string> queue_;
    bool done_ = false;
    SizeCache sizes_; // written by the worker only, read after it has ended
    std::thread worker_; // last: starts once everything above exists
};

// Turns the kept candidates of every scan into measured, sorted targets. `sizes` holds
// folders measured already.
std::vector<BuildWatchScanner::ProjectScan> finish(std::vector<PendingScan>& pending, bool measure, Deadline deadline,
                                                   SizeCache sizes = {}) {
    std::vector<std::vector<Candidate>> kept;
    std::vector<std::string> all;
    for (auto& s : pending) {
        kept.push_back(outermost(std::move(s.candidates)));
        for (const auto& c : kept.back()) all.push_back(c.path);
    }
    if (measure) measureInto(sizes, all, deadline);
    std::vector<BuildWatchScanner::ProjectScan> out;
    for (std::size_t i = 0; i < pending.size(); ++i) {
        BuildWatchScanner::ProjectScan scan;
        scan.stacks = pending[i].stacks;
        scan.blocked = pending[i].blocked;
        for (const auto& c : kept[i]) {
            BuildTarget t;
            t.path = c.path;
            t.anchorPath = c.anchor;
            t.title = c.row->title;
            t.stack = c.row->stack;
            t.bytes = measure ? sizes[c.path] : 0;
            t.newestChange = BuildWatchScanner::newestChange(c.path);
            scan.targets.push_back(std::move(t));
        }
        std::stable_sort(scan.targets.begin(), scan.targets.end(),
                         [](const BuildTarget& a, const BuildTarget& b) { return a.bytes > b.bytes; });
        out.push_back(std::move(scan));
    }
    return out;
}

// The work tree each parent folder lies in, looked up once for all the projects beside each other.
using TreeOfParent = std::unordered_map<std::string, std::optional<std::string>>;

// Walks one project folder that was listed already.
PendingScan walkProject(const std::string& project, const std::vector<Entry>& entries, const std::string& home,
                        const std::optional<std::vector<BuildWatchScanner::DerivedDataFolder>>& derived,
                        TreeOfParent& trees) {
    PendingScan scan;
    scan.project = project;
    const auto slash = project.rfind('/');
    const std::string parent = slash == 0 ? "/" : project.substr(0, slash);
    std::optional<std::string> tree;
    if (project != "/") {
        auto it = trees.find(parent);
        if (it == trees.end()) it = trees.emplace(parent, GitIgnoreCheck::workTreeOf(parent)).first;
        tree = it->second;
    }
    ProjectWalker(scan).walk(project, entries, 0, tree);
    if (scan.xcodeSeen) addDerivedDataCandidates(scan, derived ? *derived : BuildWatchScanner::listDerivedData(home));
    return scan;
}

} // namespace

BuildWatchScanner::ProjectScan BuildWatchScanner::scanProject(const std::string& projectIn, const std::string& home,
                                                              const std::optional<std::vector<DerivedDataFolder>>& derived,
                                                              bool measure) {
    const std::string project = Catalog::standardizedPath(projectIn);
    const auto entries = listEntries(project);
    if (!entries) return ProjectScan{{}, {}, accessDenied(project)};
    TreeOfParent trees;
    std::vector<PendingScan> pending{walkProject(project, *entries, home, derived, trees)};
    keepIgnoredOnly(pending);
    return std::move(finish(pending, measure, std::nullopt).front());
}

std::vector<BuildWatchScanner::DerivedDataFolder> BuildWatchScanner::listDerivedData(const std::string& home) {
    const std::string root = Catalog::homeFolders(home).derivedDataRoot;
    std::vector<DerivedDataFolder> out;
    const auto entries = listEntries(root);
    if (!entries) return out;
    for (const auto& e : *entries) {
        if (!e.isFolder) continue;
        const std::string child = join(root, e.name);
        const auto workspace = PropertyListReader::topLevelString(child + "/info.plist", "WorkspacePath");
        if (workspace && !workspace->empty()) out.push_back({child, Catalog::standardizedPath(*workspace)});
    }
    return out;
}

BuildWatchScanner::LookResult BuildWatchScanner::lookForProjects(const std::vector<std::string>& roots,
                                                                 const std::set<std::string>& watched,
                                                                 const std::string& home, std::chrono::seconds budget,
                                                                 std::int64_t minimumBytes) {
    const auto deadline = std::chrono::steady_clock::now() + budget;
    const auto derived = listDerivedData(home);
    const auto homeFolders = Catalog::homeFolders(home);
    LookResult result;
    std::unordered_set<std::string> visited;
    std::vector<PendingScan> pending;
    std::vector<std::vector<Candidate>> outer; // each pending project's outermost matches
    TreeOfParent trees;
    MeasureBehind measuring(deadline);

    struct Step {
        std::string path;
        int depth;
    };
    for (const auto& rootIn : roots) {
        const std::string root = Catalog::standardizedPath(rootIn);
        if (Catalog::isBlockedFolder(root, homeFolders) && !Catalog::isExactOnlyHomeFolder(root, homeFolders)) continue;
        // Depth first, children in name order, as a recursive walk would go.
        std::vector<Step> stack{{root, 0}};
        while (!stack.empty()) {
            if (std::chrono::steady_clock::now() >= deadline) {
                result.reachedDeadline = true;
                break;
            }
            const Step step = std::move(stack.back());
            stack.pop_back();
            if (!visited.insert(step.path).second) continue;
            errno = 0;
            const auto entries = listEntries(step.path);
            if (!entries) {
                if (deniedErrno(errno)) result.refusedFolders.push_back(step.path);
                continue;
            }
            bool isProject = false;
            for (const auto& e : *entries)
                if (e.name == ".git") isProject = true;
            if (!isProject) isProject = !Catalog::recognizeStacks(namesOf(*entries)).empty();
            if (isProject && !Catalog::isBlockedFolder(step.path, homeFolders)) {
                if (!watched.contains(step.path)) {
                    pending.push_back(walkProject(step.path, *entries, home, derived, trees));
                    outer.push_back(outermost(pending.back().candidates));
                    std::vector<std::string> paths;
                    for (const auto& c : outer.back()) paths.push_back(c.path);
                    measuring.add(paths);
                }
                continue;
            }
            if (step.depth >= 5) continue;
            std::vector<std::string> children;
            for (const auto& e : *entries)
                if (e.isFolder && !Catalog::walkSkips(e.name)) children.push_back(e.name);
            std::sort(children.begin(), children.end(), std::greater<>());
            for (const auto& c : children) stack.push_back({join(step.path, c), step.depth + 1});
        }
        if (result.reachedDeadline) break;
    }

    // Every matching folder is measured (behind the walk) before git is asked: a project whose matches
    // all together stay under the minimum can't become a suggestion whatever git says, so its
    // repository costs no git process. The kept targets are pairwise apart and each lies in
    // one of the outermost matches, so this sum bounds theirs.
    SizeCache sizes = measuring.finish();
    std::vector<PendingScan> big;
    for (std::size_t i = 0; i < pending.size(); ++i) {
        std::int64_t bound = 0;
        for (const auto& c : outer[i]) bound += sizes[c.path];
        if (bound >= minimumBytes) big.push_back(std::move(pending[i]));
    }
    pending = std::move(big);
    keepIgnoredOnly(pending);
    const auto scans = finish(pending, true, deadline, std::move(sizes));
    for (std::size_t i = 0; i < scans.size(); ++i) {
        BuildSuggestion s;
        s.path = pending[i].project;
        s.name = s.path.substr(s.path.rfind('/') + 1);
        s.stacks = scans[i].stacks;
        s.targets = scans[i].targets;
        for (const auto& t : s.targets) s.bytes += t.bytes;
        if (s.bytes >= minimumBytes) result.suggestions.push_back(std::move(s));
    }
    std::stable_sort(result.suggestions.begin(), result.suggestions.end(),
                     [](const BuildSuggestion& a, const BuildSuggestion& b) { return a.bytes > b.bytes; });
    return result;
}

std::vector<std::string> BuildWatchScanner::searchRoots(const std::string& homeIn, const std::vector<std::string>& parents,
                                                        bool fullDiskAccess) {
    const std::string home = Catalog::standardizedPath(homeIn);
    std::vector<std::string> out;
    const auto add = [&](const std::string& path) {
        struct stat st {};
        if (::lstat(path.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return;
        const std::string p = Catalog::standardizedPath(path);
        if (std::find(out.begin(), out.end(), p) == out.end()) out.push_back(p);
    };
    for (const auto& p : parents) add(p);
    for (const char* name : {"Projects", "Developer", "work", "Work", "code", "Code", "src", "dev", "repos", "GitHub", "git", "Sites"})
        add(join(home, name));
    if (fullDiskAccess) {
        const auto folders = Catalog::homeFolders(home);
        // The user's Documents and Desktop, localised where theirs are.
        add(folders.documents);
        add(folders.desktop);
    }
    return out;
}

std::set<std::string> BuildWatchScanner::runningTools(const std::string& procRoot) {
    std::set<std::string> names;
    for (const auto& p : RunningApps::list(procRoot)) {
        if (!p.commandName.empty()) names.insert(asciiLowercased(p.commandName));
        if (!p.executableName.empty()) names.insert(asciiLowercased(p.executableName));
    }
    return names;
}

std::optional<TimePoint> BuildWatchScanner::newestChange(const std::string& folder) {
    std::optional<TimePoint> newest;
    const auto take = [&](const struct stat& st) {
        const TimePoint t = TimePoint(std::chrono::duration_cast<Clock::duration>(
            std::chrono::seconds(st.st_mtim.tv_sec) + std::chrono::nanoseconds(st.st_mtim.tv_nsec)));
        if (!newest || t > *newest) newest = t;
    };
    struct stat st {};
    if (::lstat(folder.c_str(), &st) == 0) take(st);
    DIR* d = ::opendir(folder.c_str());
    if (!d) return newest;
    while (dirent* e = ::readdir(d)) {
        const char* n = e->d_name;
        if (n[0] == '.' && (n[1] == 0 || (n[1] == '.' && n[2] == 0))) continue;
        if (::fstatat(::dirfd(d), n, &st, AT_SYMLINK_NOFOLLOW) == 0) take(st);
    }
    ::closedir(d);
    return newest;
}

bool BuildWatchScanner::accessDenied(const std::string& folder) {
    DIR* d = ::opendir(folder.c_str());
    if (d) {
        ::closedir(d);
        return false;
    }
    return deniedErrno(errno);
}

} // namespace bv
