// The look's measuring on helper threads gives what measuring one folder at a time gives, and
// its walk reads listings longer than one read of the kernel's directory entries.
#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

#include "buildwatch/BuildWatchCatalog.h"
#include "buildwatch/BuildWatchScanner.h"
#include "buildwatch/FolderMeasureQueue.h"
#include "space/FolderMeasure.h"
#include "support/TestEnvironment.h"

namespace bv {
namespace {

using test::makeDir;
using test::writeFile;
using test::writeSizedFile;

TEST(BuildWatchLook, MeasuringOnHelpersEqualsMeasuringEachFolderAlone) {
    const std::string root = test::TestEnvironment::freshFolder("measure-queue");
    std::vector<std::string> folders;
    for (int i = 0; i < 40; ++i) {
        const std::string f = root + "/f" + std::to_string(i);
        for (int j = 0; j <= i % 7; ++j) writeSizedFile(f + "/d" + std::to_string(j % 3) + "/x" + std::to_string(j), 1000 * (i + j) + 1);
        folders.push_back(f);
    }
    for (int i = 0; i < 600; ++i) writeSizedFile(root + "/wide/" + std::string(56, 'w') + std::to_string(1000 + i), i); // several reads
    folders.push_back(root + "/wide");
    makeDir(root + "/empty");
    folders.push_back(root + "/empty");
    folders.push_back(root + "/missing");
    folders.push_back(root + "/f3/d0"); // inside another: measured on its own as well
    writeSizedFile(root + "/file", 3000); // not a folder: measured as the one file
    folders.push_back(root + "/file");
    // Links count nothing and are not followed, below a folder or as one.
    ASSERT_EQ(::symlink((root + "/f9").c_str(), (root + "/f8/d1/to-folder").c_str()), 0);
    ASSERT_EQ(::symlink((root + "/file").c_str(), (root + "/f8/d1/to-file").c_str()), 0);
    ASSERT_EQ(::symlink((root + "/f9").c_str(), (root + "/link").c_str()), 0);
    folders.push_back(root + "/link");

    for (const auto& [helpers, shortReads] : {std::pair{0, false}, std::pair{1, true}, std::pair{3, true}, std::pair{3, false}}) {
        FolderMeasureQueue queue(helpers, std::nullopt);
        // Handed over in pieces, one folder twice, as a walk finds them.
        queue.add({folders.begin(), folders.begin() + 10}, shortReads);
        queue.add({folders[0]}, shortReads);
        queue.add({folders.begin() + 10, folders.end()}, shortReads);
        const auto sizes = queue.finish();
        ASSERT_EQ(sizes.size(), folders.size()) << helpers << " helpers";
        for (const auto& f : folders) EXPECT_EQ(sizes.at(f), FolderMeasure::bytes(f)) << f << ", " << helpers << " helpers";
    }
}

// The walks pass by folders with no project file name without recognising their stacks: the
// quick test must say yes for every name that gives a stack or a row.
TEST(BuildWatchLook, ProjectFileNamesAreExactlyThoseThatGiveStacks) {
    std::vector<std::string> names{"App.XCODEPROJ", "w.xcworkspace", "README.md", "tauri.conf.json", "Info.plist",
                                   "cargo.tom", "xcodeproj", "Package.json.bak"};
    for (const auto& row : BuildWatchCatalog::patterns())
        for (const auto& m : row.manifests) names.push_back(m == "Cargo.toml" ? "CARGO.toml" : m);
    for (const auto& n : names)
        EXPECT_EQ(BuildWatchCatalog::isProjectFileName(n),
                  !BuildWatchCatalog::recognizeStacks(std::vector<std::string>{n}).empty() ||
                      !BuildWatchCatalog::applicablePatterns(std::vector<std::string>{n}, false).empty())
            << n;
}

TEST(BuildWatchLook, FindsEveryProjectOfAFolderListedInSeveralReads) {
    const std::string home = test::TestEnvironment::freshFolder("look-wide");
    // 600 names of 60 characters take more than one 32 KB read of directory entries.
    const std::string pad(48, 'p');
    std::int64_t expected = 0;
    for (int i = 0; i < 600; ++i) {
        const std::string project = home + "/code/" + pad + std::to_string(1000 + i);
        writeFile(project + "/Cargo.toml", "");
        writeSizedFile(project + "/target/debug/out", 5000 + i);
        expected += FolderMeasure::bytes(project + "/target/debug");
    }
    const auto look = BuildWatchScanner::lookForProjects({home + "/code"}, {}, home, std::chrono::seconds(300), 1);
    ASSERT_EQ(look.suggestions.size(), 600u);
    std::int64_t total = 0;
    for (const auto& s : look.suggestions) total += s.bytes;
    EXPECT_EQ(total, expected);
}

} // namespace
} // namespace bv
