#include <gtest/gtest.h>

#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "CleanerTestSupport.h"
#include "support/ShellAndMounts.h"
#include "clean/Cleaner.h"
#include "foundation/FileIO.h"
#include "platform/Trash.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

const TimePoint kNow = fromEpochSeconds(1795000000);

Cleaner::Environment quietEnvironment() {
    Cleaner::Environment env;
    env.now = [] { return kNow; };
    env.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    return env;
}

std::string errorOf(const Cleaner& cleaner, const CleanupEntry& entry, const std::string& home) {
    try {
        (void)cleaner.apply(entry, home, {});
    } catch (const CleanerError& e) {
        return e.text();
    } catch (const std::exception& e) {
        return std::string("other: ") + e.what();
    }
    return "cleaned";
}

const std::string kMissing = "It is already gone.";
const std::string kLink = "It is a link pointing outside the cache, so it was left alone.";
const std::string kRefused = "That path is protected.";
const std::string kStale = "It changed since the preview, so it was left alone.";

} // namespace

// Each row builds one situation on disk and names the error the cleaner must give; the
// item must still be where it was afterwards (unless it never existed).
TEST(Cleaner, RefusesWhatItMustNotTouch) {
    CleanerFixture fx;
    const Cleaner cleaner(quietEnvironment());
    struct Row {
        const char* label;
        std::function<CleanupEntry()> make;
        std::string expected;
    };
    const std::vector<Row> rows = {
        {"vanished", [&] { return cacheEntry(fx.cacheDir + "/gone"); }, kMissing},
        {"path became a link, target inside the root",
         [&] {
             makeDir(fx.cacheDir + "/real");
             ::symlink("real", (fx.cacheDir + "/linked").c_str());
             return cacheEntry(fx.cacheDir + "/linked");
         },
         kLink},
        {"path became a link to outside",
         [&] {
             ::symlink(fx.outside.c_str(), (fx.cacheDir + "/out-link").c_str());
             return cacheEntry(fx.cacheDir + "/out-link");
         },
         kLink},
        {"a folder on the way is a link out of the root",
         [&] {
             makeDir(fx.outside + "/victim");
             ::symlink(fx.outside.c_str(), (fx.cacheDir + "/via").c_str());
             return cacheEntry(fx.cacheDir + "/via/victim");
         },
         kRefused},
        {"no catalogue row admits it",
         [&] {
             makeDir(fx.home + "/Documents/thesis");
             auto e = cacheEntry(fx.home + "/Documents/thesis");
             e.allowRoot = fx.home + "/Documents";
             return e;
         },
         kRefused},
        {"a .git component",
         [&] {
             makeDir(fx.cacheDir + "/.git/objects");
             return cacheEntry(fx.cacheDir + "/.git/objects");
         },
         kRefused},
        {"an empty root means the path itself",
         [&] {
             makeDir(fx.cacheDir + "/own-root");
             auto e = cacheEntry(fx.cacheDir + "/own-root/..");
             e.allowRoot = "";
             return e;
         },
         "cleaned"},
        {"duplicate asked to remove for good",
         [&] {
             writeFile(fx.downloadsDir + "/perm.jpg", "x");
             auto e = duplicateEntry(fx.downloadsDir + "/perm.jpg", fx.downloadsDir);
             e.disposition = CleanupDisposition::permanent;
             return e;
         },
         kRefused},
        {"duplicate inside ~/.ssh",
         [&] {
             writeFile(fx.home + "/.ssh/id_copy", "x");
             return duplicateEntry(fx.home + "/.ssh/id_copy", fx.home + "/.ssh");
         },
         kRefused},
        {"old project files without their feature's checks",
         [&] {
             makeDir(fx.cacheDir + "/node_modules");
             auto e = cacheEntry(fx.cacheDir + "/node_modules");
             e.origin = CleanupOrigin::nodeModules;
             return e;
         },
         kRefused},
        {"Build Watch without its feature's checks",
         [&] {
             makeDir(fx.cacheDir + "/proj/target");
             auto e = cacheEntry(fx.cacheDir + "/proj/target");
             e.origin = CleanupOrigin::buildWatch;
             e.allowRoot = fx.cacheDir + "/proj";
             e.parentPath = fx.cacheDir + "/proj";
             return e;
         },
         kRefused},
        {"folder rule without its folder",
         [&] {
             writeFile(fx.cacheDir + "/rule-item", "x");
             auto e = cacheEntry(fx.cacheDir + "/rule-item");
             e.origin = CleanupOrigin::folderRule;
             return e;
         },
         kRefused},
        {"unavailable simulators: no tool here",
         [&] {
             makeDir(fx.home + "/Library/Developer/CoreSimulator/Devices");
             auto e = cacheEntry(fx.home + "/Library/Developer/CoreSimulator/Devices");
             e.id = "sim-unavailable";
             e.allowRoot = e.path;
             return e;
         },
         "Xcode’s simulator tool couldn’t remove them. Try again with Xcode closed."},
    };
    for (const auto& row : rows) {
        const CleanupEntry e = row.make();
        const bool existed = exists(e.path);
        const auto before = trashInfoNames().size();
        EXPECT_EQ(errorOf(cleaner, e, fx.home), row.expected) << row.label;
        if (row.expected != "cleaned") {
            EXPECT_EQ(exists(e.path), existed) << row.label;
            EXPECT_EQ(trashInfoNames().size(), before) << row.label;
        }
    }
    EXPECT_TRUE(exists(fx.outside + "/victim"));
}

