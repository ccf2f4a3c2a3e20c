#include <gtest/gtest.h>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <optional>

#include "space/DiskMapScanner.h"
#include "space/SpaceFixtures.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

DiskMap scanQuietly(const std::string& root, DiskMapScanner::Options options = {}, std::function<bool()> stop = {}) {
    DiskMapProgress progress;
    if (!stop) stop = [] { return false; };
    return DiskMapScanner::scan(root, progress, stop, options);
}

const DiskMapNode* child(const DiskMapNode& node, const std::string& name) {
    for (const auto& c : node.children)
        if (c.name == name) return &c;
    return nullptr;
}

// Every node's bytes are at least the sum of its children's, children are largest first.
void expectConsistent(const DiskMapNode& node) {
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < node.children.size(); ++i) {
        sum += node.children[i].bytes;
        if (i > 0) {
            EXPECT_GE(node.children[i - 1].bytes, node.children[i].bytes) << node.path;
        }
        expectConsistent(node.children[i]);
    }
    EXPECT_GE(node.bytes, sum) << node.path;
}

} // namespace

TEST(DiskMapScanner, TotalIsTheExactSumOfAllocatedBlocksWhateverTheThreadCount) {
    const std::string root = TestEnvironment::freshFolder("map-sum");
    buildMixedTree(root, 5, 5);
    writeSizedFile(root + "/sub-0/big.bin", 3'000'000); // one folder above the floor
    const std::int64_t expected = referenceAllocated(root);

    DiskMapScanner::Options one;
    one.threads = 1;
    DiskMapProgress progress;
    std::optional<TimePoint> walking; // the first moment the walk asks whether to stop
    const DiskMap serial = DiskMapScanner::scan(root, progress, [&] {
        if (!walking) walking = Clock::now();
        return false;
    }, one);
    ASSERT_TRUE(walking);
    EXPECT_LE(serial.scannedAt, *walking) << "the map is dated when the scan starts";
    EXPECT_EQ(serial.totalBytes, expected);
    EXPECT_EQ(serial.fileCount, 5 * (1 + 3 + 9 + 27 + 81 + 243) + 3);
    EXPECT_EQ(serial.root.fileCount, serial.fileCount);
    EXPECT_FALSE(serial.truncated);
    EXPECT_EQ(serial.unreadableCount, 0);
    const auto counts = progress.snapshot();
    EXPECT_EQ(counts.bytes, expected);
    EXPECT_EQ(counts.files, serial.fileCount);
    struct stat current {};
    EXPECT_TRUE(::lstat(counts.current.c_str(), &current) == 0 && S_ISREG(current.st_mode)) << "progress names a file";
    expectConsistent(serial.root);
    ASSERT_NE(child(serial.root, "sub-0"), nullptr);
    EXPECT_EQ(child(serial.root, "sub-0")->bytes, referenceAllocated(root + "/sub-0"));

    DiskMapScanner::Options many;
    many.threads = 6;
    many.now = serial.scannedAt;
    const DiskMap parallel = scanQuietly(root, many);
    EXPECT_EQ(parallel.totalBytes, expected);
    EXPECT_EQ(parallel.root, serial.root);
}

TEST(DiskMapScanner, EmptyAndMissingRoots) {
    const std::string empty = TestEnvironment::freshFolder("map-empty");
    for (const auto& [path, unreadable] : {std::pair{empty, 0}, std::pair{empty + "/not-there", 1}}) {
        const DiskMap m = scanQuietly(path);
        EXPECT_EQ(m.totalBytes, 0) << path;
        EXPECT_TRUE(m.root.children.empty()) << path;
        EXPECT_EQ(m.root.path, path);
        EXPECT_EQ(m.root.name, path.substr(path.rfind('/') + 1));
        EXPECT_FALSE(m.truncated) << path;
        EXPECT_EQ(m.unreadableCount, unreadable) << path;
    }
}

TEST(DiskMapScanner, RootIsResolvedAndNamed) {
    const std::string base = TestEnvironment::freshFolder("map-names");
    makeDir(base + "/real folder");
    ::symlink((base + "/real folder").c_str(), (base + "/alias").c_str());
    DiskMapScanner::Options options;
    options.homePath = base + "/real folder";
    const DiskMap viaLink = scanQuietly(base + "/alias", options);
    EXPECT_EQ(viaLink.rootPath, base + "/real folder");
    EXPECT_EQ(viaLink.root.name, "Home");

    const std::pair<std::string, std::string> names[] = {
        {"/", "Root Disk"}, {"/home/ann", "Home"}, {"/srv/media", "media"}, {"/srv/media/", "media"}};
    for (const auto& [path, name] : names) EXPECT_EQ(DiskMapScanner::displayName(path, "/home/ann", "Root Disk"), name);
}

TEST(DiskMapScanner, DeepFoldersFoldIntoTheirAncestorAtDepthSix) {
    const std::string root = TestEnvironment::freshFolder("map-deep");
    const std::string deep = root + "/d1/d2/d3/d4/d5/d6/d7/d8";
    writeSizedFile(deep + "/big.bin", 2'000'000);
    const DiskMap m = scanQuietly(root);
    const DiskMapNode* node = &m.root;
    int depth = 0;
    while (!node->children.empty()) {
        ASSERT_EQ(node->children.size(), 1u);
        node = &node->children.front();
        ++depth;
    }
    EXPECT_EQ(depth, 6);
    EXPECT_EQ(node->name, "d6");
    EXPECT_EQ(node->bytes, m.totalBytes);
    EXPECT_EQ(node->fileCount, 1);
}

