#include "autopilot/ScheduleDates.h"

namespace bv {

std::optional<TimePoint> nextDate(CleanSchedule schedule, TimePoint after, const CalendarContext& calendar) {
    switch (schedule) {
    case CleanSchedule::off: return std::nullopt;
    case CleanSchedule::hourly: return after + std::chrono::seconds(3600);
    case CleanSchedule::daily: return calendar.addingDays(after, 1);
    case CleanSchedule::weekly: return calendar.addingDays(after, 7);
    }
    return std::nullopt;
}

std::string nextAutoCleanText(const std::vector<FolderWatchRule>& rules, TimePoint now, const CalendarContext& calendar) {
    std::optional<TimePoint> earliest;
    for (const auto& rule : rules)
        if (rule.isEnabled && rule.nextRun && (!earliest || *rule.nextRun < *earliest)) earliest = rule.nextRun;
    if (!earliest) return "Automatic cleanup is off";
    const std::string time = calendar.shortTime(*earliest);
    const int days = calendar.daysBetween(now, *earliest);
    if (days == 0) return "Next auto-clean tonight " + time;
    if (days == 1) return "Next auto-clean tomorrow " + time;
    return "Next auto-clean " + calendar.format(*earliest, "MMMd") + " " + time;
}

} // namespace bv