TEST(Cleaner, TrashesAndWritesTheLogEntry) {
    CleanerFixture fx;
    makeDir(fx.cacheDir + "/tool cache");
    writeSizedFile(fx.cacheDir + "/tool cache/blob", 5000);
    auto e = cacheEntry(fx.cacheDir + "/tool cache", "Tool caches");
    e.bytes = 1'500'000;
    const Cleaner cleaner(quietEnvironment());
    const auto log = cleaner.apply(e, fx.home, {});
    EXPECT_FALSE(exists(e.path));
    EXPECT_EQ(log.title, "Trashed Tool caches · 1.5 MB");
    EXPECT_EQ(log.subtitle, "~/.cache/" + splitPath(fx.cacheDir).name + "/tool cache · 1.5 MB · Comes back on its own.");
    EXPECT_EQ(log.symbolName, "trash");
    EXPECT_EQ(log.bytesReclaimed, 1'500'000);
    EXPECT_EQ(log.sourcePath, e.path);
    EXPECT_FALSE(log.destinationPath);
    EXPECT_EQ(log.date, kNow);
    // The Trash knows where it came from.
    const auto info = readWholeFile(XdgPaths::dataHome() + "/Trash/info/tool cache.trashinfo");
    ASSERT_TRUE(info);
    EXPECT_NE(info->find("Path=" + Trash::percentEncode(e.path) + "\n"), std::string::npos);

    e.bytes = 0;
    makeDir(e.path);
    EXPECT_EQ(cleaner.apply(e, fx.home, {}).title, "Trashed Tool caches · 0 GB");
}

