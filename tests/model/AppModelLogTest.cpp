#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

#include "core/ActionLog.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/Messages.h"
#include "core/qt/Settings.h"
#include "core/qt/WatchRequests.h"
#include "model/AppModel.h"
#include "space/SpaceHistory.h"
#include "core/qt/NotificationRouter.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

using namespace bv;

namespace {

const CalendarContext kCalendar("en_US", "Europe/Berlin");
const TimePoint kNow = kCalendar.date(2026, 11, 17, 12); // a Tuesday

ActionLogEntry entry(const std::string& title, std::int64_t bytes, TimePoint date, std::string source = "/home/u/x") {
    return {Uuid::generate(), date, title, "Moved to the Trash", "trash", bytes, std::move(source), std::nullopt, std::nullopt, std::nullopt, std::nullopt};
}

class AppModelLogTest : public ::testing::Test {
protected:
    void SetUp() override {
        test::removeTree(XdgPaths::appDataDir());
        test::removeTree(XdgPaths::configHome() + "/autostart");
    }
    void TearDown() override { test::removeTree(XdgPaths::configHome() + "/autostart"); }

    static void pin(AppModel& model) {
        model.setNow([] { return kNow; });
        model.setCalendar(kCalendar);
        model.setVolumeReader([](const std::string&, TimePoint now) { return VolumeSnapshot{now, "Disk", 500'000'000'000, 80'000'000'000}; });
    }
};

} // namespace

