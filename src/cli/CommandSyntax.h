#pragma once
#include <string>
#include <vector>

namespace bv::cli {

// An option a command's usage line names: "--json", "--min BYTES", "--scope children|recursive".
struct CommandOption {
    std::string name;                 // "--min"
    std::string valueName;            // "BYTES"; empty for a switch
    std::vector<std::string> choices; // the words the value must be, when the usage lists them
};

// What a command accepts, read back from its one-line usage so that shell completion and the
// manual follow the command table instead of keeping a copy of it. The usage grammar is the
// one the table is written in: alternatives separated by " | ", each optionally starting with
// the command's name; lower-case words before any option are actions ("rules check",
// "autopilot preview|list"); "[--opt]" is a switch, "[--opt VALUE]" or "[--opt a|b]" takes a
// value; UPPER-CASE words are operands, and PATH, PARENT, FOLDER or DIR ones are folders.
struct CommandSyntax {
    std::vector<std::string> actions;   // in usage order, each once
    std::vector<CommandOption> options; // in usage order, each once
    bool takesFolders = false;

    [[nodiscard]] static CommandSyntax parse(const std::string& commandName, const std::string& usage);
};

} // namespace bv::cli