TEST(Cleaner, DuplicateRecheckComparesCopyAndKeeper) {
    CleanerFixture fx;
    const Cleaner cleaner(quietEnvironment());
    const std::int64_t planned = 1790000000;
    struct Row {
        const char* label;
        std::function<void(const std::string& copy, const std::string& keeper)> change;
        std::string expected;
    };
    const std::vector<Row> rows = {
        {"unchanged", [](auto&, auto&) {}, "cleaned"},
        {"copy grew", [](auto& copy, auto&) { writeFile(copy, "photo bytes, longer"); setModified(copy, planned); }, kStale},
        {"copy touched a second later is the same date", [](auto& copy, auto&) { setModified(copy, planned + 1); }, "cleaned"},
        {"copy touched two seconds later", [](auto& copy, auto&) { setModified(copy, planned + 2); }, kStale},
        {"keeper gone", [](auto&, auto& keeper) { ::unlink(keeper.c_str()); }, kStale},
        {"keeper is now a link", [](auto& copy, auto& keeper) { ::unlink(keeper.c_str()); ::symlink(copy.c_str(), keeper.c_str()); }, kStale},
        {"keeper edited", [](auto&, auto& keeper) { setModified(keeper, planned + 30); }, kStale},
        {"keeper is the copy itself", [](auto& copy, auto& keeper) { ::unlink(keeper.c_str()); ::link(copy.c_str(), keeper.c_str()); }, kStale},
    };
    int n = 0;
    for (const auto& row : rows) {
        const std::string dir = fx.downloadsDir + "/set" + std::to_string(++n);
        const std::string copy = dir + "/photo copy.jpg";
        const std::string keeper = dir + "/photo.jpg";
        writeFile(copy, "photo bytes");
        writeFile(keeper, "photo bytes");
        setModified(copy, planned);
        setModified(keeper, planned);
        auto e = duplicateEntry(copy, fx.downloadsDir);
        e.recheck = RecheckCriteria{};
        e.recheck->touchedAtPlan = fromEpochSeconds(planned);
        e.recheck->expectedBytes = 11;
        e.recheck->keeperPath = keeper;
        e.recheck->keeperBytes = 11;
        e.recheck->keeperModified = fromEpochSeconds(planned);
        row.change(copy, keeper);
        EXPECT_EQ(errorOf(cleaner, e, fx.home), row.expected) << row.label;
        EXPECT_EQ(exists(copy), row.expected != "cleaned") << row.label;
    }
}

// A folder replaced by another of the same name: the date decides, to the second.
TEST(Cleaner, FolderRuleReplacementIsJudgedByItsDate) {
    CleanerFixture fx;
    const Cleaner cleaner(quietEnvironment());
    const std::string ruleFolder = fx.cacheDir + "/exports";
    for (const auto& [offset, expected] : std::vector<std::pair<int, std::string>>{{0, "cleaned"}, {1, "cleaned"}, {120, kStale}}) {
        const std::string item = ruleFolder + "/render-" + std::to_string(offset);
        makeDir(item);
        setModified(item, 1790000000);
        CleanupEntry e = cacheEntry(item, "render");
        e.origin = CleanupOrigin::folderRule;
        e.parentPath = ruleFolder;
        e.allowRoot = ruleFolder;
        e.recheck = RecheckCriteria{};
        e.recheck->touchedAtPlan = fromEpochSeconds(1790000000);
        // Replaced by a new folder of the same name.
        removeTree(item);
        makeDir(item);
        setModified(item, 1790000000 + offset);
        EXPECT_EQ(errorOf(cleaner, e, fx.home), expected) << offset;
    }
}

