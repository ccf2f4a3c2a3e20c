#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QAbstractItemModelTester>

#include "core/AppPersistence.h"
#include "core/UserDefaults.h"
#include "space/SpaceMapTimings.h"
#include "space/qt/SpaceMapModel.h"
#include "core/qt/FeatureContext.h"
#include "model/AppModel.h"
#include "space/SpaceHistory.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"

using namespace bv;
using bv::test::spinUntil;

namespace {

// A space map on its own store, clock and home, built like the model builds it.
FeatureContext contextFor(AppModel& app, const std::string& dataDir) {
    app.setNow([] { return *parseIsoDate("2026-11-22T10:00:00Z"); });
    FeatureContext ctx = app.context();
    ctx.live = true;
    ctx.store = AppPersistence(dataDir);
    ctx.folders.home = test::TestEnvironment::root() + "/home";
    ctx.latestVolume = [] { return VolumeSnapshot{{}, "System", 500, 200}; };
    return ctx;
}

struct MapHarness {
    AppModel app{false};
    FeatureContext ctx;
    SpaceMapModel model;
    QAbstractItemModelTester children{model.nodeChildren(), QAbstractItemModelTester::FailureReportingMode::Fatal};
    QAbstractItemModelTester snapshots{model.snapshots(), QAbstractItemModelTester::FailureReportingMode::Fatal};
    explicit MapHarness(const std::string& dataDir) : ctx(contextFor(app, dataDir)), model(ctx) {
        model.setVolumeLister([] { return std::vector<MountedVolume>{{"/", "System", 500, 200}}; });
    }
};

DiskMapNode node(const std::string& path, std::int64_t bytes, std::vector<DiskMapNode> children = {}) {
    return DiskMapNode{path, path.substr(path.rfind('/') + 1), bytes, 3, std::move(children)};
}

DiskMap mapOf(const std::string& root, std::vector<DiskMapNode> children, bool truncated = false) {
    DiskMap m;
    m.rootPath = root;
    m.root = node(root, 0, std::move(children));
    m.root.name = "Data";
    for (const auto& c : m.root.children) m.root.bytes += c.bytes;
    m.totalBytes = m.root.bytes;
    m.fileCount = 9;
    m.truncated = truncated;
    m.scannedAt = *parseIsoDate("2026-11-22T09:00:00Z");
    return m;
}

} // namespace

TEST(SpaceMapModel, AScanEndsWithAMapAndItsTimingIsRemembered) {
    test::removeTree(UserDefaults().filePath());
    const std::string root = test::TestEnvironment::freshFolder("sm-scan");
    test::writeSizedFile(root + "/big/a.bin", 2'000'000);
    test::writeSizedFile(root + "/small/b.txt", 100);
    const std::string dataDir = test::TestEnvironment::freshFolder("sm-data");

    MapHarness modelH(dataDir);
    SpaceMapModel& model = modelH.model;
    model.chooseRoot(QString::fromStdString("file://" + root));
    EXPECT_EQ(model.rootPath().toStdString(), root);
    EXPECT_EQ(model.startTitle(), "Map it");
    EXPECT_TRUE(model.estimateText().startsWith("First map of this folder."));

    QSignalSpy scanning(&model, &SpaceMapModel::scanningChanged);
    model.start();
    EXPECT_TRUE(model.scanning());
    EXPECT_EQ(model.progressText(), "Starting…");
    const Uuid token = model.token();
    model.start(); // a second start does nothing
    EXPECT_EQ(model.token(), token);
    ASSERT_TRUE(spinUntil([&] { return !model.scanning(); }));
    ASSERT_TRUE(model.hasMap());
    EXPECT_FALSE(model.map()->truncated);
    EXPECT_EQ(model.map()->fileCount, 2);
    EXPECT_EQ(model.startTitle(), "Map again");
    ASSERT_EQ(model.nodeChildren()->rowCount(), 1);
    EXPECT_EQ(model.nodeChildren()->data(model.nodeChildren()->index(0, 0), Qt::UserRole + 2).toString(), "big");
    EXPECT_TRUE(model.timings().count(root));
    EXPECT_TRUE(model.estimateText().startsWith("Mapped "));
    // The timing reached the user defaults: a new model starts with it.
    MapHarness againH(dataDir);
    SpaceMapModel& again = againH.model;
    EXPECT_TRUE(again.timings().count(root));

    // Drilling in and back.
    model.openChild(QString::fromStdString(root + "/big"));
    EXPECT_TRUE(model.canGoBack());
    EXPECT_EQ(model.nodeName(), "big");
    EXPECT_EQ(model.emptyNodeText(), "No folder here is large enough to list on its own.");
    EXPECT_EQ(model.trail().size(), 2);
    model.openChild("/not/a/child");
    EXPECT_EQ(model.nodeName(), "big");
    model.goBack();
    EXPECT_FALSE(model.canGoBack());
    EXPECT_TRUE(model.emptyNodeText().isEmpty());
}

