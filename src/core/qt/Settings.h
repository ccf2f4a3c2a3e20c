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
    Q_PROPERTY(bool playSounds READ playSounds WRITE setPlaySounds NOTIFY changed)
    Q_PROPERTY(bool alertsEnabled READ alertsEnabled WRITE setAlertsEnabled NOTIFY changed)

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

    [[nodiscard]] bool playSounds() const { return value_.playSounds; }
    [[nodiscard]] bool alertsEnabled() const { return value_.alertsEnabled; }

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
