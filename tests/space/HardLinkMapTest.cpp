#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include "space/DiskMapScanner.h"
#include "space/MapSnapshots.h"
#include "space/SpaceFixtures.h"

using namespace bv;
using namespace bv::test;

// Hard links on a real file system: the map counts each file once, under its smallest path,
// checked against distinct inodes counted here with nftw.
namespace {

DiskMap mapOf(const std::string& root, int threads = 0) {
    DiskMapProgress progress;
    DiskMapScanner::Options options;
    options.threads = threads;
    return DiskMapScanner::scan(root, progress, [] { return false; }, options);
}

// Allocated bytes of the distinct files (device, inode) under a path.
std::int64_t distinctBytes(const std::string& path) {
    static std::set<std::pair<dev_t, ino_t>> seen;
    static std::int64_t sum;
    seen.clear();
    sum = 0;
    ::nftw(path.c_str(), [](const char*, const struct stat* st, int flag, FTW*) {
        if (flag == FTW_F && !S_ISLNK(st->st_mode) && seen.insert({st->st_dev, st->st_ino}).second) sum += st->st_blocks * 512;
        return 0;
    }, 64, FTW_PHYS);
    return sum;
}

const DiskMapNode* find(const DiskMapNode& node, const std::string& path) {
    if (node.path == path) return &node;
    for (const auto& c : node.children)
        if (const DiskMapNode* hit = find(c, path)) return hit;
    return nullptr;
}

void hardLink(const std::string& from, const std::string& to) {
    makeDir(to.substr(0, to.rfind('/')));
    ASSERT_EQ(::link(from.c_str(), to.c_str()), 0) << to;
}

} // namespace

TEST(HardLinkMap, AFileLinkedIntoThreeFoldersCountsOnceUnderItsSmallestPath) {
    const std::string root = TestEnvironment::freshFolder("links-three");
    // Made in the last-named folder first, so the order of making can't pass for the rule.
    writeSizedFile(root + "/c-last/data.bin", 3'000'000);
    hardLink(root + "/c-last/data.bin", root + "/a-first/inner/data.bin");
    hardLink(root + "/c-last/data.bin", root + "/b-middle/data.bin");
    writeSizedFile(root + "/b-middle/own.bin", 2'000'000);
    writeSizedFile(root + "/c-last/own.bin", 2'000'000);
    const std::int64_t linked = distinctBytes(root + "/c-last/data.bin"), own = distinctBytes(root + "/c-last/own.bin");

    const DiskMap first = mapOf(root);
    EXPECT_EQ(first.totalBytes, distinctBytes(root));
    EXPECT_EQ(first.sharedBytes, 2 * linked);
    EXPECT_EQ(first.fileCount, 5) << "every name is still a file of its folder";
    const std::tuple<std::string, std::int64_t, std::int64_t> rows[] = {
        {"", linked + 2 * own, 0}, {"/a-first", linked, 0}, {"/b-middle", own, linked}, {"/c-last", own, linked}};
    for (const auto& [folder, bytes, shared] : rows) {
        const DiskMapNode* n = find(first.root, root + folder);
        ASSERT_NE(n, nullptr) << folder;
        EXPECT_EQ(n->bytes, bytes) << folder;
        EXPECT_EQ(n->sharedBytes, shared) << folder;
    }
    EXPECT_EQ(diskMapJson(first)["root"]["children"][1]["sharedBytes"], linked);

    for (int run = 0; run < 20; ++run) ASSERT_EQ(mapOf(root, 2).root, first.root) << "run " << run;

    const auto snapshot = MapSnapshots::make(first, {}, Uuid::generate());
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->countedBytes, first.totalBytes);
    const Json written = snapshotJson(*snapshot); // dates are kept to the second
    EXPECT_EQ(snapshotJson(decodeSnapshot(*parseJson(encodeJson(written)))), written);
    EXPECT_TRUE(MapSnapshots::compare({*snapshot}, snapshot->id, &first).empty());
}

TEST(HardLinkMap, StoresAndLinkCopyBackupsTotalTheirDistinctFiles) {
    // A package store with three projects linking into it.
    const std::string store = TestEnvironment::freshFolder("links-store");
    for (int i = 0; i < 12; ++i) writeSizedFile(store + "/.store/" + std::to_string(i % 3) + "/f" + std::to_string(i), 150'000 + i);
    for (const char* app : {"/app-one", "/app-two", "/app-three"}) {
        writeSizedFile(store + app + "/index.js", 40'000);
        for (int i = 0; i < 12; i += 2)
            hardLink(store + "/.store/" + std::to_string(i % 3) + "/f" + std::to_string(i), store + app + "/lib/m" + std::to_string(i));
    }
    // A folder and its `cp -al` backup next to it, one file rewritten since.
    const std::string backups = TestEnvironment::freshFolder("links-backup"), docs = backups + "/home/docs";
    buildMixedTree(docs, 3, 3);
    ASSERT_EQ(std::system(("cp -al '" + docs + "' '" + backups + "/home/backup'").c_str()), 0);
    ::unlink((docs + "/file 0 ñ.txt").c_str());
    writeSizedFile(docs + "/file 0 ñ.txt", 2'000'000);

    // A project alone: its links lead out of the map, so it counts them and shares nothing.
    for (const std::string& root : {store, store + "/app-one", backups}) {
        const DiskMap m = mapOf(root);
        EXPECT_EQ(m.totalBytes, distinctBytes(root)) << root;
        EXPECT_EQ(m.totalBytes + m.sharedBytes, referenceAllocated(root)) << root;
    }
    const DiskMap b = mapOf(backups);
    const DiskMapNode *live = find(b.root, docs), *both = find(b.root, backups + "/home");
    ASSERT_TRUE(live && both);
    EXPECT_EQ(live->bytes, distinctBytes(docs + "/file 0 ñ.txt"));
    EXPECT_EQ(live->sharedBytes, referenceAllocated(docs) - live->bytes);
    EXPECT_EQ(both->sharedBytes, 0) << "it holds both names of every file";
}
