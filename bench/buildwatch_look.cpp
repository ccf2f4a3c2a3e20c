// The look for projects over a generated source tree (bench/make_buildwatch_tree.py) beside
// its floor: a bare serial walk that lists every folder the look may reach, honouring the
// same stop list, hidden names and package extensions, and nothing else (no project
// recognition, no git, no measuring). Warm cache: one untimed pass of each first, then
// alternating timed passes; the medians and their ratio are printed with the number of git
// processes one look started. Goal: the look within 1.3 x the floor. CPU time (user + system,
// all threads) is printed beside the wall time: the floor is one thread, the look is not.
//
// usage: bench_buildwatch_look TREE [ROUNDS] [--dump FILE]   (TREE holds code/, as the generator makes it)
// --dump writes what one look finds as JSON (with the usual minimum, and with a minimum of one
// byte, so every project's measured targets), to compare two builds of the look.
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "buildwatch/BuildWatchCatalog.h"
#include "buildwatch/BuildWatchScanner.h"
#include "buildwatch/GitIgnoreCheck.h"
#include "foundation/Json.h"

namespace {

using bv::BuildWatchCatalog;
using bv::BuildWatchScanner;

// Every folder the walk may enter, to any depth, listed once; gives the number of entries.
long long bareWalk(const std::string& root) {
    long long entries = 0;
    std::vector<std::string> stack{root};
    while (!stack.empty()) {
        const std::string dir = std::move(stack.back());
        stack.pop_back();
        DIR* d = ::opendir(dir.c_str());
        if (!d) continue;
        while (dirent* e = ::readdir(d)) {
            const char* n = e->d_name;
            if (n[0] == '.' && (!n[1] || (n[1] == '.' && !n[2]))) continue;
            ++entries;
            bool isDir = e->d_type == DT_DIR;
            if (e->d_type == DT_UNKNOWN) {
                struct stat st {};
                isDir = ::fstatat(::dirfd(d), n, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
            }
            if (isDir && !BuildWatchCatalog::walkSkips(n)) stack.push_back(dir + "/" + n);
        }
        ::closedir(d);
    }
    return entries;
}

double seconds(std::chrono::steady_clock::duration d) { return std::chrono::duration<double>(d).count(); }

// User and system time of every thread of this process so far.
double cpuSeconds() {
    rusage u {};
    ::getrusage(RUSAGE_SELF, &u);
    const auto s = [](const timeval& t) { return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6; };
    return s(u.ru_utime) + s(u.ru_stime);
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

double loadAverage() {
    std::ifstream f("/proc/loadavg");
    double l = 0;
    f >> l;
    return l;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    std::string dump;
    if (const auto it = std::find(args.begin(), args.end(), "--dump"); it != args.end() && it + 1 != args.end()) {
        dump = *(it + 1);
        args.erase(it, it + 2);
    }
    if (args.empty()) return std::fprintf(stderr, "usage: bench_buildwatch_look TREE [ROUNDS] [--dump FILE]\n"), 2;
    const std::string tree = BuildWatchCatalog::standardizedPath(args[0]);
    const int rounds = args.size() > 1 ? std::max(1, std::atoi(args[1].c_str())) : 5;
    const std::string home = tree; // the tree stands in for a home folder: code/ is a search root
    const auto roots = BuildWatchScanner::searchRoots(home, {}, false);
    if (roots.empty()) return std::fprintf(stderr, "%s/code is missing: run bench/make_buildwatch_tree.py first\n", tree.c_str()), 1;

    if (!dump.empty()) {
        bv::Json out = bv::Json::object();
        for (const auto& [key, minimum] : {std::pair{"suggestions", std::int64_t{1000000000}}, std::pair{"everyProject", std::int64_t{1}}}) {
            out[key] = bv::Json::array();
            for (const auto& s : BuildWatchScanner::lookForProjects(roots, {}, home, std::chrono::seconds(300), minimum).suggestions)
                out[key].push_back(bv::encodeBuildSuggestion(s));
        }
        std::ofstream(dump) << bv::encodeJson(out) << "\n";
        return 0;
    }
    const long long entries = bareWalk(roots.front());
    (void)BuildWatchScanner::lookForProjects(roots, {}, home);
    std::vector<double> floorTimes, lookTimes, floorCpu, lookCpu;
    std::size_t suggestions = 0, targets = 0;
    std::int64_t gitPerLook = 0;
    for (int r = 0; r < rounds; ++r) {
        auto t0 = std::chrono::steady_clock::now();
        double c0 = cpuSeconds();
        (void)bareWalk(roots.front());
        floorTimes.push_back(seconds(std::chrono::steady_clock::now() - t0));
        floorCpu.push_back(cpuSeconds() - c0);

        const auto gitBefore = bv::GitIgnoreCheck::processesStarted();
        t0 = std::chrono::steady_clock::now();
        c0 = cpuSeconds();
        const auto look = BuildWatchScanner::lookForProjects(roots, {}, home);
        lookTimes.push_back(seconds(std::chrono::steady_clock::now() - t0));
        lookCpu.push_back(cpuSeconds() - c0);
        gitPerLook = bv::GitIgnoreCheck::processesStarted() - gitBefore;
        suggestions = look.suggestions.size();
        targets = 0;
        for (const auto& s : look.suggestions) targets += s.targets.size();
    }
    const double floorMedian = median(floorTimes), lookMedian = median(lookTimes);
    std::printf("tree: %s (%lld entries reachable by the walk), load average %.1f, %d rounds\n", tree.c_str(), entries,
                loadAverage(), rounds);
    std::printf("floor (bare walk with the stop list, 1 thread): median %.3f s wall, %.3f s CPU\n", floorMedian,
                median(floorCpu));
    std::printf("look for projects (1 GB minimum):     median %.3f s wall, %.3f s CPU, %zu suggestions, %zu targets\n",
                lookMedian, median(lookCpu), suggestions, targets);
    std::printf("git processes per look: %lld (one per work tree with candidates)\n", static_cast<long long>(gitPerLook));
    std::printf("ratio look / floor: %.2f x wall (goal <= 1.30 x), %.2f x CPU\n", lookMedian / floorMedian,
                median(lookCpu) / median(floorCpu));
    return 0;
}
