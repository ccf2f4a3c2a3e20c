// The catalogue's tables and path tests, on names and paths alone.
#include <gtest/gtest.h>

#include "buildwatch/BuildWatchCatalog.h"
#include "support/TestEnvironment.h"

namespace bv {
namespace {

using Catalog = BuildWatchCatalog;
using S = BuildStack;

std::vector<std::string> split(const std::string& rel) {
    std::vector<std::string> out;
    std::size_t start = 0;
    while (start <= rel.size()) {
        auto end = rel.find('/', start);
        if (end == std::string::npos) end = rel.size();
        if (end > start) out.push_back(rel.substr(start, end - start));
        start = end + 1;
    }
    return out;
}

TEST(BuildWatchCatalog, RecognisesStacksInFixedOrderIgnoringCase) {
    struct Row {
        std::vector<std::string> names;
        std::vector<BuildStack> stacks;
    };
    const Row rows[] = {
        {{"Cargo.toml", "tauri.conf.json", "package.json"}, {S::tauri, S::node}},
        {{"cargo.toml"}, {S::rust}},
        {{"BUILD.GRADLE"}, {S::gradle}},
        {{"requirements.txt", "pubspec.yaml", "App.xcodeproj", "Other.xcworkspace", "Package.swift"},
         {S::swiftPackage, S::xcode, S::flutter, S::python}},
        {{"README.md", "src"}, {}},
    };
    for (const auto& r : rows) EXPECT_EQ(Catalog::recognizeStacks(r.names), r.stacks) << r.names.front();
    EXPECT_EQ(Catalog::patterns().size(), 26u);
    EXPECT_EQ(Catalog::walkStopList().size(), 20u);
}

TEST(BuildWatchCatalog, MatchesOnlyTheRowsThatNameAFolder) {
    const std::vector<std::string> cargo{"Cargo.toml"}, swift{"Package.swift"}, xcode{"Info.plist"}, node{"package.json"};
    struct Row {
        const char* rel;
        const std::vector<std::string>* names;
        bool xcode;
        const char* title; // nullptr: no row
    };
    const Row rows[] = {
        {"target/debug", &cargo, false, "Rust debug build"},
        {"TARGET/Debug", &cargo, false, "Rust debug build"},
        {"target/aarch64-unknown-linux-gnu/debug", &cargo, false, "Rust debug build"},
        {"target/.rustc_info/debug", &cargo, false, nullptr},
        {"target/release", &cargo, false, nullptr},
        {"target/release/bundle", &cargo, false, nullptr},
        {"target/release/incremental", &cargo, false, "Rust incremental cache"},
        {"target/debug", &node, false, nullptr},
        {".build/arm64-apple-macosx/debug", &swift, false, "Swift debug build"},
        {".build/checkouts", &swift, false, nullptr},
        {"node_modules", &node, false, nullptr},
        {"node_modules/.vite", &node, false, "Vite cache"},
        {"Build/Products/Debug-iphonesimulator", &xcode, true, "Xcode debug build"},
        {"Build/Products/Release", &xcode, true, nullptr},
        {"Build/Products/Debug-iphonesimulator", &xcode, false, nullptr},
    };
    for (const auto& r : rows) {
        const auto* p = Catalog::matchRelativePath(split(r.rel), *r.names, r.xcode);
        EXPECT_EQ(p ? p->title : "", r.title ? r.title : "") << r.rel;
    }
}

TEST(BuildWatchCatalog, BlocksHomeSystemAndPrivateFoldersButNotProjectsInDocuments) {
    const std::string home = test::TestEnvironment::freshFolder("catalog-home");
    test::makeDir(home + "/Documents/app");
    test::makeDir(home + "/Dokumente/app");
    test::makeDir(home + "/.config/tool");
    test::makeDir(home + "/code/app");
    test::writeFile(home + "/.config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n");
    const char* oldConfig = getenv("XDG_CONFIG_HOME");
    const std::string savedConfig = oldConfig ? oldConfig : "";
    setenv("XDG_CONFIG_HOME", (home + "/.config").c_str(), 1);
    const std::string oldHome = getenv("HOME");
    setenv("HOME", home.c_str(), 1);
    struct Row {
        std::string path;
        bool blocked;
    };
    const Row rows[] = {
        {"/", true},           {home, true},          {home + "/", true},      {"/home", true},
        {"/usr", true},        {"/usr/src/app", true}, {"/mnt/disk", true},   {"/proc/1", true},
        {home + "/Documents", true}, {home + "/Documents/app", false}, {home + "/Dokumente", true},
        {home + "/Dokumente/app", false}, {home + "/.config/tool", true}, {home + "/.cargo/registry", true},
        {home + "/code/app", false},  {home + "/code/app/.git", true},
    };
    for (const auto& r : rows) EXPECT_EQ(Catalog::isBlockedFolder(r.path, home), r.blocked) << r.path;
    setenv("HOME", oldHome.c_str(), 1);
    if (oldConfig) setenv("XDG_CONFIG_HOME", savedConfig.c_str(), 1);
    else unsetenv("XDG_CONFIG_HOME");
}

TEST(BuildWatchCatalog, AllowsOnlyPatternTargetsStrictlyInsideTheirProject) {
    const std::string home = test::TestEnvironment::freshFolder("allowed-home");
    const std::string app = home + "/code/app";
    const std::string dd = home + "/Library/Developer/Xcode/DerivedData";
    const std::vector<std::string> cargo{"Cargo.toml"}, plist{"info.plist"};
    struct Row {
        std::string target, anchor, project;
        const std::vector<std::string>* names;
        bool allowed;
    };
    const Row rows[] = {
        {app + "/target/debug", app, app, &cargo, true},
        {app + "/crates/a/target/debug", app + "/crates/a", app, &cargo, true},
        {app + "/target/release", app, app, &cargo, false},
        {app + "/target/debug/../../src", app, app, &cargo, false},
        {app, app, app, &cargo, false},
        {app + "/target/debug", app, home + "/other", &cargo, false},
        {home + "/Documents/target/debug", home + "/Documents", home + "/Documents", &cargo, false},
        {home + "/.config/x/target/debug", home + "/.config/x", home + "/.config/x", &cargo, false},
        {dd + "/App-abc/Build/Products/Debug", dd + "/App-abc", app, &plist, true},
        {dd + "/Build/Products/Debug", dd, app, &plist, false},
    };
    for (const auto& r : rows)
        EXPECT_EQ(Catalog::isAllowedTarget(r.target, r.anchor, r.project, *r.names, home), r.allowed) << r.target;
}

TEST(BuildWatchCatalog, ToolsOfStacks) {
    EXPECT_EQ(Catalog::toolsForStacks({S::tauri}), (std::set<std::string>{"cargo", "cargo-tauri", "rustc"}));
    EXPECT_TRUE(Catalog::toolsForStacks({S::node, S::python}).empty());
}

} // namespace
} // namespace bv
