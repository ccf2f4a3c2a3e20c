#include "arrange/ArrangeTexts.h"

#include <algorithm>

#include "arrange/ArrangeSweep.h"

namespace bv::arrange_text {

std::optional<std::string> notificationBody(const std::vector<ArrangeMoved>& moved, const std::vector<SortRule>& rules) {
    if (moved.empty()) return std::nullopt;
    if (moved.size() > 1) return "Moved " + std::to_string(moved.size()) + " files. Details are in History.";
    const auto rule = std::find_if(rules.begin(), rules.end(), [&](const SortRule& r) { return r.id == moved[0].ruleID; });
    const std::string folder = rule != rules.end() ? rule->destinationName().value_or("a folder") : "a folder";
    return "Moved " + moved[0].fileName + " to " + folder + ".";
}

std::string statusLine(const SortRule& rule) {
    if (!rule.isEnabled) return "Off. New files stay in Downloads.";
    if (rule.arrangedCount <= 0 || !rule.lastArranged) return "Watching Downloads. Nothing moved yet.";
    const std::string count = rule.arrangedCount == 1 ? "1 file" : std::to_string(rule.arrangedCount) + " files";
    return "Watching Downloads. " + count + " moved, the last \u201C" + rule.lastArranged->fileName + "\u201D.";
}

std::string sheetMatchLine(std::size_t alreadyMatching) {
    if (alreadyMatching == 0) return "Nothing in Downloads matches yet. New downloads that match will move.";
    return std::to_string(alreadyMatching) + " of your downloads" +
           " already match. They stay put; after saving you can move them with Arrange now.";
}

std::optional<std::string> arrangeNowRefusal(std::size_t files, std::size_t ticked) {
    if (files == 0) return std::string(kNoneMatch);
    if (ticked == 0) return std::string(kTickOne);
    return std::nullopt;
}

std::string arrangeNowResult(std::size_t moved, bool foundAny) {
    if (!foundAny) return kFilesGone;
    return moved > 0 ? "Moves are listed in History." : "Nothing was moved.";
}

} // namespace bv::arrange_text
