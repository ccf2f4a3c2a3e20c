// The Smart Clean run's ties to the model: where it finds the home folder, the clock, the
// volume reading, History, the settings, the notices and the sounds.
#include <QCoreApplication>

#include "clean/CleanupManifest.h"
#include "core/ActionLog.h"
#include "core/AppModel.h"
#include "platform/XdgPaths.h"

namespace bv {

void AppModel::installCleanRun() {
    CleanRun::Host host;
    host.home = [] { return XdgPaths::home(); };
    host.now = [this] { return now_(); };
    host.readVolume = [this] { return readVolume_(XdgPaths::home(), now_()); };
    host.appendLogs = [this](const std::vector<ActionLogEntry>& added) {
        if (loadLiveData_) addLogEntries(added);
    };
    host.didExplainTrashUndo = [this] { return settings_.didExplainTrashUndo; };
    host.markTrashUndoExplained = [this] {
        settings_.didExplainTrashUndo = true;
        saveSettings();
        emit settingsChanged();
    };
    host.setErrorMessage = [this](const std::string& text) { setErrorMessage(text); };
    host.showNotice = [this](const CleanupNotice& notice) { setCleanupNotice(notice); };
    host.playSound = [this](const char* sound) { playCue(sound, 1.0); };
    host.celebrate = [this] { playCue("success", 1.0); };
    host.refresh = [this] {
        if (loadLiveData_) refresh();
    };
    host.logsFolder = [this] { return loadLiveData_ ? XdgPaths::logsDir() : std::string(); };
    host.appVersion = [] { return CleanupManifest::versionText(QCoreApplication::applicationVersion().toStdString(), ""); };
    cleanRun_ = new CleanRun(std::move(host), this);
    // What the run tells the user after the window was left goes out as a notification.
    connect(cleanRun_, &CleanRun::notificationPosted, this, [this](const QString& title, const QString& body) {
        if (loadLiveData_) postNotification(title.toStdString(), body.toStdString());
    });
}

} // namespace bv
