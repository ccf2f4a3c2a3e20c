#include <gtest/gtest.h>

#include "core/ActionLog.h"
#include "foundation/FileIO.h"
#include "support/TestEnvironment.h"

using namespace bv;

namespace {

const CalendarContext kBerlinUS("en_US", "Europe/Berlin");

ActionLogEntry entry(const std::string& title, std::int64_t bytes, TimePoint date) {
    return {Uuid::generate(), date, title, "detail", "trash", bytes, "/home/u/" + title, std::nullopt, std::nullopt, std::nullopt, std::nullopt};
}

TimePoint at(int y, int m, int d, int h = 12, int min = 0, int s = 0) { return kBerlinUS.date(y, m, d, h, min, s); }

} // namespace

TEST(ActionLogEntry, RoundTripsAndFailsTheWholeFileOnOneBadEntry) {
    ActionLogEntry moved = entry("Moved report.pdf", 0, at(2026, 11, 15));
    moved.destinationPath = "/home/u/Documents/report.pdf";
    const std::vector<ActionLogEntry> log{moved, entry("Cleared cache", 1'500'000, at(2026, 11, 14))};
    const Json json = encodeLog(log);
    EXPECT_EQ(decodeLog(json), log);
    EXPECT_FALSE(json[1].contains("destinationPath")) << "an absent destination is left out, not null";

    // Each required key, dropped from the second entry alone, fails the whole list.
    for (const char* key : {"id", "date", "title", "subtitle", "symbolName", "bytesReclaimed", "sourcePath"}) {
        Json broken = json;
        broken[1].erase(key);
        EXPECT_THROW((void)decodeLog(broken), DecodeError) << key;
    }
    for (const auto& [key, value] : std::vector<std::pair<const char*, Json>>{
             {"id", "not-a-uuid"}, {"bytesReclaimed", "12"}, {"date", "yesterday"}, {"destinationPath", 3}}) {
        Json broken = json;
        broken[0][key] = value;
        EXPECT_THROW((void)decodeLog(broken), DecodeError) << key;
    }
    EXPECT_THROW((void)decodeLog(Json::object()), DecodeError);
}

TEST(ActionLogEntry, CorruptFileLoadsEmptyAndNextSaveOverwritesIt) {
    const AppPersistence store(test::TestEnvironment::freshFolder("log-corrupt"));
    test::writeFile(store.pathOf(kLogFileName), R"([{"id": "nope"}])");
    auto log = loadLog(store);
    EXPECT_TRUE(log.empty());

    BrimvaleSettings settings;
    const auto change = addLogEntries(log, settings, {entry("a", 10, at(2026, 11, 15))}, at(2026, 11, 15), kBerlinUS);
    ASSERT_TRUE(change.logChanged);
    saveLog(store, log);
    EXPECT_EQ(loadLog(store), log);
}

TEST(AddLogEntries, CapsAtFiveHundredNewestFirstBeforeSaving) {
    const AppPersistence store(test::TestEnvironment::freshFolder("log-cap"));
    std::vector<ActionLogEntry> log;
    for (int i = 0; i < 500; ++i) log.push_back(entry("old" + std::to_string(i), 0, at(2026, 1, 1)));
    BrimvaleSettings settings;
    const auto a = entry("new-a", 0, at(2026, 11, 15)), b = entry("new-b", 0, at(2026, 11, 15));
    const auto change = addLogEntries(log, settings, {a, b}, at(2026, 11, 15), kBerlinUS);
    EXPECT_TRUE(change.logChanged);
    ASSERT_EQ(log.size(), 500u);
    EXPECT_EQ(log[0], a) << "the given entries go first in their own order";
    EXPECT_EQ(log[1], b);
    EXPECT_EQ(log[2].title, "old0");
    EXPECT_EQ(log.back().title, "old497") << "the two oldest fell off";

    saveLog(store, log);
    EXPECT_EQ(decodeLog(*parseJson(*readWholeFile(store.pathOf(kLogFileName)))).size(), 500u);

    // A hand-edited longer file is cut on load as well.
    log.push_back(entry("extra", 0, at(2025, 1, 1)));
    saveLog(store, log);
    EXPECT_EQ(loadLog(store).size(), 500u);
}

TEST(AddLogEntries, ZeroByteAndEmptyAdditionsLeaveCountersAlone) {
    std::vector<ActionLogEntry> log;
    BrimvaleSettings settings;
    EXPECT_FALSE(addLogEntries(log, settings, {}, at(2026, 11, 15), kBerlinUS).logChanged);

    const auto change = addLogEntries(log, settings, {entry("moved", 0, at(2026, 11, 15)), entry("moved2", 0, at(2026, 11, 15))},
                                      at(2026, 11, 15), kBerlinUS);
    EXPECT_TRUE(change.logChanged);
    EXPECT_FALSE(change.settingsChanged);
    EXPECT_FALSE(change.milestone);
    EXPECT_EQ(log.size(), 2u);
    EXPECT_EQ(settings, BrimvaleSettings{});
}

