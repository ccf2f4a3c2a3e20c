#include "core/qt/AppClock.h"

#include "core/qt/RepeatingClock.h"

namespace bv {

AppClock::AppClock(QObject* parent) : QObject(parent), now_([] { return Clock::now(); }), repeating_(new RepeatingClock(this)) {}

AppClock::~AppClock() { repeating_->stop(); }

void AppClock::start(std::chrono::milliseconds interval, std::function<void()> onTick) {
    repeating_->start(interval, std::move(onTick));
}

void AppClock::stop() { repeating_->stop(); }

bool AppClock::isRunning() const { return repeating_->isRunning(); }

} // namespace bv
