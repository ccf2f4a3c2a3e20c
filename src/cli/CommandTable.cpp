#include <algorithm>
#include <cstdio>
#include <numeric>

#include "cli/CliCommand.h"
#include "cli/ExitStatus.h"

namespace bv::cli {

// Each command lives in its own file and is listed here once.
int runOverview(const std::vector<std::string>& args);
int runMap(const std::vector<std::string>& args);
int runCaches(const std::vector<std::string>& args);
int runDuplicates(const std::vector<std::string>& args);
int runRules(const std::vector<std::string>& args);
int runProjects(const std::vector<std::string>& args);
int runOldProjects(const std::vector<std::string>& args);
int runLeftovers(const std::vector<std::string>& args);
int runAutopilot(const std::vector<std::string>& args);
int runHistory(const std::vector<std::string>& args);
int runDiagnostics(const std::vector<std::string>& args);

const std::vector<CliCommand>& commands() {
    static const std::vector<CliCommand> table{
        {"overview", "overview [--json]", "free space, changes since midnight and since the last visit, and today's new files", runOverview},
        {"map", "map [--json] PATH", "every folder above the size floor under PATH, largest first, with sizes and file counts", runMap},
        {"caches", "caches [--json]", "developer caches and large tool folders in your home, with sizes and what may go", runCaches},
        {"duplicates", "duplicates [--min BYTES] [--json] PATH...", "identical files under the folders, largest first", runDuplicates},
        {"old-projects", "old-projects [--json] [--days N] PARENT...", "rebuildable folders in projects you have not opened lately, proven by a manifest and ignored by git", runOldProjects},
        {"leftovers", "leftovers [--json]", "what apps that are no longer installed left behind, by owner, with how sure it is", runLeftovers},
        {"rules", "rules check [--folder] [--json] SENTENCE... | rules preview|list [--json]",
         "how the rule editor reads each sentence; what the saved Auto-Sort rules would do now; the rules and their matches", runRules},
        {"projects", "projects [--json] PATH... | --look [--json]", "the build folders Build Watch would measure in each project, or the projects it would suggest", runProjects},
        {"autopilot", "autopilot preview [--json] [--scope children|recursive] FOLDER SENTENCE | autopilot list [--json]", "what a folder rule would clean now, or the saved folder rules", runAutopilot},
        {"history", "history [--json]", "everything History holds, newest first, and whether each Trash move can still be put back", runHistory},
        {"diagnostics", "diagnostics [--json]", "the crash and hang reports saved on this computer, newest first", runDiagnostics},
    };
    return table;
}

const CliCommand* findCommand(const std::string& name) {
    for (const auto& c : commands())
        if (name == c.name) return &c;
    return nullptr;
}

namespace {

// Edits (insert, delete, replace one letter) between two words.
std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

} // namespace

bool looksLikeCommandWord(const std::string& word) {
    // Options, brimvale: links and paths go to the window; a bare word is meant as a command.
    return !word.empty() && word.front() != '-' && word.find_first_of(":/.") == std::string::npos;
}

const char* nearestCommand(const std::string& word) {
    const char* best = nullptr;
    std::size_t bestDistance = 4; // further than three edits is a different word, not a typo
    for (const auto& c : commands())
        if (const auto d = editDistance(word, c.name); d < bestDistance) {
            best = c.name;
            bestDistance = d;
        }
    if (editDistance(word, "help") < bestDistance) best = "help";
    return best;
}

int unknownCommand(const std::string& word) {
    std::fprintf(stderr, "brimvale: unknown command \u201c%s\u201d.", word.c_str());
    if (const char* near = nearestCommand(word)) std::fprintf(stderr, " Did you mean \u201c%s\u201d?", near);
    std::fprintf(stderr, "\nRun \u201cbrimvale help\u201d to see the commands.\n");
    return 2;
}

int printHelp() {
    std::printf("Brimvale: where your disk space went, and what can safely go.\n\n"
                "usage: brimvale [COMMAND [ARGS...]]\n\n"
                "With no command, opens the window (or prints the overview when there is no display).\n\n"
                "Commands (all read-only):\n");
    for (const auto& c : commands()) std::printf("  %-34s %s\n", c.usage, c.summary);
    std::printf("  %-34s %s\n\n--version prints the version.\n\nExit status:\n", "help [COMMAND]", kHelpSummary);
    for (const auto& s : kExitStatuses) std::printf("  %d  %s\n", s.code, s.meaning);
    return 0;
}

int usageError(const CliCommand& command, const std::string& problem) {
    if (!problem.empty()) std::fprintf(stderr, "brimvale %s: %s\n", command.name, problem.c_str());
    std::fprintf(stderr, "usage: brimvale %s\n", command.usage);
    return 2;
}

} // namespace bv::cli
