#pragma once
#include <QElapsedTimer>
#include <QObject>
#include <QPointF>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace bv {

// The press-and-hold that stands before every permanent removal. Holding fills `progress`
// over `duration` seconds; releasing, or moving more than 10 points from where the press
// began, drains it `releaseRate` times as fast. Each step takes the real time since the last
// one but never more than 0.064 s, so a stalled window can't complete a hold. At 1 the
// control is committed and `confirmed` is emitted, once. A click does nothing.
class HoldToConfirm : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(double duration MEMBER duration_ NOTIFY changed)
    Q_PROPERTY(double releaseRate MEMBER releaseRate_ NOTIFY changed)
    Q_PROPERTY(bool disabled MEMBER disabled_ NOTIFY changed)
    Q_PROPERTY(double progress READ progress NOTIFY changed)
    Q_PROPERTY(bool holding READ holding NOTIFY changed)
    Q_PROPERTY(bool committed READ committed NOTIFY changed)
    Q_PROPERTY(bool looping READ looping NOTIFY changed)

public:
    static constexpr double kStep = 0.016;
    static constexpr double kMaxStep = 0.064;
    static constexpr double kCancelDistance = 10.0;

    explicit HoldToConfirm(QObject* parent = nullptr);

    Q_INVOKABLE void press(double x, double y);
    Q_INVOKABLE void move(double x, double y);
    Q_INVOKABLE void release();
    Q_INVOKABLE void reset(); // back to the start, e.g. when the sheet opens again

    // One step of the loop with `dt` seconds of real time (capped). Public for tests.
    void advance(double dt);

    [[nodiscard]] double progress() const { return progress_; }
    [[nodiscard]] bool holding() const { return holding_; }
    [[nodiscard]] bool committed() const { return committed_; }
    [[nodiscard]] bool looping() const { return timer_.isActive(); }

signals:
    void changed();
    void confirmed();

private:
    void tick();

    double duration_ = 1.8;
    double releaseRate_ = 2.5;
    bool disabled_ = false;
    double progress_ = 0;
    bool holding_ = false;
    bool committed_ = false;
    QPointF origin_;
    QTimer timer_;
    QElapsedTimer clock_;
};

} // namespace bv
