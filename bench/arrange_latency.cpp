// Auto-Arrange on real time and a real folder, two figures:
//  1. From the last write of a download to its move, median over 50 files written one after
//     another by a second process. Floors measured beside it: the settle time (2.0 s) the
//     goal is stated against, and the 3-second debounce after the last folder event that
//     no move can beat.
//  2. The watcher's CPU time (its thread: reading events, timers, sweeps) while a second
//     process creates 10,000 unrelated files in Downloads, beside the CPU time of that
//     process itself.
// Run: build/bench/bench_arrange_latency [files=50] [unrelated=10000]
#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>

#include "arrange/ArrangePatterns.h"
#include "arrange/ArrangeSweep.h"
#include "arrange/ArrangeTimers.h"
#include "arrange/NamePattern.h"
#include "foundation/CalendarContext.h"
#include "foundation/FileIO.h"
#include "platform/DirectoryWatcher.h"
#include "sort/RuleRunEngine.h"

using namespace bv;
using namespace std::chrono_literals;

namespace {

double seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

double threadCpuSeconds() {
    timespec ts{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) / 1e9;
}

// The watcher loop of the application, on a thread of its own: events restart the
// debounce, due deadlines sweep, and moves are recorded with their time.
struct Loop {
    Loop(std::string folder, SortRule rule) : downloads(std::move(folder)), rules{std::move(rule)} {}
    std::string downloads;
    std::vector<SortRule> rules;
    std::atomic<bool> stop{false};
    std::atomic<int> moved{0};
    std::mutex lock;
    std::vector<std::pair<std::string, TimePoint>> moves;
    int sweeps = 0;
    double cpu = 0;

    void run() {
        DirectoryWatcher watcher;
        (void)watcher.start(downloads);
        ArrangeTimers timers;
        ArrangeSettleTracker tracker;
        std::set<std::string> leftAlone;
        const RuleRunEngine engine(downloads, {}, CalendarContext("en_US", "UTC"));
        const double cpuStart = threadCpuSeconds();
        TimePoint readAgain{};
        while (!stop) {
            const TimePoint now = Clock::now();
            if (timers.takeDue(now)) {
                ++sweeps;
                auto out = runArrangeSweep(downloads, rules, tracker, leftAlone, now, engine);
                tracker = std::move(out.tracker);
                leftAlone = std::move(out.leftAlone);
                {
                    const std::lock_guard<std::mutex> hold(lock);
                    for (const auto& m : out.moved) moves.emplace_back(m.fileName, Clock::now());
                }
                moved += static_cast<int>(out.moved.size());
                timers.finish(Clock::now(), out.stillSettling, out.movedNames());
                continue;
            }
            TimePoint wake = now + 50ms;
            if (auto d = timers.nextDeadline()) wake = std::min(wake, *d);
            const bool resting = now < readAgain;
            if (resting) wake = std::min(wake, readAgain);
            const int wait = static_cast<int>(std::max<std::int64_t>(
                std::chrono::duration_cast<std::chrono::milliseconds>(wake - now).count() + 1, 1));
            pollfd p{watcher.fd(), POLLIN, 0};
            if (::poll(&p, resting ? 0 : 1, wait) > 0) {
                for (const auto& e : watcher.readEvents()) timers.noteEntryEvent(Clock::now(), e.name, e.left);
                readAgain = Clock::now() + ArrangeTimers::kReadPause;
            }
        }
        cpu = threadCpuSeconds() - cpuStart;
    }
};

std::string freshFolder(const char* name) {
    char tmpl[] = "/tmp/bv-arrange-bench-XXXXXX";
    const std::string root = ::mkdtemp(tmpl);
    makeDirectories(root + "/" + name);
    return root + "/" + name;
}

} // namespace

int main(int argc, char** argv) {
    const int files = argc > 1 ? std::atoi(argv[1]) : 50;
    const int unrelated = argc > 2 ? std::atoi(argv[2]) : 10000;
    const std::string downloads = freshFolder("Downloads");
    const std::string sorted = downloads + "/../Sorted";
    const SortRule rule = makeArrangeRule("vk-", *NamePattern::parse("vk-"), sorted, Clock::now() - 1s);

    // 1. Latency: each file written in four chunks 200 ms apart, the next one after the move.
    std::vector<double> latencies;
    {
        Loop loop(downloads, rule);
        std::thread watcher([&] { loop.run(); });
        for (int i = 0; i < files; ++i) {
            const std::string name = "vk-" + std::to_string(i) + ".bin";
            const int fd = ::open((downloads + "/" + name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
            const std::string chunk(256 * 1024, 'b');
            TimePoint lastWrite;
            for (int c = 0; c < 4; ++c) {
                if (c) std::this_thread::sleep_for(200ms);
                if (::write(fd, chunk.data(), chunk.size()) < 0) return 1;
                lastWrite = Clock::now();
            }
            ::close(fd);
            while (loop.moved.load() <= i) std::this_thread::sleep_for(5ms);
            const std::lock_guard<std::mutex> hold(loop.lock);
            latencies.push_back(seconds(loop.moves.back().second - lastWrite));
        }
        loop.stop = true;
        watcher.join();
    }
    std::sort(latencies.begin(), latencies.end());
    const double median = latencies[latencies.size() / 2];
    const double settle = seconds(ArrangeSettleTracker::kSettleTime);
    const double debounce = seconds(ArrangeTimers::kDebounce);
    std::printf("last write to move, %d files: median %.3f s, min %.3f s, max %.3f s\n", files, median,
                latencies.front(), latencies.back());
    std::printf("  vs settle time %.1f s: +%.0f ms (goal +250 ms) ratio %.2f\n", settle, (median - settle) * 1000,
                median / settle);
    std::printf("  vs the 3 s debounce after the last event: +%.0f ms, ratio %.2f\n", (median - debounce) * 1000,
                median / debounce);

    // 2. CPU of the watcher while unrelated files arrive.
    {
        const std::string busy = freshFolder("Downloads");
        Loop loop(busy, rule);
        std::thread watcher([&] { loop.run(); });
        std::this_thread::sleep_for(100ms);
        const TimePoint start = Clock::now();
        const pid_t creator = ::fork();
        if (creator == 0) {
            for (int i = 0; i < unrelated; ++i) {
                const int fd = ::open((busy + "/other-" + std::to_string(i) + ".dat").c_str(),
                                      O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
                if (fd < 0 || ::write(fd, "data", 4) != 4) ::_exit(1);
                ::close(fd);
            }
            ::_exit(0);
        }
        int status = 0;
        rusage usage{};
        ::wait4(creator, &status, 0, &usage);
        const double created = seconds(Clock::now() - start);
        // Let the debounce end and its sweep list the folder once.
        std::this_thread::sleep_for(ArrangeTimers::kDebounce + 1500ms);
        loop.stop = true;
        watcher.join();
        const double creatorCpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                                  static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
        std::printf("watcher CPU while %d unrelated files were created (%.2f s): %.1f ms in %d sweep(s); "
                    "the creating process used %.1f ms, ratio %.3f\n",
                    unrelated, created, loop.cpu * 1000, loop.sweeps, creatorCpu * 1000, loop.cpu / creatorCpu);
    }
    return 0;
}
