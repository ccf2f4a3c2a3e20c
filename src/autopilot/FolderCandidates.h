#pragma once
#include <optional>
#include <string_view>
#include <vector>

#include "autopilot/FolderCandidate.h"
#include "autopilot/FolderWatchRule.h"

namespace bv {

// Listing a folder rule's folder and telling which items the rule names.
class FolderCandidates {
public:
    // Whether a name matches a glob as the regular expression "^" + pattern + "$" would, with
    // `*` as ".*", `?` as "." and every other character literal: `?` takes one character
    // (a whole UTF-8 sequence) and neither wildcard takes a line break. Case counts.
    [[nodiscard]] static bool globMatches(std::string_view glob, std::string_view name);

    // Whether the rule names this candidate on its own. A keep-newest rule names none (its
    // count decides instead); folders only when `directoriesOnly`; an age needs a date at
    // least that many days of 86400 seconds old; then any of names (ASCII case ignored),
    // extensions and the glob hits, or, when the rule has none of them, an age alone decides.
    // A rule with nothing at all names nothing.
    [[nodiscard]] static bool matches(const FolderCandidate& candidate, const FolderWatchRule& rule, TimePoint now);

    // Everything below the rule's folder the rule's scope reaches: its direct children, or
    // with `recursive` every depth, never entering a folder the rule names (what lies inside a
    // match is not listed), ".git", another file system or a link. Links are not listed at all.
    // Folders are listed with 0 bytes (see FolderRuleRunner::measure). Subfolders are read in
    // parallel; an unreadable subfolder adds nothing. In no particular order.
    // Nothing when the folder itself is missing or can't be read.
    [[nodiscard]] static std::optional<std::vector<FolderCandidate>> list(const FolderWatchRule& rule, TimePoint now,
                                                                          int threads = 0);
};

// The names the rest of the program uses.
[[nodiscard]] inline std::optional<std::vector<FolderCandidate>> listCandidates(const FolderWatchRule& rule, TimePoint now) {
    return FolderCandidates::list(rule, now);
}
[[nodiscard]] inline bool candidateMatches(const FolderCandidate& candidate, const FolderWatchRule& rule, TimePoint now) {
    return FolderCandidates::matches(candidate, rule, now);
}

} // namespace bv
