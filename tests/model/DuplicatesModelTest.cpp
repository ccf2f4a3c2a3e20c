#include <gtest/gtest.h>

#include <QSignalSpy>

#include <QAbstractItemModelTester>

#include "clean/qt/CleanRun.h"
#include "core/qt/KeyedListModel.h"
#include "core/qt/Messages.h"
#include "model/AppModel.h"
#include "duplicates/qt/DuplicatesModel.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"

using namespace bv;
using bv::test::spinUntil;
using bv::test::TestEnvironment;
using bv::test::writeFile;

namespace {

std::string blob(std::size_t size, char c) {
    std::string s(size, c);
    for (std::size_t i = 0; i < size; i += 4093) s[i] = static_cast<char>(c + i % 7);
    return s;
}

// Two groups under a folder of Documents: three copies of a 300 KB file, two of a 150 KB one,
// and a pair of 200-byte twins that no minimum lets through.
std::string fixture() {
    const std::string root = XdgPaths::home() + "/Documents/" + std::to_string(std::rand());
    writeFile(root + "/a/song.flac", blob(300'000, 'a'));
    writeFile(root + "/b/song.flac", blob(300'000, 'a'));
    writeFile(root + "/c/song copy.flac", blob(300'000, 'a'));
    writeFile(root + "/a/scan.pdf", blob(150'000, 'b'));
    writeFile(root + "/b/scan.pdf", blob(150'000, 'b'));
    writeFile(root + "/a/tiny.txt", std::string(200, 't'));
    writeFile(root + "/b/tiny.txt", std::string(200, 't'));
    return root;
}

void scanAndWait(DuplicatesModel& d) {
    d.setMinimumBytes(100000);
    d.startScan();
    ASSERT_TRUE(spinUntil([&] { return !d.duplicatesScanning(); }));
}

} // namespace

TEST(DuplicatesModel, RootsAreSavedAndReadBack) {
    {
        AppModel model(true);
        auto& d = *model.room<DuplicatesModel>();
        QSignalSpy changed(&d, &DuplicatesModel::rootsChanged);
        d.addRoot(QUrl()); // the chooser was cancelled
        d.addRootPath("/srv/media/");
        d.addRootPath("/srv/media"); // same folder in standard form
        d.addRoot(QUrl::fromLocalFile("/srv/photos"));
        EXPECT_EQ(changed.count(), 2);
        ASSERT_EQ(d.duplicateRoots().size(), 2u);
        d.removeRoot(QString::fromStdString(d.duplicateRoots()[0].id.text()));
        d.removeRoot("not-a-uuid");
        EXPECT_EQ(changed.count(), 3);
    }
    AppModel again(true);
    ASSERT_EQ(again.room<DuplicatesModel>()->duplicateRoots().size(), 1u);
    EXPECT_EQ(again.room<DuplicatesModel>()->duplicateRoots()[0].path, "/srv/photos");
    again.room<DuplicatesModel>()->removeRoot(QString::fromStdString(again.room<DuplicatesModel>()->duplicateRoots()[0].id.text()));
}

TEST(DuplicatesModel, ScanWithoutRootsAsksForOne) {
    AppModel model(false);
    model.room<DuplicatesModel>()->startScan();
    EXPECT_EQ(model.messages()->errorText(), "Choose at least one folder to search.");
    EXPECT_FALSE(model.room<DuplicatesModel>()->duplicatesScanning());
}

TEST(DuplicatesModel, ScanFindsGroupsAndKeepsTheLowestPath) {
    AppModel model(false);
    auto& d = *model.room<DuplicatesModel>();
    const auto root = fixture();
    d.addRootPath(QString::fromStdString(root));
    d.setMinimumBytes(100); // raised to 100000: the tiny twins are never compared
    QSignalSpy scanning(&d, &DuplicatesModel::scanningChanged);
    d.startScan();
    EXPECT_TRUE(d.duplicatesScanning());
    EXPECT_EQ(d.progressText(), "Looking at files…");
    d.startScan(); // ignored while one runs
    ASSERT_TRUE(spinUntil([&] { return !d.duplicatesScanning(); }));
    EXPECT_EQ(scanning.count(), 2);
    EXPECT_TRUE(d.progressText().isEmpty());
    EXPECT_TRUE(d.hasScannedDuplicates());
    ASSERT_EQ(d.duplicateGroups().size(), 2u);
    EXPECT_EQ(d.duplicateGroups()[0].reclaimableBytes, 600'000) << "largest first";
    EXPECT_EQ(d.duplicateKeep().at(d.duplicateGroups()[0].id), root + "/a/song.flac");
    EXPECT_EQ(d.badge(), "750 KB");
    EXPECT_EQ(d.summary(), "2 groups · 750 KB to free");
    QAbstractItemModel& groups = *d.groups();
    const auto role = [](QAbstractItemModel& m, int row, const char* name) {
        return m.data(m.index(row, 0), m.roleNames().key(name));
    };
    EXPECT_EQ(role(groups, 0, "detail").toString(), "3 copies of 300 KB · 600 KB to free");
    auto* files = qobject_cast<QAbstractItemModel*>(role(groups, 0, "files").value<QObject*>());
    ASSERT_TRUE(files);
    ASSERT_EQ(files->rowCount(), 3);
    EXPECT_TRUE(role(*files, 0, "isKept").toBool());
    EXPECT_FALSE(role(*files, 1, "isKept").toBool());
}

TEST(DuplicatesModel, StoppingKeepsTheEarlierGroupsAndAStaleAnswerIsDropped) {
    AppModel model(false);
    auto& d = *model.room<DuplicatesModel>();
    const auto root = fixture();
    d.addRootPath(QString::fromStdString(root));
    scanAndWait(d);
    const auto before = d.duplicateGroups();
    ASSERT_EQ(before.size(), 2u);

    writeFile(root + "/d/song.flac", blob(300'000, 'a')); // a scan run to the end would see this
    QSignalSpy groupsChanged(&d, &DuplicatesModel::groupsChanged);
    d.startScan();
    d.stopScan();
    ASSERT_TRUE(spinUntil([&] { return !d.duplicatesScanning(); }));
    EXPECT_EQ(d.duplicateGroups(), before);
    EXPECT_EQ(groupsChanged.count(), 0);
    EXPECT_TRUE(d.hasScannedDuplicates());

    // An answer carrying an old token changes nothing.
    d.finishScan(Uuid::generate(), nullptr, {});
    EXPECT_EQ(d.duplicateGroups(), before);
}

TEST(DuplicatesModel, ReviewsOpenThePreviewWithTheChosenKeeper) {
    AppModel model(false);
    auto& d = *model.room<DuplicatesModel>();
    d.reviewAll();
    EXPECT_EQ(model.messages()->errorText(), "Nothing to clean. Scan for duplicates first.");
    model.messages()->dismissError();

    const auto root = fixture();
    d.addRootPath(QString::fromStdString(root));
    QAbstractItemModelTester tester(d.groups(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    scanAndWait(d);
    const QString songs = QString::fromStdString(d.duplicateGroups()[0].id);
    auto* files = qobject_cast<KeyedListModel*>(
        qvariant_cast<QObject*>(d.groups()->data(d.groups()->index(0, 0), Qt::UserRole + 5)));
    ASSERT_TRUE(files);
    QAbstractItemModelTester fileTester(files, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy groupReset(d.groups(), &QAbstractItemModel::modelReset);
    QSignalSpy fileChanged(files, &QAbstractItemModel::dataChanged);
    d.keepCopy(songs, QString::fromStdString(root + "/b/song.flac"));
    EXPECT_EQ(groupReset.count(), 0) << "a new keeper changes rows, it does not reset the list";
    EXPECT_EQ(fileChanged.count(), 2) << "the old keeper and the new one";
    d.keepCopy(songs, "/not/in/the/group"); // ignored
    EXPECT_EQ(d.duplicateKeep().at(songs.toStdString()), root + "/b/song.flac");

    d.reviewAll();
    ASSERT_TRUE(model.room<CleanRun>()->plan());
    EXPECT_EQ(model.room<CleanRun>()->plan()->entries.size(), 3u);
    EXPECT_TRUE(model.room<CleanRun>()->isSheetPresented());
    for (const auto& e : model.room<CleanRun>()->plan()->entries) EXPECT_NE(e.path, root + "/b/song.flac");

    d.reviewGroup(songs);
    ASSERT_EQ(model.room<CleanRun>()->plan()->entries.size(), 2u);
    EXPECT_EQ(model.room<CleanRun>()->plan()->entries[0].recheck->keeperPath, root + "/b/song.flac");

    d.reviewCopy(songs, QString::fromStdString(root + "/c/song copy.flac"));
    ASSERT_EQ(model.room<CleanRun>()->plan()->entries.size(), 1u);
    EXPECT_EQ(model.room<CleanRun>()->plan()->entries[0].path, root + "/c/song copy.flac");

    // Removing the root after the scan turns its copies into notes.
    d.removeRoot(QString::fromStdString(d.duplicateRoots()[0].id.text()));
    d.reviewAll();
    EXPECT_TRUE(model.room<CleanRun>()->plan()->entries.empty());
    EXPECT_EQ(model.room<CleanRun>()->plan()->refusals.size(), 3u);
}
