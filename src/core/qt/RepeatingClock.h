#pragma once
#include <QObject>
#include <chrono>
#include <functional>
#include <memory>

class QSocketNotifier;

namespace bv {

// A repeating timer on CLOCK_BOOTTIME, which keeps counting while the machine sleeps, so a
// tick that fell due during a suspend fires right after wake-up, once. The action runs in a
// fresh event-loop turn and is never awaited: a slow tick does not delay the next one.
class RepeatingClock : public QObject {
    Q_OBJECT
public:
    explicit RepeatingClock(QObject* parent = nullptr);
    ~RepeatingClock() override;

    // Replaces a running loop. The first tick is one interval from now.
    void start(std::chrono::milliseconds interval, std::function<void()> action);
    void stop();
    [[nodiscard]] bool isRunning() const { return fd_ >= 0; }
    // The next deadline on the boot-time clock (for tests and diagnostics).
    [[nodiscard]] std::chrono::nanoseconds deadline() const { return deadline_; }

    [[nodiscard]] static std::chrono::nanoseconds bootTimeNow();

private:
    void fire();
    void arm();

    int fd_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::chrono::nanoseconds interval_{0};
    std::chrono::nanoseconds deadline_{0};
    std::function<void()> action_;
};

} // namespace bv
