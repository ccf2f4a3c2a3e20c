// A tour of the screens as a user meets them, each on a temporary home filled the way people
// fill theirs. Every stop checks something a user would notice and saves a PNG into
// BV_SCREENSHOT_DIR, so each screen can be looked at without a display.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include <QDir>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>

#include "autopilot/FolderWatchRule.h"
#include "autopilot/qt/FolderRulesModel.h"
#include "buildwatch/qt/BuildWatchModel.h"
#include "clean/qt/CleanRun.h"
#include "clean/qt/SmartCleanFinds.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/ActionLog.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/Messages.h"
#include "duplicates/qt/DuplicatesModel.h"
#include "clean/Cleaner.h"
#include "core/qt/QtText.h"
#include "model/AppModel.h"
#include "restore/qt/PutBackModel.h"
#include "platform/XdgPaths.h"
#include "screens/GuiApplication.h"
#include "sort/qt/AutoSortModel.h"
#include "sort/qt/SortRulesModel.h"
#include "space/qt/SpaceMapModel.h"
#include "space/qt/StorageSurveyModel.h"
#include "support/DevCacheHome.h"
#include "support/EventLoopWait.h"
#include "support/ShellAndMounts.h"
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
                       r.source, r.destination, std::nullopt, std::nullopt, std::nullopt});
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
    CleanRun& run = *s.model.room<CleanRun>();
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
    auto& d = *s.model.room<DuplicatesModel>();
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

