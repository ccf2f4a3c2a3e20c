#include "sort/CleanupRule.h"

#include <algorithm>

#include "core/StoredBookmark.h"
#include "foundation/PhraseText.h"

namespace bv {

const char* ruleActionName(RuleAction a) {
    switch (a) {
    case RuleAction::move: return "move";
    case RuleAction::keepInFolder: return "keepInFolder";
    case RuleAction::trash: return "trash";
    }
    return "move";
}

namespace {

RuleAction ruleActionFromName(const std::string& name) {
    for (auto a : {RuleAction::move, RuleAction::keepInFolder, RuleAction::trash})
        if (name == ruleActionName(a)) return a;
    throw DecodeError("Unknown rule action " + name);
}

} // namespace

Json CleanupRule::toJson() const {
    Json j = Json::object();
    j["id"] = id.text();
    j["phrase"] = phrase;
    j["action"] = ruleActionName(action);
    j["extensions"] = extensions;
    if (namePrefix) j["namePrefix"] = *namePrefix;
    if (minimumAgeDays) j["minimumAgeDays"] = *minimumAgeDays;
    if (destinationPath) j["destinationPath"] = *destinationPath;
    if (destinationBookmark) j["destinationBookmark"] = StoredBookmark::encodeBase64(*destinationBookmark);
    j["isEnabled"] = isEnabled;
    putDate(j, "createdAt", createdAt);
    return j;
}

CleanupRule CleanupRule::fromJson(const Json& json) {
    JsonReader r(json);
    CleanupRule rule;
    const auto id = Uuid::parse(r.text("id"));
    if (!id) throw DecodeError("bad rule id");
    rule.id = *id;
    rule.phrase = r.text("phrase");
    rule.action = ruleActionFromName(r.text("action"));
    rule.extensions = r.texts("extensions");
    rule.namePrefix = r.optionalText("namePrefix");
    rule.minimumAgeDays = r.optionalInteger("minimumAgeDays");
    rule.destinationPath = r.optionalText("destinationPath");
    if (auto encoded = r.optionalText("destinationBookmark")) {
        rule.destinationBookmark = StoredBookmark::decodeBase64(*encoded);
        if (!rule.destinationBookmark) throw DecodeError("bad bookmark data");
    }
    rule.isEnabled = r.boolean("isEnabled");
    rule.createdAt = r.date("createdAt");
    return rule;
}

Json cleanupRulesToJson(const std::vector<CleanupRule>& rules) {
    Json list = Json::array();
    for (const auto& rule : rules) list.push_back(rule.toJson());
    return list;
}

std::vector<CleanupRule> cleanupRulesFromJson(const Json& json) {
    return decodeArray<CleanupRule>(json, [](const Json& element) { return CleanupRule::fromJson(element); });
}

SortRule sortRuleFromCleanupRule(const CleanupRule& old) {
    SortRule rule;
    rule.id = old.id;
    rule.name = old.phrase;
    rule.phrase = old.phrase;
    rule.match = MatchMode::all;
    for (const auto& ext : old.extensions) rule.conditions.push_back(SortCondition::fileExtension(ext));
    if (old.namePrefix && !old.namePrefix->empty()) rule.conditions.push_back(SortCondition::nameStartsWith(*old.namePrefix));
    if (old.minimumAgeDays) rule.conditions.push_back(SortCondition::olderThanDays(*old.minimumAgeDays));
    rule.conditions.push_back(SortCondition::location(SortPlace::downloads));
    rule.action = old.action == RuleAction::trash ? SortAction::trash()
                                                  : SortAction::moveToFolder(old.destinationPath.value_or(""));
    rule.trigger = SortTrigger::whenAdded();
    rule.isEnabled = old.isEnabled;
    rule.createdAt = old.createdAt;
    rule.kind = SortRuleKind::sort;
    return rule;
}

std::optional<CleanupRule> cleanupRuleFromSortRule(const SortRule& rule, std::optional<std::string> bookmark) {
    if (rule.kind != SortRuleKind::sort || rule.match != MatchMode::all) return std::nullopt;
    std::vector<std::string> extensions;
    std::optional<std::string> prefix;
    std::optional<std::int64_t> age;
    for (const auto& c : rule.conditions) {
        switch (c.type) {
        case SortCondition::Type::fileExtension: extensions.push_back(lowercased(c.value)); break;
        case SortCondition::Type::nameStartsWith:
            if (prefix) return std::nullopt;
            prefix = c.value;
            break;
        case SortCondition::Type::olderThanDays: age = c.number; break;
        case SortCondition::Type::location:
            if (c.place != SortPlace::downloads) return std::nullopt;
            break;
        default: return std::nullopt;
        }
    }
    if (extensions.empty() && !prefix) return std::nullopt;

    CleanupRule out;
    switch (rule.action.type) {
    case SortAction::Type::moveToFolder:
        out.action = lowercased(rule.phrase).find("only") != std::string::npos ? RuleAction::keepInFolder
                                                                                : RuleAction::move;
        if (!rule.action.argument.empty()) out.destinationPath = rule.action.argument;
        break;
    case SortAction::Type::trash:
        if (!age || *age < 1) return std::nullopt;
        out.action = RuleAction::trash;
        break;
    case SortAction::Type::rename:
    case SortAction::Type::archive: return std::nullopt;
    }
    std::sort(extensions.begin(), extensions.end());
    out.id = rule.id;
    out.phrase = rule.phrase;
    out.extensions = std::move(extensions);
    out.namePrefix = prefix;
    out.minimumAgeDays = age;
    out.destinationBookmark = std::move(bookmark);
    out.isEnabled = rule.isEnabled;
    out.createdAt = rule.createdAt;
    return out;
}

const char* runnerErrorMessage(RunnerError e) {
    switch (e) {
    case RunnerError::outsideDownloads: return "That file is outside Downloads, so it was left alone.";
    case RunnerError::refusingDirectory: return "Folders are not deleted.";
    case RunnerError::deleteRequiresAge: return "Refused to trash a file without an age rule.";
    case RunnerError::ageUnverified: return "Could not tell how old the file is, so it was left alone.";
    case RunnerError::tooYoung: return "The file is newer than the rule allows.";
    case RunnerError::missingDestination: return "The destination folder is missing.";
    case RunnerError::protectedPath: return "That path is protected, so it was left alone.";
    }
    return "";
}

} // namespace bv
