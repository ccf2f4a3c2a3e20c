#pragma once
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "sort/SortRule.h"

namespace bv {

struct NamePattern;

// One row of the pattern sheet: what the user typed and the folder chosen for it.
struct ArrangePatternRow {
    std::string glob;
    std::string folder; // absolute path; empty until chosen
};

// The outcome of saving the sheet: the new rules, or the first refusal and nothing saved.
struct ArrangeSaveResult {
    std::vector<SortRule> rules;
    std::optional<std::string> message;
};

// Builds one arrange rule per row, checked in order: an empty row, a text that is no name
// pattern, a pattern an existing arrange rule already holds, the same pattern twice in the
// sheet, and a row without a folder are refused with their sentence. Every new rule is
// live from `now`: files already in Downloads stay where they are.
[[nodiscard]] ArrangeSaveResult saveArrangePatterns(const std::vector<ArrangePatternRow>& rows,
                                                    const std::vector<SortRule>& existing, TimePoint now);

// The arrange rule for a parsed pattern: "move <glob> files", named "<glob> → <folder>".
[[nodiscard]] SortRule makeArrangeRule(const std::string& glob, const NamePattern& pattern, const std::string& folder,
                                       TimePoint now);

// The text the user typed for a rule, read back from its phrase ("vk-*" from "move vk-* files").
[[nodiscard]] std::string arrangeGlob(const SortRule& rule);

// "Names starting with “vk-”", "Names ending with “-sk”", "Names ending with “.pdf”".
[[nodiscard]] std::string describeNamePattern(const NamePattern& pattern);

// The places Auto-Arrange must watch: those of the enabled arrange rules (Downloads when a
// rule names none). Empty when no pattern is on, and the watcher stops.
[[nodiscard]] std::set<SortPlace> arrangeWatchedPlaces(const std::vector<SortRule>& rules);

// Removing a pattern: the question, its explanation, and the rules without it.
[[nodiscard]] std::string removePatternQuestion();
[[nodiscard]] std::string removePatternExplanation(const SortRule& rule);
[[nodiscard]] std::vector<SortRule> withoutRule(std::vector<SortRule> rules, const Uuid& id);

} // namespace bv
