#include "core/AppModel.h"

#include <QCoreApplication>
#include <QJSEngine>
#include <QFuture>
#include <QPointer>
#include <QThread>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

#include <dirent.h>

#include "core/ActionLog.h"
#include "core/UserDefaults.h"
#include "core/qt/RepeatingClock.h"
#include "core/qt/VolumeWatcher.h"
#include "foundation/ByteText.h"
#include "platform/XdgPaths.h"
#include "space/SpaceDeltaText.h"
#include "space/VolumeReader.h"

namespace bv {
namespace {

QString q(const std::string& s) { return QString::fromStdString(s); }

} // namespace

namespace {
AppModel* g_qmlInstance = nullptr;
}

void AppModel::setQmlInstance(AppModel* model) { g_qmlInstance = model; }

AppModel* AppModel::create(QQmlEngine*, QJSEngine* engine) {
    if (g_qmlInstance && engine) engine->setObjectOwnership(g_qmlInstance, QJSEngine::CppOwnership);
    return g_qmlInstance;
}

bool AppModel::liveDataFromEnvironment() { return qEnvironmentVariableIsEmpty("XCTestConfigurationFilePath") &&
                                                  !qEnvironmentVariableIsSet("XCTestConfigurationFilePath"); }

AppModel::AppModel(bool loadLiveData, QObject* parent)
    : QObject(parent), loadLiveData_(loadLiveData), calendar_(CalendarContext::current()) {
    readVolume_ = [](const std::string& home, TimePoint now) { return readVolume(home, now); };
    now_ = [] { return Clock::now(); };
    clock_ = new RepeatingClock(this);
    setUpActivityLog();
    installCleanRun();
    installSmartClean();
    if (!loadLiveData_) return;

    // Construction reads each state file once, in a fixed order, before the first frame.
    store_ = AppPersistence::live();
    bool replaced = false;
    history_ = SpaceHistory::accepting(store_.load(SpaceHistory::fileName(), SpaceHistory::fromJson), replaced);
    if (replaced) saveHistory();
    sessionBaseline_ = history_.lastQuit;
    logEntries_ = loadLog(store_);
    settings_ = store_.load(BrimvaleSettings::fileName(), BrimvaleSettings::fromJson).value_or(BrimvaleSettings{});
    if (settings_.installationID.empty()) {
        settings_.installationID = Uuid::generate().text();
        saveSettings();
    }
    loadRuleFiles();
    storageScanning_ = true;
    updateActivityLog();
}

AppModel::~AppModel() {
    if (clock_) clock_->stop();
}

// ---- start, refresh, tick ---------------------------------------------------------------

void AppModel::start() {
    if (!loadLiveData_ || didStart_) return;
    didStart_ = true;
    emit didStartChanged();
    seedDefaultRules();
    backfillLifetimeCounters();
    restoreFolderAccess();
    QTimer::singleShot(0, this, [this] { computeFolderState(); });
    registerNotifications();
    installLinkService();
    installVolumeObservers();
    recheckFullDiskAccess();
    refresh();
    alignArrangeWatcher();
    QTimer::singleShot(0, this, [this] { startupPass(); });
    QPointer<AppModel> weak(this);
    clock_->start(std::chrono::seconds(60), [weak] {
        if (weak) weak->clockTick();
    });
}

void AppModel::startupPass() {
    if (loadLiveData_) scanDeveloperCaches();
    // Old project files, Autopilot and Build Watch due checks and suggestions join here as
    // their features land; each guards itself with its own in-flight flag.
}

void AppModel::clockTick() {
    refresh();
    dueChecksOnTick();
}

void AppModel::refresh() {
    if (!loadLiveData_ || isRefreshing_) return;
    setIsRefreshing(true);
    const std::string home = XdgPaths::home();
    const std::string desktop = XdgPaths::desktop();
    const std::string downloads = XdgPaths::downloads();
    const TimePoint now = now_();
    const CalendarContext calendar = calendar_;
    auto reader = readVolume_;

    // The snapshot and the two folder lists are read in the background at the same time;
    // the snapshot is applied first, then both lists together.
    QFuture<VolumeSnapshot> snapshot = QtConcurrent::run([reader, home, now] { return reader(home, now); });
    QFuture<std::vector<TrackedFile>> desk = QtConcurrent::run([desktop, now, calendar] {
        return newToday(desktop, WatchedLocation::desktop, now, calendar);
    });
    QFuture<std::vector<TrackedFile>> down = QtConcurrent::run([downloads, now, calendar] {
        return newToday(downloads, WatchedLocation::downloads, now, calendar);
    });
    snapshot.then(this, [this, desk, down](VolumeSnapshot s) mutable {
        applySnapshot(s);
        desk.then(this, [this, down](std::vector<TrackedFile> d) mutable {
            down.then(this, [this, d = std::move(d)](std::vector<TrackedFile> w) mutable {
                applyFileLists(std::move(d), std::move(w));
            });
        });
    });
}

void AppModel::refreshEverything() {
    refresh();
    QTimer::singleShot(0, this, [this] { surveyStorage(true); });
}

void AppModel::applySnapshot(const VolumeSnapshot& snapshot) {
    const TimePoint now = now_();
    if (snapshot.isUsable()) {
        if (!(latest_ == snapshot)) {
            latest_ = snapshot;
            emit latestChanged();
        }
        history_.record(snapshot);
        saveHistory();
        emit historyChanged();
        const SpaceDelta midnight = history_.midnightDelta(snapshot, now, calendar_);
        const SpaceDelta lastOpen = bv::lastOpenDelta(snapshot, sessionBaseline_);
        if (!(midnight == midnightDelta_) || !(lastOpen == lastOpenDelta_)) {
            midnightDelta_ = midnight;
            lastOpenDelta_ = lastOpen;
            emit deltasChanged();
        }
        evaluateLowSpace(snapshot, now);
    }
    lastRefresh_ = now;
    emit lastRefreshChanged();
    emit statusLineChanged();
    QTimer::singleShot(0, this, [this] { surveyStorage(false); });
}

void AppModel::applyFileLists(std::vector<TrackedFile> desktop, std::vector<TrackedFile> downloads) {
    if (desktop != desktopFiles_ || downloads != downloadFiles_) {
        desktopFiles_ = std::move(desktop);
        downloadFiles_ = std::move(downloads);
        emit fileListsChanged();
    }
    QTimer::singleShot(0, this, [this] { computeFolderState(); });
    setIsRefreshing(false);
}

void AppModel::noteSessionEnd() {
    if (!loadLiveData_ || !latest_.isUsable()) return;
    history_.lastQuit = latest_;
    saveHistory();
}

void AppModel::recheckFullDiskAccess() {
    // Linux has no separate access layer: Unix permissions decide, so the answer is yes.
    const bool granted = true;
    const bool wasGranted = fullDiskAccessGranted_;
    const bool hadRead = didReadFullDiskAccess_;
    const bool wasOnboarding = isOnboardingPresented_;
    didReadFullDiskAccess_ = true;
    if (fullDiskAccessGranted_ != granted) {
        fullDiskAccessGranted_ = granted;
        emit fullDiskAccessChanged();
    }
    if (granted && !wasGranted && hadRead && loadLiveData_) playCue("arrival", 0.35);
    if (settings_.didSkipFullDiskAccess && !settings_.didCompleteFirstRun && !isOnboardingPresented_) {
        settings_.didCompleteFirstRun = true;
        saveSettings();
    }
    if (settings_.didCompleteFirstRun) {
        if (granted && wasOnboarding) QTimer::singleShot(0, this, [this] {
                surveyStorage(true);
                scanDeveloperCaches();
            });
    }
    // First run (onboarding) arrives with its own screens; until then nobody is onboarded.
}

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

void AppModel::clearPreview() { previewToken_ = Uuid::generate(); }

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
    QPointer<AppModel> weak(this);
    connect(volumeWatcher_, &VolumeWatcher::volumesChanged, this, [weak] {
        if (weak) weak->refresh();
    });
    connect(volumeWatcher_, &VolumeWatcher::woke, this, [weak] {
        if (weak) weak->refresh();
    });
}

