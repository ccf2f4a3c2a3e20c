#include "model/AppModel.h"

#include <QFuture>
#include <QJSEngine>
#include <QPointer>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

#include "arrange/qt/ArrangeLive.h"
#include "autopilot/FolderCandidates.h"
#include "autopilot/qt/FolderRulesModel.h"
#include "buildwatch/BuildWatchCleanerChecks.h"
#include "buildwatch/qt/BuildWatchModel.h"
#include "clean/SmartCleanOriginChecks.h"
#include "clean/qt/CleanRun.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/LogStatistics.h"
#include "core/UserDefaults.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/AppClock.h"
#include "core/qt/CueBus.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/FolderAccessModel.h"
#include "core/qt/Messages.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/NotificationRouter.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "core/qt/VolumeWatcher.h"
#include "core/qt/WatchRequests.h"
#include "core/qt/WhenDone.h"
#include "diagnostics/qt/DiagnosticsModel.h"
#include "diagnostics/qt/Updater.h"
#include "duplicates/qt/DuplicatesModel.h"
#include "foundation/ByteText.h"
#include "guidance/Celebration.h"
#include "guidance/qt/GuidanceModel.h"
#include "platform/XdgPaths.h"
#include "restore/qt/PutBackModel.h"
#include "sort/NewTodayMatcher.h"
#include "sort/qt/AutoSortModel.h"
#include "sort/qt/SortRulesModel.h"
#include "space/NewToday.h"
#include "space/VolumeReader.h"
#include "space/qt/LowSpaceModel.h"
#include "space/qt/SpaceMapModel.h"
#include "space/qt/SpaceStatus.h"
#include "space/qt/StorageSurveyModel.h"

