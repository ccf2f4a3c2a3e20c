// The developer cache scan as a bare process, to time against `du -s` of the same folders.
//   bench_dev_cache_process HOME            scans and prints the total bytes and row counts
//   bench_dev_cache_process HOME --folders  prints every catalogue folder under HOME, one a line
#include <cstdio>
#include <cstring>

#include "clean/DevCacheCatalog.h"
#include "clean/DevCacheScanner.h"

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) return std::fprintf(stderr, "usage: bench_dev_cache_process HOME [--folders]\n"), 2;
    const std::string home = argv[1];
    if (argc == 3 && std::strcmp(argv[2], "--folders") == 0) {
        for (const auto& r : bv::DevCacheCatalog::recipes()) std::printf("%s/%s\n", home.c_str(), r.relativePath.c_str());
        return 0;
    }
    const auto result = bv::DevCacheScanner::scan(home);
    long long bytes = 0;
    for (const auto* list : {&result.rows, &result.reviewRows})
        for (const auto& row : *list) bytes += row.bytes;
    std::printf("%lld\t%zu rows\t%zu shown for size\n", bytes, result.rows.size(), result.reviewRows.size());
}
