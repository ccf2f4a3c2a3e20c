#include "sort/PlannedAction.h"

#include <algorithm>

#include "clean/DevCacheCatalog.h"
#include "foundation/ByteText.h"
#include "platform/PlatformWording.h"
#include "sort/FileSample.h"

namespace bv {

std::string fileNoun(std::int64_t count) { return count == 1 ? "file" : "files"; }

Json PlannedAction::toJson() const {
    Json j = Json::object();
    j["id"] = id.text();
    j["sourcePath"] = sourcePath;
    j["fileName"] = fileName;
    j["action"] = ruleActionName(action);
    if (destinationPath) j["destinationPath"] = *destinationPath;
    if (destinationFolder) j["destinationFolder"] = *destinationFolder;
    j["bytes"] = bytes;
    j["reclaimsSpace"] = reclaimsSpace;
    j["summary"] = summary;
    j["detail"] = detail;
    j["symbolName"] = symbolName;
    j["ruleID"] = ruleID.text();
    if (minimumAgeDays) j["minimumAgeDays"] = *minimumAgeDays;
    return j;
}

Json SimulationResult::toJson() const {
    Json j = Json::object();
    j["id"] = id.text();
    j["scopeName"] = scopeName;
    Json list = Json::array();
    for (const auto& a : actions) list.push_back(a.toJson());
    j["actions"] = std::move(list);
    j["warnings"] = warnings;
    j["createdAt"] = isoDateText(createdAt);
    return j;
}

std::string placeNameFor(const SortRule& rule) { return rule.needsDesktop() ? "Desktop" : "Downloads"; }

PlannedAction plannedAction(const FileSample& sample, const SortRule& rule, const std::string& placeName) {
    PlannedAction a;
    a.id = Uuid::generate();
    a.sourcePath = sample.path;
    a.fileName = sample.name;
    a.action = rule.action.type == SortAction::Type::trash ? RuleAction::trash : RuleAction::move;
    a.bytes = sample.size;
    a.ruleID = rule.id;
    a.minimumAgeDays = rule.firstAgeDays();
    a.detail = placeName + " \u00B7 " + byteText(sample.size);
    const std::string quoted = "\u201C" + sample.name + "\u201D";
    switch (rule.action.type) {
    case SortAction::Type::moveToFolder: {
        std::string folder = DevCacheCatalog::standardizedPath(rule.action.argument);
        while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
        if (!folder.empty()) {
            a.destinationFolder = folder;
            a.destinationPath = (folder == "/" ? folder : folder + "/") + sample.name;
        }
        a.summary = "Move " + quoted + " to " + (folder.empty() ? std::string("a folder") : lastPathComponent(folder));
        a.symbolName = "arrow.right";
        break;
    }
    case SortAction::Type::rename:
        a.destinationPath = rule.action.argument;
        a.summary = "Rename " + quoted + " to " + rule.action.argument;
        a.symbolName = "pencil";
        break;
    case SortAction::Type::archive:
        a.summary = "Zip " + quoted + " and leave the original";
        a.symbolName = "archivebox";
        break;
    case SortAction::Type::trash:
        a.reclaimsSpace = true;
        a.summary = "Move " + quoted + " to the Trash";
        a.symbolName = "trash";
        break;
    }
    return a;
}

std::string previewFootnote(const SimulationResult& simulation) {
    std::int64_t reclaimed = 0;
    for (const auto& a : simulation.actions)
        if (a.reclaimsSpace) reclaimed += a.bytes;
    if (reclaimed > 0)
        return byteText(reclaimed) +
               platformWording(" would move to the Trash. Empty the Trash in Finder to free that space. Moving a file "
                               "to another folder on this disk does not free space.");
    if (!simulation.actions.empty())
        return "Moving a file to another folder on this disk changes where it lives. It does not free space.";
    return "Preview does not move or delete anything.";
}

std::string confirmationQuestion(const SimulationResult& simulation, const std::set<Uuid>& excluded,
                                 const std::vector<SortRule>& rules) {
    std::int64_t ticked = 0, zips = 0, renames = 0, trashes = 0;
    for (const auto& a : simulation.actions) {
        if (excluded.count(a.id)) continue;
        ++ticked;
        const auto rule = std::find_if(rules.begin(), rules.end(), [&](const SortRule& r) { return r.id == a.ruleID; });
        if (rule == rules.end()) continue;
        zips += rule->action.type == SortAction::Type::archive;
        renames += rule->action.type == SortAction::Type::rename;
        trashes += rule->action.type == SortAction::Type::trash;
    }
    const std::string count = std::to_string(ticked) + " " + fileNoun(ticked);
    if (ticked > 0 && zips == ticked) return "Zip " + count + " and leave the originals in place?";
    if (ticked > 0 && renames == ticked) return "Rename " + count + "?";
    if (ticked > 0 && trashes == ticked) return "Move " + count + " to the Trash?";
    return "Move " + count + "?";
}

} // namespace bv
