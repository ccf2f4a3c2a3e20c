#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include "core/qt/FolderAccessModel.h"
#include "foundation/FileIO.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "space/qt/SpaceStatus.h"
#include "support/EventLoopWait.h"
#include "support/TestEnvironment.h"

using namespace bv;
using bv::test::spinUntil;

// Folder access after start and after a grant; the refresh then lists the granted folder,
// not the default one.
TEST(FolderAccessModel, StateAfterStartAndAGrantAndTheRefreshFollows) {
    bv::test::removeTree(XdgPaths::appDataDir());
    const std::string home = XdgPaths::home();
    bv::test::makeDir(home + "/Desktop");
    bv::test::removeTree(home + "/Downloads");

    AppModel model(true);
    FolderAccessModel& access = *model.folderAccess();
    QAbstractItemModelTester newToday(model.room<SpaceStatus>()->newTodayFiles(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setVolumeReader([](const std::string&, TimePoint now) { return VolumeSnapshot{now, "Disk", 100, 50}; });
    model.start();
    ASSERT_TRUE(spinUntil([&] { return !access.folderState().homePath.empty() && !model.isRefreshing(); }));
    EXPECT_TRUE(access.folderState().homeReadable);
    EXPECT_TRUE(access.folderState().desktopReadable);
    EXPECT_FALSE(access.folderState().downloadsReadable);

    EXPECT_FALSE(access.grantFolderAccess("downloads", QString())) << "cancelled";
    EXPECT_FALSE(bv::test::exists(XdgPaths::appDataDir() + "/bookmarks.json"));

    const std::string elsewhere = bv::test::TestEnvironment::freshFolder("Downloads elsewhere");
    ASSERT_TRUE(writeFileAtomically(elsewhere + "/arrived.pdf", "pdf"));
    QSignalSpy stateChanged(&access, &FolderAccessModel::folderStateChanged);
    ASSERT_TRUE(access.grantFolderAccess("downloads", QString::fromStdString(elsewhere)));
    EXPECT_TRUE(access.folderState().downloadsReadable);
    EXPECT_EQ(access.folderState().downloadsPath, elsewhere);
    EXPECT_GE(stateChanged.count(), 1);
    EXPECT_EQ(access.folderStateMap().value("downloadsPath").toString().toStdString(), elsewhere);
    ASSERT_TRUE(spinUntil([&] { return !model.isRefreshing() && !model.room<SpaceStatus>()->downloadFiles().empty(); }));
    EXPECT_EQ(model.room<SpaceStatus>()->downloadFiles().front().path, elsewhere + "/arrived.pdf");
}
