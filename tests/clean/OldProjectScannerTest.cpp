// Old project files against real git repositories with backdated commits and files.
#include <gtest/gtest.h>

#include <set>

#include "CleanerTestSupport.h"
#include "clean/Cleaner.h"
#include "clean/OldProjectPlan.h"
#include "clean/SmartCleanOriginChecks.h"
#include "platform/XdgPaths.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

namespace bv::test {
namespace {

constexpr std::int64_t kDay = 86'400;
const std::int64_t kLongAgo = epochSeconds(Clock::now()) - 100 * kDay;

// A project folder: its files (name -> content, "/" for a folder), a .gitignore when it is a
// repository, committed with a backdated commit, every file backdated too.
void makeProject(const std::string& dir, const std::vector<std::pair<std::string, std::string>>& files,
                 const std::optional<std::string>& gitignore) {
    makeDir(dir);
    for (const auto& [name, content] : files) {
        if (content == "/") makeDir(dir + "/" + name);
        else writeFile(dir + "/" + name, content);
    }
    if (gitignore) {
        writeFile(dir + "/.gitignore", *gitignore);
        const std::string date = "@" + std::to_string(kLongAgo) + " +0000";
        ASSERT_EQ(runCommand("cd " + shellQuote(dir) + " && git init -q && git add .gitignore && GIT_COMMITTER_DATE='" +
                             date + "' GIT_AUTHOR_DATE='" + date +
                             "' git -c user.name=t -c user.email=t@t commit -qm init")
                      .status,
                  0);
    }
    for (const auto& n : namesIn(dir))
        if (n != ".git") setModified(dir + "/" + n, kLongAgo);
}

std::set<std::string> hitNames(const OldProjectScanner::Result& r) {
    std::set<std::string> out;
    for (const auto& h : r.hits) out.insert(h.projectName + "/" + h.artifact);
    return out;
}

TEST(OldProjects, OnlyManifestProvenAndGitIgnoredFoldersAreHits) {
    const std::string home = TestEnvironment::freshFolder("old-projects-home");
    const std::string parent = home + "/Projects-scan";
    makeProject(parent + "/web", {{"package.json", "{}"}, {"node_modules", "/"}, {".next", "/"}, {"src", "/"}},
                "node_modules\n.next\n");
    writeSizedFile(parent + "/web/node_modules/big.js", 200'000);
    makeProject(parent + "/rust-dist", {{"Cargo.toml", ""}, {"dist", "/"}}, "dist\n");
    makeProject(parent + "/rust-unignored", {{"Cargo.toml", ""}, {"target", "/"}}, "");
    makeProject(parent + "/rust", {{"Cargo.toml", ""}, {"target", "/"}}, "target/\n");
    makeProject(parent + "/no-repo", {{"package.json", "{}"}, {"node_modules", "/"}}, std::nullopt);
    makeProject(parent + "/py", {{".venv", "/"}, {"venv", "/"}, {"setup.cfg", ""}}, ".venv\nvenv\n");
    writeFile(parent + "/py/.venv/pyvenv.cfg", "home = /usr/bin\n"); // venv proves itself; "venv" does not
    makeProject(parent + "/linked", {{"package.json", "{}"}}, "node_modules\n");
    ASSERT_EQ(::symlink((parent + "/web/node_modules").c_str(), (parent + "/linked/node_modules").c_str()), 0);
    ASSERT_EQ(::symlink((parent + "/web").c_str(), (parent + "/web-alias").c_str()), 0);
    makeProject(home + "/Library/lib-project", {{"package.json", "{}"}, {"node_modules", "/"}}, "node_modules\n");

    const auto now = Clock::now();
    const auto result = OldProjectScanner::scan({parent, home}, home, {});
    EXPECT_EQ(hitNames(result), (std::set<std::string>{"web/node_modules", "web/.next", "rust/target", "py/.venv"}));
    // One git process per repository that had candidates, not one per folder.
    EXPECT_EQ(result.repositoriesAsked, 4);
    ASSERT_FALSE(result.hits.empty());
    const NodeModuleHit& biggest = result.hits.front();
    EXPECT_EQ(biggest.artifact, "node_modules");
    EXPECT_GE(biggest.bytes, 200'000);
    EXPECT_FALSE(biggest.selected);
    EXPECT_EQ(OldProjectScanner::ageDays(biggest.lastTouched, now), 100);

    // Without git there is no proof, so no hit.
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", "/nonexistent", 1);
    const auto withoutGit = OldProjectScanner::scan({parent}, home, {});
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_TRUE(withoutGit.hits.empty());
}

TEST(OldProjects, AgeThresholdHoldsZeroAsOneAndIgnoresFutureDates) {
    const auto now = Clock::now();
    const auto hitAged = [&](std::optional<std::chrono::seconds> ago) {
        NodeModuleHit h;
        if (ago) h.lastTouched = now - *ago;
        return h;
    };
    using S = std::chrono::seconds;
    EXPECT_FALSE(OldProjectScanner::isOld(hitAged(S(12 * 3600)), 0, now)); // 0 works as 1
    EXPECT_TRUE(OldProjectScanner::isOld(hitAged(S(kDay + 60)), 0, now));
    EXPECT_FALSE(OldProjectScanner::isOld(hitAged(S(29 * kDay + 80'000)), 30, now));
    EXPECT_TRUE(OldProjectScanner::isOld(hitAged(S(30 * kDay)), 30, now));
    EXPECT_FALSE(OldProjectScanner::isOld(hitAged(S(-kDay)), 1, now));
    EXPECT_FALSE(OldProjectScanner::isOld(hitAged(std::nullopt), 1, now));
}

TEST(OldProjects, PlanRefusesWhatBreaksTheRulesAndWordsTheRest) {
    const std::string home = XdgPaths::home();
    const auto now = Clock::now();
    const auto hit = [&](std::string project, std::string artifact, std::string resolved = {}, std::string in = "/P/") {
        NodeModuleHit h;
        h.projectPath = home + in + project;
        h.projectName = project;
        h.artifact = artifact;
        h.path = h.projectPath + "/" + artifact;
        h.resolvedPath = resolved.empty() ? h.path : resolved;
        h.lastTouched = now - std::chrono::seconds(45 * kDay + 5);
        h.selected = project != "unselected";
        h.bytes = 7;
        return h;
    };
    const std::vector<NodeModuleHit> hits{
        hit("good", "node_modules"), hit("renamed", "src"), hit("elsewhere", "target", "/tmp/other"),
        hit("secret", "dist", {}, "/.ssh/"), hit("unselected", "build")};
    const auto plan = OldProjectPlan::build(hits, OldProjectPlan::Mode::selected, {30, true}, home, now);
    EXPECT_EQ(plan.refusals, (std::vector<std::string>{"renamed is not an old project folder.",
                                                        "elsewhere is a link pointing elsewhere, so it was skipped.",
                                                        "secret sits in a protected folder and was skipped."}));
    ASSERT_EQ(plan.entries.size(), 1u);
    const CleanupEntry& e = plan.entries[0];
    EXPECT_EQ(e.note, "Untouched for 45 days. Dependencies (node_modules) in a project you have not opened lately. "
                      "This removes them for good.");
    EXPECT_EQ(e.disposition, CleanupDisposition::permanent);
    EXPECT_EQ(e.symbolName, "trash.slash");
    EXPECT_EQ(e.group, "Old project files");
    EXPECT_EQ(e.parentPath, hits[0].projectPath);
    // Estimates take every old hit, selected or not, and refuse nothing young.
    auto young = hit("young", "build");
    young.lastTouched = now;
    const auto all = OldProjectPlan::build({hits[0], hits[4], young}, OldProjectPlan::Mode::allOld, {30, false}, home, now);
    ASSERT_EQ(all.entries.size(), 2u);
    EXPECT_EQ(all.entries[1].symbolName, "trash");
}

TEST(OldProjects, TouchedBetweenScanAndCleanIsStaleAndStays) {
    const std::string home = XdgPaths::home();
    const std::string parent = home + "/Projects-clean";
    makeProject(parent + "/calm", {{"package.json", "{}"}, {"node_modules", "/"}}, "node_modules\n");
    makeProject(parent + "/busy", {{"package.json", "{}"}, {"node_modules", "/"}}, "node_modules\n");
    auto scan = OldProjectScanner::scan({parent}, home, {});
    ASSERT_EQ(scan.hits.size(), 2u);
    for (auto& h : scan.hits) h.selected = true;
    const auto plan = OldProjectPlan::build(scan.hits, OldProjectPlan::Mode::selected, {}, home, Clock::now());
    ASSERT_EQ(plan.entries.size(), 2u);

    writeFile(parent + "/busy/package.json", R"({"touched": true})");
    Cleaner::Environment env;
    env.originChecks = std::make_shared<SmartCleanOriginChecks>();
    const auto result = Cleaner(env).applyList(plan.entries, home);
    EXPECT_EQ(result.failures, (std::vector<std::string>{
                                   "Couldn\u2019t clean busy. It changed since the preview, so it was left alone."}));
    EXPECT_FALSE(exists(parent + "/calm/node_modules"));
    EXPECT_TRUE(exists(parent + "/busy/node_modules"));
}

} // namespace
} // namespace bv::test
