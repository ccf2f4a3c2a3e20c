#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

#include "SpaceFixtures.h"
#include "space/StorageSurvey.h"

using namespace bv;
using namespace bv::test;

namespace {

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

std::vector<std::int64_t> bytesOf(const std::vector<StorageSegment>& segments) {
    std::vector<std::int64_t> out;
    for (const auto& s : segments) out.push_back(s.bytes);
    return out;
}

std::vector<std::string> idsOf(const std::vector<StorageSegment>& segments) {
    std::vector<std::string> out;
    for (const auto& s : segments) out.push_back(s.id);
    return out;
}

// A file whose blocks are reserved without writing them, so a 200 MB fixture costs no time.
bool allocate(const std::string& path, std::int64_t bytes) {
    const int fd = ::open(path.c_str(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    if (fd < 0) return false;
    const bool ok = ::posix_fallocate(fd, 0, bytes) == 0;
    ::close(fd);
    return ok;
}

} // namespace

TEST(StorageSurvey, BarSegmentsKeepTheirOrderAndNeverGoNegative) {
    struct Case {
        const char* what;
        std::int64_t apps, developer, downloads, documents, total, free;
        std::vector<std::int64_t> expected; // apps, developer, downloads, documents, other, free
    };
    const Case cases[] = {
        {"ordinary", 100, 50, 30, 20, 1000, 400, {100, 50, 30, 20, 400, 400}},
        {"known above used", 500, 0, 0, 0, 1000, 900, {500, 0, 0, 0, 0, 900}},
        {"known exactly used", 60, 0, 0, 0, 100, 40, {60, 0, 0, 0, 0, 40}},
        {"free above total", 10, 0, 0, 0, 1000, 5000, {10, 0, 0, 0, 0, 1000}},
        {"negative free", 10, 0, 0, 0, 1000, -5, {10, 0, 0, 0, 990, 0}},
        {"negative total", 10, 0, 0, 0, -1, 0, {10, 0, 0, 0, 0, 0}},
        {"negative size counts nothing", -100, 0, 0, 0, 1000, 0, {0, 0, 0, 0, 1000, 0}},
        {"sums that would overflow", kMax, kMax, kMax, kMax, kMax, 0, {kMax, kMax, kMax, kMax, 0, 0}},
        {"a total near the limit", 1, 1, 1, 1, kMax, 1, {1, 1, 1, 1, kMax - 5, 1}},
    };
    for (const auto& c : cases) {
        const StorageSurvey::Sizes sizes{c.apps, c.developer, c.downloads, c.documents, 999, {}}; // Desktop is never on the bar
        const auto segments = StorageSurvey::segments(sizes, VolumeSnapshot{{}, "", c.total, c.free});
        EXPECT_EQ(idsOf(segments),
                  (std::vector<std::string>{"apps", "developer", "downloads", "documents", "other", "free"}))
            << c.what;
        EXPECT_EQ(bytesOf(segments), c.expected) << c.what;
    }
    EXPECT_EQ(StorageSurvey::segments({}, {})[4].name, "Other used space");
}

TEST(StorageSurvey, TopFoldersAreTheFirstFive) {
    struct Case {
        const char* what;
        std::int64_t downloads, documents, desktop, apps;
        std::vector<std::int64_t> extras;
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        {"apps falls off past five", 5, 4, 3, 9, {2, 1}, {"downloads", "documents", "desktop", "x0", "x1"}},
        {"order is fixed, not by size", 1, 2, 3, 4, {}, {"downloads", "documents", "desktop", "apps"}},
        {"empty folders stay", 5, 0, 3, 7, {0}, {"downloads", "documents", "desktop", "x0", "apps"}},
        {"nothing measured", 0, 0, 0, 0, {}, {"downloads", "documents", "desktop", "apps"}},
    };
    for (const auto& c : cases) {
        StorageSurvey::Sizes sizes;
        sizes.downloads = c.downloads;
        sizes.documents = c.documents;
        sizes.desktop = c.desktop;
        sizes.apps = c.apps;
        for (std::size_t i = 0; i < c.extras.size(); ++i)
            sizes.extras.push_back({"x" + std::to_string(i), "Extra", c.extras[i]});
        EXPECT_EQ(idsOf(StorageSurvey::topFolders(sizes)), c.expected) << c.what;
    }
}

TEST(StorageSurvey, CoverageRowsStartAtTheFloor) {
    const std::string home = "/home/ana";
    const CoveragePlace trash{"trash", "Trash", home + "/.local/share/Trash", "Empty it."};
    struct Case {
        const char* what;
        bool exists;
        std::optional<std::int64_t> bytes;
        bool listed;
        std::string detail;
    };
    const Case cases[] = {
        {"missing", false, 0, false, ""},
        {"empty", true, 0, false, ""},
        {"one byte short", true, 199'999'999, false, ""},
        {"exactly the floor", true, 200'000'000, true, "~/.local/share/Trash"},
        {"unreadable", true, std::nullopt, true, StorageSurvey::kUnreadableDetail},
    };
    for (const auto& c : cases) {
        const auto row = StorageSurvey::coverageRow(trash, c.exists, c.bytes, home);
        ASSERT_EQ(row.has_value(), c.listed) << c.what;
        if (!row) continue;
        EXPECT_EQ(row->bytes, c.bytes) << c.what;
        EXPECT_EQ(row->detail, c.detail) << c.what;
        EXPECT_EQ(row->path, trash.path) << c.what;
    }
    EXPECT_EQ(StorageSurvey::shortPath("/home/anabel/x", home), "/home/anabel/x");
    EXPECT_EQ(StorageSurvey::shortPath(home, home), "~");
}

// The measure counts allocated blocks, which come in 4096-byte steps here (and the file
// system may add a block of its own for a big file), so the Trash is built a few kilobytes
// under the floor and then topped up past it; the exact floor is held by the table above.
TEST(StorageSurvey, ARealTrashIsListedOnceItsBlocksPassTheFloor) {
    const std::string home = TestEnvironment::freshFolder("trash-home");
    const std::string trash = home + "/.local/share/Trash";
    makeDir(trash + "/files");
    makeDir(trash + "/info");
    const auto places = StorageSurvey::coveragePlaces(trash);
    const std::vector<CoveragePlace> trashOnly(places.begin(), places.begin() + 1);
    ASSERT_EQ(trashOnly.front().id, "trash");

    EXPECT_TRUE(StorageSurvey::measureCoverage(trashOnly, home).empty()) << "an empty Trash has no row";

    ASSERT_TRUE(allocate(trash + "/files/disk.img", StorageSurvey::kCoverageFloor - 8192));
    const std::int64_t under = referenceAllocated(trash);
    if (under >= StorageSurvey::kCoverageFloor) {
        removeTree(home);
        GTEST_SKIP() << "this file system allocated " << under << " bytes for the fixture";
    }
    EXPECT_TRUE(StorageSurvey::measureCoverage(trashOnly, home).empty()) << under;

    writeSizedFile(trash + "/info/disk.img.trashinfo", StorageSurvey::kCoverageFloor - under);
    const std::int64_t over = referenceAllocated(trash);
    ASSERT_GE(over, StorageSurvey::kCoverageFloor);
    const auto rows = StorageSurvey::measureCoverage(trashOnly, home);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].bytes, over);
    EXPECT_EQ(rows[0].detail, "~/.local/share/Trash");
    removeTree(home);
}

