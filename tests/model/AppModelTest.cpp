#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSignalSpy>

#include <atomic>
#include <semaphore>

#include "model/AppModel.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/Messages.h"
#include "core/qt/Settings.h"
#include "space/qt/SpaceStatus.h"
#include "space/qt/StorageSurveyModel.h"
#include "core/ClockSchedule.h"
#include "core/qt/RepeatingClock.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"

using namespace bv;
using bv::test::spinUntil;
using namespace std::chrono_literals;

namespace {

std::string dataDir() { return XdgPaths::appDataDir(); }

void resetState() {
    test::removeTree(dataDir());
    test::removeTree(XdgPaths::appConfigDir());
}

VolumeSnapshot fakeVolume(TimePoint now, std::int64_t freeBytes) { return {now, "Test Disk", 500'000'000'000, freeBytes}; }

} // namespace

class AppModelTest : public ::testing::Test {
protected:
    void SetUp() override { resetState(); }
};

TEST_F(AppModelTest, WithoutLiveDataNothingIsReadWrittenOrStarted) {
    AppModel model(false);
    int reads = 0;
    model.setVolumeReader([&](const std::string&, TimePoint now) { ++reads; return fakeVolume(now, 1); });
    model.start();
    model.refresh();
    model.noteSessionEnd();
    model.room<SmartCleanModel>()->scan();
    QCoreApplication::processEvents();
    EXPECT_FALSE(model.didStart());
    EXPECT_FALSE(model.isRefreshing());
    EXPECT_FALSE(model.clock()->isRunning());
    EXPECT_EQ(reads, 0);
    EXPECT_FALSE(model.context().store.directory());
    EXPECT_FALSE(test::exists(dataDir()));
}

TEST_F(AppModelTest, ConstructionMakesAnInstallationIDAndStartRunsOnce) {
    AppModel model(true);
    EXPECT_FALSE(model.settings()->value().installationID.empty());
    auto saved = model.context().store.load(BrimvaleSettings::fileName(), BrimvaleSettings::fromJson);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->installationID, model.settings()->value().installationID);

    int reads = 0;
    model.setVolumeReader([&](const std::string&, TimePoint now) { ++reads; return fakeVolume(now, 7); });
    QSignalSpy started(&model, &AppModel::didStartChanged);
    model.start();
    model.start();
    EXPECT_EQ(started.count(), 1);
    EXPECT_TRUE(model.clock()->isRunning());
    ASSERT_TRUE(spinUntil([&] { return !model.isRefreshing(); }));
    EXPECT_EQ(reads, 1);
}

TEST_F(AppModelTest, ARefreshWhileOneRunsIsDropped) {
    AppModel model(true);
    std::binary_semaphore gate(0);
    std::atomic<int> reads = 0;
    model.setVolumeReader([&](const std::string&, TimePoint now) {
        ++reads;
        gate.acquire();
        return fakeVolume(now, 42);
    });
    model.refresh();
    EXPECT_TRUE(model.isRefreshing());
    EXPECT_NE(model.statusLine(), "Scanning…") << "the minute's refresh is not a scan";
    model.refresh();
    model.refresh();
    gate.release();
    ASSERT_TRUE(spinUntil([&] { return !model.isRefreshing(); }));
    EXPECT_EQ(reads.load(), 1);
    EXPECT_EQ(model.room<SpaceStatus>()->latest().freeBytes, 42);
    EXPECT_EQ(model.room<SpaceStatus>()->history().observations.size(), 1u);

}

TEST_F(AppModelTest, AZeroTotalReadingOnlyMovesTheRefreshTime) {
    AppModel model(true);
    const TimePoint t1 = *parseIsoDate("2026-11-22T08:00:00Z");
    model.setNow([&] { return t1; });
    model.applySnapshot(fakeVolume(t1, 100));
    SpaceStatus& space = *model.room<SpaceStatus>();
    const VolumeSnapshot good = space.latest();
    const SpaceHistory history = space.history();

    const TimePoint t2 = t1 + 10min;
    model.setNow([&] { return t2; });
    QSignalSpy latestSpy(&space, &SpaceStatus::latestChanged);
    model.applySnapshot({t2, "Test Disk", 0, 0});
    EXPECT_EQ(latestSpy.count(), 0);
    EXPECT_EQ(space.latest(), good);
    EXPECT_EQ(space.history(), history);
    EXPECT_EQ(space.lastRefresh(), t2);

    // Through a real refresh the flag still clears once the lists are in.
    model.setVolumeReader([](const std::string&, TimePoint now) { return VolumeSnapshot{now, "x", 0, 0}; });
    model.refresh();
    ASSERT_TRUE(spinUntil([&] { return !model.isRefreshing(); }));
    EXPECT_EQ(space.latest(), good);
}

TEST_F(AppModelTest, OldHistoryIsReplacedAndSessionEndBecomesTheNextBaseline) {
    makeDirectories(dataDir());
    SpaceHistory old;
    old.metricVersion = 1;
    old.lastQuit = VolumeSnapshot{*parseIsoDate("2026-11-20T10:00:00Z"), "Disk", 10, 5};
    ASSERT_TRUE(writeFileAtomically(dataDir() + "/space-history.json", encodeJson(old.toJson())));
    {
        AppModel model(true);
        EXPECT_FALSE(model.room<SpaceStatus>()->sessionBaseline());
        EXPECT_TRUE(model.room<SpaceStatus>()->history().observations.empty());
        auto onDisk = model.context().store.load(SpaceHistory::fileName(), SpaceHistory::fromJson);
        ASSERT_TRUE(onDisk);
        EXPECT_EQ(onDisk->metricVersion, 2) << "the fresh default is saved at once";
        const TimePoint t = *parseIsoDate("2026-11-22T08:00:00Z");
        model.applySnapshot(fakeVolume(t, 1000));
        EXPECT_EQ(model.room<SpaceStatus>()->lastOpenDelta(), SpaceDelta::unavailable());
        model.noteSessionEnd();
    }
    AppModel next(true);
    ASSERT_TRUE(next.room<SpaceStatus>()->sessionBaseline());
    EXPECT_EQ(next.room<SpaceStatus>()->sessionBaseline()->freeBytes, 1000);
    const TimePoint later = *parseIsoDate("2026-11-22T09:00:00Z");
    next.applySnapshot(fakeVolume(later, 400));
    EXPECT_EQ(next.room<SpaceStatus>()->lastOpenDelta().bytes, -600);
    EXPECT_EQ(next.room<SpaceStatus>()->lastOpenDelta().basis, SpaceBasis::sinceLastOpen);
}

TEST_F(AppModelTest, CorruptSettingsFallBackToDefaults) {
    makeDirectories(dataDir());
    ASSERT_TRUE(writeFileAtomically(dataDir() + "/settings.json", R"({"nodeModulesPermanent": true})"));
    AppModel model(true);
    EXPECT_FALSE(model.settings()->value().nodeModulesPermanent);
    EXPECT_FALSE(model.settings()->value().didCompleteFirstRun);
}

TEST_F(AppModelTest, SettersClampSaveAndNotifyOnlyOnChange) {
    AppModel model(true);
    QSignalSpy changed(model.settings(), &Settings::changed);
    // The limits themselves are the settings' clamp functions; here: used, saved, told once.
    model.settings()->setLowSpaceGigabytes(5000);
    model.settings()->setLowSpacePercent(100);
    model.settings()->setLowSpacePercent(99); // already clamped to 99: no change
    EXPECT_EQ(changed.count(), 2);
    auto saved = model.context().store.load(BrimvaleSettings::fileName(), BrimvaleSettings::fromJson);
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->lowSpaceGigabytes, 2000);
    EXPECT_EQ(saved->lowSpacePercent, 99);
}

