#include "core/SidebarSection.h"

namespace bv {

const std::vector<SidebarSectionInfo>& sidebarSections() {
    using S = SidebarSection;
    using G = SidebarGroup;
    static const std::vector<SidebarSectionInfo> table{
        {S::overview, "overview", "Overview", "What can go back, right now", G::reclaim, 1},
        {S::devMode, "devMode", "Smart Clean", "Files that rebuild themselves", G::reclaim, 2},
        {S::duplicates, "duplicates", "Duplicates", "Copies, confirmed byte for byte", G::reclaim, 3},
        {S::rules, "rules", "Auto-Sort", "Downloads that tidy themselves", G::keep, 4},
        {S::watchedFolders, "watchedFolders", "Autopilot", "Build folders gone on a schedule", G::keep, 5},
        {S::space, "space", "Space Map", "Every byte, biggest first", G::understand, 6},
        {S::activity, "activity", "History", "Everything you got back", G::understand, 7},
        {S::buildWatch, "buildWatch", "Build Watch", "Project builds kept in check", G::keep, 8},
        {S::autoArrange, "autoArrange", "Auto-Arrange", "Files to their folder, by name", G::keep, 9},
    };
    return table;
}

const SidebarSectionInfo& sidebarInfo(SidebarSection s) { return sidebarSections()[static_cast<size_t>(s)]; }

std::optional<SidebarSection> sidebarSectionFromName(std::string_view name) {
    for (const auto& info : sidebarSections())
        if (info.name == name) return info.section;
    return std::nullopt;
}

std::string_view sidebarGroupTitle(SidebarGroup g) {
    switch (g) {
    case SidebarGroup::reclaim: return "Get space back";
    case SidebarGroup::keep: return "Keep it that way";
    case SidebarGroup::understand: return "Know your disk";
    }
    return "";
}

const std::vector<std::pair<SidebarGroup, std::vector<SidebarSection>>>& sidebarLayout() {
    using S = SidebarSection;
    static const std::vector<std::pair<SidebarGroup, std::vector<SidebarSection>>> layout{
        {SidebarGroup::reclaim, {S::overview, S::devMode, S::duplicates}},
        {SidebarGroup::keep, {S::rules, S::autoArrange, S::watchedFolders, S::buildWatch}},
        {SidebarGroup::understand, {S::space, S::activity}},
    };
    return layout;
}

} // namespace bv
