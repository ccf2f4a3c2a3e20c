#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace bv {

// What made a cleanup entry. The cleaner picks its checks by it. Text values are the case
// names ("devCache", "nodeModules", ...).
enum class CleanupOrigin { devCache, nodeModules, folderRule, duplicate, orphan, buildWatch };

// Whether an entry goes to the Trash or is removed for good. Text values "trash" and
// "permanent"; also stored inside folder rules.
enum class CleanupDisposition { trash, permanent };

// How sure the program is that an entry can go. Only the preview's badge depends on it:
// the cleaner applies every tier the same way.
enum class CleanupTier { regenerable, orphaned, abandonedTool, possiblyOrphaned, userData };

// Whether the one preview sheet cleans or confirms a new folder rule.
enum class CleanupSheetMode { clean, saveFolderRule };

[[nodiscard]] std::string_view textValue(CleanupOrigin origin);
[[nodiscard]] std::string_view textValue(CleanupDisposition disposition);
[[nodiscard]] std::string_view textValue(CleanupTier tier);
[[nodiscard]] std::string_view textValue(CleanupSheetMode mode);

// Reading a text value back. An unknown text (or a different case of letters) gives nothing.
[[nodiscard]] std::optional<CleanupOrigin> cleanupOriginFromText(std::string_view text);
[[nodiscard]] std::optional<CleanupDisposition> cleanupDispositionFromText(std::string_view text);
[[nodiscard]] std::optional<CleanupTier> cleanupTierFromText(std::string_view text);
[[nodiscard]] std::optional<CleanupSheetMode> cleanupSheetModeFromText(std::string_view text);

// The word the preview shows beside an entry of this tier, e.g. "Rebuilds itself".
[[nodiscard]] std::string_view badgeWord(CleanupTier tier);

} // namespace bv