// History offers "Put back" for a clean still in the Trash, and says so plainly when a name
// is taken: three real items cleaned into the real (temporary) Trash.
TEST(ScreenTour, HistoryPutsBackFromTheTrash) {
    const std::string folder = XdgPaths::home() + "/Projects/tour-app";
    std::vector<CleanupEntry> entries;
    for (const char* name : {"dist", "coverage", ".parcel-cache"}) {
        test::writeFile(folder + "/" + name + "/bundle.js", media(300'000, name[1]));
        CleanupEntry& e = entries.emplace_back();
        e.id = e.title = name;
        e.path = folder + "/" + name;
        e.bytes = 312'000'000;
        e.note = "Rebuilt by the next build.";
        e.symbolName = "trash";
        e.allowRoot = folder;
        e.origin = CleanupOrigin::duplicate;
    }
    Cleaner::Environment env;
    env.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    const auto cleaned = Cleaner(env).applyList(entries, XdgPaths::home());
    ASSERT_EQ(cleaned.logs.size(), 3u) << (cleaned.failures.empty() ? "" : cleaned.failures.front());
    auto log = realisticLog(Clock::now());
    BrimvaleSettings settings;
    (void)addLogEntries(log, settings, cleaned.logs, Clock::now(), CalendarContext::current());
    saveLog(AppPersistence::live(), log);

    Screen s;
    ASSERT_TRUE(s.open());
    PutBackModel* putBack = s.model.room<PutBackModel>();
    s.model.focusOnSection("activity");
    const QString newest = q(log.front().id.text());
    ASSERT_TRUE(spinUntil([&] { return putBack->stateOf(newest) == PutBackModel::Available; }, 5000));
    EXPECT_EQ(putBack->runButtonText(newest), "Put back all 3 items");
    s.shoot("history-put-back.png");

    // Something new now stands under the first item's name: it stays in the Trash.
    test::writeFile(folder + "/dist", "a new dist");
    putBack->putBack(newest);
    ASSERT_TRUE(spinUntil([&] { return !putBack->busy() && !putBack->message().isEmpty(); }, 5000));
    EXPECT_EQ(putBack->message(), "Something named “dist” is already there, so it stayed in the Trash.");
    s.shoot("history-put-back-refused.png");

    // The rest of the clean comes back; the week's total drops by what came back.
    const qint64 weekBefore = s.model.activityLog()->weekBytes();
    putBack->putBackRun(q(log[1].id.text()));
    ASSERT_TRUE(spinUntil([&] { return putBack->stateOf(q(log[1].id.text())) == PutBackModel::Done; }, 5000));
    EXPECT_TRUE(putBack->message().startsWith("Put back 2 of 3 items. Something named “dist”")) << putBack->message().toStdString();
    EXPECT_EQ(s.model.activityLog()->weekBytes(), weekBefore - 2 * 312'000'000);
    s.shoot("history-put-back-done.png");
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
    model.room<CleanRun>()->setTiming({30, 10, 10, 400, 40});
    Cleaner::Environment quiet;
    quiet.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    model.room<CleanRun>()->setCleanerEnvironment(quiet);
    ASSERT_TRUE(s.open()) << "Main.qml failed to load";
    SmartCleanModel& smart = *model.room<SmartCleanModel>();
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
    ASSERT_TRUE(spinUntil([&] { return model.room<CleanRun>()->isSheetPresented(); }));
    s.shoot("smart-clean-preview.png");

    model.room<CleanRun>()->confirm();
    ASSERT_TRUE(spinUntil([&] { return !model.room<CleanRun>()->isSheetPresented(); }));
    ASSERT_TRUE(spinUntil([&] { return !smart.scanning(); }));
    model.messages()->dismissCleanupNotice();
    model.focusOnSection("overview");
    s.shoot("overview-after-clean.png", 300);
    EXPECT_FALSE(model.room<CleanRun>()->afterCleanLine().isEmpty());
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
    SpaceMapModel& sm = *s.model.room<SpaceMapModel>();
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
    s.model.room<StorageSurveyModel>()->setPlaces([] {
        SurveyPlaces places = SurveyPlaces::current();
        places.coverage.resize(1); // the Trash alone: the machine's own places vary
        return places;
    });
    s.model.applySnapshot({s.model.now(), "Test Disk", 500'000'000'000, 120'000'000'000});
    s.model.room<StorageSurveyModel>()->survey(true);
    spin(300);
    ASSERT_TRUE(spinUntil([&] { return !s.model.room<StorageSurveyModel>()->scanning(); }));
    ASSERT_EQ(s.model.room<StorageSurveyModel>()->coverageItems().size(), 1u);

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

// Autopilot as a user builds it: a sentence fills the builder, the preview sheet confirms the
// rule with its figures, a second rule matching nothing yet is still saved, and an edited rule
// keeps its place in the list and in the file.
TEST(ScreenTour, AutopilotBuildsAndSavesTwoRules) {
    const std::string projects = XdgPaths::home() + "/Work";
    test::removeTree(projects);
    for (const char* app : {"site", "api", "docs"}) {
        test::writeSizedFile(projects + "/" + app + "/dist/bundle.js", 300'000);
        const timespec old{::time(nullptr) - 40 * 86400, 0};
        const timespec times[2] = {old, old};
        ASSERT_EQ(::utimensat(AT_FDCWD, (projects + "/" + app + "/dist").c_str(), times, 0), 0);
    }
    Screen s;
    ASSERT_TRUE(s.open());
    FolderRulesModel& rules = *s.model.folderRules();
    CleanRun& run = *s.model.room<CleanRun>();
    s.model.focusOnSection("watchedFolders");
    ASSERT_TRUE(rules.folderRules().empty());

    rules.chooseFolder(QString::fromStdString(XdgPaths::home()));
    EXPECT_TRUE(s.model.messages()->errorMessage().has_value()) << "the home folder is kept safe";
    EXPECT_TRUE(!rules.folderDraft().parentPath.has_value());
    s.model.messages()->dismissError();

    rules.chooseFolder(QString::fromStdString(projects));
    rules.setSentence("delete subfolders named dist older than 15 days");
    ASSERT_TRUE(rules.folderDraft().parsed.has_value());
    EXPECT_EQ(rules.draftForQml()["namesText"].toString(), "dist");
    EXPECT_TRUE(rules.draftForQml()["directoriesOnly"].toBool());
    s.shoot("autopilot-builder-filled.png");

    rules.continueToPreview();
    ASSERT_TRUE(spinUntil([&] { return run.isSheetPresented(); }));
    ASSERT_EQ(run.plan()->entries.size(), 3u);
    s.shoot("autopilot-confirm-sheet.png", 300);
    rules.confirmRule();
    run.dismissSheet();
    ASSERT_EQ(rules.folderRules().size(), 1u);
    EXPECT_EQ(rules.folderRules()[0].confirmedCount, 3);
    EXPECT_EQ(s.model.messages()->banner(), std::optional<std::string>(kFolderRuleSaved));
    EXPECT_TRUE(!rules.folderDraft().parentPath.has_value()) << "the builder starts afresh";
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));

    // A rule that matches nothing yet still opens its sheet and can be saved.
    rules.chooseFolder(QString::fromStdString(projects));
    rules.setSentence("delete files named *.log older than 3 days");
    rules.continueToPreview();
    ASSERT_TRUE(spinUntil([&] { return run.isSheetPresented(); }));
    EXPECT_TRUE(run.plan()->entries.empty());
    rules.confirmRule();
    run.dismissSheet();
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));
    ASSERT_EQ(rules.folderRules().size(), 2u);

    // Editing the first rule keeps it first, under the same id, on disk as on screen.
    const Uuid firstId = rules.folderRules()[0].id;
    rules.editRule(0);
    rules.setDraftField("schedule", "weekly");
    rules.continueToPreview();
    ASSERT_TRUE(spinUntil([&] { return run.isSheetPresented(); }));
    rules.confirmRule();
    run.dismissSheet();
    ASSERT_TRUE(spinUntil([&] { return !run.isSheetPresented(); }));
    const auto stored = loadFolderRules(AppPersistence::live());
    ASSERT_EQ(stored.size(), 2u);
    EXPECT_EQ(stored[0].id, firstId);
    EXPECT_EQ(stored[0].schedule, CleanSchedule::weekly);
    EXPECT_TRUE(rules.rulesForQml()[0].toMap()["boundText"].toString().startsWith("Bounded by preview: 3 items"));
    s.model.messages()->setBanner(std::nullopt);
    s.shoot("autopilot-two-rules.png");
    test::removeTree(projects);
}

