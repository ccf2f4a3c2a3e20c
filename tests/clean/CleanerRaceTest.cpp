// A race harness: while the cleaner works through planned entries, another thread keeps
// swapping what it is about to touch. Nothing in the decoy folder (outside the allowed
// root) may ever be moved or removed, and the Trash must never hold an info file without
// its item. A naive check-then-rename runs under the same attack to show the harness bites.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "CleanerTestSupport.h"
#include "clean/Cleaner.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"
#include "support/SwapAttacker.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

const char* attackName(Attack a) {
    switch (a) {
    case Attack::swapParentForLink: return "parent -> link to decoy";
    case Attack::swapItemForLink: return "item -> link to decoy";
    case Attack::swapItemForOtherFile: return "item -> other file";
    }
    return "?";
}

int attemptsWanted() {
    if (const char* v = std::getenv("BV_RACE_ATTEMPTS")) return std::max(1, std::atoi(v));
    return 1000; // BV_RACE_ATTEMPTS=10000 for the long search
}

struct Counts {
    int attempts = 0;
    int cleaned = 0;
    int link = 0;
    int stale = 0;
    int missing = 0;
    int refused = 0;
    int other = 0;
    int decoyDisturbed = 0;
    int orphanInfo = 0;
    int strangersInTrash = 0; // another item landed and could not go back (it keeps its record)
    int itemsWithoutInfo = 0;
    int attackerSwaps = 0;
    int calm = 0;        // attempts run with the attacker held off
    int calmCleaned = 0; // of those, the ones that cleaned (all of them must)
};

// The decoy: a folder outside the root holding an "item" folder with a file, the same
// names a planned entry has, so a path that is followed lands on it.
struct Decoy {
    std::string dir;
    ino_t itemInode = 0;
    explicit Decoy(const std::string& outside) : dir(outside + "/decoy") { restore(); }
    [[nodiscard]] bool intact() const {
        struct stat st{};
        if (::lstat((dir + "/item").c_str(), &st) != 0 || st.st_ino != itemInode) return false;
        return readWholeFile(dir + "/item/data").value_or("") == "decoy";
    }
    void restore() {
        removeTree(dir);
        makeDir(dir + "/item");
        writeFile(dir + "/item/data", "decoy");
        struct stat st{};
        ::lstat((dir + "/item").c_str(), &st);
        itemInode = st.st_ino;
    }
};

// The harness's own home on a tmpfs when we may mount one: the Trash syncs every record and
// move, and on a real disk those syncs, not the code under attack, would set the pace. The
// data home (the Trash) moves there too for the length of the run.
struct RaceHome {
    std::string base;
    std::string home;
    std::string cacheDir;
    std::string outside;
    std::string oldDataHome;
    bool mounted = false;
    RaceHome() {
        base = TestEnvironment::freshFolder("race");
        mounted = ::geteuid() == 0 && ::mount("none", base.c_str(), "tmpfs", 0, "size=256m") == 0;
        home = base + "/home";
        cacheDir = home + "/.cache/tool-cache";
        outside = base + "/outside";
        makeDir(cacheDir);
        makeDir(outside);
        makeDir(home + "/.local/share");
        oldDataHome = XdgPaths::dataHome();
        ::setenv("XDG_DATA_HOME", (home + "/.local/share").c_str(), 1);
    }
    ~RaceHome() {
        ::setenv("XDG_DATA_HOME", oldDataHome.c_str(), 1);
        if (mounted) ::umount2(base.c_str(), MNT_DETACH);
    }
};

// Checks the Trash (every info file has its item, every item is genuine or a stranger
// with its record) and empties it so names stay short.
void auditAndEmptyTrash(Counts& c) {
    const std::string trash = XdgPaths::dataHome() + "/Trash";
    for (const auto& info : trashInfoNames()) {
        const std::string name = info.substr(0, info.size() - 10);
        struct stat st{};
        if (::lstat((trash + "/files/" + name).c_str(), &st) != 0) ++c.orphanInfo;
    }
    for (const auto& name : trashFileNames()) {
        const std::string p = trash + "/files/" + name;
        struct stat st{};
        if (::lstat((trash + "/info/" + name + ".trashinfo").c_str(), &st) != 0) ++c.itemsWithoutInfo;
        const auto genuine = readWholeFile(p + "/data");
        if (!genuine || *genuine != "genuine") ++c.strangersInTrash;
    }
    removeTree(trash + "/files");
    removeTree(trash + "/info");
    ::unlink((trash + "/directorysizes").c_str());
}

// Puts the attacked folder back into a plain state after an attempt and makes a fresh item.
void resetParent(const std::string& parent, const std::string& otherFile) {
    struct stat st{};
    if (::lstat(parent.c_str(), &st) == 0 && S_ISLNK(st.st_mode)) ::unlink(parent.c_str());
    if (::lstat(parent.c_str(), &st) != 0) ::rename((parent + ".real").c_str(), parent.c_str());
    for (const auto& n : namesIn(parent)) {
        const std::string p = parent + "/" + n;
        if (::lstat(p.c_str(), &st) == 0 && S_ISLNK(st.st_mode)) ::unlink(p.c_str());
        else removeTree(p);
    }
    makeDir(parent + "/item");
    writeFile(parent + "/item/data", "genuine");
    if (::lstat(otherFile.c_str(), &st) != 0) {
        makeDir(otherFile);
        writeFile(otherFile + "/data", "stranger");
    }
}

