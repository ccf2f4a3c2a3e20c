// The real program started from a terminal: mistyped commands, and the overview leaving the
// window's "since your last visit" alone.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "foundation/FileIO.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

using namespace bv::test;

namespace {

CommandResult brimvale(const std::string& words) {
    return runCommand("QT_QPA_PLATFORM= DISPLAY= WAYLAND_DISPLAY= " + shellQuote(BV_APP_PATH) + " " + words + " 2>&1");
}

} // namespace

TEST(CommandLine, UnknownWordsSayNearestCommandAndExitTwo) {
    struct Row {
        const char* words;
        const char* suggestion; // nullptr: nothing is close enough to suggest
    };
    const Row rows[] = {{"dupliates", "duplicates"}, {"overveiw --json", "overview"}, {"mapp /tmp", "map"},
                        {"hlep", "help"},            {"frobnicate", nullptr}};
    for (const auto& r : rows) {
        const auto result = brimvale(r.words);
        EXPECT_EQ(result.status, 2) << r.words << "\n" << result.output;
        EXPECT_NE(result.output.find("unknown command"), std::string::npos) << result.output;
        if (r.suggestion)
            EXPECT_NE(result.output.find(std::string("Did you mean \u201c") + r.suggestion + "\u201d?"), std::string::npos)
                << result.output;
        else
            EXPECT_EQ(result.output.find("Did you mean"), std::string::npos) << result.output;
        EXPECT_EQ(result.output.find("Storage"), std::string::npos) << "no overview for a typo";
    }
}

TEST(CommandLine, OverviewDoesNotEndTheWindowsSession) {
    const auto result = brimvale("overview --json");
    ASSERT_EQ(result.status, 0) << result.output;
    for (const auto& e : std::filesystem::recursive_directory_iterator(std::getenv("HOME"))) {
        if (e.path().filename() != "space-history.json") continue;
        const auto text = bv::readWholeFile(e.path().string()).value_or("");
        EXPECT_EQ(text.find("lastQuit"), std::string::npos) << text;
    }
}
