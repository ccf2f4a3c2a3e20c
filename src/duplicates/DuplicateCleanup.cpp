#include "duplicates/DuplicateCleanup.h"

#include "clean/DevCacheCatalog.h"

namespace bv {
namespace {

std::string nameOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool isBelowOrEqual(const std::string& path, const std::string& root) {
    if (root == "/") return !path.empty() && path.front() == '/';
    return path == root ||
           (path.size() > root.size() && path.compare(0, root.size(), root) == 0 && path[root.size()] == '/');
}

// "~" for the home folder itself and "~/…" below it; other paths stand as they are.
std::string abbreviatedWithTilde(const std::string& path, const std::string& home) {
    if (home.empty() || home == "/") return path;
    if (path == home) return "~";
    if (isBelowOrEqual(path, home)) return "~" + path.substr(home.size());
    return path;
}

void planGroup(const DuplicateGroup& group, const DuplicateKeepMap& keep, const std::vector<std::string>& roots,
               const std::string& home, const std::optional<std::string>& onlyPath, CleanupPlan& plan) {
    if (group.files.size() < 2) return;
    if (group.reclaimableBytes < 1) {
        const std::string name = nameOf(group.files.front().path);
        plan.refusals.push_back((name.empty() ? std::string("Files") : name) +
                                " shares one storage object across its copies, so nothing would be freed.");
        return;
    }
    const DuplicateFile& keeper = *duplicateKeeper(group, keep);
    const std::string keeperNote =
        "Same contents as " + abbreviatedWithTilde(keeper.path, home) + ", which stays. Moves to the Trash.";
    for (const auto& file : group.files) {
        if (&file == &keeper) continue;
        if (onlyPath && file.path != *onlyPath) continue;
        const std::string path = DevCacheCatalog::standardizedPath(file.path);
        const std::string name = nameOf(path);
        const std::string* root = nullptr;
        for (const auto& r : roots)
            if (isBelowOrEqual(path, r)) {
                root = &r;
                break;
            }
        if (!root) {
            plan.refusals.push_back(name + " is outside the scanned folders and was skipped.");
            continue;
        }
        if (!DevCacheCatalog::canCleanDuplicatePath(path, home)) {
            plan.refusals.push_back(name + " is in a protected folder and was skipped.");
            continue;
        }
        CleanupEntry entry;
        entry.id = "duplicate|" + path;
        entry.title = name;
        entry.path = path;
        entry.bytes = file.bytes;
        entry.note = keeperNote;
        entry.group = duplicateTexts::kPreviewGroupName;
        entry.disposition = CleanupDisposition::trash; // never permanent, whatever the settings say
        entry.symbolName = "doc.on.doc";
        entry.allowRoot = *root;
        entry.parentPath = std::nullopt;
        entry.origin = CleanupOrigin::duplicate;
        entry.tier = CleanupTier::userData;
        RecheckCriteria recheck;
        recheck.touchedAtPlan = file.modified;
        recheck.expectedBytes = file.bytes;
        recheck.keeperPath = keeper.path;
        recheck.keeperBytes = keeper.bytes;
        recheck.keeperModified = keeper.modified;
        entry.recheck = std::move(recheck);
        plan.entries.push_back(std::move(entry));
    }
}

} // namespace

DuplicateKeepMap initialDuplicateKeep(const std::vector<DuplicateGroup>& groups) {
    DuplicateKeepMap keep;
    for (const auto& g : groups)
        if (!g.files.empty()) keep[g.id] = g.files.front().path;
    return keep;
}

const DuplicateFile* duplicateKeeper(const DuplicateGroup& group, const DuplicateKeepMap& keep) {
    if (group.files.empty()) return nullptr;
    if (const auto it = keep.find(group.id); it != keep.end())
        for (const auto& f : group.files)
            if (f.path == it->second) return &f;
    return &group.files.front();
}

CleanupPlan buildDuplicatePlan(const std::vector<DuplicateGroup>& groups, const DuplicateKeepMap& keep,
                               const std::vector<std::string>& roots, const std::string& home,
                               const std::optional<std::string>& onlyPath) {
    std::vector<std::string> standardRoots;
    standardRoots.reserve(roots.size());
    for (const auto& r : roots) {
        std::string s = DevCacheCatalog::standardizedPath(r);
        if (!s.empty()) standardRoots.push_back(std::move(s));
    }
    const std::string standardHome = DevCacheCatalog::standardizedPath(home);
    CleanupPlan plan;
    for (const auto& group : groups) planGroup(group, keep, standardRoots, standardHome, onlyPath, plan);
    return plan;
}

DuplicateReview reviewDuplicates(const DuplicateReviewRequest& request, const std::vector<DuplicateGroup>& groups,
                                 const DuplicateKeepMap& keep, const std::vector<std::string>& roots,
                                 const std::string& home) {
    if (groups.empty()) return {std::nullopt, std::string(duplicateTexts::kNothingToClean)};
    using Scope = DuplicateReviewRequest::Scope;
    if (request.scope == Scope::all) return {buildDuplicatePlan(groups, keep, roots, home), std::nullopt};
    std::vector<DuplicateGroup> one;
    for (const auto& g : groups)
        if (g.id == request.groupId) one.push_back(g);
    if (request.scope == Scope::group) return {buildDuplicatePlan(one, keep, roots, home), std::nullopt};
    return {buildDuplicatePlan(one, keep, roots, home, request.path), std::nullopt};
}

} // namespace bv
