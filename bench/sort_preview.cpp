// A preview of every Auto-Sort rule lists Downloads, reads each file's dates, size and
// origin, and matches it against every rule. Measured over a Downloads of 10,000 files and
// 20 rules, beside the floor any preview must pay: listing the same folder and calling
// stat on each entry. Goal: the preview within twice the floor, and under 100 ms.
#include <benchmark/benchmark.h>

#include <dirent.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "sort/SortPreview.h"

namespace {

using namespace bv;

// The folder is made once, in the temporary folder, and removed at exit.
const std::string& downloads() {
    static const std::string folder = [] {
        std::string tmpl = (std::filesystem::temp_directory_path() / "bv-sort-bench-XXXXXX").string();
        const std::string made = ::mkdtemp(tmpl.data());
        const char* extensions[] = {"pdf", "jpg", "png", "dmg", "zip", "mp4", "txt", "docx", "csv", "heic"};
        const char* stems[] = {"Invoice-", "Screenshot 2026-", "IMG_", "report-", "setup-", "notes ", "data_"};
        const auto hourAgo = ::time(nullptr) - 3600 * 24 * 10;
        for (int i = 0; i < 10000; ++i) {
            const std::string path = made + "/" + stems[i % 7] + std::to_string(i) + "." + extensions[i % 10];
            std::ofstream(path) << std::string(static_cast<size_t>(i % 97), 'x');
            struct timespec times[2] = {{hourAgo, 0}, {hourAgo, 0}};
            ::utimensat(AT_FDCWD, path.c_str(), times, 0);
        }
        std::atexit([] { std::filesystem::remove_all(downloads()); });
        return made;
    }();
    return folder;
}

// With `askOrigin`, one rule asks where files came from, so every file's origin is read.
std::vector<SortRule> twentyRules(bool askOrigin = true) {
    std::vector<SortRule> rules;
    const auto add = [&](std::vector<SortCondition> conditions, SortAction action, MatchMode match = MatchMode::all) {
        SortRule r;
        r.id = Uuid::generate();
        r.name = r.phrase = "rule " + std::to_string(rules.size());
        r.conditions = std::move(conditions);
        r.conditions.push_back(SortCondition::location(SortPlace::downloads));
        r.action = std::move(action);
        r.match = match;
        rules.push_back(std::move(r));
    };
    for (const char* ext : {"pdf", "jpg", "png", "txt", "docx", "csv"})
        add({SortCondition::fileExtension(ext), SortCondition::olderThanDays(3)}, SortAction::moveToFolder("/tmp/x"));
    for (const char* kind : {"image", "video", "disk image", "archive", "screenshot"})
        add({SortCondition::kindIs(kind)}, SortAction::trash(), MatchMode::any);
    for (const char* part : {"invoice", "receipt", "report", "notes"})
        add({SortCondition::nameContains(part), SortCondition::minimumBytes(10)}, SortAction::archive());
    add({SortCondition::nameStartsWith("img_"), SortCondition::nameEndsWith("7")}, SortAction::rename("{date}-{name}"));
    if (askOrigin) add({SortCondition::downloadSource("example.com")}, SortAction::moveToFolder("/tmp/y"));
    else add({SortCondition::nameEndsWith("-9")}, SortAction::moveToFolder("/tmp/y"));
    add({SortCondition::nameEquals("data_9.csv")}, SortAction::trash());
    add({SortCondition::fileExtension("dmg"), SortCondition::fileExtension("iso"), SortCondition::olderThanDays(7)},
        SortAction::trash());
    return rules;
}

void FloorListAndStat(benchmark::State& state) {
    const std::string& folder = downloads();
    for (auto _ : state) {
        std::unique_ptr<DIR, int (*)(DIR*)> dir(::opendir(folder.c_str()), ::closedir);
        std::int64_t total = 0;
        while (const dirent* e = ::readdir(dir.get())) {
            struct stat st{};
            if (e->d_name[0] != '.' && ::lstat((folder + "/" + e->d_name).c_str(), &st) == 0) total += st.st_size;
        }
        benchmark::DoNotOptimize(total);
    }
}
BENCHMARK(FloorListAndStat)->Unit(benchmark::kMillisecond);

void PreviewTwentyRules(benchmark::State& state) {
    const std::string& folder = downloads();
    const auto rules = twentyRules(state.range(0) != 0);
    std::size_t actions = 0;
    for (auto _ : state) {
        const auto result = SortPreview::preview(rules, folder, {}, Clock::now());
        actions = result.actions.size();
        benchmark::DoNotOptimize(result);
    }
    state.counters["actions"] = static_cast<double>(actions);
}
// Argument 1: one of the rules asks for the download origin; 0: none does.
BENCHMARK(PreviewTwentyRules)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

// The two halves of the preview, to tell where its time goes.
void GatherOnly(benchmark::State& state) {
    const std::string& folder = downloads();
    for (auto _ : state) benchmark::DoNotOptimize(gatherSamples(folder, SortPlace::downloads, false, Clock::now()));
}
BENCHMARK(GatherOnly)->Unit(benchmark::kMillisecond);

void MatchAndPlanOnly(benchmark::State& state) {
    const auto rules = twentyRules();
    const auto samples = gatherSamples(downloads(), SortPlace::downloads, false, Clock::now());
    for (auto _ : state) benchmark::DoNotOptimize(SortPreview::simulate(rules, samples, Clock::now()));
}
BENCHMARK(MatchAndPlanOnly)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
