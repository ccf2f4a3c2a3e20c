#pragma once
#include <string>
#include <vector>

namespace bv::cli {

// A read-only terminal command: `brimvale <name> [args...]`. `run` gets the words after the
// name, prints to stdout (errors to stderr) and returns the process exit code: 0 done,
// 1 the work failed, 2 the words were wrong (after printing the usage).
struct CliCommand {
    const char* name;
    const char* usage;   // one line, e.g. "map [--json] PATH"
    const char* summary; // what it prints, for `brimvale help`
    int (*run)(const std::vector<std::string>& args);
};

// Every command, in the order `help` lists them. Defined in CommandTable.cpp.
[[nodiscard]] const std::vector<CliCommand>& commands();
[[nodiscard]] const CliCommand* findCommand(const std::string& name);
int printHelp();
// `brimvale help COMMAND`: the command's usage and what it prints; 2 for a word that is no command.
int printCommandHelp(const std::string& name);
inline constexpr const char* kHelpSummary = "every command, or the usage of one and what it prints";

// A first word that is meant as a command (not an option, a brimvale: link or a path).
[[nodiscard]] bool looksLikeCommandWord(const std::string& word);
// The command (or "help") within three edits of `word`, closest first; nullptr when none is.
[[nodiscard]] const char* nearestCommand(const std::string& word);
// Says the word is not a command, suggests the nearest, and returns 2.
int unknownCommand(const std::string& word);

// Shared by commands: prints "usage: brimvale <usage>" to stderr and returns 2.
int usageError(const CliCommand& command, const std::string& problem = {});

} // namespace bv::cli
