#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "autopilot/FolderRuleParser.h"
#include "autopilot/FolderWatchRule.h"

namespace bv {

// The folder rule builder's state. The texts are what the user typed in its fields; the
// accessors below read them the way a saved rule stores them.
struct FolderRuleDraft {
    std::string phrase;
    std::optional<std::string> parentPath;
    std::optional<std::string> parentBookmark;
    std::optional<ParsedFolderRule> parsed;
    std::optional<std::string> parseError;
    std::string namesText = "build, dist, .next, target, DerivedData"; // comma-separated
    std::string extensionsText;
    std::string glob;
    std::int64_t minimumAgeDays = 7;
    std::int64_t keepNewest = 5;
    bool useAge = false;
    bool useKeepNewest = false;
    bool directoriesOnly = true;
    FolderScope scope = FolderScope::recursive;
    CleanupDisposition disposition = CleanupDisposition::trash;
    CleanSchedule schedule = CleanSchedule::daily;

    friend bool operator==(const FolderRuleDraft&, const FolderRuleDraft&) = default;

    // A fresh draft; one the user opens takes the schedule from defaultFolderSchedule.
    [[nodiscard]] static FolderRuleDraft fresh(CleanSchedule schedule = CleanSchedule::daily);

    // The names: comma-separated pieces, trimmed, empty ones dropped.
    [[nodiscard]] std::vector<std::string> names() const;
    // The extensions: pieces trimmed of white space, "*" and ".", lower-cased, empty dropped.
    [[nodiscard]] std::vector<std::string> extensions() const;
    // The glob when its trimmed text isn't empty.
    [[nodiscard]] std::optional<std::string> globPattern() const;
    [[nodiscard]] std::optional<std::int64_t> age() const;
    [[nodiscard]] std::optional<std::int64_t> newestToKeep() const;

    // True when the draft says something to remove: names, extensions, a glob, an age or
    // a count of newest items to keep.
    [[nodiscard]] bool saysWhatToRemove() const;

    // Takes a parsed sentence into the fields (the glob is left as it is).
    void apply(const ParsedFolderRule& reading);
};

// The check before a builder preview, its first failure as the sentence the builder shows:
// "Choose a folder first.", "Say what to remove: a name, a file type, or an age.", or the
// kept-safe message. The folder test is the path law's test for rule folders.
[[nodiscard]] std::optional<std::string> previewCheckMessage(const FolderRuleDraft& draft, const std::string& home);
// The same check when a sentence previews directly, in that flow's own words.
[[nodiscard]] std::optional<std::string> directPreviewCheckMessage(const FolderRuleDraft& draft, const std::string& home);

inline constexpr const char* kFolderPickerPrompt = "Choose the folder whose contents this rule should clean.";
inline constexpr const char* kFolderRuleSaved =
    "Saved. It will run on its schedule, and you can run it now from Autopilot.";

} // namespace bv
