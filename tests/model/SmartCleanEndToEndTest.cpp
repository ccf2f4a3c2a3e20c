// The whole road of a Smart Clean on a temporary home full of realistic caches: the model
// scans, "Select recommended" ticks what comes back by itself, the preview holds exactly
// that, the run moves it to the real Trash (read back with trash-cli), History and the
// manifest record it, the notification reaches a notification server on the session bus,
// and the rescan after the run no longer offers what is gone.
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QElapsedTimer>

#include <filesystem>

#include "NotificationTestServer.h"
#include "PrivateSessionBus.h"
#include "clean/qt/CleanRun.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/ActionLog.h"
#include "core/qt/FeatureContext.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "support/DevCacheHome.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"

using namespace bv;
using bv::test::spinUntil;
using bv::test::exists;
namespace fs = std::filesystem;

namespace {

std::vector<std::string> selectedIds(const SmartCleanModel& smart) {
    std::vector<std::string> out;
    for (const auto& r : smart.rows())
        if (r.selected) out.push_back(r.id);
    std::sort(out.begin(), out.end());
    return out;
}

bool hasRow(const SmartCleanModel& smart, const std::string& id) {
    return std::any_of(smart.rows().begin(), smart.rows().end(), [&](const DevScanRow& r) { return r.id == id; });
}

} // namespace

