#include <gtest/gtest.h>

#include <QQmlApplicationEngine>

#include "core/ActionLog.h"
#include "core/qt/ActivityLog.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "support/TestEnvironment.h"
#include "support/EventLoopWait.h"
#include "SaveScreenshot.h"

using namespace bv;
using bv::test::spin;

namespace {

// A week of ordinary use, written the way the cleaner, Auto-Sort and Build Watch write it.
std::vector<ActionLogEntry> realisticLog(TimePoint now) {
    const CalendarContext cal = CalendarContext::current();
    const TimePoint today = cal.startOfDay(now);
    const auto at = [&](int daysAgo, int hour, int minute) {
        return cal.addingHours(cal.addingDays(today, -daysAgo), hour) + std::chrono::minutes(minute);
    };
    const std::string home = XdgPaths::home();
    struct Row {
        int daysAgo, hour, minute;
        const char *title, *subtitle, *symbol;
        std::int64_t bytes;
        std::string source;
        std::optional<std::string> destination;
    };
    const Row rows[] = {
        {0, 9, 12, "Removed node_modules", "web-dashboard · untouched for 41 days", "trash", 612'400'000,
         home + "/Projects/web-dashboard/node_modules", std::nullopt},
        {0, 9, 12, "Cleared npm cache", "Rebuilds itself on the next install", "terminal", 1'830'000'000,
         home + "/.npm/_cacache", std::nullopt},
        {0, 8, 40, "Moved Quarterly report.pdf", "Auto-Sort · PDFs to Documents", "arrow.right", 0,
         home + "/Downloads/Quarterly report.pdf", home + "/Documents/Reports/Quarterly report.pdf"},
        {1, 17, 5, "Trimmed build output", "Build Watch · api-server kept under 2 GB", "hammer", 2'240'000'000,
         home + "/Projects/api-server/target/debug", std::nullopt},
        {1, 11, 30, "Removed 14 duplicate photos", "Kept the copies in Pictures/2026", "doc.on.doc", 486'000'000,
         home + "/Downloads/IMG_2031 (1).jpg", std::nullopt},
        {3, 14, 2, "Zipped old screenshots", "Auto-Sort · screenshots older than a month", "archivebox", 35'600'000,
         home + "/Desktop/Screenshots", home + "/Desktop/Screenshots.zip"},
        {5, 10, 45, "Removed leftovers of Skylark Notes", "The app was removed in October", "app.dashed", 318'000'000,
         home + "/.config/skylark-notes", std::nullopt},
    };
    std::vector<ActionLogEntry> log;
    for (const auto& r : rows)
        log.push_back({Uuid::generate(), at(r.daysAgo, r.hour, r.minute), r.title, r.subtitle, r.symbol, r.bytes,
                       r.source, r.destination});
    return log;
}

} // namespace

// History with a realistic week of activity, a search, and the clear confirmation; saved as
// PNGs beside the other screens.
TEST(Screens, HistoryWithARealisticLog) {
    const auto log = realisticLog(Clock::now());
    saveLog(AppPersistence::live(), log);

    AppModel model(true);
    model.start();
    ASSERT_EQ(model.activityLog()->logEntries().size(), log.size());
    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, model);
    ASSERT_NE(window, nullptr);
    model.focusOnSection("activity");
    spin(400);

    ActivityLog* history = model.activityLog();
    EXPECT_FALSE(history->weekBadge().isEmpty());
    EXPECT_EQ(history->entries()->rowCount(), 7);
    test::saveScreenshot(window, "history-week.png");

    history->setQuery("documents");
    spin(200);
    EXPECT_EQ(history->entries()->rowCount(), 1) << "found by the folder it went to";
    test::saveScreenshot(window, "history-search.png");
    history->setQuery("");

    // The confirmation: open it through the page's own dialog, then cancel.
    QObject* dialog = nullptr;
    for (QObject* o : engine.rootObjects().constFirst()->findChildren<QObject*>())
        if (o->metaObject()->indexOfMethod("open()") >= 0 && o->property("title").toString() == "Clear history?")
            dialog = o;
    ASSERT_NE(dialog, nullptr);
    QMetaObject::invokeMethod(dialog, "open");
    spin(400);
    EXPECT_TRUE(dialog->property("visible").toBool()) << dialog->metaObject()->className();
    test::saveScreenshot(window, "history-clear.png");
    QMetaObject::invokeMethod(dialog, "close");
    spin(100);
    EXPECT_EQ(model.activityLog()->logEntries().size(), log.size()) << "opening the confirmation clears nothing";
}
