#pragma once
#include <optional>
#include <set>
#include <string>

#include "foundation/CalendarContext.h"
#include "foundation/Dates.h"
#include "sort/CleanupRule.h"
#include "sort/PlannedAction.h"
#include "sort/RuleRunEngine.h"

namespace bv {

// Runs the preview of one older Downloads rule (SortPreview::previewCleanupRule). Each step
// is checked the older way first: inside Downloads, not a folder, a trash rule with an age
// and a file old enough by a known date, a move whose folder exists, no protected path.
// A failed check or step adds "Couldn’t update <name>: <reason>" and the run goes on.
class CleanupRuleRunner {
public:
    CleanupRuleRunner(std::string downloads, CalendarContext calendar);

    // The check that fails first for the step, or nothing.
    [[nodiscard]] std::optional<RunnerError> check(const PlannedAction& step, const CleanupRule& rule,
                                                   TimePoint now) const;

    [[nodiscard]] ApplyOutcome apply(const SimulationResult& simulation, const std::set<Uuid>& excluded,
                                     const CleanupRule& rule, TimePoint now) const;

private:
    std::string downloads_;
    CalendarContext calendar_;
};

} // namespace bv
