#pragma once
#include <memory>
#include <string>
#include <vector>

#include "foundation/Dates.h"

namespace bv {

// The user's calendar: a locale and a time zone, both through ICU. Every piece of
// calendar-day arithmetic and every locale-aware date text goes through one of these, so
// tests can pin both ("en_US", "Europe/Berlin") and get the same answers anywhere.
// Cheap to copy; safe to use from any thread (each call works on its own ICU calendar).
class CalendarContext {
public:
    // The process's locale (LC_ALL / LC_TIME / LANG) and time zone (TZ, else the system's).
    [[nodiscard]] static CalendarContext current();
    CalendarContext(std::string localeId, std::string timeZoneId);

    struct Components {
        int year = 1970, month = 1, day = 1; // month 1...12
        int hour = 0, minute = 0, second = 0;
        int weekday = 1; // 1 = Sunday ... 7 = Saturday, as ICU numbers them
    };

    [[nodiscard]] Components components(TimePoint t) const;
    // Builds a local date; out-of-range fields roll over (day 32 is the next month's 1st).
    [[nodiscard]] TimePoint date(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) const;

    [[nodiscard]] TimePoint startOfDay(TimePoint t) const;
    [[nodiscard]] TimePoint addingDays(TimePoint t, int days) const;
    [[nodiscard]] TimePoint addingHours(TimePoint t, int hours) const;
    // Whole calendar days from a's day to b's day (negative when b is earlier).
    [[nodiscard]] int daysBetween(TimePoint a, TimePoint b) const;
    [[nodiscard]] bool isSameDay(TimePoint a, TimePoint b) const;

    // First day of the week in this locale: 1 = Sunday, 2 = Monday, ...
    [[nodiscard]] int firstWeekday() const;
    [[nodiscard]] TimePoint startOfWeek(TimePoint t) const;
    // Narrow standalone weekday names, index 0 = Sunday ("S", "M", "T", ...).
    [[nodiscard]] std::vector<std::string> narrowWeekdaySymbols() const;

    // Formats with an ICU skeleton ("jmm" for a short time, "MMMd" for an abbreviated
    // date, "EEEE" for a weekday), giving the locale's own pattern for it.
    [[nodiscard]] std::string format(TimePoint t, const std::string& skeleton) const;
    [[nodiscard]] std::string shortTime(TimePoint t) const { return format(t, "jmm"); }

    // Case- and accent-insensitive "contains" under this locale's rules.
    [[nodiscard]] bool containsIgnoringCase(const std::string& haystack, const std::string& needle) const;

    [[nodiscard]] const std::string& localeId() const { return locale_; }
    [[nodiscard]] const std::string& timeZoneId() const { return zone_; }

private:
    std::string locale_;
    std::string zone_;
};

} // namespace bv
