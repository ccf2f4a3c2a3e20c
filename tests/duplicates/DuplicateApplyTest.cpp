// From a real scan to the real Trash: the plan's recheck fields must make the cleaner keep
// every copy once the kept file is no longer what it was when compared. The Trash is the
// test run's own (HOME points into a temporary folder).
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "clean/Cleaner.h"
#include "duplicates/DuplicateCleanup.h"
#include "duplicates/DuplicateScanner.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

using namespace bv;
using bv::test::exists;
using bv::test::writeFile;

namespace {

std::string contents(std::size_t size, char seed) {
    std::string s(size, seed);
    for (std::size_t i = 0; i < size; i += 977) s[i] = static_cast<char>(seed + i % 13);
    return s;
}

void shiftModified(const std::string& path, int seconds) {
    struct stat st {};
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    const timespec times[2] = {st.st_atim, {st.st_mtim.tv_sec + seconds, st.st_mtim.tv_nsec}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

} // namespace

TEST(DuplicateApply, CopiesGoOnlyWhileTheKeeperIsUnchanged) {
    enum class Change { none, keeperRewritten, keeperTouched, keeperGone, keeperSwappedForLink, copyRewritten };
    const struct {
        Change change;
        int copiesTrashed;
    } cases[] = {
        {Change::none, 2},         {Change::keeperRewritten, 0},     {Change::keeperTouched, 0},
        {Change::keeperGone, 0},   {Change::keeperSwappedForLink, 0}, {Change::copyRewritten, 1},
    };
    const std::string home = XdgPaths::home();
    for (const auto& c : cases) {
        const std::string root = home + "/Documents/dups-" + std::to_string(static_cast<int>(c.change));
        bv::test::removeTree(root);
        const auto data = contents(150'000, 'k');
        writeFile(root + "/a/first.jpg", data);
        writeFile(root + "/b/keeper.jpg", data);
        writeFile(root + "/c/third.jpg", data);

        CancellationFlag flag;
        DuplicateScanProgress progress;
        const auto groups = DuplicateScanner(effectiveDuplicateMinimum(0), flag, progress).run({root});
        ASSERT_EQ(groups.size(), 1u);
        DuplicateKeepMap keep = initialDuplicateKeep(groups);
        keep[groups[0].id] = root + "/b/keeper.jpg"; // the keeper in the middle
        const auto plan = buildDuplicatePlan(groups, keep, {root}, home);
        ASSERT_EQ(plan.entries.size(), 2u);

        const std::string keeper = root + "/b/keeper.jpg";
        switch (c.change) {
        case Change::none: break;
        case Change::keeperRewritten: writeFile(keeper, contents(150'001, 'z')); break;
        case Change::keeperTouched: shiftModified(keeper, 30); break;
        case Change::keeperGone: ::unlink(keeper.c_str()); break;
        case Change::keeperSwappedForLink:
            ::unlink(keeper.c_str());
            ASSERT_EQ(::symlink((root + "/a/first.jpg").c_str(), keeper.c_str()), 0);
            break;
        case Change::copyRewritten:
            writeFile(root + "/a/first.jpg", contents(150'000, 'q'));
            shiftModified(root + "/a/first.jpg", 30);
            break;
        }

        const auto result = Cleaner().applyList(plan.entries, home);
        EXPECT_EQ(static_cast<int>(result.logs.size()), c.copiesTrashed) << static_cast<int>(c.change);
        EXPECT_EQ(static_cast<int>(result.failures.size()), 2 - c.copiesTrashed);
        for (const auto& line : result.failures)
            EXPECT_NE(line.find("changed since the preview"), std::string::npos) << line;
        const int left = exists(root + "/a/first.jpg") + exists(root + "/c/third.jpg");
        EXPECT_EQ(left, 2 - c.copiesTrashed) << static_cast<int>(c.change);
        if (c.change != Change::keeperGone) {
            EXPECT_TRUE(exists(keeper)) << "the keeper is never touched";
        }
        if (c.change == Change::none) {
            // Into the Trash, never removed: each copy sits there under its own name.
            const std::string trash = XdgPaths::dataHome() + "/Trash/files/";
            EXPECT_TRUE(exists(trash + "first.jpg") && exists(trash + "third.jpg"));
        }
    }
}
