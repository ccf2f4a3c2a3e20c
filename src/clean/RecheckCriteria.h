#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dates.h"

namespace bv {

// What must still hold at apply time beyond the path rules. One record serves every origin;
// each origin fills only its own fields and leaves the rest empty. Compared by content.
struct RecheckCriteria {
    // The date the item (or its project) showed when the plan was built.
    std::optional<TimePoint> touchedAtPlan;
    // Folder rules: how many newest items must survive, and the rule's name conditions.
    std::optional<std::int64_t> keepNewest;
    std::vector<std::string> names;
    // Folder rules: the keep-newest count runs over folders only, and over every depth
    // rather than the folder's direct children.
    bool directoriesOnly = false;
    bool includeSubfolders = false;
    // Duplicates: the copy's size at plan time, and the keeper that stays as it was then.
    std::optional<std::int64_t> expectedBytes;
    std::optional<std::string> keeperPath;
    std::optional<std::int64_t> keeperBytes;
    std::optional<TimePoint> keeperModified;

    bool operator==(const RecheckCriteria&) const = default;
};

} // namespace bv
