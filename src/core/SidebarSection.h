#pragma once
#include <optional>
#include <string_view>
#include <vector>

namespace bv {

// The main window's sections, in their case order (the order of the Ctrl+digit keys).
enum class SidebarSection { overview, devMode, duplicates, rules, watchedFolders, space, activity, buildWatch, autoArrange };
enum class SidebarGroup { reclaim, keep, understand };

struct SidebarSectionInfo {
    SidebarSection section;
    std::string_view name;    // raw text, stored under "sidebarSelection"
    std::string_view title;
    std::string_view tagline;
    SidebarGroup group;
    int key;                  // the digit of its shortcut
};

[[nodiscard]] const std::vector<SidebarSectionInfo>& sidebarSections(); // case order
[[nodiscard]] const SidebarSectionInfo& sidebarInfo(SidebarSection s);
[[nodiscard]] std::optional<SidebarSection> sidebarSectionFromName(std::string_view name);
[[nodiscard]] std::string_view sidebarGroupTitle(SidebarGroup g);
// Groups in sidebar order, each with its sections in sidebar order (not case order).
[[nodiscard]] const std::vector<std::pair<SidebarGroup, std::vector<SidebarSection>>>& sidebarLayout();

} // namespace bv
