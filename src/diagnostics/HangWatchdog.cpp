#include "diagnostics/HangWatchdog.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

struct HangWatchdog::Shared {
    std::atomic<std::uint64_t> moves{0}; // every wake and every wait of the watched thread
    std::atomic<bool> awake{false};      // the watched thread is doing work now
    std::atomic<bool> sleeping{false};   // the watchdog waits, without a timeout, for work
    std::mutex mutex;
    std::condition_variable wake;
    bool stopping = false;
};

HangWatchdog::HangWatchdog(Setup setup) : setup_(std::move(setup)), shared_(std::make_shared<Shared>()) {
    thread_ = std::thread([this] { run(); });
    ::pthread_setname_np(thread_.native_handle(), "hang watchdog"); // as `top -H` shows it
}

void HangWatchdog::noteAwake() {
    shared_->moves.fetch_add(1);
    shared_->awake.store(true);
    if (shared_->sleeping.load()) {
        std::lock_guard lock(shared_->mutex);
        shared_->wake.notify_all();
    }
}

void HangWatchdog::noteAboutToBlock() {
    shared_->moves.fetch_add(1);
    shared_->awake.store(false);
}

HangWatchdog::~HangWatchdog() {
    {
        std::lock_guard lock(shared_->mutex);
        shared_->stopping = true;
    }
    shared_->wake.notify_all();
    if (thread_.joinable()) thread_.join();
}

std::string HangWatchdog::payload(std::chrono::milliseconds blocked, std::chrono::milliseconds limit,
                                  std::chrono::system_clock::time_point began, bool ended,
                                  const std::string& version) {
    Json j = Json::object();
    j["kind"] = "hang";
    j["program"] = "brimvale";
    j["version"] = version;
    j["pid"] = static_cast<std::int64_t>(::getpid());
    j["thread"] = "main";
    j["blockedMilliseconds"] = static_cast<std::int64_t>(blocked.count());
    j["hangLimitMilliseconds"] = static_cast<std::int64_t>(limit.count());
    j["began"] = isoDateText(began);
    // false: the report was written while the thread was still blocked, and the program
    // ended before it answered.
    j["ended"] = ended;
    return encodeJson(j);
}

void HangWatchdog::run() {
    using namespace std::chrono;
    using Steady = steady_clock;
    const auto limit = std::max(setup_.limit, milliseconds(2));
    Shared& shared = *shared_;
    std::unique_lock lock(shared.mutex);
    const auto stopping = [&] { return shared.stopping; };
    for (;;) {
        // Idle: sleep until the watched thread starts a piece of work.
        shared.sleeping.store(true);
        shared.wake.wait(lock, [&] { return shared.stopping || shared.awake.load(); });
        shared.sleeping.store(false);
        if (shared.stopping) return;
        // Working: look again after one limit. The thread moved on if the counter moved.
        const std::uint64_t seen = shared.moves.load();
        const auto since = Steady::now();
        if (shared.wake.wait_for(lock, limit, stopping)) return;
        if (shared.moves.load() != seen || !shared.awake.load()) continue;
        // Stuck in one piece of work: report now, and again with the whole time once it ends.
        const auto began = system_clock::now() - duration_cast<system_clock::duration>(Steady::now() - since);
        std::string report;
        const auto save = [&](bool ended) {
            const auto blocked = duration_cast<milliseconds>(Steady::now() - since);
            if (!report.empty()) ::unlink(report.c_str());
            report.clear();
            const auto data = payload(blocked, limit, began, ended, setup_.version);
            if (setup_.store.save(data, DiagnosticsStore::kindLabel(0, 1, 0, 0), system_clock::now(), &report) ==
                DiagnosticsStore::SaveResult::failed)
                report.clear();
            if (setup_.reportSaved) setup_.reportSaved();
        };
        lock.unlock();
        save(false);
        lock.lock();
        while (shared.moves.load() == seen)
            if (shared.wake.wait_for(lock, milliseconds(100), stopping)) return;
        lock.unlock();
        save(true);
        lock.lock();
    }
}

} // namespace bv
