// What a terminal user and a script meet besides the commands' own output: help for each
// command, the exit statuses, the manual page and the shell completions, all from the real
// program.
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

using namespace bv::test;

namespace {

CommandResult brimvale(const std::string& words) {
    return runCommand("QT_QPA_PLATFORM= DISPLAY= WAYLAND_DISPLAY= " + shellQuote(BV_APP_PATH) + " " + words + " 2>&1");
}

// The words the completion offers for a command line (a trailing space starts a new word).
std::set<std::string> words(const std::string& text) {
    std::istringstream in(text);
    std::set<std::string> out;
    for (std::string w; in >> w;) out.insert(w);
    return out;
}

struct CompletionRow {
    const char* line;
    std::set<std::string> offered;
};

// Lines typed in a folder holding the folders "alpha" and "beta" and the file "notes.txt".
const CompletionRow kCompletions[] = {
    {"brimvale ov", {"overview"}},
    {"brimvale --v", {"--version"}},
    {"brimvale help dup", {"duplicates"}},
    {"brimvale rules ", {"check", "preview", "list"}},
    {"brimvale duplicates --", {"--min", "--json"}},
    {"brimvale duplicates --min ", {}},
    {"brimvale autopilot --scope ", {"children", "recursive"}},
    {"brimvale map ", {"alpha", "beta"}},
    {"brimvale overview ", {}},
};

std::string completionFolder() {
    const std::string dir = TestEnvironment::freshFolder("completion");
    makeDir(dir + "/alpha");
    makeDir(dir + "/beta");
    writeFile(dir + "/notes.txt", "not a folder");
    return dir;
}

std::string script(const std::string& shell) {
    const auto result = brimvale("--completion " + shell);
    EXPECT_EQ(result.status, 0) << result.output;
    const std::string file = TestEnvironment::root() + "/completion." + shell;
    writeFile(file, result.output);
    return file;
}

} // namespace

TEST(ProgramHelp, ExitStatusesScriptsCanRelyOn) {
    struct Row {
        std::string words;
        int status;
        const char* says;
    };
    const Row rows[] = {
        {"help", 0, "Exit status:"},
        {"help duplicates", 0, "usage: brimvale duplicates [--min BYTES] [--json] PATH..."},
        {"map --help", 0, "usage: brimvale map [--json] PATH"},
        {"help help", 0, "usage: brimvale help [COMMAND]"},
        {"--version", 0, "brimvale "},
        {"help dupliates", 2, "Did you mean \u201cduplicates\u201d?"},
        {"help map caches", 2, "usage: brimvale help [COMMAND]"},
        {"map", 2, "usage: brimvale map"},
        {"--completion tcsh", 2, "usage: brimvale --completion bash|zsh|fish"},
        {"map " + TestEnvironment::root() + "/no-such-folder", 1, "is not a folder that can be read"},
    };
    for (const auto& r : rows) {
        const auto result = brimvale(r.words);
        EXPECT_EQ(result.status, r.status) << r.words << "\n" << result.output;
        EXPECT_NE(result.output.find(r.says), std::string::npos) << r.words << "\n" << result.output;
    }
}

TEST(ProgramHelp, EveryListedCommandHasItsOwnHelp) {
    std::istringstream listing(brimvale("help").output);
    int commands = 0;
    for (std::string line; std::getline(listing, line);) {
        if (line.rfind("  ", 0) != 0 || line.size() < 3 || line[2] == ' ' || std::isdigit(static_cast<unsigned char>(line[2])))
            continue;
        const std::string name = line.substr(2, line.find(' ', 2) - 2);
        const auto result = brimvale("help " + name);
        EXPECT_EQ(result.status, 0) << name << "\n" << result.output;
        EXPECT_EQ(result.output.rfind("usage: brimvale " + name, 0), 0u) << result.output;
        ++commands;
    }
    EXPECT_GE(commands, 5);
}

TEST(ProgramHelp, ManualPageRendersWithoutWarnings) {
    ASSERT_TRUE(haveCommand("man")) << "scripts/setup.sh installs man-db";
    const std::string page = TestEnvironment::root() + "/brimvale.1";
    ASSERT_EQ(brimvale("--man-page > " + shellQuote(page)).status, 0);
    // The check a Debian package's manual gets: every groff warning is printed.
    const std::string man = "LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 " + shellQuote(page);
    const auto warnings = runCommand(man + " 2>&1 >/dev/null");
    EXPECT_EQ(warnings.status, 0) << warnings.output;
    EXPECT_EQ(warnings.output, "");
    const auto rendered = runCommand(man + " | col -b");
    for (const char* section : {"COMMANDS", "EXIT STATUS", "ENVIRONMENT"})
        EXPECT_NE(rendered.output.find(section), std::string::npos) << section;
}

TEST(ShellCompletion, BashAndFishOfferWhatTheCommandsTake) {
    const std::string dir = completionFolder();
    const std::string bash = script("bash");
    ASSERT_TRUE(haveCommand("fish")) << "scripts/setup.sh installs fish";
    const std::string fish = script("fish");
    for (const auto& row : kCompletions) {
        const std::string line = row.line;
        // bash: the words of the line as the shell splits them, then the completion function.
        const auto b = runCommand("cd " + shellQuote(dir) + " && bash -c " +
                                  shellQuote("source " + shellQuote(bash) +
                                             "; read -ra COMP_WORDS <<<\"$1\"; [[ $1 == *' ' ]] && COMP_WORDS+=('');"
                                             " COMP_CWORD=$(( ${#COMP_WORDS[@]} - 1 )); _brimvale; printf '%s\\n' \"${COMPREPLY[@]}\"") +
                                  " _ " + shellQuote(line));
        EXPECT_EQ(words(b.output), row.offered) << "bash: " << line << "\n" << b.output;
        // fish: its own completion engine, asked for the line; each answer is "word<TAB>description".
        const auto f = runCommand("cd " + shellQuote(dir) + " && fish --no-config -c " +
                                  shellQuote("source " + shellQuote(fish) + "; complete -C" + shellQuote(line)) +
                                  " | cut -f1 | sed 's,/$,,'");
        EXPECT_EQ(words(f.output), row.offered) << "fish: " << line << "\n" << f.output;
    }
}

TEST(ShellCompletion, ZshScriptParses) {
    // zsh completes only inside its line editor, which needs a terminal; its script is checked
    // for syntax here, and its answers were compared with bash's by hand.
    ASSERT_TRUE(haveCommand("zsh")) << "scripts/setup.sh installs zsh";
    const auto result = runCommand("zsh -n " + shellQuote(script("zsh")) + " 2>&1");
    EXPECT_EQ(result.status, 0) << result.output;
}