TEST_F(AppModelLogTest, AddingSavesBothFilesAndTheScreenFiguresFollow) {
    AppModel model(true);
    pin(model);
    QAbstractItemModelTester tester(model.activityLog()->entries(),
                                    QAbstractItemModelTester::FailureReportingMode::Fatal);
    ActivityLog* log = model.activityLog();
    QSignalSpy changed(log, &ActivityLog::logEntriesChanged);

    log->addLogEntries({entry("Cleared npm cache", 900'000'000, kCalendar.date(2026, 11, 16, 9)),
                         entry("Moved report.pdf", 0, kCalendar.date(2026, 11, 16, 9), "/home/u/Downloads/report.pdf")});
    log->addLogEntries({entry("Removed old build output", 5'100'000'000, kCalendar.date(2026, 11, 17, 10))});
    EXPECT_EQ(changed.count(), 2);

    // Both files hold what the model holds.
    const AppPersistence& store = model.context().store;
    const auto saved = loadLog(store);
    EXPECT_EQ(saved, log->logEntries());
    EXPECT_EQ(saved.front().title, "Removed old build output");
    const auto settings = store.load(BrimvaleSettings::fileName(), BrimvaleSettings::fromJson);
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->lifetimeBytesFreed, 6'000'000'000);
    EXPECT_EQ(settings->lifetimeCleanups, 2);
    EXPECT_EQ(settings->lastMilestoneBytes, 5'000'000'000);

    EXPECT_EQ(log->weekBadge(), "6 GB");
    EXPECT_EQ(log->weekCaption(), "freed since Monday");
    EXPECT_EQ(log->lifetimeText(), "6 GB freed across 2 cleanups");
    auto* rows = log->entries();
    ASSERT_EQ(rows->rowCount(), 3);
    const auto role = [&](int row, HistoryListModel::Role r) { return rows->data(rows->index(row), int(r)).toString(); };
    EXPECT_EQ(role(0, HistoryListModel::Role::dayTitle), "Today");
    EXPECT_EQ(role(0, HistoryListModel::Role::sizeText), "5.1 GB");
    EXPECT_EQ(role(0, HistoryListModel::Role::iconName), "user-trash-symbolic");
    EXPECT_EQ(role(1, HistoryListModel::Role::dayTitle), "Yesterday");
    EXPECT_EQ(role(2, HistoryListModel::Role::sizeText), "") << "a move shows no size";
    EXPECT_EQ(log->dayTotals().value("Yesterday").toString(), "900 MB");

    log->setQuery("  downloads ");
    ASSERT_EQ(rows->rowCount(), 1);
    EXPECT_EQ(role(0, HistoryListModel::Role::title), "Moved report.pdf");
    EXPECT_EQ(log->dayTotals().value("Yesterday").toString(), "") << "a day's total counts only what the search kept";
    EXPECT_FALSE(log->dayTotals().contains("Today"));

    log->setQuery("");
    // A refresh that changes nothing leaves the list alone: no reset, no row change.
    QSignalSpy reset(rows, &QAbstractItemModel::modelReset);
    QSignalSpy dataChanged(rows, &QAbstractItemModel::dataChanged);
    QSignalSpy inserted(rows, &QAbstractItemModel::rowsInserted);
    for (int i = 0; i < 3; ++i) log->recompute();
    model.applySnapshot(VolumeSnapshot{kNow, "Disk", 500'000'000'000, 80'000'000'000});
    EXPECT_EQ(reset.count() + dataChanged.count() + inserted.count(), 0);
    // A new entry is one inserted row, not a new list.
    log->addLogEntries({entry("one more", 1, kNow)});
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(reset.count(), 0);

    // Clearing empties History and its file, and keeps the counters.
    log->clearLog();
    EXPECT_TRUE(log->isEmpty());
    EXPECT_EQ(rows->rowCount(), 0);
    EXPECT_TRUE(loadLog(store).empty());
    EXPECT_TRUE(test::exists(store.pathOf(kLogFileName)));
    EXPECT_EQ(model.settings()->value().lifetimeBytesFreed, 6'000'000'001);

    // A new model reads the same log back.
    log->addLogEntries({entry("again", 1, kNow)});
    AppModel reopened(true);
    EXPECT_EQ(reopened.activityLog()->logEntries(), log->logEntries());
}

TEST_F(AppModelLogTest, StartFillsTheCountersFromAnOlderLogOnce) {
    {
        const AppPersistence store = AppPersistence::live();
        saveLog(store, {entry("a", 2'000'000'000, kCalendar.date(2026, 11, 1, 9, 30, 10)),
                        entry("b", 1'000'000'000, kCalendar.date(2026, 11, 1, 9, 30, 40)),
                        entry("c", 3'000'000'000, kCalendar.date(2026, 11, 5, 18))});
    }
    AppModel model(true);
    pin(model);
    model.start();
    EXPECT_EQ(model.settings()->value().lifetimeBytesFreed, 6'000'000'000);
    EXPECT_EQ(model.settings()->value().lifetimeCleanups, 2);
    EXPECT_EQ(model.settings()->value().lastMilestoneBytes, 5'000'000'000);
    // The backfill is saved, so the next start leaves it alone.
    const auto settings = model.context().store.load(BrimvaleSettings::fileName(), BrimvaleSettings::fromJson);
    ASSERT_TRUE(settings);
    EXPECT_EQ(settings->lifetimeCleanups, 2);
}

TEST_F(AppModelLogTest, NotificationClicksAndLinksReachTheModel) {
    AppModel model(true);
    pin(model);
    model.start();
    QSignalSpy focus(&model, &AppModel::focusRequested);
    QSignalSpy pass(&model, &AppModel::linkPassStarted);

    // Only the review actions and a low-space click open the preview.
    EXPECT_FALSE(NotificationRouter::shared().route("default", ""));
    EXPECT_FALSE(model.wantsCleanupSheet());
    EXPECT_TRUE(NotificationRouter::shared().route("default", "low-space"));
    EXPECT_TRUE(model.wantsCleanupSheet());
    EXPECT_EQ(model.focusSection(), "overview");
    EXPECT_EQ(focus.count(), 1);
    model.clearWantsCleanupSheet();

    // A scan link without a source: a pass, and no banner.
    EXPECT_TRUE(model.handleLink(QUrl("brimvale://scan?need=12")));
    ASSERT_TRUE(QTest::qWaitFor([&] { return pass.count() == 1; }, 2000));
    EXPECT_TRUE(model.messages()->bannerText().isEmpty());

    // A watch link only remembers the folder; which links are refused is the link reader's table.
    EXPECT_TRUE(model.handleLink(QUrl("brimvale://watch?path=/srv/My%20App")));
    EXPECT_EQ(model.watchRequests()->pendingPath(), "/srv/My App");
    EXPECT_TRUE(model.watchRequests()->fromLink());

    // The file manager's folder action takes the first folder, and refuses files.
    const std::string dir = test::TestEnvironment::freshFolder("watch me");
    test::writeFile(dir + "/file.txt", "x");
    EXPECT_EQ(model.watchFolderService({QString::fromStdString(dir + "/file.txt")}), "Choose a folder to watch.");
    EXPECT_EQ(model.watchFolderService({}), "Choose a folder to watch.");
    EXPECT_FALSE(model.watchFolderService({QString::fromStdString(dir + "/file.txt"), QString::fromStdString(dir)}));
    EXPECT_EQ(model.watchRequests()->pendingPath().toStdString(), dir);
    EXPECT_FALSE(model.watchRequests()->fromLink());
}

TEST_F(AppModelLogTest, LaunchAtLoginFallsBackToTheSystemsAnswerOnFailure) {
    AppModel model(true);
    Settings& settings = *model.settings();
    settings.setLaunchAtLogin(true);
    EXPECT_TRUE(settings.value().launchAtLogin);
    EXPECT_EQ(settings.loginItemStatus(), "enabled");
    EXPECT_TRUE(model.messages()->errorText().isEmpty());
    settings.setLaunchAtLogin(false);
    EXPECT_EQ(settings.loginItemStatus(), "off");

    // A file where the autostart folder belongs: registering fails even for root.
    test::removeTree(XdgPaths::configHome() + "/autostart");
    test::writeFile(XdgPaths::configHome() + "/autostart", "in the way");
    settings.setLaunchAtLogin(true);
    EXPECT_FALSE(settings.value().launchAtLogin) << "the field takes what the system reports";
    const QString error = model.messages()->errorText();
    EXPECT_TRUE(error.startsWith("Launch at login couldn’t be changed. The autostart folder ")) << error.toStdString();
    const auto saved = model.context().store.load(BrimvaleSettings::fileName(), BrimvaleSettings::fromJson);
    ASSERT_TRUE(saved);
    EXPECT_FALSE(saved->launchAtLogin);
}
