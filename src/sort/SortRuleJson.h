#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/Json.h"
#include "sort/SortRule.h"

namespace bv {

// The JSON forms of the sort rule records ("rules-v2.json"). Decoders throw DecodeError
// (or a JSON type error) for content their record can't take; callers treat the whole
// file as unreadable then.

[[nodiscard]] Json toJson(const SortCondition& condition);
// Throws DecodeError "Unknown condition <type>" for a type outside the known cases, and
// DecodeError for a missing or mistyped payload key.
[[nodiscard]] SortCondition sortConditionFromJson(const Json& json);

// The read side of one condition: a condition that fails to decode for any reason is an
// empty wrapper, so a newer file's unknown condition is dropped and its rule survives.
struct LossySortCondition {
    std::optional<SortCondition> condition;
    [[nodiscard]] static LossySortCondition fromJson(const Json& json) noexcept;
};

[[nodiscard]] Json toJson(const SortTrigger& trigger);
[[nodiscard]] SortTrigger sortTriggerFromJson(const Json& json);
[[nodiscard]] Json toJson(const SortAction& action);
[[nodiscard]] SortAction sortActionFromJson(const Json& json);

[[nodiscard]] Json toJson(const SortRule& rule);
// Missing keys take their defaults; `now` stands in for a missing createdAt. A missing
// `kind` is inferred: an old Auto-Arrange pattern reads as arrange, all else as sort.
[[nodiscard]] SortRule sortRuleFromJson(const Json& json, TimePoint now);

// True when a rule stored without `kind` has the exact shape of an Auto-Arrange pattern.
[[nodiscard]] bool looksLikeArrangePattern(const SortRule& rule);

// "rules-v2.json": the version and the rules. A missing version reads as 1; below 1 the
// rules are not read at all. The writer always writes version 1.
struct SortRuleDocument {
    std::int64_t version = 1;
    std::vector<SortRule> rules;

    [[nodiscard]] static constexpr const char* fileName() { return "rules-v2.json"; }
    [[nodiscard]] Json toJson() const;
    [[nodiscard]] static SortRuleDocument fromJson(const Json& json, TimePoint now);
};

} // namespace bv
