// The look for projects over a generated source tree (bench/make_buildwatch_tree.py) beside
// its floor: a bare serial walk that lists every folder the look may reach, honouring the
// same stop list, hidden names and package extensions, and nothing else (no project
// recognition, no git, no measuring). Warm cache: one untimed pass of each first, then
// alternating timed passes; the medians and their ratio are printed with the number of git
// processes one look started. Goal: the look within 1.3 x the floor.
//
// usage: bench_buildwatch_look TREE [ROUNDS]   (TREE holds code/, as the generator makes it)
#include <dirent.h>
#include <fcntl.h>
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
    if (argc < 2) return std::fprintf(stderr, "usage: bench_buildwatch_look TREE [ROUNDS]\n"), 2;
    const std::string tree = BuildWatchCatalog::standardizedPath(argv[1]);
    const int rounds = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const std::string home = tree; // the tree stands in for a home folder: code/ is a search root
    const auto roots = BuildWatchScanner::searchRoots(home, {}, false);
    if (roots.empty()) return std::fprintf(stderr, "%s/code is missing: run bench/make_buildwatch_tree.py first\n", tree.c_str()), 1;

    const long long entries = bareWalk(roots.front());
    (void)BuildWatchScanner::lookForProjects(roots, {}, home);
    std::vector<double> floorTimes, lookTimes;
    std::size_t suggestions = 0, targets = 0;
    std::int64_t gitPerLook = 0;
    for (int r = 0; r < rounds; ++r) {
        auto t0 = std::chrono::steady_clock::now();
        (void)bareWalk(roots.front());
        floorTimes.push_back(seconds(std::chrono::steady_clock::now() - t0));

        const auto gitBefore = bv::GitIgnoreCheck::processesStarted();
        t0 = std::chrono::steady_clock::now();
        const auto look = BuildWatchScanner::lookForProjects(roots, {}, home);
        lookTimes.push_back(seconds(std::chrono::steady_clock::now() - t0));
        gitPerLook = bv::GitIgnoreCheck::processesStarted() - gitBefore;
        suggestions = look.suggestions.size();
        targets = 0;
        for (const auto& s : look.suggestions) targets += s.targets.size();
    }
    const double floorMedian = median(floorTimes), lookMedian = median(lookTimes);
    std::printf("tree: %s (%lld entries reachable by the walk), load average %.1f, %d rounds\n", tree.c_str(), entries,
                loadAverage(), rounds);
    std::printf("floor (bare walk with the stop list): median %.3f s\n", floorMedian);
    std::printf("look for projects (1 GB minimum):     median %.3f s, %zu suggestions, %zu targets measured\n", lookMedian,
                suggestions, targets);
    std::printf("git processes per look: %lld (one per work tree with candidates)\n", static_cast<long long>(gitPerLook));
    std::printf("ratio look / floor: %.2f x (goal <= 1.30 x)\n", lookMedian / floorMedian);
    return 0;
}
