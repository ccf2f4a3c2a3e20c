#include "buildwatch/BuildWatch.h"

namespace bv {
namespace {

struct CadenceText {
    BuildWatchCadence cadence;
    std::string_view raw;
    std::int64_t seconds;
    std::string_view label;
};

constexpr CadenceText kCadences[] = {
    {BuildWatchCadence::twiceDaily, "twiceDaily", 43200, "Twice a day"},
    {BuildWatchCadence::daily, "daily", 86400, "Once a day"},
    {BuildWatchCadence::weekly, "weekly", 604800, "Once a week"},
};

const CadenceText& textOf(BuildWatchCadence c) { return kCadences[static_cast<int>(c)]; }

Uuid uuidFrom(const std::string& text) {
    const auto id = Uuid::parse(text);
    if (!id) throw DecodeError("not a UUID");
    return *id;
}

} // namespace

std::string_view rawValue(BuildWatchCadence c) { return textOf(c).raw; }
std::string_view label(BuildWatchCadence c) { return textOf(c).label; }
std::chrono::seconds interval(BuildWatchCadence c) { return std::chrono::seconds(textOf(c).seconds); }

std::optional<BuildWatchCadence> buildWatchCadenceFromRaw(std::string_view raw) {
    for (const auto& c : kCadences)
        if (c.raw == raw) return c.cadence;
    return std::nullopt;
}

BuildWatch* BuildWatchState::find(const Uuid& id) {
    for (auto& w : watches)
        if (w.id == id) return &w;
    return nullptr;
}

const BuildWatch* BuildWatchState::find(const Uuid& id) const {
    for (const auto& w : watches)
        if (w.id == id) return &w;
    return nullptr;
}

Json encodeBuildWatch(const BuildWatch& w) {
    Json j = Json::object();
    j["id"] = w.id.text();
    j["path"] = w.path;
    if (w.bookmark) j["bookmark"] = *w.bookmark;
    j["name"] = w.name;
    j["stacks"] = encodeBuildStacks(w.stacks);
    j["cadence"] = std::string(rawValue(w.cadence));
    j["limitBytes"] = w.limitBytes;
    j["autoClean"] = w.autoClean;
    j["removesPermanently"] = w.removesPermanently;
    j["isEnabled"] = w.isEnabled;
    putDate(j, "createdAt", w.createdAt);
    putDate(j, "nextCheck", w.nextCheck);
    putDate(j, "lastChecked", w.lastChecked);
    putDate(j, "lastCleaned", w.lastCleaned);
    if (w.lastNote) j["lastNote"] = *w.lastNote;
    putDate(j, "lastAlert", w.lastAlert);
    if (w.lastAlertBytes) j["lastAlertBytes"] = *w.lastAlertBytes;
    j["totalFreed"] = w.totalFreed;
    j["samples"] = Json::array();
    for (const auto& s : w.samples) {
        Json sample = Json::object();
        putDate(sample, "date", s.date);
        sample["bytes"] = s.bytes;
        j["samples"].push_back(std::move(sample));
    }
    return j;
}

BuildWatch decodeBuildWatch(const Json& json) {
    const JsonReader r(json);
    BuildWatch w;
    w.id = uuidFrom(r.text("id"));
    w.path = r.text("path");
    w.bookmark = r.optionalText("bookmark");
    w.name = r.text("name");
    w.stacks = decodeBuildStacks(r.at("stacks"));
    const auto cadence = buildWatchCadenceFromRaw(r.text("cadence"));
    if (!cadence) throw DecodeError("unknown cadence");
    w.cadence = *cadence;
    w.limitBytes = r.integer("limitBytes");
    w.autoClean = r.boolean("autoClean");
    w.removesPermanently = r.boolean("removesPermanently");
    w.isEnabled = r.boolean("isEnabled");
    w.createdAt = r.date("createdAt");
    w.nextCheck = r.optionalDate("nextCheck");
    w.lastChecked = r.optionalDate("lastChecked");
    w.lastCleaned = r.optionalDate("lastCleaned");
    w.lastNote = r.optionalText("lastNote");
    w.lastAlert = r.optionalDate("lastAlert");
    w.lastAlertBytes = r.optionalInteger("lastAlertBytes");
    w.totalFreed = r.integer("totalFreed");
    w.samples = decodeArray<BuildWatchSample>(r.at("samples"), [](const Json& s) {
        const JsonReader sr(s);
        return BuildWatchSample{sr.date("date"), sr.integer("bytes")};
    });
    return w;
}

Json encodeBuildWatchState(const BuildWatchState& state) {
    Json j = Json::object();
    j["watches"] = Json::array();
    for (const auto& w : state.watches) j["watches"].push_back(encodeBuildWatch(w));
    j["dismissedPaths"] = state.dismissedPaths;
    j["notifiedAt"] = Json::object();
    for (const auto& [path, date] : state.notifiedAt) putDate(j["notifiedAt"], path.c_str(), date);
    putDate(j, "lastSuggestionScan", state.lastSuggestionScan);
    return j;
}

BuildWatchState decodeBuildWatchState(const Json& json) {
    const JsonReader r(json);
    BuildWatchState state;
    state.watches = decodeArray<BuildWatch>(r.at("watches"), decodeBuildWatch);
    state.dismissedPaths = r.texts("dismissedPaths");
    const Json& notified = r.at("notifiedAt");
    if (!notified.is_object()) throw DecodeError("notifiedAt is not an object");
    for (const auto& [path, date] : notified.items()) state.notifiedAt[path] = dateFromJson(date);
    state.lastSuggestionScan = r.optionalDate("lastSuggestionScan");
    return state;
}

} // namespace bv
