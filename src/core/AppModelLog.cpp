// The activity log on the model: adding, clearing, the lifetime counters, and keeping the
// History figures (week, streak, list) in step with the log and the state of the scans.
#include "core/AppModel.h"

#include "core/ActionLog.h"
#include "core/LogStatistics.h"

namespace bv {

void AppModel::setUpActivityLog() {
    activityLog_ = new ActivityLog(this);
    // The streak counts today once the disk is clear and the scans are done; a refresh
    // also carries the figures over midnight.
    connect(this, &AppModel::lastRefreshChanged, this, &AppModel::updateActivityLog);
    connect(this, &AppModel::devScanningChanged, this, &AppModel::updateActivityLog);
    connect(this, &AppModel::storageScanningChanged, this, &AppModel::updateActivityLog);
    updateActivityLog();
}

void AppModel::updateActivityLog() {
    if (!activityLog_) return;
    ActivityLog::Inputs in;
    in.log = logEntries_;
    in.clearNow = isClearNow(reclaimableTotal(), devScanning_, storageScanning_, lastRefresh_.has_value());
    in.now = now_();
    in.calendar = calendar_;
    in.lifetimeBytes = settings_.lifetimeBytesFreed;
    in.lifetimeCleanups = settings_.lifetimeCleanups;
    activityLog_->update(std::move(in));
}

void AppModel::addLogEntries(const std::vector<ActionLogEntry>& entries) {
    const LogAddition change = bv::addLogEntries(logEntries_, settings_, entries, now_(), calendar_);
    if (!change.logChanged) return;
    saveLog(store_, logEntries_);
    emit logEntriesChanged();
    if (change.milestone && loadLiveData_) postNotification(change.milestone->title, change.milestone->body);
    if (change.settingsChanged) {
        saveSettings();
        emit settingsChanged();
    }
    updateActivityLog();
}

void AppModel::clearLog() {
    bv::clearLog(logEntries_);
    saveLog(store_, logEntries_);
    emit logEntriesChanged();
    updateActivityLog();
}

// Runs once in each start: counters from a log written before they existed.
void AppModel::backfillLifetimeCounters() {
    if (!bv::backfillLifetimeCounters(logEntries_, settings_)) return;
    saveSettings();
    emit settingsChanged();
    updateActivityLog();
}

} // namespace bv
