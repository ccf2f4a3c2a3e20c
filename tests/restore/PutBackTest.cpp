// Putting back from History against a real Trash, read by an independent client (trash-cli):
// items cleaned by the real Cleaner come back whole, refusals leave everything where it was,
// and a folder swapped for a link during the move is never written through.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

#include "clean/Cleaner.h"
#include "clean/CleanerTestSupport.h"
#include "core/ActionLog.h"
#include "core/LogStatistics.h"
#include "foundation/FileIO.h"
#include "platform/Trash.h"
#include "restore/PutBack.h"
#include "restore/TrashRecord.h"
#include "support/ShellAndMounts.h"
#include "support/SwapAttacker.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

const CalendarContext kCalendar("en_US", "Europe/Berlin");

Cleaner quietCleaner() {
    Cleaner::Environment env;
    env.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    return Cleaner(env);
}

// Cleans `entries` for real and adds them to a log the way a run does.
std::vector<ActionLogEntry> cleanIntoLog(const std::vector<CleanupEntry>& entries, const std::string& home) {
    const auto result = quietCleaner().applyList(entries, home);
    EXPECT_TRUE(result.failures.empty()) << (result.failures.empty() ? "" : result.failures.front());
    std::vector<ActionLogEntry> log;
    BrimvaleSettings settings;
    (void)addLogEntries(log, settings, result.logs, Clock::now(), kCalendar);
    return log;
}

std::string trashList() { return haveCommand("trash-list") ? runCommand("trash-list").output : std::string(); }

void makeTree(const std::string& path) {
    makeDir(path + "/inner folder");
    writeFile(path + "/inner folder/deep.bin", std::string("\0\1\2 deep", 8));
    writeSizedFile(path + "/big.o", 200000, 'o');
    writeFile(path + "/top.txt", "top");
}

} // namespace

TEST(PutBack, CleanedItemsComeBackWholeAndLeaveTheTrash) {
    if (!haveCommand("trash-list")) GTEST_SKIP() << "trash-cli is not installed";
    const CleanerFixture fx;
    struct Item {
        std::string path;
        CleanupEntry entry;
        std::vector<std::string> before;
    };
    std::vector<Item> items;
    const std::string folder = fx.cacheDir + "/build cache";
    makeTree(folder);
    items.push_back({folder, cacheEntry(folder, "build cache"), {}});
    const std::string awkward = fx.cacheDir + "/100% done \u201cfinal\u201d \t\u65e5\u672c #1.txt";
    writeFile(awkward, "awkward \xff bytes");
    items.push_back({awkward, cacheEntry(awkward, "awkward"), {}});
    LoopFileSystem drive;
    if (drive.mountPoint.empty()) {
        std::cerr << "[  NOTE    ] no loop device here (" << drive.whyNot << "): the other drive's Trash was not checked\n";
    } else {
        const std::string onDrive = drive.mountPoint + "/project/dist";
        makeTree(onDrive);
        CleanupEntry e = duplicateEntry(onDrive, drive.mountPoint);
        items.push_back({onDrive, e, {}});
    }
    std::vector<CleanupEntry> entries;
    for (auto& i : items) {
        i.before = treeSnapshot(i.path);
        entries.push_back(i.entry);
    }

    auto log = cleanIntoLog(entries, fx.home);
    ASSERT_EQ(log.size(), items.size());
    const std::string listed = trashList();
    for (const auto& i : items) {
        EXPECT_FALSE(exists(i.path)) << i.path;
        EXPECT_NE(listed.find(i.path), std::string::npos) << i.path << "\n" << listed;
    }
    for (const auto& [id, state] : PutBack::states(log)) EXPECT_EQ(state, PutBack::State::available);
    EXPECT_TRUE(log.front().runID && log.front().runID == log.back().runID) << "one clean is one run";
    if (!drive.mountPoint.empty()) {
        EXPECT_EQ(log.back().trashedPath->rfind(drive.mountPoint + "/.Trash-", 0), 0u) << "its own drive's Trash";
    }

    const PutBack putBack;
    std::vector<ActionLogEntry> backs;
    for (const auto& e : log) {
        const auto record = TrashRecord::find(e);
        ASSERT_TRUE(record) << e.sourcePath;
        const std::string infoPath = record->trashFolder + "/info/" + record->infoName;
        const auto out = putBack.putBack(e, fx.home);
        EXPECT_EQ(out.log.putBackOf, e.id);
        EXPECT_EQ(out.log.bytesReclaimed, -e.bytesReclaimed);
        EXPECT_EQ(out.log.destinationPath, e.sourcePath);
        EXPECT_FALSE(out.remadeFolder);
        EXPECT_FALSE(exists(infoPath));
        // The folder size cache no longer names what left.
        const auto sizes = readWholeFile(record->trashFolder + "/directorysizes").value_or("");
        EXPECT_EQ(sizes.find(" " + Trash::percentEncode(record->trashName) + "\n"), std::string::npos) << sizes;
        backs.push_back(out.log);
    }
    const std::string after = trashList();
    for (const auto& i : items) {
        EXPECT_EQ(treeSnapshot(i.path), i.before) << i.path;
        EXPECT_EQ(after.find(i.path), std::string::npos) << i.path << "\n" << after;
    }

    // History nets the clean out: nothing freed this week, no tidy day, every entry put back.
    BrimvaleSettings settings;
    settings.lifetimeBytesFreed = 1'000'000;
    (void)addLogEntries(log, settings, backs, Clock::now(), kCalendar);
    EXPECT_EQ(bytesFreed(log, Clock::now() - std::chrono::hours(1)), 0);
    EXPECT_EQ(tidyStreak(log, false, Clock::now(), kCalendar), 0);
    EXPECT_EQ(settings.lifetimeBytesFreed, std::max<std::int64_t>(0, 1'000'000 + bytesFreed(backs, {})));
    for (const auto& e : log) EXPECT_EQ(PutBack::stateOf(e, log), e.putBackOf ? PutBack::State::none : PutBack::State::putBack);
}