TEST(StorageSurvey, DeveloperCachesCountCatalogueFoldersOnceWithoutReviewOnlyOnes) {
    const std::string home = TestEnvironment::freshFolder("survey-dev");
    writeSizedFile(home + "/.npm/_cacache/index", 30'000);
    writeSizedFile(home + "/.cache/tool/blob", 40'000);
    writeSizedFile(home + "/Library/Caches/pip/wheel", 50'000);     // inside Library/Caches: once
    writeSizedFile(home + "/Library/Caches/other/data", 10'000);
    writeSizedFile(home + "/.ollama/models/weights", 90'000);       // review only: never counted
    writeSizedFile(home + "/Projects/app/node_modules/x", 20'000); // not in the catalogue

    const std::vector<std::string> expected{home + "/.npm/_cacache", home + "/.cache", home + "/Library/Caches"};
    EXPECT_EQ(StorageSurvey::developerFolders(home), expected);
    std::int64_t sum = 0;
    for (const auto& f : expected) sum += referenceAllocated(f);
    SurveyProgress progress;
    EXPECT_EQ(StorageSurvey::measureDeveloper(home, &progress), sum);
    EXPECT_EQ(progress.value(), sum);
    EXPECT_EQ(StorageSurvey::measureDeveloper(TestEnvironment::freshFolder("survey-dev-empty"), nullptr), 0);
}

// Root reads every folder, so the survey runs as an unprivileged user in a child process.
TEST(StorageSurvey, AFolderThatCannotBeReadCountsNothing) {
    const std::string root = TestEnvironment::freshFolder("survey-locked");
    writeSizedFile(root + "/Downloads/big.bin", 300'000);
    writeSizedFile(root + "/Documents/note.txt", 5'000);
    ::chmod(TestEnvironment::root().c_str(), 0755);
    ::chmod(root.c_str(), 0755);
    ::chmod((root + "/Documents").c_str(), 0755);
    ::chmod((root + "/Documents/note.txt").c_str(), 0644);
    ::chmod((root + "/Downloads").c_str(), 0700);
    const std::int64_t documents = referenceAllocated(root + "/Documents");

    SurveyPlaces places;
    places.home = root;
    places.downloads = root + "/Downloads";
    places.documents = root + "/Documents";
    const std::vector<CoveragePlace> locked{{"trash", "Trash", root + "/Downloads", "Empty it."}};
    const int rc = runAsNobody([&] {
        const auto sizes = StorageSurvey::measureFolders(places, nullptr);
        if (sizes.downloads != 0 || sizes.documents != documents) return 1;
        const auto rows = StorageSurvey::measureCoverage(locked, root);
        if (rows.size() != 1 || rows[0].bytes || rows[0].detail != StorageSurvey::kUnreadableDetail) return 2;
        return 0;
    });
    if (rc < 0) GTEST_SKIP() << "cannot run as an unprivileged user here";
    EXPECT_EQ(rc, 0);
}
