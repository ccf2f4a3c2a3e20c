#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "autopilot/FolderCandidate.h"
#include "autopilot/FolderWatchRule.h"
#include "clean/CleanupPlan.h"
#include "core/ActionLogEntry.h"

namespace bv {

// From the items below a rule's folder to the cleanup entries of one rule.
class FolderRuleRunner {
public:
    // What the rule removes of the listed candidates, in path order: those its scope reaches
    // (depth 1 for `children`); of those, what `candidateMatches` names, or for a keep-newest
    // rule everything that counts (KeepNewestItems) but the newest n and any folder that holds
    // one of them. Nothing is taken inside another: a folder that goes takes its contents.
    [[nodiscard]] static std::vector<FolderCandidate> select(const FolderWatchRule& rule,
                                                             const std::vector<FolderCandidate>& candidates, TimePoint now);

    // Gives each selected folder its size, measured on a shared pool of threads.
    static void measure(std::vector<FolderCandidate>& selected);

    // The entries of the selected candidates, each held to the path law of folder rules first:
    // one that fails stays out with "<name> is in a protected folder and was skipped."
    [[nodiscard]] static CleanupPlan entries(const FolderWatchRule& rule, const std::vector<FolderCandidate>& selected,
                                             const std::string& home);

    // list, select, measure and entries together: what the rule would hand the cleaner now.
    // Nothing when the rule's folder is missing or can't be read. Blocking.
    [[nodiscard]] static std::optional<CleanupPlan> plan(const FolderWatchRule& rule, TimePoint now, const std::string& home);

    // The notes of the entries.
    static constexpr const char* kTrashNote = "Moves the item to the Trash. Empty the Trash in Finder to free the space.";
    static constexpr const char* kPermanentNote = "Deletes the item permanently. This cannot be undone.";
};

// The bound a confirmed preview sets, or nothing when the found figures stay within it (or
// the rule has no confirmed figures). Up to max(count + 20, count x 2) items and
// max(bytes + 1 GB, bytes x 2) bytes; reaching a limit exactly is still within it.
[[nodiscard]] std::optional<std::string> confirmedBoundMessage(std::int64_t count, std::int64_t bytes,
                                                               std::optional<std::int64_t> confirmedCount,
                                                               std::optional<std::int64_t> confirmedBytes);

// How a rule is named to people: its sentence, or the summary of its conditions without the
// closing full stop when it was built by hand.
[[nodiscard]] std::string folderRuleName(const FolderWatchRule& rule);

// A rule that a run passed over: "Autopilot skipped “<name>”: <reason>", and its History line.
struct FolderRuleSkip {
    std::string text;
    ActionLogEntry log; // symbol "hand.raised", nothing reclaimed
};
[[nodiscard]] FolderRuleSkip skipNote(const FolderWatchRule& rule, const std::string& reason, TimePoint now);

inline constexpr const char* kFolderMissingReason = "its folder moved or is missing. The rule is now off.";
inline constexpr const char* kPreviewAgainSuffix = ". Open Autopilot to preview it again.";

} // namespace bv
