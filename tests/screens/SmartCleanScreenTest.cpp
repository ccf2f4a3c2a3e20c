// Smart Clean and the Overview with the caches of a working programmer's home: the scan's
// cards, the recommended rows ticked, the preview, and the Overview after the clean with its
// measured line and the week's bar. One PNG of each lands in BV_SCREENSHOT_DIR.
#include <gtest/gtest.h>

#include <QQmlApplicationEngine>

#include "clean/qt/CleanRun.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/qt/Messages.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "support/DevCacheHome.h"
#include "support/EventLoopWait.h"
#include "SaveScreenshot.h"

using namespace bv;
using bv::test::spinUntil;
using bv::test::spin;

TEST(Screens, SmartCleanThenTheOverviewAfterTheClean) {
    (void)bv::test::writeDevCacheHome(XdgPaths::home());
    AppModel model(true);
    // A fixed disk reading that drops by what the clean moved, so the run's measurement ends.
    std::int64_t free = 41'300'000'000;
    model.setVolumeReader([&free](const std::string&, TimePoint now) { return VolumeSnapshot{now, "Home", 494'380'000'000, free}; });
    model.cleanRun()->setTiming({30, 10, 10, 400, 40});
    Cleaner::Environment quiet;
    quiet.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    model.cleanRun()->setCleanerEnvironment(quiet);
    model.start();
    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, model);
    ASSERT_NE(window, nullptr) << "Main.qml failed to load";
    SmartCleanModel& smart = *model.smartClean();
    ASSERT_TRUE(spinUntil([&] { return smart.hasScanned() && !model.smartClean()->scanning() && !model.isRefreshing(); }));

    model.focusOnSection("overview");
    spin(200);
    test::saveScreenshot(window, "overview-before-clean.png");

    model.focusOnSection("devMode");
    smart.selectRecommended();
    spin(200);
    QAbstractItemModel& cards = *smart.cards();
    ASSERT_GT(cards.rowCount(), 0);
    // The build tool card keeps its newest copy and says so.
    const int keptRole = cards.roleNames().key("keptLine");
    bool keptLine = false;
    for (int i = 0; i < cards.rowCount(); ++i)
        keptLine |= cards.data(cards.index(i, 0), keptRole).toString() == "The newest copy stays.";
    EXPECT_TRUE(keptLine);
    test::saveScreenshot(window, "smart-clean-selected.png");

    smart.preview();
    ASSERT_TRUE(spinUntil([&] { return model.cleanRun()->isSheetPresented(); }));
    spin(200);
    test::saveScreenshot(window, "smart-clean-preview.png");

    model.cleanRun()->confirm();
    ASSERT_TRUE(spinUntil([&] { return !model.cleanRun()->isSheetPresented(); }));
    ASSERT_TRUE(spinUntil([&] { return !model.smartClean()->scanning(); }));
    model.messages()->dismissCleanupNotice();
    model.focusOnSection("overview");
    spin(300);
    EXPECT_FALSE(model.cleanRun()->afterCleanLine().isEmpty());
    test::saveScreenshot(window, "overview-after-clean.png");
}
