#include <gtest/gtest.h>

#include "foundation/CalendarContext.h"
#include "space/NewToday.h"
#include "space/SpaceDeltaText.h"
#include "space/SpaceHistory.h"
#include "space/VolumeReader.h"
#include "support/TestEnvironment.h"

#include <sys/stat.h>
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

TEST(NewToday, ListsTodaysArrivalsNewestFirst) {
    const std::string dir = test::TestEnvironment::freshFolder("Downloads");
    test::writeFile(dir + "/report final.pdf", std::string(10000, 'a'));
    test::writeFile(dir + "/.hidden", "x");
    test::writeFile(dir + "/Проект/notes.txt", std::string(5000, 'b'));
    test::writeFile(dir + "/Tool.app/Contents/binary", std::string(9000, 'c'));
    const auto files = scanFolder(dir);
    ASSERT_EQ(files.size(), 3u);
    for (const auto& f : files) {
        EXPECT_NE(f.name, ".hidden");
        EXPECT_TRUE(f.added);
        EXPECT_GT(f.size, 0);
    }
    const TimePoint now = Clock::now();
    const auto today = newToday(dir, WatchedLocation::downloads, now, berlin);
    EXPECT_EQ(today.size(), 3u);
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
