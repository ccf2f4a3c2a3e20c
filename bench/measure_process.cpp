// The folder measure as a bare process, to time against `du -s`: prints the allocated bytes
// under PATH and the number of files.
//   bench_measure_process PATH [THREADS]
#include <cstdio>
#include <cstdlib>

#include "space/FolderMeasure.h"

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) return std::fprintf(stderr, "usage: bench_measure_process PATH [THREADS]\n"), 2;
    bv::FolderMeasure::Options options;
    if (argc == 3) options.threads = std::atoi(argv[2]);
    const auto r = bv::FolderMeasure::measure(argv[1], options);
    std::printf("%lld\t%lld files\n", static_cast<long long>(r.bytes), static_cast<long long>(r.files));
}