TEST_F(AppModelTest, FocusRequestsMoveTheTokenEveryTime) {
    AppModel model(false);
    QSignalSpy spy(&model, &AppModel::focusRequested);
    model.focusOnSection("autoArrange");
    model.focusOnSection("autoArrange");
    model.focusOnSection("nonsense");
    EXPECT_EQ(model.focusSectionToken(), 2);
    EXPECT_EQ(model.focusSection(), "autoArrange");
    model.requestCleanupSheet();
    EXPECT_TRUE(model.wantsCleanupSheet());
    EXPECT_EQ(model.focusSection(), "overview");
    EXPECT_EQ(model.focusSectionToken(), 3);
    EXPECT_EQ(spy.count(), 3);
}

TEST(RepeatingClock, ALongSleepGivesOneTickAndADeadlineAfterWaking) {
    using S = std::chrono::seconds;
    const S interval = 60s;
    S deadline = 60s;                // armed at boot-time 0
    const S wake = 3h + 12s;         // the machine slept through 180 intervals
    deadline = nextClockDeadline(deadline, wake, interval);
    EXPECT_EQ(deadline, wake + 60s);
    // An on-time tick just moves on by one interval.
    EXPECT_EQ(nextClockDeadline(S(120), S(120), interval), S(180));

    // The real clock on CLOCK_BOOTTIME ticks and never waits for a slow action.
    RepeatingClock clock;
    int ticks = 0;
    clock.start(30ms, [&] { ++ticks; });
    EXPECT_TRUE(spinUntil([&] { return ticks >= 3; }));
    clock.stop();
    const int after = ticks;
    bv::test::spin(100);
    EXPECT_LE(ticks, after + 1) << "a stopped clock stays stopped";
}
