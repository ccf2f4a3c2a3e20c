// A tour of the screens as a user meets them, each on a temporary home filled the way people
// fill theirs. Every stop checks something a user would notice and saves a PNG into
// BV_SCREENSHOT_DIR, so each screen can be looked at without a display.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <thread>

#include <QDir>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>

#include "clean/qt/CleanRun.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/ActionLog.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/Messages.h"
#include "duplicates/qt/DuplicatesModel.h"
#include "model/AppModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "space/qt/SpaceMapModel.h"
#include "space/qt/StorageSurveyModel.h"
#include "support/DevCacheHome.h"
#include "support/EventLoopWait.h"
#include "SaveScreenshot.h"
#include "support/TestEnvironment.h"

using namespace bv;
using bv::test::saveScreenshot;
using bv::test::spin;
using bv::test::spinUntil;

namespace {

// The main window over a model the test has set up; `shoot` lets it settle, then saves it.
struct Screen {
    AppModel model{true};
    QQmlApplicationEngine engine;
    QQuickWindow* window = nullptr;

    bool open(bool startModel = true) {
        if (startModel) model.start();
        window = loadMainWindow(engine, model);
        return window != nullptr;
    }
    void shoot(const QString& name, int settleMs = 200) {
        spin(settleMs);
        QCoreApplication::processEvents();
        saveScreenshot(window, name);
    }
};

// A file that takes `bytes` of disk without writing them.
void allocate(const std::string& path, long long bytes) {
    test::writeFile(path, "");
    const int fd = ::open(path.c_str(), O_WRONLY);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::posix_fallocate(fd, 0, bytes), 0);
    ::close(fd);
}

std::string media(std::size_t size, char seed) {
    std::string s(size, seed);
    for (std::size_t i = 0; i < size; i += 3001) s[i] = static_cast<char>(seed + i % 11);
    return s;
}

// Every visible text in the window, to find the screen's own words in it.
void collectTexts(QQuickItem* item, QStringList& out) {
    if (!item) return;
    const QVariant text = item->property("text");
    if (text.isValid() && item->isVisible()) out << text.toString();
    for (QQuickItem* child : item->childItems()) collectTexts(child, out);
}

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

// The cleanup sheet before, during and after a run of three Trash moves; the unticked
// permanent entry stays on disk.
TEST(ScreenTour, CleanupSheetBeforeDuringAndAfterARun) {
    const std::string home = XdgPaths::home();
    CleanupPlan plan;
    auto add = [&](const std::string& id, const std::string& title, const std::string& group, std::int64_t bytes,
                   bool permanent, const std::string& note) {
        CleanupEntry e;
        e.id = id;
        e.title = title;
        e.path = home + "/.cache/sheet/" + id;
        e.bytes = bytes;
        e.note = note;
        e.group = group;
        e.symbolName = permanent ? "trash.slash" : "trash";
        e.allowRoot = home + "/.cache";
        if (permanent) {
            e.origin = CleanupOrigin::folderRule;
            e.parentPath = home + "/.cache/sheet";
            e.disposition = CleanupDisposition::permanent;
            e.tier = CleanupTier::userData;
        }
        test::makeDir(e.path);
        test::writeSizedFile(e.path + "/blob", 20000);
        plan.entries.push_back(e);
    };
    add("pip", "Python packages", "Packages", 1'240'000'000, false, "Comes back the next time you install packages.");
    add("yarn", "Yarn cache", "Packages", 386'000'000, false, "Comes back the next time you install packages.");
    add("gradle", "Gradle downloads", "Build tools", 2'900'000'000, false, "Downloaded again on the next build.");
    add("renders", "Old renders", "exports", 58'000'000, true, "Matched by your rule; removed for good.");
    plan.refusals = {"~/.ssh/keys-backup was left alone: it is in a protected folder."};

    Screen s;
    ASSERT_TRUE(s.open());
    Cleaner::Environment env;
    env.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    env.beforeAction = [](const CleanupEntry&) { std::this_thread::sleep_for(std::chrono::milliseconds(500)); };
    CleanRun& run = *s.model.cleanRun();
    run.setCleanerEnvironment(env);

    run.presentPlan(plan);
    s.shoot("cleanup-sheet-before.png", 300);
    run.setEntryTicked("renders", false); // leaves only Trash moves: the plain button
    run.confirm();
    ASSERT_TRUE(spinUntil([&] { return run.step() == 1 && run.fraction() >= 0.25; }));
    s.shoot("cleanup-sheet-during.png", 0);
    ASSERT_TRUE(spinUntil([&] { return run.phase() == CleanRun::Phase::success; }));
    s.shoot("cleanup-sheet-after.png", 100);
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));
    EXPECT_TRUE(test::exists(home + "/.cache/sheet/renders")) << "the unticked entry stays";
}

