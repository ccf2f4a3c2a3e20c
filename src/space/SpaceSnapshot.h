#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "foundation/Json.h"
#include "foundation/Uuid.h"

namespace bv {

struct SnapshotEntry {
    std::string path;
    std::int64_t bytes = 0;

    friend bool operator==(const SnapshotEntry&, const SnapshotEntry&) = default;
};

// The top of a finished disk map, kept so a later map of the same root can show what grew.
struct SpaceSnapshot {
    Uuid id;
    TimePoint date{};          // the map's scannedAt
    std::string rootPath;      // the map's rootPath
    std::string volumeName;
    std::int64_t totalBytes = 0; // the volume's size when the snapshot was made
    std::int64_t freeBytes = 0;  // the volume's free space then
    std::int64_t countedBytes = 0; // the map's totalBytes
    std::vector<SnapshotEntry> entries; // largest first, at most kMaxEntries

    static constexpr std::size_t kMaxEntries = 200;
    static constexpr std::size_t kMaxSnapshots = 30;
    static constexpr const char* kFileName = "snapshots.json";

    friend bool operator==(const SpaceSnapshot&, const SpaceSnapshot&) = default;
};

// JSON under the field names. Required: id, date, rootPath, entries (each with path and
// bytes); volumeName defaults to "" and the figures to 0. Decoders throw DecodeError.
[[nodiscard]] Json snapshotJson(const SpaceSnapshot& snapshot);
[[nodiscard]] SpaceSnapshot decodeSnapshot(const Json& json);
// The file: an array, newest first. A file holding more than kMaxSnapshots keeps the first ones.
[[nodiscard]] Json snapshotsJson(const std::vector<SpaceSnapshot>& snapshots);
[[nodiscard]] std::vector<SpaceSnapshot> decodeSnapshots(const Json& json);

} // namespace bv
