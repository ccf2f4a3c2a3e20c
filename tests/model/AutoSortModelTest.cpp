// Auto-Sort through the model on a temporary Downloads: the automatic run on the clock's tick
// (moved by the clock seam, never by sleeping), its History entry and its notification on a
// real private session bus, and the confirmed run of a preview against a disk that changed.
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include <thread>

#include "NotificationTestServer.h"
#include "PrivateSessionBus.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/AppClock.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/Settings.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "sort/qt/AutoSortModel.h"
#include "sort/qt/SortRulesModel.h"
#include "space/qt/SpaceStatus.h"
#include "support/TestEnvironment.h"

#include <sys/stat.h>

using namespace bv;
using namespace std::chrono_literals;

namespace {

bool clearState() {
    for (const auto& dir : {XdgPaths::appDataDir(), XdgPaths::appConfigDir(), XdgPaths::downloads(),
                            XdgPaths::home() + "/Sorted"})
        test::removeTree(dir);
    test::makeDir(XdgPaths::downloads());
    return true;
}

// When the file system says the file arrived (its status change).
TimePoint arrival(const std::string& path) {
    struct stat st{};
    ::stat(path.c_str(), &st);
    return TimePoint(std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(st.st_ctim.tv_sec) +
                                                                 std::chrono::nanoseconds(st.st_ctim.tv_nsec)));
}

SortRule pdfRule(SortTrigger trigger, TimePoint createdAt, const std::string& folder) {
    SortRule r;
    r.id = Uuid::generate();
    r.name = r.phrase = "move pdfs";
    r.conditions = {SortCondition::fileExtension("pdf"), SortCondition::location(SortPlace::downloads)};
    r.action = SortAction::moveToFolder(folder);
    r.trigger = trigger;
    r.createdAt = createdAt;
    return r;
}

class AutoSortModelTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!bus.isUp()) GTEST_SKIP() << "dbus-run-session could not start a session bus";
        ASSERT_TRUE(server.start());
        model.notifications()->attach(bus.connect("model"));
        model.setNow([this] { return now; });
    }
    std::string put(const std::string& name) {
        const std::string path = downloads + "/" + name;
        test::writeFile(path, "%PDF " + name);
        return path;
    }
    bool tick() {
        QSignalSpy done(&autoSort, &AutoSortModel::autoRunFinished);
        emit model.clock()->ticked();
        return !autoSort.sortAutoRunInFlight() || done.wait(10000);
    }

    test::PrivateSessionBus bus;
    test::NotificationTestServer server{bus.connect("server")};
    bool cleared = clearState();
    AppModel model{true};
    SortRulesModel& rules = *model.sortRules();
    AutoSortModel& autoSort = *model.room<AutoSortModel>();
    const std::string downloads = XdgPaths::downloads();
    const std::string sorted = XdgPaths::home() + "/Sorted";
    TimePoint now = Clock::now();
};

} // namespace

TEST_F(AutoSortModelTest, ArrivalRuleActsOnNewFilesOnceSettledThenLogsAndNotifies) {
    const std::string before = put("before.pdf");
    std::this_thread::sleep_for(20ms); // the rule is made after this file arrived, and before the next
    const TimePoint made = Clock::now();
    std::this_thread::sleep_for(20ms);
    const std::string after = put("after.pdf");
    rules.setSortRules({pdfRule(SortTrigger::whenAdded(), made, sorted)});

    struct Step {
        std::chrono::seconds since; // after `after.pdf` arrived
        bool moved;
    };
    for (const Step& step : {Step{119s, false}, Step{120s, true}}) {
        now = arrival(after) + step.since;
        ASSERT_TRUE(tick());
        EXPECT_EQ(test::exists(sorted + "/after.pdf"), step.moved) << step.since.count();
        EXPECT_TRUE(test::exists(before)) << "a file that was there before the rule stays";
    }
    EXPECT_FALSE(test::exists(after));
    ASSERT_EQ(model.activityLog()->logEntries().size(), 1u);
    EXPECT_EQ(model.activityLog()->logEntries()[0].destinationPath, sorted + "/after.pdf");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !server.received().empty(); }, 5000));
    EXPECT_EQ(server.received()[0].summary, "Auto-Sort");
    EXPECT_EQ(server.received()[0].body, "Sorted 1 file. Details are in History.");
}

TEST_F(AutoSortModelTest, ScheduledRulesMoveTheirNextRunAndRenamesNeverRunByThemselves) {
    put("report.pdf");
    SortRule daily = pdfRule(SortTrigger::scheduled(CleanSchedule::daily), now, sorted);
    SortRule rename = pdfRule(SortTrigger::scheduled(CleanSchedule::hourly), now, {});
    rename.action = SortAction::rename("{name}.bak");
    rename.conditions = {SortCondition::fileExtension("txt")};
    put("notes.txt");
    rules.setSortRules({rename, daily});
    now += 2min;
    ASSERT_TRUE(tick());
    EXPECT_TRUE(test::exists(sorted + "/report.pdf"));
    EXPECT_TRUE(test::exists(downloads + "/notes.txt")) << "a rename waits for a confirmed preview";
    ASSERT_TRUE(rules.sortRules()[1].nextRun);
    EXPECT_EQ(*rules.sortRules()[1].nextRun, model.calendar().addingDays(now, 1));
    EXPECT_FALSE(rules.sortRules()[0].nextRun);
}

