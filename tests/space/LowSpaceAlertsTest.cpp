#include <gtest/gtest.h>

#include <limits>

#include "space/LowSpaceAlerts.h"

using namespace bv;
using namespace std::chrono_literals;

namespace {
constexpr std::int64_t GB = 1'000'000'000;
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
const TimePoint t0 = *parseIsoDate("2026-11-22T08:00:00Z");
} // namespace

TEST(LowSpaceLimits, PicksTheLimitAndItsReArmLevel) {
    const auto size = LowSpaceUnit::gigabytes;
    const auto share = LowSpaceUnit::percent;
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
        {"alerts off", 500 * GB, false, size, 20, 10, false, none},
        {"a failed reading", 0, true, size, 20, 10, true, none},
        {"20 GB re-arms 5 GB above", 500 * GB, true, size, 20, 10, false, {20 * GB, 25 * GB, false}},
        {"0 GB is no size limit", 500 * GB, true, size, 0, 10, false, none},
        {"a tiny disk's margin is 2 %", 100, true, share, 20, 50, false, {50, 52, false}},
        {"below 100 bytes the margin is 1", 49, true, share, 20, 50, false, {24, 25, false}},
        {"0 % is no share limit", 500 * GB, true, share, 20, 0, false, none},
        {"100 % is no share limit", 500 * GB, true, share, 20, 100, false, none},
        {"either: the higher share wins", 500 * GB, true, size, 20, 10, true, {50 * GB, 60 * GB, false}},
        {"either: the higher size wins", 500 * GB, true, share, 80, 10, true, {80 * GB, 85 * GB, false}},
        {"either: a tie goes to size", 200 * GB, true, share, 20, 10, true, {20 * GB, 25 * GB, false}},
        {"either: size alone", 500 * GB, true, share, 20, 100, true, {20 * GB, 25 * GB, false}},
        {"re-arm capped at the total", 100 * GB, true, size, 98, 10, false, {98 * GB, 100 * GB, false}},
        {"huge stored gigabytes saturate", 500 * GB, true, size, kMax, 10, false, {kMax, 500 * GB, false}},
        {"huge total, large share", kMax, true, share, 20, 99, false, {9'131'138'316'486'228'048, kMax, false}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(lowSpaceLimits(c.total, c.enabled, c.unit, c.gb, c.pct, c.either), c.expected) << c.what;
}

// A 500 GB disk with a 20 GB limit, each step feeding its result back as the stored latch.
TEST(LowSpaceEvaluate, TheLatchAlertsOncePerCrossing) {
    using enum LowSpaceSeverity;
    struct Step {
        std::int64_t freeBytes;
        LowSpaceSeverity severity;
        bool notifies, armed;
    };
    const Step steps[] = {
        {20 * GB, none, false, true}, // equal to the limit is not low
        {19'900'000'000, warning, true, false}, {19 * GB, warning, false, false},
        {24 * GB, none, false, false}, // inside the margin
        {19 * GB, warning, false, false},       {25 * GB, none, false, true},
        {10 * GB, warning, true, false},        {9'999'999'999, critical, false, false},
    };
    BrimvaleSettings settings;
    settings.lowSpaceGigabytes = 20;
    TimePoint now = t0;
    for (const auto& step : steps) {
        now += 10min;
        const LowSpaceStatus status = evaluateLowSpace(step.freeBytes, 500 * GB, settings, now);
        const LowSpaceStatus expected{step.severity, step.notifies, step.severity != none, step.armed,
                                      step.notifies ? std::optional(now) : settings.lowSpaceLastAlert};
        EXPECT_EQ(status, expected) << step.freeBytes << " bytes free";
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
        {"never alerted, latch closed", true, std::nullopt, 15 * GB, t0, true},
        {"reminders off", false, t0, 15 * GB, t0 + 72h, false},
        {"recovered but not re-armed", true, t0, 22 * GB, t0 + 72h, false},
    };
    for (const auto& c : cases) {
        BrimvaleSettings settings;
        settings.lowSpaceGigabytes = 20;
        settings.lowSpaceArmed = false;
        settings.lowSpaceRemindDaily = c.remindDaily;
        settings.lowSpaceLastAlert = c.lastAlert;
        const LowSpaceStatus status = evaluateLowSpace(c.freeBytes, 500 * GB, settings, c.now);
        EXPECT_EQ(status.shouldNotify, c.notifies) << c.what;
        EXPECT_FALSE(status.armed) << c.what << ": a reminder never re-arms";
        EXPECT_EQ(status.lastAlert, c.notifies ? std::optional(c.now) : c.lastAlert) << c.what;
    }
}
