// `brimvale projects [--json] PATH...`: what Build Watch sees in each project folder, measured;
// `brimvale projects --look [--json]`: the projects the look for projects would suggest now.
// Read-only: nothing is watched, saved or removed.
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "buildwatch/BuildWatch.h"
#include "buildwatch/BuildWatchCatalog.h"
#include "buildwatch/BuildWatchScanner.h"
#include "buildwatch/BuildWatchService.h"
#include "cli/CliCommand.h"
#include "core/AppPersistence.h"
#include "foundation/ByteText.h"
#include "platform/XdgPaths.h"

namespace bv::cli {
namespace {

std::string stackLabels(const std::vector<BuildStack>& stacks) {
    std::string out;
    for (const BuildStack s : stacks) out += (out.empty() ? "" : ", ") + std::string(label(s));
    return out.empty() ? "no project files" : out;
}

void printTargets(const std::vector<BuildTarget>& targets) {
    if (targets.empty()) std::printf("  (no build folders)\n");
    for (const auto& t : targets)
        std::printf("  %-28s %10s  %s\n", t.title.c_str(), byteText(t.bytes).c_str(), t.path.c_str());
}

// The saved watches and dismissed paths, and the project parents of old project files.
struct SavedState {
    BuildWatchState buildWatch;
    std::vector<std::string> projectParents;
};

SavedState readSavedState() {
    SavedState s;
    const AppPersistence store = AppPersistence::live();
    if (auto state = store.load(kBuildWatchFileName, decodeBuildWatchState)) s.buildWatch = std::move(*state);
    if (auto roots = store.loadJson("node-roots.json"); roots && roots->is_array())
        for (const auto& r : *roots)
            if (r.is_object() && r.contains("path") && r["path"].is_string()) s.projectParents.push_back(r["path"]);
    return s;
}

int runLook(bool json) {
    const std::string home = XdgPaths::home();
    const SavedState saved = readSavedState();
    std::set<std::string> watched;
    for (const auto& w : saved.buildWatch.watches) watched.insert(w.path);
    // This system has no separate whole-disk permission: Unix permissions decide.
    const auto roots = BuildWatchScanner::searchRoots(home, saved.projectParents, true);
    auto look = BuildWatchScanner::lookForProjects(roots, watched, home);
    const auto suggestions = BuildWatchService::visibleSuggestions(saved.buildWatch, std::move(look.suggestions));
    if (json) {
        Json j = Json::object();
        j["roots"] = roots;
        j["suggestions"] = Json::array();
        for (const auto& s : suggestions) j["suggestions"].push_back(encodeBuildSuggestion(s));
        j["refusedFolders"] = look.refusedFolders;
        j["reachedDeadline"] = look.reachedDeadline;
        std::fputs((encodeJson(j) + "\n").c_str(), stdout);
        return 0;
    }
    if (roots.empty()) std::printf("No source folders to look in (such as ~/Projects or ~/src).\n");
    for (const auto& s : suggestions) {
        std::printf("%s  %s  (%s)  %s\n", s.name.c_str(), byteText(s.bytes).c_str(), stackLabels(s.stacks).c_str(),
                    s.path.c_str());
        printTargets(s.targets);
    }
    if (!roots.empty() && suggestions.empty()) std::printf("No unwatched project holds 1 GB or more of build files.\n");
    for (const auto& r : look.refusedFolders) std::printf("Couldn\u2019t be checked: %s\n", r.c_str());
    if (look.reachedDeadline) std::printf("The look stopped at its time limit; it shows what it found until then.\n");
    return 0;
}

} // namespace

int runProjects(const std::vector<std::string>& args) {
    const CliCommand& self = *findCommand("projects");
    bool json = false, look = false;
    std::vector<std::string> paths;
    for (const auto& a : args) {
        if (a == "--json") json = true;
        else if (a == "--look") look = true;
        else if (a.size() > 1 && a[0] == '-' && a != "--") return usageError(self, "unknown option " + a);
        else if (a != "--") paths.push_back(a);
    }
    if (look) return paths.empty() ? runLook(json) : usageError(self, "--look takes no folders");
    if (paths.empty()) return usageError(self, "a project folder is needed");

    const std::string home = XdgPaths::home();
    const auto derived = BuildWatchScanner::listDerivedData(home);
    Json all = Json::array();
    for (const auto& p : paths) {
        const std::string path = BuildWatchCatalog::standardizedPath(p);
        const auto scan = BuildWatchScanner::scanProject(path, home, derived, true);
        std::int64_t total = 0;
        for (const auto& t : scan.targets) total += t.bytes;
        if (json) {
            Json j = Json::object();
            j["path"] = path;
            j["stacks"] = encodeBuildStacks(scan.stacks);
            j["targets"] = Json::array();
            for (const auto& t : scan.targets) j["targets"].push_back(encodeBuildTarget(t));
            j["blocked"] = scan.blocked;
            all.push_back(std::move(j));
            continue;
        }
        std::printf("%s  (%s)  %s of build files\n", path.c_str(), stackLabels(scan.stacks).c_str(), byteText(total).c_str());
        if (scan.blocked) std::printf("  %s\n", BuildWatchService::unreadableProblem(path, home).c_str());
        else if (BuildWatchCatalog::isBlockedFolder(path, home)) std::printf("  %s\n", BuildWatchService::kBlockedFolderProblem);
        printTargets(scan.targets);
    }
    if (json) std::fputs((encodeJson(all) + "\n").c_str(), stdout);
    return 0;
}

} // namespace bv::cli
