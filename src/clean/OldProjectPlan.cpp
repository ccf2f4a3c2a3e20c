#include "clean/OldProjectPlan.h"

#include "clean/DevCacheCatalog.h"
#include "foundation/AsciiCase.h"

namespace bv {
namespace {

using Law = DevCacheCatalog;

std::string lastComponent(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool isBelow(const std::string& path, const std::string& root) {
    return path == root || (path.size() > root.size() && path.compare(0, root.size(), root) == 0 &&
                            (root == "/" || path[root.size()] == '/'));
}

} // namespace

CleanupPlan OldProjectPlan::build(const std::vector<NodeModuleHit>& hits, Mode mode, const Settings& settings,
                                  const std::string& homeIn, TimePoint now) {
    CleanupPlan plan;
    const std::string home = Law::standardizedPath(homeIn);
    for (const auto& hit : hits) {
        if (mode == Mode::selected ? !hit.selected : !OldProjectScanner::isOld(hit, settings.untouchedDays, now)) continue;

        const std::string lower = asciiLowercased(hit.artifact);
        const auto* row = OldProjectScanner::artefact(lower);
        const std::string path = Law::standardizedPath(hit.path);
        const std::string resolved = Law::standardizedPath(hit.resolvedPath);
        if (!row || lastComponent(path) != hit.artifact) {
            plan.refusals.push_back(hit.projectName + " is not an old project folder.");
            continue;
        }
        if (!isBelow(resolved, path)) {
            plan.refusals.push_back(hit.projectName + " is a link pointing elsewhere, so it was skipped.");
            continue;
        }
        if (Law::isProtectedPath(resolved, home) || Law::isSystemPath(resolved) || Law::hasGitComponent(resolved)) {
            plan.refusals.push_back(hit.projectName + " sits in a protected folder and was skipped.");
            continue;
        }

        std::string note;
        if (const auto days = OldProjectScanner::ageDays(hit.lastTouched, now))
            note = "Untouched for " + std::to_string(*days) + " days. ";
        note += row->label + " (" + hit.artifact + ") in a project you have not opened lately. ";
        note += settings.permanent ? "This removes them for good." : "This moves them to the Trash.";

        CleanupEntry entry;
        entry.id = hit.path;
        entry.title = hit.projectName;
        entry.path = hit.resolvedPath;
        entry.bytes = hit.bytes;
        entry.note = std::move(note);
        entry.group = kGroup;
        entry.disposition = settings.permanent ? CleanupDisposition::permanent : CleanupDisposition::trash;
        entry.symbolName = settings.permanent ? "trash.slash" : "trash";
        entry.allowRoot = hit.path;
        entry.parentPath = hit.projectPath;
        entry.origin = CleanupOrigin::nodeModules;
        entry.recheck = RecheckCriteria{};
        entry.recheck->touchedAtPlan = hit.lastTouched;
        entry.tier = CleanupTier::regenerable;
        plan.entries.push_back(std::move(entry));
    }
    return plan;
}

} // namespace bv
