#include "core/qt/Settings.h"

#include "core/LoginItemService.h"
#include "core/qt/CueBus.h"
#include "core/qt/Messages.h"
#include "foundation/Uuid.h"

namespace bv {

Settings::Settings(bool live, AppPersistence store, Messages& messages, CueBus& cues, QObject* parent)
    : QObject(parent), live_(live), store_(std::move(store)), messages_(messages), cues_(cues) {
    if (!live_) return;
    value_ = store_.load(BrimvaleSettings::fileName(), BrimvaleSettings::fromJson).value_or(BrimvaleSettings{});
    if (value_.installationID.empty()) {
        value_.installationID = Uuid::generate().text();
        save();
    }
}

void Settings::save() const {
    if (live_) store_.saveJson(BrimvaleSettings::fileName(), value_.toJson());
}

void Settings::update(const std::function<void(BrimvaleSettings&)>& change) {
    BrimvaleSettings next = value_;
    change(next);
    if (next == value_) return;
    value_ = std::move(next);
    save();
    emit changed();
}

template <class Field, class Value>
bool Settings::change(Field BrimvaleSettings::*field, Value value) {
    if (value_.*field == value) return false;
    value_.*field = value;
    save();
    emit changed();
    return true;
}

void Settings::setNodeModulesPermanent(bool on) {
    change(&BrimvaleSettings::nodeModulesPermanent, on);
    cues_.play("toggle", 0.224);
}

void Settings::setNodeModulesUntouchedDays(qint64 days) {
    change(&BrimvaleSettings::nodeModulesUntouchedDays, BrimvaleSettings::clampUntouchedDays(days));
}

void Settings::setMenuBarShowsFreeSpace(bool on) { change(&BrimvaleSettings::menuBarShowsFreeSpace, on); }

void Settings::setLaunchAtLogin(bool on) {
    change(&BrimvaleSettings::launchAtLogin, on);
    try {
        LoginItemService::live().setEnabled(on);
    } catch (const std::exception& e) {
        change(&BrimvaleSettings::launchAtLogin, LoginItemService::live().status() == LoginItemService::Status::enabled);
        messages_.setErrorMessage("Launch at login couldn\u2019t be changed. " + std::string(e.what()));
    }
}

void Settings::setDefaultFolderSchedule(CleanSchedule schedule) {
    if (change(&BrimvaleSettings::defaultFolderSchedule, schedule)) emit defaultFolderScheduleChanged();
}

void Settings::setAlertsEnabled(bool on) {
    change(&BrimvaleSettings::alertsEnabled, on);
    cues_.play("toggle", 0.224);
    emit lowSpaceLimitsChanged();
}

void Settings::setLowSpaceUnit(LowSpaceUnit unit) {
    change(&BrimvaleSettings::lowSpaceUnit, unit);
    emit lowSpaceLimitsChanged();
}

void Settings::setAlertWhenBelowEither(bool on) {
    change(&BrimvaleSettings::alertWhenBelowEither, on);
    emit lowSpaceLimitsChanged();
}

void Settings::setLowSpaceRemindDaily(bool on) {
    change(&BrimvaleSettings::lowSpaceRemindDaily, on);
    emit lowSpaceLimitsChanged();
}

void Settings::setLowSpaceGigabytes(qint64 gigabytes) {
    change(&BrimvaleSettings::lowSpaceGigabytes, BrimvaleSettings::clampGigabytes(gigabytes));
    emit lowSpaceLimitsChanged();
}

void Settings::setLowSpacePercent(qint64 percent) {
    change(&BrimvaleSettings::lowSpacePercent, BrimvaleSettings::clampPercent(percent));
    emit lowSpaceLimitsChanged();
}

void Settings::setPlaySounds(bool on) {
    change(&BrimvaleSettings::playSounds, on);
    cues_.play("toggle", 0.224);
}

void Settings::setDefaultFolderScheduleName(const QString& name) {
    if (const auto schedule = cleanScheduleFromName(name.toStdString())) setDefaultFolderSchedule(*schedule);
}

QString Settings::defaultFolderScheduleName() const {
    const std::string_view name = cleanScheduleName(value_.defaultFolderSchedule);
    return QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

void Settings::setLowSpaceUnitName(const QString& name) {
    for (const LowSpaceUnit unit : {LowSpaceUnit::gigabytes, LowSpaceUnit::percent})
        if (name == QLatin1String(bv::lowSpaceUnitName(unit))) setLowSpaceUnit(unit);
}

QString Settings::lowSpaceUnitName() const { return QLatin1String(bv::lowSpaceUnitName(value_.lowSpaceUnit)); }

QString Settings::loginItemStatus() const {
    switch (LoginItemService::live().status()) {
    case LoginItemService::Status::enabled: return QStringLiteral("enabled");
    case LoginItemService::Status::requiresApproval: return QStringLiteral("requiresApproval");
    case LoginItemService::Status::off: return QStringLiteral("off");
    }
    return QStringLiteral("off");
}

} // namespace bv
