#include "screens/HoldToConfirm.h"

#include <QLineF>

#include <algorithm>

namespace bv {

HoldToConfirm::HoldToConfirm(QObject* parent) : QObject(parent) {
    timer_.setInterval(static_cast<int>(kStep * 1000));
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &HoldToConfirm::tick);
}

void HoldToConfirm::press(double x, double y) {
    if (disabled_ || committed_) return;
    holding_ = true;
    origin_ = QPointF(x, y);
    if (!timer_.isActive()) {
        clock_.start();
        timer_.start();
    }
    emit changed();
}

void HoldToConfirm::move(double x, double y) {
    if (holding_ && QLineF(origin_, QPointF(x, y)).length() > kCancelDistance) release();
}

void HoldToConfirm::release() {
    if (!holding_) return;
    holding_ = false;
    emit changed();
}

void HoldToConfirm::reset() {
    timer_.stop();
    holding_ = false;
    committed_ = false;
    progress_ = 0;
    emit changed();
}

void HoldToConfirm::tick() {
    const double dt = static_cast<double>(clock_.restart()) / 1000.0;
    advance(dt);
}

void HoldToConfirm::advance(double dt) {
    if (committed_) return; // the loop ended at commitment
    const double step = std::clamp(dt, 0.0, kMaxStep);
    if (holding_) {
        progress_ = std::min(1.0, progress_ + step / duration_);
        if (progress_ >= 1.0) {
            holding_ = false;
            committed_ = true;
            timer_.stop();
            emit changed();
            emit confirmed();
            return;
        }
    } else {
        progress_ = std::max(0.0, progress_ - step * releaseRate_ / duration_);
        if (progress_ <= 0.0) timer_.stop();
    }
    emit changed();
}

} // namespace bv
