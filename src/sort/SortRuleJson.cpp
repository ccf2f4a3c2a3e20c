#include "sort/SortRuleJson.h"

namespace bv {
namespace {

using CT = SortCondition::Type;

constexpr CT kConditionTypes[] = {CT::kind,         CT::fileExtension, CT::nameStartsWith, CT::nameContains,
                                  CT::nameEndsWith, CT::nameEquals,    CT::olderThanDays,  CT::minimumBytes,
                                  CT::downloadSource, CT::location};

SortPlace placeFromName(const std::string& name) {
    if (name == "downloads") return SortPlace::downloads;
    if (name == "desktop") return SortPlace::desktop;
    throw DecodeError("Unknown place " + name);
}

MatchMode matchFromName(const std::string& name) {
    if (name == "all") return MatchMode::all;
    if (name == "any") return MatchMode::any;
    throw DecodeError("Unknown match mode " + name);
}

} // namespace

Json toJson(const SortCondition& c) {
    Json j = Json::object();
    j["type"] = sortConditionTypeName(c.type);
    switch (c.type) {
    case CT::olderThanDays: j["days"] = c.number; break;
    case CT::minimumBytes: j["bytes"] = c.number; break;
    case CT::location: j["place"] = sortPlaceName(c.place); break;
    default: j["value"] = c.value; break;
    }
    return j;
}

SortCondition sortConditionFromJson(const Json& json) {
    JsonReader r(json);
    const std::string type = r.text("type");
    for (CT t : kConditionTypes) {
        if (type != sortConditionTypeName(t)) continue;
        switch (t) {
        case CT::olderThanDays: return SortCondition::olderThanDays(r.integer("days"));
        case CT::minimumBytes: return SortCondition::minimumBytes(r.integer("bytes"));
        case CT::location: return SortCondition::location(placeFromName(r.text("place")));
        default: return SortCondition::text(t, r.text("value"));
        }
    }
    throw DecodeError("Unknown condition " + type);
}

LossySortCondition LossySortCondition::fromJson(const Json& json) noexcept {
    try {
        return {sortConditionFromJson(json)};
    } catch (...) {
        return {};
    }
}

Json toJson(const SortTrigger& t) {
    Json j = Json::object();
    switch (t.type) {
    case SortTrigger::Type::schedule:
        j["type"] = "schedule";
        j["schedule"] = std::string(cleanScheduleName(t.schedule));
        break;
    case SortTrigger::Type::manual: j["type"] = "manual"; break;
    case SortTrigger::Type::whenAdded: j["type"] = "whenAdded"; break;
    }
    return j;
}

SortTrigger sortTriggerFromJson(const Json& json) {
    JsonReader r(json);
    const std::string type = r.text("type");
    if (type == "manual") return SortTrigger::manual();
    if (type == "whenAdded") return SortTrigger::whenAdded();
    if (type == "schedule") {
        const std::string name = r.text("schedule");
        if (auto s = cleanScheduleFromName(name)) return SortTrigger::scheduled(*s);
        throw DecodeError("Unknown schedule " + name);
    }
    throw DecodeError("Unknown trigger " + type);
}

Json toJson(const SortAction& a) {
    Json j = Json::object();
    switch (a.type) {
    case SortAction::Type::moveToFolder:
        j["type"] = "moveToFolder";
        j["path"] = a.argument;
        break;
    case SortAction::Type::rename:
        j["type"] = "rename";
        j["pattern"] = a.argument;
        break;
    case SortAction::Type::trash: j["type"] = "trash"; break;
    case SortAction::Type::archive: j["type"] = "archive"; break;
    }
    return j;
}

SortAction sortActionFromJson(const Json& json) {
    JsonReader r(json);
    const std::string type = r.text("type");
    if (type == "moveToFolder") return SortAction::moveToFolder(r.text("path"));
    if (type == "rename") return SortAction::rename(r.text("pattern"));
    if (type == "trash") return SortAction::trash();
    if (type == "archive") return SortAction::archive();
    throw DecodeError("Unknown action " + type);
}

Json toJson(const SortRule& rule) {
    Json j = Json::object();
    j["id"] = rule.id.text();
    j["name"] = rule.name;
    j["phrase"] = rule.phrase;
    j["match"] = matchModeName(rule.match);
    Json conditions = Json::array();
    for (const auto& c : rule.conditions) conditions.push_back(toJson(c));
    j["conditions"] = std::move(conditions);
    j["action"] = toJson(rule.action);
    j["trigger"] = toJson(rule.trigger);
    j["isEnabled"] = rule.isEnabled;
    putDate(j, "createdAt", rule.createdAt);
    putDate(j, "nextRun", rule.nextRun);
    j["kind"] = sortRuleKindName(rule.kind);
    putDate(j, "liveSince", rule.liveSince);
    if (rule.arrangedCount > 0) j["arrangedCount"] = rule.arrangedCount;
    if (rule.lastArranged) {
        Json move = Json::object();
        move["fileName"] = rule.lastArranged->fileName;
        putDate(move, "date", rule.lastArranged->date);
        j["lastArranged"] = std::move(move);
    }
    return j;
}

bool looksLikeArrangePattern(const SortRule& rule) {
    if (rule.match != MatchMode::all || rule.trigger.type != SortTrigger::Type::whenAdded) return false;
    if (rule.conditions.size() != 2) return false;
    if (rule.action.type != SortAction::Type::moveToFolder || rule.action.argument.empty()) return false;
    const SortCondition downloads = SortCondition::location(SortPlace::downloads);
    const SortCondition* other = nullptr;
    if (rule.conditions[0] == downloads)
        other = &rule.conditions[1];
    else if (rule.conditions[1] == downloads)
        other = &rule.conditions[0];
    if (!other) return false;
    std::string glob;
    if (other->type == CT::nameEndsWith)
        glob = "*" + other->value;
    else if (other->type == CT::nameStartsWith)
        glob = other->value + "*";
    else
        return false;
    return rule.phrase == "move " + glob + " files";
}

SortRule sortRuleFromJson(const Json& json, TimePoint now) {
    JsonReader r(json);
    SortRule rule;
    const auto id = Uuid::parse(r.text("id"));
    if (!id) throw DecodeError("bad rule id");
    rule.id = *id;
    rule.name = r.text("name", "");
    rule.phrase = r.text("phrase", "");
    if (r.has("match")) rule.match = matchFromName(r.text("match"));
    if (r.has("conditions")) {
        const Json& list = r.at("conditions");
        if (!list.is_array()) throw DecodeError("conditions must be a list");
        for (const Json& element : list)
            if (auto lossy = LossySortCondition::fromJson(element); lossy.condition)
                rule.conditions.push_back(std::move(*lossy.condition));
    }
    if (r.has("action")) rule.action = sortActionFromJson(r.at("action"));
    if (r.has("trigger")) rule.trigger = sortTriggerFromJson(r.at("trigger"));
    rule.isEnabled = r.boolean("isEnabled", true);
    rule.createdAt = r.optionalDate("createdAt").value_or(now);
    rule.nextRun = r.optionalDate("nextRun");
    rule.liveSince = r.optionalDate("liveSince");
    rule.arrangedCount = r.integer("arrangedCount", 0);
    if (r.has("lastArranged")) {
        JsonReader move(r.at("lastArranged"));
        rule.lastArranged = ArrangeMove{move.text("fileName"), move.date("date")};
    }
    if (r.has("kind"))
        rule.kind = r.text("kind") == "arrange" ? SortRuleKind::arrange : SortRuleKind::sort;
    else
        rule.kind = looksLikeArrangePattern(rule) ? SortRuleKind::arrange : SortRuleKind::sort;
    return rule;
}

Json SortRuleDocument::toJson() const {
    Json j = Json::object();
    j["version"] = 1;
    Json list = Json::array();
    for (const auto& rule : rules) list.push_back(bv::toJson(rule));
    j["rules"] = std::move(list);
    return j;
}

SortRuleDocument SortRuleDocument::fromJson(const Json& json, TimePoint now) {
    JsonReader r(json);
    SortRuleDocument doc;
    doc.version = r.integer("version", 1);
    if (doc.version < 1) return doc;
    doc.rules = decodeArray<SortRule>(r.at("rules"), [&](const Json& element) { return sortRuleFromJson(element, now); });
    return doc;
}

} // namespace bv
