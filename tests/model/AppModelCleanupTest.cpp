#include <gtest/gtest.h>

#include <QSignalSpy>

#include "core/AppModel.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"

using namespace bv;
using bv::test::spinUntil;

namespace {

CleanupEntry entry(const std::string& id) {
    CleanupEntry e;
    e.id = id;
    e.title = id;
    e.path = XdgPaths::home() + "/.npm/_cacache/" + id;
    return e;
}

} // namespace

TEST(AppModelCleanup, PreviewRules) {
    AppModel model(false);
    QSignalSpy planChanged(&model, &AppModel::cleanupPlanChanged);
    QSignalSpy sheetChanged(&model, &AppModel::cleanupSheetChanged);

    EXPECT_FALSE(model.presentCleanupPlan(CleanupPlan{}));
    EXPECT_EQ(model.errorMessage(), "Choose what to preview. Nothing is selected.");
    EXPECT_FALSE(model.hasCleanupPlan());
    EXPECT_FALSE(model.isCleanupSheetPresented());
    model.dismissError();

    const CleanupPlan plan{{entry("a"), entry("b")}, {"c was left alone. This stays put."}};
    ASSERT_TRUE(model.presentCleanupPlan(plan, CleanupSheetMode::saveFolderRule));
    EXPECT_TRUE(model.isCleanupSheetPresented());
    EXPECT_EQ(model.cleanupSheetModeText(), "saveFolderRule");
    EXPECT_EQ(planChanged.count(), 1);

    model.setCleanupEntryExcluded("a", true);
    EXPECT_EQ(model.cleanupExcluded(), std::set<std::string>{"a"});
    auto entries = model.entriesForCleaning();
    ASSERT_TRUE(entries);
    ASSERT_EQ(entries->size(), 1u);
    EXPECT_EQ(entries->front().id, "b");

    // An equal plan does not notify, and a new preview starts with every entry checked.
    model.setCleanupPlan(plan);
    EXPECT_EQ(planChanged.count(), 1);
    ASSERT_TRUE(model.presentCleanupPlan(plan));
    EXPECT_EQ(planChanged.count(), 1);
    EXPECT_TRUE(model.cleanupExcluded().empty());
    EXPECT_EQ(model.cleanupSheetModeText(), "clean");

    model.setCleanupEntryExcluded("a", true);
    model.setCleanupEntryExcluded("b", true);
    EXPECT_FALSE(model.entriesForCleaning());
    EXPECT_EQ(model.errorMessage(), "Nothing is selected to clean.");

    const int before = sheetChanged.count();
    model.dismissCleanupSheet();
    model.dismissCleanupSheet();
    EXPECT_EQ(sheetChanged.count(), before + 1);
}

TEST(AppModelCleanup, FolderStateAfterStartAndAGrant) {
    bv::test::removeTree(XdgPaths::appDataDir());
    const std::string home = XdgPaths::home();
    bv::test::makeDir(home + "/Desktop");
    bv::test::removeTree(home + "/Downloads");

    AppModel model(true);
    model.setVolumeReader([](const std::string&, TimePoint now) { return VolumeSnapshot{now, "Disk", 100, 50}; });
    model.start();
    ASSERT_TRUE(spinUntil([&] { return !model.folderState().homePath.empty(); }));
    EXPECT_TRUE(model.folderState().homeReadable);
    EXPECT_TRUE(model.folderState().desktopReadable);
    EXPECT_FALSE(model.folderState().downloadsReadable);

    EXPECT_FALSE(model.grantFolderAccess("downloads", QString())) << "cancelled";
    EXPECT_FALSE(bv::test::exists(XdgPaths::appDataDir() + "/bookmarks.json"));

    const std::string elsewhere = bv::test::TestEnvironment::freshFolder("Downloads elsewhere");
    QSignalSpy stateChanged(&model, &AppModel::folderStateChanged);
    ASSERT_TRUE(model.grantFolderAccess("downloads", QString::fromStdString(elsewhere)));
    EXPECT_TRUE(model.folderState().downloadsReadable);
    EXPECT_EQ(model.folderState().downloadsPath, elsewhere);
    EXPECT_GE(stateChanged.count(), 1);
    EXPECT_EQ(model.folderStateMap().value("downloadsPath").toString().toStdString(), elsewhere);
    ASSERT_TRUE(spinUntil([&] { return !model.isRefreshing(); }));
}
