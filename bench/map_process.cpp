// `brimvale map` as a bare process, for timing before the program's own entry point can run
// it: the same scan and the same printing as the terminal command.
//   bench_map_process [--json] PATH
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/XdgPaths.h"
#include "space/DiskMapScanner.h"
#include "space/DiskMapText.h"

int main(int argc, char** argv) {
    const bool json = argc == 3 && std::strcmp(argv[1], "--json") == 0;
    if (argc != 2 && !json) return std::fprintf(stderr, "usage: bench_map_process [--json] PATH\n"), 2;
    bv::DiskMapProgress progress;
    bv::DiskMapScanner::Options options;
    options.homePath = bv::XdgPaths::home();
    const auto map = bv::DiskMapScanner::scan(argv[argc - 1], progress, [] { return false; }, options);
    std::fputs(json ? (bv::encodeJson(bv::diskMapJson(map)) + "\n").c_str() : bv::diskMapText(map).c_str(), stdout);
}
