#include <gtest/gtest.h>

#include <dirent.h>

#include "clean/qt/CleanRun.h"
#include "core/ActionLog.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/CueBus.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/Messages.h"
#include "core/qt/Settings.h"
#include "model/AppModel.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"

using namespace bv;
using bv::test::spinUntil;

namespace {

Cleaner::Environment quietCleaner() {
    Cleaner::Environment env;
    env.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    return env;
}

// A model without live data and what its run told the user, recorded from the shared
// services the run was built on.
struct Harness {
    AppModel model{false};
    CleanRun& run = *model.room<CleanRun>();
    std::vector<std::string> errors;
    std::vector<CleanupNotice> notices;
    std::vector<std::string> sounds;
    std::int64_t free = 100'000'000;
    std::function<std::int64_t()> nextFree;

    explicit Harness(std::string logsFolder = {}) {
        model.context().folders.logs = std::move(logsFolder);
        model.setNow([] { return fromEpochSeconds(1795000000); });
        model.setVolumeReader([this](const std::string&, TimePoint) {
            if (nextFree) free = nextFree();
            return VolumeSnapshot{fromEpochSeconds(1795000000), "Disk", 500'000'000'000, free};
        });
        Messages& m = *model.messages();
        QObject::connect(&m, &Messages::errorMessageChanged, [this, &m] {
            if (m.errorMessage()) errors.push_back(*m.errorMessage());
            m.dismissError();
        });
        QObject::connect(&m, &Messages::cleanupNoticeChanged, [this, &m] {
            if (m.cleanupNotice()) notices.push_back(*m.cleanupNotice());
            m.dismissCleanupNotice();
        });
        QObject::connect(model.cues(), &CueBus::cueRequested,
                         [this](const QString& cue, double) { sounds.push_back(cue.toStdString()); });
        run.setTiming({30, 10, 10, 400, 40});
        run.setCleanerEnvironment(quietCleaner());
    }
    [[nodiscard]] const std::vector<ActionLogEntry>& logs() const { return model.activityLog()->logEntries(); }
    [[nodiscard]] bool explained() const { return model.settings()->value().didExplainTrashUndo; }
};

int planCounter = 0;

// n cache folders under ~/.cache; `missing` lists the ones not made on disk.
CleanupPlan cachePlan(int n, std::set<int> missing = {}, std::set<int> permanent = {}) {
    const std::string dir = XdgPaths::home() + "/.cache/run" + std::to_string(++planCounter);
    CleanupPlan plan;
    for (int i = 1; i <= n; ++i) {
        CleanupEntry e;
        e.id = "e" + std::to_string(i);
        e.title = "Cache " + std::to_string(i);
        e.path = dir + "/c" + std::to_string(i);
        e.bytes = 1'000'000;
        e.note = "Comes back.";
        e.group = "Other";
        e.symbolName = "trash";
        e.allowRoot = XdgPaths::home() + "/.cache";
        if (permanent.count(i)) {
            e.origin = CleanupOrigin::folderRule;
            e.parentPath = dir;
            e.disposition = CleanupDisposition::permanent;
            e.symbolName = "trash.slash";
        }
        if (!missing.count(i)) bv::test::makeDir(e.path);
        plan.entries.push_back(e);
    }
    return plan;
}

// Runs one plan through the model's own run to the end.
bool cleanThroughModel(AppModel& model, const CleanupPlan& plan) {
    model.setVolumeReader([](const std::string&, TimePoint now) { return VolumeSnapshot{now, "Disk", 500'000'000'000, 1}; });
    model.room<CleanRun>()->setTiming({30, 10, 10, 400, 40});
    model.room<CleanRun>()->setCleanerEnvironment(quietCleaner());
    model.room<CleanRun>()->presentPlan(plan);
    model.room<CleanRun>()->confirm();
    return spinUntil([&] { return !model.room<CleanRun>()->isSheetPresented(); });
}

} // namespace

TEST(CleanRun, StopBeforeTheFirstItemLeavesEverything) {
    Harness rec;
    CleanRun& run = rec.run;
    const CleanupPlan plan = cachePlan(5);
    run.presentPlan(plan);
    run.confirm();
    EXPECT_FALSE(run.presentPlan(cachePlan(1))) << "no new plan while a run is under way";
    run.requestStop();
    EXPECT_EQ(run.statusLine(), "Stopping after this item…");
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));
    EXPECT_TRUE(rec.logs().empty());
    EXPECT_EQ(run.phase(), CleanRun::Phase::idle);
    for (const auto& e : plan.entries) EXPECT_TRUE(bv::test::exists(e.path));
    ASSERT_EQ(rec.notices.size(), 1u);
    EXPECT_EQ(rec.notices[0].title, "Cleaning stopped");
    EXPECT_EQ(rec.notices[0].message, "Nothing was removed. 5 items were left exactly as they were.");
    EXPECT_FALSE(run.plan());
}

// Three of five done, one failure, one never started: the notice, the fraction and the
// manifest all tell that story.
TEST(CleanRun, StoppedRunReadsInOrder) {
    const std::string logsFolder = bv::test::TestEnvironment::freshFolder("logs");
    Harness rec(logsFolder);
    CleanRun& run = rec.run;
    std::vector<double> fractions;
    QObject::connect(&run, &CleanRun::progressChanged, [&] {
        if (run.step() != 3) fractions.push_back(run.fraction());
        if (run.statusLine() == "Moving 4 of 5") run.requestStop();
    });
    run.presentPlan(cachePlan(5, {2}));
    run.confirm();
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));
    EXPECT_EQ(rec.logs().size(), 3u);
    ASSERT_FALSE(rec.notices.empty());
    EXPECT_EQ(rec.notices[0].message,
              "3 items (3 MB) were already cleaned. 1 item was left exactly as it was. 1 item couldn’t be cleaned.");
    ASSERT_FALSE(fractions.empty());
    EXPECT_DOUBLE_EQ(*std::max_element(fractions.begin(), fractions.end()), 0.8) << "stopped after item 4 of 5";
    EXPECT_TRUE(std::is_sorted(fractions.begin(), fractions.end())) << "the fraction only grows";
    EXPECT_DOUBLE_EQ(run.fraction(), 1.0);
    EXPECT_TRUE(rec.errors.empty()) << "the notice took the error line's place";
    EXPECT_EQ(run.trashLandings(), 1);
    EXPECT_EQ(std::count(rec.sounds.begin(), rec.sounds.end(), "droplet"), 1);

