#include <gtest/gtest.h>

#include <limits>

#include "space/LowSpaceAlerts.h"

using namespace bv;
using namespace std::chrono_literals;

namespace {

constexpr std::int64_t GB = 1'000'000'000;
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
const TimePoint t0 = *parseIsoDate("2026-11-22T08:00:00Z");

BrimvaleSettings sizeLimit(std::int64_t gigabytes) {
    BrimvaleSettings s;
    s.lowSpaceUnit = LowSpaceUnit::gigabytes;
    s.lowSpaceGigabytes = gigabytes;
    return s;
}

} // namespace

TEST(LowSpaceLimits, PicksTheLimitAndItsReArmLevel) {
    const auto gigabytes = LowSpaceUnit::gigabytes;
    const auto percent = LowSpaceUnit::percent;
    struct Case {
        const char* what;
        std::int64_t total;
        bool enabled;
        LowSpaceUnit unit;
        std::int64_t gb, pct;
        bool either;
        LowSpaceLimits expected;
    };
    const LowSpaceLimits none{};
    const Case cases[] = {
        {"alerts off", 500 * GB, false, gigabytes, 20, 10, false, none},
        {"a failed reading", 0, true, gigabytes, 20, 10, true, none},
        {"20 GB re-arms 5 GB above", 500 * GB, true, gigabytes, 20, 10, false, {20 * GB, 25 * GB, false}},
        {"0 GB is no size limit", 500 * GB, true, gigabytes, 0, 10, false, none},
        {"a tiny disk's margin is 2 %", 100, true, percent, 20, 50, false, {50, 52, false}},
        {"below 100 bytes the margin is 1", 49, true, percent, 20, 50, false, {24, 25, false}},
        {"share rounds down", 1'999, true, percent, 20, 10, false, {199, 238, false}},
        {"0 % is no share limit", 500 * GB, true, percent, 20, 0, false, none},
        {"100 % is no share limit", 500 * GB, true, percent, 20, 100, false, none},
        {"either: the higher share wins", 500 * GB, true, gigabytes, 20, 10, true, {50 * GB, 60 * GB, false}},
        {"either: the higher size wins", 500 * GB, true, percent, 80, 10, true, {80 * GB, 85 * GB, false}},
        {"either: a tie goes to size", 200 * GB, true, percent, 20, 10, true, {20 * GB, 25 * GB, false}},
        {"either: share alone", 500 * GB, true, gigabytes, 0, 10, true, {50 * GB, 60 * GB, false}},
        {"either: size alone", 500 * GB, true, percent, 20, 100, true, {20 * GB, 25 * GB, false}},
        {"either: neither", 500 * GB, true, gigabytes, 0, 0, true, none},
        {"re-arm capped at the total", 100 * GB, true, gigabytes, 98, 10, false, {98 * GB, 100 * GB, false}},
        {"a limit past the disk", 30 * GB, true, gigabytes, 40, 10, false, {40 * GB, 30 * GB, false}},
        {"huge stored gigabytes saturate", 500 * GB, true, gigabytes, kMax, 10, false, {kMax, 500 * GB, false}},
        {"huge total, large share", kMax, true, percent, 20, 99, false, {9'131'138'316'486'228'048, kMax, false}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(lowSpaceLimits(c.total, c.enabled, c.unit, c.gb, c.pct, c.either), c.expected) << c.what;
}

// The latch walked through one crossing after another on a 500 GB disk with a 20 GB limit,
// each step feeding the last result back as the stored state.
TEST(LowSpaceEvaluate, TheLatchAlertsOncePerCrossing) {
    struct Step {
        std::int64_t freeBytes;
        LowSpaceSeverity severity;
        bool notifies, armed;
    };
    const auto none = LowSpaceSeverity::none;
    const auto warning = LowSpaceSeverity::warning;
    const auto critical = LowSpaceSeverity::critical;
    const Step steps[] = {
        {30 * GB, none, false, true},
        {20 * GB, none, false, true}, // equal to the limit is not low
        {19'900'000'000, warning, true, false},
        {19 * GB, warning, false, false},
        {24 * GB, none, false, false}, // above the limit, below the margin
        {19 * GB, warning, false, false},
        {25 * GB, none, false, true}, // the re-arm level
        {10 * GB, warning, true, false}, // exactly half is still a warning
        {9'999'999'999, critical, false, false},
        {40 * GB, none, false, true},
        {1 * GB, critical, true, false},
        {501 * GB, none, false, true}, // a reading past the total
    };
    BrimvaleSettings settings = sizeLimit(20);
    TimePoint now = t0;
    for (const auto& step : steps) {
        now += 10min;
        const LowSpaceStatus status = evaluateLowSpace(step.freeBytes, 500 * GB, settings, now);
        const auto at = std::to_string(step.freeBytes) + " bytes free";
        EXPECT_EQ(status.severity, step.severity) << at;
        EXPECT_EQ(status.showBanner, step.severity != none) << at;
        EXPECT_EQ(status.shouldNotify, step.notifies) << at;
        EXPECT_EQ(status.armed, step.armed) << at;
        if (step.notifies) EXPECT_EQ(status.lastAlert, now) << at;
        else EXPECT_EQ(status.lastAlert, settings.lowSpaceLastAlert) << at;
        settings.lowSpaceArmed = status.armed;
        settings.lowSpaceLastAlert = status.lastAlert;
    }
}

TEST(LowSpaceEvaluate, DailyRemindersOnlyWhileStillBelow) {
    struct Case {
        const char* what;
        bool remindDaily;
        std::optional<TimePoint> lastAlert;
        std::int64_t freeBytes;
        TimePoint now;
        bool notifies;
    };
    const Case cases[] = {
        {"a day to the second", true, t0, 15 * GB, t0 + 24h, true},
        {"one second short", true, t0, 15 * GB, t0 + 24h - 1s, false},
        {"two days on", true, t0, 15 * GB, t0 + 48h, true},
        {"never alerted, latch closed", true, std::nullopt, 15 * GB, t0, true},
        {"reminders off", false, t0, 15 * GB, t0 + 72h, false},
        {"recovered but not re-armed", true, t0, 22 * GB, t0 + 72h, false},
        {"a clock that went back", true, t0, 15 * GB, t0 - 48h, false},
    };
    for (const auto& c : cases) {
        BrimvaleSettings settings = sizeLimit(20);
        settings.lowSpaceArmed = false;
        settings.lowSpaceRemindDaily = c.remindDaily;
        settings.lowSpaceLastAlert = c.lastAlert;
        const LowSpaceStatus status = evaluateLowSpace(c.freeBytes, 500 * GB, settings, c.now);
        EXPECT_EQ(status.shouldNotify, c.notifies) << c.what;
        EXPECT_FALSE(status.armed) << c.what << ": a reminder never re-arms";
        EXPECT_EQ(status.lastAlert, c.notifies ? std::optional(c.now) : c.lastAlert) << c.what;
    }
}

TEST(LowSpaceEvaluate, WithoutALimitTheLatchOpensAndNothingShows) {
    BrimvaleSettings settings = sizeLimit(20);
    settings.lowSpaceArmed = false;
    settings.lowSpaceLastAlert = t0;
    struct Case {
        const char* what;
        bool enabled;
        LowSpaceUnit unit;
        std::int64_t percent;
    };
    const Case cases[] = {
        {"alerts off", false, LowSpaceUnit::gigabytes, 10},
        {"percent mode with 0 %", true, LowSpaceUnit::percent, 0},
        {"percent mode with a stored 500 %", true, LowSpaceUnit::percent, 500},
    };
    for (const auto& c : cases) {
        settings.alertsEnabled = c.enabled;
        settings.lowSpaceUnit = c.unit;
        settings.lowSpacePercent = c.percent;
        const LowSpaceStatus status = evaluateLowSpace(1, 500 * GB, settings, t0 + 96h);
        EXPECT_EQ(status, (LowSpaceStatus{LowSpaceSeverity::none, false, false, true, t0})) << c.what;
    }
}

TEST(LowSpaceEvaluate, ATinyDiskReArmsTwoBytesAboveItsLimit) {
    BrimvaleSettings settings;
    settings.lowSpaceUnit = LowSpaceUnit::percent;
    settings.lowSpacePercent = 50;
    settings.lowSpaceArmed = false;
    struct Case {
        std::int64_t freeBytes;
        LowSpaceSeverity severity;
        bool armed;
    };
    const Case cases[] = {
        {24, LowSpaceSeverity::critical, false}, {25, LowSpaceSeverity::warning, false},
        {50, LowSpaceSeverity::none, false},     {51, LowSpaceSeverity::none, false},
        {52, LowSpaceSeverity::none, true},
    };
    for (const auto& c : cases) {
        const LowSpaceStatus status = evaluateLowSpace(c.freeBytes, 100, settings, t0);
        EXPECT_EQ(status.severity, c.severity) << c.freeBytes;
        EXPECT_EQ(status.armed, c.armed) << c.freeBytes;
    }
}

TEST(LowSpaceSeverity, Names) {
    EXPECT_STREQ(lowSpaceSeverityName(LowSpaceSeverity::none), "none");
    EXPECT_STREQ(lowSpaceSeverityName(LowSpaceSeverity::warning), "warning");
    EXPECT_STREQ(lowSpaceSeverityName(LowSpaceSeverity::critical), "critical");
}
