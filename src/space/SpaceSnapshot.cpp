#include "space/SpaceSnapshot.h"

namespace bv {

Json snapshotJson(const SpaceSnapshot& s) {
    Json j = Json::object();
    j["id"] = s.id.text();
    putDate(j, "date", s.date);
    j["rootPath"] = s.rootPath;
    j["volumeName"] = s.volumeName;
    j["totalBytes"] = s.totalBytes;
    j["freeBytes"] = s.freeBytes;
    j["countedBytes"] = s.countedBytes;
    Json entries = Json::array();
    for (const auto& e : s.entries) entries.push_back(Json{{"path", e.path}, {"bytes", e.bytes}});
    j["entries"] = std::move(entries);
    return j;
}

SpaceSnapshot decodeSnapshot(const Json& json) {
    JsonReader r(json);
    SpaceSnapshot s;
    const auto id = Uuid::parse(r.text("id"));
    if (!id) throw DecodeError("snapshot: id is not a UUID");
    s.id = *id;
    s.date = r.date("date");
    s.rootPath = r.text("rootPath");
    s.volumeName = r.text("volumeName", "");
    s.totalBytes = r.integer("totalBytes", 0);
    s.freeBytes = r.integer("freeBytes", 0);
    s.countedBytes = r.integer("countedBytes", 0);
    s.entries = decodeArray<SnapshotEntry>(r.at("entries"), [](const Json& e) {
        JsonReader er(e);
        return SnapshotEntry{er.text("path"), er.integer("bytes")};
    });
    if (s.entries.size() > SpaceSnapshot::kMaxEntries) s.entries.resize(SpaceSnapshot::kMaxEntries);
    return s;
}

Json snapshotsJson(const std::vector<SpaceSnapshot>& snapshots) {
    Json j = Json::array();
    for (const auto& s : snapshots) j.push_back(snapshotJson(s));
    return j;
}

std::vector<SpaceSnapshot> decodeSnapshots(const Json& json) {
    auto list = decodeArray<SpaceSnapshot>(json, decodeSnapshot);
    if (list.size() > SpaceSnapshot::kMaxSnapshots) list.resize(SpaceSnapshot::kMaxSnapshots);
    return list;
}

} // namespace bv
