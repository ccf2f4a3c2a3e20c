#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clean/CleanupKinds.h"
#include "core/AppPersistence.h"
#include "core/CleanSchedule.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"
#include "foundation/Uuid.h"

namespace bv {

// Where below its folder a rule looks: only the direct children, or anywhere.
enum class FolderScope { children, recursive };
[[nodiscard]] const char* folderScopeName(FolderScope s);  // "children", "recursive"
[[nodiscard]] const char* folderScopeTitle(FolderScope s); // "Direct children", "Include subfolders"
[[nodiscard]] std::optional<FolderScope> folderScopeFromName(std::string_view name);

// One Autopilot rule: what to remove inside a folder, how, and how often.
// `parentBookmark` holds raw bytes (Base64 in JSON).
struct FolderWatchRule {
    Uuid id;
    std::string parentPath;
    std::optional<std::string> parentBookmark;
    std::string phrase; // empty when built by hand
    std::vector<std::string> names;
    std::vector<std::string> extensions; // lower case, no dot
    std::optional<std::string> glob;     // with * and ?
    std::optional<std::int64_t> minimumAgeDays;
    std::optional<std::int64_t> keepNewest;
    bool directoriesOnly = false;
    FolderScope scope = FolderScope::recursive;
    CleanupDisposition disposition = CleanupDisposition::trash;
    CleanSchedule schedule = CleanSchedule::daily;
    bool isEnabled = true;
    TimePoint createdAt;
    std::optional<TimePoint> nextRun;
    std::optional<std::int64_t> confirmedCount; // items of the preview the user confirmed
    std::optional<std::int64_t> confirmedBytes;

    friend bool operator==(const FolderWatchRule&, const FolderWatchRule&) = default;

    // Optional keys are written only when present.
    [[nodiscard]] Json toJson() const;
    // Every key but the optional ones is required; throws DecodeError otherwise.
    [[nodiscard]] static FolderWatchRule fromJson(const Json& json);

    // The facts on the rule's row: scope, "Trash"/"Permanent", names, "*.ext" forms, glob,
    // "after N days", "keep newest N", schedule.
    [[nodiscard]] std::vector<std::string> detailLines() const;
};

// "folder-rules.json": a plain array of rules.
inline constexpr const char* kFolderRulesFileName = "folder-rules.json";
[[nodiscard]] Json folderRulesToJson(const std::vector<FolderWatchRule>& rules);
[[nodiscard]] std::vector<FolderWatchRule> folderRulesFromJson(const Json& json); // throws DecodeError
// Absent or unreadable gives an empty list; no copy is kept of a bad file.
[[nodiscard]] std::vector<FolderWatchRule> loadFolderRules(const AppPersistence& persistence);
void saveFolderRules(const AppPersistence& persistence, const std::vector<FolderWatchRule>& rules);

} // namespace bv
