#pragma once
#include <set>
#include <string>
#include <vector>

#include "core/ActionLogEntry.h"
#include "foundation/CalendarContext.h"
#include "foundation/Dates.h"
#include "sort/FileSample.h"
#include "sort/PlannedAction.h"
#include "sort/SortRule.h"

namespace bv {

// What a run did: the History entries of the steps that happened and the sentences of the
// ones that were refused, in the order of the preview.
struct ApplyOutcome {
    std::vector<ActionLogEntry> entries;
    std::vector<std::string> errors;
};

// Carries out a confirmed preview within the two folders it may act in. Every step is
// checked again against samples gathered at the moment of the run; one refusal never stops
// the others. Blocking; for a background task.
class RuleRunEngine {
public:
    RuleRunEngine(std::string downloads, std::string desktop, CalendarContext calendar);

    // Samples for `apply`, gathered now: Downloads, and the Desktop when a rule names it.
    [[nodiscard]] std::vector<FileSample> gatherFresh(const std::vector<SortRule>& rules, TimePoint now) const;

    // The ticked steps of the preview (those not in `excluded`), each checked: its rule still
    // exists, its file is among `samples` and still matches, lies inside Downloads or the
    // Desktop, is in no system or repository folder, and a trash rule has an age. Then
    // RulePerformer::perform.
    [[nodiscard]] ApplyOutcome apply(const SimulationResult& simulation, const std::set<Uuid>& excluded,
                                     const std::vector<SortRule>& rules, const std::vector<FileSample>& samples,
                                     TimePoint now) const;

    // Whether a path, standardized, lies strictly below one of the two folders.
    [[nodiscard]] bool isInsideRoots(const std::string& path) const;

private:
    std::string downloads_;
    std::string desktop_;
    CalendarContext calendar_;
};

// The sentence after a run the user started: "Moved 3 files.", "Moved 2 files (1.2 MB) to
// the Trash.", "Nothing was changed. 1 file was left alone." or "Nothing needed to change."
[[nodiscard]] std::string runResultSentence(const ApplyOutcome& outcome);

} // namespace bv
