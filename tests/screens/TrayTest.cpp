// The tray item, its popover and the window's life. A panel cannot run here, so on a private
// session bus the test itself owns org.kde.StatusNotifierWatcher and plays the panel: it takes
// the item's registration, reads its properties and clicks it over D-Bus.
#include <gtest/gtest.h>

#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QQuickWindow>
#include <QTimer>

#include <filesystem>

#include "clean/qt/CleanRun.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/Settings.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "screens/DesktopShell.h"
#include "screens/StatusNotifierItem.h"
#include "screens/TrayStatus.h"
#include "space/SpaceHistory.h"
#include "space/qt/LowSpaceModel.h"
#include "space/qt/SpaceStatus.h"
#include "space/qt/StorageSurveyModel.h"
#include "support/DevCacheHome.h"
#include "support/EventLoopWait.h"
#include "support/TestEnvironment.h"
#include "../model/PrivateSessionBus.h"
#include "SaveScreenshot.h"

using namespace bv;
using bv::test::spinUntil;

namespace {

const CalendarContext kCalendar("en_US", "Europe/Berlin");
const TimePoint kNow = kCalendar.date(2026, 11, 17, 12);

ActionLogEntry entry(const std::string& title, std::int64_t bytes, TimePoint date) {
    return {Uuid::generate(), date, title, "Moved to the Trash", "trash", bytes, "/home/u/x",
            std::nullopt, std::nullopt, std::nullopt, std::nullopt};
}

// The panel's watcher: records registrations and says whether a host (a panel) is drawing.
struct TestWatcher : QDBusVirtualObject {
    QStringList registered;
    bool hostRegistered = true;
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == QLatin1String("RegisterStatusNotifierItem")) {
            registered << message.arguments().value(0).toString();
            connection.send(message.createReply());
            return true;
        }
        if (message.member() == QLatin1String("Get")) {
            connection.send(message.createReply(QVariant::fromValue(QDBusVariant(hostRegistered))));
            return true;
        }
        return false;
    }
};

QVariant itemProperty(QDBusConnection& panel, const QString& service, const QString& name) {
    QDBusMessage get = QDBusMessage::createMethodCall(service, "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get");
    get << QStringLiteral("org.kde.StatusNotifierItem") << name;
    QDBusPendingCall pending = panel.asyncCall(get);
    spinUntil([&] { return pending.isFinished(); }, 5000);
    QDBusPendingReply<QDBusVariant> reply = pending;
    return reply.isError() ? QVariant() : reply.value().variant();
}

std::vector<std::filesystem::path> filesUnder(const std::string& root) {
    std::vector<std::filesystem::path> out;
    for (const auto& e : std::filesystem::recursive_directory_iterator(root))
        if (e.is_regular_file()) out.push_back(e.path());
    return out;
}

// Runs the application's own loop (quitting needs it) until the program quits (true) or
// `ms` pass (false).
bool quitsWithin(int ms) {
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, [] { QCoreApplication::exit(1); });
    timer.start(ms);
    return QCoreApplication::exec() == 0;
}

} // namespace

