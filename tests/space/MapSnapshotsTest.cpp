#include <gtest/gtest.h>

#include "foundation/FileIO.h"
#include "space/MapSnapshots.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

DiskMapNode node(const std::string& path, std::int64_t bytes, std::vector<DiskMapNode> children = {}) {
    return DiskMapNode{path, path.substr(path.rfind('/') + 1), bytes, 1, std::move(children)};
}

DiskMap mapOf(const std::string& root, std::vector<DiskMapNode> children, bool truncated = false) {
    DiskMap m;
    m.rootPath = root;
    m.root = node(root, 0, std::move(children));
    for (const auto& c : m.root.children) m.root.bytes += c.bytes;
    m.totalBytes = m.root.bytes;
    m.truncated = truncated;
    m.scannedAt = *parseIsoDate("2026-11-15T22:16:00Z");
    return m;
}

SpaceSnapshot snapshotOf(const std::string& root, std::vector<SnapshotEntry> entries) {
    SpaceSnapshot s;
    s.id = Uuid::generate();
    s.rootPath = root;
    s.entries = std::move(entries);
    return s;
}

} // namespace

TEST(MapSnapshots, FlattensToDepthTwoLargestFirstAndCapsAt200) {
    const DiskMap m = mapOf("/r", {node("/r/a", 10, {node("/r/a/x", 7, {node("/r/a/x/deep", 6)})}), node("/r/b", 30)});
    const auto entries = MapSnapshots::flatten(m);
    EXPECT_EQ(entries, (std::vector<SnapshotEntry>{{"/r", 40}, {"/r/b", 30}, {"/r/a", 10}, {"/r/a/x", 7}}));

    std::vector<DiskMapNode> many;
    for (int i = 0; i < 250; ++i) many.push_back(node("/r/f" + std::to_string(i), 1000 + i));
    const auto s = MapSnapshots::make(mapOf("/r", many), SnapshotVolume{"Disk", 100, 40, {}}, Uuid::generate());
    ASSERT_TRUE(s);
    EXPECT_EQ(s->entries.size(), 200u);
    EXPECT_EQ(s->entries[1].path, "/r/f249");
    EXPECT_EQ(s->entries.back().bytes, 1000 + 250 - 199);
    EXPECT_EQ(s->volumeName, "Disk");
    EXPECT_EQ(s->countedBytes, s->entries[0].bytes);
    EXPECT_EQ(isoDateText(s->date), "2026-11-15T22:16:00Z");
}

TEST(MapSnapshots, ACancelledMapIsNeitherSavedNorCompared) {
    const DiskMap partial = mapOf("/r", {node("/r/a", 10)}, true);
    EXPECT_FALSE(MapSnapshots::make(partial, {}, Uuid::generate()));
    std::vector<SpaceSnapshot> list{snapshotOf("/r", {{"/r/a", 5}})};
    EXPECT_FALSE(MapSnapshots::canCompare(list, list[0].id, &partial));
    EXPECT_TRUE(MapSnapshots::compare(list, list[0].id, &partial).empty());
    EXPECT_TRUE(MapSnapshots::compare(list, list[0].id, nullptr).empty());
    EXPECT_TRUE(MapSnapshots::compare(list, Uuid::generate(), &partial).empty());
}

TEST(MapSnapshots, TheThirtyFirstSnapshotPushesOutTheOldestAndDeleteRemovesOne) {
    std::vector<SpaceSnapshot> list;
    std::vector<Uuid> ids;
    for (int i = 0; i < 31; ++i) {
        ids.push_back(Uuid::generate());
        auto s = snapshotOf("/r", {});
        s.id = ids.back();
        MapSnapshots::insert(list, s);
    }
    ASSERT_EQ(list.size(), 30u);
    EXPECT_EQ(list.front().id, ids[30]);
    EXPECT_EQ(list.back().id, ids[1]);
    EXPECT_TRUE(MapSnapshots::remove(list, ids[5]));
    EXPECT_FALSE(MapSnapshots::remove(list, ids[5]));
    EXPECT_EQ(list.size(), 29u);
}

TEST(SnapshotDiffer, DeltasOfTheSameRootOnly) {
    const auto older = snapshotOf("/r", {{"/r", 100}, {"/r/same", 5}, {"/r/gone", 20}, {"/r/grew", 10}, {"/r/dup", 1}, {"/r/dup", 3}});
    const auto newer = snapshotOf("/r", {{"/r", 130}, {"/r/same", 5}, {"/r/grew", 60}, {"/r/new", 7}, {"/r/dup", 3}});
    EXPECT_EQ(SnapshotDiffer::diff(older, newer, 12),
              (std::vector<SnapshotDiffer::Delta>{{"/r/grew", 10, 60}, {"/r", 100, 130}, {"/r/gone", 20, 0}, {"/r/new", 0, 7}}));
    EXPECT_EQ(SnapshotDiffer::diff(older, newer, 2).size(), 2u);
    auto elsewhere = newer;
    elsewhere.rootPath = "/other";
    EXPECT_TRUE(SnapshotDiffer::diff(older, elsewhere, 12).empty());
}