// Smart Clean beside the caches: a web project untouched for months under a parent folder
// the user adds, a Flatpak app's data whose app is gone, and a tool's folder no app matches.
// "Select recommended" takes the gone app's data and leaves the rest to the user.
TEST(ScreenTour, SmartCleanFindsOldProjectsAndLeftovers) {
    const std::string home = XdgPaths::home();
    const std::string web = home + "/Code/web-dashboard";
    test::writeFile(web + "/package.json", "{}");
    test::writeFile(web + "/.gitignore", "node_modules\n");
    test::writeSizedFile(web + "/node_modules/react/index.js", 2'400'000);
    test::writeSizedFile(home + "/.var/app/org.gone.Sketchpad/data/cache.bin", 3'200'000);
    allocate(home + "/.config/gonetool/store.db", 60'000'000);
    const std::string old = "@" + std::to_string(::time(nullptr) - 120 * 86400);
    ASSERT_EQ(test::runCommand("cd " + test::shellQuote(web) + " && git init -q && git add .gitignore package.json && "
                               "GIT_COMMITTER_DATE='" + old + " +0000' GIT_AUTHOR_DATE='" + old +
                               " +0000' git -c user.name=t -c user.email=t@t commit -qm init && touch -h -d " + old +
                               " package.json .gitignore node_modules && find " + test::shellQuote(home + "/.var/app/org.gone.Sketchpad") +
                               " " + test::shellQuote(home + "/.config/gonetool") + " -exec touch -h -d " + old + " {} +")
                  .status,
              0);

    Screen s;
    SmartCleanModel& smart = *s.model.room<SmartCleanModel>();
    SmartCleanFinds& finds = *smart.finds();
    const std::string system = home + "/no-apps-installed";
    finds.setLeftoverOptions({InstalledApps::Roots{{system}, {system}, {system}, {system}}, nullptr, std::nullopt});
    ASSERT_TRUE(s.open());
    ASSERT_TRUE(spinUntil([&] { return smart.hasScanned() && !smart.scanning() && !finds.projectsScanning(); }));
    finds.addRoot(QString::fromStdString(home + "/Code"));
    ASSERT_TRUE(spinUntil([&] { return !finds.projectsScanning() && finds.projectHits()->rowCount() == 1; }));
    ASSERT_EQ(finds.goneLeftovers()->rowCount(), 1);
    ASSERT_EQ(finds.possibleLeftovers()->rowCount(), 1);
    EXPECT_EQ(finds.rootsForQml(), QStringList{"~/Code"});

    smart.selectRecommended();
    EXPECT_EQ(finds.selectedCount(), 1) << "only the gone app's data is recommended";
    finds.setHitSelected(QString::fromStdString(web + "/node_modules"), true);
    s.model.focusOnSection("devMode");
    QStringList texts;
    collectTexts(s.window->contentItem(), texts);
    for (const char* expected : {"Old project files", "App leftovers", "POSSIBLY LEFT BEHIND", "Add Folder\u2026",
                                 "Sketchpad leftovers (app not installed)"})
        EXPECT_TRUE(texts.contains(QString::fromUtf8(expected))) << expected;
    s.window->resize(1120, 1400);
    s.shoot("smart-clean-projects-and-leftovers.png", 300);

    smart.preview();
    ASSERT_TRUE(spinUntil([&] { return s.model.room<CleanRun>()->isSheetPresented(); }));
    std::set<std::string> groups;
    for (const auto& e : s.model.room<CleanRun>()->plan()->entries) groups.insert(e.group);
    EXPECT_TRUE(groups.contains("Old project files"));
    EXPECT_TRUE(groups.contains("App leftovers"));
    s.model.room<CleanRun>()->dismissSheet();
    test::removeTree(home + "/Code");
    test::removeTree(home + "/.var/app/org.gone.Sketchpad");
    test::removeTree(home + "/.config/gonetool");
}

