#pragma once
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "core/SidebarSection.h"
#include "foundation/CalendarContext.h"
#include "foundation/Dates.h"

class QQmlEngine;
class QJSEngine;

namespace bv {

struct FeatureContext;
struct VolumeSnapshot;
class ActivityLog;
class AppClock;
class CleanRun;
class CueBus;
class DiagnosticsModel;
class DuplicatesModel;
class FolderAccessModel;
class FolderRulesModel;
class ArrangeLive;
class AutoSortModel;
class BuildWatchModel;
class GuidanceModel;
class PutBackModel;
class LowSpaceModel;
class Messages;
class NotificationCenter;
class Settings;
class SmartCleanModel;
class SortRulesModel;
class SpaceMapModel;
class SpaceStatus;
class StorageSurveyModel;
class Updater;
class VolumeWatcher;
class WatchRequests;

// The application's shell, and QML's one way in. It owns the shared services (clock, store,
// calendar, settings, messages, notifications, log, folder access) and one object per
// feature, each built from the same FeatureContext; it starts them, refreshes the disk
// reading, fans the minute tick out, keeps the navigation, and routes links. It holds no
// feature's state. GUI thread only.
class AppModel : public QObject {
    Q_OBJECT
    Q_MOC_INCLUDE("model/AppRooms.h") // every room, complete, for the properties below
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool loadLiveData READ loadLiveData CONSTANT)
    Q_PROPERTY(bool didStart READ didStart NOTIFY didStartChanged)
    Q_PROPERTY(bool isRefreshing READ isRefreshing NOTIFY isRefreshingChanged)
    // "Scanning…" while the storage survey or the cache scan runs, else "Updated " and a time.
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY statusLineChanged)
    Q_PROPERTY(QString currentScreen READ currentScreen WRITE setCurrentScreen NOTIFY currentScreenChanged)
    Q_PROPERTY(QString focusSection READ focusSection NOTIFY focusRequested)
    Q_PROPERTY(int focusSectionToken READ focusSectionToken NOTIFY focusRequested)
    Q_PROPERTY(bool wantsCleanupSheet READ wantsCleanupSheet NOTIFY wantsCleanupSheetChanged)
    Q_PROPERTY(QVariantList sidebarGroups READ sidebarGroups CONSTANT)
    Q_PROPERTY(QVariantList sections READ sections CONSTANT)
    // The rooms: shared services, then one object per feature.
    Q_PROPERTY(bv::Messages* messages READ messages CONSTANT)
    Q_PROPERTY(bv::Settings* settings READ settings CONSTANT)
    Q_PROPERTY(bv::FolderAccessModel* folderAccess READ folderAccess CONSTANT)
    Q_PROPERTY(bv::ActivityLog* activityLog READ activityLog CONSTANT)
    Q_PROPERTY(bv::WatchRequests* watchRequests READ watchRequests CONSTANT)
    Q_PROPERTY(bv::CleanRun* cleanRun MEMBER cleanRun_ CONSTANT)
    Q_PROPERTY(bv::SpaceStatus* space MEMBER space_ CONSTANT)
    Q_PROPERTY(bv::LowSpaceModel* lowSpace MEMBER lowSpace_ CONSTANT)
    Q_PROPERTY(bv::StorageSurveyModel* survey MEMBER survey_ CONSTANT)
    Q_PROPERTY(bv::SmartCleanModel* smartClean MEMBER smartClean_ CONSTANT)
    Q_PROPERTY(bv::DuplicatesModel* duplicates MEMBER duplicates_ CONSTANT)
    Q_PROPERTY(bv::SpaceMapModel* spaceMap MEMBER spaceMap_ CONSTANT)
    Q_PROPERTY(bv::SortRulesModel* sortRules READ sortRules CONSTANT)
    Q_PROPERTY(bv::AutoSortModel* autoSort MEMBER autoSort_ CONSTANT)
    Q_PROPERTY(bv::FolderRulesModel* folderRules READ folderRules CONSTANT)
    Q_PROPERTY(bv::ArrangeLive* arrange MEMBER arrange_ CONSTANT)
    Q_PROPERTY(bv::GuidanceModel* guidance MEMBER guidance_ CONSTANT)
    Q_PROPERTY(bv::PutBackModel* putBack MEMBER putBack_ CONSTANT)
    Q_PROPERTY(bv::BuildWatchModel* buildWatch MEMBER buildWatch_ CONSTANT)
    Q_PROPERTY(bv::DiagnosticsModel* diagnostics MEMBER diagnostics_ CONSTANT)
    Q_PROPERTY(bv::Updater* updater MEMBER updater_ CONSTANT)

