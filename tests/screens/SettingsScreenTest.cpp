// The settings window as a user meets it: opened while the main window is hidden (as the tray
// does), each pane photographed into BV_SCREENSHOT_DIR, permanent delete only after a full
// hold, figures clamped by their setters and saved, and the schedule for new rules leaving the
// saved Autopilot rules alone.
#include <gtest/gtest.h>

#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQmlExpression>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include "autopilot/qt/FolderRulesModel.h"
#include "core/qt/Settings.h"
#include "foundation/FileIO.h"
#include "foundation/Json.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "support/EventLoopWait.h"
#include "support/TestEnvironment.h"
#include "SaveScreenshot.h"

using namespace bv;
using bv::test::spin;

namespace {

const char* kSavedRule = R"([{"id":"6F1C3B2A-0000-4000-8000-00000000ABCD","parentPath":"/home/u/Projects","phrase":"",
  "names":["build"],"extensions":[],"directoriesOnly":true,"scope":"recursive","disposition":"trash",
  "schedule":"daily","isEnabled":true,"createdAt":"2026-11-01T10:00:00Z"}])";

std::string dataFile(const char* name) { return XdgPaths::appDataDir() + "/" + name; }

QPoint centre(QQuickItem* item) { return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint(); }

} // namespace

TEST(Screens, SettingsWindowChangesEverySettingThroughItsSetter) {
    BrimvaleSettings fresh;
    fresh.didCompleteFirstRun = true;
    test::writeFile(dataFile("settings.json"), encodeJson(fresh.toJson()));
    test::writeFile(dataFile("folder-rules.json"), kSavedRule);
    const std::string deployment = XdgPaths::appConfigDir() + "/deployment.json";
    test::writeFile(deployment, R"({"supportURL": "https://example.org/help", "privacyURL": "https://example.org/privacy"})");

    AppModel model(true);
    QQmlApplicationEngine engine;
    QQuickWindow* main = loadMainWindow(engine, model);
    ASSERT_NE(main, nullptr);
    Settings& settings = *model.settings();

    // The tray's "Settings" arrives while the main window is hidden.
    main->hide();
    ASSERT_TRUE(QMetaObject::invokeMethod(main, "openSettings"));
    auto* window = main->property("settingsWindow").value<QQuickWindow*>();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->transientParent(), nullptr);
    auto item = [&](const char* name) { return window->findChild<QQuickItem*>(name); };
    QQuickItem* tabs = item("settingsTabs");
    ASSERT_NE(tabs, nullptr);

    const char* panes[] = {"general", "alerts", "privacy", "about"};
    for (int i = 0; i < 4; ++i) {
        tabs->setProperty("currentIndex", i);
        spin(300);
        test::saveScreenshot(window, QStringLiteral("settings-%1-%2.png").arg(i + 1).arg(panes[i]));
    }
    EXPECT_TRUE(item("supportPage")->isVisible());
    EXPECT_FALSE(item("termsPage")->isVisible()) << "a page the deployment doesn't name is hidden";

    // Permanent delete: a click or a short hold leaves the Trash; a full hold turns it on,
    // and "Keep Using the Trash" turns it off in one click.
    tabs->setProperty("currentIndex", 0);
    spin(100);
    QQuickItem* hold = item("permanentHold");
    const struct { const char* what; int holdMs; bool turnsOn; } holds[] = {
        {"a click", 0, false}, {"a 1.2 s hold", 1200, false}, {"a full hold", 2300, true}};
    for (const auto& h : holds) {
        QTest::mousePress(window, Qt::LeftButton, {}, centre(hold));
        spin(h.holdMs);
        QTest::mouseRelease(window, Qt::LeftButton, {}, centre(hold));
        spin(800); // an early release drains
        EXPECT_EQ(settings.nodeModulesPermanent(), h.turnsOn) << h.what;
    }
    test::saveScreenshot(window, "settings-1-general-permanent-on.png");
    QTest::mouseClick(window, Qt::LeftButton, {}, centre(item("keepTrash")));
    spin(50);
    EXPECT_FALSE(settings.nodeModulesPermanent());

    // The schedule for new rules: the draft follows it, the saved rule keeps its own.
    const auto rulesBefore = readWholeFile(dataFile("folder-rules.json"));
    QQuickItem* schedule = item("scheduleChoice");
    schedule->forceActiveFocus();
    QTest::keyClick(window, Qt::Key_Down);
    spin(50);
    EXPECT_EQ(settings.defaultFolderScheduleName(), "weekly");
    auto* rules = model.room<FolderRulesModel>();
    EXPECT_EQ(rules->folderDraft().schedule, CleanSchedule::weekly);
    ASSERT_EQ(rules->folderRules().size(), 1u);
    EXPECT_EQ(rules->folderRules()[0].schedule, CleanSchedule::daily);
    EXPECT_EQ(readWholeFile(dataFile("folder-rules.json")), rulesBefore);

    // Any figure may be typed; the setter's clamp decides and settings.json keeps the result.
    const struct { int pane; const char* field; const char* unit; const char* typed; const char* key; qint64 held; }
        figures[] = {
            {1, "gigabytesFigure", "gigabytes", "0", "lowSpaceGigabytes", 1},
            {1, "gigabytesFigure", "gigabytes", "100000", "lowSpaceGigabytes", 2000},
            {1, "gigabytesFigure", "gigabytes", "250", "lowSpaceGigabytes", 250},
            {1, "percentFigure", "percent", "0", "lowSpacePercent", 1},
            {1, "percentFigure", "percent", "100", "lowSpacePercent", 99},
            {0, "untouchedDays", "percent", "0", "nodeModulesUntouchedDays", 1},
            {0, "untouchedDays", "percent", "45", "nodeModulesUntouchedDays", 45},
        };
    for (const auto& f : figures) {
        settings.setProperty("lowSpaceUnit", f.unit);
        tabs->setProperty("currentIndex", f.pane);
        spin(100);
        QQuickItem* field = item(f.field);
        field->forceActiveFocus();
        QTest::keyClick(window, Qt::Key_A, Qt::ControlModifier);
        for (const char* c = f.typed; *c; ++c) QTest::keyClick(window, *c);
        QTest::keyClick(window, Qt::Key_Return);
        spin(50);
        const auto saved = parseJson(readWholeFile(dataFile("settings.json")).value_or(""));
        ASSERT_TRUE(saved.has_value());
        EXPECT_EQ((*saved)[f.key].get<qint64>(), f.held) << f.field << " typed " << f.typed;
        EXPECT_EQ(settings.property(f.key).toLongLong(), f.held) << f.field << " typed " << f.typed;
        EXPECT_EQ(field->property("value").toLongLong(), f.held) << "the box shows what was kept";
    }

    // Ctrl+Tab walks the tabs; Escape first closes an open list, then the window.
    tabs->setProperty("currentIndex", 3);
    QTest::keyClick(window, Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(tabs->property("currentIndex").toInt(), 0);
    QTest::mouseClick(window, Qt::LeftButton, {}, centre(schedule));
    spin(300);
    auto* list = schedule->property("popup").value<QObject*>();
    ASSERT_TRUE(list->property("visible").toBool());
    QTest::keyClick(window, Qt::Key_Escape);
    spin(300);
    EXPECT_FALSE(list->property("visible").toBool());
    EXPECT_TRUE(window->isVisible());
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    // Ctrl+, in the main window brings the same window back.
    main->show();
    main->requestActivate();
    spin(100);
    QTest::keyClick(main, Qt::Key_Comma, Qt::ControlModifier);
    spin(100);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(main->property("settingsWindow").value<QQuickWindow*>(), window);
    // The Help menu offers only the maker's pages the deployment names (a picture to look at).
    QQmlExpression openHelp(qmlContext(main), main, "menuBar.menuAt(1).open()");
    openHelp.evaluate();
    test::saveScreenshot(main, "settings-help-menu.png");

    test::removeTree(deployment);
    test::removeTree(dataFile("folder-rules.json"));
}