TEST(PutBack, RefusalsAndGapsLeaveEverythingWhereItWas) {
    const CleanerFixture fx;
    const PutBack putBack;
    struct Case {
        const char* label;
        std::string relative;                                  // the cleaned file, under the cache folder
        std::function<void(const std::string&, const ActionLogEntry&)> meanwhile; // after the clean
        std::optional<std::string> refusal;                    // the sentence, or nothing for a put-back
        PutBack::State stateAfter;
    };
    const auto emptied = [](const std::string&, const ActionLogEntry& e) {
        ASSERT_EQ(runCommand("trash-empty").status, 0);
        EXPECT_FALSE(exists(*e.trashedPath));
    };
    const std::vector<Case> cases = {
        {"name taken", "notes.txt", [](const std::string& p, const ActionLogEntry&) { writeFile(p, "newer notes"); },
         PutBack::nameTakenText("notes.txt"), PutBack::State::available},
        {"folder taken by a file", "sub/kept.txt",
         [](const std::string& p, const ActionLogEntry&) {
             removeTree(splitPath(p).parent);
             writeFile(splitPath(p).parent, "a file now");
         },
         "\u201c" + splitPath(fx.cacheDir + "/sub/kept.txt").parent + "\u201d is no longer a folder, so it stayed in the Trash.",
         PutBack::State::available},
        {"emptied elsewhere", "gone.txt", emptied, "\u201cgone.txt\u201d is no longer in the Trash.", PutBack::State::notInTrash},
        {"folder gone", "a/b/deep.txt", [&](const std::string&, const ActionLogEntry&) { removeTree(fx.cacheDir + "/a"); },
         std::nullopt, PutBack::State::available},
    };
    for (const auto& c : cases) {
        if (c.stateAfter == PutBack::State::notInTrash && !haveCommand("trash-empty")) continue;
        const std::string path = fx.cacheDir + "/" + c.relative;
        writeFile(path, std::string("cleaned ") + c.label);
        auto log = cleanIntoLog({cacheEntry(path, c.label)}, fx.home);
        ASSERT_EQ(log.size(), 1u) << c.label;
        const ActionLogEntry& e = log.front();
        c.meanwhile(path, e);
        const auto thereBefore = treeSnapshot(path);
        try {
            const auto out = putBack.putBack(e, fx.home);
            EXPECT_FALSE(c.refusal) << c.label << ": put back when it should not";
            EXPECT_EQ(out.remadeFolder, fx.cacheDir + "/a") << c.label;
            EXPECT_EQ(readWholeFile(path).value_or(""), std::string("cleaned ") + c.label);
        } catch (const PutBack::Refusal& r) {
            ASSERT_TRUE(c.refusal) << c.label << ": " << r.what();
            EXPECT_EQ(r.what(), *c.refusal) << c.label;
            EXPECT_EQ(treeSnapshot(path), thereBefore) << c.label << ": what stands there now is untouched";
            EXPECT_EQ(PutBack::stateOf(e, log), c.stateAfter) << c.label;
            if (c.stateAfter == PutBack::State::available) {
                EXPECT_EQ(readWholeFile(*e.trashedPath).value_or(""), std::string("cleaned ") + c.label) << c.label;
            }
        }
    }
}

