#include "space/SpaceHistory.h"

#include <algorithm>

namespace bv {

Json VolumeSnapshot::toJson() const {
    Json j = Json::object();
    putDate(j, "capturedAt", capturedAt);
    j["volumeName"] = volumeName;
    j["totalBytes"] = totalBytes;
    j["freeBytes"] = freeBytes;
    return j;
}

VolumeSnapshot VolumeSnapshot::fromJson(const Json& json) {
    const JsonReader r(json);
    VolumeSnapshot s;
    s.capturedAt = r.date("capturedAt");
    s.volumeName = r.text("volumeName");
    s.totalBytes = r.integer("totalBytes");
    s.freeBytes = r.integer("freeBytes");
    return s;
}

const char* spaceBasisName(SpaceBasis b) {
    switch (b) {
    case SpaceBasis::sinceMidnight: return "sinceMidnight";
    case SpaceBasis::sinceFirstCheckToday: return "sinceFirstCheckToday";
    case SpaceBasis::sinceLastOpen: return "sinceLastOpen";
    case SpaceBasis::unavailable: return "unavailable";
    }
    return "unavailable";
}

Json SpaceHistory::toJson() const {
    Json j = Json::object();
    if (lastQuit) j["lastQuit"] = lastQuit->toJson();
    Json obs = Json::array();
    for (const auto& o : observations) obs.push_back(o.toJson());
    j["observations"] = obs;
    if (metricVersion) j["metricVersion"] = *metricVersion;
    return j;
}

SpaceHistory SpaceHistory::fromJson(const Json& json) {
    const JsonReader r(json);
    SpaceHistory h;
    if (r.has("lastQuit")) h.lastQuit = VolumeSnapshot::fromJson(r.at("lastQuit"));
    h.observations = decodeArray<VolumeSnapshot>(r.at("observations"), VolumeSnapshot::fromJson);
    h.metricVersion = r.optionalInteger("metricVersion");
    return h;
}

SpaceHistory SpaceHistory::accepting(const std::optional<SpaceHistory>& loaded, bool& replaced) {
    if (loaded && loaded->metricVersion == currentMetricVersion) {
        replaced = false;
        return *loaded;
    }
    replaced = true;
    return SpaceHistory{};
}

bool SpaceHistory::record(const VolumeSnapshot& snapshot, size_t limit) {
    if (!snapshot.isUsable()) return false;
    observations.push_back(snapshot);
    if (observations.size() > limit)
        observations.erase(observations.begin(), observations.begin() + static_cast<long>(observations.size() - limit));
    return true;
}

SpaceDelta SpaceHistory::midnightDelta(const VolumeSnapshot& current, TimePoint now,
                                       const CalendarContext& calendar) const {
    const TimePoint midnight = calendar.startOfDay(now);
    const VolumeSnapshot* lastBefore = nullptr;
    const VolumeSnapshot* firstToday = nullptr;
    for (const auto& o : observations) {
        if (o.capturedAt < midnight) {
            if (!lastBefore || o.capturedAt > lastBefore->capturedAt) lastBefore = &o;
        } else if (!firstToday || o.capturedAt < firstToday->capturedAt) {
            firstToday = &o;
        }
    }
    if (lastBefore) return {current.freeBytes - lastBefore->freeBytes, SpaceBasis::sinceMidnight, lastBefore->capturedAt};
    if (firstToday)
        return {current.freeBytes - firstToday->freeBytes, SpaceBasis::sinceFirstCheckToday, firstToday->capturedAt};
    return {0, SpaceBasis::sinceFirstCheckToday, current.capturedAt};
}

SpaceDelta lastOpenDelta(const VolumeSnapshot& current, const std::optional<VolumeSnapshot>& baseline) {
    if (!baseline) return SpaceDelta::unavailable();
    return {current.freeBytes - baseline->freeBytes, SpaceBasis::sinceLastOpen, baseline->capturedAt};
}

} // namespace bv
