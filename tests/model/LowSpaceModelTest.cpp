#include <gtest/gtest.h>

#include <QTest>

#include "NotificationTestServer.h"
#include "PrivateSessionBus.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/Settings.h"
#include "model/AppModel.h"
#include "space/qt/LowSpaceModel.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace std::chrono_literals;

namespace {

constexpr std::int64_t GB = 1'000'000'000;

bool clearState() {
    test::removeTree(XdgPaths::appDataDir());
    test::removeTree(XdgPaths::appConfigDir());
    return true;
}

// A started model with live data in the temporary home and the default 40 GB limit, reading
// a 500 GB disk whose free space each step sets. Alerts go to a test server on a private bus.
class LowSpaceModelTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!bus.isUp()) GTEST_SKIP() << "dbus-run-session could not start a session bus";
        ASSERT_TRUE(server.start());
        model.setVolumeReader([this](const std::string&, TimePoint) { return disk; });
        model.setNow([this] { return now; });
        model.setNotificationConnectionName(bus.connect("model").name());
        model.start();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !model.isRefreshing(); }, 5000));
    }

    void sample(std::int64_t freeBytes) {
        now += 10min;
        disk = {now, "Test Disk", 500 * GB, freeBytes};
        model.applySnapshot(disk);
    }

    [[nodiscard]] BrimvaleSettings saved() {
        return *model.context().store.load(BrimvaleSettings::fileName(), BrimvaleSettings::fromJson);
    }

    test::PrivateSessionBus bus;
    test::NotificationTestServer server{bus.connect("server")};
    TimePoint now = *parseIsoDate("2026-11-22T08:00:00Z");
    VolumeSnapshot disk{now, "Test Disk", 500 * GB, 100 * GB};
    bool cleared = clearState(); // before the model reads its settings
    AppModel model{true};
};

} // namespace

TEST_F(LowSpaceModelTest, EachCrossingPostsOneAlertAndTheLatchIsSaved) {
    struct Step {
        std::int64_t freeBytes;
        const char* severity;
        bool armed, alerts;
    };
    const Step steps[] = {
        {39 * GB, "warning", false, true}, {38 * GB, "warning", false, false},
        {44 * GB, "none", false, false}, // inside the margin
        {39 * GB, "warning", false, false}, {45 * GB, "none", true, false},
        {15 * GB, "critical", false, true},
    };
    std::optional<TimePoint> lastAlert;
    std::size_t alerts = 0;
    for (const auto& step : steps) {
        sample(step.freeBytes);
        if (step.alerts) {
            lastAlert = now;
            ++alerts;
        }
        // Each alert is let through before the next sample, so an extra one cannot hide
        // behind the centre's replacing of a waiting alert.
        ASSERT_TRUE(QTest::qWaitFor([&] { return server.received().size() >= alerts; }, 5000));
        QTest::qWait(30);
        EXPECT_EQ(server.received().size(), alerts) << step.freeBytes;
        EXPECT_EQ(model.room<LowSpaceModel>()->severityText(), step.severity) << step.freeBytes;
        EXPECT_EQ(model.room<LowSpaceModel>()->showsBanner(), model.room<LowSpaceModel>()->isLow()) << step.freeBytes;
        EXPECT_EQ(saved().lowSpaceArmed, step.armed) << step.freeBytes;
        EXPECT_EQ(saved().lowSpaceLastAlert, lastAlert) << step.freeBytes;
    }
    EXPECT_EQ(model.room<LowSpaceModel>()->bannerText(), "Low on space: 15 GB left");
    model.settings()->setAlertsEnabled(false);
    EXPECT_TRUE(saved().lowSpaceArmed) << "with no limit the latch opens";

    ASSERT_EQ(server.received().size(), 2u);
    EXPECT_EQ(server.received()[0].body, "Only 39 GB left on Test Disk");
    EXPECT_EQ(server.received()[1].body, "Only 15 GB left on Test Disk");
}

TEST_F(LowSpaceModelTest, HiddenWarningsReturnAtCriticalAndFoldingEndsWithRecovery) {
    sample(30 * GB);
    model.room<LowSpaceModel>()->hideNotice();
    model.room<LowSpaceModel>()->foldBanner();
    EXPECT_FALSE(model.room<LowSpaceModel>()->showsBanner());
    struct Step {
        std::int64_t freeBytes;
        bool hidden, folded, showsBanner;
    };
    const Step steps[] = {
        {25 * GB, true, true, false},   // still a warning: stays hidden
        {19 * GB, false, true, true},   // critical comes back, still folded
        {30 * GB, false, true, true},   // a warning again, no longer hidden
        {41 * GB, false, false, false}, // recovered
    };
    for (const auto& step : steps) {
        sample(step.freeBytes);
        EXPECT_EQ(model.room<LowSpaceModel>()->noticeHidden(), step.hidden) << step.freeBytes;
        EXPECT_EQ(model.room<LowSpaceModel>()->bannerFolded(), step.folded) << step.freeBytes;
        EXPECT_EQ(model.room<LowSpaceModel>()->showsBanner(), step.showsBanner) << step.freeBytes;
    }
    sample(5 * GB);
    model.room<LowSpaceModel>()->hideNotice();
    EXPECT_TRUE(model.room<LowSpaceModel>()->showsBanner()) << "a critical banner cannot be hidden";
}

TEST(LowSpaceModel, NothingIsJudgedBeforeTheModelStarts) {
    clearState();
    AppModel model(true);
    model.applySnapshot({Clock::now(), "Test Disk", 500 * GB, 1 * GB});
    EXPECT_EQ(model.room<LowSpaceModel>()->severityText(), "none");
    EXPECT_TRUE(model.settings()->value().lowSpaceArmed);
}
