#pragma once
#include <string>
#include <vector>

#include "foundation/CalendarContext.h"
#include "foundation/Dates.h"
#include "sort/FileSample.h"
#include "sort/PlannedAction.h"
#include "sort/SortRule.h"

namespace bv {

// The automatic runs of Auto-Sort rules on the clock's tick, as pure decisions on `now`.
struct SortAutoRun {
    // How long a file must have been in its folder before a "when a file arrives" rule acts.
    static constexpr int kSettleSeconds = 120;

    // An enabled sort rule that trashes or moves to a chosen folder, and is either "when a
    // file arrives" or a schedule other than off whose next run (absent: long ago) has come.
    // Manual rules, off schedules, renames and zips are never due: they run only from a
    // confirmed preview.
    [[nodiscard]] static bool isDue(const SortRule& rule, TimePoint now);
    [[nodiscard]] static bool anyDue(const std::vector<SortRule>& rules, TimePoint now);

    // The samples a "when a file arrives" rule may act on: those that arrived (added, else
    // modified) at or after the rule was made and at least kSettleSeconds before `now`.
    [[nodiscard]] static std::vector<FileSample> arrivedCandidates(const SortRule& rule,
                                                                  const std::vector<FileSample>& samples, TimePoint now);

    // One automatic pass. `rules` is the whole list; scheduled rules that are due get their
    // next run moved on (rulesChanged tells the caller to save). `simulation` holds the
    // steps of every due rule, to be applied at once with fresh samples.
    struct Plan {
        std::vector<SortRule> rules;
        bool rulesChanged = false;
        SimulationResult simulation;
    };
    [[nodiscard]] static Plan plan(std::vector<SortRule> rules, const std::vector<FileSample>& samples, TimePoint now,
                                   const CalendarContext& calendar);

    // The body of the "Auto-Sort" notification: "Sorted 3 files. Details are in History."
    [[nodiscard]] static std::string notificationBody(std::size_t entryCount);
    static constexpr const char* kNotificationTitle = "Auto-Sort";
};

} // namespace bv
