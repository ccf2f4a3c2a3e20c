// Kill -9 at random moments while a child process keeps rewriting a state file and a
// manifest: afterwards each file is either absent or one whole version, never torn.
#include <gtest/gtest.h>

#include <dirent.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <random>
#include <thread>

#include "clean/CleanupManifest.h"
#include "foundation/FileIO.h"
#include "foundation/Json.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

int killRounds() {
    if (const char* v = std::getenv("BV_KILL_ROUNDS")) return std::max(1, std::atoi(v));
    return 40; // BV_KILL_ROUNDS=250 for the long search
}

const TimePoint kRunTime = fromEpochSeconds(1795000000);

// Each generation's state file holds a payload and its own length, so a torn file shows.
// Odd rounds begin with the manifest, so a kill can land in either writer however slow the
// disk is.
[[noreturn]] void writerLoop(const std::string& stateFile, const std::string& logsDir, bool manifestFirst) {
    for (std::int64_t generation = manifestFirst ? 1 : 0;; ++generation) {
        const bool writeState = generation % 2 == 0;
        Json state = Json::object();
        state["generation"] = generation;
        state["payload"] = std::string(static_cast<size_t>(40000 + generation % 7 * 9000), static_cast<char>('a' + generation % 26));
        state["payloadLength"] = state["payload"].get<std::string>().size();
        if (writeState) (void)writeFileAtomically(stateFile, encodeJson(state));

        std::vector<ActionLogEntry> logs;
        for (int i = 0; i < 40 + generation % 30; ++i) {
            ActionLogEntry e;
            e.id = Uuid::generate();
            e.date = kRunTime;
            e.title = "Trashed item " + std::to_string(i);
            e.symbolName = "trash";
            e.bytesReclaimed = 1000 + i;
            e.sourcePath = "/home/someone/.cache/item-" + std::to_string(generation) + "-" + std::to_string(i);
            logs.push_back(e);
        }
        // The same moment every time: each write replaces the last one under the same name.
        if (!writeState) (void)CleanupManifest::write("clean", logs, {"Couldn’t clean X. It is already gone."}, kRunTime, logsDir, "dev");
    }
}

} // namespace

TEST(CrashWrites, KilledWritersNeverLeaveATornFile) {
    const std::string dir = TestEnvironment::freshFolder("crash");
    const std::string stateFile = dir + "/settings.json";
    const std::string logsDir = dir + "/Logs";
    const std::string manifest = logsDir + "/" + CleanupManifest::fileName(kRunTime);
    std::mt19937 rng(12345);
    std::uniform_int_distribution<int> delayMicros(200, 40000);
    // Both files exist from the start, so every kill meets a file that a rewrite could tear.
    {
        const pid_t first = ::fork();
        if (first == 0) {
            // One full pass of each writer, then out.
            Json state = Json::object();
            state["payload"] = std::string(1000, 'a');
            state["payloadLength"] = 1000;
            (void)writeFileAtomically(stateFile, encodeJson(state));
            ActionLogEntry e;
            e.id = Uuid::generate();
            e.date = kRunTime;
            e.bytesReclaimed = 1;
            e.sourcePath = "/x";
            (void)CleanupManifest::write("clean", {e}, {"Couldn’t clean X. It is already gone."}, kRunTime, logsDir, "dev");
            ::_exit(0);
        }
        ::waitpid(first, nullptr, 0);
    }
    ASSERT_TRUE(readWholeFile(stateFile) && readWholeFile(manifest));
    int rounds = 0, stateSeen = 0, manifestSeen = 0, torn = 0, leftovers = 0;
    for (int round = 0; round < killRounds(); ++round) {
        const pid_t pid = ::fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) writerLoop(stateFile, logsDir, round % 2 == 1);
        std::this_thread::sleep_for(std::chrono::microseconds(delayMicros(rng)));
        ::kill(pid, SIGKILL);
        int status = 0;
        ::waitpid(pid, &status, 0);
        ++rounds;

        if (const auto text = readWholeFile(stateFile)) {
            ++stateSeen;
            const auto json = parseJson(*text);
            if (!json || !json->contains("payloadLength") ||
                (*json)["payload"].get<std::string>().size() != (*json)["payloadLength"].get<size_t>())
                ++torn;
        }
        if (const auto text = readWholeFile(manifest)) {
            ++manifestSeen;
            const auto json = parseJson(*text);
            bool whole = json && json->contains("lines") && json->contains("totalBytes");
            if (whole) {
                std::int64_t sum = 0;
                for (const auto& line : (*json)["lines"]) sum += line["bytes"].get<std::int64_t>();
                whole = sum == (*json)["totalBytes"].get<std::int64_t>() && (*json)["errors"].size() == 1;
            }
            if (!whole) ++torn;
        }
        // A killed writer may leave its temporary file beside the real one: never the real one.
        for (const auto& folder : {dir, logsDir}) {
            if (DIR* d = ::opendir(folder.c_str())) {
                while (dirent* e = ::readdir(d)) {
                    const std::string n = e->d_name;
                    if (n.find(".tmp-") != std::string::npos) {
                        ++leftovers;
                        ::unlink((folder + "/" + n).c_str());
                    }
                }
                ::closedir(d);
            }
        }
    }
    std::cout << "[  CRASH   ] kills " << rounds << ", state file checked after " << stateSeen << ", manifest checked after "
              << manifestSeen << ", torn files " << torn << ", kills that left a temporary file (caught mid-write) "
              << leftovers << "\n";
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(rounds, killRounds());
    EXPECT_EQ(stateSeen, rounds) << "the state file must never vanish";
    EXPECT_EQ(manifestSeen, rounds) << "the manifest must never vanish";
    EXPECT_GT(leftovers, 0) << "no kill landed inside a write: the test proved nothing";
}