// Copies the way people make them: photos saved twice from a phone backup, an album ripped
// twice, a tax return downloaded again, a hard-linked video. A keeper is picked in the middle
// of one group and the screen's own words are on show.
TEST(ScreenTour, DuplicatesShowsGroupsWithKeepers) {
    const std::string home = XdgPaths::home();
    // Other screens' tests leave their own copies in the shared home; this one searches a
    // folder of its own.
    const std::string root = home + "/Copies";
    test::removeTree(root);
    const auto photo = media(4'200'000, 'p');
    test::writeFile(root + "/Pictures/Holiday 2025/IMG_2041.jpg", photo);
    test::writeFile(root + "/Pictures/Phone backup/IMG_2041.jpg", photo);
    test::writeFile(root + "/Downloads/IMG_2041 (1).jpg", photo);
    const auto song = media(38'500'000, 's');
    test::writeFile(root + "/Music/Sólstafir – Berdreyminn/01 Silfur-Refur.flac", song);
    test::writeFile(root + "/Music/Imported/01 Silfur-Refur.flac", song);
    const auto tax = media(1'250'000, 't');
    test::writeFile(root + "/Documents/Taxes/2025 return.pdf", tax);
    test::writeFile(root + "/Downloads/2025 return.pdf", tax);
    test::writeFile(root + "/Movies/clip.mov", media(12'000'000, 'm'));
    ASSERT_EQ(::link((root + "/Movies/clip.mov").c_str(), (root + "/Movies/clip link.mov").c_str()), 0);

    Screen s;
    auto& d = *s.model.duplicates();
    d.addRootPath(QString::fromStdString(root));
    d.setMinimumBytes(100000);
    ASSERT_TRUE(s.open(false));
    s.model.focusOnSection("duplicates");
    d.startScan();
    ASSERT_TRUE(spinUntil([&] { return !d.duplicatesScanning(); }, 20000));
    ASSERT_EQ(d.duplicateGroups().size(), 4u);
    const auto& photos = d.duplicateGroups()[1];
    ASSERT_EQ(photos.files.size(), 3u);
    d.keepCopy(QString::fromStdString(photos.id), QString::fromStdString(photos.files[1].path));
    spin(300);

    QStringList texts;
    collectTexts(s.window->contentItem(), texts);
    for (const char* expected : {"EXTRA COPIES · LARGEST FIRST", "This copy stays", "Not kept", "Keep this copy instead",
                                 "Review & Clean All", "Clean group", "Files smaller than this are not compared",
                                 "Scan", "100 KB", "1 MB", "10 MB", "100 MB", "4 groups · 48.2 MB to free"})
        EXPECT_TRUE(texts.contains(QString::fromUtf8(expected)) || texts.contains(QString::fromUtf8(expected).replace("&", "&&")))
            << expected;
    EXPECT_TRUE(texts.contains("48.2 MB")) << "the sidebar badge";
    s.shoot("duplicates-groups.png", 0);
}

// History with a realistic week, a search, and the clear confirmation opened and cancelled.
TEST(ScreenTour, HistoryWithARealisticLog) {
    const auto log = realisticLog(Clock::now());
    saveLog(AppPersistence::live(), log);

    Screen s;
    ASSERT_TRUE(s.open());
    ActivityLog* history = s.model.activityLog();
    ASSERT_EQ(history->logEntries().size(), log.size());
    s.model.focusOnSection("activity");
    spin(400);
    EXPECT_FALSE(history->weekBadge().isEmpty());
    EXPECT_EQ(history->entries()->rowCount(), 7);
    s.shoot("history-week.png");

    history->setQuery("documents");
    s.shoot("history-search.png");
    EXPECT_EQ(history->entries()->rowCount(), 1) << "found by the folder it went to";
    history->setQuery("");

    // The confirmation: open it through the page's own dialog, then cancel.
    QObject* dialog = nullptr;
    for (QObject* o : s.engine.rootObjects().constFirst()->findChildren<QObject*>())
        if (o->metaObject()->indexOfMethod("open()") >= 0 && o->property("title").toString() == "Clear history?")
            dialog = o;
    ASSERT_NE(dialog, nullptr);
    QMetaObject::invokeMethod(dialog, "open");
    spin(400);
    EXPECT_TRUE(dialog->property("visible").toBool()) << dialog->metaObject()->className();
    s.shoot("history-clear.png", 0);
    QMetaObject::invokeMethod(dialog, "close");
    spin(100);
    EXPECT_EQ(history->logEntries().size(), log.size()) << "opening the confirmation clears nothing";
}

