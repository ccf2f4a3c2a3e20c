// How long building the model takes with realistic state files: settings and a full
// 120-reading space history (and, once the activity log exists, a 500-entry log). The
// model is built on the GUI thread before the first frame, so this is start-up latency.
#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <cstdlib>

#include "model/AppModel.h"
#include "space/qt/SpaceStatus.h"
#include "core/BrimvaleSettings.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"

namespace {

void prepareHome() {
    char tmpl[] = "/tmp/brimvale-bench-XXXXXX";
    const std::string root = ::mkdtemp(tmpl);
    ::setenv("HOME", root.c_str(), 1);
    ::setenv("XDG_DATA_HOME", (root + "/data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (root + "/config").c_str(), 1);
    ::setenv("XDG_STATE_HOME", (root + "/state").c_str(), 1);
    const std::string dir = bv::XdgPaths::appDataDir();
    bv::makeDirectories(dir);
    bv::BrimvaleSettings settings;
    settings.installationID = "5C2F0E0A-8D7B-4A5E-9B0D-3F7A2C1E6B44";
    settings.seenCues = {"firstScan", "firstClean", "rulesIntro"};
    (void)bv::writeFileAtomically(dir + "/settings.json", bv::encodeJson(settings.toJson()));
    bv::SpaceHistory history;
    const auto start = bv::Clock::now() - std::chrono::hours(2);
    for (int i = 0; i < 120; ++i)
        history.observations.push_back({start + std::chrono::minutes(i), "Disk", 500'000'000'000, 100'000'000'000 + i});
    history.lastQuit = history.observations.back();
    (void)bv::writeFileAtomically(dir + "/space-history.json", bv::encodeJson(history.toJson()));
}

void ModelConstruction(benchmark::State& state) {
    for (auto _ : state) {
        bv::AppModel model(true);
        benchmark::DoNotOptimize(model.room<bv::SpaceStatus>()->history().observations.size());
    }
}
BENCHMARK(ModelConstruction)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    prepareHome();
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
