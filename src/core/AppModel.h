#pragma once
#include <QDateTime>
#include <QObject>
#include <QStringList>
#include <QUrl>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/ActionLogEntry.h"
#include "clean/CleanupNotice.h"
#include "clean/qt/CleanRun.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/AppPersistence.h"
#include "core/BrimvaleSettings.h"
#include "clean/CleanupPlan.h"
#include "core/FolderAccess.h"
#include "core/SidebarSection.h"
#include "core/qt/ActivityLog.h"
#include "duplicates/qt/DuplicatesModel.h"
#include "foundation/CalendarContext.h"
#include "foundation/Uuid.h"
#include "space/NewToday.h"
#include "space/LowSpaceAlerts.h"
#include "space/SpaceHistory.h"
#include "space/StorageSurvey.h"
#include "space/qt/SpaceMapModel.h"
#include "autopilot/FolderRuleDraft.h"
#include "autopilot/FolderWatchRule.h"
#include "sort/CleanupRule.h"
#include "sort/SortRule.h"
#include "sort/SortRuleParser.h"

namespace bv {

class RepeatingClock;
}
class QQmlEngine;
class QTimer;
class QJSEngine;
namespace bv {
class VolumeWatcher;
class NotificationCenter;

// The one observable object. Confined to the GUI thread: every method runs there, long work
// leaves through QtConcurrent with plain copies and comes back through QFuture::then on this
// object, where a token comparison drops stale results. Setters compare before notifying.
// Feature objects (log, clean-up, duplicates, space map, rules...) hang off it as members.
class AppModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool loadLiveData READ loadLiveData CONSTANT)
    Q_PROPERTY(bool didStart READ didStart NOTIFY didStartChanged)
    Q_PROPERTY(bool isRefreshing READ isRefreshing NOTIFY isRefreshingChanged)
    Q_PROPERTY(bool storageScanning READ storageScanning NOTIFY storageScanningChanged)
    Q_PROPERTY(bool devScanning READ devScanning NOTIFY devScanningChanged)
    Q_PROPERTY(QString volumeName READ volumeName NOTIFY latestChanged)
    Q_PROPERTY(double freeBytes READ freeBytesForQml NOTIFY latestChanged)
    Q_PROPERTY(double totalBytes READ totalBytesForQml NOTIFY latestChanged)
    Q_PROPERTY(QString freeText READ freeText NOTIFY latestChanged)
    Q_PROPERTY(QString totalText READ totalText NOTIFY latestChanged)
    Q_PROPERTY(QString midnightDeltaText READ midnightDeltaText NOTIFY deltasChanged)
    Q_PROPERTY(QString lastOpenDeltaText READ lastOpenDeltaText NOTIFY deltasChanged)
    Q_PROPERTY(QString lastRefreshText READ lastRefreshText NOTIFY lastRefreshChanged)
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY statusLineChanged)
    Q_PROPERTY(QVariantList newTodayFiles READ newTodayFiles NOTIFY fileListsChanged)
    Q_PROPERTY(bool fullDiskAccessGranted READ fullDiskAccessGranted NOTIFY fullDiskAccessChanged)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(QString banner READ banner NOTIFY bannerChanged)
    Q_PROPERTY(bool hasCleanupNotice READ hasCleanupNotice NOTIFY cleanupNoticeChanged)
    Q_PROPERTY(QString cleanupNoticeTitle READ cleanupNoticeTitle NOTIFY cleanupNoticeChanged)
    Q_PROPERTY(QString cleanupNoticeMessage READ cleanupNoticeMessage NOTIFY cleanupNoticeChanged)
    Q_PROPERTY(QString currentScreen READ currentScreen WRITE setCurrentScreen NOTIFY currentScreenChanged)
    Q_PROPERTY(QString focusSection READ focusSection NOTIFY focusRequested)
    Q_PROPERTY(int focusSectionToken READ focusSectionToken NOTIFY focusRequested)
    Q_PROPERTY(bool wantsCleanupSheet READ wantsCleanupSheet NOTIFY wantsCleanupSheetChanged)
    Q_PROPERTY(QVariantList sidebarGroups READ sidebarGroups CONSTANT)
    Q_PROPERTY(QVariantList sections READ sections CONSTANT)
    // The clean-up preview and folder access (AppModelCleanup.cpp).
    Q_PROPERTY(bool hasCleanupPlan READ hasCleanupPlan NOTIFY cleanupPlanChanged)
    Q_PROPERTY(bool isCleanupSheetPresented READ isCleanupSheetPresented NOTIFY cleanupSheetChanged)
    Q_PROPERTY(QString cleanupSheetMode READ cleanupSheetModeText NOTIFY cleanupSheetChanged)
    Q_PROPERTY(QStringList cleanupExcluded READ cleanupExcludedList NOTIFY cleanupExcludedChanged)
    Q_PROPERTY(QVariantMap folderState READ folderStateMap NOTIFY folderStateChanged)
    Q_PROPERTY(bv::ActivityLog* activityLog READ activityLog CONSTANT)
    Q_PROPERTY(QString pendingWatchPath READ pendingWatchPath NOTIFY watchRequestChanged)
    // The Duplicates section (AppModelDuplicates.cpp, duplicates/qt/).
    Q_PROPERTY(bv::DuplicatesModel* duplicates READ duplicates CONSTANT)
    Q_PROPERTY(bv::CleanRun* cleanRun READ cleanRun CONSTANT)
    Q_PROPERTY(bv::SpaceMapModel* spaceMap READ spaceMap CONSTANT)
    // Smart Clean's rows and choice (AppModelDevCaches.cpp, clean/qt/SmartCleanModel).
    Q_PROPERTY(bv::SmartCleanModel* smartClean READ smartClean CONSTANT)
    Q_PROPERTY(QString devProgress READ devProgress NOTIFY devProgressChanged)
    Q_PROPERTY(QString afterCleanLine READ afterCleanLine NOTIFY afterCleanChanged)
    // The sort rule editor's draft (AppModelRules.cpp).
    Q_PROPERTY(QString draftPhrase READ draftPhraseText WRITE setDraftPhrase NOTIFY ruleDraftChanged)
    Q_PROPERTY(int editorLineIndex READ editorLineIndex WRITE setEditorLineIndex NOTIFY ruleDraftChanged)
    Q_PROPERTY(int editorLineCount READ editorLineCount NOTIFY ruleDraftChanged)
    Q_PROPERTY(bool ruleNameIsAutomatic READ ruleNameIsAutomatic WRITE setRuleNameIsAutomatic NOTIFY ruleDraftChanged)
    Q_PROPERTY(QString draftError READ draftErrorText NOTIFY ruleDraftChanged)
    Q_PROPERTY(QVariantList draftUnrecognized READ draftUnrecognizedList NOTIFY ruleDraftChanged)
    Q_PROPERTY(QVariantMap draftSort READ draftSortMap NOTIFY ruleDraftChanged)
    // ---- low-space alerts: properties (AppModelLowSpace.cpp) ----
    Q_PROPERTY(QString lowSpaceSeverity READ lowSpaceSeverityText NOTIFY lowSpaceChanged)
    Q_PROPERTY(bool lowSpaceIsLow READ lowSpaceIsLow NOTIFY lowSpaceChanged)
    Q_PROPERTY(bool lowSpaceShowsBanner READ lowSpaceShowsBanner NOTIFY lowSpaceChanged)
    Q_PROPERTY(bool lowSpaceNoticeHidden READ lowSpaceNoticeHidden NOTIFY lowSpaceChanged)
    Q_PROPERTY(bool lowSpaceBannerFolded READ lowSpaceBannerFolded WRITE setLowSpaceBannerFolded NOTIFY lowSpaceChanged)
    Q_PROPERTY(QString lowSpaceBannerText READ lowSpaceBannerText NOTIFY lowSpaceChanged)
    // ---- end of low-space alerts: properties ----
    // ---- storage survey (AppModelSurvey.cpp) -------------------------------------------
    // The bar: [{id, name, bytes, bytesText, fraction}], apps, developer, downloads,
    // documents, other, free; empty until the first survey ends.
    Q_PROPERTY(QVariantList storageSegments READ storageSegmentsList NOTIFY storageSurveyChanged)
    // "Top space users": [{id, name, bytes, bytesText}], at most five.
    Q_PROPERTY(QVariantList topFolders READ topFoldersList NOTIFY storageSurveyChanged)
    // "Where the rest of the space is": [{id, title, bytes (null: unreadable), bytesText,
    // detail, howTo, path}].
    Q_PROPERTY(QVariantList coverageItems READ coverageItemsList NOTIFY storageSurveyChanged)
    // While a survey measures: the bytes counted so far as a byte text; empty otherwise.
    Q_PROPERTY(QString surveyBytesText READ surveyBytesText NOTIFY storageSurveyChanged)
    // While a survey measures: "Measuring folders…", then "Measuring tool files…".
    Q_PROPERTY(QString surveyStatus READ surveyStatus NOTIFY storageSurveyChanged)
    // ---- end storage survey ----

