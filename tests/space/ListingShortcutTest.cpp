// The walk stops listing a folder after a short getdents64 read on ext4, XFS, Btrfs and tmpfs.
// Each is checked on a real file system of its own kind: folders of 1 to 40,000 entries, short
// and 255-byte names, counted by the walk and by a plain readdir.
#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <mutex>

#include "space/ParallelWalk.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

class CountingVisitor final : public ParallelWalk::Visitor {
public:
    std::int64_t enterFolder(std::int64_t, const std::string& path, int) override {
        std::lock_guard lock(mutex_);
        paths_.push_back(path);
        return static_cast<std::int64_t>(paths_.size() - 1);
    }
    void folderDone(std::int64_t slot, const std::string&, std::int64_t, std::int64_t files, std::int64_t,
                    std::string_view) override {
        std::lock_guard lock(mutex_);
        files_[paths_[static_cast<std::size_t>(slot)]] += files;
    }
    void folderUnreadable(const std::string& path) override { ADD_FAILURE() << "unreadable " << path; }
    std::map<std::string, std::int64_t> files_;
    std::vector<std::string> paths_{""};

private:
    std::mutex mutex_;
};

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
    LoopFileSystem fs(type, type == "xfs" ? 320 : 160);
    if (fs.mountPoint.empty()) GTEST_SKIP() << type << ": " << fs.whyNot;
    std::vector<std::string> folders;
    for (const int count : {1, 100, 10'000, 40'000})
        for (const bool longNames : {false, true}) {
            folders.push_back(fs.mountPoint + "/" + std::to_string(count) + (longNames ? "-long" : "-short"));
            fill(folders.back(), count, longNames);
        }
    CountingVisitor visitor;
    ParallelWalk::Options options;
    options.stayOnFileSystem = true; // the shortcut is only taken when the walk stays on one of these
    options.threads = 2;
    const auto outcome = ParallelWalk::run(fs.mountPoint, 0, visitor, options);
    ASSERT_TRUE(outcome.rootOpened);
    for (const auto& folder : folders) EXPECT_EQ(visitor.files_[folder], readdirCount(folder)) << type << " " << folder;
}

INSTANTIATE_TEST_SUITE_P(FileSystems, ListingShortcut, testing::Values("ext4", "xfs", "btrfs", "tmpfs"),
                         [](const testing::TestParamInfo<const char*>& p) { return std::string(p.param); });
