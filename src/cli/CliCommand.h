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

// Shared by commands: prints "usage: brimvale <usage>" to stderr and returns 2.
int usageError(const CliCommand& command, const std::string& problem = {});

} // namespace bv::cli
