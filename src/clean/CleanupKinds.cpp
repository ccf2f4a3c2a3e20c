#include "clean/CleanupKinds.h"

#include <array>
#include <utility>

namespace bv {
namespace {

// Each enumeration's text values in case order; the index is the case's value, so one table
// serves both directions.
constexpr std::array<std::string_view, 6> kOriginTexts{"devCache", "nodeModules", "folderRule",
                                                       "duplicate", "orphan", "buildWatch"};
constexpr std::array<std::string_view, 2> kDispositionTexts{"trash", "permanent"};
constexpr std::array<std::string_view, 5> kTierTexts{"regenerable", "orphaned", "abandonedTool",
                                                     "possiblyOrphaned", "userData"};
constexpr std::array<std::string_view, 5> kTierBadges{"Rebuilds itself", "App not installed", "Unused tool",
                                                      "Owner unknown", "Your files"};
constexpr std::array<std::string_view, 2> kSheetModeTexts{"clean", "saveFolderRule"};

template <class Enum, std::size_t N>
std::optional<Enum> fromTable(const std::array<std::string_view, N>& table, std::string_view text) {
    for (std::size_t i = 0; i < N; ++i)
        if (table[i] == text) return static_cast<Enum>(i);
    return std::nullopt;
}

} // namespace

std::string_view textValue(CleanupOrigin origin) { return kOriginTexts.at(static_cast<std::size_t>(origin)); }
std::string_view textValue(CleanupDisposition d) { return kDispositionTexts.at(static_cast<std::size_t>(d)); }
std::string_view textValue(CleanupTier tier) { return kTierTexts.at(static_cast<std::size_t>(tier)); }
std::string_view textValue(CleanupSheetMode mode) { return kSheetModeTexts.at(static_cast<std::size_t>(mode)); }

std::optional<CleanupOrigin> cleanupOriginFromText(std::string_view text) {
    return fromTable<CleanupOrigin>(kOriginTexts, text);
}
std::optional<CleanupDisposition> cleanupDispositionFromText(std::string_view text) {
    return fromTable<CleanupDisposition>(kDispositionTexts, text);
}
std::optional<CleanupTier> cleanupTierFromText(std::string_view text) {
    return fromTable<CleanupTier>(kTierTexts, text);
}
std::optional<CleanupSheetMode> cleanupSheetModeFromText(std::string_view text) {
    return fromTable<CleanupSheetMode>(kSheetModeTexts, text);
}

std::string_view badgeWord(CleanupTier tier) { return kTierBadges.at(static_cast<std::size_t>(tier)); }

} // namespace bv
