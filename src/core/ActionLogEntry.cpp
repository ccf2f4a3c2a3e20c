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
