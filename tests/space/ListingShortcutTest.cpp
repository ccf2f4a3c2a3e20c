// The walk stops listing a folder after a short getdents64 read on ext4, XFS, Btrfs and tmpfs.
// Each is checked on a real file system of its own kind: folders of 1 to 40,000 entries, short
// and 255-byte names, counted by the walk and by a plain readdir.
#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>

#include "space/DiskMapScanner.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

std::int64_t readdirCount(const std::string& folder) {
    DIR* d = ::opendir(folder.c_str());
    std::int64_t n = 0;
    while (dirent* e = d ? ::readdir(d) : nullptr)
        n += std::strcmp(e->d_name, ".") != 0 && std::strcmp(e->d_name, "..") != 0;
    if (d) ::closedir(d);
    return n;
}

// Every entry is a hard link to one file, so a folder of 40,000 names costs one inode.
void fill(const std::string& folder, int count, bool longNames) {
    makeDir(folder);
    const std::string first = folder + "/seed";
    writeFile(first, "x");
    for (int i = 1; i < count; ++i) {
        std::string name = std::to_string(i);
        if (longNames) name = std::string(255 - name.size(), 'n') + name;
        ASSERT_EQ(::link(first.c_str(), (folder + "/" + name).c_str()), 0) << std::strerror(errno);
    }
}

} // namespace

class ListingShortcut : public testing::TestWithParam<const char*> {};

TEST_P(ListingShortcut, WalkCountsEveryEntryReaddirSees) {
    const std::string type = GetParam();
    LoopFileSystem fs(type, type == "btrfs" ? 640 : 320); // Btrfs keeps two copies of every name
    if (fs.mountPoint.empty()) GTEST_SKIP() << type << ": " << fs.whyNot;
    std::vector<std::string> folders;
    for (const int count : {1, 100, 10'000, 40'000})
        for (const bool longNames : {false, true}) {
            folders.push_back(fs.mountPoint + "/" + std::to_string(count) + (longNames ? "-long" : "-short"));
            fill(folders.back(), count, longNames);
        }
    // The map's walk stays on the root's file system, the only case where the shortcut is taken.
    DiskMapProgress progress;
    const DiskMap map = DiskMapScanner::scan(fs.mountPoint, progress, [] { return false; }, {});
    std::int64_t listed = 0;
    for (const auto& folder : folders) listed += readdirCount(folder);
    EXPECT_EQ(map.fileCount, listed) << type;
    EXPECT_EQ(map.unreadableCount, 0) << type;
}

INSTANTIATE_TEST_SUITE_P(FileSystems, ListingShortcut, testing::Values("ext4", "xfs", "btrfs", "tmpfs"),
                         [](const testing::TestParamInfo<const char*>& p) { return std::string(p.param); });
