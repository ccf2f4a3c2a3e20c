#pragma once
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/AppPersistence.h"
#include "space/DiskMap.h"
#include "space/SnapshotDiffer.h"
#include "space/SpaceSnapshot.h"

namespace bv {

// The volume a snapshot was taken on: its name and figures at a moment. The empty value
// (no volume found) has an empty name and figures 0.
struct SnapshotVolume {
    std::string name;
    std::int64_t totalBytes = 0;
    std::int64_t freeBytes = 0;
    TimePoint capturedAt{};
};

// Saving, deleting and comparing snapshots of disk maps. Plain functions over values; the
// model holds the list and writes it after each change.
struct MapSnapshots {
    static constexpr std::size_t kCompareLimit = 12;

    // The root, its children and theirs (pre-order to depth 2), then largest first; equal
    // sizes keep the walk's order.
    [[nodiscard]] static std::vector<SnapshotEntry> flatten(const DiskMap& map);

    // A snapshot of a finished map, at most 200 entries; nothing for a truncated map.
    [[nodiscard]] static std::optional<SpaceSnapshot> make(const DiskMap& map, const SnapshotVolume& volume, Uuid id);

    // The new snapshot goes first; past 30 the oldest drop.
    static void insert(std::vector<SpaceSnapshot>& list, SpaceSnapshot snapshot);
    // False when no snapshot has that id.
    static bool remove(std::vector<SpaceSnapshot>& list, const Uuid& id);

    // What changed between the snapshot `id` and the current map, at most 12 folders. Empty
    // when the snapshot is unknown, there is no map, the map is truncated or of another root.
    [[nodiscard]] static std::vector<SnapshotDiffer::Delta> compare(const std::vector<SpaceSnapshot>& list,
                                                                    const Uuid& id, const DiskMap* current);
    // Whether compare can give deltas at all (the screen keeps its "Select a snapshot" text otherwise).
    [[nodiscard]] static bool canCompare(const std::vector<SpaceSnapshot>& list, const Uuid& id, const DiskMap* current);

    // The volume figures for a root: for "/" the start-up volume's latest sample; otherwise the
    // deepest volume whose path is the root or a folder above it, dated now; else the empty value.
    [[nodiscard]] static SnapshotVolume volumeFor(const std::string& rootPath, const SnapshotVolume& startupVolume,
                                                  const std::vector<MountedVolume>& volumes, TimePoint now);

    // "snapshots.json": a missing or unreadable file gives an empty list.
    [[nodiscard]] static std::vector<SpaceSnapshot> load(const AppPersistence& store);
    static void save(const AppPersistence& store, const std::vector<SpaceSnapshot>& list);
};

} // namespace bv
