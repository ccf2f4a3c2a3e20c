// `brimvale help COMMAND`: one command's usage, what it prints, and the exit statuses.
#include <cctype>
#include <cstdio>

#include "cli/CliCommand.h"
#include "cli/ExitStatus.h"

namespace bv::cli {

int printCommandHelp(const std::string& name) {
    const char* usage = "help [COMMAND]";
    const char* summary = kHelpSummary;
    if (const auto* command = findCommand(name)) {
        usage = command->usage;
        summary = command->summary;
    } else if (name != "help") {
        return unknownCommand(name);
    }
    std::string text = summary;
    if (!text.empty()) text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    // "Exit status: 0 success, 1 failure, 2 bad usage." (each meaning up to its colon)
    std::printf("usage: brimvale %s\n\n%s.\n\nExit status: ", usage, text.c_str());
    const char* separator = "";
    for (const auto& s : kExitStatuses) {
        std::printf("%s%d %.*s", separator, s.code, static_cast<int>(std::string(s.meaning).find(':')), s.meaning);
        separator = ", ";
    }
    std::printf(".\n");
    return 0;
}

} // namespace bv::cli
