#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <QQmlApplicationEngine>

#include "model/AppModel.h"
#include "space/qt/SpaceMapModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"
#include "SaveScreenshot.h"

using namespace bv;
using bv::test::spin;

namespace {

// A file that takes `bytes` of disk without writing them.
void allocate(const std::string& path, long long bytes) {
    test::writeFile(path, "");
    const int fd = ::open(path.c_str(), O_WRONLY);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::posix_fallocate(fd, 0, bytes), 0);
    ::close(fd);
}

void mapAndWait(SpaceMapModel& sm) {
    sm.start();
    ASSERT_TRUE(bv::test::spinUntil([&] { return !sm.scanning(); }));
}

void save(QQuickWindow* window, const QString& name) {
    spin(200);
    bv::test::saveScreenshot(window, name);
}

} // namespace

// Maps a realistic folder through the real scan, shows it, then saves a snapshot, changes
// the folder, maps it again and compares: one screenshot of each.
TEST(Screens, SpaceMapShowsAMapAndAComparison) {
    const std::string root = XdgPaths::home() + "/Space Map Sample";
    allocate(root + "/Videos/holiday.mkv", 420'000'000);
    allocate(root + "/Videos/Clips/clip-1.mp4", 90'000'000);
    allocate(root + "/Projects/app/node_modules/pkg/index.js", 160'000'000);
    allocate(root + "/Projects/app/build/out.bin", 60'000'000);
    allocate(root + "/Pictures/2026/IMG_0001.jpg", 120'000'000);
    allocate(root + "/Documents/Thesis.pdf", 45'000'000);
    allocate(root + "/Music/Album/Track 1.flac", 80'000'000);
    allocate(root + "/Downloads/installer.iso", 210'000'000);
    test::writeFile(root + "/notes.txt", "hello");

    AppModel model(true);
    model.start();
    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, model);
    ASSERT_NE(window, nullptr);
    SpaceMapModel& sm = *model.spaceMap();
    sm.chooseRoot(QString::fromStdString(root));
    mapAndWait(sm);
    ASSERT_TRUE(sm.hasMap());
    EXPECT_EQ(sm.nodeChildren()->rowCount(), 6);
    model.focusOnSection("space");
    save(window, "space-map.png");

    sm.saveSnapshot();
    allocate(root + "/Downloads/another.iso", 300'000'000);
    test::removeTree(root + "/Videos/Clips");
    allocate(root + "/Projects/app/build/out2.bin", 40'000'000);
    mapAndWait(sm);
    sm.compareWith(QString::fromStdString(sm.snapshotList().front().id.text()));
    EXPECT_GE(sm.deltas().size(), 3);
    window->resize(1120, 1500);
    save(window, "space-map-compare.png");
    test::removeTree(root);
}