TEST_F(AutoSortModelTest, ARunChecksEachFileAgainAndOneRefusalNeverStopsTheOthers) {
    for (const char* name : {"keep.pdf", "gone.pdf", "clash.pdf", "changed.pdf"}) put(name);
    test::writeFile(sorted + "/clash.pdf", "already there");
    const SortRule rule = pdfRule(SortTrigger::manual(), now, sorted);
    rules.setSortRules({rule});
    now += 2min;
    autoSort.startPreview({QString::fromStdString(rule.id.text())});
    ASSERT_TRUE(QTest::qWaitFor([&] { return autoSort.hasSimulation() && !autoSort.isPreviewing(); }, 5000));
    ASSERT_EQ(autoSort.simulation()->actions.size(), 4u);
    EXPECT_EQ(autoSort.confirmQuestion(), "Move 4 files?");

    // The disk moves on after the preview: one file vanishes, one is renamed out of the rule.
    std::remove((downloads + "/gone.pdf").c_str());
    std::rename((downloads + "/changed.pdf").c_str(), (downloads + "/changed.txt").c_str());
    ASSERT_TRUE(autoSort.runPreview());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !autoSort.isRunningRules(); }, 10000));

    EXPECT_TRUE(test::exists(sorted + "/keep.pdf"));
    EXPECT_TRUE(test::exists(downloads + "/clash.pdf")) << "a name clash leaves the source in place";
    EXPECT_TRUE(test::exists(downloads + "/changed.txt"));
    EXPECT_EQ(autoSort.ruleRunSuccess(), "Moved 1 file.");
    const QStringList errors = autoSort.ruleRunErrors();
    EXPECT_TRUE(errors.contains("clash.pdf is already in that folder.")) << errors.join("|").toStdString();
    EXPECT_TRUE(errors.contains("gone.pdf no longer matches the rule, so it was left alone."));
    EXPECT_TRUE(errors.contains("changed.pdf no longer matches the rule, so it was left alone."));
    EXPECT_EQ(model.activityLog()->logEntries().size(), 1u);
    EXPECT_FALSE(autoSort.canRun()) << "a preview runs once";
}

TEST_F(AutoSortModelTest, AChangedDraftOrRuleVoidsItsPreview) {
    put("a.pdf");
    rules.setDraftPhrase("move pdf files");
    rules.chooseDraftFolder(QString::fromStdString(sorted));
    rules.setDraftTrigger("whenAdded");
    now += 2min;
    autoSort.previewDraft();
    ASSERT_TRUE(QTest::qWaitFor([&] { return autoSort.hasSimulation(); }, 5000));
    EXPECT_EQ(autoSort.previewMode(), "draft");
    rules.removeChip("schedule"); // the trigger goes back to arrival: the same rule, nothing voided
    EXPECT_TRUE(autoSort.hasSimulation());
    rules.setDraftTrigger("daily");
    EXPECT_FALSE(autoSort.hasSimulation()) << "a different draft can't run the old preview";
    EXPECT_EQ(autoSort.previewMode(), "");

    ASSERT_TRUE(rules.saveDraft());
    const QString id = QString::fromStdString(rules.sortRules().back().id.text());
    autoSort.startPreview({id});
    ASSERT_TRUE(QTest::qWaitFor([&] { return autoSort.hasSimulation(); }, 5000));
    rules.setRuleEnabled(id, false);
    EXPECT_FALSE(autoSort.hasSimulation());
    EXPECT_TRUE(test::exists(downloads + "/a.pdf"));
}

TEST_F(AutoSortModelTest, DismissedSuggestionsStayDismissed) {
    test::writeSizedFile(downloads + "/tool.dmg", 4000);
    now += std::chrono::hours(24 * 4); // old enough to be an old installer
    autoSort.refreshSamples();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !autoSort.sortSuggestions().empty(); }, 5000));
    EXPECT_EQ(autoSort.sortSuggestions()[0].id, "old-installers");
    autoSort.dismissSuggestion("old-installers");
    EXPECT_TRUE(autoSort.sortSuggestions().empty());
    AppModel again(true);
    EXPECT_EQ(again.settings()->value().dismissedSuggestions, std::vector<std::string>{"old-installers"});
}

TEST_F(AutoSortModelTest, NewTodayRowsNameTheRuleThatCoversThem) {
    put("invoice.pdf");
    test::writeFile(downloads + "/notes.txt", "x");
    rules.setSortRules({pdfRule(SortTrigger::whenAdded(), now, sorted)});
    model.refresh();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !model.isRefreshing(); }, 10000));
    QAbstractItemModel& rows = *model.room<SpaceStatus>()->newTodayFiles();
    const int name = rows.roleNames().key("name"), covered = rows.roleNames().key("coveredBy");
    std::map<QString, QString> seen;
    for (int i = 0; i < rows.rowCount(); ++i)
        seen[rows.data(rows.index(i, 0), name).toString()] = rows.data(rows.index(i, 0), covered).toString();
    EXPECT_EQ(seen["invoice.pdf"], "move pdfs");
    EXPECT_EQ(seen["notes.txt"], "");
}
