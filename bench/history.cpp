// What History costs per draw with a full log (500 entries, the cap): the day grouping with
// and without a search, and the whole refresh of the screen's figures and list. The peer
// is one pass that only sums the log's bytes, measured in the same run, so the ratio says
// how much the calendar work adds to the least the screen could do.
#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include "core/ActionLog.h"
#include "core/LogStatistics.h"
#include "core/qt/ActivityLog.h"
#include "model/AppModel.h"

namespace {

const bv::CalendarContext kCalendar("en_US", "Europe/Berlin");
const bv::TimePoint kNow = kCalendar.date(2026, 11, 17, 12);

std::vector<bv::ActionLogEntry> fullLog() {
    std::vector<bv::ActionLogEntry> log;
    for (int i = 0; i < static_cast<int>(bv::kLogCapacity); ++i) {
        bv::ActionLogEntry e;
        e.id = bv::Uuid::generate();
        e.date = kNow - std::chrono::hours(7 * i);
        e.title = "Removed node_modules " + std::to_string(i);
        e.subtitle = "Untouched for 41 days";
        e.symbolName = i % 3 ? "trash" : "arrow.right";
        e.bytesReclaimed = i % 3 ? 1'000'000 * i : 0;
        e.sourcePath = "/home/me/Projects/app-" + std::to_string(i) + "/node_modules";
        if (i % 3 == 0) e.destinationPath = "/home/me/Documents/Archive/app-" + std::to_string(i);
        log.push_back(std::move(e));
    }
    return log;
}

void SumOnlyPeer(benchmark::State& state) {
    const auto log = fullLog();
    for (auto _ : state) benchmark::DoNotOptimize(bv::bytesFreed(log, kNow - std::chrono::hours(24 * 7)));
}
BENCHMARK(SumOnlyPeer)->Unit(benchmark::kMicrosecond);

void ActivityDaysAll(benchmark::State& state) {
    const auto log = fullLog();
    for (auto _ : state) benchmark::DoNotOptimize(bv::activityDays(log, "", kNow, kCalendar));
}
BENCHMARK(ActivityDaysAll)->Unit(benchmark::kMillisecond);

void ActivityDaysSearch(benchmark::State& state) {
    const auto log = fullLog();
    for (auto _ : state) benchmark::DoNotOptimize(bv::activityDays(log, "archive", kNow, kCalendar));
}
BENCHMARK(ActivityDaysSearch)->Unit(benchmark::kMillisecond);

// Everything the screen recomputes when the log or a scan changes: week, bars, streak and
// the list model with its time texts.
void ScreenUpdate(benchmark::State& state) {
    bv::AppModel model(false);
    model.setNow([] { return kNow; });
    model.setCalendar(kCalendar);
    bv::ActivityLog& view = *model.activityLog();
    view.addLogEntries(fullLog());
    bool flip = false;
    // A search that trims to the same text still rebuilds everything, as a new log would.
    for (auto _ : state) view.setQuery((flip = !flip) ? QStringLiteral(" ") : QString());
}
BENCHMARK(ScreenUpdate)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