TEST(SpaceMapModel, ACancelledMapIsKeptButNeitherTimedSavedNorCompared) {
    const std::string dataDir = test::TestEnvironment::freshFolder("sm-cancel");
    MapHarness modelH(dataDir);
    SpaceMapModel& model = modelH.model;
    model.applyMap(mapOf("/data", {node("/data/a", 5'000'000)}), 3.0);
    model.saveSnapshot();
    ASSERT_EQ(model.snapshotList().size(), 1u);
    const QString id = model.selectedSnapshotId();
    EXPECT_EQ(model.comparisonText(), "No folder changed size since this snapshot.");
    const auto timings = model.timings();

    model.applyMap(mapOf("/data", {node("/data/a", 9'000'000)}, true), 1.0);
    EXPECT_EQ(model.partialText(), "This map is partial. The scan was cancelled before it finished.");
    EXPECT_EQ(model.timings(), timings);
    EXPECT_FALSE(model.canSaveSnapshot());
    model.saveSnapshot();
    EXPECT_EQ(model.snapshotList().size(), 1u);
    EXPECT_TRUE(model.deltas().isEmpty());
    EXPECT_EQ(model.comparisonText(), "Select a snapshot to compare it with the current map.");
    EXPECT_EQ(model.selectedSnapshotId(), id);
}

TEST(SpaceMapModel, SnapshotsCompareSaveAndDelete) {
    const std::string dataDir = test::TestEnvironment::freshFolder("sm-snapshots");
    MapHarness modelH(dataDir);
    SpaceMapModel& model = modelH.model;
    model.applyMap(mapOf("/data", {node("/data/a", 5'000'000), node("/data/gone", 2'000'000)}), 3.0);
    model.saveSnapshot();
    const QString id = model.selectedSnapshotId();
    model.stopComparing();
    EXPECT_EQ(model.comparisonText(), "Select a snapshot to compare it with the current map.");

    model.applyMap(mapOf("/data", {node("/data/a", 8'000'000), node("/data/new", 1'000'000)}), 3.0);
    model.compareWith(id);
    const auto deltas = model.deltas();
    ASSERT_EQ(deltas.size(), 4); // a, the root, gone, new
    EXPECT_EQ(deltas[0].toMap()["name"], "a");
    EXPECT_EQ(deltas[0].toMap()["symbol"], "arrow.up.right");
    EXPECT_EQ(deltas[0].toMap()["changeText"], "+3 MB");
    EXPECT_EQ(deltas[2].toMap()["name"], "gone");
    EXPECT_EQ(deltas[2].toMap()["symbol"], "arrow.down.right");
    EXPECT_TRUE(model.comparisonText().isEmpty());

    model.applyMap(mapOf("/elsewhere", {node("/elsewhere/a", 8'000'000)}), 3.0);
    EXPECT_TRUE(model.deltas().isEmpty());
    EXPECT_EQ(model.comparisonText(), "Select a snapshot to compare it with the current map.");

    // Saved to snapshots.json, with the figures of the volume holding the root.
    MapHarness rereadH(dataDir);
    SpaceMapModel& reread = rereadH.model;
    ASSERT_EQ(reread.snapshotList().size(), 1u);
    EXPECT_EQ(reread.snapshotList()[0].volumeName, "System");
    EXPECT_EQ(reread.snapshotList()[0].freeBytes, 200);
    EXPECT_TRUE(model.snapshotRemovedText(id).endsWith(" is removed. The current map is not affected."));
    model.deleteSnapshot(id);
    EXPECT_TRUE(model.snapshotList().empty());
    EXPECT_TRUE(model.selectedSnapshotId().isEmpty());
    EXPECT_TRUE(MapHarness(dataDir).model.snapshotList().empty());
}

TEST(SpaceMapModel, TreemapTilesCoverTheFolderWithARestTile) {
    MapHarness modelH(test::TestEnvironment::freshFolder("sm-tiles"));
    SpaceMapModel& model = modelH.model;
    EXPECT_TRUE(model.treemap(400, 300).isEmpty());
    model.applyMap(mapOf("/data", {node("/data/a", 6'000'000), node("/data/b", 3'000'000)}), 1.0);
    // The root holds 1 MB more than its listed children: files directly in it.
    DiskMap m = *model.map();
    m.root.bytes += 1'000'000;
    m.totalBytes = m.root.bytes;
    model.applyMap(m, 1.0);
    const auto tiles = model.treemap(400, 250);
    ASSERT_EQ(tiles.size(), 3);
    double area = 0;
    for (const auto& t : tiles) area += t.toMap()["width"].toDouble() * t.toMap()["height"].toDouble();
    EXPECT_NEAR(area, 100'000, 1e-6);
    EXPECT_TRUE(tiles[2].toMap()["isRest"].toBool());
    EXPECT_NEAR(tiles[0].toMap()["width"].toDouble() * tiles[0].toMap()["height"].toDouble(), 60'000, 1e-6);
}
