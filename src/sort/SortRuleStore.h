#pragma once
#include <vector>

#include "core/AppPersistence.h"
#include "core/BrimvaleSettings.h"
#include "foundation/CalendarContext.h"
#include "sort/CleanupRule.h"
#include "sort/SortRule.h"

namespace bv {

// Reading and writing the two rule files, as the model does at start-up and after every
// change to its rule list.
struct LoadedSortRules {
    std::vector<CleanupRule> cleanupRules; // "rules.json"; empty when absent or unreadable
    std::vector<SortRule> sortRules;       // "rules-v2.json", or converted from cleanupRules
};

// Reads "rules.json", then "rules-v2.json". When the latter is absent or does not decode,
// an existing file is first copied aside (rules-v2.corrupt-<date>.json), the list is
// rebuilt from the older rules, and a non-empty rebuilt list is saved at once.
[[nodiscard]] LoadedSortRules loadSortRuleFiles(const AppPersistence& persistence, TimePoint now);

// The same reading without writing anything: no copy aside, no save. For the terminal.
[[nodiscard]] LoadedSortRules readSortRuleFiles(const AppPersistence& persistence, TimePoint now);

// Writes "rules-v2.json" with every rule, then "rules.json" with the sort rules that the
// older record can still say. A rule keeps the destination bookmark that `previous` (the
// older list as it stands) holds for the same id.
void saveSortRuleFiles(const AppPersistence& persistence, const std::vector<SortRule>& rules,
                       const std::vector<CleanupRule>& previous);
// The older list that saveSortRuleFiles writes.
[[nodiscard]] std::vector<CleanupRule> cleanupRulesForSaving(const std::vector<SortRule>& rules,
                                                             const std::vector<CleanupRule>& previous);

// The one-time seeding of the default rule. The caller saves the settings when
// `settingsChanged` (before anything else) and the rules when `rulesChanged`.
struct SeedOutcome {
    bool settingsChanged = false;
    bool rulesChanged = false;
};
[[nodiscard]] SeedOutcome seedDefaultSortRule(BrimvaleSettings& settings, std::vector<SortRule>& rules, TimePoint now,
                                              const CalendarContext& calendar);

} // namespace bv