public:
    // `loadLiveData` false gives a model that reads and writes nothing and starts nothing.
    explicit AppModel(bool loadLiveData, QObject* parent = nullptr);
    ~AppModel() override;

    // QML's way to the one model: the instance handed to setQmlInstance (owned by C++).
    static AppModel* create(QQmlEngine*, QJSEngine*);
    static void setQmlInstance(AppModel* model);

    // False when the environment holds XCTestConfigurationFilePath (kept for tooling that
    // sets it); true otherwise.
    [[nodiscard]] static bool liveDataFromEnvironment();

    // ---- operations -------------------------------------------------------------------
    Q_INVOKABLE void start();
    Q_INVOKABLE void refresh();
    // The Overview's and the menu's Refresh: refresh, then a forced storage survey.
    Q_INVOKABLE void refreshEverything();
    void clockTick();
    Q_INVOKABLE void noteSessionEnd();
    void recheckFullDiskAccess();
    Q_INVOKABLE void surveyStorage(bool force);
    Q_INVOKABLE void scanDeveloperCaches();
    // The one way to open the clean-up preview from the Overview, the History screen, a
    // notification or a link: the Smart Clean plan, then the sheet.
    Q_INVOKABLE void openCleanupPreview();
    Q_INVOKABLE void requestCleanupSheet();
    Q_INVOKABLE void clearPreview();
    // Ctrl+digit and the Section menu: ask the window to show a section.
    Q_INVOKABLE void focusOnSection(const QString& name);
    Q_INVOKABLE void clearWantsCleanupSheet();
    Q_INVOKABLE void dismissError();
    Q_INVOKABLE void dismissCleanupNotice();
    Q_INVOKABLE QString byteText(double bytes) const;
    // The selection stored across restarts ("sidebarSelection" in the user defaults).
    Q_INVOKABLE QString storedSelection() const;
    Q_INVOKABLE void storeSelection(const QString& name);

    // Results coming back from a refresh; public so tests can drive them directly.
    void applySnapshot(const VolumeSnapshot& snapshot);
    void applyFileLists(std::vector<TrackedFile> desktop, std::vector<TrackedFile> downloads);

    // ---- settings setters: write, save, then the side effect ---------------------------
    Q_INVOKABLE void setNodeModulesPermanent(bool on);
    Q_INVOKABLE void setNodeModulesUntouchedDays(qint64 days);
    Q_INVOKABLE void setMenuBarShowsFreeSpace(bool on);
    Q_INVOKABLE void setLaunchAtLogin(bool on);
    void setDefaultFolderSchedule(CleanSchedule schedule);
    Q_INVOKABLE void setAlertsEnabled(bool on);
    void setLowSpaceUnit(LowSpaceUnit unit);
    Q_INVOKABLE void setAlertWhenBelowEither(bool on);
    Q_INVOKABLE void setLowSpaceRemindDaily(bool on);
    Q_INVOKABLE void setLowSpaceGigabytes(qint64 gigabytes);
    Q_INVOKABLE void setLowSpacePercent(qint64 percent);
    Q_INVOKABLE void setPlaySounds(bool on);

    // ---- activity log (AppModelLog.cpp) -------------------------------------------------
    // The one way into the log: newest first, capped, saved, counted in the lifetime
    // figures; a newly reached milestone is posted as a notification.
    void addLogEntries(const std::vector<ActionLogEntry>& entries);
    // Empties History and saves "log.json"; the lifetime counters stay.
    Q_INVOKABLE void clearLog();
    [[nodiscard]] const std::vector<ActionLogEntry>& logEntries() const { return logEntries_; }
    [[nodiscard]] ActivityLog* activityLog() const { return activityLog_; }

    // ---- notifications, links, login item (AppModelSystem.cpp) -------------------------
    // Silent when notifications are not registered (a model without live data) or the
    // desktop has no notification server.
    void postNotification(const std::string& title, const std::string& body);
    void postLowSpaceAlert(const std::string& body);
    // brimvale://watch and brimvale://scan; false leaves the link to other handlers.
    Q_INVOKABLE bool handleLink(const QUrl& url);
    // What a later start handed over: links, "--watch-folder PATH...", "--review-clean".
    // Anything else just brings the window forward.
    void handleInstanceArguments(const QStringList& arguments);
    // The file manager's "Watch with Build Watch": the first folder among `paths` is taken;
    // with none, the answer is the text to show ("Choose a folder to watch.").
    [[nodiscard]] std::optional<QString> watchFolderService(const QStringList& paths);
    // A folder someone asked to watch, waiting for the user; nothing is watched until then.
    [[nodiscard]] QString pendingWatchPath() const { return pendingWatchPath_.value_or(QString()); }
    [[nodiscard]] bool pendingWatchFromLink() const { return pendingWatchFromLink_; }
    // "enabled", "requiresApproval" or "off", as the autostart entry stands.
    Q_INVOKABLE QString loginItemStatus() const;

    // ---- state -------------------------------------------------------------------------
    [[nodiscard]] bool loadLiveData() const { return loadLiveData_; }
    [[nodiscard]] const AppPersistence& store() const { return store_; }
    [[nodiscard]] bool didStart() const { return didStart_; }
    [[nodiscard]] bool isRefreshing() const { return isRefreshing_; }
    [[nodiscard]] bool storageScanning() const { return storageScanning_; }
    [[nodiscard]] bool devScanning() const { return devScanning_; }
    [[nodiscard]] const VolumeSnapshot& latest() const { return latest_; }
    [[nodiscard]] const SpaceHistory& history() const { return history_; }
    [[nodiscard]] const std::optional<VolumeSnapshot>& sessionBaseline() const { return sessionBaseline_; }
    [[nodiscard]] const SpaceDelta& midnightDelta() const { return midnightDelta_; }
    [[nodiscard]] const SpaceDelta& lastOpenDelta() const { return lastOpenDelta_; }
    [[nodiscard]] const std::optional<TimePoint>& lastRefresh() const { return lastRefresh_; }
    [[nodiscard]] const std::vector<TrackedFile>& desktopFiles() const { return desktopFiles_; }
    [[nodiscard]] const std::vector<TrackedFile>& downloadFiles() const { return downloadFiles_; }
    [[nodiscard]] const BrimvaleSettings& settings() const { return settings_; }
    [[nodiscard]] const std::optional<CleanupNotice>& cleanupNotice() const { return cleanupNotice_; }
    [[nodiscard]] const Uuid& previewToken() const { return previewToken_; }
    [[nodiscard]] const Uuid& storageSurveyToken() const { return storageSurveyToken_; }
    [[nodiscard]] const Uuid& spaceMapToken() const { return spaceMapToken_; }
    [[nodiscard]] RepeatingClock* clock() const { return clock_; }
    // The preview sheet and the run of a Smart Clean (AppModelClean.cpp).
    [[nodiscard]] CleanRun* cleanRun() const { return cleanRun_; }
    [[nodiscard]] const CalendarContext& calendar() const { return calendar_; }

    [[nodiscard]] QString volumeName() const;
    [[nodiscard]] qint64 freeBytes() const { return latest_.freeBytes; }
    [[nodiscard]] qint64 totalBytes() const { return latest_.totalBytes; }
    // QML numbers are doubles; byte counts stay exact up to 9 PB.
    [[nodiscard]] double freeBytesForQml() const { return static_cast<double>(latest_.freeBytes); }
    [[nodiscard]] double totalBytesForQml() const { return static_cast<double>(latest_.totalBytes); }
    [[nodiscard]] QString freeText() const;
    [[nodiscard]] QString totalText() const;
    [[nodiscard]] QString midnightDeltaText() const;
    [[nodiscard]] QString lastOpenDeltaText() const;
    [[nodiscard]] QString lastRefreshText() const;
    [[nodiscard]] QString statusLine() const;
    [[nodiscard]] QVariantList newTodayFiles() const;
    [[nodiscard]] bool fullDiskAccessGranted() const { return fullDiskAccessGranted_; }
    [[nodiscard]] bool didReadFullDiskAccess() const { return didReadFullDiskAccess_; }
    [[nodiscard]] QString errorMessage() const;
    [[nodiscard]] QString banner() const;
    [[nodiscard]] bool hasCleanupNotice() const { return cleanupNotice_.has_value(); }
    [[nodiscard]] QString cleanupNoticeTitle() const;
    [[nodiscard]] QString cleanupNoticeMessage() const;
    [[nodiscard]] QString currentScreen() const;
    void setCurrentScreen(const QString& name);
    [[nodiscard]] QString focusSection() const;
    [[nodiscard]] int focusSectionToken() const { return focusSectionToken_; }
    [[nodiscard]] bool wantsCleanupSheet() const { return wantsCleanupSheet_; }
    [[nodiscard]] QVariantList sidebarGroups() const;
    [[nodiscard]] QVariantList sections() const;
    // The Space Map's state (AppModelSpace.cpp), made on first use and owned by this model.
    [[nodiscard]] SpaceMapModel* spaceMap() const;

    void setErrorMessage(std::optional<std::string> message);

    // ---- clean-up preview and folder access (AppModelCleanup.cpp) ------------------------
    // Every preview goes this way: a plan with neither entries nor refusals posts "Choose
    // what to preview. Nothing is selected." and changes nothing (false); otherwise the plan
    // is stored, every entry starts checked and the sheet opens in `mode` (true).
    bool presentCleanupPlan(CleanupPlan plan, CleanupSheetMode mode = CleanupSheetMode::clean);
    // Stores the plan; an equal plan does not notify.
    void setCleanupPlan(std::optional<CleanupPlan> plan);
    Q_INVOKABLE void setCleanupEntryExcluded(const QString& id, bool excluded);
    Q_INVOKABLE void dismissCleanupSheet();
    // The checked entries in plan order, for the cleaner. None left: posts "Nothing is
    // selected to clean." and gives nothing.
    [[nodiscard]] std::optional<std::vector<CleanupEntry>> entriesForCleaning();
    // The screen ran the folder chooser: an empty path means the user cancelled. True when the
    // folder was stored; a refresh then follows.
    Q_INVOKABLE bool grantFolderAccess(const QString& key, const QString& chosenFolder);
    [[nodiscard]] const std::optional<CleanupPlan>& cleanupPlan() const { return cleanupPlan_; }
    [[nodiscard]] const std::set<std::string>& cleanupExcluded() const { return cleanupExcluded_; }
    [[nodiscard]] CleanupSheetMode cleanupSheetMode() const { return cleanupSheetMode_; }
    [[nodiscard]] bool isCleanupSheetPresented() const { return isCleanupSheetPresented_; }
    [[nodiscard]] bool hasCleanupPlan() const { return cleanupPlan_.has_value(); }
    [[nodiscard]] QString cleanupSheetModeText() const;
    [[nodiscard]] QStringList cleanupExcludedList() const;
    [[nodiscard]] const FolderAccessState& folderState() const { return folderState_; }
    [[nodiscard]] QVariantMap folderStateMap() const;

    // ---- rule lists and the sort rule editor (AppModelRules.cpp) ----
    [[nodiscard]] const std::vector<CleanupRule>& rules() const { return rules_; }
    [[nodiscard]] const std::vector<SortRule>& sortRules() const { return sortRules_; }
    [[nodiscard]] const std::vector<FolderWatchRule>& folderRules() const { return folderRules_; }
    [[nodiscard]] const FolderRuleDraft& folderDraft() const { return folderDraft_; }
    // Replaces the sort rule list and writes both rule files.
    void setSortRules(std::vector<SortRule> rules);
    void setFolderRules(std::vector<FolderWatchRule> rules);

    [[nodiscard]] const std::string& draftPhrase() const { return draftPhrase_; }
    [[nodiscard]] QString draftPhraseText() const;
    void setDraftPhrase(const QString& text);
    [[nodiscard]] int editorLineIndex() const { return editorLineIndex_; }
    void setEditorLineIndex(int index);
    [[nodiscard]] int editorLineCount() const { return static_cast<int>(draftLines_.size()); }
    [[nodiscard]] bool ruleNameIsAutomatic() const { return ruleNameIsAutomatic_; }
    void setRuleNameIsAutomatic(bool on);
    [[nodiscard]] const std::string& draftDestinationPath() const { return draftDestinationPath_; }
    void setDraftDestinationPath(const std::string& path);
    // Keeps an edit of one line of a multi-line draft until the text changes.
    void setLineOverride(int index, const SortRule& rule);
    [[nodiscard]] const std::map<int, SortRule>& lineOverrides() const { return lineOverrides_; }
    [[nodiscard]] const std::vector<LineReview>& draftLines() const { return draftLines_; }
    [[nodiscard]] const std::optional<ParsedSort>& draftSort() const { return draftSort_; }
    [[nodiscard]] const std::optional<std::string>& draftError() const { return draftError_; }
    [[nodiscard]] const std::vector<PhraseSpan>& draftUnrecognized() const { return draftUnrecognized_; }
    [[nodiscard]] QString draftErrorText() const;
    [[nodiscard]] QVariantList draftUnrecognizedList() const;
    [[nodiscard]] QVariantMap draftSortMap() const;
    [[nodiscard]] FolderAccess& folderAccess();
    void setBanner(std::optional<std::string> text);
    void setCleanupNotice(std::optional<CleanupNotice> notice);

    // ---- low-space alerts (AppModelLowSpace.cpp) -------------------------------------------
    // Evaluated with every usable reading and after every low-space setting changes.
    [[nodiscard]] LowSpaceSeverity lowSpaceSeverity() const { return lowSpaceSeverity_; }
    [[nodiscard]] QString lowSpaceSeverityText() const;
    // Free space is below the limit (any severity but none).
    [[nodiscard]] bool lowSpaceIsLow() const { return lowSpaceIsLow_; }
    // Low, and either critical or not hidden by the user.
    [[nodiscard]] bool lowSpaceShowsBanner() const { return lowSpaceShowsBanner_; }
    // Set by "Hide this warning until free space drops further"; cleared by anything but a
    // warning, so the banner comes back at critical or after a recovery.
    [[nodiscard]] bool lowSpaceNoticeHidden() const { return lowSpaceNoticeHidden_; }
    // The banner shows as one compact line; cleared once free space recovers.
    [[nodiscard]] bool lowSpaceBannerFolded() const { return lowSpaceBannerFolded_; }
    // "Low on space: " + the free byte text + " left"; empty before the first evaluation.
    [[nodiscard]] QString lowSpaceBannerText() const { return lowSpaceBannerText_; }
    Q_INVOKABLE void hideLowSpaceNotice();
    Q_INVOKABLE void foldLowSpaceBanner() { setLowSpaceBannerFolded(true); }
    Q_INVOKABLE void setLowSpaceBannerFolded(bool folded);
    // ---- end of low-space alerts ------------------------------------------------------------

    // ---- Smart Clean (AppModelDevCaches.cpp) ---------------------------------------------
    [[nodiscard]] SmartCleanModel* smartClean() const { return smartClean_; }
    // "Scanning developer caches…" while the scan runs, the survey's steps after it.
    [[nodiscard]] QString devProgress() const { return QString::fromStdString(devProgress_); }
    void setDevProgress(const std::string& text);
    // After a clean: what came back, measured; or that the Trash still holds it; or that it
    // is being measured. Empty before the first clean of this session.
    [[nodiscard]] QString afterCleanLine() const;
    // Seam for tests: how the scanner finds unavailable simulator devices.
    void setDevScanOptions(DevCacheScanner::Options options) { devScanOptions_ = std::move(options); }

    // ---- duplicates (AppModelDuplicates.cpp) ---------------------------------------------
    [[nodiscard]] DuplicatesModel* duplicates() const;

    // ---- storage survey (AppModelSurvey.cpp) -------------------------------------------
    [[nodiscard]] const std::vector<StorageSegment>& storageSegments() const { return storageSegments_; }
    [[nodiscard]] const std::vector<StorageSegment>& topFolders() const { return topFolders_; }
    [[nodiscard]] const std::vector<CoverageItem>& coverageItems() const { return coverageItems_; }
    [[nodiscard]] const std::optional<TimePoint>& lastStorageSurvey() const { return lastStorageSurvey_; }
    [[nodiscard]] QVariantList storageSegmentsList() const;
    [[nodiscard]] QVariantList topFoldersList() const;
    [[nodiscard]] QVariantList coverageItemsList() const;
    [[nodiscard]] QString surveyBytesText() const { return surveyBytesText_; }
    [[nodiscard]] QString surveyStatus() const { return surveyStatus_; }
    // Seam: where the survey looks (default: SurveyPlaces::current(), read at each survey).
    void setSurveyPlaces(std::function<SurveyPlaces()> places) { surveyPlaces_ = std::move(places); }
    // ---- end storage survey ----

    // ---- seams for tests: the platform reads behind a refresh ---------------------------
    using VolumeReadFn = std::function<VolumeSnapshot(const std::string& home, TimePoint now)>;
    using NowFn = std::function<TimePoint()>;
    void setVolumeReader(VolumeReadFn reader) { readVolume_ = std::move(reader); }
    void setNow(NowFn now) { now_ = std::move(now); }
    void setCalendar(CalendarContext calendar) { calendar_ = std::move(calendar); }
    // The named bus connection notifications go out on (before `start`); empty: the session bus.
    void setNotificationConnectionName(const QString& name) { notificationConnectionName_ = name; }
    [[nodiscard]] TimePoint now() const { return now_(); }