TEST(Cleaner, InUseByLockFileOrRunningOwner) {
    CleanerFixture fx;
    for (const char* lock : {"LOCK.lock", "agent.sock", "daemon.pid"}) {
        const std::string dir = fx.cacheDir + "/busy-" + std::string(lock);
        makeDir(dir);
        writeFile(dir + "/" + lock, "");
        EXPECT_EQ(errorOf(Cleaner(quietEnvironment()), cacheEntry(dir), fx.home),
                  "It is in use right now (a lock file is present).")
            << lock;
        EXPECT_TRUE(exists(dir));
    }
    EXPECT_TRUE(Cleaner::hasLockFile({"a", "x.lock"}));
    EXPECT_FALSE(Cleaner::hasLockFile({"lock", "x.locked", "pid", ".sockets"}));

    // A real process whose command name is the owner's: a copy of sleep named after it.
    const std::string bin = TestEnvironment::freshFolder("bin") + "/fakeeditor";
    ASSERT_EQ(::system(("cp /bin/sleep " + bin).c_str()), 0);
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::execl(bin.c_str(), "fakeeditor", "30", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    Cleaner::Environment env = quietEnvironment();
    env.runningProcesses = [] { return RunningApps::list(); };
    const Cleaner live(env);
    makeDir(fx.cacheDir + "/editor-data");
    auto e = cacheEntry(fx.cacheDir + "/editor-data");
    e.ownerNames = {"FakeEditor"};
    EXPECT_EQ(errorOf(live, e, fx.home), "FakeEditor is running. Quit it first.");
    e.ownerNames = {};
    e.ownerBundleIDs = {"org.example.FakeEditor"};
    EXPECT_EQ(errorOf(live, e, fx.home), "FakeEditor is running. Quit it first.") << "matched by the ID’s last part";
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
    EXPECT_EQ(errorOf(live, e, fx.home), "cleaned");
}

TEST(Cleaner, DesktopIdsFromProcessUnits) {
    const auto ids = RunningApps::desktopIDsOfUnit("app-gnome-org.gnome.Nautilus-4182.scope");
    EXPECT_NE(std::find(ids.begin(), ids.end(), "org.gnome.Nautilus"), ids.end());
    const auto kde = RunningApps::desktopIDsOfUnit("app-org.kde.dolphin@0a1b2c.service");
    EXPECT_NE(std::find(kde.begin(), kde.end(), "org.kde.dolphin"), kde.end());
    const auto escaped = RunningApps::desktopIDsOfUnit("app-flatpak-com.example.my\\x2dapp-99.scope");
    EXPECT_NE(std::find(escaped.begin(), escaped.end(), "com.example.my-app"), escaped.end());
    EXPECT_TRUE(RunningApps::desktopIDsOfUnit("session-2.scope").empty());
    const std::vector<RunningProcess> procs = {{10, "nautilus", "nautilus", {"org.gnome.Nautilus"}}};
    EXPECT_EQ(RunningApps::runningOwner(procs, {"org.gnome.Nautilus.desktop"}, {"Files"}), "Files");
    EXPECT_EQ(RunningApps::runningOwner(procs, {"org.gnome.Maps"}, {"Maps"}), std::nullopt);
}

// The npm row: the package tool when it works, else the Trash with the ordinary title.
TEST(Cleaner, PackageToolAndItsTrashFallback) {
    CleanerFixture fx;
    const std::string cache = fx.cacheDir + "/_cacache";
    auto e = cacheEntry(cache, "Package downloads cache");
    e.id = "npm";
    e.bytes = 2'000'000;

    // PATH without npm: the real runner can't start it.
    const std::string oldPath = std::getenv("PATH") ? std::getenv("PATH") : "";
    const std::string emptyBin = TestEnvironment::freshFolder("empty-bin");
    Cleaner::Environment env = quietEnvironment();
    makeDir(cache);
    ::setenv("PATH", emptyBin.c_str(), 1);
    const auto fallback = Cleaner(env).apply(e, fx.home, {});
    ::setenv("PATH", oldPath.c_str(), 1);
    EXPECT_EQ(fallback.title, "Trashed Package downloads cache · 2 MB");
    EXPECT_EQ(fallback.symbolName, "trash");
    EXPECT_FALSE(exists(cache));

    // A stand-in npm on PATH that succeeds (the real one is not installed here).
    const std::string fakeBin = TestEnvironment::freshFolder("fake-npm");
    writeFile(fakeBin + "/npm", "#!/bin/sh\n[ \"$1 $2 $3\" = \"cache clean --force\" ] && exit 0\nexit 3\n");
    ::chmod((fakeBin + "/npm").c_str(), 0755);
    makeDir(cache);
    ::setenv("PATH", (fakeBin + ":" + oldPath).c_str(), 1);
    const auto cleared = Cleaner(env).apply(e, fx.home, {});
    ::setenv("PATH", oldPath.c_str(), 1);
    EXPECT_EQ(cleared.title, "Cleared package downloads · 2 MB");
    EXPECT_EQ(cleared.symbolName, "terminal");
    EXPECT_TRUE(exists(cache)) << "the tool did the work, nothing was moved";

    // A failing tool falls back too; a failing fallback is an error, never a deletion.
    env.runPackageTool = [] { return std::optional<int>(1); };
    ::rmdir(cache.c_str());
    EXPECT_EQ(errorOf(Cleaner(env), e, fx.home), kMissing);
}

// Removal for good goes through a staging folder and never follows a link inside the tree.
TEST(Cleaner, PermanentRemovalStaysInsideTheItem) {
    CleanerFixture fx;
    const std::string ruleFolder = fx.cacheDir + "/renders";
    const std::string item = ruleFolder + "/old render";
    makeDir(item + "/frames/deeper");
    writeFile(item + "/frames/deeper/f1", "frame");
    writeFile(fx.outside + "/precious.txt", "keep");
    ::symlink(fx.outside.c_str(), (item + "/frames/link-to-outside").c_str());
    ::symlink((fx.outside + "/precious.txt").c_str(), (item + "/file-link").c_str());
    CleanupEntry e = cacheEntry(item, "old render");
    e.origin = CleanupOrigin::folderRule;
    e.parentPath = ruleFolder;
    e.allowRoot = ruleFolder;
    e.disposition = CleanupDisposition::permanent;
    e.symbolName = "trash.slash";
    const auto trashBefore = trashInfoNames();
    const auto log = Cleaner(quietEnvironment()).apply(e, fx.home, {});
    EXPECT_EQ(log.title, "Removed old render · 4 KB");
    EXPECT_FALSE(exists(item));
    EXPECT_EQ(readWholeFile(fx.outside + "/precious.txt").value_or(""), "keep");
    EXPECT_EQ(trashInfoNames(), trashBefore);
    EXPECT_EQ(treeSnapshot(ruleFolder), std::vector<std::string>{}) << "no staging folder left behind";

    // A mount point inside the tree is never descended into: the removal fails and what is
    // left comes back under its own name.
    if (::geteuid() == 0) {
        makeDir(item + "/mounted");
        writeFile(item + "/loose", "x");
        if (::mount("none", (item + "/mounted").c_str(), "tmpfs", 0, nullptr) == 0) {
            writeFile(item + "/mounted/on-other-fs", "safe");
            EXPECT_NE(errorOf(Cleaner(quietEnvironment()), e, fx.home).find("other: "), std::string::npos);
            EXPECT_EQ(readWholeFile(item + "/mounted/on-other-fs").value_or(""), "safe");
            ::umount2((item + "/mounted").c_str(), MNT_DETACH);
        }
    }
}

// The window between check and act, hit exactly: the hook runs after every check passed.
TEST(Cleaner, SwapsAfterTheChecksAreNeverFollowed) {
    CleanerFixture fx;
    makeDir(fx.outside + "/decoy");
    writeFile(fx.outside + "/decoy/item", "decoy");
    const auto decoyBefore = treeSnapshot(fx.outside);
    struct Row {
        const char* label;
        std::function<void(const std::string& parent, const std::string& item)> attack;
        std::string expected;
    };
    const std::vector<Row> rows = {
        {"item swapped for a link to the decoy",
         [&](auto&, auto& item) {
             ::rename(item.c_str(), (item + ".real").c_str());
             ::symlink((fx.outside + "/decoy").c_str(), item.c_str());
         },
         kLink},
        {"parent swapped for a link to the decoy",
         [&](auto& parent, auto&) {
             ::rename(parent.c_str(), (parent + ".real").c_str());
             ::symlink((fx.outside + "/decoy").c_str(), parent.c_str());
         },
         kLink},
        {"item swapped for another file",
         [&](auto&, auto& item) {
             ::rename(item.c_str(), (item + ".real").c_str());
             writeFile(item, "impostor");
         },
         kStale},
        {"item removed", [&](auto&, auto& item) { ::unlink(item.c_str()); }, kMissing},
    };
    int n = 0;
    for (const auto& row : rows) {
        for (const auto disposition : {CleanupDisposition::trash, CleanupDisposition::permanent}) {
            const std::string parent = fx.cacheDir + "/p" + std::to_string(++n);
            const std::string item = parent + "/item";
            writeFile(item, "genuine");
            CleanupEntry e = cacheEntry(item);
            if (disposition == CleanupDisposition::permanent) {
                e.origin = CleanupOrigin::folderRule;
                e.parentPath = fx.cacheDir;
                e.disposition = disposition;
            }
            Cleaner::Environment env = quietEnvironment();
            env.beforeAction = [&](const CleanupEntry&) { row.attack(parent, item); };
            const auto infoBefore = trashInfoNames();
            EXPECT_EQ(errorOf(Cleaner(env), e, fx.home), row.expected) << row.label;
            EXPECT_EQ(treeSnapshot(fx.outside), decoyBefore) << row.label;
            EXPECT_EQ(trashInfoNames(), infoBefore) << row.label;
            if (std::string(row.label) == "item swapped for another file") {
                EXPECT_EQ(readWholeFile(item).value_or(""), "impostor") << "the stranger is back in its place";
            }
        }
    }
}

TEST(Cleaner, ApplyListKeepsGoingAndWordsFailures) {
    CleanerFixture fx;
    makeDir(fx.cacheDir + "/one");
    makeDir(fx.cacheDir + "/three");
    const std::vector<CleanupEntry> entries = {cacheEntry(fx.cacheDir + "/one", "One"),
                                               cacheEntry(fx.cacheDir + "/two", "Two"),
                                               cacheEntry(fx.cacheDir + "/three", "Three")};
    const auto result = Cleaner(quietEnvironment()).applyList(entries, fx.home);
    ASSERT_EQ(result.logs.size(), 2u);
    EXPECT_EQ(result.logs[0].title, "Trashed One · 4 KB");
    EXPECT_EQ(result.logs[1].title, "Trashed Three · 4 KB");
    EXPECT_EQ(result.failures, std::vector<std::string>{"Couldn’t clean Two. It is already gone."});
}

// A Trash move that would cross a mount fails as an error; nothing is copied or deleted.
TEST(Cleaner, CrossDeviceTrashIsAnErrorNotAFallback) {
    if (::geteuid() != 0) GTEST_SKIP() << "bind mounts need root";
    CleanerFixture fx;
    const std::string src = TestEnvironment::freshFolder("bind-src");
    const std::string mnt = fx.cacheDir + "/mounted";
    makeDir(mnt);
    if (::mount(src.c_str(), mnt.c_str(), nullptr, MS_BIND, nullptr) != 0) GTEST_SKIP() << "bind mounts are not allowed";
    writeFile(mnt + "/cached.bin", "bytes");
    const auto infoBefore = trashInfoNames();
    const auto result = Cleaner(quietEnvironment()).applyList({cacheEntry(mnt + "/cached.bin", "Bound")}, fx.home);
    ::umount2(mnt.c_str(), MNT_DETACH);
    EXPECT_TRUE(result.logs.empty());
    ASSERT_EQ(result.failures.size(), 1u);
    EXPECT_NE(result.failures[0].find("Couldn’t clean Bound. "), std::string::npos);
    EXPECT_NE(result.failures[0].find("another drive"), std::string::npos) << result.failures[0];
    EXPECT_EQ(readWholeFile(src + "/cached.bin").value_or(""), "bytes");
    EXPECT_EQ(trashInfoNames(), infoBefore);
}