// Every section at the default size and at 1400 x 900, then the two alerts: an error and the
// notice after a clean.
TEST(ScreenTour, EverySectionRendersAndIsSaved) {
    const std::string home = XdgPaths::home();
    test::writeFile(home + "/Downloads/Quarterly report.pdf", std::string(2'400'000, 'r'));
    test::writeFile(home + "/Downloads/photos-2026.zip", std::string(8'100'000, 'z'));
    test::writeFile(home + "/Desktop/Screenshot 2026-11-22.png", std::string(640'000, 's'));

    Screen s;
    ASSERT_TRUE(s.open()) << "Main.qml failed to load";
    QQuickWindow* window = s.window;
    spinUntil([&] { return !s.model.isRefreshing(); }, 5000);
    for (const QSize size : {QSize(1120, 760), QSize(1400, 900)}) {
        window->resize(size);
        const QString suffix = size.width() == 1120 ? QString() : QStringLiteral("-1400");
        for (const auto& info : sidebarSections()) {
            const QString name = QString::fromUtf8(info.name.data(), static_cast<int>(info.name.size()));
            s.model.focusOnSection(name);
            spin(150);
            EXPECT_EQ(s.model.currentScreen(), name);
            const QImage image = window->grabWindow();
            ASSERT_EQ(image.width(), size.width());
            // A real page paints more than a handful of colours.
            QSet<QRgb> colours;
            for (int y = 0; y < image.height(); y += 7)
                for (int x = 0; x < image.width(); x += 7) colours.insert(image.pixel(x, y));
            EXPECT_GT(colours.size(), 8) << name.toStdString();
            saveScreenshot(window, QString::number(info.key) + "-" + name + suffix + ".png");
        }
    }
    window->resize(1120, 760);
    Messages& messages = *s.model.messages();
    messages.setErrorMessage("Nothing is selected to clean.");
    s.shoot("alert-error.png");
    messages.dismissError();
    messages.setCleanupNotice(CleanupNotice{
        "They\u2019re in the Trash", "3 items went to the Trash. To bring one back, open the Trash in your file "
                                       "manager and choose Restore. Empty the Trash to get the space back."});
    s.shoot("alert-notice.png");
    // The alert is a readable box in the middle, not a strip across the window.
    auto* notice = window->findChild<QObject*>("noticeDialog");
    ASSERT_TRUE(notice);
    EXPECT_LE(notice->property("width").toDouble(), 440);
    messages.dismissCleanupNotice();
    EXPECT_EQ(s.model.storedSelection(), "autoArrange") << "the selection is kept for the next start";
}

// Smart Clean and the Overview with a programmer's caches: the scan's cards with the
// recommended rows ticked, the preview, and the Overview after the clean with its measured line.
TEST(ScreenTour, SmartCleanThenTheOverviewAfterTheClean) {
    (void)bv::test::writeDevCacheHome(XdgPaths::home());
    Screen s;
    AppModel& model = s.model;
    // A fixed disk reading that drops by what the clean moved, so the run's measurement ends.
    std::int64_t free = 41'300'000'000;
    model.setVolumeReader([&free](const std::string&, TimePoint now) { return VolumeSnapshot{now, "Home", 494'380'000'000, free}; });
    model.cleanRun()->setTiming({30, 10, 10, 400, 40});
    Cleaner::Environment quiet;
    quiet.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    model.cleanRun()->setCleanerEnvironment(quiet);
    ASSERT_TRUE(s.open()) << "Main.qml failed to load";
    SmartCleanModel& smart = *model.smartClean();
    ASSERT_TRUE(spinUntil([&] { return smart.hasScanned() && !smart.scanning() && !model.isRefreshing(); }));

    model.focusOnSection("overview");
    s.shoot("overview-before-clean.png");

    model.focusOnSection("devMode");
    smart.selectRecommended();
    s.shoot("smart-clean-selected.png");
    QAbstractItemModel& cards = *smart.cards();
    ASSERT_GT(cards.rowCount(), 0);
    // The build tool card keeps its newest copy and says so.
    const int keptRole = cards.roleNames().key("keptLine");
    bool keptLine = false;
    for (int i = 0; i < cards.rowCount(); ++i)
        keptLine |= cards.data(cards.index(i, 0), keptRole).toString() == "The newest copy stays.";
    EXPECT_TRUE(keptLine);

    smart.preview();
    ASSERT_TRUE(spinUntil([&] { return model.cleanRun()->isSheetPresented(); }));
    s.shoot("smart-clean-preview.png");

    model.cleanRun()->confirm();
    ASSERT_TRUE(spinUntil([&] { return !model.cleanRun()->isSheetPresented(); }));
    ASSERT_TRUE(spinUntil([&] { return !smart.scanning(); }));
    model.messages()->dismissCleanupNotice();
    model.focusOnSection("overview");
    s.shoot("overview-after-clean.png", 300);
    EXPECT_FALSE(model.cleanRun()->afterCleanLine().isEmpty());
}

// A realistic folder mapped through the real scan, then a snapshot, a changed folder, a second
// map and the comparison.
TEST(ScreenTour, SpaceMapShowsAMapAndAComparison) {
    const std::string root = XdgPaths::home() + "/Space Map Sample";
    allocate(root + "/Videos/holiday.mkv", 420'000'000);
    allocate(root + "/Videos/Clips/clip-1.mp4", 90'000'000);
    allocate(root + "/Projects/app/node_modules/pkg/index.js", 160'000'000);
    allocate(root + "/Projects/app/build/out.bin", 60'000'000);
    allocate(root + "/Pictures/2026/IMG_0001.jpg", 120'000'000);
    allocate(root + "/Documents/Thesis.pdf", 45'000'000);
    allocate(root + "/Music/Album/Track 1.flac", 80'000'000);
    allocate(root + "/Music/Album/Track 2.flac", 50'000'000);
    test::makeDir(root + "/Backups/Album");
    ASSERT_EQ(::link((root + "/Music/Album/Track 2.flac").c_str(), (root + "/Backups/Album/Track 2.flac").c_str()), 0);
    allocate(root + "/Downloads/installer.iso", 210'000'000);
    test::writeFile(root + "/notes.txt", "hello");

    Screen s;
    ASSERT_TRUE(s.open());
    SpaceMapModel& sm = *s.model.spaceMap();
    const auto mapAndWait = [&] {
        sm.start();
        return spinUntil([&] { return !sm.scanning(); });
    };
    sm.chooseRoot(QString::fromStdString(root));
    ASSERT_TRUE(mapAndWait());
    ASSERT_TRUE(sm.hasMap());
    EXPECT_EQ(sm.nodeChildren()->rowCount(), 7);
    s.model.focusOnSection("space");
    s.shoot("space-map.png");
    // The linked track counts once, in Backups (its smaller path); Music says it shares it.
    sm.openChild(QString::fromStdString(root + "/Music"));
    EXPECT_EQ(sm.nodeSharedText(), "Shares 50 MB with other folders through hard links");
    s.shoot("space-map-shared.png");
    sm.goBack();

    sm.saveSnapshot();
    allocate(root + "/Downloads/another.iso", 300'000'000);
    test::removeTree(root + "/Videos/Clips");
    allocate(root + "/Projects/app/build/out2.bin", 40'000'000);
    ASSERT_TRUE(mapAndWait());
    sm.compareWith(QString::fromStdString(sm.snapshotList().front().id.text()));
    EXPECT_GE(sm.deltas().size(), 3);
    s.window->resize(1120, 1500);
    s.shoot("space-map-compare.png");
    test::removeTree(root);
}

// The three survey pieces on their own page, as the Overview places them, drawn from a real
// survey of the home with a Trash above the listing floor and without a single QML warning.
TEST(ScreenTour, StorageSurveyPiecesDrawTheSurveyWithoutWarnings) {
    const std::string trashFile = XdgPaths::dataHome() + "/Trash/files/old-disk.img";
    test::writeSizedFile(XdgPaths::downloads() + "/installer.iso", 3'000'000);
    allocate(trashFile, 210'000'000);

    Screen s;
    s.model.survey()->setPlaces([] {
        SurveyPlaces places = SurveyPlaces::current();
        places.coverage.resize(1); // the Trash alone: the machine's own places vary
        return places;
    });
    s.model.applySnapshot({s.model.now(), "Test Disk", 500'000'000'000, 120'000'000'000});
    s.model.survey()->survey(true);
    spin(300);
    ASSERT_TRUE(spinUntil([&] { return !s.model.survey()->scanning(); }));
    ASSERT_EQ(s.model.survey()->coverageItems().size(), 1u);

    ASSERT_TRUE(s.open(false));
    QList<QQmlError> warnings;
    QObject::connect(&s.engine, &QQmlEngine::warnings, [&](const QList<QQmlError>& w) { warnings += w; });
    QQmlComponent component(&s.engine);
    component.setData(R"(
import QtQuick
import QtQuick.Layouts
import Brimvale
Window {
    width: 640; height: 720; visible: true; color: Theme.window
    ColumnLayout {
        anchors.fill: parent; anchors.margins: 20; spacing: 16
        StorageBar {}
        TopSpaceUsers {}
        CoverageList {}
        Item { Layout.fillHeight: true }
    }
}
)", QUrl(QStringLiteral("qrc:/StorageSurveyPage.qml")));
    std::unique_ptr<QObject> page(component.create());
    ASSERT_TRUE(page) << component.errorString().toStdString();
    auto* window = qobject_cast<QQuickWindow*>(page.get());
    ASSERT_NE(window, nullptr);
    QCoreApplication::processEvents();
    for (const auto& w : warnings) ADD_FAILURE() << w.toString().toStdString();
    saveScreenshot(window, "storage-survey.png");
    ::unlink(trashFile.c_str());
}
