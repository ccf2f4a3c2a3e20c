#include "buildwatch/BuildWatchScanner.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "buildwatch/BuildWatchCatalog.h"
#include "buildwatch/FolderListing.h"
#include "buildwatch/FolderMeasureQueue.h"
#include "buildwatch/GitIgnoreCheck.h"
#include "buildwatch/PropertyListReader.h"
#include "platform/MountTable.h"
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

// An open folder, closed with this object.
class Fd {
public:
    explicit Fd(int fd) : fd_(fd) {}
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    ~Fd() {
        if (fd_ >= 0) ::close(fd_);
    }
    [[nodiscard]] int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

private:
    int fd_;
};

// Opens a folder by a path relative to the folder open on `at` (never following a link at its
// end: walks enter only what a listing showed to be a real folder), or absolute with AT_FDCWD.
// Walks open each folder through its parent's handle, so the kernel resolves one name, not
// the whole path. errno is set on failure.
Fd openFolder(int at, const char* path) {
    return Fd(::openat(at, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC | (at == AT_FDCWD ? 0 : O_NOFOLLOW)));
}

// The entries of an open folder, each marked folder or not without following links.
std::vector<Entry> readEntries(int fd, bool shortReadEnds) {
    std::vector<Entry> out;
    forEachEntry(fd, shortReadEnds, [&](const char* name, unsigned char type) {
        Entry entry{name, type == DT_DIR};
        if (type == DT_UNKNOWN) {
            struct stat st {};
            entry.isFolder = ::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
        }
        out.push_back(std::move(entry));
        return true;
    });
    return out;
}

// The entries of a folder given by its absolute path, or nothing (errno set) when it can't be opened.
std::optional<std::vector<Entry>> listEntries(const std::string& path) {
    const Fd fd = openFolder(AT_FDCWD, path.c_str());
    if (!fd) return std::nullopt;
    return readEntries(fd.get(), false);
}

