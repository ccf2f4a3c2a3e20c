#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "duplicates/ContentHasher.h"
#include "duplicates/DuplicateScanner.h"
#include "space/SpaceFixtures.h"
#include "support/TestEnvironment.h"

using namespace bv;
using bv::test::runAsNobody;
using bv::test::TestEnvironment;
using bv::test::writeFile;

namespace {

// Bytes that differ from position to position, so a changed byte anywhere is a real change.
std::string patterned(std::size_t size, unsigned seed = 1) {
    std::string s(size, '\0');
    std::uint32_t x = seed * 2654435761u + 1;
    for (auto& c : s) {
        x = x * 1664525u + 1013904223u;
        c = static_cast<char>(x >> 24);
    }
    return s;
}

std::string flipped(std::string s, std::size_t at) {
    s[at] = static_cast<char>(s[at] ^ 0x5a);
    return s;
}

std::vector<DuplicateGroup> scan(const std::vector<std::string>& roots, std::int64_t minimum,
                                 DuplicateScanProgress* progressOut = nullptr) {
    CancellationFlag flag;
    DuplicateScanProgress progress;
    DuplicateScanner scanner(minimum, flag, progress);
    auto groups = scanner.run(roots);
    if (progressOut) progressOut->update([&](DuplicateScanCounters& c) { c = progress.snapshot(); });
    return groups;
}

std::vector<std::string> pathsOf(const DuplicateGroup& g) {
    std::vector<std::string> out;
    for (const auto& f : g.files) out.push_back(f.path);
    return out;
}

} // namespace

TEST(DuplicateScan, SmallFilesAreNeverComparedWhateverTheSetting) {
    const auto root = TestEnvironment::freshFolder("small");
    writeFile(root + "/a", std::string(100, 'q'));
    writeFile(root + "/b", std::string(100, 'q'));
    for (const std::int64_t asked : {0, 1, 100, 99999})
        EXPECT_TRUE(scan({root}, effectiveDuplicateMinimum(asked)).empty()) << asked;
    EXPECT_EQ(effectiveDuplicateMinimum(100), 100000);
    EXPECT_EQ(effectiveDuplicateMinimum(10'000'000), 10'000'000);
    // The scanner itself honours whatever it is given; the floor is the callers' rule.
    EXPECT_EQ(scan({root}, 100).size(), 1u);
    EXPECT_TRUE(scan({root}, 101).empty());
}

// Pairs of same-sized files: which pass parts them, if any.
TEST(DuplicateScan, PairsPartWhereTheirContentsDiffer) {
    struct Case {
        const char* what;
        std::size_t size;
        std::size_t differAt; // SIZE_MAX: identical
        bool sameQuickKey;
        bool grouped;
    };
    constexpr auto same = SIZE_MAX;
    const Case cases[] = {
        {"identical, large", 3'000'000, same, true, true},
        {"middle differs", 3'000'000, 1'500'000, true, false},
        {"first byte differs", 3'000'000, 0, false, false},
        {"last byte differs", 3'000'000, 2'999'999, false, false},
        {"byte 4096 of 8193 (between the ends)", 8193, 4096, true, false},
        {"4096 bytes, last differs", 4096, 4095, false, false},
        {"4096 bytes, identical", 4096, same, true, true},
        {"4097 bytes, last differs (overlapping tail)", 4097, 4096, false, false},
        {"4097 bytes, second byte differs (head and tail)", 4097, 1, false, false},
        {"just over a chunk, last differs", (1 << 20) + 1, 1 << 20, false, false},
        {"two chunks and a bit, identical", (2 << 20) + 7, same, true, true},
    };
    for (const auto& c : cases) {
        const auto root = TestEnvironment::freshFolder("pair");
        const auto content = patterned(c.size);
        writeFile(root + "/one", content);
        writeFile(root + "/two", c.differAt == same ? content : flipped(content, c.differAt));
        ContentHasher hasher;
        const auto k1 = hasher.quickKey(root + "/one", static_cast<std::int64_t>(c.size));
        const auto k2 = hasher.quickKey(root + "/two", static_cast<std::int64_t>(c.size));
        ASSERT_TRUE(k1 && k2) << c.what;
        EXPECT_EQ(k1->digest == k2->digest, c.sameQuickKey) << c.what;
        const auto groups = scan({root}, 1);
        ASSERT_EQ(groups.size(), c.grouped ? 1u : 0u) << c.what;
        if (c.grouped) {
            EXPECT_EQ(groups[0].fileSize, static_cast<std::int64_t>(c.size));
            EXPECT_EQ(groups[0].reclaimableBytes, static_cast<std::int64_t>(c.size));
        }
    }
}

