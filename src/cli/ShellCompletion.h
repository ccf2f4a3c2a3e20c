#pragma once
#include <optional>
#include <string>

namespace bv::cli {

// Completion scripts for bash, zsh and fish, made from the command table: the commands and
// `help`'s words, each command's actions and options, the values an option allows, and
// folders where a command takes folders. Nothing when the shell is not one of those three.
[[nodiscard]] std::optional<std::string> completionScript(const std::string& shell);

} // namespace bv::cli
