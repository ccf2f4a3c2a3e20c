#include "space/MapSnapshots.h"

#include <algorithm>

namespace bv {
namespace {

void flattenInto(const DiskMapNode& node, int depth, std::vector<SnapshotEntry>& out) {
    out.push_back({node.path, node.bytes});
    if (depth == 2) return;
    for (const auto& c : node.children) flattenInto(c, depth + 1, out);
}

const SpaceSnapshot* find(const std::vector<SpaceSnapshot>& list, const Uuid& id) {
    for (const auto& s : list)
        if (s.id == id) return &s;
    return nullptr;
}

} // namespace

std::vector<SnapshotEntry> MapSnapshots::flatten(const DiskMap& map) {
    std::vector<SnapshotEntry> out;
    flattenInto(map.root, 0, out);
    std::stable_sort(out.begin(), out.end(), [](const SnapshotEntry& a, const SnapshotEntry& b) { return a.bytes > b.bytes; });
    return out;
}

std::optional<SpaceSnapshot> MapSnapshots::make(const DiskMap& map, const SnapshotVolume& volume, Uuid id) {
    if (map.truncated) return std::nullopt;
    SpaceSnapshot s;
    s.id = id;
    s.date = map.scannedAt;
    s.rootPath = map.rootPath;
    s.volumeName = volume.name;
    s.totalBytes = volume.totalBytes;
    s.freeBytes = volume.freeBytes;
    s.countedBytes = map.totalBytes;
    s.entries = flatten(map);
    if (s.entries.size() > SpaceSnapshot::kMaxEntries) s.entries.resize(SpaceSnapshot::kMaxEntries);
    return s;
}

void MapSnapshots::insert(std::vector<SpaceSnapshot>& list, SpaceSnapshot snapshot) {
    list.insert(list.begin(), std::move(snapshot));
    if (list.size() > SpaceSnapshot::kMaxSnapshots) list.resize(SpaceSnapshot::kMaxSnapshots);
}

bool MapSnapshots::remove(std::vector<SpaceSnapshot>& list, const Uuid& id) {
    const auto before = list.size();
    std::erase_if(list, [&](const SpaceSnapshot& s) { return s.id == id; });
    return list.size() != before;
}

bool MapSnapshots::canCompare(const std::vector<SpaceSnapshot>& list, const Uuid& id, const DiskMap* current) {
    const SpaceSnapshot* s = find(list, id);
    return s && current && !current->truncated && current->rootPath == s->rootPath;
}

std::vector<SnapshotDiffer::Delta> MapSnapshots::compare(const std::vector<SpaceSnapshot>& list, const Uuid& id,
                                                         const DiskMap* current) {
    if (!canCompare(list, id, current)) return {};
    const auto now = make(*current, SnapshotVolume{}, Uuid{});
    return SnapshotDiffer::diff(*find(list, id), *now, kCompareLimit);
}

SnapshotVolume MapSnapshots::volumeFor(const std::string& rootPath, const SnapshotVolume& startupVolume,
                                       const std::vector<MountedVolume>& volumes, TimePoint now) {
    if (rootPath == "/") return startupVolume;
    // The deepest mount holding the root: on Linux "/" holds every path, so the first match
    // in table order would name the system disk for a root on a mounted drive.
    const MountedVolume* best = nullptr;
    for (const auto& v : volumes) {
        const std::string prefix = v.path == "/" ? "/" : v.path + "/";
        const bool holds = rootPath == v.path || rootPath.compare(0, prefix.size(), prefix) == 0;
        if (holds && (!best || v.path.size() > best->path.size())) best = &v;
    }
    if (!best) return {};
    return SnapshotVolume{best->name, best->totalBytes, best->freeBytes, now};
}

std::vector<SpaceSnapshot> MapSnapshots::load(const AppPersistence& store) {
    return store.load(SpaceSnapshot::kFileName, decodeSnapshots).value_or(std::vector<SpaceSnapshot>{});
}

void MapSnapshots::save(const AppPersistence& store, const std::vector<SpaceSnapshot>& list) {
    store.saveJson(SpaceSnapshot::kFileName, snapshotsJson(list));
}

} // namespace bv
