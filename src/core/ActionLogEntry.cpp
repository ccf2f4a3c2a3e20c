#include "core/ActionLogEntry.h"

namespace bv {

Json ActionLogEntry::toJson() const {
    Json j = Json::object();
    j["id"] = id.text();
    putDate(j, "date", date);
    j["title"] = title;
    j["subtitle"] = subtitle;
    j["symbolName"] = symbolName;
    j["bytesReclaimed"] = bytesReclaimed;
    j["sourcePath"] = sourcePath;
    if (destinationPath) j["destinationPath"] = *destinationPath;
    if (trashedPath) j["trashedPath"] = *trashedPath;
    if (runID) j["runID"] = runID->text();
    if (putBackOf) j["putBackOf"] = putBackOf->text();
    return j;
}

ActionLogEntry ActionLogEntry::fromJson(const Json& json) {
    const JsonReader r(json);
    ActionLogEntry e;
    const auto id = Uuid::parse(r.text("id"));
    if (!id) throw DecodeError("log entry id is not a UUID");
    e.id = *id;
    e.date = r.date("date");
    e.title = r.text("title");
    e.subtitle = r.text("subtitle");
    e.symbolName = r.text("symbolName");
    e.bytesReclaimed = r.integer("bytesReclaimed");
    e.sourcePath = r.text("sourcePath");
    e.destinationPath = r.optionalText("destinationPath");
    e.trashedPath = r.optionalText("trashedPath");
    // The put-back links are an aid, not the record: a damaged one is dropped, not fatal.
    if (const auto run = r.optionalText("runID")) e.runID = Uuid::parse(*run);
    if (const auto undone = r.optionalText("putBackOf")) e.putBackOf = Uuid::parse(*undone);
    return e;
}

Json encodeLog(const std::vector<ActionLogEntry>& entries) {
    Json out = Json::array();
    for (const auto& e : entries) out.push_back(e.toJson());
    return out;
}

std::vector<ActionLogEntry> decodeLog(const Json& json) {
    return decodeArray<ActionLogEntry>(json, [](const Json& e) { return ActionLogEntry::fromJson(e); });
}

} // namespace bv