TEST(AddLogEntries, OneCallIsOneCleanupAndReportsOnlyTheLargestMilestone) {
    std::vector<ActionLogEntry> log;
    BrimvaleSettings settings;
    const TimePoint first = at(2026, 11, 3, 9);
    // 900 MB in two entries of one clean: one clean-up, no milestone yet.
    auto change = addLogEntries(log, settings, {entry("a", 400'000'000, first), entry("b", 500'000'000, first)}, first,
                                kBerlinUS);
    EXPECT_TRUE(change.settingsChanged);
    EXPECT_FALSE(change.milestone);
    EXPECT_EQ(settings.lifetimeCleanups, 1);
    EXPECT_EQ(settings.lifetimeBytesFreed, 900'000'000);
    EXPECT_EQ(settings.firstCleanupAt, first);

    // 900 MB to 6 GB in one clean crosses 1 GB and 5 GB: only 5 GB is told.
    change = addLogEntries(log, settings, {entry("c", 5'100'000'000, at(2026, 11, 15))}, at(2026, 11, 15), kBerlinUS);
    ASSERT_TRUE(change.milestone);
    EXPECT_EQ(change.milestone->milestoneBytes, 5'000'000'000);
    EXPECT_EQ(change.milestone->title, "5 GB back with Brimvale");
    EXPECT_EQ(change.milestone->body, "6 GB freed across 2 cleanups since Nov 3.");
    EXPECT_EQ(settings.lastMilestoneBytes, 5'000'000'000);
    EXPECT_EQ(settings.firstCleanupAt, first) << "the first clean-up date stays";
}

TEST(AddLogEntries, NeverRepeatsAMilestoneEvenAfterTheTotalWasLowered) {
    struct Case {
        std::int64_t lifetime, lastMilestone, freed;
        std::optional<std::int64_t> expected;
        const char* why;
    };
    const Case cases[] = {
        {0, 5'000'000'000, 6'000'000'000, std::nullopt, "reset total, 5 GB already told"},
        {0, 5'000'000'000, 12'000'000'000, 10'000'000'000, "a higher one is still new"},
        {999'999'999, 0, 1, 1'000'000'000, "landing exactly on a milestone counts"},
        {1'000'000'000, 1'000'000'000, 1'000'000'000, std::nullopt, "between milestones"},
        {999'000'000'000, 500'000'000'000, 5'000'000'000, 1'000'000'000'000, "the top of the table"},
        {1'000'000'000'000, 1'000'000'000'000, 9'000'000'000'000, std::nullopt, "beyond the table"},
    };
    for (const auto& c : cases) {
        BrimvaleSettings s;
        s.lifetimeBytesFreed = c.lifetime;
        s.lifetimeCleanups = c.lifetime > 0 ? 3 : 0;
        s.lastMilestoneBytes = c.lastMilestone;
        std::vector<ActionLogEntry> log;
        const auto change = addLogEntries(log, s, {entry("x", c.freed, at(2026, 11, 15))}, at(2026, 11, 15), kBerlinUS);
        EXPECT_EQ(change.milestone ? std::optional(change.milestone->milestoneBytes) : std::nullopt, c.expected) << c.why;
        EXPECT_EQ(s.lastMilestoneBytes, c.expected.value_or(c.lastMilestone)) << c.why;
    }
}

TEST(MilestoneNotice, SingularCleanupAndNoDateWhenUnknown) {
    BrimvaleSettings s;
    s.lifetimeBytesFreed = 1'200'000'000;
    s.lifetimeCleanups = 1;
    EXPECT_EQ(milestoneNotice(1'000'000'000, s, kBerlinUS).body, "1.2 GB freed across 1 cleanup.");
    s.firstCleanupAt = at(2026, 1, 31, 23, 30); // still the 31st in Berlin, already Feb 1st nowhere near
    EXPECT_EQ(milestoneNotice(1'000'000'000, s, kBerlinUS).body, "1.2 GB freed across 1 cleanup since Jan 31.");
}

TEST(BackfillLifetimeCounters, CountsDistinctMinutesOfEntriesThatFreedSomething) {
    const std::vector<ActionLogEntry> log{
        entry("a", 3'000'000'000, at(2026, 11, 15, 10, 5, 1)), entry("b", 2'500'000'000, at(2026, 11, 15, 10, 5, 59)),
        entry("move", 0, at(2026, 10, 1)),                      entry("c", 1, at(2026, 11, 15, 10, 6, 0)),
        entry("d", 10, at(2026, 11, 2, 8))};
    BrimvaleSettings s;
    ASSERT_TRUE(backfillLifetimeCounters(log, s));
    EXPECT_EQ(s.lifetimeBytesFreed, 5'500'000'011);
    EXPECT_EQ(s.lifetimeCleanups, 3) << "10:05 twice, 10:06, and Nov 2; the zero-byte move does not count";
    EXPECT_EQ(s.firstCleanupAt, at(2026, 11, 2, 8)) << "the move on Oct 1 freed nothing";
    EXPECT_EQ(s.lastMilestoneBytes, 5'000'000'000) << "the past is not celebrated again";

    BrimvaleSettings counted;
    counted.lifetimeCleanups = 1;
    EXPECT_FALSE(backfillLifetimeCounters(log, counted));
    EXPECT_EQ(counted.lifetimeBytesFreed, 0);

    BrimvaleSettings none;
    EXPECT_FALSE(backfillLifetimeCounters({entry("move", 0, at(2026, 10, 1))}, none));
    EXPECT_EQ(none, BrimvaleSettings{});

    BrimvaleSettings small;
    ASSERT_TRUE(backfillLifetimeCounters({entry("tiny", 999'999'999, at(2026, 10, 1))}, small));
    EXPECT_EQ(small.lastMilestoneBytes, 0);
}