TEST(DuplicateScan, QuickKeyReadsEachEndOnceAndHashesWhatItRead) {
    const auto root = TestEnvironment::freshFolder("edges");
    const struct {
        std::size_t size;
        std::int64_t bytesRead;
    } cases[] = {{10, 10}, {4096, 4096}, {4097, 8192}, {100000, 8192}};
    for (const auto& c : cases) {
        const auto content = patterned(c.size, 7);
        writeFile(root + "/f", content);
        ContentHasher hasher;
        const auto key = hasher.quickKey(root + "/f", static_cast<std::int64_t>(c.size));
        ASSERT_TRUE(key);
        EXPECT_EQ(hasher.bytesRead(), c.bytesRead) << c.size;
        // The same digest as hashing the head and the tail (which may overlap) by hand.
        const std::string head = content.substr(0, 4096);
        const std::string tail = c.size > 4096 ? content.substr(c.size - 4096) : std::string();
        writeFile(root + "/expected", head + tail);
        const auto expected = hasher.fullHash(root + "/expected", CancellationFlag{});
        ASSERT_TRUE(expected);
        EXPECT_EQ(key->digest, expected->digest) << c.size;
    }
}

TEST(DuplicateScan, FullHashIsTheSha256OfTheContents) {
    const auto root = TestEnvironment::freshFolder("sha");
    writeFile(root + "/abc", "abc");
    writeFile(root + "/empty", "");
    ContentHasher hasher;
    EXPECT_EQ(digestHex(hasher.fullHash(root + "/abc", CancellationFlag{})->digest),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digestHex(hasher.fullHash(root + "/empty", CancellationFlag{})->digest),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_FALSE(hasher.fullHash(root + "/missing", CancellationFlag{}));
    CancellationFlag stopped;
    stopped.cancel();
    EXPECT_FALSE(hasher.fullHash(root + "/abc", stopped)) << "the flag is read before the first chunk";
}

TEST(DuplicateScan, GroupCarriesIdSortedFilesAndFacts) {
    const auto root = TestEnvironment::freshFolder("facts");
    const auto content = patterned(200'000, 3);
    writeFile(root + "/zeta/copy", content);
    writeFile(root + "/alpha", content);
    writeFile(root + "/Ärger mit Leerzeichen", content);
    const auto groups = scan({root}, 1000);
    ASSERT_EQ(groups.size(), 1u);
    const auto& g = groups[0];
    ContentHasher hasher;
    const auto digest = hasher.fullHash(root + "/alpha", CancellationFlag{});
    EXPECT_EQ(g.id, "200000-" + digestHex(digest->digest));
    EXPECT_EQ(pathsOf(g), (std::vector<std::string>{root + "/alpha", root + "/zeta/copy", root + "/Ärger mit Leerzeichen"}));
    EXPECT_EQ(g.reclaimableBytes, 400'000);
    for (const auto& f : g.files) {
        EXPECT_EQ(f.bytes, 200'000);
        EXPECT_FALSE(f.sharesStorage);
        ASSERT_TRUE(f.modified);
        struct stat st {};
        ::stat(f.path.c_str(), &st);
        EXPECT_EQ(std::chrono::duration_cast<std::chrono::seconds>(f.modified->time_since_epoch()).count(),
                  st.st_mtim.tv_sec);
    }
}

TEST(DuplicateScan, HardLinksCountAsOneStorageObject) {
    const auto root = TestEnvironment::freshFolder("links");
    const auto content = patterned(150'000, 5);
    writeFile(root + "/a", content);
    ASSERT_EQ(::link((root + "/a").c_str(), (root + "/b").c_str()), 0);
    auto groups = scan({root}, 1000);
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].reclaimableBytes, 0);
    for (const auto& f : groups[0].files) EXPECT_TRUE(f.sharesStorage) << f.path;

    // A third, separate copy: two storage objects, one file's worth to free.
    writeFile(root + "/c", content);
    groups = scan({root}, 1000);
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].files.size(), 3u);
    EXPECT_EQ(groups[0].reclaimableBytes, 150'000);
    EXPECT_FALSE(groups[0].files[2].sharesStorage);
}

TEST(DuplicateScan, FilesVanishingBetweenPassesDropOut) {
    enum class When { afterSizes, afterQuickKeys };
    for (const When when : {When::afterSizes, When::afterQuickKeys}) {
        const auto root = TestEnvironment::freshFolder("vanish");
        const auto content = patterned(120'000, 9);
        writeFile(root + "/keep", content);
        writeFile(root + "/gone", content);
        CancellationFlag flag;
        DuplicateScanProgress progress;
        DuplicateScanner scanner(1000, flag, progress);
        auto buckets = scanner.sizePass({root});
        ASSERT_EQ(buckets.size(), 1u);
        if (when == When::afterSizes) ::unlink((root + "/gone").c_str());
        auto alike = scanner.quickKeyPass(std::move(buckets));
        if (when == When::afterQuickKeys) {
            ASSERT_EQ(alike.size(), 1u);
            ::unlink((root + "/gone").c_str());
        }
        auto groups = scanner.groupPass(scanner.contentPass(std::move(alike)));
        EXPECT_TRUE(groups.empty()) << static_cast<int>(when);
    }
}

TEST(DuplicateScan, NestedAndRepeatedRootsSearchOnce) {
    const auto root = TestEnvironment::freshFolder("nested");
    const auto content = patterned(110'000, 11);
    writeFile(root + "/B/inner", content);
    writeFile(root + "/outer", content);
    const std::vector<std::string> roots{root + "/B", root + "/", root + "/./B/..", root + "//B/", root};
    EXPECT_EQ(reduceDuplicateRoots(roots), std::vector<std::string>{root});
    const auto groups = scan(roots, 1000);
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].files.size(), 2u);

    // Siblings stay, in order of first appearance; a name that only starts alike is no parent.
    EXPECT_EQ(reduceDuplicateRoots({"/data/photos2", "/data/photos", "/data/photos/x", "/data/photos2/"}),
              (std::vector<std::string>{"/data/photos2", "/data/photos"}));
    EXPECT_EQ(reduceDuplicateRoots({"/a/b", "/"}), std::vector<std::string>{"/"});
    EXPECT_EQ(duplicateStandardPath("/a/./b/../c//d/"), "/a/c/d");
    EXPECT_EQ(duplicateStandardPath("/.."), "/");
}

TEST(DuplicateScan, WalkSkipsLinksDependencyFoldersAndSpecialFiles) {
    const auto root = TestEnvironment::freshFolder("walk");
    const auto content = patterned(100'500, 13);
    writeFile(root + "/.hidden/real", content); // hidden files are searched
    writeFile(root + "/copy", content);
    for (const char* skipped : {".git", "node_modules", "Pods", "VENDOR", "site-packages", ".venv", "Carthage", ".cargo"})
        writeFile(root + "/" + skipped + "/inside", content);
    writeFile(root + "/.GIT-like/inside", content); // not a skipped name: searched
    ASSERT_EQ(::symlink((root + "/copy").c_str(), (root + "/link-to-copy").c_str()), 0);
    ASSERT_EQ(::symlink((root + "/.hidden").c_str(), (root + "/link-to-folder").c_str()), 0);
    ASSERT_EQ(::mkfifo((root + "/pipe").c_str(), 0600), 0);

    DuplicateScanProgress progress;
    const auto groups = scan({root}, 0, &progress);
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(pathsOf(groups[0]),
              (std::vector<std::string>{root + "/.GIT-like/inside", root + "/.hidden/real", root + "/copy"}));
    const auto counters = progress.snapshot();
    EXPECT_EQ(counters.files, 3) << "only the regular files walked are counted";
    EXPECT_EQ(counters.hashed, 3);
    EXPECT_FALSE(counters.current.empty());
}

TEST(DuplicateScan, GroupsAreSortedByWhatTheyFree) {
    const auto root = TestEnvironment::freshFolder("sorted");
    // 3 x 200 KB frees 400 KB; 2 x 300 KB frees 300 KB; 2 hard links of 900 KB free nothing.
    const auto small = patterned(200'000, 21), mid = patterned(300'000, 22), big = patterned(900'000, 23);
    for (const char* n : {"s1", "s2", "s3"}) writeFile(root + "/" + n, small);
    for (const char* n : {"m1", "m2"}) writeFile(root + "/" + n, mid);
    writeFile(root + "/b1", big);
    ASSERT_EQ(::link((root + "/b1").c_str(), (root + "/b2").c_str()), 0);
    const auto groups = scan({root}, 1000);
    ASSERT_EQ(groups.size(), 3u);
    EXPECT_EQ(groups[0].reclaimableBytes, 400'000);
    EXPECT_EQ(groups[1].reclaimableBytes, 300'000);
    EXPECT_EQ(groups[2].reclaimableBytes, 0);
    EXPECT_EQ(groups[2].fileSize, 900'000);
}

TEST(DuplicateScan, AStoppedScanReadsNothingMore) {
    const auto root = TestEnvironment::freshFolder("stopped");
    const auto content = patterned(150'000, 31);
    for (int i = 0; i < 200; ++i) writeFile(root + "/f" + std::to_string(i), content);
    CancellationFlag flag;
    DuplicateScanProgress progress;
    DuplicateScanner scanner(1000, flag, progress);
    auto buckets = scanner.sizePass({root});
    ASSERT_EQ(buckets.size(), 1u);
    auto alike = scanner.quickKeyPass(std::move(buckets));
    const auto readBefore = scanner.bytesRead();
    flag.cancel();
    EXPECT_TRUE(scanner.contentPass(std::move(alike)).empty());
    EXPECT_EQ(scanner.bytesRead(), readBefore);
    EXPECT_EQ(progress.snapshot().hashed, 0);
    // A walk started after the stop ends within its first 64 entries.
    EXPECT_TRUE(scanner.sizePass({root}).empty());
}

TEST(DuplicateScan, ProgressTexts) {
    EXPECT_EQ(duplicateProgressText({0, 0, ""}), "0 files checked");
    EXPECT_EQ(duplicateProgressText({1234, 0, "x"}), "1234 files checked");
    EXPECT_EQ(duplicateProgressText({1234, 1, "x"}), "Confirming matches… 1 hashed");
}

// Runs the scan as an unprivileged user, as root reads everything: an unreadable folder is
// passed over and an unreadable file drops out, while the rest is still found.
TEST(DuplicateScan, UnreadableFoldersAndFilesArePassedOver) {
    const auto root = TestEnvironment::freshFolder("unreadable");
    const auto content = patterned(130'000, 41);
    writeFile(root + "/open/a", content);
    writeFile(root + "/open/b", content);
    writeFile(root + "/open/locked", content);
    writeFile(root + "/closed/c", content);
    ::chmod((root + "/open/locked").c_str(), 0000);
    ::chmod((root + "/closed").c_str(), 0000);
    // Let the other user reach the fixture through the test's own folders above it; the
    // system's folders above those (such as /tmp) are left exactly as they are.
    const std::string top = TestEnvironment::root();
    for (std::string p = root; p.size() >= top.size(); p = p.substr(0, p.rfind('/'))) ::chmod(p.c_str(), 0755);
    ::chmod((root + "/closed").c_str(), 0000);

    const int rc = runAsNobody([&] {
        const auto groups = scan({root}, 1000);
        return groups.size() == 1 && pathsOf(groups[0]) == std::vector<std::string>{root + "/open/a", root + "/open/b"} ? 0 : 1;
    });
    ::chmod((root + "/closed").c_str(), 0755);
    if (rc < 0) GTEST_SKIP() << "cannot switch to an unprivileged user here";
    EXPECT_EQ(rc, 0) << "only /open/a and /open/b are readable copies";
}