    DIR* d = ::opendir(logsFolder.c_str());
    ASSERT_TRUE(d);
    std::string name;
    while (dirent* e = ::readdir(d))
        if (e->d_name[0] != '.') name = e->d_name;
    ::closedir(d);
    const auto json = parseJson(readWholeFile(logsFolder + "/" + name).value_or(""));
    ASSERT_TRUE(json);
    EXPECT_EQ((*json)["lines"].size(), 3u);
    EXPECT_EQ((*json)["errors"][0], "Couldn’t clean Cache 2. It is already gone.");
    EXPECT_EQ((*json)["errors"][1], "Not started (stopped): Cache 5");
}

TEST(CleanRun, TrashOnlyRunTellsWhereTheSpaceIsAndExplainsOnce) {
    Harness rec;
    CleanRun& run = rec.run;
    bool everVerifying = false;
    QObject::connect(&run, &CleanRun::progressChanged, [&] { everVerifying = everVerifying || run.verifying(); });
    run.presentPlan(cachePlan(2));
    run.confirm();
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));
    EXPECT_FALSE(everVerifying) << "only Trash moves: nothing to measure";
    EXPECT_EQ(run.lastNotification(), "Moved 2 MB from 2 items to the Trash. Empty the Trash to get the space back.");
    ASSERT_EQ(rec.notices.size(), 1u);
    EXPECT_EQ(rec.notices[0].title, "They’re in the Trash");
    EXPECT_TRUE(rec.explained());
    EXPECT_EQ(run.lastFreed(), 2'000'000);
    EXPECT_EQ(run.reclaimed(), 2'000'000);
    EXPECT_EQ(std::count(rec.sounds.begin(), rec.sounds.end(), "success"), 1);

    run.presentPlan(cachePlan(1));
    run.confirm();
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));
    EXPECT_EQ(rec.notices.size(), 1u) << "the first-Trash notice comes once";
    EXPECT_EQ(run.lastNotification(), "Moved 1 MB from 1 item to the Trash. Empty the Trash to get the space back.");
}

