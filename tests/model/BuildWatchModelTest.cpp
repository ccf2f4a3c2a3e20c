// Build Watch's room end to end in a temporary home: real project folders, the real cleaner,
// the preview sheet of the shared run, and a real process named cargo.
#include <gtest/gtest.h>

#include <QTest>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include "buildwatch/qt/BuildWatchModel.h"
#include "clean/qt/CleanRun.h"
#include "core/qt/ActivityLog.h"
#include "core/AppPersistence.h"
#include "core/qt/WatchRequests.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

extern char** environ;

using namespace bv;

namespace {

// A Rust project whose target/debug holds 60 kB, last changed two hours ago.
std::string rustProject(const std::string& name) {
    const std::string dir = test::TestEnvironment::freshFolder("projects") + "/" + name;
    test::writeFile(dir + "/Cargo.toml", "[package]\n");
    test::writeSizedFile(dir + "/target/debug/app", 60000);
    EXPECT_EQ(
        test::runCommand("find " + test::shellQuote(dir) + " -exec touch -h -d '2 hours ago' {} +").status,
        0);
    return dir;
}

// The state file as a previous session left it: one watch of `dir`, due now, limit 1 kB.
void writeWatch(const std::string& dir) {
    BuildWatch w;
    w.id = Uuid::generate();
    w.path = dir;
    w.name = dir.substr(dir.rfind('/') + 1);
    w.stacks = {BuildStack::rust};
    w.limitBytes = 1000;
    w.createdAt = Clock::now();
    test::removeTree(XdgPaths::appDataDir());
    AppPersistence::live().saveJson(kBuildWatchFileName, encodeBuildWatchState({{w}, {}, {}, {}}));
}

struct Cargo {
    pid_t pid = -1;
    explicit Cargo(const std::string& folder) {
        const std::string binary = folder + "/cargo";
        EXPECT_EQ(test::runCommand("cp /bin/sleep " + test::shellQuote(binary)).status, 0);
        char* argv[] = {const_cast<char*>("cargo"), const_cast<char*>("60"), nullptr};
        if (::posix_spawn(&pid, binary.c_str(), nullptr, nullptr, argv, environ) != 0)
            pid = -1;
        ::usleep(100000);
    }
    ~Cargo() {
        if (pid <= 0)
            return;
        ::kill(pid, SIGTERM);
        ::waitpid(pid, nullptr, 0);
    }
};

} // namespace

TEST(BuildWatchModel, WatchRequestsOpenTheDraftThatConfirmWatches) {
    const std::string dir = rustProject("request app");
    struct Case {
        const char* how;
        bool fromLink;
    };
    for (const Case c : {Case{"link", true}, Case{"folder action", false}}) {
        SCOPED_TRACE(c.how);
        test::removeTree(XdgPaths::appDataDir());
        AppModel model(true);
        BuildWatchModel& room = *model.room<BuildWatchModel>();
        if (c.fromLink) {
            QUrl link("brimvale://watch");
            link.setQuery("path=" + QUrl::toPercentEncoding(QString::fromStdString(dir)));
            ASSERT_TRUE(model.handleLink(link));
        } else {
            ASSERT_FALSE(model.watchFolderService({QString::fromStdString(dir)}));
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return room.draftValue() && room.draftValue()->scan; }, 5000));
        EXPECT_EQ(model.focusSection(), "buildWatch");
        EXPECT_EQ(room.draftValue()->path, dir);
        EXPECT_EQ(room.draftForQml()["fromLinkNote"].toString().isEmpty(), !c.fromLink);
        EXPECT_TRUE(room.draftForQml()["canConfirm"].toBool());

        room.confirmDraft();
        ASSERT_EQ(room.state().watches.size(), 1u);
        EXPECT_EQ(room.state().watches[0].samples.back().bytes, room.targets().begin()->second.front().bytes);
        EXPECT_FALSE(room.hasDraft());
        EXPECT_TRUE(model.watchRequests()->pendingPath().isEmpty());
        EXPECT_TRUE(AppPersistence(XdgPaths::appDataDir()).exists(kBuildWatchFileName));

        room.startDraft(QString::fromStdString(dir)); // once watched, the second ask only says so
        ASSERT_TRUE(QTest::qWaitFor([&] { return room.toast().endsWith("already watched."); }, 5000));
        EXPECT_EQ(room.toast().toStdString(), "request app is already watched.");
        EXPECT_FALSE(room.hasDraft());
    }
}

