#pragma once
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "diagnostics/DiagnosticsStore.h"

namespace bv {

// Watches one thread (the GUI thread) for hangs from a thread of its own, without waking the
// watched thread. The watched thread says when its event loop wakes (`noteAwake`) and when
// it is about to wait again (`noteAboutToBlock`); each call moves a counter. A thread that is
// awake and has not moved the counter for longer than the limit is stuck in one piece of
// work: one report labelled "hang" is saved at once (in case the program is killed while it
// hangs) and, when the thread moves on, replaced by one that says how long it was blocked in
// all. Nothing more is saved for that hang.
// An idle program costs nothing: while the watched thread waits for events, the watchdog's
// thread sleeps without a timeout. Each stretch of work wakes it once, and it looks again
// after at most one limit.
class HangWatchdog {
public:
    struct Setup {
        DiagnosticsStore store;
        std::chrono::milliseconds limit{5000};
        std::string version;
        std::function<void()> reportSaved; // called on the watchdog's thread after each save
    };

    explicit HangWatchdog(Setup setup);
    ~HangWatchdog(); // stops the thread and waits for it
    HangWatchdog(const HangWatchdog&) = delete;
    HangWatchdog& operator=(const HangWatchdog&) = delete;

    // Called on the watched thread only: cheap (two atomic stores; a wake-up of the watchdog
    // only when it sleeps waiting for work to start).
    void noteAwake();
    void noteAboutToBlock();

    // The report's JSON for a block of `blocked` so far (`ended`: the thread answered).
    [[nodiscard]] static std::string payload(std::chrono::milliseconds blocked, std::chrono::milliseconds limit,
                                             std::chrono::system_clock::time_point began, bool ended,
                                             const std::string& version);

private:
    struct Shared;
    void run();

    Setup setup_;
    std::shared_ptr<Shared> shared_;
    std::thread thread_;
};

} // namespace bv
