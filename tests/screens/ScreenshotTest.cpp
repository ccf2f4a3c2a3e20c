#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include "model/AppModel.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"

using namespace bv;
using bv::test::spin;

// Renders the main window offscreen and saves one PNG per section into the build folder
// (BV_SCREENSHOT_DIR), so every screen can be looked at without a display. The home is
// the test's temporary one, with a few files that arrived today.
TEST(Screens, EverySectionRendersAndIsSaved) {
    const std::string home = XdgPaths::home();
    test::writeFile(home + "/Downloads/Quarterly report.pdf", std::string(2'400'000, 'r'));
    test::writeFile(home + "/Downloads/photos-2026.zip", std::string(8'100'000, 'z'));
    test::writeFile(home + "/Desktop/Screenshot 2026-11-22.png", std::string(640'000, 's'));

    AppModel model(true);
    model.start();
    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, model);
    ASSERT_NE(window, nullptr) << "Main.qml failed to load";
    EXPECT_EQ(window->title(), "Brimvale");
    EXPECT_EQ(window->width(), 1120);
    EXPECT_EQ(window->height(), 760);

    bv::test::spinUntil([&] { return !model.isRefreshing(); }, 5000);

    const QString dir = qEnvironmentVariable("BV_SCREENSHOT_DIR", QDir::tempPath() + "/brimvale-screenshots");
    QDir().mkpath(dir);
    for (const auto& info : sidebarSections()) {
        const QString name = QString::fromUtf8(info.name.data(), static_cast<int>(info.name.size()));
        model.focusOnSection(name);
        spin(150);
        EXPECT_EQ(model.currentScreen(), name);
        const QImage image = window->grabWindow();
        ASSERT_FALSE(image.isNull());
        EXPECT_EQ(image.width(), 1120);
        // A real page paints more than a handful of colours.
        QSet<QRgb> colours;
        for (int y = 0; y < image.height(); y += 7)
            for (int x = 0; x < image.width(); x += 7) colours.insert(image.pixel(x, y));
        EXPECT_GT(colours.size(), 8) << name.toStdString();
        EXPECT_TRUE(image.save(dir + "/" + QString::number(info.key) + "-" + name + ".png"));
    }
    // The selection is kept for the next start.
    EXPECT_EQ(model.storedSelection(), "autoArrange");
}
