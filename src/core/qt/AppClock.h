#pragma once
#include <QObject>

#include <chrono>
#include <functional>

#include "foundation/Dates.h"

namespace bv {

class RepeatingClock;

// "Now" for every feature object, and the minute tick that the model fans out. Tests replace
// `now` to move time without sleeping; features read it, never the system clock.
class AppClock : public QObject {
    Q_OBJECT
public:
    explicit AppClock(QObject* parent = nullptr);
    ~AppClock() override;

    [[nodiscard]] TimePoint now() const { return now_(); }
    void setNow(std::function<TimePoint()> now) { now_ = std::move(now); }

    // Starts the repeating tick (CLOCK_BOOTTIME, one tick after a long sleep). The model
    // calls its own tick first and then emits `ticked` for the features' due checks.
    void start(std::chrono::milliseconds interval, std::function<void()> onTick);
    void stop();
    [[nodiscard]] bool isRunning() const;
    [[nodiscard]] RepeatingClock* repeating() const { return repeating_; }

signals:
    // The features' due checks, after the model's refresh of this tick.
    void ticked();

private:
    std::function<TimePoint()> now_;
    RepeatingClock* repeating_;
};

} // namespace bv