namespace bv {
namespace {
AppModel* g_qmlInstance = nullptr;

// The rules the Overview's "New today" rows are checked against, copied for a pool task.
struct StandingRules {
    std::vector<SortRule> sort;
    std::vector<CleanupRule> downloads;
    std::vector<FolderWatchRule> folders;
};

// For each file, the first of: a sort rule, an older Downloads rule, an Autopilot rule that
// would deal with it. Reads each file's facts from the disk; for a pool task.
std::map<std::string, std::string> coverageOf(const std::vector<TrackedFile>& files, const StandingRules& rules,
                                              TimePoint now) {
    const NewTodayMatcher::FolderRuleTest folderTest = [](const FolderWatchRule& rule, const std::string& path, int depth,
                                                          const NewTodayMatcher::FileFacts& facts, TimePoint at) {
        if (rule.scope == FolderScope::children && depth != 1) return false;
        const FolderCandidate c{path, lastPathComponent(path), facts.isDirectory, 0, facts.modified, depth};
        return candidateMatches(c, rule, at);
    };
    std::map<std::string, std::string> out;
    for (const TrackedFile& file : files) {
        const FileSample sample = NewTodayMatcher::sampleFor(file);
        auto covering = NewTodayMatcher::sortRuleCovering(sample, rules.sort, now);
        if (!covering) covering = NewTodayMatcher::downloadsRuleCovering(sample, rules.downloads, now);
        if (!covering) covering = NewTodayMatcher::folderRuleCovering(file.path, rules.folders, folderTest, now);
        if (covering) out[file.path] = *covering;
    }
    return out;
}
} // namespace

void AppModel::setQmlInstance(AppModel* model) { g_qmlInstance = model; }

AppModel* AppModel::create(QQmlEngine*, QJSEngine* engine) {
    if (g_qmlInstance && engine) engine->setObjectOwnership(g_qmlInstance, QJSEngine::CppOwnership);
    return g_qmlInstance;
}

bool AppModel::liveDataFromEnvironment() { return !qEnvironmentVariableIsSet("XCTestConfigurationFilePath"); }

AppModel::AppModel(bool loadLiveData, QObject* parent)
    : QObject(parent), loadLiveData_(loadLiveData), calendar_(CalendarContext::current()) {
    readVolume_ = [](const std::string& home, TimePoint now) { return readVolume(home, now); };
    buildRooms();
    connectRooms();
}

AppModel::~AppModel() {
    clock_->stop();
    // Features go before the services they were built on: newest child first.
    const QObjectList kids = children();
    for (auto it = kids.rbegin(); it != kids.rend(); ++it) delete *it;
}

// Construction reads each state file once, before the first frame: the services first, then
// every feature from the one context.
void AppModel::buildRooms() {
    const AppPersistence store = loadLiveData_ ? AppPersistence::live() : AppPersistence();
    clock_ = new AppClock(this);
    cues_ = new CueBus(this);
    messages_ = new Messages(this);
    settings_ = new Settings(loadLiveData_, store, *messages_, *cues_, this);
    notifications_ = new NotificationCenter(NotificationRouter::shared(), this);
    folderAccess_ = new FolderAccessModel(store, this);
    const std::string home = XdgPaths::home();
    log_ = new ActivityLog(loadLiveData_, store, home, *clock_, calendar_, *settings_, *notifications_, this);
    watchRequests_ = new WatchRequests(this);

    AppFolders folders{home, XdgPaths::dataHome(), XdgPaths::stateHome(), XdgPaths::configHome(),
                       loadLiveData_ ? XdgPaths::logsDir() : std::string()};
    context_ = std::unique_ptr<FeatureContext>(new FeatureContext{loadLiveData_, store, std::move(folders), *clock_,
                                                                  calendar_, *messages_, *settings_, *notifications_,
                                                                  *log_, *cues_, *folderAccess_, {}, {}, {}});
    FeatureContext& ctx = *context_;
    ctx.readVolume = [this] { return readVolume_(context_->folders.home, clock_->now()); };

    cleanRun_ = new CleanRun(ctx, this);
    // Each origin's own apply-time checks, chained: old projects and leftovers, then Build Watch.
    Cleaner::Environment cleaner;
    cleaner.originChecks = std::make_shared<SmartCleanOriginChecks>(std::make_shared<BuildWatchCleanerChecks>());
    cleanRun_->setCleanerEnvironment(std::move(cleaner));
    ctx.presentPlan = [run = cleanRun_](CleanupPlan plan, CleanupSheetMode mode) {
        return run->presentPlan(std::move(plan), mode);
    };
    space_ = new SpaceStatus(ctx, this);
    ctx.latestVolume = [space = space_] { return space->latest(); };
    lowSpace_ = new LowSpaceModel(ctx, this);
    survey_ = new StorageSurveyModel(ctx, this);
    smartClean_ = new SmartCleanModel(ctx, this);
    duplicates_ = new DuplicatesModel(ctx, this);
    spaceMap_ = new SpaceMapModel(ctx, this);
    sortRules_ = new SortRulesModel(ctx, this);
    autoSort_ = new AutoSortModel(ctx, *sortRules_, this);
    folderRules_ = new FolderRulesModel(ctx, this);
    arrange_ = new ArrangeLive(ctx, this);
    guidance_ = new GuidanceModel(ctx, this);
    putBack_ = new PutBackModel(ctx, this);
    buildWatch_ = new BuildWatchModel(ctx, this);
    diagnostics_ = new DiagnosticsModel(ctx, this);
    updater_ = new Updater(ctx, this);
}

// How the rooms hear of each other: the shell's wiring, so no feature knows another.
void AppModel::connectRooms() {
    // A finished clean: the disk changed, and so did the caches that were cleaned.
    connect(cleanRun_, &CleanRun::runFinished, this, [this] {
        if (!loadLiveData_) return;
        refresh();
        smartClean_->scan();
    });
    connect(cleanRun_, &CleanRun::measurementFinished, this, [this] {
        if (loadLiveData_) refresh();
    });
    connect(smartClean_, &SmartCleanModel::scanFinished, this, [this] { survey_->survey(true); });
    connect(survey_, &StorageSurveyModel::statusChanged, smartClean_, &SmartCleanModel::setFollowingProgress);
    for (auto signal : {&SmartCleanModel::scanningChanged, &SmartCleanModel::rowsChanged})
        connect(smartClean_, signal, this, &AppModel::updateClearNow);
    connect(survey_, &StorageSurveyModel::scanningChanged, this, &AppModel::updateClearNow);
    connect(smartClean_, &SmartCleanModel::scanningChanged, this, &AppModel::statusLineChanged);
    connect(survey_, &StorageSurveyModel::scanningChanged, this, &AppModel::statusLineChanged);
    connect(space_, &SpaceStatus::lastRefreshChanged, this, &AppModel::statusLineChanged);
    connect(space_, &SpaceStatus::lastRefreshChanged, this, [this] {
        updateClearNow();
        log_->recompute(); // carries the week and the streak over midnight
    });
    connect(folderAccess_, &FolderAccessModel::granted, this, &AppModel::refresh);
    // Auto-Arrange's patterns live among the sort rules: both rooms see every change.
    connect(sortRules_, &SortRulesModel::sortRulesChanged, arrange_, [this] { arrange_->setRules(sortRules_->sortRules()); });
    connect(arrange_, &ArrangeLive::rulesEdited, sortRules_, &SortRulesModel::setSortRules);
    arrange_->setRules(sortRules_->sortRules());
    // Auto-Sort waits while a clean runs, and what it moved shows in the folder lists.
    autoSort_->setBusyElsewhere([this] { return cleanRun_->phase() == CleanRun::Phase::running; });
    connect(autoSort_, &AutoSortModel::filesChanged, this, &AppModel::refresh);
    // Guidance: what a cue reads, the cue's way to the preview, the celebration after a clean,
    // and first run's end (a refresh; a notice held back behind the sheet comes out).
    guidance_->setCueContextSource([this] {
        CueContext c;
        c.screen = currentScreen().toStdString();
        c.sheetOpen = cleanRun_->isSheetPresented();
        c.scanning = smartClean_->scanning() || survey_->scanning();
        c.reclaimableBytes = smartClean_->reclaimableBytes();
        c.hasCleanedEver = !log_->logEntries().empty();
        c.lastCleanFreed = cleanRun_->lastFreed();
        c.hasScannedDuplicates = duplicates_->hasScannedDuplicates();
        return c;
    });
    connect(guidance_, &GuidanceModel::cleanupPreviewRequested, this, &AppModel::openCleanupPreview);
    connect(cleanRun_, &CleanRun::sheetPresentedChanged, this, [this] {
        if (cleanRun_->isSheetPresented()) guidance_->noteBestBeforeRun(previousBest(log_->logEntries()));
        else cues_->reevaluate();
    });
    connect(cleanRun_, &CleanRun::runFinished, this,
            [this] { guidance_->celebrate(cleanRun_->lastFreed(), guidance_->bestBeforeRun()); });
    connect(guidance_, &GuidanceModel::firstRunClosed, this, &AppModel::refresh);
    // The review action or a click on a low-space alert: the window comes forward and the
    // clean-up preview is on its way.
    connect(&NotificationRouter::shared(), &NotificationRouter::brimvalePreviewCleanup, this,
            &AppModel::requestCleanupSheet, Qt::UniqueConnection);
    // Build Watch: its run waits for the preview and a clean, lowers limits on a low disk, is
    // credited by cleans of its folders, and a watch request opens its draft on its screen.
    buildWatch_->setCleanBusySource(
        [this] { return cleanRun_->isSheetPresented() || cleanRun_->phase() == CleanRun::Phase::running; });
    buildWatch_->setDiskIsLowSource([this] { return lowSpace_->isLow(); });
    connect(cleanRun_, &CleanRun::runFinished, buildWatch_, &BuildWatchModel::creditFinishedClean);
    connect(buildWatch_, &BuildWatchModel::spaceFreed, this, &AppModel::refresh);
    connect(buildWatch_, &BuildWatchModel::draftStarted, this,
            [this] { focusOnSection(QStringLiteral("buildWatch")); });
    connect(watchRequests_, &WatchRequests::changed, buildWatch_, [this] {
        if (!watchRequests_->pendingPath().isEmpty())
            buildWatch_->startDraft(watchRequests_->pendingPath(), watchRequests_->fromLink());
    });
    // The request waits until its draft is confirmed or cancelled.
    connect(buildWatch_, &BuildWatchModel::draftChanged, watchRequests_, [this] {
        if (!buildWatch_->hasDraft()) watchRequests_->clear();
    });
}

void AppModel::updateClearNow() {
    log_->setClearNow(isClearNow(smartClean_->reclaimableBytes(), smartClean_->scanning(), survey_->scanning(),
                                 space_->lastRefresh().has_value()));
}

// ---- start, refresh, tick ---------------------------------------------------------------

void AppModel::start() {
    if (!loadLiveData_ || didStart_) return;
    didStart_ = true;
    emit didStartChanged();
    sortRules_->seedDefaultRules();
    arrange_->start();
    log_->backfillLifetimeCounters();
    folderAccess_->restore();
    QTimer::singleShot(0, folderAccess_, &FolderAccessModel::recompute);
    notifications_->attach(notificationConnectionName_.isEmpty() ? QDBusConnection::sessionBus()
                                                                 : QDBusConnection(notificationConnectionName_));
    installVolumeObservers();
    lowSpace_->enable();
    recheckFullDiskAccess();
    refresh();
    QTimer::singleShot(0, this, &AppModel::startupPass);
    QPointer<AppModel> weak(this);
    clock_->start(std::chrono::seconds(60), [weak] {
        if (weak) weak->clockTick();
    });
}

// The first look after start: each feature's scan guards itself with its own flag.
void AppModel::startupPass() {
    smartClean_->scan();
    buildWatch_->checkDue(true);
    autoSort_->refreshSamples();
}

void AppModel::clockTick() {
    refresh();
    emit clock_->ticked();
}

void AppModel::refresh() {
    if (!loadLiveData_ || isRefreshing_) return;
    setIsRefreshing(true);
    // The lists come from the folders the user granted, not the defaults.
    const std::string home = context_->folders.home;
    const std::string desktop = folderAccess_->access().desktop();
    const std::string downloads = folderAccess_->access().downloads();
    const TimePoint now = clock_->now();
    const CalendarContext calendar = calendar_;
    auto reader = readVolume_;

    // The snapshot and the two folder lists are read in the background at the same time;
    // the snapshot is applied first, then both lists together.
    QFuture<VolumeSnapshot> snapshot = QtConcurrent::run([reader, home, now] { return reader(home, now); });
    using Listed = std::pair<std::vector<TrackedFile>, std::map<std::string, std::string>>;
    const StandingRules standing{sortRules_->sortRules(), sortRules_->rules(), folderRules_->folderRules()};
    QFuture<Listed> desk = QtConcurrent::run([desktop, now, calendar, standing] {
        auto files = newToday(desktop, WatchedLocation::desktop, now, calendar);
        auto coverage = coverageOf(files, standing, now);
        return Listed{std::move(files), std::move(coverage)};
    });
    QFuture<Listed> down = QtConcurrent::run([downloads, now, calendar, standing] {
        auto files = newToday(downloads, WatchedLocation::downloads, now, calendar);
        auto coverage = coverageOf(files, standing, now);
        return Listed{std::move(files), std::move(coverage)};
    });
    whenDone(snapshot, this, [this, desk, down](VolumeSnapshot s) mutable {
        applySnapshot(s);
        whenDone(desk, this, [this, down](Listed d) mutable {
            whenDone(down, this, [this, d = std::move(d)](Listed w) mutable {
                d.second.merge(w.second);
                space_->applyFileLists(std::move(d.first), std::move(w.first), std::move(d.second));
                QTimer::singleShot(0, folderAccess_, &FolderAccessModel::recompute);
                setIsRefreshing(false);
            });
        });
    });
}

void AppModel::applySnapshot(const VolumeSnapshot& snapshot) {
    if (space_->applySnapshot(snapshot)) lowSpace_->evaluate(snapshot);
    QTimer::singleShot(0, survey_, [this] { survey_->survey(false); });
}

void AppModel::refreshEverything() {
    refresh();
    QTimer::singleShot(0, survey_, [this] { survey_->survey(true); });
}

void AppModel::noteSessionEnd() {
    if (loadLiveData_) space_->noteSessionEnd();
}

void AppModel::recheckFullDiskAccess() {
    // Linux has no separate access layer: Unix permissions decide, so the answer is always
    // yes, and there is never a change from no to yes to greet.
    const bool granted = true;
    const bool wasOnboarding = guidance_->isOnboardingPresented();
    const auto& s = settings_->value();
    if (s.didSkipFullDiskAccess && !s.didCompleteFirstRun && !guidance_->isOnboardingPresented())
        settings_->update([](BrimvaleSettings& v) { v.didCompleteFirstRun = true; });
    if (settings_->value().didCompleteFirstRun && granted && wasOnboarding)
        QTimer::singleShot(0, this, [this] {
            survey_->survey(true);
            smartClean_->scan();
        });
    if (!settings_->value().didCompleteFirstRun && loadLiveData_) guidance_->presentOnboarding(granted);
}

void AppModel::openCleanupPreview() { smartClean_->reviewAndClean(); }

void AppModel::requestCleanupSheet() {
    if (!wantsCleanupSheet_) {
        wantsCleanupSheet_ = true;
        emit wantsCleanupSheetChanged();
    }
    focusSection_ = SidebarSection::overview;
    ++focusSectionToken_;
    emit focusRequested();
    emit raiseWindowRequested();
}

void AppModel::clearWantsCleanupSheet() {
    if (!wantsCleanupSheet_) return;
    wantsCleanupSheet_ = false;
    emit wantsCleanupSheetChanged();
}

void AppModel::focusOnSection(const QString& name) {
    auto section = sidebarSectionFromName(name.toStdString());
    if (!section) return;
    focusSection_ = *section;
    ++focusSectionToken_;
    emit focusRequested();
}

void AppModel::installVolumeObservers() {
    if (volumeWatcher_) return;
    volumeWatcher_ = new VolumeWatcher(this);
    connect(volumeWatcher_, &VolumeWatcher::volumesChanged, this, &AppModel::refresh);
    connect(volumeWatcher_, &VolumeWatcher::woke, this, &AppModel::refresh);
}

void AppModel::setIsRefreshing(bool on) {
    if (isRefreshing_ == on) return;
    isRefreshing_ = on;
    emit isRefreshingChanged();
}

// ---- texts and navigation -------------------------------------------------------------------

TimePoint AppModel::now() const { return clock_->now(); }
void AppModel::setNow(std::function<TimePoint()> now) { clock_->setNow(std::move(now)); }
void AppModel::setVolumeReader(VolumeReadFn reader) { readVolume_ = std::move(reader); }

QString AppModel::byteText(double bytes) const { return q(bv::byteText(static_cast<std::int64_t>(bytes))); }

QString AppModel::statusLine() const {
    // Only real measuring counts: the minute's refresh is quick and would only flicker.
    if (survey_->scanning() || smartClean_->scanning()) return QStringLiteral("Scanning…");
    const QString updated = space_->lastRefreshText();
    return updated.isEmpty() ? QString() : QStringLiteral("Updated ") + updated;
}

QString AppModel::currentScreen() const { return q(std::string(sidebarInfo(currentScreen_).name)); }
QString AppModel::focusSection() const { return q(std::string(sidebarInfo(focusSection_).name)); }

void AppModel::setCurrentScreen(const QString& name) {
    auto section = sidebarSectionFromName(name.toStdString()).value_or(SidebarSection::overview);
    if (section == currentScreen_) return;
    currentScreen_ = section;
    emit currentScreenChanged();
    cues_->reevaluate();
}

QString AppModel::storedSelection() const {
    if (!loadLiveData_) return QStringLiteral("overview");
    return q(UserDefaults().text("sidebarSelection").value_or("overview"));
}

void AppModel::storeSelection(const QString& name) {
    if (loadLiveData_) UserDefaults().setValue("sidebarSelection", name.toStdString());
}

namespace {
QVariantMap sectionMap(const SidebarSectionInfo& info) {
    return QVariantMap{{"name", q(std::string(info.name))},
                       {"title", q(std::string(info.title))},
                       {"tagline", q(std::string(info.tagline))},
                       {"key", info.key}};
}
} // namespace

QVariantList AppModel::sections() const {
    QVariantList out;
    for (const auto& info : sidebarSections()) out.push_back(sectionMap(info));
    return out;
}

QVariantList AppModel::sidebarGroups() const {
    QVariantList out;
    for (const auto& [group, members] : sidebarLayout()) {
        QVariantList rows;
        for (auto s : members) rows.push_back(sectionMap(sidebarInfo(s)));
        out.push_back(QVariantMap{{"title", q(std::string(sidebarGroupTitle(group)))}, {"sections", rows}});
    }
    return out;
}

} // namespace bv
