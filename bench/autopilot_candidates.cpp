// What listing a recursive folder rule's candidates costs over a 200,000-entry tree, beside
// the floor: the bare parallel walk of bench/bare_walk.cpp (bench_bare_walk, run as its own
// process from beside this one; its start-up cost is measured on an empty folder and
// subtracted). The listing stats every entry for its date, matches each name against the
// rule and enters every folder it did not match. Goal: at most 1.3 x the floor.
//
// The tree is made once in $BV_BENCH_TREE (default /tmp/bv-autopilot-tree): 4 x 50 x 10
// folders holding 99 files each, a tenth of them "*.log".
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "autopilot/FolderCandidates.h"
#include "autopilot/FolderRuleParser.h"

extern char** environ;

namespace {

std::string treeRoot() {
    const char* env = std::getenv("BV_BENCH_TREE");
    return env && *env ? env : "/tmp/bv-autopilot-tree";
}

const std::string& ensureTree() {
    static const std::string root = [] {
        const std::string r = treeRoot();
        if (::access((r + "/.complete").c_str(), F_OK) == 0) return r;
        ::mkdir(r.c_str(), 0755);
        for (int a = 0; a < 4; ++a) {
            const std::string da = r + "/area-" + std::to_string(a);
            ::mkdir(da.c_str(), 0755);
            for (int b = 0; b < 50; ++b) {
                const std::string db = da + "/project-" + std::to_string(b);
                ::mkdir(db.c_str(), 0755);
                for (int c = 0; c < 10; ++c) {
                    const std::string dc = db + "/part-" + std::to_string(c);
                    ::mkdir(dc.c_str(), 0755);
                    for (int f = 0; f < 99; ++f)
                        std::ofstream(dc + "/file-" + std::to_string(f) + (f % 10 ? ".txt" : ".log")) << f;
                }
            }
        }
        std::ofstream(r + "/.complete") << "done";
        return r;
    }();
    return root;
}

std::string besideMe(const char* name) {
    char self[PATH_MAX];
    const ssize_t n = ::readlink("/proc/self/exe", self, sizeof self - 1);
    std::string dir = n > 0 ? std::string(self, static_cast<size_t>(n)) : std::string("./x");
    return dir.substr(0, dir.rfind('/') + 1) + name;
}

void runBareWalk(const std::string& path) {
    const std::string exe = besideMe("bench_bare_walk");
    char* argv[] = {const_cast<char*>(exe.c_str()), const_cast<char*>(path.c_str()), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    if (posix_spawn(&pid, exe.c_str(), &actions, nullptr, argv, environ) != 0) std::abort();
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    ::waitpid(pid, &status, 0);
}

void BareWalkStartup(benchmark::State& state) {
    const std::string empty = treeRoot() + "-empty";
    ::mkdir(empty.c_str(), 0755);
    for (auto _ : state) runBareWalk(empty);
}
BENCHMARK(BareWalkStartup)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(1.0);

void BareWalkFloor(benchmark::State& state) {
    const std::string& root = ensureTree();
    for (auto _ : state) runBareWalk(root);
}
BENCHMARK(BareWalkFloor)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

void ListCandidatesRecursive(benchmark::State& state) {
    bv::FolderWatchRule rule;
    rule.parentPath = ensureTree();
    rule.extensions = {"log"};
    rule.minimumAgeDays = 14;
    rule.scope = bv::FolderScope::recursive;
    std::size_t found = 0;
    for (auto _ : state) {
        const auto listed = bv::listCandidates(rule, bv::Clock::now());
        found = listed ? listed->size() : 0;
        benchmark::DoNotOptimize(found);
    }
    state.counters["entries"] = static_cast<double>(found);
}
BENCHMARK(ListCandidatesRecursive)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

} // namespace

BENCHMARK_MAIN();
