#include "autopilot/FolderRuleRunner.h"

#include <algorithm>
#include <unordered_set>

#include "autopilot/FolderCandidates.h"
#include "autopilot/FolderRuleParser.h"
#include "clean/DevCacheCatalog.h"
#include "clean/KeepNewestItems.h"
#include "foundation/ByteText.h"
#include "foundation/PhraseText.h"
#include "platform/PlatformWording.h"
#include "space/FolderMeasure.h"

namespace bv {
namespace {

using Law = DevCacheCatalog;

std::string lastComponent(const std::string& path) {
    const std::string p = Law::standardizedPath(path);
    const auto slash = p.rfind('/');
    return slash == std::string::npos ? p : p.substr(slash + 1);
}

// Whether `path` lies strictly below one of `roots`, by walking up its parents.
bool liesBelowAny(const std::string& path, const std::unordered_set<std::string>& roots) {
    for (auto slash = path.rfind('/'); slash != std::string::npos && slash > 0; slash = path.rfind('/', slash - 1))
        if (roots.count(path.substr(0, slash))) return true;
    return false;
}

KeepNewestItems::Scope keepScopeOf(const FolderWatchRule& rule) {
    return {rule.names, rule.directoriesOnly, rule.scope == FolderScope::recursive};
}

} // namespace

std::vector<FolderCandidate> FolderRuleRunner::select(const FolderWatchRule& rule, const std::vector<FolderCandidate>& candidates,
                                                      TimePoint now) {
    std::vector<FolderCandidate> reached;
    for (const auto& c : candidates)
        if (rule.scope == FolderScope::recursive ? c.depth >= 1 : c.depth == 1) reached.push_back(c);

    std::vector<FolderCandidate> chosen;
    if (rule.keepNewest) {
        const auto scope = keepScopeOf(rule);
        std::vector<KeepNewestItems::Item> counted;
        for (const auto& c : reached)
            if (KeepNewestItems::counts(c.name, c.isDirectory, scope)) counted.push_back({c.path, c.isDirectory, c.modified});
        const auto keptList = KeepNewestItems::newest(counted, std::max<std::int64_t>(0, *rule.keepNewest));
        const std::unordered_set<std::string> kept(keptList.begin(), keptList.end());
        // A folder that holds a survivor stays too, or the survivor would go with it.
        std::unordered_set<std::string> holders;
        for (const auto& k : keptList)
            for (auto slash = k.rfind('/'); slash != std::string::npos && slash > 0; slash = k.rfind('/', slash - 1))
                holders.insert(k.substr(0, slash));
        for (const auto& c : reached)
            if (KeepNewestItems::counts(c.name, c.isDirectory, scope) && !kept.count(c.path) && !holders.count(c.path))
                chosen.push_back(c);
    } else {
        for (const auto& c : reached)
            if (FolderCandidates::matches(c, rule, now)) chosen.push_back(c);
    }

    // Shortest paths first, so a folder is kept before anything inside it is looked at.
    std::stable_sort(chosen.begin(), chosen.end(),
                     [](const FolderCandidate& a, const FolderCandidate& b) { return a.path.size() < b.path.size(); });
    std::unordered_set<std::string> taken;
    std::vector<FolderCandidate> out;
    for (auto& c : chosen) {
        if (liesBelowAny(c.path, taken)) continue;
        taken.insert(c.path);
        out.push_back(std::move(c));
    }
    std::sort(out.begin(), out.end(), [](const FolderCandidate& a, const FolderCandidate& b) { return a.path < b.path; });
    return out;
}

void FolderRuleRunner::measure(std::vector<FolderCandidate>& selected) {
    std::vector<std::string> folders;
    for (const auto& c : selected)
        if (c.isDirectory) folders.push_back(c.path);
    if (folders.empty()) return;
    const auto sizes = FolderMeasure::measureMany(folders, FolderMeasure::Options{});
    size_t i = 0;
    for (auto& c : selected)
        if (c.isDirectory) c.bytes = sizes[i++].bytes;
}

CleanupPlan FolderRuleRunner::entries(const FolderWatchRule& rule, const std::vector<FolderCandidate>& selected,
                                      const std::string& home) {
    CleanupPlan plan;
    const std::string folder = Law::standardizedPath(rule.parentPath);
    const bool permanent = rule.disposition == CleanupDisposition::permanent;
    for (const auto& c : selected) {
        if (!Law::canCleanRulePath(c.path, folder, home)) {
            plan.refusals.push_back(c.name + " is in a protected folder and was skipped.");
            continue;
        }
        CleanupEntry e;
        e.id = c.path;
        e.title = c.name;
        e.path = c.path;
        e.bytes = c.bytes;
        e.note = permanent ? kPermanentNote : platformWording(kTrashNote);
        e.group = lastComponent(folder);
        e.disposition = rule.disposition;
        e.symbolName = permanent ? "trash.slash" : "trash";
        e.allowRoot = folder;
        e.parentPath = folder;
        e.origin = CleanupOrigin::folderRule;
        RecheckCriteria r;
        r.touchedAtPlan = c.modified;
        r.keepNewest = rule.keepNewest;
        r.names = rule.names;
        r.directoriesOnly = rule.directoriesOnly;
        r.includeSubfolders = rule.scope == FolderScope::recursive;
        e.recheck = r;
        e.tier = CleanupTier::userData;
        plan.entries.push_back(std::move(e));
    }
    return plan;
}

std::optional<CleanupPlan> FolderRuleRunner::plan(const FolderWatchRule& rule, TimePoint now, const std::string& home) {
    const auto listed = listCandidates(rule, now);
    if (!listed) return std::nullopt;
    auto selected = select(rule, *listed, now);
    measure(selected);
    return entries(rule, selected, home);
}

std::optional<std::string> confirmedBoundMessage(std::int64_t count, std::int64_t bytes, std::optional<std::int64_t> confirmedCount,
                                                 std::optional<std::int64_t> confirmedBytes) {
    if (!confirmedCount || !confirmedBytes) return std::nullopt;
    const std::int64_t countLimit = std::max(*confirmedCount + 20, *confirmedCount * 2);
    if (count > countLimit)
        return "matched " + std::to_string(count) + " items, far more than the " + std::to_string(*confirmedCount) +
               " in the preview you confirmed";
    const std::int64_t byteLimit = std::max(*confirmedBytes + 1'000'000'000, *confirmedBytes * 2);
    if (bytes > byteLimit)
        return "matched " + byteText(bytes) + ", far more than the " + byteText(*confirmedBytes) + " you confirmed";
    return std::nullopt;
}

std::string folderRuleName(const FolderWatchRule& rule) {
    std::string name = trimmedWhitespace(rule.phrase);
    if (name.empty()) {
        name = FolderRuleParser::summary(rule.names, rule.extensions, rule);
        if (!name.empty() && name.back() == '.') name.pop_back();
    }
    return name;
}

FolderRuleSkip skipNote(const FolderWatchRule& rule, const std::string& reason, TimePoint now) {
    FolderRuleSkip skip;
    const std::string head = "Autopilot skipped \u201C" + folderRuleName(rule) + "\u201D";
    skip.text = head + ": " + reason;
    skip.log.id = Uuid::generate();
    skip.log.date = now;
    skip.log.title = head;
    skip.log.subtitle = reason;
    skip.log.symbolName = "hand.raised";
    skip.log.sourcePath = rule.parentPath;
    return skip;
}

} // namespace bv
