#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/ActionLogEntry.h"
#include "core/AppPersistence.h"
#include "core/BrimvaleSettings.h"
#include "foundation/CalendarContext.h"

namespace bv {

// The rules of the activity log and the lifetime counters in the settings. The model owns
// the list and the settings and calls these; they change only what they are given and say
// what changed, so the model knows which files to save and what to tell the user.

// The log never holds more than this many entries, in memory or on disk.
inline constexpr std::size_t kLogCapacity = 500;

// Lifetime milestones in bytes (decimal gigabytes), smallest first.
inline constexpr std::array<std::int64_t, 9> kMilestoneTable{
    1'000'000'000,   5'000'000'000,   10'000'000'000,  25'000'000'000,    50'000'000'000,
    100'000'000'000, 250'000'000'000, 500'000'000'000, 1'000'000'000'000};

// A milestone just passed, with the notification's texts.
struct MilestoneNotice {
    std::int64_t milestoneBytes = 0;
    std::string title; // "5 GB back with Brimvale"
    std::string body;  // "6 GB freed across 3 cleanups since Nov 15."
};

// What one addition changed. The model saves "log.json" when logChanged, "settings.json"
// when settingsChanged, and posts the milestone (only for a live model).
struct LogAddition {
    bool logChanged = false;
    bool settingsChanged = false;
    std::optional<MilestoneNotice> milestone;
};

// The one way into the log. `added` goes to the front in its own order, the list is cut to
// kLogCapacity from the old end, and the added entries' bytes go to the lifetime update.
// Two or more Trash moves added at once share a new runID. Put-backs (putBackOf set) count
// no clean-up: their bytes come off lifetimeBytesFreed, never below 0. An empty `added`
// changes nothing.
[[nodiscard]] LogAddition addLogEntries(std::vector<ActionLogEntry>& log, BrimvaleSettings& settings,
                                        const std::vector<ActionLogEntry>& added, TimePoint now,
                                        const CalendarContext& calendar);

// Counts one clean-up of `freed` bytes. Below 1 byte nothing happens and the result is
// false. Otherwise the counters move, and `milestone` receives the largest milestone
// crossed by this clean that was never reported before (see lastMilestoneBytes).
bool applyLifetimeUpdate(BrimvaleSettings& settings, std::int64_t freed, TimePoint now,
                         const CalendarContext& calendar, std::optional<MilestoneNotice>& milestone);

// The milestone crossed going from `oldTotal` to `newTotal` that is above `lastReported`:
// the largest such, or nothing.
[[nodiscard]] std::optional<std::int64_t> crossedMilestone(std::int64_t oldTotal, std::int64_t newTotal,
                                                           std::int64_t lastReported);

[[nodiscard]] MilestoneNotice milestoneNotice(std::int64_t milestone, const BrimvaleSettings& settings,
                                              const CalendarContext& calendar);

// Fills the lifetime counters from a log written before they existed. Does nothing (false)
// when either counter is already non-zero or no entry freed anything. Entries of one clean
// share a minute, so distinct minutes count clean-ups. The milestone already reached is
// stored as reported, so an old user is not congratulated for the past.
bool backfillLifetimeCounters(const std::vector<ActionLogEntry>& log, BrimvaleSettings& settings);

// Reading and writing "log.json". An absent or unreadable file gives an empty list.
[[nodiscard]] std::vector<ActionLogEntry> loadLog(const AppPersistence& store);
void saveLog(const AppPersistence& store, const std::vector<ActionLogEntry>& log);

// The texts of clearing History. Clearing empties the list and saves "log.json" only: the
// lifetime counters stay, and no file comes back.
struct ClearLogTexts {
    static constexpr const char* title = "Clear history?";
    static constexpr const char* message = "This removes the history shown here. It does not put files back.";
    static constexpr const char* confirmButton = "Clear History";
    static constexpr const char* cancelButton = "Cancel";
};
// Empties the list; true when there was something to clear (the model saves either way).
bool clearLog(std::vector<ActionLogEntry>& log);

} // namespace bv
