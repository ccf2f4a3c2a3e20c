#include "core/qt/RepeatingClock.h"

#include <QSocketNotifier>
#include <QTimer>

#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include "core/ClockSchedule.h"

namespace bv {

RepeatingClock::RepeatingClock(QObject* parent) : QObject(parent) {}

RepeatingClock::~RepeatingClock() { stop(); }

std::chrono::nanoseconds RepeatingClock::bootTimeNow() {
    timespec ts{};
    ::clock_gettime(CLOCK_BOOTTIME, &ts);
    return std::chrono::seconds(ts.tv_sec) + std::chrono::nanoseconds(ts.tv_nsec);
}

void RepeatingClock::start(std::chrono::milliseconds interval, std::function<void()> action) {
    stop();
    fd_ = ::timerfd_create(CLOCK_BOOTTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    if (fd_ < 0) return;
    interval_ = interval;
    action_ = std::move(action);
    deadline_ = bootTimeNow() + interval_;
    notifier_ = std::make_unique<QSocketNotifier>(fd_, QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &RepeatingClock::fire);
    arm();
}

void RepeatingClock::stop() {
    notifier_.reset();
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

void RepeatingClock::arm() {
    itimerspec when{};
    when.it_value.tv_sec = static_cast<time_t>(std::chrono::duration_cast<std::chrono::seconds>(deadline_).count());
    when.it_value.tv_nsec = static_cast<long>((deadline_ - std::chrono::seconds(when.it_value.tv_sec)).count());
    ::timerfd_settime(fd_, TFD_TIMER_ABSTIME, &when, nullptr);
}

void RepeatingClock::fire() {
    std::uint64_t expirations = 0;
    if (::read(fd_, &expirations, sizeof expirations) <= 0) return;
    deadline_ = nextClockDeadline(deadline_, bootTimeNow(), interval_);
    arm();
    // Run the action in its own turn; the loop goes on at once.
    auto action = action_;
    QTimer::singleShot(0, this, [action] {
        if (action) action();
    });
}

} // namespace bv
