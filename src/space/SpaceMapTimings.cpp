#include "space/SpaceMapTimings.h"

#include <algorithm>
#include <cmath>

#include "foundation/ByteText.h"

namespace bv {

Json SpaceMapTimings::encode(const Table& table) {
    Json j = Json::object();
    for (const auto& [root, t] : table) j[root] = Json{{"bytes", t.bytes}, {"files", t.files}, {"seconds", t.seconds}};
    return j;
}

SpaceMapTimings::Table SpaceMapTimings::decode(const Json& json) {
    if (!json.is_object()) throw DecodeError("timings: expected an object");
    Table table;
    for (const auto& [root, value] : json.items()) {
        JsonReader r(value);
        table[root] = ScanTiming{r.integer("bytes"), r.integer("files"), r.number("seconds")};
    }
    return table;
}

SpaceMapTimings::Table SpaceMapTimings::load(const UserDefaults& defaults) {
    const auto value = defaults.value(kDefaultsKey);
    if (!value) return {};
    try {
        return decode(*value);
    } catch (const std::exception&) {
        return {};
    }
}

void SpaceMapTimings::save(const UserDefaults& defaults, const Table& table) {
    defaults.setValue(kDefaultsKey, encode(table));
}

bool SpaceMapTimings::record(Table& table, const DiskMap& map, double seconds) {
    if (map.truncated) return false;
    table[map.rootPath] = ScanTiming{map.totalBytes, map.fileCount, seconds};
    return true;
}

double SpaceMapTimings::throughput(const Table& table) {
    std::vector<double> rates;
    for (const auto& [root, t] : table)
        if (t.seconds >= 0.5 && t.bytes > 0) rates.push_back(static_cast<double>(t.bytes) / t.seconds);
    if (rates.empty()) return kDefaultRate;
    std::sort(rates.begin(), rates.end());
    return rates[rates.size() / 2];
}

std::optional<SpaceMapTimings::Estimate> SpaceMapTimings::estimate(const std::string& root, const Table& table,
                                                                  const std::vector<MountedVolume>& volumes) {
    const double rate = throughput(table);
    if (auto it = table.find(root); it != table.end()) {
        const ScanTiming& t = it->second;
        return Estimate{t.bytes, t.seconds >= 0.5 ? t.seconds : static_cast<double>(t.bytes) / rate,
                        EstimateSource::lastTime};
    }
    for (const auto& v : volumes) {
        if (v.path != root) continue;
        const std::int64_t used = std::max<std::int64_t>(0, v.totalBytes - v.freeBytes);
        return Estimate{used, static_cast<double>(used) / rate, EstimateSource::volume};
    }
    return std::nullopt;
}

std::string SpaceMapTimings::estimateText(const std::optional<Estimate>& e) {
    if (!e) return "First map of this folder. Folders usually take seconds; a whole drive takes a few minutes.";
    if (e->source == EstimateSource::lastTime)
        return "Mapped " + byteText(e->bytes) + " last time. Takes " + durationText(e->seconds);
    return byteText(e->bytes) + " in use. Mapping it takes " + durationText(e->seconds) +
           "; you can keep working meanwhile.";
}

std::optional<double> SpaceMapTimings::timeLeft(const std::optional<Estimate>& e, std::int64_t countedBytes,
                                                double elapsedSeconds) {
    if (!e || e->bytes <= 0 || countedBytes <= 0 || elapsedSeconds < 1.0) return std::nullopt;
    const double rate = static_cast<double>(countedBytes) / elapsedSeconds;
    const double remaining = std::max(0.0, static_cast<double>(e->bytes - countedBytes));
    return remaining / rate;
}

std::string SpaceMapTimings::durationText(double seconds) {
    if (seconds < 5) return "a few seconds";
    if (seconds < 55) {
        const auto fives = std::max<long long>(5, std::llround(seconds / 5.0) * 5);
        return "about " + std::to_string(fives) + " seconds";
    }
    if (seconds < 90) return "about a minute";
    if (seconds < 3600) return "about " + std::to_string(std::llround(seconds / 60.0)) + " minutes";
    const double hours = seconds / 3600.0;
    if (hours < 1.5) return "about an hour";
    return "about " + std::to_string(std::llround(hours)) + " hours";
}

} // namespace bv
