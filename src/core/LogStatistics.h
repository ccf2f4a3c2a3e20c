#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/ActionLogEntry.h"
#include "foundation/CalendarContext.h"

namespace bv {

// Figures drawn from the log for the screens. Computed for each display, never stored.
// Every function takes the log newest first, `now` and the user's calendar.

// One day of History: its start of day, "Today", "Yesterday" or an abbreviated date, the
// bytes its entries gave back and the entries, newest first.
struct ActivityDay {
    TimePoint id;
    std::string title;
    std::int64_t total = 0;
    std::vector<ActionLogEntry> entries;
};

// One bar of the seven-day chart: the day, its narrow weekday symbol, the bytes freed.
struct WeekBar {
    TimePoint id;
    std::string label;
    std::int64_t bytes = 0;
};

// A chart point: the bar's place (0 = six days ago) and its bytes.
struct WeekPoint {
    int index = 0;
    double bytes = 0;
};

// Sum of bytesReclaimed over entries dated at or after `since` (saturating, never wraps).
[[nodiscard]] std::int64_t bytesFreed(const std::vector<ActionLogEntry>& log, TimePoint since);

// Bytes freed since the start of the current week, which begins on the locale's first
// weekday (Sunday in the US, Monday in Germany). The screens still call it "since Monday".
[[nodiscard]] std::int64_t bytesFreedThisWeek(const std::vector<ActionLogEntry>& log, TimePoint now,
                                              const CalendarContext& calendar);
[[nodiscard]] TimePoint startOfCurrentWeek(TimePoint now, const CalendarContext& calendar);

// The first three entries, or all when there are fewer.
[[nodiscard]] std::vector<ActionLogEntry> recentEntries(const std::vector<ActionLogEntry>& log);

// Whether the disk counts as clear right now: nothing left to clean, no scan running, and
// at least one refresh done.
[[nodiscard]] bool isClearNow(std::int64_t reclaimableBytes, bool devScanning, bool storageScanning,
                              bool hasRefreshed);

// Days in a row, ending today, that have a log entry (any size), today counting too when
// the disk is clear now. A run that stops before today gives 0. Put-backs, and the entries
// they undid, count for no day. Put-backs carry negative bytes, so every sum here (the
// week's total, a day's total) is net of them; a week bar is never below 0.
[[nodiscard]] int tidyStreak(const std::vector<ActionLogEntry>& log, bool clearNow, TimePoint now,
                             const CalendarContext& calendar);
// "Clean up today to start one", "1 day", "4 days".
[[nodiscard]] std::string tidyStreakText(int streak);
inline constexpr const char* kStreakCaption = "in a row with a clear disk";

// Seven bars, six days ago first and today last.
[[nodiscard]] std::vector<WeekBar> weekBars(const std::vector<ActionLogEntry>& log, TimePoint now,
                                            const CalendarContext& calendar);
[[nodiscard]] std::vector<WeekPoint> weekPoints(const std::vector<WeekBar>& bars);

// History by day, newest day first, filtered by `query`: trimmed of white space, then
// matched case-insensitively under the locale against title, subtitle, source and
// destination joined by blanks. An empty query keeps every entry.
[[nodiscard]] std::vector<ActivityDay> activityDays(const std::vector<ActionLogEntry>& log, const std::string& query,
                                                    TimePoint now, const CalendarContext& calendar);
// "Today", "Yesterday", else the abbreviated date without a time ("Nov 15, 2026").
[[nodiscard]] std::string activityDayTitle(TimePoint dayStart, TimePoint now, const CalendarContext& calendar);
inline constexpr const char* kHistorySearchHint =
    "Search looks at names, details, and the folders files came from or went to.";

// Trims Unicode white space and line breaks from both ends.
[[nodiscard]] std::string trimmedQuery(const std::string& query);

} // namespace bv