Counts runRace(Attack attack, int attempts) {
    RaceHome fx;
    Decoy decoy(fx.outside);
    const std::string parent = fx.cacheDir + "/tool";
    const std::string otherFile = fx.cacheDir + "/other-" + std::to_string(::getpid());
    makeDir(parent);
    Cleaner::Environment env;
    env.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    const Cleaner cleaner(env);
    Attacker attacker(attack, parent, decoy.dir);
    Counts c;
    for (int i = 0; i < attempts; ++i) {
        resetParent(parent, otherFile);
        CleanupEntry e = cacheEntry(parent + "/item", "item");
        e.allowRoot = fx.home + "/.cache";
        if (i % 2 == 1) { // every other entry is removed for good, through the staging folder
            e.origin = CleanupOrigin::folderRule;
            e.parentPath = fx.cacheDir;
            e.disposition = CleanupDisposition::permanent;
        }
        // Every 20th attempt runs without the attack: it must clean, which proves the
        // refusals counted under attack come from the attack and not from a broken cleaner.
        const bool calm = i % 20 == 0;
        if (calm) ++c.calm;
        else attacker.start();
        try {
            (void)cleaner.apply(e, fx.home, {});
            ++c.cleaned;
            if (calm) ++c.calmCleaned;
        } catch (const CleanerError& err) {
            switch (err.kind()) {
            case CleanerError::Kind::symlink: ++c.link; break;
            case CleanerError::Kind::stale: ++c.stale; break;
            case CleanerError::Kind::missing: ++c.missing; break;
            case CleanerError::Kind::refused: ++c.refused; break;
            default: ++c.other; break;
            }
        } catch (const std::exception&) {
            ++c.other;
        }
        attacker.pause();
        ++c.attempts;
        if (!decoy.intact()) {
            ++c.decoyDisturbed;
            decoy.restore();
        }
        if (i % 250 == 249 || i == attempts - 1) auditAndEmptyTrash(c);
    }
    c.attackerSwaps = attacker.swaps();
    resetParent(parent, otherFile);
    return c;
}

// The naive way: look, then rename by path. Used only to show that the attack is real.
int naiveDecoyHits(int attempts) {
    RaceHome fx;
    Decoy decoy(fx.outside);
    const std::string parent = fx.cacheDir + "/tool";
    const std::string otherFile = fx.cacheDir + "/other-naive";
    makeDir(parent);
    const std::string trashFiles = XdgPaths::dataHome() + "/Trash/files";
    makeDir(trashFiles);
    Attacker attacker(Attack::swapParentForLink, parent, decoy.dir);
    int hits = 0;
    for (int i = 0; i < attempts; ++i) {
        resetParent(parent, otherFile);
        attacker.start();
        const std::string path = parent + "/item";
        struct stat st{};
        if (::lstat(path.c_str(), &st) == 0 && !S_ISLNK(st.st_mode))
            ::rename(path.c_str(), (trashFiles + "/naive-" + std::to_string(i)).c_str());
        attacker.pause();
        if (!decoy.intact()) {
            ++hits;
            decoy.restore();
        }
    }
    removeTree(trashFiles);
    resetParent(parent, otherFile);
    return hits;
}

} // namespace

TEST(CleanerRace, SwapsDuringTheRunNeverReachTheDecoy) {
    const int attempts = attemptsWanted();
    for (const Attack attack : {Attack::swapParentForLink, Attack::swapItemForLink, Attack::swapItemForOtherFile}) {
        const Counts c = runRace(attack, attempts);
        std::cout << "[  RACE    ] " << attackName(attack) << ": attempts " << c.attempts << ", attacker swaps "
                  << c.attackerSwaps << ", cleaned " << c.cleaned << ", link " << c.link << ", stale " << c.stale
                  << ", missing " << c.missing << ", refused " << c.refused << ", other errors " << c.other
                  << ", decoy disturbed " << c.decoyDisturbed << ", orphan info files " << c.orphanInfo
                  << ", items in Trash without record " << c.itemsWithoutInfo
                  << ", strangers kept in Trash with their record " << c.strangersInTrash << ", calm attempts cleaned "
                  << c.calmCleaned << "/" << c.calm << "\n";
        EXPECT_EQ(c.attempts, attempts);
        EXPECT_EQ(c.decoyDisturbed, 0) << attackName(attack);
        EXPECT_EQ(c.orphanInfo, 0) << attackName(attack);
        EXPECT_EQ(c.calmCleaned, c.calm) << "an attempt without the attack must clean";
        EXPECT_EQ(c.itemsWithoutInfo, 0) << attackName(attack);
        // A stranger swapped in during the rename goes straight back; only when its name was
        // taken again in that instant does it stay in the Trash, with its record, restorable.
        EXPECT_LT(c.strangersInTrash, c.attempts / 4) << attackName(attack);
    }
    const int naive = naiveDecoyHits(std::min(attempts, 3000));
    std::cout << "[  RACE    ] naive check-then-rename under the parent swap: decoy moved " << naive << " times in "
              << std::min(attempts, 3000) << " attempts\n";
}
