#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

#include "NotificationTestServer.h"
#include "PrivateSessionBus.h"
#include "core/AppModel.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace std::chrono_literals;

namespace {

constexpr std::int64_t GB = 1'000'000'000;

// A started model with live data in the temporary home, reading a 500 GB "Test Disk" whose
// free space the test sets, at a clock the test moves. Its notifications go to a test server
// on a private session bus, so each alert really crosses D-Bus.
class LowSpaceModelTest : public ::testing::Test {
protected:
    void SetUp() override {
        test::removeTree(XdgPaths::appDataDir());
        test::removeTree(XdgPaths::appConfigDir());
        if (!bus.isUp()) GTEST_SKIP() << "dbus-run-session could not start a session bus";
        server = std::make_unique<test::NotificationTestServer>(bus.connect("server"));
        ASSERT_TRUE(server->start());
        model = std::make_unique<AppModel>(true);
        // Any refresh the model starts by itself reads the same disk the test last applied.
        model->setVolumeReader([this](const std::string&, TimePoint) { return disk; });
        model->setNow([this] { return now; });
        model->start();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !model->isRefreshing(); }, 5000));
        model->useNotificationBus(bus.connect("model"));
    }

    void sample(std::int64_t freeBytes) {
        now += 10min;
        disk = {now, "Test Disk", 500 * GB, freeBytes};
        model->applySnapshot(disk);
    }

    [[nodiscard]] BrimvaleSettings saved() const {
        return model->store().load(BrimvaleSettings::fileName(), BrimvaleSettings::fromJson).value_or(BrimvaleSettings{});
    }

    [[nodiscard]] QStringList bodies() const {
        QStringList out;
        for (const auto& r : server->received()) out << r.body;
        return out;
    }

    test::PrivateSessionBus bus;
    std::unique_ptr<test::NotificationTestServer> server;
    std::unique_ptr<AppModel> model;
    TimePoint now = *parseIsoDate("2026-11-22T08:00:00Z");
    VolumeSnapshot disk{now, "Test Disk", 500 * GB, 100 * GB};
};

} // namespace

// The default 40 GB limit walked down and up again; the saved latch and the banner follow.
TEST_F(LowSpaceModelTest, EachCrossingPostsOneAlertAndTheLatchIsSaved) {
    struct Step {
        std::int64_t freeBytes;
        const char* severity;
        bool showsBanner, armed, alerts;
    };
    const Step steps[] = {
        {60 * GB, "none", false, true, false},
        {39 * GB, "warning", true, false, true},
        {38 * GB, "warning", true, false, false},
        {44 * GB, "none", false, false, false}, // above the limit, inside the margin
        {39 * GB, "warning", true, false, false},
        {45 * GB, "none", false, true, false},
        {15 * GB, "critical", true, false, true},
    };
    std::optional<TimePoint> lastAlert;
    for (const auto& step : steps) {
        sample(step.freeBytes);
        if (step.alerts) lastAlert = now;
        const std::string at = std::to_string(step.freeBytes / GB) + " GB free";
        EXPECT_EQ(model->lowSpaceSeverityText(), step.severity) << at;
        EXPECT_EQ(model->lowSpaceIsLow(), std::string(step.severity) != "none") << at;
        EXPECT_EQ(model->lowSpaceShowsBanner(), step.showsBanner) << at;
        const BrimvaleSettings onDisk = saved();
        EXPECT_EQ(onDisk.lowSpaceArmed, step.armed) << at;
        EXPECT_EQ(onDisk.lowSpaceLastAlert, lastAlert) << at;
    }
    EXPECT_EQ(model->lowSpaceBannerText(), "Low on space: 15 GB left");
    ASSERT_TRUE(QTest::qWaitFor([&] { return server->received().size() >= 2; }, 5000));
    QTest::qWait(50);
    EXPECT_EQ(bodies(), (QStringList{"Only 39 GB left on Test Disk", "Only 15 GB left on Test Disk"}));
    EXPECT_EQ(server->received().front().summary, "Brimvale");
}

TEST_F(LowSpaceModelTest, HiddenWarningsReturnAtCriticalAndFoldingEndsWithRecovery) {
    sample(30 * GB);
    ASSERT_TRUE(model->lowSpaceShowsBanner());
    QSignalSpy changed(model.get(), &AppModel::lowSpaceChanged);
    model->hideLowSpaceNotice();
    model->foldLowSpaceBanner();
    EXPECT_EQ(changed.count(), 2);
    EXPECT_TRUE(model->lowSpaceNoticeHidden());
    EXPECT_TRUE(model->lowSpaceBannerFolded());
    EXPECT_FALSE(model->lowSpaceShowsBanner());

    struct Step {
        std::int64_t freeBytes;
        bool hidden, folded, showsBanner;
    };
    const Step steps[] = {
        {25 * GB, true, true, false},  // still a warning: stays hidden
        {19 * GB, false, true, true},  // critical: back, still folded
        {30 * GB, false, true, true},  // a warning again, no longer hidden
        {41 * GB, false, false, false}, // recovered
    };
    for (const auto& step : steps) {
        sample(step.freeBytes);
        const std::string at = std::to_string(step.freeBytes / GB) + " GB free";
        EXPECT_EQ(model->lowSpaceNoticeHidden(), step.hidden) << at;
        EXPECT_EQ(model->lowSpaceBannerFolded(), step.folded) << at;
        EXPECT_EQ(model->lowSpaceShowsBanner(), step.showsBanner) << at;
    }

    // Hiding a critical banner does not hide it.
    sample(5 * GB);
    model->hideLowSpaceNotice();
    EXPECT_TRUE(model->lowSpaceShowsBanner());
}

TEST_F(LowSpaceModelTest, ChangingTheLimitReEvaluatesAtOnce) {
    sample(45 * GB);
    EXPECT_FALSE(model->lowSpaceIsLow());
    model->setLowSpaceGigabytes(50);
    EXPECT_EQ(model->lowSpaceSeverityText(), "warning");
    EXPECT_FALSE(saved().lowSpaceArmed);
    model->setAlertsEnabled(false);
    EXPECT_EQ(model->lowSpaceSeverityText(), "none");
    EXPECT_TRUE(saved().lowSpaceArmed) << "with no limit the latch opens";
    // A failed reading changes nothing.
    model->applySnapshot({now, "Test Disk", 0, 0});
    model->setAlertsEnabled(true);
    EXPECT_TRUE(model->lowSpaceIsLow());
    ASSERT_TRUE(QTest::qWaitFor([&] { return server->received().size() >= 2; }, 5000));
    QTest::qWait(50);
    EXPECT_EQ(bodies(), (QStringList{"Only 45 GB left on Test Disk", "Only 45 GB left on Test Disk"}));
}

TEST(LowSpaceModel, NothingIsJudgedBeforeTheModelStarts) {
    test::removeTree(XdgPaths::appDataDir());
    test::removeTree(XdgPaths::appConfigDir());
    AppModel model(true);
    model.applySnapshot({Clock::now(), "Test Disk", 500 * GB, 1 * GB});
    EXPECT_EQ(model.lowSpaceSeverityText(), "none");
    EXPECT_FALSE(model.lowSpaceShowsBanner());
    EXPECT_TRUE(model.settings().lowSpaceArmed);
}
