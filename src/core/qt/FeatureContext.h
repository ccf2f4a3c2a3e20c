#pragma once
#include <functional>
#include <string>

#include "clean/CleanupKinds.h"
#include "clean/CleanupPlan.h"
#include "core/AppPersistence.h"

namespace bv {

class ActivityLog;
class AppClock;
class CalendarContext;
class CueBus;
class FolderAccessModel;
class Messages;
class NotificationCenter;
class Settings;
struct VolumeSnapshot;

// The folders every feature works against, read once when the model is built (tests set
// HOME and the XDG variables first).
struct AppFolders {
    std::string home;
    std::string dataHome;  // $XDG_DATA_HOME
    std::string stateHome; // $XDG_STATE_HOME
    std::string configHome;
    std::string logs;      // where clean manifests go; empty for a model without live data
};

// What every feature object is built from: the application's shared services, owned by the
// model and alive as long as it is. A feature object keeps this context (it is a bundle of
// references) and never reaches the model itself. All of it is GUI-thread only; background
// work takes plain copies out of it.
struct FeatureContext {
    bool live = false;              // false: no file is read or written, nothing starts
    AppPersistence store;           // the state folder
    AppFolders folders;
    AppClock& clock;                // now(), and `ticked` once a minute after the refresh
    CalendarContext& calendar;
    Messages& messages;             // the error line, the notice, the banner
    Settings& settings;
    NotificationCenter& notifications;
    ActivityLog& log;               // the one way into History: ActivityLog::addLogEntries
    CueBus& cues;
    FolderAccessModel& folderAccess;
    std::function<VolumeSnapshot()> readVolume;   // the start-up volume, read now (blocking)
    std::function<VolumeSnapshot()> latestVolume; // the last good reading of it (no I/O)
    // The one way to present a clean-up plan, owned by the run (CleanRun::presentPlan): false
    // when nothing was shown (an empty plan, said on the error line, or a run under way).
    std::function<bool(CleanupPlan, CleanupSheetMode)> presentPlan;
};

} // namespace bv
