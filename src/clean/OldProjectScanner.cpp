#include "clean/OldProjectScanner.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <map>
#include <set>
#include <thread>

#include "clean/DevCacheCatalog.h"
#include "clean/GitQuery.h"
#include "foundation/AsciiCase.h"
#include "space/FolderMeasure.h"

namespace bv {
namespace {

using Law = DevCacheCatalog;

bool endsWith(std::string_view text, std::string_view tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

bool existsNoFollow(const std::string& path) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0;
}

std::optional<TimePoint> modifiedNoFollow(const std::string& path) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) return std::nullopt;
    return TimePoint{std::chrono::duration_cast<TimePoint::duration>(std::chrono::seconds(st.st_mtim.tv_sec) +
                                                                     std::chrono::nanoseconds(st.st_mtim.tv_nsec))};
}

struct Child {
    std::string name;
    bool isDirectory = false; // a real folder, never a link to one
};

// The direct entries of a folder opened without following a link at its last component.
std::optional<std::vector<Child>> listFolder(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    DIR* dir = ::fdopendir(fd);
    if (!dir) {
        ::close(fd);
        return std::nullopt;
    }
    std::vector<Child> children;
    while (dirent* e = ::readdir(dir)) {
        const std::string_view name = e->d_name;
        if (name == "." || name == "..") continue;
        bool isDir = e->d_type == DT_DIR;
        if (e->d_type == DT_UNKNOWN) {
            struct stat st {};
            isDir = ::fstatat(fd, e->d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
        }
        children.push_back({std::string(name), isDir});
    }
    ::closedir(dir);
    return children;
}

std::string lastComponent(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string parentOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return {};
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool isBelow(const std::string& path, const std::string& root) {
    return path == root || (path.size() > root.size() && path.compare(0, root.size(), root) == 0 &&
                            (root == "/" || path[root.size()] == '/'));
}

// The first folder from `folder` upwards that holds ".git"; empty when none does.
std::string repositoryAbove(std::string folder) {
    while (!folder.empty()) {
        if (existsNoFollow(folder + "/.git")) return folder;
        if (folder == "/") break;
        folder = parentOf(folder);
    }
    return {};
}

std::string resolvedOf(const std::string& path) {
    char buffer[PATH_MAX];
    if (::realpath(path.c_str(), buffer)) return Law::standardizedPath(buffer);
    return path;
}

// Runs job(i) for i in [0, count) on a few threads. Git's answers take most of their time
// starting a process, so several are kept in flight at once.
template <class Job>
void forEachInParallel(std::size_t count, Job job) {
    constexpr std::size_t kGitProcessesInFlight = 8;
    std::atomic<std::size_t> next{0};
    const auto worker = [&] {
        for (std::size_t i = next++; i < count; i = next++) job(i);
    };
    std::vector<std::thread> pool;
    for (std::size_t t = 1; t < std::min(count, kGitProcessesInFlight); ++t) pool.emplace_back(worker);
    worker();
    for (auto& t : pool) t.join();
}

} // namespace

Json encodeNodeModuleHit(const NodeModuleHit& hit) {
    Json json = Json::object();
    json["path"] = hit.path;
    json["resolvedPath"] = hit.resolvedPath;
    json["projectName"] = hit.projectName;
    json["projectPath"] = hit.projectPath;
    json["bytes"] = hit.bytes;
    putDate(json, "lastTouched", hit.lastTouched);
    json["selected"] = hit.selected;
    json["artifact"] = hit.artifact;
    return json;
}

const std::vector<OldProjectScanner::Artefact>& OldProjectScanner::artefacts() {
    static const std::vector<Artefact> table{
        {"node_modules", "Dependencies", {"package.json"}},
        {".next", "Next.js build", {"package.json"}},
        {".nuxt", "Nuxt build", {"package.json"}},
        {".svelte-kit", "SvelteKit build", {"package.json"}},
        {".output", "Build output", {"package.json"}},
        {".turbo", "Turbo cache", {"package.json"}},
        {".parcel-cache", "Parcel cache", {"package.json"}},
        {".vercel", "Vercel cache", {"package.json"}},
        {"dist", "Build output", {"package.json", "pyproject.toml", "setup.py"}},
        {"build", "Build output", {"package.json", "pyproject.toml", "setup.py", "build.gradle", "build.gradle.kts"}},
        {"target", "Build output", {"Cargo.toml", "pom.xml"}},
        {"Pods", "CocoaPods", {"Podfile"}},
        {".venv", "Python environment", {"pyvenv.cfg"}},
        {"venv", "Python environment", {"pyvenv.cfg"}},
        {".gradle", "Gradle cache", {"build.gradle", "build.gradle.kts", "settings.gradle", "settings.gradle.kts"}},
    };
    return table;
}

const OldProjectScanner::Artefact* OldProjectScanner::artefact(std::string_view lowerName) {
    for (const auto& row : artefacts())
        if (asciiLowercased(row.name) == lowerName) return &row;
    return nullptr;
}

bool OldProjectScanner::isArtefactName(std::string_view lowerName) { return artefact(lowerName) != nullptr; }

bool OldProjectScanner::manifestProves(const std::string& folder, const Artefact& row) {
    // A venv proves itself with the file Python writes into it; other rows look beside it.
    const bool selfProving = endsWith(asciiLowercased(lastComponent(folder)), "venv");
    const std::string where = selfProving ? folder : parentOf(folder);
    for (const auto& manifest : row.manifests) {
        if (selfProving != (manifest == "pyvenv.cfg")) continue;
        struct stat st {};
        if (::lstat((where + "/" + manifest).c_str(), &st) == 0 && S_ISREG(st.st_mode)) return true;
    }
    return false;
}

OldProjectScanner::IgnoreProbe OldProjectScanner::gitIgnoreProbe() {
    return [](const std::string& repository, const std::vector<std::string>& folders)
               -> std::optional<std::vector<std::string>> {
        std::vector<std::string> relative;
        relative.reserve(folders.size());
        for (const auto& f : folders) relative.push_back(f.substr(repository == "/" ? 1 : repository.size() + 1));
        auto ignored = GitQuery::ignoredPaths(repository, relative);
        if (!ignored) return std::nullopt;
        for (auto& p : *ignored) p = (repository == "/" ? "/" : repository + "/") + p;
        return ignored;
    };
}

OldProjectScanner::Result OldProjectScanner::scan(const std::vector<std::string>& roots, const std::string& homeIn,
                                                  const Options& options) {
    Result result;
    const std::string home = Law::standardizedPath(homeIn);
    const std::string homeLibrary = home + "/Library";
    const std::string resolvedHomeLibrary = resolvedOf(home) + "/Library"; // the walk meets paths with links resolved
    const auto cancelled = [&] { return options.cancel && options.cancel->isCancelled(); };

    // Candidates by repository; a folder reached twice (nested roots) counts once.
    std::map<std::string, std::vector<std::string>> candidates;
    std::set<std::string> seen;

    struct Pending {
        std::string path;
        std::string repository;
    };
    for (const auto& rootIn : roots) {
        const std::string root = Law::standardizedPath(rootIn);
        if (root.empty() || root.front() != '/' || isBelow(root, homeLibrary) || isBelow(resolvedOf(root), resolvedHomeLibrary))
            continue;
        // The root itself is the user's choice and may be reached through a link.
        const std::string start = resolvedOf(root);
        struct stat st {};
        if (::stat(root.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
            result.unreachableRoots.push_back(root);
            continue;
        }
        std::vector<Pending> stack{{start, repositoryAbove(parentOf(start))}};
        while (!stack.empty()) {
            if (cancelled()) {
                result.cancelled = true;
                return result;
            }
            Pending here = std::move(stack.back());
            stack.pop_back();
            if (!seen.insert(here.path).second) continue;
            const auto children = listFolder(here.path);
            if (!children) continue;
            for (const auto& c : *children)
                if (c.name == ".git") here.repository = here.path;
            const std::string prefix = here.path == "/" ? "/" : here.path + "/";
            for (const auto& c : *children) {
                if (!c.isDirectory) continue; // links and files are never entered
                const std::string path = prefix + c.name;
                if (path == homeLibrary || path == resolvedHomeLibrary) continue;
                if (const Artefact* row = artefact(asciiLowercased(c.name))) {
                    if (!here.repository.empty() && manifestProves(path, *row)) candidates[here.repository].push_back(path);
                    continue;
                }
                if (c.name.front() == '.') continue;
                stack.push_back({path, here.repository});
            }
        }
    }

    // Git's word, once per repository, a few repositories at a time.
    const IgnoreProbe probe = options.ignoreProbe ? options.ignoreProbe : gitIgnoreProbe();
    const std::vector<std::pair<std::string, std::vector<std::string>>> asked(candidates.begin(), candidates.end());
    std::vector<std::optional<std::vector<std::string>>> answers(asked.size());
    forEachInParallel(asked.size(), [&](std::size_t i) {
        if (!cancelled()) answers[i] = probe(asked[i].first, asked[i].second);
    });
    result.repositoriesAsked = static_cast<int>(asked.size());
    if (cancelled()) {
        result.cancelled = true;
        return result;
    }
    std::vector<std::string> proven;
    for (std::size_t i = 0; i < asked.size(); ++i) {
        if (!answers[i]) continue; // no answer, no proof
        const std::set<std::string> ignoredSet(answers[i]->begin(), answers[i]->end());
        for (const auto& f : asked[i].second)
            if (ignoredSet.count(f)) proven.push_back(f);
    }

    // The projects' last-touched dates (git again) while the sizes are measured.
    std::vector<std::string> projects;
    for (const auto& p : proven)
        if (projects.empty() || projects.back() != parentOf(p)) projects.push_back(parentOf(p));
    std::sort(projects.begin(), projects.end());
    projects.erase(std::unique(projects.begin(), projects.end()), projects.end());
    std::vector<std::optional<TimePoint>> touched(projects.size());
    std::thread dates([&] {
        forEachInParallel(projects.size(), [&](std::size_t i) {
            if (!cancelled()) touched[i] = lastTouched(projects[i]);
        });
    });
    FolderMeasure::Options measureOptions;
    measureOptions.cancel = options.cancel;
    const auto sizes = FolderMeasure::measureMany(proven, measureOptions);
    dates.join();

    for (std::size_t i = 0; i < proven.size(); ++i) {
        NodeModuleHit hit;
        hit.path = proven[i];
        hit.resolvedPath = resolvedOf(hit.path);
        hit.projectPath = parentOf(hit.path);
        hit.projectName = lastComponent(hit.projectPath);
        hit.artifact = lastComponent(hit.path);
        hit.bytes = i < sizes.size() ? sizes[i].bytes : 0;
        const auto at = std::lower_bound(projects.begin(), projects.end(), hit.projectPath);
        hit.lastTouched = touched[static_cast<std::size_t>(at - projects.begin())];
        result.hits.push_back(std::move(hit));
    }
    result.cancelled = cancelled();
    std::stable_sort(result.hits.begin(), result.hits.end(),
                     [](const NodeModuleHit& a, const NodeModuleHit& b) { return a.bytes > b.bytes; });
    return result;
}

std::optional<TimePoint> OldProjectScanner::lastTouched(const std::string& projectPathIn) {
    const std::string project = Law::standardizedPath(projectPathIn);
    const auto children = listFolder(project);
    if (!children) return std::nullopt;
    std::optional<TimePoint> newest;
    const auto consider = [&](const std::optional<TimePoint>& t) {
        if (t && (!newest || *t > *newest)) newest = t;
    };
    bool hasGit = false;
    for (const auto& c : *children) {
        if (c.name == ".git") {
            hasGit = true;
            continue;
        }
        const std::string lower = asciiLowercased(c.name);
        if (isArtefactName(lower)) {
            if (endsWith(lower, "venv")) consider(modifiedNoFollow(project + "/" + c.name + "/pyvenv.cfg"));
            continue;
        }
        consider(modifiedNoFollow(project + "/" + c.name));
    }
    if (hasGit) consider(GitQuery::lastCommit(project));
    return newest;
}

std::optional<std::int64_t> OldProjectScanner::ageDays(const std::optional<TimePoint>& lastTouched, TimePoint now) {
    if (!lastTouched || *lastTouched > now) return std::nullopt;
    return std::chrono::duration_cast<std::chrono::seconds>(now - *lastTouched).count() / 86'400;
}

bool OldProjectScanner::isOld(const NodeModuleHit& hit, std::int64_t untouchedDays, TimePoint now) {
    const auto age = ageDays(hit.lastTouched, now);
    return age && *age >= std::max<std::int64_t>(1, untouchedDays);
}

} // namespace bv
