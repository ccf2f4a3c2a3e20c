#include <gtest/gtest.h>

#include <QQmlApplicationEngine>
#include <QSignalSpy>

#include <thread>

#include "model/AppModel.h"
#include "clean/qt/CleanRun.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "screens/HoldToConfirm.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"
#include "SaveScreenshot.h"

using namespace bv;
using bv::test::spinUntil;

namespace {

void holdFor(HoldToConfirm& h, double seconds) {
    for (double t = 0; t < seconds - 1e-9; t += HoldToConfirm::kStep) h.advance(HoldToConfirm::kStep);
}

} // namespace

TEST(HoldToConfirm, ReleasingEarlyDrainsAndNothingHappens) {
    HoldToConfirm h;
    QSignalSpy confirmed(&h, &HoldToConfirm::confirmed);
    h.press(5, 5);
    holdFor(h, 1.0);
    EXPECT_NEAR(h.progress(), 1.0 / 1.8, 0.01);
    h.release();
    // Drains 2.5 times as fast: from 1.0/1.8 in 0.4 s.
    holdFor(h, 0.384);
    EXPECT_GT(h.progress(), 0.0);
    holdFor(h, 0.048);
    EXPECT_DOUBLE_EQ(h.progress(), 0.0);
    EXPECT_FALSE(h.looping());
    EXPECT_EQ(confirmed.count(), 0);
    EXPECT_FALSE(h.committed());
}

TEST(HoldToConfirm, AFullHoldCommitsOnceAndAStallGainsLittle) {
    HoldToConfirm h;
    QSignalSpy confirmed(&h, &HoldToConfirm::confirmed);
    h.press(0, 0);
    h.advance(1.0); // the window froze for a second
    EXPECT_NEAR(h.progress(), 0.064 / 1.8, 1e-12);
    holdFor(h, 1.8 - 0.064 + 0.016);
    EXPECT_TRUE(h.committed());
    EXPECT_DOUBLE_EQ(h.progress(), 1.0);
    EXPECT_FALSE(h.holding());
    EXPECT_EQ(confirmed.count(), 1);
    h.press(0, 0);
    holdFor(h, 2.0);
    EXPECT_EQ(confirmed.count(), 1) << "a committed control does not fire again";
}

TEST(HoldToConfirm, DraggingAwayCancelsAndDisabledIgnoresPresses) {
    HoldToConfirm h;
    h.press(100, 100);
    h.move(107, 107); // 9.9 points: still holding
    EXPECT_TRUE(h.holding());
    h.move(111, 100); // 11 points: as if released
    EXPECT_FALSE(h.holding());
    HoldToConfirm off;
    off.setProperty("disabled", true);
    off.press(0, 0);
    EXPECT_FALSE(off.holding());
    EXPECT_FALSE(off.looping());
}

// The sheet before, during and after a run, saved as pictures beside the other screens.
TEST(CleanupSheet, RendersBeforeDuringAndAfterARun) {
    const std::string home = XdgPaths::home();
    CleanupPlan plan;
    auto add = [&](const std::string& id, const std::string& title, const std::string& group, std::int64_t bytes,
                   bool permanent, const std::string& note) {
        CleanupEntry e;
        e.id = id;
        e.title = title;
        e.path = home + "/.cache/sheet/" + id;
        e.bytes = bytes;
        e.note = note;
        e.group = group;
        e.symbolName = permanent ? "trash.slash" : "trash";
        e.allowRoot = home + "/.cache";
        if (permanent) {
            e.origin = CleanupOrigin::folderRule;
            e.parentPath = home + "/.cache/sheet";
            e.disposition = CleanupDisposition::permanent;
            e.tier = CleanupTier::userData;
        }
        test::makeDir(e.path);
        test::writeSizedFile(e.path + "/blob", 20000);
        plan.entries.push_back(e);
    };
    add("pip", "Python packages", "Packages", 1'240'000'000, false, "Comes back the next time you install packages.");
    add("yarn", "Yarn cache", "Packages", 386'000'000, false, "Comes back the next time you install packages.");
    add("gradle", "Gradle downloads", "Build tools", 2'900'000'000, false, "Downloaded again on the next build.");
    add("renders", "Old renders", "exports", 58'000'000, true, "Matched by your rule; removed for good.");
    plan.refusals = {"~/.ssh/keys-backup was left alone: it is in a protected folder."};

    AppModel model(true);
    model.start();
    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, model);
    ASSERT_NE(window, nullptr);
    Cleaner::Environment env;
    env.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    env.beforeAction = [](const CleanupEntry&) { std::this_thread::sleep_for(std::chrono::milliseconds(500)); };
    model.cleanRun()->setCleanerEnvironment(env);

    auto shoot = [&](const char* name) {
        QCoreApplication::processEvents();
        test::saveScreenshot(window, name);
    };

    model.cleanRun()->presentPlan(plan);
    test::spin(300);
    shoot("cleanup-sheet-before.png");

    model.cleanRun()->setEntryTicked("renders", false); // leaves only Trash moves: the plain button
    model.cleanRun()->confirm();
    ASSERT_TRUE(spinUntil([&] { return model.cleanRun()->step() == 1 && model.cleanRun()->fraction() >= 0.25; }));
    shoot("cleanup-sheet-during.png");

    ASSERT_TRUE(spinUntil([&] { return model.cleanRun()->phase() == CleanRun::Phase::success; }));
    test::spin(100);
    shoot("cleanup-sheet-after.png");
    ASSERT_TRUE(spinUntil([&] { return !model.cleanRun()->isSheetPresented(); }));
    EXPECT_TRUE(test::exists(home + "/.cache/sheet/renders")) << "the unticked entry stays";
}
