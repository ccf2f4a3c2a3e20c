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
#include "platform/XdgPaths.h"
#include "restore/PutBack.h"
#include "restore/TrashRecord.h"
#include "support/ShellAndMounts.h"
#include "support/SwapAttacker.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

const CalendarContext kCalendar("en_US", "Europe/Berlin");

// Cleans `entries` for real and adds them to a log the way a run does.
std::vector<ActionLogEntry> cleanIntoLog(const std::vector<CleanupEntry>& entries, const std::string& home) {
    Cleaner::Environment env;
    env.runningProcesses = [] { return std::vector<RunningProcess>{}; };
    const auto result = Cleaner(env).applyList(entries, home);
    EXPECT_TRUE(result.failures.empty()) << (result.failures.empty() ? "" : result.failures.front());
    std::vector<ActionLogEntry> log;
    BrimvaleSettings settings;
    (void)addLogEntries(log, settings, result.logs, Clock::now(), kCalendar);
    return log;
}

void makeTree(const std::string& path) {
    makeDir(path + "/inner folder");
    writeFile(path + "/inner folder/deep.bin", std::string("\0\1\2 deep", 8));
    writeSizedFile(path + "/big.o", 200000, 'o');
}

} // namespace

TEST(PutBack, CleanedItemsComeBackWholeAndLeaveTheTrash) {
    if (!haveCommand("trash-list")) GTEST_SKIP() << "trash-cli is not installed";
    const CleanerFixture fx;
    const std::string folder = fx.cacheDir + "/build cache";
    const std::string awkward = fx.cacheDir + "/100% done \u201cfinal\u201d \t\u65e5\u672c #1.txt";
    makeTree(folder);
    writeFile(awkward, "awkward \xff bytes");
    std::vector<CleanupEntry> entries{cacheEntry(folder, "build cache"), cacheEntry(awkward, "awkward")};
    LoopFileSystem drive;
    if (drive.mountPoint.empty()) std::cerr << "[  NOTE    ] no other drive's Trash checked: " << drive.whyNot << "\n";
    else {
        makeTree(drive.mountPoint + "/project/dist");
        entries.push_back(duplicateEntry(drive.mountPoint + "/project/dist", drive.mountPoint));
    }
    std::vector<std::vector<std::string>> before;
    for (const auto& e : entries) before.push_back(treeSnapshot(e.path));

    auto log = cleanIntoLog(entries, fx.home);
    ASSERT_EQ(log.size(), entries.size());
    const std::string listed = runCommand("trash-list").output;
    for (const auto& e : entries) EXPECT_NE(listed.find(e.path), std::string::npos) << e.path << "\n" << listed;
    for (const auto& [id, state] : PutBack::states(log)) EXPECT_EQ(state, PutBack::State::available);
    EXPECT_TRUE(log.front().runID && log.front().runID == log.back().runID) << "one clean is one run";
    if (!drive.mountPoint.empty()) {
        EXPECT_EQ(log.back().trashedPath->rfind(drive.mountPoint + "/.Trash-", 0), 0u) << "its own drive's Trash";
    }

    std::vector<ActionLogEntry> backs;
    for (const auto& e : log) {
        const auto record = TrashRecord::find(e);
        ASSERT_TRUE(record) << e.sourcePath;
        const auto out = PutBack().putBack(e, fx.home);
        EXPECT_EQ(out.log.putBackOf, e.id);
        EXPECT_EQ(out.log.bytesReclaimed, -e.bytesReclaimed);
        EXPECT_FALSE(exists(record->trashFolder + "/info/" + record->infoName));
        // The folder size cache no longer names what left.
        const auto sizes = readWholeFile(record->trashFolder + "/directorysizes").value_or("");
        EXPECT_EQ(sizes.find(" " + Trash::percentEncode(record->trashName) + "\n"), std::string::npos) << sizes;
        backs.push_back(out.log);
    }
    const std::string after = runCommand("trash-list").output;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(treeSnapshot(entries[i].path), before[i]) << entries[i].path;
        EXPECT_EQ(after.find(entries[i].path), std::string::npos) << entries[i].path << "\n" << after;
    }

    // History nets the clean out: nothing freed this week, no tidy day, every entry put back.
    BrimvaleSettings settings;
    settings.lifetimeBytesFreed = 1'000'000;
    (void)addLogEntries(log, settings, backs, Clock::now(), kCalendar);
    EXPECT_EQ(bytesFreed(log, Clock::now() - std::chrono::hours(1)), 0);
    EXPECT_EQ(tidyStreak(log, false, Clock::now(), kCalendar), 0);
    EXPECT_EQ(settings.lifetimeBytesFreed, 1'000'000 + bytesFreed(backs, {}));
    for (const auto& e : log) EXPECT_EQ(PutBack::stateOf(e, log), e.putBackOf ? PutBack::State::none : PutBack::State::putBack);
}

