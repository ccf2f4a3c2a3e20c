#include "core/CleanSchedule.h"

namespace bv {

std::string_view cleanScheduleName(CleanSchedule s) {
    switch (s) {
    case CleanSchedule::off: return "off";
    case CleanSchedule::hourly: return "hourly";
    case CleanSchedule::daily: return "daily";
    case CleanSchedule::weekly: return "weekly";
    }
    return "off";
}

std::string_view cleanScheduleTitle(CleanSchedule s) {
    switch (s) {
    case CleanSchedule::off: return "Off";
    case CleanSchedule::hourly: return "Hourly";
    case CleanSchedule::daily: return "Daily";
    case CleanSchedule::weekly: return "Weekly";
    }
    return "Off";
}

std::optional<CleanSchedule> cleanScheduleFromName(std::string_view name) {
    for (auto s : {CleanSchedule::off, CleanSchedule::hourly, CleanSchedule::daily, CleanSchedule::weekly})
        if (cleanScheduleName(s) == name) return s;
    return std::nullopt;
}

} // namespace bv
