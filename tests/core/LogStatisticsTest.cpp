#include <gtest/gtest.h>

#include "core/LogStatistics.h"

using namespace bv;

namespace {

const CalendarContext kUS("en_US", "Europe/Berlin"); // weeks begin on Sunday
const CalendarContext kDE("de_DE", "Europe/Berlin"); // weeks begin on Monday

ActionLogEntry entry(std::int64_t bytes, TimePoint date, std::string source = "/home/u/a",
                     std::optional<std::string> destination = std::nullopt, std::string title = "Moved a") {
    return {Uuid::generate(), date, std::move(title), "detail", "folder", bytes, std::move(source), std::move(destination), std::nullopt, std::nullopt, std::nullopt};
}

TimePoint at(int y, int m, int d, int h = 12, int min = 0, int s = 0) { return kUS.date(y, m, d, h, min, s); }

// Tuesday 17 November 2026, noon in Berlin.
const TimePoint kNow = at(2026, 11, 17);

} // namespace

TEST(LogStatistics, WeekBeginsOnTheLocalesFirstWeekday) {
    const std::vector<ActionLogEntry> log{
        entry(2000, at(2026, 11, 16, 0, 0, 0)),  // Monday, first second
        entry(1000, at(2026, 11, 15, 0, 30)),    // Sunday
        entry(4000, at(2026, 11, 14, 23, 59, 59)) // Saturday, last second
    };
    EXPECT_EQ(bytesFreedThisWeek(log, kNow, kUS), 3000) << "Sunday-first week includes Sunday";
    EXPECT_EQ(bytesFreedThisWeek(log, kNow, kDE), 2000) << "Monday-first week starts on Monday";
    EXPECT_EQ(bytesFreed(log, at(2026, 11, 14, 23, 59, 59)), 7000) << "at or after `since`";
    // On the week's first day itself, the week is just today.
    EXPECT_EQ(bytesFreedThisWeek({log[1], log[2]}, at(2026, 11, 15, 18), kUS), 1000);
}

TEST(LogStatistics, StreakCountsRunsThatReachToday) {
    struct Case {
        std::vector<int> daysAgo; // one entry per value, 0 bytes unless noted below
        bool clearNow;
        int expected;
        const char* why;
    };
    const Case cases[] = {
        {{}, true, 1, "no entries, nothing to clean, a finished scan"},
        {{}, false, 0, "nothing at all"},
        {{1, 2}, false, 0, "yesterday and before, but still something to clean today"},
        {{1, 2}, true, 3, "clear today joins the run"},
        {{0, 1, 3}, false, 2, "a gap ends the run"},
        {{0, 0, 1, 2, 3, 4, 5, 6, 7}, false, 8, "several entries on one day count once"},
    };
    for (const auto& c : cases) {
        std::vector<ActionLogEntry> log;
        for (int back : c.daysAgo) log.push_back(entry(0, kUS.addingDays(kNow, -back)));
        EXPECT_EQ(tidyStreak(log, c.clearNow, kNow, kUS), c.expected) << c.why;
    }
    EXPECT_TRUE(isClearNow(0, false, false, true));
    EXPECT_FALSE(isClearNow(0, false, false, false)) << "no refresh yet";
    EXPECT_FALSE(isClearNow(0, true, false, true));
    EXPECT_FALSE(isClearNow(1, false, false, true));
    EXPECT_EQ(tidyStreakText(0), "Clean up today to start one");
    EXPECT_EQ(tidyStreakText(1), "1 day");
    EXPECT_EQ(tidyStreakText(12), "12 days");
}

TEST(LogStatistics, StreakSurvivesTheDaylightSavingChange) {
    // 25 October 2026 has 25 hours in Berlin; stepping back by days must still land on it.
    const TimePoint now = at(2026, 10, 26, 9);
    std::vector<ActionLogEntry> log;
    for (int back = 0; back < 4; ++back) log.push_back(entry(0, kUS.addingDays(at(2026, 10, 26, 0, 10), -back)));
    EXPECT_EQ(tidyStreak(log, false, now, kUS), 4);
}

