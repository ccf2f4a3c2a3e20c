// The old-project search over PARENT, timed in-process: the walk, git's proof, the sizes and
// the last-touched dates. Prints the wall time, the hits, their bytes and how many git
// processes were started. Compared against bench_bare_walk on the same tree by
// compare_old_projects.sh. With --no-git every candidate counts as ignored without asking git,
// which shows what the walk and the measures cost apart from git's processes.
#include <chrono>
#include <cstdio>
#include <cstring>

#include "clean/GitQuery.h"
#include "clean/OldProjectScanner.h"

int main(int argc, char** argv) {
    const bool noGit = argc == 3 && std::strcmp(argv[2], "--no-git") == 0;
    if (argc != 2 && !noGit) return std::fprintf(stderr, "usage: bench_old_projects PARENT [--no-git]\n"), 2;
    bv::OldProjectScanner::Options options;
    if (noGit)
        options.ignoreProbe = [](const std::string&, const std::vector<std::string>& folders) {
            return std::optional<std::vector<std::string>>(folders);
        };
    const auto start = std::chrono::steady_clock::now();
    const auto result = bv::OldProjectScanner::scan({argv[1]}, "/nonexistent-home", options);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    long long bytes = 0;
    for (const auto& h : result.hits) bytes += h.bytes;
    std::printf("%.3f s, %zu hits, %lld bytes, %d repositories asked, %ld git processes\n", seconds, result.hits.size(),
                bytes, result.repositoriesAsked, bv::GitQuery::processesStarted());
    return 0;
}
