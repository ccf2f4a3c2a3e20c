// The rule editor reads the whole text box on every keystroke, on the GUI thread, so
// `reviewLines` over a ten-line text must stay well under a millisecond. The floor beside
// it is the least any reading must do: lower-case the same text and split it into words.
// The folder grammar's single sentence is measured too.
#include <benchmark/benchmark.h>

#include <string>

#include "autopilot/FolderRuleParser.h"
#include "foundation/PhraseText.h"
#include "sort/SortRuleParser.h"

namespace {

// Ten lines of the kinds people write: good rules, half-finished ones, and noise.
const std::string kTenLines =
    "move PDFs older than 2 weeks to Documents\n"
    "trash dmg, pkg and iso files older than 7 days\n"
    "zip screenshots every week\n"
    "rename screenshots to {date}-{name}\n"
    "move *.pdf files from example.com larger than 20 mb on my desktop\n"
    "put JPEGs in this folder only\n"
    "move files starting with \"Scan\" or containing Receipt\n"
    "keep invoices\n"
    "delete videos after 30 days old\n"
    "move installers and disk images older than 3 days daily\n";

void ReviewTenLines(benchmark::State& state) {
    const auto now = bv::Clock::now();
    (void)bv::SortRuleParser::reviewLines(kTenLines, now); // builds the expressions once
    for (auto _ : state) benchmark::DoNotOptimize(bv::SortRuleParser::reviewLines(kTenLines, now));
}
BENCHMARK(ReviewTenLines)->Unit(benchmark::kMicrosecond);

void FloorLowerAndSplitTenLines(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(bv::splitWords(bv::lowercased(kTenLines)));
}
BENCHMARK(FloorLowerAndSplitTenLines)->Unit(benchmark::kMicrosecond);

void ParseOneSortSentence(benchmark::State& state) {
    const auto now = bv::Clock::now();
    const bv::Uuid id = bv::Uuid::generate();
    for (auto _ : state)
        benchmark::DoNotOptimize(bv::SortRuleParser::parse("move PDFs older than 2 weeks to Documents", id, now));
}
BENCHMARK(ParseOneSortSentence)->Unit(benchmark::kMicrosecond);

void ParseOneFolderSentence(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(
            bv::FolderRuleParser::parse("delete subfolders named build, dist and out older than 30 days"));
}
BENCHMARK(ParseOneFolderSentence)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