TEST(BuildWatchModel, DueWatchOverItsLimitIsCleanedUnlessCargoRuns) {
    for (const bool cargoRuns : {true, false}) {
        SCOPED_TRACE(cargoRuns ? "cargo running" : "no build");
        const std::string dir = rustProject("due app");
        writeWatch(dir);
        std::optional<Cargo> cargo;
        if (cargoRuns)
            cargo.emplace(test::TestEnvironment::freshFolder("bin"));
        AppModel model(true);
        BuildWatchModel& room = *model.room<BuildWatchModel>();
        const TimePoint before = Clock::now();
        room.checkDue();
        ASSERT_TRUE(room.runInFlight());
        ASSERT_TRUE(QTest::qWaitFor([&] { return !room.runInFlight(); }, 10000));

        const BuildWatch& w = room.state().watches.at(0);
        EXPECT_EQ(test::exists(dir + "/target/debug/app"), cargoRuns);
        if (cargoRuns) {
            EXPECT_EQ(w.lastNote, "Waiting for cargo to finish. Checking again in 30 minutes.");
            EXPECT_LE(*w.nextCheck - before, std::chrono::seconds(1801));
            EXPECT_EQ(w.totalFreed, 0);
        } else {
            EXPECT_FALSE(w.lastNote) << *w.lastNote;
            EXPECT_GE(w.totalFreed, 60000);
            EXPECT_EQ(w.samples.back().bytes, 0) << "the sample after the clean";
            ASSERT_FALSE(model.activityLog()->logEntries().empty());
            EXPECT_EQ(model.activityLog()->logEntries().front().sourcePath, dir + "/target/debug");
        }
        // The run's changes are on disk.
        const auto saved =
            AppPersistence(XdgPaths::appDataDir()).load(kBuildWatchFileName, decodeBuildWatchState);
        ASSERT_TRUE(saved);
        const BuildWatch& stored = saved->watches.at(0); // dates are kept to the second there
        EXPECT_EQ(stored.lastNote, w.lastNote);
        EXPECT_EQ(stored.totalFreed, w.totalFreed);
        EXPECT_EQ(stored.samples.size(), w.samples.size());
    }
}

TEST(BuildWatchModel, CleanNowCleansOnlyThroughThePreviewAndCreditsTheWatch) {
    const std::string dir = rustProject("preview app");
    writeWatch(dir);
    AppModel model(true);
    model.room<CleanRun>()->setTiming({30, 10, 10, 400, 40});
    BuildWatchModel& room = *model.room<BuildWatchModel>();
    const QString id = QString::fromStdString(room.state().watches.at(0).id.text());

    room.cleanNow(id);
    ASSERT_TRUE(QTest::qWaitFor([&] { return model.room<CleanRun>()->isSheetPresented(); }, 5000));
    ASSERT_EQ(model.room<CleanRun>()->plan()->entries.size(), 1u);
    EXPECT_EQ(model.room<CleanRun>()->plan()->entries[0].title,
              "preview app: " + room.targets().begin()->second[0].title);
    EXPECT_TRUE(test::exists(dir + "/target/debug/app")) << "nothing moves before the confirm";
    room.checkDue();
    EXPECT_FALSE(room.runInFlight()) << "no due run while the sheet is up";

    model.room<CleanRun>()->confirm();
    ASSERT_TRUE(QTest::qWaitFor([&] { return room.state().watches.at(0).totalFreed > 0; }, 10000));
    EXPECT_FALSE(test::exists(dir + "/target/debug"));
    EXPECT_TRUE(room.targets().begin()->second.empty());

    room.cleanNow(id); // nothing left: the toast, and no sheet
    ASSERT_TRUE(QTest::qWaitFor([&] { return !room.toast().isEmpty(); }, 5000));
    EXPECT_EQ(room.toast().toStdString(), "preview app has no build files to clean right now.");
}
