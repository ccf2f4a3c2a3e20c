#include "core/LogStatistics.h"

#include "core/DateTextFormatter.h"
#include "foundation/Saturating.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace bv {
namespace {


std::int64_t sumBetween(const std::vector<ActionLogEntry>& log, TimePoint from, std::optional<TimePoint> until) {
    std::int64_t sum = 0;
    for (const auto& e : log)
        if (e.date >= from && (!until || e.date < *until)) sum = saturatingAdd(sum, e.bytesReclaimed);
    return sum;
}

// Start of day for many dates, asking the calendar only when a date leaves the day last
// asked about: the log is sorted by date, so a whole day of entries costs one lookup.
class DayCache {
public:
    explicit DayCache(const CalendarContext& calendar) : calendar_(calendar) {}
    TimePoint dayOf(TimePoint t) {
        if (valid_ && t >= start_ && t < next_) return start_;
        start_ = calendar_.startOfDay(t);
        next_ = calendar_.addingDays(start_, 1);
        valid_ = next_ > start_;
        return start_;
    }

private:
    const CalendarContext& calendar_;
    TimePoint start_{}, next_{};
    bool valid_ = false;
};

} // namespace

std::int64_t bytesFreed(const std::vector<ActionLogEntry>& log, TimePoint since) {
    return sumBetween(log, since, std::nullopt);
}

TimePoint startOfCurrentWeek(TimePoint now, const CalendarContext& calendar) {
    // The calendar's week of year begins on the locale's first weekday; this is the first
    // moment of the week that holds `now`.
    return calendar.startOfWeek(now);
}

std::int64_t bytesFreedThisWeek(const std::vector<ActionLogEntry>& log, TimePoint now, const CalendarContext& calendar) {
    return bytesFreed(log, startOfCurrentWeek(now, calendar));
}

std::vector<ActionLogEntry> recentEntries(const std::vector<ActionLogEntry>& log) {
    const auto n = std::min<std::size_t>(3, log.size());
    return {log.begin(), log.begin() + static_cast<std::ptrdiff_t>(n)};
}

bool isClearNow(std::int64_t reclaimableBytes, bool devScanning, bool storageScanning, bool hasRefreshed) {
    return reclaimableBytes == 0 && !devScanning && !storageScanning && hasRefreshed;
}

int tidyStreak(const std::vector<ActionLogEntry>& log, bool clearNow, TimePoint now, const CalendarContext& calendar) {
    // A put-back and the clean it undid are not a tidy day's work.
    std::set<Uuid> undone;
    for (const auto& e : log)
        if (e.putBackOf) undone.insert(*e.putBackOf);
    std::set<TimePoint> days;
    DayCache cache(calendar);
    for (const auto& e : log)
        if (!e.putBackOf && !undone.count(e.id)) days.insert(cache.dayOf(e.date));
    TimePoint day = calendar.startOfDay(now);
    if (clearNow) days.insert(day);
    int count = 0;
    while (days.count(day)) {
        ++count;
        const TimePoint before = calendar.startOfDay(calendar.addingDays(day, -1));
        if (before >= day) break; // the calendar could not step back
        day = before;
    }
    return count;
}

std::string tidyStreakText(int streak) {
    if (streak <= 0) return "Clean up today to start one";
    if (streak == 1) return "1 day";
    return std::to_string(streak) + " days";
}

std::vector<WeekBar> weekBars(const std::vector<ActionLogEntry>& log, TimePoint now, const CalendarContext& calendar) {
    const TimePoint today = calendar.startOfDay(now);
    const auto symbols = calendar.narrowWeekdaySymbols();
    std::vector<WeekBar> bars;
    bars.reserve(7);
    for (int offset = -6; offset <= 0; ++offset) {
        WeekBar bar;
        bar.id = calendar.addingDays(today, offset);
        const TimePoint next = calendar.addingDays(bar.id, 1);
        // A day whose put-backs outweigh its cleans freed nothing; the chart never goes below 0.
        bar.bytes = std::max<std::int64_t>(0, sumBetween(log, bar.id, next));
        const int weekday = calendar.components(bar.id).weekday; // 1 = Sunday
        if (weekday >= 1 && static_cast<std::size_t>(weekday) <= symbols.size()) bar.label = symbols[weekday - 1];
        bars.push_back(std::move(bar));
    }
    return bars;
}

std::vector<WeekPoint> weekPoints(const std::vector<WeekBar>& bars) {
    std::vector<WeekPoint> points;
    for (std::size_t i = 0; i < bars.size(); ++i)
        points.push_back({static_cast<int>(i), static_cast<double>(bars[i].bytes)});
    return points;
}

std::string trimmedQuery(const std::string& query) {
    icu::UnicodeString s = icu::UnicodeString::fromUTF8(query);
    int32_t start = 0;
    int32_t end = s.length();
    while (start < end && u_isUWhiteSpace(s.char32At(start))) start = s.moveIndex32(start, 1);
    while (end > start) {
        const int32_t prev = s.moveIndex32(end, -1);
        if (!u_isUWhiteSpace(s.char32At(prev))) break;
        end = prev;
    }
    std::string out;
    s.tempSubStringBetween(start, end).toUTF8String(out);
    return out;
}

std::string activityDayTitle(TimePoint dayStart, TimePoint now, const CalendarContext& calendar) {
    const int back = calendar.daysBetween(dayStart, now);
    if (back == 0) return "Today";
    if (back == 1) return "Yesterday";
    return calendar.format(dayStart, "yMMMd");
}

std::vector<ActivityDay> activityDays(const std::vector<ActionLogEntry>& log, const std::string& query, TimePoint now,
                                      const CalendarContext& calendar) {
    const std::string needle = trimmedQuery(query);
    // Newest day first: a map ordered by descending start of day.
    std::map<TimePoint, ActivityDay, std::greater<>> byDay;
    DayCache cache(calendar);
    for (const auto& e : log) {
        if (!needle.empty()) {
            const std::string haystack =
                e.title + " " + e.subtitle + " " + e.sourcePath + " " + e.destinationPath.value_or(std::string());
            if (!calendar.containsIgnoringCase(haystack, needle)) continue;
        }
        const TimePoint day = cache.dayOf(e.date);
        ActivityDay& group = byDay[day];
        group.id = day;
        group.total = saturatingAdd(group.total, e.bytesReclaimed);
        group.entries.push_back(e);
    }
    std::vector<ActivityDay> out;
    out.reserve(byDay.size());
    const TimePoint today = calendar.startOfDay(now);
    const TimePoint yesterday = calendar.startOfDay(calendar.addingDays(today, -1));
    std::optional<DateTextFormatter> dateText;
    for (auto& [day, group] : byDay) {
        std::stable_sort(group.entries.begin(), group.entries.end(),
                         [](const ActionLogEntry& a, const ActionLogEntry& b) { return a.date > b.date; });
        if (day == today) group.title = "Today";
        else if (day == yesterday) group.title = "Yesterday";
        else {
            if (!dateText) dateText.emplace(calendar, "yMMMd");
            group.title = dateText->format(day);
        }
        out.push_back(std::move(group));
    }
    return out;
}

} // namespace bv