// ---- messages -----------------------------------------------------------------------------

void AppModel::setErrorMessage(std::optional<std::string> message) {
    if (errorMessage_ == message) return;
    errorMessage_ = std::move(message);
    emit errorMessageChanged();
}

void AppModel::setBanner(std::optional<std::string> text) {
    if (banner_ == text) return;
    banner_ = std::move(text);
    emit bannerChanged();
}

void AppModel::setCleanupNotice(std::optional<CleanupNotice> notice) {
    if (cleanupNotice_ == notice) return;
    cleanupNotice_ = std::move(notice);
    emit cleanupNoticeChanged();
}

void AppModel::dismissError() { setErrorMessage(std::nullopt); }
void AppModel::dismissCleanupNotice() { setCleanupNotice(std::nullopt); }

// ---- flags and persistence ----------------------------------------------------------------

void AppModel::setIsRefreshing(bool on) {
    if (isRefreshing_ == on) return;
    isRefreshing_ = on;
    emit isRefreshingChanged();
    emit statusLineChanged();
}

void AppModel::setStorageScanning(bool on) {
    if (storageScanning_ == on) return;
    storageScanning_ = on;
    emit storageScanningChanged();
    emit statusLineChanged();
}

void AppModel::setDevScanning(bool on) {
    if (devScanning_ == on) return;
    devScanning_ = on;
    emit devScanningChanged();
    emit statusLineChanged();
}

