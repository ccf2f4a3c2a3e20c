#include "sort/SortPreview.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "sort/RuleMatcher.h"

namespace bv {
namespace {

bool folderReadable(const std::string& path) { return ::access(path.c_str(), R_OK | X_OK) == 0; }

bool isFolder(const std::string& path) {
    struct stat st{};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

} // namespace

std::string SortPreview::draftFingerprint(const std::string& draftPhrase, const std::string& destinationPath) {
    return "draft|" + draftPhrase + "|" + destinationPath;
}

std::string SortPreview::rulesFingerprint(const std::vector<SortRule>& rules) {
    std::string out = "sort|";
    for (size_t i = 0; i < rules.size(); ++i) out += (i ? "," : "") + rules[i].id.text();
    return out;
}

std::string SortPreview::cleanupRuleFingerprint(const Uuid& id) { return "rule|" + id.text(); }

std::vector<FileSample> SortPreview::gather(const std::vector<SortRule>& rules, const std::string& downloads,
                                            const std::string& desktop, TimePoint now) {
    // Where a file came from is read only when some rule asks.
    const bool origins = std::any_of(rules.begin(), rules.end(), [](const SortRule& r) {
        return r.isEnabled && std::any_of(r.conditions.begin(), r.conditions.end(), [](const SortCondition& c) {
                   return c.type == SortCondition::Type::downloadSource;
               });
    });
    std::vector<FileSample> samples = gatherSamples(downloads, SortPlace::downloads, false, now, origins);
    const bool desktopNeeded =
        std::any_of(rules.begin(), rules.end(), [](const SortRule& r) { return r.isEnabled && r.needsDesktop(); });
    if (desktopNeeded && !desktop.empty()) {
        auto more = gatherSamples(desktop, SortPlace::desktop, false, now, origins);
        samples.insert(samples.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }
    return samples;
}

SimulationResult SortPreview::simulate(const std::vector<SortRule>& rules, const std::vector<FileSample>& samples,
                                       TimePoint now) {
    SimulationResult result;
    result.id = Uuid::generate();
    result.createdAt = now;
    // Names are taken apart once for all rules.
    std::vector<SampleNames> names;
    names.reserve(samples.size());
    for (const auto& s : samples) names.push_back(SampleNames::of(s.name));
    for (const auto& rule : rules) {
        if (!rule.isEnabled) continue;
        if (rule.action.type == SortAction::Type::moveToFolder && rule.action.argument.empty()) {
            result.warnings.push_back("Choose a folder for \u201C" + rule.phrase + "\u201D.");
            continue;
        }
        const RuleMatcher matcher(rule);
        const std::string place = placeNameFor(rule);
        for (size_t i = 0; i < samples.size(); ++i)
            if (matcher.matches(samples[i], names[i], now)) result.actions.push_back(plannedAction(samples[i], rule, place));
    }
    return result;
}

SimulationResult SortPreview::preview(const std::vector<SortRule>& rules, const std::string& downloads,
                                      const std::string& desktop, TimePoint now) {
    return simulate(rules, gather(rules, downloads, desktop, now), now);
}

SimulationResult SortPreview::previewCleanupRule(const CleanupRule& rule, const std::string& downloads, TimePoint now) {
    std::vector<std::string> warnings;
    if (!folderReadable(downloads)) warnings.push_back(kDownloadsUnreadable);
    // Here a folder's bookmark is its path: it no longer resolves when nothing is there.
    if (rule.action != RuleAction::trash && rule.destinationPath && !isFolder(*rule.destinationPath))
        warnings.push_back("Choose the folder again for \u201C" + rule.phrase + "\u201D.");
    const SortRule converted = sortRuleFromCleanupRule(rule);
    SimulationResult result = simulate({converted}, gatherSamples(downloads, SortPlace::downloads, false, now, false), now);
    warnings.insert(warnings.end(), result.warnings.begin(), result.warnings.end());
    result.warnings = std::move(warnings);
    return result;
}

} // namespace bv
