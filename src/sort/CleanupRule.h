#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "foundation/Json.h"
#include "foundation/Uuid.h"
#include "sort/SortRule.h"

namespace bv {

// The first rule type, still read and written as "rules.json" beside "rules-v2.json".
enum class RuleAction { move, keepInFolder, trash };

[[nodiscard]] const char* ruleActionName(RuleAction a); // "move", "keepInFolder", "trash"

// What the older grammar read from a sentence.
struct ParsedRule {
    std::string phrase;
    RuleAction action = RuleAction::move;
    std::vector<std::string> extensions; // sorted, lower case
    std::optional<std::string> namePrefix;
    std::optional<std::int64_t> minimumAgeDays;
    bool requiresDestination = false;
    std::string interpretation;
    friend bool operator==(const ParsedRule&, const ParsedRule&) = default;
};

// One older Downloads rule. `destinationBookmark` holds raw bytes (Base64 in JSON).
struct CleanupRule {
    Uuid id;
    std::string phrase;
    RuleAction action = RuleAction::move;
    std::vector<std::string> extensions;
    std::optional<std::string> namePrefix;
    std::optional<std::int64_t> minimumAgeDays;
    std::optional<std::string> destinationPath;
    std::optional<std::string> destinationBookmark;
    bool isEnabled = true;
    TimePoint createdAt;
    friend bool operator==(const CleanupRule&, const CleanupRule&) = default;

    [[nodiscard]] static constexpr const char* fileName() { return "rules.json"; }
    [[nodiscard]] Json toJson() const;
    // Every non-optional key is required; throws DecodeError otherwise.
    [[nodiscard]] static CleanupRule fromJson(const Json& json);
};

// "rules.json" is a plain array of CleanupRule.
[[nodiscard]] Json cleanupRulesToJson(const std::vector<CleanupRule>& rules);
[[nodiscard]] std::vector<CleanupRule> cleanupRulesFromJson(const Json& json); // throws DecodeError

// The newer record for an older rule: same id, phrase as name and phrase, all of its
// extensions, its prefix and its age, in Downloads, when a file arrives.
[[nodiscard]] SortRule sortRuleFromCleanupRule(const CleanupRule& rule);
// The way back, for the sort rules that the older record can say; nothing for the others
// (another condition, Desktop, a rename or zip, a trash rule without an age, ...).
[[nodiscard]] std::optional<CleanupRule> cleanupRuleFromSortRule(const SortRule& rule,
                                                                 std::optional<std::string> bookmark);

// Why one step of an older rule was refused.
enum class RunnerError { outsideDownloads, refusingDirectory, deleteRequiresAge, ageUnverified, tooYoung,
                         missingDestination, protectedPath };
[[nodiscard]] const char* runnerErrorMessage(RunnerError e);

} // namespace bv
