#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>

#include "core/AppModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace std::chrono_literals;

namespace {

constexpr std::int64_t GB = 1'000'000'000;

// The visible control whose text is `text`, searched below `root`.
QQuickItem* control(QQuickItem* root, const QString& text) {
    for (QQuickItem* item : root->findChildren<QQuickItem*>())
        if (item->property("text").toString() == text && item->isVisible()) return item;
    return nullptr;
}

void press(QQuickItem* root, const QString& text) {
    QQuickItem* button = control(root, text);
    ASSERT_NE(button, nullptr) << text.toStdString() << " is not on screen";
    QMetaObject::invokeMethod(button, "clicked");
    QTest::qWait(30);
}

} // namespace

// The banner on its own, over the real main window of a started model: each state is drawn
// and saved beside the other screenshots, and each button reaches the model.
TEST(Screens, LowSpaceBannerFollowsTheModel) {
    test::removeTree(XdgPaths::appDataDir());
    test::removeTree(XdgPaths::appConfigDir());
    TimePoint now = *parseIsoDate("2026-11-22T08:00:00Z");
    VolumeSnapshot disk{now, "Test Disk", 500 * GB, 100 * GB};
    AppModel model(true);
    model.setVolumeReader([&](const std::string&, TimePoint) { return disk; });
    model.setNow([&] { return now; });
    model.start();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !model.isRefreshing(); }, 5000));

    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, model);
    ASSERT_NE(window, nullptr);
    QQmlComponent component(&engine, QUrl(QStringLiteral("qrc:/Brimvale/LowSpaceBanner.qml")));
    std::unique_ptr<QQuickItem> banner(qobject_cast<QQuickItem*>(component.create()));
    ASSERT_NE(banner, nullptr) << component.errorString().toStdString();
    banner->setParentItem(window->contentItem());
    banner->setPosition({40, 40});
    banner->setWidth(820);
    banner->setZ(100);

    const QString dir = qEnvironmentVariable("BV_SCREENSHOT_DIR", QDir::tempPath() + "/brimvale-screenshots");
    QDir().mkpath(dir);
    auto sample = [&](std::int64_t freeBytes, const char* shot) {
        now += 10min;
        disk = {now, "Test Disk", 500 * GB, freeBytes};
        model.applySnapshot(disk);
        QTest::qWait(60);
        if (shot) {
            EXPECT_TRUE(window->grabWindow().save(dir + "/low-space-" + shot + ".png"));
        }
    };

    sample(60 * GB, nullptr);
    EXPECT_FALSE(banner->isVisible()) << "plenty of space: no banner";

    sample(30 * GB, "warning");
    ASSERT_TRUE(banner->isVisible());
    EXPECT_NE(control(banner.get(), "Low on space: 30 GB left"), nullptr);
    // The main window takes the request at once, so the request itself is what is seen.
    QSignalSpy review(&model, &AppModel::wantsCleanupSheetChanged);
    press(banner.get(), "Review && Clean");
    EXPECT_GE(review.count(), 1);

    press(banner.get(), "Dismiss");
    EXPECT_TRUE(model.lowSpaceBannerFolded());
    EXPECT_TRUE(banner->isVisible());
    EXPECT_EQ(control(banner.get(), "Dismiss"), nullptr) << "folded to one line";
    if (!window->grabWindow().save(dir + "/low-space-folded.png")) ADD_FAILURE() << "screenshot not saved";
    press(banner.get(), "Show");
    EXPECT_FALSE(model.lowSpaceBannerFolded());

    press(banner.get(), "Hide this warning until free space drops further");
    EXPECT_TRUE(model.lowSpaceNoticeHidden());
    EXPECT_FALSE(banner->isVisible());

    sample(8 * GB, "critical");
    ASSERT_TRUE(banner->isVisible()) << "critical comes back";
    EXPECT_EQ(control(banner.get(), "Hide this warning until free space drops further"), nullptr);
    EXPECT_NE(control(banner.get(), "Low on space: 8 GB left"), nullptr);

    sample(50 * GB, nullptr);
    EXPECT_FALSE(banner->isVisible());
}