TEST(MapSnapshots, CompareShowsTwelveOfThirteenChangedFolders) {
    std::vector<DiskMapNode> now;
    std::vector<SnapshotEntry> then;
    for (int i = 0; i < 13; ++i) {
        const std::string p = "/r/f" + std::to_string(i);
        now.push_back(node(p, 1000 + 100 * i));
        then.push_back({p, 1000 - (i + 1)}); // f0 changed least
    }
    const DiskMap current = mapOf("/r", now);
    then.push_back({"/r", current.totalBytes}); // root unchanged
    std::vector<SpaceSnapshot> list{snapshotOf("/r", then)};
    const auto deltas = MapSnapshots::compare(list, list[0].id, &current);
    ASSERT_EQ(deltas.size(), 12u);
    for (const auto& d : deltas) EXPECT_NE(d.path, "/r/f0");
    EXPECT_EQ(deltas.front().path, "/r/f12");
    EXPECT_TRUE(deltas.front().grew());

    const DiskMap unchanged = mapOf("/r", {node("/r/f0", 999)});
    std::vector<SpaceSnapshot> same{snapshotOf("/r", MapSnapshots::flatten(unchanged))};
    EXPECT_TRUE(MapSnapshots::canCompare(same, same[0].id, &unchanged));
    EXPECT_TRUE(MapSnapshots::compare(same, same[0].id, &unchanged).empty());

    const DiskMap other = mapOf("/elsewhere", now);
    EXPECT_TRUE(MapSnapshots::compare(list, list[0].id, &other).empty());
}

TEST(MapSnapshots, VolumeFiguresForARoot) {
    const TimePoint now = *parseIsoDate("2026-11-15T22:16:00Z");
    const SnapshotVolume startup{"System", 500, 100, now - std::chrono::hours(1)};
    const std::vector<MountedVolume> volumes{{"/", "System", 500, 90}, {"/media/usb", "USB", 64, 4}};
    struct Case {
        std::string root, name;
        std::int64_t free;
    } cases[] = {{"/", "System", 100},       {"/media/usb", "USB", 4}, {"/media/usb/photos", "USB", 4},
                 {"/media/usb2", "System", 90}, {"/home/ann", "System", 90}};
    for (const auto& c : cases) {
        const auto v = MapSnapshots::volumeFor(c.root, startup, volumes, now);
        EXPECT_EQ(v.name, c.name) << c.root;
        EXPECT_EQ(v.freeBytes, c.free) << c.root;
    }
    EXPECT_EQ(MapSnapshots::volumeFor("/x", startup, {}, now).name, "");
}

TEST(MapSnapshots, FileRoundTripAndBadFiles) {
    const AppPersistence store(TestEnvironment::freshFolder("snapshots"));
    EXPECT_TRUE(MapSnapshots::load(store).empty());
    auto s = MapSnapshots::make(mapOf("/r", {node("/r/ünï côde", 10)}), SnapshotVolume{"Disk", 9, 3, {}}, Uuid::generate());
    std::vector<SpaceSnapshot> list{*s};
    MapSnapshots::save(store, list);
    EXPECT_EQ(MapSnapshots::load(store), list);

    const char* bad[] = {
        "{", "{}", R"([{"id": "nope", "date": "2026-11-15T22:16:00Z", "rootPath": "/r", "entries": []}])",
        R"([{"id": "6F9619FF-8B86-D011-B42D-00C04FC964FF", "rootPath": "/r", "entries": []}])",
        R"([{"id": "6F9619FF-8B86-D011-B42D-00C04FC964FF", "date": "2026-11-15T22:16:00Z", "rootPath": "/r", "entries": [{"path": 3}]}])"};
    for (const char* text : bad) {
        ASSERT_TRUE(writeFileAtomically(store.pathOf("snapshots.json"), text));
        EXPECT_TRUE(MapSnapshots::load(store).empty()) << text;
    }
    ASSERT_TRUE(writeFileAtomically(store.pathOf("snapshots.json"),
                        R"([{"id": "6f9619ff-8b86-d011-b42d-00c04fc964ff", "date": "2026-11-15T22:16:00Z", "rootPath": "/r", "entries": []}])"));
    const auto minimal = MapSnapshots::load(store);
    ASSERT_EQ(minimal.size(), 1u);
    EXPECT_EQ(minimal[0].volumeName, "");
    EXPECT_EQ(minimal[0].countedBytes, 0);
}