// Auto-Sort on a Downloads folder people would recognise: the list with its rules and the
// suggestions from the files, the editor reading a sentence into chips with two words it
// didn't use, and the run preview of every rule.
TEST(ScreenTour, AutoSortListEditorAndRunPreview) {
    const std::string downloads = XdgPaths::downloads();
    test::removeTree(downloads);
    for (const char* name : {"Screenshot 2026-11-18 at 09.14.02.png", "Screenshot 2026-11-20 at 17.40.51.png",
                             "Screen Recording 2026-11-21 at 11.02.33.mov", "invoice-2026-10-hosting.pdf",
                             "invoice-2026-11-hosting.pdf", "receipt-train-tickets.pdf", "Quarterly report.pdf"})
        test::writeFile(downloads + "/" + name, media(180'000, 'd'));
    Screen s;
    const TimePoint later = Clock::now() + std::chrono::hours(2); // everything has settled
    s.model.setNow([later] { return later; });
    ASSERT_TRUE(s.open());
    SortRulesModel& rules = *s.model.sortRules();
    AutoSortModel& autoSort = *s.model.room<AutoSortModel>();
    rules.setDraftPhrase("move pdf files starting with invoice");
    rules.chooseDraftFolder(QString::fromStdString(XdgPaths::home() + "/Documents/Invoices"));
    ASSERT_TRUE(rules.saveDraft());
    s.model.focusOnSection("rules");
    autoSort.refreshSamples();
    ASSERT_TRUE(spinUntil([&] { return autoSort.sortSuggestions().size() >= 2; }, 5000));
    EXPECT_EQ(autoSort.tidyCountLine(), "2 files your rules can tidy right now");
    s.shoot("auto-sort-list.png", 300);

    QObject* root = s.engine.rootObjects().constFirst();
    QObject* editor = root->findChild<QObject*>("autoSortEditor");
    ASSERT_TRUE(editor);
    rules.newDraft();
    rules.setDraftPhrase("move screenshots to Pictures every week please");
    ASSERT_TRUE(rules.draftSort());
    EXPECT_FALSE(rules.draftSort()->chips.empty());
    EXPECT_FALSE(rules.draftUnrecognized().empty());
    QMetaObject::invokeMethod(editor, "open");
    // "Pictures" reads as the image kind too, so the screen recording is left out until
    // that chip is dropped.
    ASSERT_TRUE(spinUntil([&] { return autoSort.touchCount() == 2; }, 5000)) << autoSort.touchCount();
    s.shoot("auto-sort-editor.png", 400);
    rules.removeChip("kind-image");
    EXPECT_EQ(autoSort.touchCount(), 3);
    QMetaObject::invokeMethod(editor, "close");

    QObject* sheet = root->findChild<QObject*>("autoSortRunSheet");
    ASSERT_TRUE(sheet);
    autoSort.startPreview({});
    QMetaObject::invokeMethod(sheet, "open");
    ASSERT_TRUE(spinUntil([&] { return autoSort.hasSimulation(); }, 5000));
    EXPECT_EQ(autoSort.previewActions().size(), 2);
    s.shoot("auto-sort-run-preview.png", 400);
    QMetaObject::invokeMethod(sheet, "close");
    spin(100);
    EXPECT_FALSE(autoSort.hasSimulation()) << "closing the sheet drops the preview";
}

TEST(ScreenTour, BuildWatchWithTwoWatchesASuggestionAndTheDraft) {
    const std::string code = XdgPaths::home() + "/code";
    test::removeTree(code);
    // Two watched projects measured over the week, and an unwatched game holding 1.1 GB.
    const TimePoint now = Clock::now();
    BuildWatchState state;
    using Row = std::tuple<const char*, long long, long long, long long>; // name, limit, a week ago, now
    for (const auto& [name, limit, from, to] : {Row{"api-server", 2'000'000'000, 1'200'000'000, 1'650'000'000},
                                                Row{"web-dashboard", 5'000'000'000, 2'900'000'000, 2'400'000'000}}) {
        test::writeFile(code + "/" + name + "/Cargo.toml", "[package]\n");
        BuildWatch w;
        w.id = Uuid::generate();
        w.path = code + "/" + name;
        w.name = name;
        w.stacks = {BuildStack::rust};
        w.limitBytes = limit;
        w.createdAt = now - std::chrono::hours(24 * 9);
        w.nextCheck = now + std::chrono::hours(6);
        w.samples = {{now - std::chrono::hours(24 * 6), from}, {now - std::chrono::hours(2), to}};
        w.lastChecked = w.samples.back().date;
        state.watches.push_back(w);
    }
    state.watches[1].lastNote = "Waiting for cargo to finish. Checking again in 30 minutes.";
    AppPersistence::live().saveJson(kBuildWatchFileName, encodeBuildWatchState(state));
    test::writeFile(code + "/space-game/Cargo.toml", "[package]\n");
    allocate(code + "/space-game/target/debug/game.bin", 1'100'000'000);
    test::writeFile(code + "/new-tool/package.json", "{}");
    test::writeSizedFile(code + "/new-tool/node_modules/.cache/babel/x", 400'000);

    Screen s;
    ASSERT_TRUE(s.open());
    BuildWatchModel& watch = *s.model.room<BuildWatchModel>();
    s.model.focusOnSection("buildWatch");
    ASSERT_TRUE(spinUntil([&] { return !watch.suggestionsScanning() && watch.suggestionValues().size() == 1; }, 20000));
    EXPECT_EQ(watch.suggestionValues()[0].name, "space-game");
    EXPECT_EQ(watch.badge(), "1.1 GB");
    EXPECT_EQ(watch.watchesForQml()[0].toMap()["growthText"].toString(), "+450 MB this week");
    s.shoot("buildwatch-two-watches-and-a-suggestion.png");

    QUrl link("brimvale://watch");
    link.setQuery("path=" + QUrl::toPercentEncoding(QString::fromStdString(code + "/new-tool")));
    ASSERT_TRUE(s.model.handleLink(link));
    ASSERT_TRUE(spinUntil([&] { return watch.draftValue() && watch.draftValue()->scan; }));
    EXPECT_TRUE(watch.draftForQml()["canConfirm"].toBool());
    s.shoot("buildwatch-draft-sheet.png", 300);
    watch.cancelDraft();
    test::removeTree(code);
}