void AppModel::saveSettings() const { store_.saveJson(BrimvaleSettings::fileName(), settings_.toJson()); }
void AppModel::saveHistory() const { store_.saveJson(SpaceHistory::fileName(), history_.toJson()); }

// ---- texts for the screens and the terminal -------------------------------------------------

QString AppModel::byteText(double bytes) const { return q(bv::byteText(static_cast<std::int64_t>(bytes))); }
QString AppModel::volumeName() const { return q(latest_.volumeName); }
QString AppModel::freeText() const { return q(bv::byteText(latest_.freeBytes)); }
QString AppModel::totalText() const { return q(bv::byteText(latest_.totalBytes)); }
QString AppModel::midnightDeltaText() const { return q(deltaSentence(midnightDelta_, now_(), calendar_)); }
QString AppModel::lastOpenDeltaText() const { return q(deltaSentence(lastOpenDelta_, now_(), calendar_)); }

QString AppModel::lastRefreshText() const {
    return lastRefresh_ ? q(calendar_.shortTime(*lastRefresh_)) : QString();
}

QString AppModel::statusLine() const {
    if (isRefreshing_ || storageScanning_ || devScanning_) return QStringLiteral("Scanning…");
    if (!lastRefresh_) return QString();
    return QStringLiteral("Updated ") + lastRefreshText();
}

QVariantList AppModel::newTodayFiles() const {
    QVariantList out;
    for (const auto* list : {&desktopFiles_, &downloadFiles_}) {
        for (const auto& f : *list) {
            out.push_back(QVariantMap{{"path", q(f.path)},
                                      {"name", q(f.name)},
                                      {"size", QVariant::fromValue<qint64>(f.size)},
                                      {"sizeText", q(bv::byteText(f.size))},
                                      {"kind", q(f.kind)},
                                      {"addedText", q(calendar_.shortTime(f.added))},
                                      {"location", f.location == WatchedLocation::desktop ? "Desktop" : "Downloads"}});
        }
    }
    return out;
}

QString AppModel::errorMessage() const { return errorMessage_ ? q(*errorMessage_) : QString(); }
QString AppModel::banner() const { return banner_ ? q(*banner_) : QString(); }
QString AppModel::cleanupNoticeTitle() const { return cleanupNotice_ ? q(cleanupNotice_->title) : QString(); }
QString AppModel::cleanupNoticeMessage() const { return cleanupNotice_ ? q(cleanupNotice_->message) : QString(); }
QString AppModel::currentScreen() const { return q(std::string(sidebarInfo(currentScreen_).name)); }
QString AppModel::focusSection() const { return q(std::string(sidebarInfo(focusSection_).name)); }

void AppModel::setCurrentScreen(const QString& name) {
    auto section = sidebarSectionFromName(name.toStdString()).value_or(SidebarSection::overview);
    if (section == currentScreen_) return;
    currentScreen_ = section;
    emit currentScreenChanged();
    reevaluateCues();
}

QString AppModel::storedSelection() const {
    if (!loadLiveData_) return QStringLiteral("overview");
    return q(UserDefaults().text("sidebarSelection").value_or("overview"));
}

void AppModel::storeSelection(const QString& name) {
    if (!loadLiveData_) return;
    UserDefaults().setValue("sidebarSelection", name.toStdString());
}

QVariantList AppModel::sections() const {
    QVariantList out;
    for (const auto& info : sidebarSections())
        out.push_back(QVariantMap{{"name", q(std::string(info.name))},
                                  {"title", q(std::string(info.title))},
                                  {"tagline", q(std::string(info.tagline))},
                                  {"key", info.key}});
    return out;
}

QVariantList AppModel::sidebarGroups() const {
    QVariantList out;
    for (const auto& [group, members] : sidebarLayout()) {
        QVariantList rows;
        for (auto s : members) {
            const auto& info = sidebarInfo(s);
            rows.push_back(QVariantMap{{"name", q(std::string(info.name))},
                                       {"title", q(std::string(info.title))},
                                       {"tagline", q(std::string(info.tagline))},
                                       {"key", info.key}});
        }
        out.push_back(QVariantMap{{"title", q(std::string(sidebarGroupTitle(group)))}, {"sections", rows}});
    }
    return out;
}

} // namespace bv