TEST(LogStatistics, WeekBarsRunOldestFirstWithNarrowLabels) {
    const std::vector<ActionLogEntry> log{entry(5, at(2026, 11, 17, 0, 0, 0)), entry(7, at(2026, 11, 16, 23, 59, 59)),
                                          entry(11, at(2026, 11, 11, 8)), entry(100, at(2026, 11, 10, 23, 59, 59)),
                                          entry(-3, at(2026, 11, 16, 1))};
    const auto bars = weekBars(log, kNow, kUS);
    ASSERT_EQ(bars.size(), 7u);
    std::vector<std::string> labels;
    std::vector<std::int64_t> bytes;
    for (const auto& b : bars) {
        labels.push_back(b.label);
        bytes.push_back(b.bytes);
    }
    // Wednesday 11th to Tuesday 17th; the Tuesday before falls outside.
    EXPECT_EQ(labels, (std::vector<std::string>{"W", "T", "F", "S", "S", "M", "T"}));
    EXPECT_EQ(bytes, (std::vector<std::int64_t>{11, 0, 0, 0, 0, 4, 5}));
    EXPECT_EQ(bars.front().id, at(2026, 11, 11, 0));
    const auto points = weekPoints(bars);
    EXPECT_EQ(points[6].index, 6);
    EXPECT_EQ(points[6].bytes, 5.0);
}

TEST(LogStatistics, ActivityDaysGroupByDayNewestFirst) {
    const std::vector<ActionLogEntry> log{
        entry(1, at(2026, 11, 17, 8)), entry(2, at(2026, 11, 17, 9)), entry(4, at(2026, 11, 16, 0, 0, 0)),
        entry(8, at(2026, 11, 12, 23, 59))};
    const auto days = activityDays(log, "", kNow, kUS);
    ASSERT_EQ(days.size(), 3u);
    EXPECT_EQ(days[0].title, "Today");
    EXPECT_EQ(days[0].total, 3);
    EXPECT_EQ(days[0].entries[0].bytesReclaimed, 2) << "entries newest first within a day";
    EXPECT_EQ(days[1].title, "Yesterday");
    EXPECT_EQ(days[2].title, "Nov 12, 2026");
    EXPECT_EQ(days[2].id, at(2026, 11, 12, 0));
}

TEST(LogStatistics, SearchLooksAtNamesDetailsAndBothFolders) {
    const std::vector<ActionLogEntry> log{
        entry(1, kNow, "/home/u/Downloads/report.pdf", "/home/u/Documents/Steuer/report.pdf", "Moved report.pdf"),
        entry(2, kNow, "/home/u/Projekte/Straße/target", std::nullopt, "Cleared build output"),
        entry(3, kNow, "/home/u/Downloads/song.mp3", std::nullopt, "Moved song.mp3")};
    struct Case {
        const char* query;
        std::vector<std::int64_t> found;
    };
    const Case cases[] = {
        {"steuer", {1}},           // the destination folder alone
        {"  DOWNLOADS\n", {1, 3}}, // trimmed, case-insensitive, source folder
        {"STRASSE", {2}},          // full case folding under the locale
        {"build output", {2}},
        {"detail", {1, 2, 3}},     // the subtitle
        {"\t \n", {1, 2, 3}},      // blank means everything
        {"nothing like it", {}},
    };
    for (const auto& c : cases) {
        std::vector<std::int64_t> found;
        for (const auto& day : activityDays(log, c.query, kNow, kUS))
            for (const auto& e : day.entries) found.push_back(e.bytesReclaimed);
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, c.found) << '"' << c.query << '"';
    }
    EXPECT_EQ(trimmedQuery("\u00a0 x y\u2028"), "x y");
}
