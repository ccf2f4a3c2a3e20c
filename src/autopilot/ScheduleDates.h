#pragma once
#include <optional>
#include <string>
#include <vector>

#include "autopilot/FolderWatchRule.h"
#include "core/CleanSchedule.h"
#include "foundation/CalendarContext.h"

namespace bv {

// The next run of a schedule from `after`: none for off, 3600 seconds for hourly, one or
// seven calendar days in the user's calendar for daily and weekly (so a daily rule keeps
// its hour across a daylight-saving change).
[[nodiscard]] std::optional<TimePoint> nextDate(CleanSchedule schedule, TimePoint after, const CalendarContext& calendar);

// "Automatic cleanup is off", or "Next auto-clean tonight 9:00 AM" / "... tomorrow ..." /
// "Next auto-clean Nov 20 9:00 AM" for the earliest next run of the enabled rules. The word
// "tonight" depends only on the date being today, whatever the hour.
[[nodiscard]] std::string nextAutoCleanText(const std::vector<FolderWatchRule>& rules, TimePoint now,
                                            const CalendarContext& calendar);

} // namespace bv
