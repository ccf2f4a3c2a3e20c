#pragma once
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace bv {

// The one-line hints, each shown once on the screen where it helps. Texts of the keys are
// the case names, which is also how a dismissed cue is remembered in the settings.
enum class CueKey { reviewClean, autoSortSuggestions, autopilotFirst, duplicatesFirst };

[[nodiscard]] std::string_view cueKeyName(CueKey key);
[[nodiscard]] std::optional<CueKey> cueKeyFromName(std::string_view name);

// Everything the choice of a cue reads, copied out of the model at the moment of asking, so
// the choice is a pure function that can run at every moment a cue may change.
struct CueContext {
    std::string screen;             // the current section's text ("overview", "rules", ...)
    std::set<std::string> seen;     // keys already dismissed
    bool sheetOpen = false;         // any sheet of the main window is up
    bool firstRunDone = false;
    bool scanning = false;          // the developer scan or the storage survey is running
    std::int64_t reclaimableBytes = 0;
    bool hasCleanedEver = false;    // the log holds an entry
    std::int64_t lastCleanFreed = 0;
    int suggestionCount = 0;        // sort suggestions on offer
    bool hasScannedDuplicates = false;
};

// The cue for this moment, or nothing: never during first run or under a sheet, and only
// while the thing it explains is there to be seen.
[[nodiscard]] std::optional<CueKey> chooseCue(const CueContext& context);

// What a cue says, and the title of its one button when it has one.
struct CueText {
    std::string text;
    std::optional<std::string> button;
    friend bool operator==(const CueText&, const CueText&) = default;
};

[[nodiscard]] CueText cueText(CueKey key, const CueContext& context);

// Adds the key to the dismissed list unless it is there already. True when the list changed
// (the caller then saves the settings and evaluates again).
[[nodiscard]] bool markCueSeen(std::vector<std::string>& seenCues, CueKey key);

} // namespace bv