TEST(Tray, PopoverLinesFollowTheRooms) {
    test::removeTree(XdgPaths::appDataDir());
    AppModel model(true);
    model.setNow([] { return kNow; });
    model.setCalendar(kCalendar);
    model.room<LowSpaceModel>()->enable();
    TrayStatus status(model.context(), *model.room<SpaceStatus>(), *model.room<LowSpaceModel>(),
                      *model.room<SmartCleanModel>(), *model.room<StorageSurveyModel>(), *model.folderRules());
    ActivityLog& log = *model.activityLog();

    struct Row {
        const char* state;
        std::function<void()> step;
        const char *label, *freeLine, *totalLine, *lowLine, *freedToday, *note;
    };
    const Row rows[] = {
        {"before any reading", [] {}, "Disk", "Looking at your disk", "", "", "0 GB", "Nothing recent yet."},
        {"a bad first reading", [&] { model.applySnapshot(VolumeSnapshot{kNow, "Disk", 0, 0}); },
         "Disk", "Looking at your disk", "", "", "0 GB", "Nothing recent yet."},
        {"critically low", [&] { model.applySnapshot(VolumeSnapshot{kNow, "Disk", 500'000'000'000, 5'000'000'000}); },
         "5 GB free", "5 GB free", "of 500 GB", "Low on space: 5 GB left", "0 GB", "Nothing recent yet."},
        {"only an older clean", [&] { log.addLogEntries({entry("Cleared npm cache", 900'000'000, kNow - std::chrono::hours(30))}); },
         "5 GB free", "5 GB free", "of 500 GB", "Low on space: 5 GB left", "0 GB", "No cleanup yet today."},
        {"a clean today, space back", [&] {
             log.addLogEntries({entry("Removed old build output", 60'000'000'000, kNow - std::chrono::hours(1))});
             model.applySnapshot(VolumeSnapshot{kNow, "Disk", 500'000'000'000, 65'000'000'000});
         }, "65 GB free", "65 GB free", "of 500 GB", "", "60 GB", ""},
    };
    for (const Row& row : rows) {
        row.step();
        SCOPED_TRACE(row.state);
        EXPECT_EQ(status.label(), row.label);
        EXPECT_EQ(status.shownLabel(), row.label);
        EXPECT_EQ(status.freeLine(), row.freeLine);
        EXPECT_EQ(status.totalLine(), row.totalLine);
        EXPECT_EQ(status.lowSpaceLine(), row.lowLine);
        EXPECT_EQ(status.freedTodayText(), row.freedToday);
        EXPECT_EQ(status.recentNote(), row.note);
    }
    EXPECT_EQ(status.recentRows().size(), 2);
    EXPECT_EQ(status.nextAutoCleanText(), "Automatic cleanup is off");
    model.settings()->setMenuBarShowsFreeSpace(false);
    EXPECT_EQ(status.shownLabel(), "") << "the text is drawn beside the icon only when the setting is on";
    EXPECT_EQ(status.label(), "65 GB free");
    model.room<SmartCleanModel>()->scan();
    EXPECT_EQ(status.candidatesText(), "Scanning…");
    ASSERT_TRUE(spinUntil([&] { return !model.room<SmartCleanModel>()->scanning(); }, 60000));
}

TEST(Tray, ItemRegistersWithThePanelAndCleanNowOnlyOpensThePreview) {
    test::PrivateSessionBus bus;
    ASSERT_TRUE(bus.isUp());
    QDBusConnection panel = bus.connect("panel");
    TestWatcher watcher;
    ASSERT_TRUE(panel.registerVirtualObject("/StatusNotifierWatcher", &watcher));
    ASSERT_TRUE(panel.registerService("org.kde.StatusNotifierWatcher"));

    test::removeTree(XdgPaths::appDataDir());
    (void)test::writeDevCacheHome(XdgPaths::home());
    const auto cacheFiles = filesUnder(XdgPaths::home());
    bool goodDisk = false; // the first reading fails
    AppModel model(true);
    model.setVolumeReader([&goodDisk](const std::string&, TimePoint now) {
        return goodDisk ? VolumeSnapshot{now, "Disk", 500'000'000'000, 123'000'000'000} : VolumeSnapshot{now, "Disk", 0, 0};
    });
    model.settings()->update([](BrimvaleSettings& s) { s.didCompleteFirstRun = true; });
    model.start();
    DesktopShell shell(model, bus.connect("item"));
    ASSERT_TRUE(shell.startTray());
    const QString service = shell.trayItem()->serviceName();
    ASSERT_TRUE(spinUntil([&] { return shell.keepsRunningInTray(); }, 5000));
    EXPECT_EQ(watcher.registered, QStringList{service});
    ASSERT_TRUE(spinUntil([&] { return !model.isRefreshing(); }, 5000));
    EXPECT_EQ(itemProperty(panel, service, "XAyatanaLabel").toString(), "Disk");
    EXPECT_EQ(itemProperty(panel, service, "Category").toString(), "ApplicationStatus");
    EXPECT_EQ(itemProperty(panel, service, "ItemIsMenu").toBool(), false);

    goodDisk = true;
    model.refresh();
    ASSERT_TRUE(spinUntil([&] { return itemProperty(panel, service, "XAyatanaLabel").toString() == "123 GB free"; }, 5000));
    EXPECT_EQ(itemProperty(panel, service, "Title").toString(), "123 GB free");
    model.settings()->setMenuBarShowsFreeSpace(false);
    EXPECT_EQ(itemProperty(panel, service, "XAyatanaLabel").toString(), "");
    EXPECT_EQ(itemProperty(panel, service, "Title").toString(), "123 GB free") << "the tooltip always says it";

    // A click on the item opens the popover near it.
    QDBusMessage click = QDBusMessage::createMethodCall(service, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate");
    click << 600 << 20;
    panel.asyncCall(click);
    ASSERT_TRUE(spinUntil([&] { return shell.popoverWindow() && shell.popoverWindow()->isVisible(); }, 5000));
    ASSERT_TRUE(spinUntil([&] { return !model.room<SmartCleanModel>()->scanning() && model.room<SmartCleanModel>()->hasScanned(); }, 60000));
    test::spin(300);
    test::saveScreenshot(shell.popoverWindow(), "tray-popover.png");

    // "Clean Now…": the window comes with the preview; nothing has moved.
    shell.status()->cleanNow();
    ASSERT_TRUE(spinUntil([&] { return model.room<CleanRun>()->isSheetPresented(); }, 10000));
    ASSERT_NE(shell.mainWindow(), nullptr);
    EXPECT_TRUE(shell.mainWindow()->isVisible());
    test::spin(300);
    for (const auto& file : cacheFiles) EXPECT_TRUE(std::filesystem::exists(file)) << file;
    model.room<CleanRun>()->dismissSheet();

    // Closing the window with a panel present keeps the program in the tray, without QML.
    bool released = false;
    QObject::connect(&shell, &DesktopShell::mainWindowReleased, [&] { released = true; });
    shell.mainWindow()->close();
    EXPECT_FALSE(quitsWithin(1000));
    EXPECT_TRUE(released);
    EXPECT_EQ(shell.mainWindow(), nullptr);
    // A notification's review action brings it back.
    model.requestCleanupSheet();
    ASSERT_NE(shell.mainWindow(), nullptr);
    EXPECT_TRUE(shell.mainWindow()->isVisible());
}

TEST(Tray, WithoutAPanelClosingTheWindowQuits) {
    test::PrivateSessionBus bus; // no watcher on it: a desktop without a tray
    ASSERT_TRUE(bus.isUp());
    test::removeTree(XdgPaths::appDataDir());
    AppModel model(true);
    model.settings()->update([](BrimvaleSettings& s) { s.didCompleteFirstRun = true; });
    DesktopShell shell(model, bus.connect("item"));
    EXPECT_TRUE(shell.startTray());
    ASSERT_NE(shell.showMainWindow(), nullptr);
    test::spin(300);
    EXPECT_FALSE(shell.keepsRunningInTray());
    shell.mainWindow()->close();
    EXPECT_TRUE(quitsWithin(3000));
}
