#include <cstdio>

#include "cli/CliCommand.h"

namespace bv::cli {

// Each command lives in its own file and is listed here once.
int runOverview(const std::vector<std::string>& args);
int runMap(const std::vector<std::string>& args);
int runCaches(const std::vector<std::string>& args);
int runDuplicates(const std::vector<std::string>& args);
int runRules(const std::vector<std::string>& args);

const std::vector<CliCommand>& commands() {
    static const std::vector<CliCommand> table{
        {"overview", "overview [--json]", "free space, changes since midnight and since the last visit, and today's new files", runOverview},
        {"map", "map [--json] PATH", "every folder above the size floor under PATH, largest first, with sizes and file counts", runMap},
        {"caches", "caches [--json]", "developer caches and large tool folders in your home, with sizes and what may go", runCaches},
        {"duplicates", "duplicates [--min BYTES] [--json] PATH...", "identical files under the folders, largest first", runDuplicates},
        {"rules", "rules check [--folder] [--json] SENTENCE... | rules preview|list [--json]",
         "how the rule editor reads each sentence; what the saved Auto-Sort rules would do now; the rules and their matches", runRules},
    };
    return table;
}

const CliCommand* findCommand(const std::string& name) {
    for (const auto& c : commands())
        if (name == c.name) return &c;
    return nullptr;
}

int printHelp() {
    std::printf("Brimvale: where your disk space went, and what can safely go.\n\n"
                "usage: brimvale [COMMAND [ARGS...]]\n\n"
                "With no command, opens the window (or prints the overview when there is no display).\n\n"
                "Commands (all read-only):\n");
    for (const auto& c : commands()) std::printf("  %-34s %s\n", c.usage, c.summary);
    return 0;
}

int usageError(const CliCommand& command, const std::string& problem) {
    if (!problem.empty()) std::fprintf(stderr, "brimvale %s: %s\n", command.name, problem.c_str());
    std::fprintf(stderr, "usage: brimvale %s\n", command.usage);
    return 2;
}

} // namespace bv::cli