TEST(PutBack, RefusalsAndGapsLeaveEverythingWhereItWas) {
    const CleanerFixture fx;
    struct Case {
        const char* label;
        std::string relative; // the cleaned file, under the cache folder
        std::function<void(const std::string& path)> meanwhile;
        std::optional<std::string> refusal; // the sentence, or nothing when it comes back
        PutBack::State stateAfter;
    };
    const std::vector<Case> cases = {
        {"name taken", "notes.txt", [](const std::string& p) { writeFile(p, "newer notes"); },
         PutBack::nameTakenText("notes.txt"), PutBack::State::available},
        {"emptied elsewhere", "gone.txt", [](const std::string&) { EXPECT_EQ(runCommand("trash-empty").status, 0); },
         "\u201cgone.txt\u201d is no longer in the Trash.", PutBack::State::notInTrash},
        {"folder gone", "a/b/deep.txt", [&](const std::string&) { removeTree(fx.cacheDir + "/a"); }, std::nullopt,
         PutBack::State::available},
    };
    for (const auto& c : cases) {
        if (c.stateAfter == PutBack::State::notInTrash && !haveCommand("trash-empty")) continue;
        const std::string path = fx.cacheDir + "/" + c.relative;
        writeFile(path, std::string("cleaned ") + c.label);
        auto log = cleanIntoLog({cacheEntry(path, c.label)}, fx.home);
        ASSERT_EQ(log.size(), 1u) << c.label;
        const ActionLogEntry& e = log.front();
        c.meanwhile(path);
        const auto thereBefore = treeSnapshot(path);
        try {
            const auto out = PutBack().putBack(e, fx.home);
            EXPECT_FALSE(c.refusal) << c.label << ": put back when it should not";
            EXPECT_EQ(out.remadeFolder, fx.cacheDir + "/a") << c.label;
            EXPECT_EQ(readWholeFile(path).value_or(""), std::string("cleaned ") + c.label);
        } catch (const PutBack::Refusal& r) {
            ASSERT_TRUE(c.refusal) << c.label << ": " << r.what();
            EXPECT_EQ(r.what(), *c.refusal) << c.label;
            EXPECT_EQ(treeSnapshot(path), thereBefore) << c.label << ": what stands there now is untouched";
            EXPECT_EQ(PutBack::stateOf(e, log), c.stateAfter) << c.label;
            EXPECT_EQ(readWholeFile(*e.trashedPath), c.stateAfter == PutBack::State::available
                                                         ? std::optional<std::string>(std::string("cleaned ") + c.label)
                                                         : std::nullopt) << c.label;
        }
    }
}

TEST(PutBackRace, ParentSwappedForALinkIsNeverWrittenThrough) {
    const CleanerFixture fx;
    const char* wanted = std::getenv("BV_RACE_ATTEMPTS");
    const int attempts = wanted ? std::max(20, std::atoi(wanted) / 5) : 200;
    const std::string parent = fx.cacheDir + "/tool";
    const std::string decoy = fx.outside + "/decoy";
    writeFile(decoy + "/marker", "decoy");
    const auto decoyBefore = treeSnapshot(decoy);
    Attacker attacker(Attack::swapParentForLink, parent, decoy);
    int back = 0, calmBack = 0, calm = 0, decoyDisturbed = 0, lostRecords = 0;
    for (int i = 0; i < attempts; ++i) {
        removeTree(parent + ".real");
        removeTree(parent);
        writeFile(parent + "/item/data", "genuine");
        auto log = cleanIntoLog({cacheEntry(parent + "/item", "item")}, fx.home);
        ASSERT_EQ(log.size(), 1u);
        const auto& e = log.front();
        const std::string info = XdgPaths::dataHome() + "/Trash/info/" + splitPath(*e.trashedPath).name + ".trashinfo";
        const bool isCalm = i % 20 == 0; // proves refusals come from the attack, not a broken put-back
        if (isCalm) ++calm;
        else attacker.start();
        try {
            (void)PutBack().putBack(e, fx.home);
            ++back;
            calmBack += isCalm;
        } catch (const std::exception&) {
            lostRecords += !exists(*e.trashedPath) || !exists(info); // refused: still in the Trash with its record
        }
        attacker.pause();
        if (treeSnapshot(decoy) != decoyBefore) {
            ++decoyDisturbed;
            removeTree(decoy);
            writeFile(decoy + "/marker", "decoy");
        }
        removeTree(*e.trashedPath);
        ::unlink(info.c_str());
    }
    std::cout << "[  RACE    ] put back under parent -> link: attempts " << attempts << ", attacker swaps "
              << attacker.swaps() << ", put back " << back << ", calm put back " << calmBack << "/" << calm
              << ", decoy disturbed " << decoyDisturbed << ", records lost " << lostRecords << "\n";
    EXPECT_EQ(decoyDisturbed, 0);
    EXPECT_EQ(lostRecords, 0);
    EXPECT_EQ(calmBack, calm);
}
