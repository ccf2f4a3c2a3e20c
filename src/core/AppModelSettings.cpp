// The settings setters: each writes its field (clamped where it has a clamp), saves
// "settings.json" and then does its one side effect.
#include "core/AppModel.h"

namespace bv {

template <class Field, class Value>
bool AppModel::changeSetting(Field BrimvaleSettings::*field, Value value) {
    if (settings_.*field == value) return false;
    settings_.*field = value;
    saveSettings();
    emit settingsChanged();
    return true;
}

void AppModel::setNodeModulesPermanent(bool on) {
    changeSetting(&BrimvaleSettings::nodeModulesPermanent, on);
    playCue("toggle", 0.224);
}

void AppModel::setNodeModulesUntouchedDays(qint64 days) {
    changeSetting(&BrimvaleSettings::nodeModulesUntouchedDays, BrimvaleSettings::clampUntouchedDays(days));
}

void AppModel::setMenuBarShowsFreeSpace(bool on) { changeSetting(&BrimvaleSettings::menuBarShowsFreeSpace, on); }

void AppModel::setLaunchAtLogin(bool on) {
    changeSetting(&BrimvaleSettings::launchAtLogin, on);
    if (auto error = applyLoginItem(on)) {
        changeSetting(&BrimvaleSettings::launchAtLogin, loginItemEnabled());
        setErrorMessage("Launch at login couldn\u2019t be changed. " + *error);
    }
}

void AppModel::setDefaultFolderSchedule(CleanSchedule schedule) {
    folderDraft_.schedule = schedule; // the open builder follows the new default at once
    changeSetting(&BrimvaleSettings::defaultFolderSchedule, schedule);
}

void AppModel::setAlertsEnabled(bool on) {
    changeSetting(&BrimvaleSettings::alertsEnabled, on);
    playCue("toggle", 0.224);
    evaluateLowSpace(latest_, now_());
}

void AppModel::setLowSpaceUnit(LowSpaceUnit unit) {
    changeSetting(&BrimvaleSettings::lowSpaceUnit, unit);
    evaluateLowSpace(latest_, now_());
}

void AppModel::setAlertWhenBelowEither(bool on) {
    changeSetting(&BrimvaleSettings::alertWhenBelowEither, on);
    evaluateLowSpace(latest_, now_());
}

void AppModel::setLowSpaceRemindDaily(bool on) {
    changeSetting(&BrimvaleSettings::lowSpaceRemindDaily, on);
    evaluateLowSpace(latest_, now_());
}

void AppModel::setLowSpaceGigabytes(qint64 gigabytes) {
    changeSetting(&BrimvaleSettings::lowSpaceGigabytes, BrimvaleSettings::clampGigabytes(gigabytes));
    evaluateLowSpace(latest_, now_());
}

void AppModel::setLowSpacePercent(qint64 percent) {
    changeSetting(&BrimvaleSettings::lowSpacePercent, BrimvaleSettings::clampPercent(percent));
    evaluateLowSpace(latest_, now_());
}

void AppModel::setPlaySounds(bool on) {
    changeSetting(&BrimvaleSettings::playSounds, on);
    playCue("toggle", 0.224);
}

} // namespace bv