public:
    // `loadLiveData` false gives a model that reads and writes nothing and starts nothing.
    explicit AppModel(bool loadLiveData, QObject* parent = nullptr);
    ~AppModel() override;

    // QML's way to the one model: the instance handed to setQmlInstance (owned by C++).
    static AppModel* create(QQmlEngine*, QJSEngine*);
    static void setQmlInstance(AppModel* model);
    // False when the environment holds XCTestConfigurationFilePath (tooling sets it).
    [[nodiscard]] static bool liveDataFromEnvironment();

    // Once per process: restores access, attaches notifications, installs the volume
    // observers, refreshes, starts each feature and the minute clock.
    Q_INVOKABLE void start();
    // The volume reading and both "new today" lists, in the background; dropped while one runs.
    Q_INVOKABLE void refresh();
    // The Overview's and the menu's Refresh: refresh, then a forced survey.
    Q_INVOKABLE void refreshEverything();
    // One minute passed: refresh, then the features' due checks (AppClock::ticked).
    void clockTick();
    Q_INVOKABLE void noteSessionEnd();
    void recheckFullDiskAccess();
    // The one way to open the clean-up preview from the Overview, a notification or a link.
    Q_INVOKABLE void openCleanupPreview();
    Q_INVOKABLE void requestCleanupSheet();
    Q_INVOKABLE void clearWantsCleanupSheet();
    // Ctrl+digit and the Section menu: ask the window to show a section.
    Q_INVOKABLE void focusOnSection(const QString& name);
    Q_INVOKABLE QString byteText(double bytes) const;
    // The selection stored across restarts ("sidebarSelection" in the user defaults).
    Q_INVOKABLE QString storedSelection() const;
    Q_INVOKABLE void storeSelection(const QString& name);

    // A refresh's results; public so tests can drive them directly.
    void applySnapshot(const VolumeSnapshot& snapshot);

    // brimvale://watch and brimvale://scan; false leaves the link to other handlers.
    Q_INVOKABLE bool handleLink(const QUrl& url);
    // What a later start handed over: links, "--watch-folder PATH...", "--review-clean"; else raise.
    void handleInstanceArguments(const QStringList& arguments);
    // The file manager's "Watch with Build Watch": the first folder among `paths` is taken;
    // with none, the answer is the text to show ("Choose a folder to watch.").
    [[nodiscard]] std::optional<QString> watchFolderService(const QStringList& paths);

    [[nodiscard]] bool loadLiveData() const { return loadLiveData_; }
    [[nodiscard]] bool didStart() const { return didStart_; }
    [[nodiscard]] bool isRefreshing() const { return isRefreshing_; }
    [[nodiscard]] QString statusLine() const;
    [[nodiscard]] QString currentScreen() const;
    void setCurrentScreen(const QString& name);
    [[nodiscard]] QString focusSection() const;
    [[nodiscard]] int focusSectionToken() const { return focusSectionToken_; }
    [[nodiscard]] bool wantsCleanupSheet() const { return wantsCleanupSheet_; }
    [[nodiscard]] QVariantList sidebarGroups() const;
    [[nodiscard]] QVariantList sections() const;
    [[nodiscard]] TimePoint now() const;
    [[nodiscard]] const CalendarContext& calendar() const { return calendar_; }

    // ---- the rooms ----------------------------------------------------------------------
    template <class Room> // any feature object by its type; each exists once
    [[nodiscard]] Room* room() const { return findChild<Room*>(QString(), Qt::FindDirectChildrenOnly); }
    [[nodiscard]] FeatureContext& context() { return *context_; }
    [[nodiscard]] AppClock* clock() const { return clock_; }
    [[nodiscard]] CueBus* cues() const { return cues_; }
    [[nodiscard]] NotificationCenter* notifications() const { return notifications_; }
    [[nodiscard]] Messages* messages() const { return messages_; }
    [[nodiscard]] Settings* settings() const { return settings_; }
    [[nodiscard]] FolderAccessModel* folderAccess() const { return folderAccess_; }
    [[nodiscard]] ActivityLog* activityLog() const { return log_; }
    [[nodiscard]] WatchRequests* watchRequests() const { return watchRequests_; }
    [[nodiscard]] SortRulesModel* sortRules() const { return sortRules_; }
    [[nodiscard]] FolderRulesModel* folderRules() const { return folderRules_; }

    // Seams for tests.
    using VolumeReadFn = std::function<VolumeSnapshot(const std::string& home, TimePoint now)>;
    void setVolumeReader(VolumeReadFn reader);
    void setNow(std::function<TimePoint()> now);
    void setCalendar(CalendarContext calendar) { calendar_ = std::move(calendar); }
    // The named bus connection notifications go out on (before `start`); empty: the session bus.
    void setNotificationConnectionName(const QString& name) { notificationConnectionName_ = name; }

