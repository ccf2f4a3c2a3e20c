// Due checks end to end: real scans, the real cleaner with Build Watch's checks, the real
// Trash checked with trash-cli, and a real process named cargo.
#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include "buildwatch/BuildWatchCleanerChecks.h"
#include "buildwatch/BuildWatchRun.h"
#include "support/ShellAndMounts.h"
#include "support/TestEnvironment.h"

extern char** environ;

namespace bv {
namespace {

using test::exists;
using test::writeFile;
using test::writeSizedFile;

void ageTree(const std::string& dir) {
    const auto r = test::runCommand("find " + test::shellQuote(dir) + " -exec touch -h -d '2 hours ago' {} +");
    ASSERT_EQ(r.status, 0);
}

BuildWatch watchOf(const std::string& path, std::vector<BuildStack> stacks) {
    BuildWatch w;
    w.id = Uuid::generate();
    w.path = path;
    w.name = path.substr(path.rfind('/') + 1);
    w.stacks = std::move(stacks);
    w.limitBytes = 1000;
    w.removesPermanently = false;
    return w;
}

struct CargoProcess {
    pid_t pid = -1;
    explicit CargoProcess(const std::string& binary) {
        char* argv[] = {const_cast<char*>("cargo"), const_cast<char*>("60"), nullptr};
        if (::posix_spawn(&pid, binary.c_str(), nullptr, nullptr, argv, environ) != 0) pid = -1;
    }
    ~CargoProcess() {
        if (pid > 0) {
            ::kill(pid, SIGTERM);
            ::waitpid(pid, nullptr, 0);
        }
    }
};

TEST(BuildWatchRun, CleansOverLimitWaitsForCargoAndLeavesFreshFoldersAlone) {
    const std::string home = test::TestEnvironment::root();
    const std::string root = test::TestEnvironment::freshFolder("run");
    // "app": over its limit, one old target and one written a moment ago.
    writeFile(root + "/app/package.json", "{}");
    writeSizedFile(root + "/app/node_modules/.cache/big", 200000);
    writeSizedFile(root + "/app/.turbo/cache.bin", 30000);
    ageTree(root + "/app/node_modules");
    // "rusty" is over its limit while cargo runs; "web" has no build tools to wait for.
    writeFile(root + "/rusty/Cargo.toml", "");
    writeSizedFile(root + "/rusty/target/debug/x", 50000);
    ageTree(root + "/rusty/target");
    writeFile(root + "/web/package.json", "{}");
    writeSizedFile(root + "/web/node_modules/.cache/x", 50000);
    ageTree(root + "/web/node_modules");

    BuildWatchState state;
    state.watches = {watchOf(root + "/app", {BuildStack::node}),
                     watchOf(root + "/rusty", {BuildStack::rust}), watchOf(root + "/web", {BuildStack::node}),
                     watchOf(root + "/gone", {BuildStack::rust})};
    const Uuid app = state.watches[0].id, rusty = state.watches[1].id, web = state.watches[2].id, gone = state.watches[3].id;

    const std::string cargo = root + "/bin/cargo";
    test::makeDir(root + "/bin");
    ASSERT_EQ(test::runCommand("cp /bin/sleep " + test::shellQuote(cargo)).status, 0);
    CargoProcess build(cargo);
    ASSERT_GT(build.pid, 0);
    ::usleep(100000);

    BuildWatchRun::Environment env;
    env.home = home;
    env.now = Clock::now();
    const auto result = BuildWatchRun::run(state, env);

    // app: the old target went to the Trash, the fresh one stays with its note.
    EXPECT_FALSE(exists(root + "/app/node_modules/.cache"));
    EXPECT_TRUE(exists(root + "/app/.turbo"));
    const BuildWatch& a = *state.find(app);
    EXPECT_EQ(a.lastNote.value_or(""),
              "app: Turbo cache changed in the last few minutes, so a build may be running. It was left alone.");
    ASSERT_EQ(a.samples.size(), 2u);
    EXPECT_GT(a.totalFreed, 200000 - 1);
    EXPECT_EQ(a.samples[1].bytes, a.samples[0].bytes - a.totalFreed);
    if (test::haveCommand("trash-list")) {
        EXPECT_NE(test::runCommand("trash-list").output.find(root + "/app/node_modules/.cache"), std::string::npos);
    }

    // rusty waits half an hour for cargo; web is cleaned although cargo runs.
    EXPECT_TRUE(exists(root + "/rusty/target/debug"));
    EXPECT_EQ(state.find(rusty)->lastNote.value_or(""), "Waiting for cargo to finish. Checking again in 30 minutes.");
    EXPECT_EQ(*state.find(rusty)->nextCheck, env.now + std::chrono::seconds(1800));
    EXPECT_FALSE(exists(root + "/web/node_modules/.cache"));
    EXPECT_EQ(*state.find(web)->nextCheck, env.now + std::chrono::seconds(43200));

    // gone: paused with its note.
    EXPECT_FALSE(state.find(gone)->isEnabled);
    EXPECT_EQ(state.find(gone)->lastNote.value_or(""), BuildWatchService::kFolderGoneNote);

    std::vector<std::string> titles;
    for (const auto& l : result.logs) titles.push_back(l.title);
    const auto has = [&](const std::string& prefix) {
        return std::any_of(titles.begin(), titles.end(), [&](const std::string& t) { return t.rfind(prefix, 0) == 0; });
    };
    EXPECT_TRUE(has("Build Watch trashed app: Bundler cache \u00b7 "));
    EXPECT_TRUE(has("Build Watch skipped app: 1 folder was left alone. app: Turbo cache changed"));
    EXPECT_TRUE(has("Build Watch skipped gone: its folder moved or is missing. The watch is paused."));
    ASSERT_FALSE(result.notices.empty());
    EXPECT_EQ(result.notices.back().body.rfind("Freed ", 0), 0u);
    EXPECT_NE(result.notices.back().body.find(" of build files from 2 projects."), std::string::npos);
    EXPECT_TRUE(BuildWatchService::dueWatches(state, env.now).empty());
}

TEST(BuildWatchRun, CleanerRefusesWhatNoRowNamesAndFreshTargets) {
    const std::string root = test::TestEnvironment::freshFolder("refuse");
    writeFile(root + "/p/Cargo.toml", "");
    writeSizedFile(root + "/p/target/release/app", 10);
    writeSizedFile(root + "/p/target/debug/app", 10);
    BuildWatch w = watchOf(root + "/p", {BuildStack::rust});
    BuildTarget release{root + "/p/target/release", root + "/p", "Rust debug build", BuildStack::rust, 10, std::nullopt};
    BuildTarget debug{root + "/p/target/debug", root + "/p", "Rust debug build", BuildStack::rust, 10, std::nullopt};
    auto entries = BuildWatchService::buildEntries(w, {release, debug}, Clock::now()).entries;
    Cleaner::Environment ce;
    ce.originChecks = std::make_shared<BuildWatchCleanerChecks>();
    const auto result = Cleaner(ce).applyList(entries, test::TestEnvironment::root());
    EXPECT_TRUE(result.logs.empty());
    ASSERT_EQ(result.failures.size(), 2u); // release: no row; debug: written just now
    EXPECT_TRUE(exists(root + "/p/target/release") && exists(root + "/p/target/debug"));
}

TEST(BuildWatchService, LimitsAlertsSamplesAndSuggestionNotices) {
    using Svc = BuildWatchService;
    struct LimitRow {
        std::int64_t total, limit;
        bool low, over;
    };
    const LimitRow limits[] = {{5, 5, false, true},           {0, 0, false, false},
                               {600000000, 10000000000, true, true}, {450000000, 400000000, true, true},
                               {399999999, 400000000, true, false},  {600000000, 10000000000, false, false}};
    for (const auto& r : limits) EXPECT_EQ(Svc::isOverLimit(r.total, r.limit, r.low), r.over) << r.total << " " << r.limit;
    EXPECT_EQ(Svc::stepLimit(5000000000, 1), 10000000000);
    EXPECT_EQ(Svc::stepLimit(1000000000, -1), 1000000000);

    const TimePoint t0 = Clock::now();
    BuildWatch w = watchOf("/p/x", {BuildStack::node});
    ASSERT_TRUE(Svc::alert(w, 2000, t0));
    EXPECT_FALSE(Svc::alert(w, 2999, t0 + std::chrono::hours(71)));
    EXPECT_TRUE(Svc::alert(w, 3000, t0 + std::chrono::hours(71))); // grew by half
    EXPECT_TRUE(Svc::alert(w, 3000, t0 + std::chrono::hours(71 + 72)));

    for (int i = 0; i < 121; ++i) Svc::recordSample(w, i, t0 - std::chrono::hours(121 - i));
    EXPECT_EQ(w.samples.size(), 120u);
    EXPECT_EQ(w.samples.front().bytes, 1);
    EXPECT_EQ(Svc::growth(w.samples, 7, t0), 119);
    EXPECT_EQ(Svc::growthText(-300000000), "\u2212300 MB this week");

    BuildWatchState state;
    std::vector<BuildSuggestion> found{{"/a", "a", {}, 4900000000, {}}, {"/b", "b", {}, 7000000000, {}},
                                       {"/c", "c", {}, 9000000000, {}}};
    found[1].targets.push_back({"/b/target/debug", "/b", "Rust debug build", BuildStack::rust, 1, std::nullopt});
    Svc::dismiss(state, found, "/c");
    const auto notice = Svc::suggestionNotice(state, found, t0);
    ASSERT_TRUE(notice);
    EXPECT_EQ(notice->body, "b holds 7 GB, mostly rust debug build. 1 more project too. Open Build Watch to keep them in check.");
    EXPECT_FALSE(Svc::suggestionNotice(state, found, t0 + std::chrono::hours(24)));
    EXPECT_TRUE(Svc::visibleSuggestions(state, {{"/c", "c", {}, 9000000000, {}}}).empty());

    state.watches.push_back(w);
    const auto back = decodeBuildWatchState(encodeBuildWatchState(state));
    EXPECT_EQ(back.watches.size(), 1u);
    EXPECT_EQ(back.dismissedPaths, state.dismissedPaths);
    Json broken = encodeBuildWatchState(state);
    broken["watches"][0].erase("limitBytes");
    EXPECT_THROW((void)decodeBuildWatchState(broken), DecodeError);
}

} // namespace
} // namespace bv
