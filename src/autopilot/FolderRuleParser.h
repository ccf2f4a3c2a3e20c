#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "autopilot/FolderWatchRule.h"

namespace bv {

// What a folder rule sentence says, field by field, for the builder to show.
struct ParsedFolderRule {
    std::vector<std::string> names;      // as typed
    std::vector<std::string> extensions; // lower case, no dot
    std::optional<std::string> glob;     // never set by the parser
    std::optional<std::int64_t> minimumAgeDays;
    std::optional<std::int64_t> keepNewest;
    bool directoriesOnly = false;
    FolderScope suggestedScope = FolderScope::children;
    std::string interpretation;
    friend bool operator==(const ParsedFolderRule&, const ParsedFolderRule&) = default;

    [[nodiscard]] Json toJson() const;
};

// The one error of the folder grammar.
inline constexpr const char* kFolderRuleUnrecognized =
    "Try \u201Cdelete subfolders named build, dist\u201D, \u201Cdelete files older than 7 days\u201D, "
    "\u201Cdelete *.log older than 14 days\u201D, or \u201Cdelete everything except the newest 5\u201D.";

// A tiny grammar of four sentence shapes, tried in order: keep the newest N, extensions,
// names of subfolders, files older than an age. Pure.
class FolderRuleParser {
public:
    // The reading, or nothing when no shape fits (the message is kFolderRuleUnrecognized).
    [[nodiscard]] static std::optional<ParsedFolderRule> parse(std::string_view phrase);

    // The sentence shown for a saved rule (different wording from `interpretation`).
    [[nodiscard]] static std::string summary(const std::vector<std::string>& names,
                                             const std::vector<std::string>& extensions, const FolderWatchRule& rule);
};

} // namespace bv
