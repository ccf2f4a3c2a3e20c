#include <gtest/gtest.h>

#include <QQmlApplicationEngine>
#include <QQuickItem>

#include <cstdio>

#include "arrange/qt/ArrangeLive.h"
#include "core/qt/ActivityLog.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "support/EventLoopWait.h"
#include "support/TestEnvironment.h"
#include "SaveScreenshot.h"

using namespace bv;
using bv::test::spin;
using bv::test::spinUntil;

namespace {

bool showsText(QQuickItem* item, const QString& wanted) {
    if (!item || !item->isVisible()) return false;
    if (item->property("text").toString() == wanted) return true;
    for (QQuickItem* child : item->childItems())
        if (showsText(child, wanted)) return true;
    return false;
}

} // namespace

// The whole road on the real program: the page with no pattern, a pattern saved while a file
// that matches was already there (it stays and is offered), a download still in progress,
// and that download moving through the watcher, the debounce and a sweep once it finishes.
TEST(Screens, AutoArrangeFromFirstPatternToAFinishedDownload) {
    const std::string downloads = XdgPaths::downloads();
    const std::string invoices = XdgPaths::home() + "/Documents/Invoices";
    test::writeFile(downloads + "/vk-2025-11.pdf", "old invoice");
    AppModel model(true);
    ArrangeLive& live = *model.room<ArrangeLive>();
    live.start(); // what the model's start does for it, without the rest of the start-up
    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, model);
    ASSERT_NE(window, nullptr) << "Main.qml failed to load";
    model.focusOnSection("autoArrange");
    spin(300);
    EXPECT_TRUE(showsText(window->contentItem(), "YOUR FIRST PATTERN"));
    test::saveScreenshot(window, "auto-arrange-empty.png");

    EXPECT_EQ(live.savePattern("vk-", QString::fromStdString(invoices)), QString());
    EXPECT_EQ(live.savePattern("vk-*", QString::fromStdString(invoices)),
              QString::fromUtf8("\u201Cvk-*\u201D already goes to Invoices. Change that one instead."));
    ASSERT_TRUE(spinUntil([&] { return !live.offer().isEmpty(); }, 5000)) << "the file already there is offered";
    EXPECT_TRUE(test::exists(downloads + "/vk-2025-11.pdf"));
    live.clearOffer();
    spin(300);
    EXPECT_TRUE(showsText(window->contentItem(), "Watching Downloads. Nothing moved yet."));
    test::saveScreenshot(window, "auto-arrange-pattern.png");

    test::writeFile(downloads + "/vk-2025-12.pdf.crdownload", std::string(300000, 'x'));
    ASSERT_TRUE(spinUntil([&] { return live.settling().contains("vk-2025-12.pdf"); }, 8000));
    spin(200);
    test::saveScreenshot(window, "auto-arrange-waiting.png");

    ASSERT_EQ(std::rename((downloads + "/vk-2025-12.pdf.crdownload").c_str(), (downloads + "/vk-2025-12.pdf").c_str()), 0);
    ASSERT_TRUE(spinUntil([&] { return test::exists(invoices + "/vk-2025-12.pdf"); }, 12000));
    spin(300);
    EXPECT_TRUE(test::exists(downloads + "/vk-2025-11.pdf")) << "the older file stays until Arrange now";
    EXPECT_TRUE(showsText(window->contentItem(), QString::fromUtf8("Watching Downloads. 1 file moved, the last \u201Cvk-2025-12.pdf\u201D.")));
}
