#pragma once
#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <functional>

#include "core/AppPersistence.h"
#include "core/BrimvaleSettings.h"

namespace bv {

class CueBus;
class Messages;

// The one settings record on the GUI thread: read once at construction, written whole after
// every change, and observed by the features that depend on it. Each setter writes its field
// (clamped where it has a clamp), saves "settings.json", and then does its one side effect.
class Settings : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Settings belong to AppModel.")
    // Every field the settings window edits. Each WRITE is the field's setter, so a figure out
    // of range comes back clamped; the enumerations travel as their JSON names.
    Q_PROPERTY(bool nodeModulesPermanent READ nodeModulesPermanent WRITE setNodeModulesPermanent NOTIFY changed)
    Q_PROPERTY(qint64 nodeModulesUntouchedDays READ nodeModulesUntouchedDays WRITE setNodeModulesUntouchedDays
                   NOTIFY changed)
    Q_PROPERTY(bool menuBarShowsFreeSpace READ menuBarShowsFreeSpace WRITE setMenuBarShowsFreeSpace NOTIFY changed)
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY changed)
    // "off", "hourly", "daily" or "weekly"; an unknown name changes nothing.
    Q_PROPERTY(QString defaultFolderSchedule READ defaultFolderScheduleName WRITE setDefaultFolderScheduleName
                   NOTIFY changed)
    Q_PROPERTY(bool alertsEnabled READ alertsEnabled WRITE setAlertsEnabled NOTIFY changed)
    // "gigabytes" or "percent"; an unknown name changes nothing.
    Q_PROPERTY(QString lowSpaceUnit READ lowSpaceUnitName WRITE setLowSpaceUnitName NOTIFY changed)
    Q_PROPERTY(qint64 lowSpaceGigabytes READ lowSpaceGigabytes WRITE setLowSpaceGigabytes NOTIFY changed)
    Q_PROPERTY(qint64 lowSpacePercent READ lowSpacePercent WRITE setLowSpacePercent NOTIFY changed)
    Q_PROPERTY(bool alertWhenBelowEither READ alertWhenBelowEither WRITE setAlertWhenBelowEither NOTIFY changed)
    Q_PROPERTY(bool lowSpaceRemindDaily READ lowSpaceRemindDaily WRITE setLowSpaceRemindDaily NOTIFY changed)
    Q_PROPERTY(bool playSounds READ playSounds WRITE setPlaySounds NOTIFY changed)

public:
    // `live` false: the record stays at its defaults and nothing is written.
    Settings(bool live, AppPersistence store, Messages& messages, CueBus& cues, QObject* parent = nullptr);

    [[nodiscard]] const BrimvaleSettings& value() const { return value_; }
    // Changes fields that have no setter of their own (counters, latches, flags); saves and
    // notifies only when the record changed.
    void update(const std::function<void(BrimvaleSettings&)>& change);

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
    // "enabled", "requiresApproval" or "off", as the autostart entry stands.
    Q_INVOKABLE QString loginItemStatus() const;

    void setDefaultFolderScheduleName(const QString& name);
    void setLowSpaceUnitName(const QString& name);

    [[nodiscard]] bool nodeModulesPermanent() const { return value_.nodeModulesPermanent; }
    [[nodiscard]] qint64 nodeModulesUntouchedDays() const { return value_.nodeModulesUntouchedDays; }
    [[nodiscard]] bool menuBarShowsFreeSpace() const { return value_.menuBarShowsFreeSpace; }
    [[nodiscard]] bool launchAtLogin() const { return value_.launchAtLogin; }
    [[nodiscard]] QString defaultFolderScheduleName() const;
    [[nodiscard]] bool alertsEnabled() const { return value_.alertsEnabled; }
    [[nodiscard]] QString lowSpaceUnitName() const;
    [[nodiscard]] qint64 lowSpaceGigabytes() const { return value_.lowSpaceGigabytes; }
    [[nodiscard]] qint64 lowSpacePercent() const { return value_.lowSpacePercent; }
    [[nodiscard]] bool alertWhenBelowEither() const { return value_.alertWhenBelowEither; }
    [[nodiscard]] bool lowSpaceRemindDaily() const { return value_.lowSpaceRemindDaily; }
    [[nodiscard]] bool playSounds() const { return value_.playSounds; }

signals:
    void changed();
    // A limit, the unit or the alert switch changed: low space is judged again.
    void lowSpaceLimitsChanged();
    void defaultFolderScheduleChanged();

private:
    template <class Field, class Value>
    bool change(Field BrimvaleSettings::*field, Value value);
    void save() const;

    const bool live_;
    AppPersistence store_;
    Messages& messages_;
    CueBus& cues_;
    BrimvaleSettings value_;
};

} // namespace bv
