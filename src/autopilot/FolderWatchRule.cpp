#include "autopilot/FolderWatchRule.h"

#include "core/StoredBookmark.h"

namespace bv {

const char* folderScopeName(FolderScope s) { return s == FolderScope::children ? "children" : "recursive"; }
const char* folderScopeTitle(FolderScope s) {
    return s == FolderScope::children ? "Direct children" : "Include subfolders";
}
std::optional<FolderScope> folderScopeFromName(std::string_view name) {
    if (name == "children") return FolderScope::children;
    if (name == "recursive") return FolderScope::recursive;
    return std::nullopt;
}

Json FolderWatchRule::toJson() const {
    Json j = Json::object();
    j["id"] = id.text();
    j["parentPath"] = parentPath;
    if (parentBookmark) j["parentBookmark"] = StoredBookmark::encodeBase64(*parentBookmark);
    j["phrase"] = phrase;
    j["names"] = names;
    j["extensions"] = extensions;
    if (glob) j["glob"] = *glob;
    if (minimumAgeDays) j["minimumAgeDays"] = *minimumAgeDays;
    if (keepNewest) j["keepNewest"] = *keepNewest;
    j["directoriesOnly"] = directoriesOnly;
    j["scope"] = folderScopeName(scope);
    j["disposition"] = std::string(textValue(disposition));
    j["schedule"] = std::string(cleanScheduleName(schedule));
    j["isEnabled"] = isEnabled;
    putDate(j, "createdAt", createdAt);
    putDate(j, "nextRun", nextRun);
    if (confirmedCount) j["confirmedCount"] = *confirmedCount;
    if (confirmedBytes) j["confirmedBytes"] = *confirmedBytes;
    return j;
}

FolderWatchRule FolderWatchRule::fromJson(const Json& json) {
    JsonReader r(json);
    FolderWatchRule rule;
    const auto id = Uuid::parse(r.text("id"));
    if (!id) throw DecodeError("bad folder rule id");
    rule.id = *id;
    rule.parentPath = r.text("parentPath");
    if (auto encoded = r.optionalText("parentBookmark")) {
        rule.parentBookmark = StoredBookmark::decodeBase64(*encoded);
        if (!rule.parentBookmark) throw DecodeError("bookmark data is not Base64");
    }
    rule.phrase = r.text("phrase");
    rule.names = r.texts("names");
    rule.extensions = r.texts("extensions");
    rule.glob = r.optionalText("glob");
    rule.minimumAgeDays = r.optionalInteger("minimumAgeDays");
    rule.keepNewest = r.optionalInteger("keepNewest");
    rule.directoriesOnly = r.boolean("directoriesOnly");
    const std::string scope = r.text("scope");
    const auto parsedScope = folderScopeFromName(scope);
    if (!parsedScope) throw DecodeError("Unknown scope " + scope);
    rule.scope = *parsedScope;
    const std::string disposition = r.text("disposition");
    const auto parsedDisposition = cleanupDispositionFromText(disposition);
    if (!parsedDisposition) throw DecodeError("Unknown disposition " + disposition);
    rule.disposition = *parsedDisposition;
    const std::string schedule = r.text("schedule");
    const auto parsedSchedule = cleanScheduleFromName(schedule);
    if (!parsedSchedule) throw DecodeError("Unknown schedule " + schedule);
    rule.schedule = *parsedSchedule;
    rule.isEnabled = r.boolean("isEnabled");
    rule.createdAt = r.date("createdAt");
    rule.nextRun = r.optionalDate("nextRun");
    rule.confirmedCount = r.optionalInteger("confirmedCount");
    rule.confirmedBytes = r.optionalInteger("confirmedBytes");
    return rule;
}

std::vector<std::string> FolderWatchRule::detailLines() const {
    std::vector<std::string> lines;
    lines.emplace_back(folderScopeTitle(scope));
    lines.emplace_back(disposition == CleanupDisposition::permanent ? "Permanent" : "Trash");
    const auto joined = [](const std::vector<std::string>& items, const char* before) {
        std::string out;
        for (const auto& item : items) out += (out.empty() ? "" : ", ") + std::string(before) + item;
        return out;
    };
    if (!names.empty()) lines.push_back(joined(names, ""));
    if (!extensions.empty()) lines.push_back(joined(extensions, "*."));
    if (glob) lines.push_back(*glob);
    if (minimumAgeDays) lines.push_back("after " + std::to_string(*minimumAgeDays) + " days");
    if (keepNewest) lines.push_back("keep newest " + std::to_string(*keepNewest));
    lines.emplace_back(cleanScheduleTitle(schedule));
    return lines;
}

Json folderRulesToJson(const std::vector<FolderWatchRule>& rules) {
    Json list = Json::array();
    for (const auto& rule : rules) list.push_back(rule.toJson());
    return list;
}

std::vector<FolderWatchRule> folderRulesFromJson(const Json& json) {
    return decodeArray<FolderWatchRule>(json, [](const Json& element) { return FolderWatchRule::fromJson(element); });
}

std::vector<FolderWatchRule> loadFolderRules(const AppPersistence& persistence) {
    return persistence.load(kFolderRulesFileName, folderRulesFromJson).value_or(std::vector<FolderWatchRule>{});
}

void saveFolderRules(const AppPersistence& persistence, const std::vector<FolderWatchRule>& rules) {
    persistence.saveJson(kFolderRulesFileName, folderRulesToJson(rules));
}

} // namespace bv