signals:
    void didStartChanged();
    void isRefreshingChanged();
    void statusLineChanged();
    void currentScreenChanged();
    void focusRequested();
    void wantsCleanupSheetChanged();
    // Emitted when something outside the window (a notification, a link) asks for it.
    void raiseWindowRequested();
    // A link asked for a fresh look; the pass it runs follows at once.
    void linkPassStarted();

private:
    void buildRooms();
    void connectRooms();
    void setIsRefreshing(bool on);
    void updateClearNow();
    void installVolumeObservers();
    void startupPass();
    void runLinkPass();

    const bool loadLiveData_;
    CalendarContext calendar_;
    VolumeReadFn readVolume_;
    QString notificationConnectionName_;
    std::unique_ptr<FeatureContext> context_;

    AppClock* clock_ = nullptr;
    CueBus* cues_ = nullptr;
    Messages* messages_ = nullptr;
    Settings* settings_ = nullptr;
    NotificationCenter* notifications_ = nullptr;
    FolderAccessModel* folderAccess_ = nullptr;
    ActivityLog* log_ = nullptr;
    WatchRequests* watchRequests_ = nullptr;
    VolumeWatcher* volumeWatcher_ = nullptr;
    CleanRun* cleanRun_ = nullptr;
    SpaceStatus* space_ = nullptr;
    LowSpaceModel* lowSpace_ = nullptr;
    StorageSurveyModel* survey_ = nullptr;
    SmartCleanModel* smartClean_ = nullptr;
    DuplicatesModel* duplicates_ = nullptr;
    SpaceMapModel* spaceMap_ = nullptr;
    SortRulesModel* sortRules_ = nullptr;
    AutoSortModel* autoSort_ = nullptr;
    FolderRulesModel* folderRules_ = nullptr;
    ArrangeLive* arrange_ = nullptr;
    GuidanceModel* guidance_ = nullptr;
    PutBackModel* putBack_ = nullptr;
    BuildWatchModel* buildWatch_ = nullptr;
    DiagnosticsModel* diagnostics_ = nullptr;
    Updater* updater_ = nullptr;

    bool didStart_ = false;
    bool isRefreshing_ = false;
    SidebarSection currentScreen_ = SidebarSection::overview;
    SidebarSection focusSection_ = SidebarSection::overview;
    int focusSectionToken_ = 0;
    bool wantsCleanupSheet_ = false;
};

} // namespace bv
