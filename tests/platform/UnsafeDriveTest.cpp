// Drives that can't rename safely, and a walk that fails half way through a removal. No FUSE,
// NFS or failing disk can run here, so the faults come through the platform layer's seam.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/SafeFileSystem.h"
#include "platform/Trash.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;
namespace fs = std::filesystem;

namespace {

struct FaultScope {
    FaultScope(int renameError, const std::string& statErrorName, int statError) {
        FileSystemFaults f;
        f.renameError = renameError;
        f.statErrorName = statErrorName;
        f.statError = statError;
        setFileSystemFaults(f);
    }
    ~FaultScope() { setFileSystemFaults({}); }
};

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator{}));
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(folder)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

PinnedItem pin(const std::string& path) { return pinItem(path, statNoFollow(path)->identity); }

} // namespace

// RENAME_NOREPLACE answering EINVAL: both ways of removing refuse with the drive's sentence
// and leave the item, the Trash records and the parent folder as they were.
TEST(UnsafeDrive, NoReplaceRenameRefusedLeavesEverything) {
    const std::string base = TestEnvironment::freshFolder("einval");
    writeFile(base + "/report.pdf", "x");
    const std::string info = Trash::homeTrashFolder() + "/info";
    const auto infoBefore = namesIn(info);
    const FaultScope faults(EINVAL, "", 0);
    for (const bool permanent : {false, true}) {
        try {
            if (permanent) {
                auto item = pin(base + "/report.pdf");
                removePinnedItem(item);
            } else {
                (void)Trash::moveToTrash(base + "/report.pdf", Clock::now());
            }
            ADD_FAILURE() << "moved on a drive that can't rename safely";
        } catch (const FileSystemError& e) {
            EXPECT_EQ(e.code(), EINVAL);
            EXPECT_TRUE(std::string(e.what()).ends_with("can\u2019t move items safely, so nothing was moved.")) << e.what();
        }
        EXPECT_EQ(namesIn(base), std::vector<std::string>{"report.pdf"}) << permanent;
    }
    EXPECT_EQ(namesIn(info), infoBefore);
}

// An I/O error deep in the walk: the half-removed folder returns under its own name, the
// staging folder goes, and no descriptor stays open.
TEST(UnsafeDrive, WalkErrorPutsTheItemBack) {
    const std::string base = TestEnvironment::freshFolder("walk-eio");
    makeDir(base + "/cache/a/b");
    writeFile(base + "/cache/a/b/bad.bin", "x");
    writeFile(base + "/cache/a/fine.txt", "y");
    const std::size_t before = openDescriptors();
    {
        auto item = pin(base + "/cache");
        const FaultScope faults(0, "bad.bin", EIO);
        EXPECT_THROW(removePinnedItem(item), FileSystemError);
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(namesIn(base), std::vector<std::string>{"cache"});
    EXPECT_TRUE(fs::exists(base + "/cache/a/b/bad.bin"));
}