TEST(SmartCleanEndToEnd, ScanSelectRecommendedPreviewCleanAndRescan) {
    const std::string home = XdgPaths::home();
    bv::test::removeTree(home + "/.local/share/Trash");
    const auto fixture = bv::test::writeDevCacheHome(home);
    const std::string& outside = fixture.outside;

    // A private session bus: a notification server on one connection, the model on another,
    // so the notification really crosses the bus.
    bv::test::PrivateSessionBus bus;
    std::unique_ptr<bv::test::NotificationTestServer> server;
    QString modelConnection;
    if (bus.isUp()) {
        server = std::make_unique<bv::test::NotificationTestServer>(bus.connect("server"));
        if (server->start()) modelConnection = bus.connect("model").name();
        else server.reset();
    }

    AppModel model(true);
    // The volume reading is the one seam: a fixed disk so the run's measurement is quick
    // and deterministic; everything else is the real file system and Trash.
    model.setVolumeReader([](const std::string&, TimePoint now) { return VolumeSnapshot{now, "Disk", 500'000'000'000, 100'000'000'000}; });
    model.setNotificationConnectionName(modelConnection);
    model.room<CleanRun>()->setTiming({30, 10, 10, 400, 40});
    Cleaner::Environment quiet;
    quiet.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    model.room<CleanRun>()->setCleanerEnvironment(quiet);
    model.start();
    SmartCleanModel& smart = *model.room<SmartCleanModel>();
    QAbstractItemModelTester cardTester(smart.cards(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    ASSERT_TRUE(spinUntil([&] { return smart.hasScanned() && !smart.scanning(); }));
    QSignalSpy cardsReset(smart.cards(), &QAbstractItemModel::modelReset);

    // Nothing is selected by a scan; the reclaimable total counts what would be recommended.
    EXPECT_EQ(smart.selectedCount(), 0);
    const std::int64_t offered = smart.reclaimableBytes();
    EXPECT_GE(offered, bv::test::DevCacheHome::kRecommendedBytes);
    const auto* link = &*std::find_if(smart.rows().begin(), smart.rows().end(), [](const DevScanRow& r) { return r.id == "cargo-cache"; });
    EXPECT_FALSE(link->selectable);

    // A row that must stay can't be ticked, alone or with its card; clearing the card
    // clears what the card ticked.
    smart.setRowSelected("gradle-gradle-8.5-bin", true);
    smart.setRowSelected("cargo-cache", true);
    EXPECT_EQ(smart.selectedCount(), 0);
    smart.setCardSelected("gradle", true);
    EXPECT_EQ(selectedIds(smart), (std::vector<std::string>{"gradle-gradle-8.4-bin"}));
    smart.setCardSelected("gradle", false);
    EXPECT_EQ(smart.selectedCount(), 0);
    EXPECT_EQ(cardsReset.count(), 0) << "ticks change rows, never the whole list";

    smart.selectRecommended();
    EXPECT_EQ(selectedIds(smart), (std::vector<std::string>{"cache-pip", "gradle-gradle-8.4-bin", "npm"}));
    EXPECT_EQ(smart.reclaimableBytes(), offered) << "ticking the recommended rows adds nothing to the offer";

    smart.preview();
    ASSERT_TRUE(model.room<CleanRun>()->isSheetPresented());
    ASSERT_TRUE(model.room<CleanRun>()->plan().has_value());
    EXPECT_EQ(model.room<CleanRun>()->plan()->entries.size(), 3u);
    EXPECT_TRUE(model.room<CleanRun>()->plan()->refusals.empty());

    model.room<CleanRun>()->confirm();
    ASSERT_TRUE(spinUntil([&] { return !model.room<CleanRun>()->isSheetPresented(); }));

    // Gone from their places, present in the Trash as an independent client reads it.
    // npm's cache is cleared by npm itself where npm is installed, and goes to the Trash
    // where it is not; the other two always go to the Trash.
    std::vector<std::string> cleaned = {home + "/.cache/pip", home + "/.gradle/wrapper/dists/gradle-8.4-bin"};
    EXPECT_FALSE(exists(home + "/.npm/_cacache/content-v2/sha512/ab/blob"));
    if (!bv::test::haveCommand("npm")) cleaned.push_back(home + "/.npm/_cacache");
    for (const auto& p : cleaned) EXPECT_FALSE(exists(p)) << p;
    if (bv::test::haveCommand("trash-list")) {
        const auto listed = bv::test::runCommand("trash-list");
        ASSERT_EQ(listed.status, 0);
        for (const auto& p : cleaned) EXPECT_NE((listed.output + "\n").find(" " + p + "\n"), std::string::npos) << p << "\n" << listed.output;
    }
    for (const auto& p : {home + "/.gradle/wrapper/dists/gradle-8.5-bin", home + "/.cache/thumbs-tool", home + "/.nvm/versions/node/v18.19.0",
                          home + "/.m2/repository", outside + "/crate.tar"})
        EXPECT_TRUE(exists(p)) << p;

    // History and the manifest.
    const auto log = loadLog(model.context().store);
    ASSERT_FALSE(log.empty());
    std::int64_t logged = 0;
    for (const auto& e : log) logged += e.bytesReclaimed;
    EXPECT_GE(logged, bv::test::DevCacheHome::kRecommendedBytes);
    bool manifest = false;
    for (const auto& f : fs::directory_iterator(XdgPaths::logsDir()))
        manifest |= f.path().filename().string().starts_with("cleanup-");
    EXPECT_TRUE(manifest) << "one manifest per run in " << XdgPaths::logsDir();

    if (server) {
        ASSERT_TRUE(spinUntil([&] { return !server->received().empty(); }, 5000));
        const auto& n = server->received().back();
        EXPECT_EQ(n.summary, "Brimvale");
        EXPECT_TRUE(n.body.startsWith("Moved ") || n.body.startsWith("Freed ") || n.body.startsWith("Cleaned "))
            << n.body.toStdString();
        EXPECT_TRUE(n.body.contains("3 items")) << n.body.toStdString();
    } else {
        std::cout << "[  SKIPPED ] notification check: dbus-run-session could not start a bus\n";
    }

    // The run brings a rescan: what went is no longer offered, what stayed still is.
    ASSERT_TRUE(spinUntil([&] { return !hasRow(smart, "npm") && !smart.scanning(); }));
    EXPECT_FALSE(hasRow(smart, "cache-pip"));
    EXPECT_TRUE(hasRow(smart, "gradle-gradle-8.5-bin"));
    EXPECT_EQ(smart.selectedCount(), 0);
    EXPECT_EQ(model.room<CleanRun>()->afterCleanLine().isEmpty(), false);
}
