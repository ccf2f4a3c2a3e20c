// `brimvale map [--json] PATH`: maps a folder or drive the way the Space Map does and prints
// the folders above the size floor. Read-only: it remembers no timing and saves no snapshot.
#include <csignal>
#include <cstdio>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "cli/CliCommand.h"
#include "foundation/CancellationFlag.h"
#include "platform/XdgPaths.h"
#include "space/DiskMapScanner.h"
#include "space/DiskMapText.h"

namespace bv::cli {
namespace {

// Ctrl-C stops the scan; the partial map is still printed, marked as partial.
volatile std::sig_atomic_t g_interrupted = 0;
void onInterrupt(int) { g_interrupted = 1; }

} // namespace

int runMap(const std::vector<std::string>& args) {
    const CliCommand& self = *findCommand("map");
    bool json = false;
    std::vector<std::string> paths;
    for (const auto& a : args) {
        if (a == "--json") json = true;
        else if (a.size() > 1 && a[0] == '-' && a != "--") return usageError(self, "unknown option " + a);
        else if (a != "--") paths.push_back(a);
    }
    if (paths.size() != 1) return usageError(self, paths.empty() ? "a folder to map is needed" : "only one folder at a time");
    struct stat st {};
    if (::stat(paths[0].c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
        std::fprintf(stderr, "brimvale map: %s is not a folder that can be read.\n", paths[0].c_str());
        return 1;
    }

    g_interrupted = 0;
    auto previous = std::signal(SIGINT, onInterrupt);
    DiskMapProgress progress;
    DiskMapScanner::Options options;
    options.homePath = XdgPaths::home();
    const DiskMap map = DiskMapScanner::scan(paths[0], progress, [] { return g_interrupted != 0; }, options);
    std::signal(SIGINT, previous);

    if (json) std::fputs((encodeJson(diskMapJson(map)) + "\n").c_str(), stdout);
    else std::fputs(diskMapText(map).c_str(), stdout);
    return 0;
}

} // namespace bv::cli
