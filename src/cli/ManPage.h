#pragma once
#include <string>

namespace bv::cli {

// The manual page brimvale(1), in roff, made from the command table, the exit statuses and the
// program's own options, so the manual never says something `brimvale help` does not.
[[nodiscard]] std::string manPage(const std::string& version);

// Roff-safe text: backslashes and hyphens escaped, a leading dot or quote defused, and anything
// beyond ASCII written as a named Unicode escape.
[[nodiscard]] std::string roffText(const std::string& text);

} // namespace bv::cli