// Whether listings below `root` may end on a short read: the root lies on ext4, XFS, Btrfs or
// tmpfs (which fill a listing buffer until the folder ends) and nothing is mounted below it.
bool shortReadsEndListings(const std::string& root) {
    const auto table = MountTable::read();
    const auto at = MountTable::containing(table, root);
    if (!at) return false;
    const std::string& type = at->fsType;
    if (type != "ext4" && type != "xfs" && type != "btrfs" && type != "tmpfs") return false;
    const std::string prefix = root == "/" ? "/" : root + "/";
    return std::none_of(table.begin(), table.end(), [&](const MountEntry& m) { return m.mountPoint.starts_with(prefix); });
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

// Expands a row's components against the disk from `relative` below the anchor (open on
// `anchorFd`): the disk's own spelling is kept and every step must be a real folder.
void expand(int anchorFd, const std::string& anchor, const std::string& relative,
            const std::vector<std::string>& components, std::size_t at, const std::vector<Entry>* baseEntries,
            Listings& listings, bool shortReads, std::vector<std::string>& out) {
    const std::string base = relative.empty() ? anchor : join(anchor, relative);
    if (at == components.size()) {
        out.push_back(base);
        return;
    }
    if (!baseEntries) {
        auto it = listings.find(base);
        if (it == listings.end()) {
            const Fd fd = openFolder(anchorFd, relative.c_str());
            it = listings.emplace(base, fd ? std::optional(readEntries(fd.get(), shortReads)) : std::nullopt).first;
        }
        if (!it->second) return;
        baseEntries = &*it->second;
    }
    const std::string& want = components[at];
    const bool wild = want.find('*') != std::string::npos;
    for (const auto& e : *baseEntries) {
        if (!e.isFolder) continue;
        const bool taken = wild ? Catalog::componentMatches(want, e.name) : sameIgnoringCase(e.name, want);
        if (taken)
            expand(anchorFd, anchor, relative.empty() ? e.name : relative + "/" + e.name, components, at + 1, nullptr,
                   listings, shortReads, out);
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

// Whether any of a folder's names is one that makes stacks or rows: most folders of a
// project have none, and need no name set.
bool namesProjectFiles(const std::vector<Entry>& entries) {
    return std::any_of(entries.begin(), entries.end(), [](const Entry& e) { return Catalog::isProjectFileName(e.name); });
}

class ProjectWalker {
public:
    ProjectWalker(PendingScan& scan, bool shortReads) : scan_(scan), shortReads_(shortReads) {}

    // `folder` is open on `fd`. `parentTree` is the work tree of the folder's parent: a folder
    // holding its own ".git" starts a new one, any other shares it, so no folder is looked up twice.
    void walk(int fd, const std::string& folder, const std::vector<Entry>& entries, int depth,
              const std::optional<std::string>& parentTree) {
        std::optional<std::string> tree = parentTree;
        for (const auto& e : entries)
            if (e.name == ".git") tree = folder;
        if (namesProjectFiles(entries)) {
            const auto lower = Catalog::lowerNames(namesOf(entries));
            for (const BuildStack s : Catalog::recognizeStacks(lower))
                if (std::find(scan_.stacks.begin(), scan_.stacks.end(), s) == scan_.stacks.end()) scan_.stacks.push_back(s);
            for (const auto& n : lower)
                if (n.ends_with(".xcodeproj") || n.ends_with(".xcworkspace")) scan_.xcodeSeen = true;
            for (const Pattern* row : Catalog::applicablePatterns(lower, false)) {
                std::vector<std::string> found;
                expand(fd, folder, {}, row->components, 0, &entries, listings_, shortReads_, found);
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
            const Fd child = openFolder(fd, e->name.c_str());
            if (child) walk(child.get(), join(folder, e->name), readEntries(child.get(), shortReads_), depth + 1, tree);
        }
    }

private:
    PendingScan& scan_;
    bool shortReads_;
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
        const Fd fd = openFolder(AT_FDCWD, dd.path.c_str());
        if (!fd) continue;
        const auto entries = readEntries(fd.get(), false);
        Listings listings;
        for (const Pattern* row : Catalog::applicablePatterns(namesOf(entries), true)) {
            std::vector<std::string> found;
            expand(fd.get(), dd.path, {}, row->components, 0, &entries, listings, false, found);
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

// Walks one project folder, open on `fd` and listed already.
PendingScan walkProject(const std::string& project, int fd, const std::vector<Entry>& entries, bool shortReads,
                        const std::string& home,
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
    ProjectWalker(scan, shortReads).walk(fd, project, entries, 0, tree);
    if (scan.xcodeSeen) addDerivedDataCandidates(scan, derived ? *derived : BuildWatchScanner::listDerivedData(home));
    return scan;
}

} // namespace

BuildWatchScanner::ProjectScan BuildWatchScanner::scanProject(const std::string& projectIn, const std::string& home,
                                                              const std::optional<std::vector<DerivedDataFolder>>& derived,
                                                              bool measure) {
    const std::string project = Catalog::standardizedPath(projectIn);
    const Fd fd = openFolder(AT_FDCWD, project.c_str());
    if (!fd) return ProjectScan{{}, {}, accessDenied(project)};
    const bool shortReads = shortReadsEndListings(project);
    TreeOfParent trees;
    std::vector<PendingScan> pending{
        walkProject(project, fd.get(), readEntries(fd.get(), shortReads), shortReads, home, derived, trees)};
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

namespace {

// One look's walk over the search roots: depth first, children in name order, never into a
// project. Each project found is walked at once and its outermost matching folders go to the
// measuring queue, so they are measured on the helper threads while the walk goes on.
class LookWalk {
public:
    LookWalk(const std::set<std::string>& watched, const std::string& home,
             const std::vector<BuildWatchScanner::DerivedDataFolder>& derived,
             std::chrono::steady_clock::time_point deadline, FolderMeasureQueue& measuring,
             BuildWatchScanner::LookResult& result)
        : watched_(watched), home_(home), homeFolders_(Catalog::homeFolders(home)), derived_(derived),
          deadline_(deadline), measuring_(measuring), result_(result) {}

    [[nodiscard]] const Catalog::HomeFolders& homeFolders() const { return homeFolders_; }

    // Walks a standardised root; false once the deadline has ended the look.
    bool walkRoot(const std::string& root) {
        shortReads_ = shortReadsEndListings(root);
        step(AT_FDCWD, root, root.c_str(), 0);
        return !result_.reachedDeadline;
    }

    std::vector<PendingScan> pending;
    std::vector<std::vector<Candidate>> outer; // each pending project's outermost matches

private:
    // `path` (standardised) is `name` relative to the folder open on `parentFd`.
    void step(int parentFd, const std::string& path, const char* name, int depth) {
        if (std::chrono::steady_clock::now() >= deadline_) {
            result_.reachedDeadline = true;
            return;
        }
        if (!visited_.insert(path).second) return;
        const Fd fd = openFolder(parentFd, name);
        if (!fd) {
            if (deniedErrno(errno)) result_.refusedFolders.push_back(path);
            return;
        }
        const auto entries = readEntries(fd.get(), shortReads_);
        const bool isProject =
            std::any_of(entries.begin(), entries.end(), [](const Entry& e) { return e.name == ".git"; }) ||
            namesProjectFiles(entries);
        if (isProject && !Catalog::isBlockedStandardizedFolder(path, homeFolders_)) {
            if (!watched_.contains(path)) {
                pending.push_back(walkProject(path, fd.get(), entries, shortReads_, home_, derived_, trees_));
                outer.push_back(outermost(pending.back().candidates));
                std::vector<std::string> paths;
                for (const auto& c : outer.back()) paths.push_back(c.path);
                measuring_.add(paths, shortReads_);
            }
            return;
        }
        if (depth >= 5) return;
        std::vector<const std::string*> children;
        for (const auto& e : entries)
            if (e.isFolder && !Catalog::walkSkips(e.name)) children.push_back(&e.name);
        std::sort(children.begin(), children.end(), [](const std::string* a, const std::string* b) { return *a < *b; });
        for (const std::string* c : children) {
            step(fd.get(), join(path, *c), c->c_str(), depth + 1);
            if (result_.reachedDeadline) return;
        }
    }

    const std::set<std::string>& watched_;
    const std::string& home_;
    const Catalog::HomeFolders homeFolders_;
    const std::vector<BuildWatchScanner::DerivedDataFolder>& derived_;
    const std::chrono::steady_clock::time_point deadline_;
    FolderMeasureQueue& measuring_;
    BuildWatchScanner::LookResult& result_;
    std::unordered_set<std::string> visited_;
    TreeOfParent trees_;
    bool shortReads_ = false;
};

} // namespace

BuildWatchScanner::LookResult BuildWatchScanner::lookForProjects(const std::vector<std::string>& roots,
                                                                 const std::set<std::string>& watched,
                                                                 const std::string& home, std::chrono::seconds budget,
                                                                 std::int64_t minimumBytes) {
    const auto deadline = std::chrono::steady_clock::now() + budget;
    const auto derived = listDerivedData(home);
    LookResult result;
    FolderMeasureQueue measuring(FolderMeasureQueue::defaultHelpers(), deadline);
    LookWalk walk(watched, home, derived, deadline, measuring, result);
    for (const auto& rootIn : roots) {
        const std::string root = Catalog::standardizedPath(rootIn);
        if (Catalog::isBlockedFolder(root, walk.homeFolders()) && !Catalog::isExactOnlyHomeFolder(root, walk.homeFolders()))
            continue;
        if (!walk.walkRoot(root)) break;
    }
    std::vector<PendingScan>& pending = walk.pending;
    const std::vector<std::vector<Candidate>>& outer = walk.outer;

    // Every matching folder is measured (behind the walk) before git is asked: a project whose matches
    // all together stay under the minimum can't become a suggestion whatever git says, so its
    // repository costs no git process. The kept targets are pairwise apart and each lies in
    // one of the outermost matches, so this sum bounds theirs.
    SizeCache sizes = measuring.finish(); // the calling thread joins the helpers for what is left
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
