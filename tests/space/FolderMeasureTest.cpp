#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "space/FolderMeasure.h"
#include "space/SpaceFixtures.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

TEST(FolderMeasure, SumsAllocatedSizesExactlyWhateverTheThreadCount) {
    const std::string root = TestEnvironment::freshFolder("measure-mixed");
    buildMixedTree(root);
    ::link((root + "/file 1 ñ.txt").c_str(), (root + "/hard link").c_str()); // counted under both names
    const std::int64_t expected = referenceAllocated(root);
    for (int threads : {1, 2, 5}) {
        FolderMeasure::Options options;
        options.threads = threads;
        const auto r = FolderMeasure::measure(root, options);
        EXPECT_EQ(r.bytes, expected) << threads;
        EXPECT_EQ(r.files, 6 * (1 + 3 + 9 + 27 + 81) + 3) << threads; // + empty, sparse, hard link
        EXPECT_EQ(r.folders, 3 + 9 + 27 + 81) << threads;              // links to folders not entered
        EXPECT_TRUE(r.complete);
        EXPECT_EQ(r.unreadable, 0);
    }
}

TEST(FolderMeasure, EdgesOfWhatIsMeasured) {
    const std::string root = TestEnvironment::freshFolder("measure-edges");
    writeSizedFile(root + "/one.bin", 10000);
    struct stat st {};
    ASSERT_EQ(::stat((root + "/one.bin").c_str(), &st), 0);
    const std::int64_t oneFile = static_cast<std::int64_t>(st.st_blocks) * 512;
    makeDir(root + "/empty");
    makeDir(root + "/real");
    writeSizedFile(root + "/real/data", 10000);
    ::symlink((root + "/real").c_str(), (root + "/linked").c_str());

    struct Case {
        std::string path;
        std::int64_t bytes, files, unreadable;
    } cases[] = {
        {root + "/empty", 0, 0, 0},
        {root + "/one.bin", oneFile, 1, 0},    // a file given as the folder
        {root + "/missing", 0, 0, 1},          // nothing there
        {root + "/linked", oneFile, 1, 0},     // a link given as the folder is followed
        {root, 2 * oneFile, 2, 0},             // the link below the root is not
    };
    std::vector<std::string> paths;
    for (const auto& c : cases) {
        const auto r = FolderMeasure::measure(c.path);
        EXPECT_EQ(r.bytes, c.bytes) << c.path;
        EXPECT_EQ(r.files, c.files) << c.path;
        EXPECT_EQ(r.unreadable, c.unreadable) << c.path;
        paths.push_back(c.path);
    }
    // All at once on one pool, with a root inside another: each keeps its own sum.
    paths.push_back(root + "/real");
    for (int threads : {1, 3}) {
        FolderMeasure::Options options;
        options.threads = threads;
        const auto many = FolderMeasure::measureMany(paths, options);
        ASSERT_EQ(many.size(), paths.size());
        for (std::size_t i = 0; i < std::size(cases); ++i) {
            EXPECT_EQ(many[i].bytes, cases[i].bytes) << cases[i].path << " threads " << threads;
            EXPECT_EQ(many[i].files, cases[i].files) << cases[i].path;
            EXPECT_EQ(many[i].unreadable, cases[i].unreadable) << cases[i].path;
        }
        EXPECT_EQ(many.back().bytes, oneFile);
    }
}

TEST(FolderMeasure, DeadlineAndCancellationEndItEarlyWithWhatWasCounted) {
    const std::string root = TestEnvironment::freshFolder("measure-stop");
    for (int i = 0; i < 200; ++i) writeFile(root + "/f" + std::to_string(i), "abc");

    FolderMeasure::Options late;
    late.deadline = std::chrono::steady_clock::now() - std::chrono::seconds(1);
    const auto r1 = FolderMeasure::measure(root, late);
    EXPECT_FALSE(r1.complete);
    EXPECT_EQ(r1.files, 31); // the 32nd entry is where the deadline is read

    CancellationFlag flag;
    flag.cancel();
    FolderMeasure::Options cancelled;
    cancelled.cancel = &flag;
    const auto r2 = FolderMeasure::measure(root, cancelled);
    EXPECT_FALSE(r2.complete);
    EXPECT_LT(r2.files, 200);

    FolderMeasure::Options roomy;
    roomy.deadline = std::chrono::steady_clock::now() + std::chrono::hours(1);
    FolderMeasureProgress progress;
    roomy.progress = &progress;
    const auto r3 = FolderMeasure::measure(root, roomy);
    EXPECT_TRUE(r3.complete);
    EXPECT_EQ(r3.files, 200);
    EXPECT_EQ(progress.snapshot().files, 200);
    EXPECT_EQ(progress.snapshot().bytes, r3.bytes);
}

TEST(FolderMeasure, UnreadableFoldersAreCountedAndSkipped) {
    const std::string root = TestEnvironment::freshFolder("measure-locked");
    writeSizedFile(root + "/open/a", 5000);
    writeSizedFile(root + "/locked/b", 5000);
    ::chmod(root.c_str(), 0755);
    ::chmod((root + "/locked").c_str(), 0700);
    const std::string parent = TestEnvironment::root();
    ::chmod(parent.c_str(), 0755);
    const std::int64_t openBytes = referenceAllocated(root + "/open");
    const int rc = runAsNobody([&] {
        const auto r = FolderMeasure::measure(root);
        return (r.unreadable == 1 && r.bytes == openBytes && r.files == 1) ? 0 : 1;
    });
    if (rc < 0) GTEST_SKIP() << "cannot run as an unprivileged user here";
    EXPECT_EQ(rc, 0);
}