TEST(CleanRun, PermanentRemovalIsMeasuredOnDisk) {
    for (const bool grows : {true, false}) {
        Harness rec;
        CleanRun& run = rec.run;
        int reads = 0;
        rec.nextFree = [&] { return grows && reads++ >= 1 ? std::int64_t{100'004'096} : std::int64_t{100'000'000}; };
        run.presentPlan(cachePlan(1, {}, {1}));
        run.confirm();
        ASSERT_TRUE(spinUntil([&] { return run.lastVerifiedFreed().has_value(); }));
        EXPECT_FALSE(run.verifying());
        if (grows) {
            EXPECT_EQ(*run.lastVerifiedFreed(), 4096);
            EXPECT_EQ(run.lastNotification(), "Freed 4 KB from 1 item, measured on disk.");
        } else {
            EXPECT_EQ(*run.lastVerifiedFreed(), 0);
            EXPECT_EQ(run.lastNotification(), "Cleaned 1 item (1 MB estimated). Free space has not changed yet.");
        }
        EXPECT_TRUE(rec.notices.empty()) << "nothing went to the Trash";
        spinUntil([&] { return !run.isSheetPresented(); });
    }
}

TEST(CleanRun, PreviewRulesAndFailuresWithoutANotice) {
    Harness rec;
    CleanRun& run = rec.run;
    run.presentPlan(CleanupPlan{});
    EXPECT_EQ(rec.errors.back(), "Choose what to preview. Nothing is selected.");
    EXPECT_FALSE(run.isSheetPresented());

    run.presentPlan(cachePlan(3, {1, 2, 3}));
    EXPECT_TRUE(run.isSheetPresented());
    for (const char* id : {"e1", "e2", "e3"}) run.setEntryTicked(id, false);
    EXPECT_EQ(run.selectedCount(), 0);
    run.confirm();
    EXPECT_EQ(rec.errors.back(), "Nothing is selected to clean.");
    EXPECT_EQ(run.phase(), CleanRun::Phase::idle);

    run.setEntryTicked("e1", true);
    run.setEntryTicked("e2", true);
    EXPECT_EQ(run.selectedTotalText(), "2 MB");
    run.confirm();
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));
    EXPECT_EQ(rec.errors.back(), "Couldn’t clean Cache 1. It is already gone. 2 items need attention.");
    EXPECT_TRUE(run.failed());
    EXPECT_EQ(run.phase(), CleanRun::Phase::idle);
    EXPECT_NE(std::find(rec.sounds.begin(), rec.sounds.end(), "error"), rec.sounds.end());
}

// Through the model: History gets the entries and the settings remember the explanation
// across a restart.
TEST(CleanRun, ModelWiresHistoryAndTheSettingsFile) {
    bv::test::removeTree(XdgPaths::appDataDir());
    {
        AppModel model(true);
        ASSERT_TRUE(cleanThroughModel(model, cachePlan(1)));
        EXPECT_TRUE(model.messages()->cleanupNotice().has_value());
        EXPECT_TRUE(model.settings()->value().didExplainTrashUndo);
        EXPECT_EQ(loadLog(model.context().store).size(), 1u);
    }
    AppModel again(true);
    EXPECT_TRUE(again.settings()->value().didExplainTrashUndo);
    ASSERT_TRUE(cleanThroughModel(again, cachePlan(1)));
    EXPECT_FALSE(again.messages()->cleanupNotice().has_value()) << "once per settings file, not once per launch";
    EXPECT_EQ(loadLog(again.context().store).size(), 2u);
}

// A run that cleaned nothing (every entry already gone) closes its sheet after a short wait;
// a second confirm or a new plan in that wait is refused, and the run is never touched after
// the close.
TEST(CleanRun, NothingCleanedRefusesASecondConfirmUntilTheSheetCloses) {
    Harness rec;
    CleanRun& run = rec.run;
    run.setTiming({30, 80, 10, 400, 40});
    const CleanupPlan gone = cachePlan(2, {1, 2});
    ASSERT_TRUE(run.presentPlan(gone));
    run.confirm();
    ASSERT_TRUE(spinUntil([&] { return run.closing(); }));
    run.confirm();
    run.confirm();
    EXPECT_FALSE(run.presentPlan(cachePlan(1))) << "no new plan while the sheet closes";
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));
    bv::test::spin(150);
    EXPECT_EQ(run.phase(), CleanRun::Phase::idle);
    EXPECT_FALSE(run.closing());
    EXPECT_TRUE(rec.logs().empty());
    // Once closed, the run takes a plan again.
    EXPECT_TRUE(run.presentPlan(cachePlan(1)));
    run.dismissSheet();
}