TEST(PutBackRace, ParentSwappedForALinkIsNeverWrittenThrough) {
    const CleanerFixture fx;
    const int attempts = std::max(20, std::getenv("BV_RACE_ATTEMPTS") ? std::atoi(std::getenv("BV_RACE_ATTEMPTS")) / 5 : 200);
    const std::string parent = fx.cacheDir + "/tool";
    const std::string decoy = fx.outside + "/decoy";
    makeDir(decoy);
    writeFile(decoy + "/marker", "decoy");
    const auto decoyBefore = treeSnapshot(decoy);
    Attacker attacker(Attack::swapParentForLink, parent, decoy);
    const PutBack putBack;
    int back = 0, refused = 0, calmBack = 0, calm = 0, decoyDisturbed = 0, lostRecords = 0;
    for (int i = 0; i < attempts; ++i) {
        removeTree(parent + ".real");
        removeTree(parent);
        makeDir(parent + "/item");
        writeFile(parent + "/item/data", "genuine");
        auto log = cleanIntoLog({cacheEntry(parent + "/item", "item")}, fx.home);
        ASSERT_EQ(log.size(), 1u);
        const auto& e = log.front();
        const std::string info = splitPath(splitPath(*e.trashedPath).parent).parent + "/info/" +
                                 splitPath(*e.trashedPath).name + ".trashinfo";
        const bool isCalm = i % 20 == 0; // proves refusals come from the attack, not a broken put-back
        if (isCalm) ++calm;
        else attacker.start();
        try {
            (void)putBack.putBack(e, fx.home);
            ++back;
            if (isCalm) ++calmBack;
        } catch (const std::exception&) {
            ++refused;
            // Refused: still in the Trash with its record.
            if (!exists(*e.trashedPath) || !exists(info)) ++lostRecords;
        }
        attacker.pause();
        if (treeSnapshot(decoy) != decoyBefore) {
            ++decoyDisturbed;
            removeTree(decoy);
            makeDir(decoy);
            writeFile(decoy + "/marker", "decoy");
        }
        removeTree(*e.trashedPath);
        ::unlink(info.c_str());
    }
    std::cout << "[  RACE    ] put back under parent -> link: attempts " << attempts << ", attacker swaps "
              << attacker.swaps() << ", put back " << back << ", refused " << refused << ", calm put back " << calmBack
              << "/" << calm << ", decoy disturbed " << decoyDisturbed << ", records lost " << lostRecords << "\n";
    EXPECT_EQ(decoyDisturbed, 0);
    EXPECT_EQ(lostRecords, 0);
    EXPECT_EQ(calmBack, calm);
}
