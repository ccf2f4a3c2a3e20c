#include "sort/SortRuleStore.h"

#include "sort/SortRuleJson.h"

namespace bv {

LoadedSortRules loadSortRuleFiles(const AppPersistence& persistence, TimePoint now) {
    LoadedSortRules loaded;
    loaded.cleanupRules = persistence.load(CleanupRule::fileName(), cleanupRulesFromJson).value_or(std::vector<CleanupRule>{});
    const auto document = persistence.load(SortRuleDocument::fileName(),
                                           [&](const Json& json) { return SortRuleDocument::fromJson(json, now); });
    if (document) {
        loaded.sortRules = document->rules;
        return loaded;
    }
    if (persistence.exists(SortRuleDocument::fileName()))
        persistence.preserveCorruptCopy(SortRuleDocument::fileName(), now);
    for (const auto& old : loaded.cleanupRules) loaded.sortRules.push_back(sortRuleFromCleanupRule(old));
    if (!loaded.sortRules.empty()) persistence.saveJson(SortRuleDocument::fileName(), SortRuleDocument{1, loaded.sortRules}.toJson());
    return loaded;
}

LoadedSortRules readSortRuleFiles(const AppPersistence& persistence, TimePoint now) {
    LoadedSortRules loaded;
    loaded.cleanupRules = persistence.load(CleanupRule::fileName(), cleanupRulesFromJson).value_or(std::vector<CleanupRule>{});
    if (auto document = persistence.load(SortRuleDocument::fileName(),
                                         [&](const Json& json) { return SortRuleDocument::fromJson(json, now); })) {
        loaded.sortRules = std::move(document->rules);
        return loaded;
    }
    for (const auto& old : loaded.cleanupRules) loaded.sortRules.push_back(sortRuleFromCleanupRule(old));
    return loaded;
}

std::vector<CleanupRule> cleanupRulesForSaving(const std::vector<SortRule>& rules, const std::vector<CleanupRule>& previous) {
    std::vector<CleanupRule> out;
    for (const auto& rule : rules) {
        if (rule.kind != SortRuleKind::sort) continue;
        std::optional<std::string> bookmark;
        for (const auto& old : previous)
            if (old.id == rule.id) bookmark = old.destinationBookmark;
        if (auto converted = cleanupRuleFromSortRule(rule, bookmark)) out.push_back(std::move(*converted));
    }
    return out;
}

void saveSortRuleFiles(const AppPersistence& persistence, const std::vector<SortRule>& rules,
                       const std::vector<CleanupRule>& previous) {
    persistence.saveJson(SortRuleDocument::fileName(), SortRuleDocument{1, rules}.toJson());
    persistence.saveJson(CleanupRule::fileName(), cleanupRulesToJson(cleanupRulesForSaving(rules, previous)));
}

SeedOutcome seedDefaultSortRule(BrimvaleSettings& settings, std::vector<SortRule>& rules, TimePoint now,
                                const CalendarContext& calendar) {
    SeedOutcome outcome;
    if (settings.didSeedDefaultRules) return outcome;
    // Marked first, so a user who deletes the seeded rule never gets it back.
    settings.didSeedDefaultRules = true;
    outcome.settingsChanged = true;
    for (const auto& rule : rules) {
        if (rule.action.type != SortAction::Type::trash) continue;
        for (const auto& c : rule.conditions)
            if (c.type == SortCondition::Type::fileExtension && c.value == "dmg") return outcome;
    }
    rules.push_back(defaultSortRule(now, calendar));
    outcome.rulesChanged = true;
    return outcome;
}

} // namespace bv