signals:
    void didStartChanged();
    void isRefreshingChanged();
    void storageScanningChanged();
    void devScanningChanged();
    void latestChanged();
    void deltasChanged();
    void historyChanged();
    void lastRefreshChanged();
    void statusLineChanged();
    void fileListsChanged();
    void fullDiskAccessChanged();
    void errorMessageChanged();
    void bannerChanged();
    void cleanupNoticeChanged();
    void currentScreenChanged();
    void focusRequested();
    void wantsCleanupSheetChanged();
    void settingsChanged();
    // Emitted when something outside the window (a notification, a link) asks for it.
    void raiseWindowRequested();
    void cleanupPlanChanged();
    void cleanupExcludedChanged();
    void cleanupSheetChanged();
    void folderStateChanged();
    void logEntriesChanged();
    void watchRequestChanged();
    // A link asked for a fresh look; the pass it runs follows at once.
    void linkPassStarted();
    void sortRulesChanged();
    void folderRulesChanged();
    void ruleDraftChanged();
    // ---- low-space alerts: signal ----
    void lowSpaceChanged();
    void devProgressChanged();
    void afterCleanChanged();
    // Storage survey: segments, top folders, coverage, its progress text or status changed.
    void storageSurveyChanged();

private:
    void saveSettings() const;
    void saveHistory() const;
    void setIsRefreshing(bool on);
    void setStorageScanning(bool on);
    void setDevScanning(bool on);
    void installVolumeObservers();
    void startupPass();
    template <class Field, class Value>
    bool changeSetting(Field BrimvaleSettings::*field, Value value);

    // Steps that belong to features built in their own files; each says what it does and is
    // filled in by that feature. Empty bodies here mean the feature has not landed yet.
    void seedDefaultRules();
    void backfillLifetimeCounters();
    void restoreFolderAccess();
    void computeFolderState();
    void registerNotifications();
    void installLinkService();
    void alignArrangeWatcher();
    void evaluateLowSpace(const VolumeSnapshot& snapshot, TimePoint now);
    void playCue(const char* cue, double volume);
    void reevaluateCues();
    [[nodiscard]] std::optional<std::string> applyLoginItem(bool enabled); // error text, if any
    [[nodiscard]] bool loginItemEnabled() const;
    void dueChecksOnTick();
    void setUpActivityLog();
    void updateActivityLog();
    void runLinkPass();
    void requestWatch(const QString& path, bool fromLink);
    // The total Smart Clean would offer now; the streak counts a clear disk as a tidy day.
    [[nodiscard]] std::int64_t reclaimableTotal() const;
    void installCleanRun();
    void installSmartClean();

    const bool loadLiveData_;
    AppPersistence store_;
    CalendarContext calendar_;
    RepeatingClock* clock_ = nullptr;
    CleanRun* cleanRun_ = nullptr;
    VolumeWatcher* volumeWatcher_ = nullptr;
    VolumeReadFn readVolume_;
    NowFn now_;

    bool didStart_ = false;
    bool isRefreshing_ = false;
    bool storageScanning_ = false;
    bool devScanning_ = false;
    VolumeSnapshot latest_;
    SpaceHistory history_;
    std::optional<VolumeSnapshot> sessionBaseline_;
    SpaceDelta midnightDelta_;
    SpaceDelta lastOpenDelta_;
    std::optional<TimePoint> lastRefresh_;
    std::optional<TimePoint> lastStorageSurvey_;
    std::vector<TrackedFile> desktopFiles_;
    std::vector<TrackedFile> downloadFiles_;
    BrimvaleSettings settings_;
    bool fullDiskAccessGranted_ = false;
    bool didReadFullDiskAccess_ = false;
    bool isOnboardingPresented_ = false;
    std::optional<std::string> errorMessage_;
    std::optional<std::string> banner_;
    std::optional<CleanupNotice> cleanupNotice_;
    std::optional<CleanupNotice> deferredCleanupNotice_;
    SidebarSection currentScreen_ = SidebarSection::overview;
    SidebarSection focusSection_ = SidebarSection::overview;
    int focusSectionToken_ = 0;
    bool wantsCleanupSheet_ = false;
    Uuid previewToken_ = Uuid::generate();
    Uuid storageSurveyToken_ = Uuid::generate();
    Uuid spaceMapToken_ = Uuid::generate();
    std::optional<CleanupPlan> cleanupPlan_;
    std::set<std::string> cleanupExcluded_;
    CleanupSheetMode cleanupSheetMode_ = CleanupSheetMode::clean;
    bool isCleanupSheetPresented_ = false;
    std::optional<FolderAccess> folderAccess_; // made on first use, from the model's store
    FolderAccessState folderState_;
    std::vector<ActionLogEntry> logEntries_;
    ActivityLog* activityLog_ = nullptr;
    NotificationCenter* notifications_ = nullptr;
    QString notificationConnectionName_;
    std::optional<QString> pendingWatchPath_;
    bool pendingWatchFromLink_ = false;
    mutable DuplicatesModel* duplicates_ = nullptr; // child object, made on first use
    mutable SpaceMapModel* spaceMap_ = nullptr;
    SmartCleanModel* smartClean_ = nullptr;
    std::string devProgress_;
    DevCacheScanner::Options devScanOptions_;

    // ---- storage survey (AppModelSurvey.cpp) -------------------------------------------
    void finishSurvey(StorageSurvey::Sizes sizes, std::vector<CoverageItem> coverage);
    void setSurveyResults(std::vector<StorageSegment> segments, std::vector<StorageSegment> top,
                          std::vector<CoverageItem> coverage);
    void setSurveyProgressTexts(QString status, QString bytesText);
    void pollSurveyProgress();
    std::vector<StorageSegment> storageSegments_;
    std::vector<StorageSegment> topFolders_;
    std::vector<CoverageItem> coverageItems_;
    std::optional<StorageSurvey::Sizes> surveySizes_; // the last survey's figures, for a new bar
    bool surveyRunning_ = false;                      // a survey's measures are out
    std::shared_ptr<SurveyProgress> surveyProgress_;
    std::shared_ptr<CancellationFlag> surveyCancel_;
    QTimer* surveyPoll_ = nullptr;
    QString surveyStatus_;
    QString surveyBytesText_;
    std::function<SurveyPlaces()> surveyPlaces_;
    // ---- end storage survey ----

    // Rule lists and the sort rule editor (AppModelRules.cpp).
    void loadRuleFiles();
    void refreshRuleDraft();
    std::vector<CleanupRule> rules_;
    std::vector<SortRule> sortRules_;
    std::vector<FolderWatchRule> folderRules_;
    FolderRuleDraft folderDraft_;
    std::string draftPhrase_;
    std::vector<LineReview> draftLines_;
    int editorLineIndex_ = 0;
    std::map<int, SortRule> lineOverrides_;
    std::string draftDestinationPath_;
    bool ruleNameIsAutomatic_ = true;
    std::optional<ParsedSort> draftSort_;
    std::optional<std::string> draftError_;
    std::vector<PhraseSpan> draftUnrecognized_;

    // ---- low-space alerts: state (AppModelLowSpace.cpp) ----
    LowSpaceSeverity lowSpaceSeverity_ = LowSpaceSeverity::none;
    bool lowSpaceIsLow_ = false;
    bool lowSpaceShowsBanner_ = false;
    bool lowSpaceNoticeHidden_ = false;
    bool lowSpaceBannerFolded_ = false;
    QString lowSpaceBannerText_;
    // ---- end of low-space alerts: state ----
};

} // namespace bv
