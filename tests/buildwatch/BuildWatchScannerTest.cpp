// The scanner on real project trees with real git repositories in the temporary home.
#include <gtest/gtest.h>

#include <ftw.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "buildwatch/BuildWatchScanner.h"
#include "buildwatch/GitIgnoreCheck.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

namespace bv {
namespace {

using test::makeDir;
using test::writeFile;
using test::writeSizedFile;

void sh(const std::string& command) {
    const auto r = test::runCommand(command);
    ASSERT_EQ(r.status, 0) << command << "\n" << r.output;
}

void gitRepo(const std::string& dir, const std::string& ignore) {
    makeDir(dir);
    if (!ignore.empty()) writeFile(dir + "/.gitignore", ignore);
    sh("git init -q " + test::shellQuote(dir));
}

std::vector<std::string> relativeTargets(const BuildWatchScanner::ProjectScan& scan, const std::string& root) {
    std::vector<std::string> out;
    for (const auto& t : scan.targets) out.push_back(t.path.substr(root.size() + 1) + " @" + t.anchorPath.substr(root.size()));
    std::sort(out.begin(), out.end());
    return out;
}

BuildWatchScanner::ProjectScan scan(const std::string& path, bool measure = false) {
    return BuildWatchScanner::scanProject(path, test::TestEnvironment::root(), std::vector<BuildWatchScanner::DerivedDataFolder>{},
                                          measure);
}

// Allocated bytes of every file below `root`, summed independently of the measure.
std::int64_t allocatedFilesBelow(const std::string& root) {
    static std::int64_t sum;
    sum = 0;
    ::nftw(root.c_str(), [](const char*, const struct stat* st, int type, FTW*) {
        if (type == FTW_F) sum += static_cast<std::int64_t>(st->st_blocks) * 512;
        return 0;
    }, 32, FTW_PHYS);
    return sum;
}

TEST(BuildWatchScanner, GitDecidesInsideARepositoryAndEverythingCountsOutside) {
    const std::string root = test::TestEnvironment::freshFolder("git-decides");
    // Ignored: target/debug is a target, target/release never is.
    gitRepo(root + "/ignored", "/target/\n");
    writeFile(root + "/ignored/Cargo.toml", "[package]\n");
    writeSizedFile(root + "/ignored/target/debug/app", 70000);
    writeSizedFile(root + "/ignored/target/debug/deps/libx.rlib", 130000);
    writeSizedFile(root + "/ignored/target/release/app", 9000);
    makeDir(root + "/ignored/target/release/bundle");
    // Not ignored: nothing at all.
    gitRepo(root + "/tracked", "");
    writeFile(root + "/tracked/Cargo.toml", "[package]\n");
    writeSizedFile(root + "/tracked/target/debug/app", 1000);
    // No repository: every matching folder, the same name once even when two rows name it,
    // a match inside a match once, by the outer.
    writeFile(root + "/plain/pubspec.yaml", "name: x\n");
    writeFile(root + "/plain/build.gradle", "\n");
    writeSizedFile(root + "/plain/build/out.bin", 5000);
    writeFile(root + "/plain/Cargo.toml", "[package]\n");
    writeSizedFile(root + "/plain/target/debug/debug/x", 10);
    // Tauri stands alone and cleans through the Rust rows.
    writeFile(root + "/desk/Cargo.toml", "[package]\n");
    writeFile(root + "/desk/tauri.conf.json", "{}\n");
    makeDir(root + "/desk/target/debug");

    const auto ignored = scan(root + "/ignored", true);
    EXPECT_EQ(relativeTargets(ignored, root), std::vector<std::string>{"ignored/target/debug @/ignored"});
    ASSERT_EQ(ignored.targets.size(), 1u);
    EXPECT_EQ(ignored.targets[0].bytes, allocatedFilesBelow(root + "/ignored/target/debug"));
    EXPECT_GE(ignored.targets[0].bytes, 200000);
    EXPECT_TRUE(ignored.targets[0].newestChange.has_value());

    EXPECT_EQ(scan(root + "/tracked").targets.size(), 0u);
    EXPECT_EQ(scan(root + "/tracked").stacks, std::vector<BuildStack>{BuildStack::rust});

    const auto plain = scan(root + "/plain");
    EXPECT_EQ(relativeTargets(plain, root), (std::vector<std::string>{"plain/build @/plain", "plain/target/debug @/plain"}));
    EXPECT_EQ(plain.stacks, (std::vector<BuildStack>{BuildStack::rust, BuildStack::gradle, BuildStack::flutter}));

    const auto desk = scan(root + "/desk");
    EXPECT_EQ(desk.stacks, std::vector<BuildStack>{BuildStack::tauri});
    ASSERT_EQ(desk.targets.size(), 1u);
    EXPECT_EQ(desk.targets[0].stack, BuildStack::rust);
}

TEST(BuildWatchScanner, WorkspaceMembersFourLevelsDownAreAnchoredEachWithAtMostOneGitProcess) {
    const std::string root = test::TestEnvironment::freshFolder("workspace");
    const std::string ws = root + "/ws";
    gitRepo(ws, "target/\n");
    writeFile(ws + "/Cargo.toml", "[workspace]\n");
    for (const char* member : {"/a/b/c/one", "/a/b/c/two", "/a/b/c/d/too-deep"}) {
        writeFile(ws + member + "/Cargo.toml", "[package]\n");
        makeDir(ws + member + "/target/debug");
    }
    makeDir(ws + "/target/debug");
    makeDir(ws + "/node_modules/dep/target/debug"); // never walked into
    writeFile(ws + "/node_modules/dep/Cargo.toml", "");

    const auto before = GitIgnoreCheck::processesStarted();
    const auto s = scan(ws);
    EXPECT_LE(GitIgnoreCheck::processesStarted() - before, 1); // none when the ignore files are read in process
    EXPECT_EQ(relativeTargets(s, root), (std::vector<std::string>{"ws/a/b/c/one/target/debug @/ws/a/b/c/one",
                                                                   "ws/a/b/c/two/target/debug @/ws/a/b/c/two",
                                                                   "ws/target/debug @/ws"}));
}

TEST(BuildWatchScanner, BlockedOnlyWhenTheSystemRefuses) {
    const std::string root = test::TestEnvironment::freshFolder("blocked");
    writeFile(root + "/closed/package.json", "{}");
    writeFile(root + "/open/package.json", "{}");
    for (const std::string& d : {test::TestEnvironment::root(), root, root + "/open"}) ::chmod(d.c_str(), 0755);
    ::chmod((root + "/closed").c_str(), 0700);
    // Root reads everything: the refusal is only real for an ordinary user.
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    const pid_t pid = ::fork();
    if (pid == 0) {
        char answer[2] = {'x', 'x'};
        if (::setgid(65534) == 0 && ::setuid(65534) == 0) {
            answer[0] = scan(root + "/closed").blocked ? 'y' : 'n';
            answer[1] = scan(root + "/open").blocked ? 'y' : 'n';
        }
        (void)!::write(fds[1], answer, 2);
        ::_exit(0);
    }
    char answer[3] = {};
    ::close(fds[1]);
    ASSERT_EQ(::read(fds[0], answer, 2), 2);
    ::close(fds[0]);
    ::waitpid(pid, nullptr, 0);
    EXPECT_STREQ(answer, "yn");
    EXPECT_FALSE(scan(root + "/vanished").blocked);
}

TEST(BuildWatchScanner, LookSuggestsBigUnwatchedProjectsAndNeverEntersOne) {
    const std::string home = test::TestEnvironment::freshFolder("look-home");
    writeFile(home + "/code/big/package.json", "{}");
    writeSizedFile(home + "/code/big/node_modules/.cache/blob", 300000);
    writeFile(home + "/code/big/sub/Cargo.toml", ""); // inside a project: never its own suggestion
    writeSizedFile(home + "/code/big/sub/target/debug/x", 50000);
    writeFile(home + "/code/group/small/Cargo.toml", "");
    writeSizedFile(home + "/code/group/small/target/debug/x", 4096);
    writeFile(home + "/code/group/watched/Cargo.toml", "");
    writeSizedFile(home + "/code/group/watched/target/debug/x", 90000);

    const auto roots = BuildWatchScanner::searchRoots(home, {home + "/missing"}, true);
    EXPECT_EQ(roots, std::vector<std::string>{home + "/code"});
    const auto look = BuildWatchScanner::lookForProjects(roots, {home + "/code/group/watched"}, home,
                                                         std::chrono::seconds(300), 4000);
    ASSERT_EQ(look.suggestions.size(), 2u);
    EXPECT_EQ(look.suggestions[0].name, "big");
    EXPECT_EQ(look.suggestions[0].targets.size(), 2u);
    EXPECT_EQ(look.suggestions[1].path, home + "/code/group/small");
    EXPECT_TRUE(BuildWatchScanner::lookForProjects(roots, {}, home, std::chrono::seconds(0)).suggestions.empty());
    EXPECT_TRUE(BuildWatchScanner::lookForProjects({}, {}, home).suggestions.empty());
}

} // namespace
} // namespace bv
