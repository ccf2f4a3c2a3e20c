// `brimvale duplicates [--min BYTES] [--json] PATH...`: the duplicate scan in a terminal.
// Runs the same scan as the Duplicates screen and prints the groups, largest first. It only
// reads: nothing is moved or removed.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>

#include "cli/CliCommand.h"
#include "duplicates/DuplicateScanner.h"
#include "foundation/ByteText.h"
#include "foundation/Json.h"

namespace bv::cli {
namespace {

// The screen's starting choice of smallest file.
constexpr std::int64_t kDefaultMinimumBytes = 1000000;

bool parseBytes(const std::string& text, std::int64_t& out) {
    if (text.empty() || text.front() == '-') return false;
    errno = 0;
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != 0) return false;
    out = value;
    return true;
}

void printText(const std::vector<DuplicateGroup>& groups) {
    if (groups.empty()) {
        std::printf("No duplicates found.\n");
        return;
    }
    std::int64_t total = 0;
    std::printf("EXTRA COPIES · LARGEST FIRST\n");
    for (const auto& g : groups) {
        total += g.reclaimableBytes;
        const std::string frees =
            g.reclaimableBytes > 0 ? byteText(g.reclaimableBytes) + " to free" : "nothing to free (one storage object)";
        std::printf("\n%zu copies of %s · %s\n", g.files.size(), byteText(g.fileSize).c_str(), frees.c_str());
        for (const auto& f : g.files)
            std::printf("  %s  %s%s\n", f.modified ? isoDateText(*f.modified).c_str() : "                    ",
                        f.path.c_str(), f.sharesStorage ? "  (hard link)" : "");
    }
    std::printf("\n%zu group%s, %s could be freed.\n", groups.size(), groups.size() == 1 ? "" : "s",
                byteText(total).c_str());
}

} // namespace

int runDuplicates(const std::vector<std::string>& args) {
    const CliCommand& self = *findCommand("duplicates");
    bool json = false;
    std::int64_t minimum = kDefaultMinimumBytes;
    std::vector<std::string> paths;
    bool optionsEnded = false; // after "--" every word is a folder, even one starting with "-"
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (optionsEnded) {
            paths.push_back(a);
        } else if (a == "--") {
            optionsEnded = true;
        } else if (a == "--json") {
            json = true;
        } else if (a == "--min") {
            if (i + 1 >= args.size() || !parseBytes(args[i + 1], minimum))
                return usageError(self, "--min needs a number of bytes");
            ++i;
        } else if (a.size() > 1 && a.front() == '-') {
            return usageError(self, "unknown option " + a);
        } else {
            paths.push_back(a);
        }
    }
    if (paths.empty()) return usageError(self, "name at least one folder to search");
    for (const auto& p : paths) {
        struct stat st {};
        if (::stat(p.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
            std::fprintf(stderr, "brimvale duplicates: %s is not a folder\n", p.c_str());
            return 1;
        }
    }

    CancellationFlag flag; // never set: a terminal user stops with Ctrl-C
    DuplicateScanProgress progress;
    DuplicateScanner scanner(effectiveDuplicateMinimum(minimum), flag, progress);
    const auto groups = scanner.run(paths);

    if (json) std::fputs(encodeJson(encodeDuplicateGroups(groups)).c_str(), stdout);
    else printText(groups);
    return 0;
}

} // namespace bv::cli