TEST(DiskMapScanner, ExcludedTreesAreSkippedUnlessTheRootIsInsideOne) {
    const std::string root = TestEnvironment::freshFolder("map-excluded");
    writeSizedFile(root + "/kept/a.bin", 2'000'000);
    writeSizedFile(root + "/pseudo/inner/b.bin", 2'000'000);
    DiskMapScanner::Options options;
    options.excludedTrees = std::vector<std::string>{root + "/pseudo"};
    const DiskMap outer = scanQuietly(root, options);
    EXPECT_EQ(outer.totalBytes, referenceAllocated(root + "/kept"));
    EXPECT_EQ(child(outer.root, "pseudo"), nullptr);

    for (const std::string& inside : {root + "/pseudo", root + "/pseudo/inner"}) {
        const DiskMap m = scanQuietly(inside, options);
        EXPECT_EQ(m.totalBytes, referenceAllocated(root + "/pseudo/inner")) << inside;
    }

    EXPECT_EQ(DiskMapScanner::exclusionsFor("/", DiskMapScanner::excludedTrees()),
              (std::vector<std::string>{"/proc", "/sys", "/dev", "/run"}));
    EXPECT_EQ(DiskMapScanner::exclusionsFor("/run/user/1000", DiskMapScanner::excludedTrees()),
              (std::vector<std::string>{"/proc", "/sys", "/dev"}));
    EXPECT_EQ(DiskMapScanner::exclusionsFor("/runner", DiskMapScanner::excludedTrees()).size(), 4u);
}

TEST(DiskMapScanner, NeverCrossesOntoAnotherFileSystem) {
    const std::string root = TestEnvironment::freshFolder("map-mounts");
    writeSizedFile(root + "/own/a.bin", 2'000'000);
    makeDir(root + "/mounted");
    if (::mount("tmpfs", (root + "/mounted").c_str(), "tmpfs", 0, "size=16m") != 0)
        GTEST_SKIP() << "cannot mount a tmpfs here";
    writeSizedFile(root + "/mounted/other.bin", 2'000'000);
    const DiskMap outer = scanQuietly(root);
    const DiskMap inner = scanQuietly(root + "/mounted");
    ::umount((root + "/mounted").c_str());
    EXPECT_EQ(outer.totalBytes, referenceAllocated(root + "/own"));
    EXPECT_GE(inner.totalBytes, 2'000'000); // a root on the other file system is mapped itself
}

TEST(DiskMapScanner, StopGivesATruncatedMapOfWhatWasCounted) {
    const std::string root = TestEnvironment::freshFolder("map-stop");
    for (int d = 0; d < 4; ++d)
        for (int i = 0; i < 100; ++i) writeFile(root + "/d" + std::to_string(d) + "/f" + std::to_string(i), "x");
    std::atomic<int> asked{0}; // asked from every worker thread
    const DiskMap m = scanQuietly(root, {}, [&] { return ++asked >= 2; });
    EXPECT_TRUE(m.truncated);
    EXPECT_LT(m.fileCount, 400);
    EXPECT_GT(asked, 0);
}

TEST(DiskMapScanner, UnreadableFoldersAreCounted) {
    const std::string root = TestEnvironment::freshFolder("map-locked");
    writeSizedFile(root + "/open/a", 5000);
    writeSizedFile(root + "/locked/b", 5000);
    writeSizedFile(root + "/locked2/c", 5000);
    ::chmod(TestEnvironment::root().c_str(), 0755);
    ::chmod((root + "/locked").c_str(), 0700);
    ::chmod((root + "/locked2").c_str(), 0311); // can enter, can't list
    const std::int64_t openBytes = referenceAllocated(root + "/open");
    const int rc = runAsNobody([&] {
        const DiskMap m = scanQuietly(root);
        return (m.unreadableCount == 2 && m.totalBytes == openBytes && !m.truncated) ? 0 : 1;
    });
    if (rc < 0) GTEST_SKIP() << "cannot run as an unprivileged user here";
    EXPECT_EQ(rc, 0);
}

TEST(DiskMapTree, SizeFloor) {
    const std::pair<std::int64_t, std::int64_t> cases[] = {
        {0, 1'000'000}, {19'999'999'999, 1'000'000}, {20'000'000'000, 1'000'000}, {40'000'000'000, 2'000'000}};
    for (const auto& [total, floor] : cases) EXPECT_EQ(DiskMapScanner::sizeFloor(total), floor) << total;
}

TEST(DiskMapTree, KeepsFoldersAtTheFloorAndOrdersLargestFirst) {
    using T = DiskMapScanner::FolderTally;
    const std::vector<T> tally{
        {"/r", -1, 0, 5'000'000, 10},
        {"/r/at-floor", 0, 1, 1'000'000, 1},
        {"/r/below", 0, 1, 999'999, 1},
        {"/r/big", 0, 1, 3'000'000, 6},
        {"/r/big/b", 3, 2, 1'200'000, 2},
        {"/r/big/a", 3, 2, 1'200'000, 2},
        {"/r/big/small", 3, 2, 10, 1},
        {"/r/also-floor", 0, 1, 1'000'000, 1},
    };
    const DiskMapNode root = DiskMapScanner::buildTree(tally, "Root", 1'000'000);
    EXPECT_EQ(root.name, "Root");
    EXPECT_EQ(root.bytes, 5'000'000);
    EXPECT_EQ(root.fileCount, 10);
    std::vector<std::string> names;
    for (const auto& c : root.children) names.push_back(c.name);
    // Equal sizes keep the order the walk merged them in.
    EXPECT_EQ(names, (std::vector<std::string>{"big", "at-floor", "also-floor"}));
    ASSERT_EQ(root.children[0].children.size(), 2u);
    EXPECT_EQ(root.children[0].children[0].name, "b");
    EXPECT_EQ(root.children[0].children[1].name, "a");
    EXPECT_EQ(root.children[0].fileCount, 6);
}
