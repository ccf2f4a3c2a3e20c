#include <gtest/gtest.h>

#include <filesystem>
#include <sys/stat.h>

#include "clean/DevCacheScanner.h"
#include "clean/SmartCleanLayout.h"
#include "CleanerTestSupport.h"
#include "support/DevCacheHome.h"
#include "support/TestEnvironment.h"

using namespace bv;
using bv::test::makeDir;
using bv::test::writeFile;
using bv::test::writeSizedFile;
namespace fs = std::filesystem;

namespace {

const DevScanRow* find(const std::vector<DevScanRow>& rows, const std::string& id) {
    for (const auto& r : rows)
        if (r.id == id) return &r;
    return nullptr;
}

// The shared developer home (npm, pip, two gradle copies, two node versions with a default,
// a cargo cache linked outside) plus what only the scanner meets: private, hidden and linked
// ~/.cache children, toolchains, update downloads and review-only folders.
std::string realisticHome() {
    const std::string home = bv::test::TestEnvironment::freshFolder("dev-home");
    (void)bv::test::writeDevCacheHome(home);
    writeSizedFile(home + "/.cache/npm-tool/blob", 2'000'000);
    writeSizedFile(home + "/.cache/auth-tokens/t", 10);
    writeSizedFile(home + "/.cache/.hidden/x", 10);
    writeSizedFile(home + "/.cache/huggingface/hub/model.bin", 5'000);
    writeFile(home + "/.cache/CACHEDIR.TAG", "Signature: 8a477f597d28d172789f06886806bc55");
    fs::create_directory_symlink(home + "/.cache/npm-tool", home + "/.cache/link-to-tool");
    writeSizedFile(home + "/.expo/web-cache/a", 100);
    writeFile(home + "/.expo/state.json", "{}");
    for (const char* t : {"stable-x86_64-unknown-linux-gnu", "nightly-x86_64-unknown-linux-gnu"})
        writeSizedFile(home + "/.rustup/toolchains/" + t + "/lib/x.so", 40'000);
    writeFile(home + "/.rustup/settings.toml", "default_toolchain = \"stable\"\n");
    writeSizedFile(home + "/Library/Caches/com.tinyspeck.slackmacgap.ShipIt/update.zip", 20'000);
    writeSizedFile(home + "/Library/Caches/com.example.Foo/x", 20'000);
    writeSizedFile(home + "/.ollama/models/blobs/sha", 70'000);
    return home;
}

} // namespace

TEST(DevCacheScanner, ScansARealisticHome) {
    const std::string home = realisticHome();
    const auto result = DevCacheScanner::scan(home);
    const auto& rows = result.rows;

    const auto* npm = find(rows, "npm");
    ASSERT_TRUE(npm);
    EXPECT_TRUE(npm->selectable);
    EXPECT_GE(npm->bytes, 300'000);
    EXPECT_FALSE(npm->selected);

    // ~/.cache: only the plain child; private, hidden and linked children make no row.
    EXPECT_TRUE(find(rows, "cache-npm-tool") && find(rows, "cache-npm-tool")->selectable);
    for (const char* absent : {"cache-auth-tokens", "cache-.hidden", "cache-huggingface", "cache-link-to-tool", "generic-cache"})
        EXPECT_FALSE(find(rows, absent)) << absent;

    EXPECT_EQ(find(rows, "gradle-gradle-8.5-bin")->blockedReason, "The newest copy stays.");
    EXPECT_TRUE(find(rows, "gradle-gradle-8.4-bin")->selectable);

    EXPECT_TRUE(find(rows, "expo-web-cache"));
    EXPECT_FALSE(find(rows, "expo-state.json"));

    const auto* node20 = find(rows, "node-v20.11.1");
    ASSERT_TRUE(node20);
    EXPECT_EQ(node20->title, "Node v20.11.1");
    EXPECT_EQ(node20->blockedReason, "This is the version you use every day. It stays.");
    EXPECT_TRUE(find(rows, "node-v18.19.0")->selectable);
    EXPECT_TRUE(find(rows, "node-v18.19.0")->optIn);

    EXPECT_EQ(find(rows, "rustup-stable-x86_64-unknown-linux-gnu")->blockedReason,
              "This is the toolchain you build with. It stays.");
    EXPECT_TRUE(find(rows, "rustup-nightly-x86_64-unknown-linux-gnu")->selectable);

    const auto* slack = find(rows, "updater-com.tinyspeck.slackmacgap.ShipIt");
    ASSERT_TRUE(slack);
    EXPECT_EQ(slack->title, "Slack update download");
    EXPECT_TRUE(slack->selectable);

    const auto* cargo = find(rows, "cargo-cache");
    ASSERT_TRUE(cargo);
    EXPECT_FALSE(cargo->selectable);
    EXPECT_EQ(cargo->blockedReason, "This shortcut points somewhere else, so it stays.");
    EXPECT_NE(cargo->resolvedPath, cargo->path);

    ASSERT_EQ(result.reviewRows.size(), 2u);
    const auto* models = find(result.reviewRows, "models-ollama");
    ASSERT_TRUE(models);
    EXPECT_EQ(models->group, "Large folders");
    EXPECT_EQ(models->kind, DevRowKind::reviewOnly);
    EXPECT_EQ(models->blockedReason, "Shown for size only.");
    EXPECT_FALSE(models->selectable);
    EXPECT_TRUE(find(result.reviewRows, "models-huggingface"));

    EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.bytes > b.bytes; }));
    EXPECT_FALSE(find(rows, "sim-unavailable")) << "no simulator tool here";
}

TEST(DevCacheScanner, EdgesOfTheVersionRows) {
    const std::string home = bv::test::TestEnvironment::freshFolder("edge-home");
    makeDir(home + "/.nvm/versions/node");
    EXPECT_TRUE(DevCacheScanner::scan(home).rows.empty()) << "an empty nvm makes no rows";

    makeDir(home + "/.nvm/versions/node/v22.1.0");
    makeDir(home + "/.gradle/wrapper/dists/gradle-8.5-bin");
    const auto rows = DevCacheScanner::scan(home).rows;
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(find(rows, "node-v22.1.0")->blockedReason, "This is the version you use every day. It stays.")
        << "one version and no alias: it stays";
    EXPECT_FALSE(find(rows, "gradle-gradle-8.5-bin")->selectable);
    const auto cards = SmartCleanLayout::cards(rows, false);
    ASSERT_EQ(cards.size(), 2u);
    for (const auto& card : cards) {
        EXPECT_TRUE(card.rows.empty());
        EXPECT_EQ(card.keptLine, card.id == "node" ? "The version you use every day stays." : "The newest copy stays.");
    }
}

TEST(DevCacheScanner, UnavailableSimulatorsThroughTheirReader) {
    const std::string home = bv::test::TestEnvironment::freshFolder("sim-home");
    const std::string devices = home + "/Library/Developer/CoreSimulator/Devices";
    writeSizedFile(devices + "/AAA/data/x", 30'000);
    writeSizedFile(devices + "/BBB/data/x", 30'000);
    DevCacheScanner::Options options;
    options.unavailableSimulators = [&](const std::string&) { return std::vector<std::string>{devices + "/AAA"}; };
    const auto result = DevCacheScanner::scan(home, options);
    const auto* sim = find(result.rows, "sim-unavailable");
    ASSERT_TRUE(sim);
    EXPECT_GE(sim->bytes, 30'000);
    EXPECT_LT(sim->bytes, 60'000);
    EXPECT_TRUE(find(result.reviewRows, "vm-simulators")) << "the same folder is shown for size too";
}

TEST(DevCacheScanner, UpdateDownloadTitles) {
    const std::pair<const char*, const char*> cases[] = {
        {"com.anthropic.claudefordesktop.ShipIt", "Claude update download"},
        {"com.todesktop.230313mzl4w4u92.ShipIt", "ToDesktop app update download"},
        {"com.github.GitHubClient.ShipIt", "GitHub Desktop update download"},
        {"com.example.Widgetizer.ShipIt", "Widgetizer update download"},
        {"io.acme.app.ShipIt", "Acme update download"},
        {"com.app.v2.ShipIt", "App update download"},
        {"sketch-updater", "Sketch update download"},
    };
    for (const auto& [name, title] : cases)
        EXPECT_EQ(DevCacheScanner::updateDownloadTitle(name, std::string_view(name).ends_with("-updater") ? "-updater" : ".ShipIt"), title)
            << name;
}
