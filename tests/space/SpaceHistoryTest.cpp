#include <gtest/gtest.h>

#include "foundation/CalendarContext.h"
#include "space/NewToday.h"
#include "space/SpaceDeltaText.h"
#include "space/SpaceHistory.h"
#include "space/VolumeReader.h"
#include "support/TestEnvironment.h"

#include <sys/stat.h>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utime.h>

using namespace bv;

namespace {
const CalendarContext berlin("en_US", "Europe/Berlin");

VolumeSnapshot at(TimePoint t, std::int64_t freeBytes) { return {t, "Disk", 500'000'000'000, freeBytes}; }
} // namespace

TEST(SpaceHistory, MidnightDeltaPicksItsBaseline) {
    const TimePoint now = berlin.date(2026, 11, 22, 9, 30);
    const TimePoint lateYesterday = berlin.date(2026, 11, 21, 23, 50);
    const TimePoint earlyYesterday = berlin.date(2026, 11, 21, 8, 0);
    const TimePoint firstToday = berlin.date(2026, 11, 22, 0, 10);
    const TimePoint laterToday = berlin.date(2026, 11, 22, 7, 0);
    const VolumeSnapshot current = at(now, 100);

    struct Case {
        std::vector<VolumeSnapshot> observations;
        SpaceDelta expected;
    };
    const Case cases[] = {
        {{at(earlyYesterday, 70), at(lateYesterday, 80), at(firstToday, 90)}, {20, SpaceBasis::sinceMidnight, lateYesterday}},
        // Samples are not assumed to be in order.
        {{at(lateYesterday, 80), at(earlyYesterday, 70)}, {20, SpaceBasis::sinceMidnight, lateYesterday}},
        {{at(laterToday, 95), at(firstToday, 130)}, {-30, SpaceBasis::sinceFirstCheckToday, firstToday}},
        {{}, {0, SpaceBasis::sinceFirstCheckToday, now}},
    };
    for (const auto& c : cases) {
        SpaceHistory h;
        h.observations = c.observations;
        EXPECT_EQ(h.midnightDelta(current, now, berlin), c.expected);
    }
}

TEST(SpaceHistory, RecordCapsAndIgnoresBadReadings) {
    SpaceHistory h;
    const TimePoint t0 = berlin.date(2026, 11, 22, 0, 0);
    for (int i = 0; i < 125; ++i) EXPECT_TRUE(h.record(at(t0 + std::chrono::minutes(i), i)));
    ASSERT_EQ(h.observations.size(), 120u);
    EXPECT_EQ(h.observations.front().freeBytes, 5);
    EXPECT_EQ(h.observations.back().freeBytes, 124);
    EXPECT_FALSE(h.record({t0, "Disk", 0, 0}));
    EXPECT_EQ(h.observations.size(), 120u);
}

TEST(SpaceHistory, OnlyTheCurrentMetricVersionIsKept) {
    SpaceHistory stored;
    stored.observations = {at(berlin.date(2026, 11, 21, 12), 5)};
    stored.lastQuit = stored.observations.front();
    for (std::optional<std::int64_t> version : {std::optional<std::int64_t>{}, std::optional<std::int64_t>{1},
                                                std::optional<std::int64_t>{3}}) {
        SpaceHistory old = stored;
        old.metricVersion = version;
        const auto decoded = SpaceHistory::fromJson(old.toJson());
        bool replaced = false;
        const auto accepted = SpaceHistory::accepting(decoded, replaced);
        EXPECT_TRUE(replaced);
        EXPECT_TRUE(accepted.observations.empty());
        EXPECT_FALSE(accepted.lastQuit);
        EXPECT_EQ(accepted.metricVersion, 2);
    }
    bool replaced = true;
    EXPECT_EQ(SpaceHistory::accepting(SpaceHistory::fromJson(stored.toJson()), replaced), stored);
    EXPECT_FALSE(replaced);
    (void)SpaceHistory::accepting(std::nullopt, replaced);
    EXPECT_TRUE(replaced);
}

TEST(SpaceHistory, DeltaSentencesSayWhatTheyCompareWith) {
    const TimePoint now = berlin.date(2026, 11, 22, 9, 30);
    const SpaceDelta midnight{1'200'000'000, SpaceBasis::sinceMidnight, berlin.date(2026, 11, 21, 23, 58)};
    EXPECT_EQ(deltaSentence(midnight, now, berlin), "+1.2 GB free since midnight (compared with 11:58\u202fPM yesterday)");
    const SpaceDelta old{-300'000'000, SpaceBasis::sinceMidnight, berlin.date(2026, 11, 19, 18, 2)};
    EXPECT_EQ(deltaSentence(old, now, berlin), "\u2212300 MB free since midnight (compared with Nov 19, 6:02\u202fPM)");
    EXPECT_EQ(deltaSentence(SpaceDelta::unavailable(), now, berlin), "");
    EXPECT_EQ(lastOpenDelta(at(now, 10), std::nullopt), SpaceDelta::unavailable());
    EXPECT_EQ(lastOpenDelta(at(now, 10), at(now - std::chrono::hours(1), 50)).bytes, -40);
}

// What counts as an arrival, for the cases a real disk can't be made to show: a birth time
// from last month can't be set, so those rows are given as times.
TEST(NewToday, AddedDateIsBirthOrAnArrival) {
    const TimePoint today = berlin.date(2026, 11, 20, 9, 0), lastMonth = berlin.date(2026, 10, 20, 9, 0);
    struct Row {
        const char* label;
        std::optional<TimePoint> birth;
        TimePoint changed, modified;
        std::optional<TimePoint> added;
    };
    const Row rows[] = {
        {"downloaded today", today, today, today, today},
        {"moved in today, made last month", lastMonth, today, lastMonth, today},
        {"created last month, edited today", lastMonth, today, today, lastMonth},
        {"folder whose contents changed today", lastMonth, today, today, lastMonth},
        {"no birth time, moved in today", std::nullopt, today, lastMonth, today},
        {"no birth time, written today", std::nullopt, today, today, std::nullopt},
    };
    for (const auto& r : rows) EXPECT_EQ(addedDate(r.birth, r.changed, r.modified), r.added) << r.label;
}

// Real files: downloads, a file renamed in from elsewhere with an old modification time, an
// app bundle and a folder, listed newest first; hidden names never.
TEST(NewToday, ListsTodaysArrivalsNewestFirst) {
    const std::string dir = test::TestEnvironment::freshFolder("Downloads");
    const std::string elsewhere = test::TestEnvironment::freshFolder("elsewhere");
    test::writeFile(elsewhere + "/old scan.pdf", "scan");
    const auto pause = [] { ::usleep(20'000); };
    for (const char* name : {"report final.pdf", "Проект/notes.txt", "Tool.app/Contents/binary", ".hidden"}) {
        test::writeFile(dir + "/" + name, std::string(5000, 'a'));
        pause();
    }
    const timespec lastYear[2] = {{1700000000, 0}, {1700000000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (elsewhere + "/old scan.pdf").c_str(), lastYear, 0), 0);
    ASSERT_EQ(::rename((elsewhere + "/old scan.pdf").c_str(), (dir + "/old scan.pdf").c_str()), 0);

    const TimePoint now = Clock::now();
    const auto today = newToday(dir, WatchedLocation::downloads, now, berlin);
    std::vector<std::string> names;
    for (const auto& f : today) {
        names.push_back(f.name);
        EXPECT_GT(f.size, 0) << f.name;
    }
    EXPECT_EQ(names, (std::vector<std::string>{"old scan.pdf", "Tool.app", "Проект", "report final.pdf"}));
    // Ten minutes past tomorrow's midnight nothing from today counts any more.
    const TimePoint tomorrow = berlin.addingDays(berlin.startOfDay(now), 1) + std::chrono::minutes(10);
    EXPECT_TRUE(newToday(dir, WatchedLocation::downloads, tomorrow, berlin).empty());
    EXPECT_TRUE(scanFolder(dir + "/missing").empty());
    EXPECT_EQ(kindDescription("a.PDF", false), "PDF document");
    EXPECT_EQ(kindDescription("Makefile", false), "Document");
    EXPECT_EQ(kindDescription("x.blend", false), "BLEND file");
}

TEST(VolumeReader, ReadsTheHomeFileSystem) {
    const auto s = readVolume(test::TestEnvironment::root(), Clock::now());
    EXPECT_GT(s.totalBytes, 0);
    EXPECT_GE(s.freeBytes, 0);
    EXPECT_LE(s.freeBytes, s.totalBytes);
    EXPECT_FALSE(s.volumeName.empty());
    EXPECT_EQ(readVolume("/does/not/exist", Clock::now()).totalBytes, 0);
}
