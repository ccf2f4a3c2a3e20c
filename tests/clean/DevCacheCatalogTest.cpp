#include <gtest/gtest.h>

#include <set>

#include "clean/DevCacheCatalog.h"

using namespace bv;
using Case = DevCacheCatalog::Behavior::Case;

TEST(DevCacheCatalog, RowsInScanOrder) {
    const std::vector<std::string> expected{
        "npm", "generic-cache", "gradle-caches", "gradle-dists", "yarn", "yarn-library", "pnpm", "pub",
        "cargo-cache", "cargo-src", "cargo-git", "go", "derived", "archives", "sim-caches", "cocoapods",
        "homebrew", "pip", "minikube", "expo", "nvm", "playwright", "playwright-go", "cypress", "node-gyp",
        "bun", "pdm", "pdm-logs", "poetry", "python-bytecode", "aws-cache", "go-build", "typescript-cache",
        "esbuild-cache", "device-support", "u2net", "watch-device-support", "tv-device-support",
        "xcode-previews", "xcode-docs", "swiftpm", "carthage", "sim-unavailable", "rustup-downloads",
        "rustup-tmp", "rustup-toolchains", "sccache", "deno", "electron", "electron-builder", "maven",
        "android-cache", "flutter-cache", "bazelisk", "ccache", "composer", "bundler", "pipenv",
        "conda-miniconda", "conda-anaconda", "conda-miniforge", "dotslash", "vscode-vsix", "cursor-vsix",
        "jetbrains", "updater-shipit", "updater-electron", "models-ollama", "models-huggingface",
        "models-lmstudio", "android-images", "vm-docker", "vm-colima", "vm-lima", "vm-orbstack", "vm-rancher",
        "vm-podman", "vm-parallels", "vm-virtualbox", "vm-android", "vm-simulators"};
    const auto& rows = DevCacheCatalog::recipes();
    ASSERT_EQ(rows.size(), 81u);
    ASSERT_EQ(expected.size(), 81u);
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i].id, expected[i]) << "row " << i;
}

TEST(DevCacheCatalog, EveryRowIsComplete) {
    const std::set<std::string> groups{"Packages", "Build tools",      "Apple",            "Testing", "Rust",
                                       "Editors",  "App updates",      "AI models",        "Virtual machines",
                                       "Other"};
    for (const auto& row : DevCacheCatalog::recipes()) {
        EXPECT_FALSE(row.title.empty()) << row.id;
        EXPECT_FALSE(row.note.empty()) << row.id;
        EXPECT_TRUE(row.note.ends_with(".")) << row.id;
        EXPECT_TRUE(groups.contains(row.group)) << row.id << " " << row.group;
        EXPECT_FALSE(row.relativePath.empty() || row.relativePath.front() == '/' || row.relativePath.back() == '/')
            << row.id;
        EXPECT_EQ(row.behavior.suffix.empty(), row.behavior.kind != Case::suffixedChildren) << row.id;
    }
}

TEST(DevCacheCatalog, RowsWithAMeaningOfTheirOwn) {
    const auto* npm = DevCacheCatalog::recipe("npm");
    ASSERT_TRUE(npm);
    EXPECT_EQ(npm->toolCommand, "npm cache clean --force");
    const auto* sim = DevCacheCatalog::recipe("sim-unavailable");
    ASSERT_TRUE(sim);
    EXPECT_EQ(sim->toolCommand, "xcrun simctl delete unavailable");
    EXPECT_EQ(sim->behavior.kind, Case::unavailableSimulators);
    EXPECT_TRUE(sim->optIn);
    EXPECT_EQ(sim->note, "These simulators can\u2019t run with your Xcode any more. Removed with `xcrun simctl delete "
                         "unavailable`. Simulators you can still use stay.");

    int tools = 0, optIns = 0, reviewOnly = 0;
    for (const auto& row : DevCacheCatalog::recipes()) {
        tools += row.toolCommand.has_value();
        optIns += row.optIn;
        reviewOnly += row.behavior.kind == Case::reviewOnly;
    }
    EXPECT_EQ(tools, 2);
    EXPECT_EQ(optIns, 14);
    EXPECT_EQ(reviewOnly, 14);

    // Two rows name one folder; two rows share one title.
    EXPECT_EQ(DevCacheCatalog::recipe("vm-simulators")->relativePath, sim->relativePath);
    EXPECT_EQ(DevCacheCatalog::recipe("yarn")->title, DevCacheCatalog::recipe("yarn-library")->title);
    EXPECT_EQ(DevCacheCatalog::recipe("updater-shipit")->behavior, DevCacheCatalog::Behavior::suffixed(".ShipIt"));
    EXPECT_EQ(DevCacheCatalog::recipe("updater-electron")->behavior.suffix, "-updater");
    EXPECT_EQ(DevCacheCatalog::recipe("nvm")->behavior.kind, Case::nodeVersions);
    EXPECT_EQ(DevCacheCatalog::recipe("missing"), nullptr);
}

TEST(DevCacheCatalog, EveryNoteIsPresent) {
    // One sample per distinct note, by the row that reads it; rows sharing a note are checked
    // to hold the same text.
    const std::vector<std::pair<std::vector<const char*>, const char*>> notes{
        {{"npm", "yarn", "yarn-library", "pnpm", "pip", "bun", "pdm", "poetry", "composer", "pipenv"},
         "Comes back the next time you install packages."},
        {{"generic-cache"}, "Apps create these again the next time they run."},
        {{"gradle-caches", "cargo-cache", "cargo-src", "cargo-git", "go-build", "esbuild-cache"},
         "Comes back the next time you build."},
        {{"gradle-dists"}, "Older copies of the build tool. The newest one stays."},
        {{"pub"}, "Projects download these again the next time you build."},
        {{"go"}, "Comes back the next time you build. Your own projects are not touched."},
        {{"derived"}, "Xcode creates these again the next time you build."},
        {{"archives"}, "Copies you exported for release. Choose these only if you no longer need them."},
        {{"sim-caches"}, "The simulator creates these again the next time it runs."},
        {{"cocoapods"}, "Comes back the next time you install libraries."},
        {{"homebrew"}, "Comes back the next time you install an app."},
        {{"minikube"}, "Comes back the next time the cluster needs them."},
        {{"expo"}, "Preview files come back the next time you open the app. Everything else here is left alone."},
        {{"nvm"}, "Other projects can still use a version you keep. The one you use every day stays."},
        {{"playwright", "playwright-go"}, "Downloaded again the next time your tests run."},
        {{"cypress"}, "Downloaded again the next time Cypress runs."},
        {{"node-gyp"}, "Downloaded again when a native package builds."},
        {{"pdm-logs"}, "Old install logs. Nothing reads them."},
        {{"python-bytecode"}, "Python rebuilds these when a script runs."},
        {{"aws-cache"}, "Cached command metadata. Your credentials in ~/.aws are never touched."},
        {{"typescript-cache"}, "Comes back the next time the editor type-checks."},
        {{"device-support"},
         "Xcode downloads symbols again the next time that iOS version connects. Often several GB per version."},
        {{"u2net"}, "Downloaded again the first time rembg runs."},
        {{"watch-device-support"}, "Xcode downloads symbols again the next time that watchOS version connects."},
        {{"tv-device-support"}, "Xcode downloads symbols again the next time that tvOS version connects."},
        {{"xcode-previews"}, "Xcode builds these again the next time a preview runs."},
        {{"xcode-docs"}, "Xcode downloads it again when you open the documentation."},
        {{"swiftpm"}, "Comes back the next time a package resolves."},
        {{"carthage"}, "Comes back the next time Carthage resolves."},
        {{"rustup-downloads"}, "Leftover installer files. Installed toolchains are not touched."},
        {{"rustup-tmp"}, "Leftovers from interrupted installs."},
        {{"rustup-toolchains"},
         "Your default toolchain and folder overrides stay. A project that pins this version downloads it again."},
        {{"sccache", "ccache"}, "Rebuilt as you compile."},
        {{"deno"}, "Comes back the next time a script runs."},
        {{"electron"}, "Downloaded again the next time you install or build an Electron app."},
        {{"electron-builder"}, "Downloaded again the next time you package an app."},
        {{"maven"},
         "Downloaded again the next time you build. Libraries you installed yourself with `mvn install` come back "
         "when you build those projects. Your settings.xml is never touched."},
        {{"android-cache"}, "Comes back the next time the Android tools run. Emulators and keys are not touched."},
        {{"flutter-cache"}, "Flutter downloads these again the next time it runs, which takes a few minutes."},
        {{"bazelisk"}, "Downloaded again the next time Bazel runs."},
        {{"bundler"}, "Comes back the next time you run bundle install."},
        {{"conda-miniconda", "conda-anaconda", "conda-miniforge"},
         "Package archives conda keeps after installing. Your environments keep working; conda downloads a "
         "package again only if you reinstall it."},
        {{"dotslash"}, "Tools fetched by dotslash. Downloaded again the next time they run."},
        {{"vscode-vsix", "cursor-vsix"}, "Installer copies of extensions you already have. Installed extensions stay."},
        {{"jetbrains"},
         "Indexes and caches for IntelliJ, PyCharm, WebStorm and friends. Quit the IDE first; it re-indexes your "
         "projects on next open."},
        {{"updater-shipit", "updater-electron"},
         "An installer the app already used to update itself. It downloads a new one for the next update."},
        {{"models-ollama"}, "Shown for size. Remove models you no longer use with `ollama rm <name>`."},
        {{"models-huggingface"}, "Shown for size. Remove models with `huggingface-cli delete-cache`; your login token stays."},
        {{"models-lmstudio"}, "Shown for size. Remove models from LM Studio\u2019s My Models page."},
        {{"android-images"}, "Shown for size. Remove images you no longer use in Android Studio\u2019s SDK Manager."},
        {{"vm-docker"},
         "Shown for size. Images and stopped containers are safe to prune inside Docker Desktop (Troubleshoot \u203a "
         "Clean / Purge data); named volumes may hold local databases."},
        {{"vm-colima"}, "Shown for size. Use `colima delete` to remove a machine you no longer need."},
        {{"vm-lima"}, "Shown for size. Use `limactl delete` for machines you no longer need."},
        {{"vm-orbstack"}, "Shown for size. Prune images and machines inside OrbStack."},
        {{"vm-rancher"}, "Shown for size. Reset or prune inside Rancher Desktop."},
        {{"vm-podman"}, "Shown for size. Use `podman machine rm` for machines you no longer need."},
        {{"vm-parallels"}, "Shown for size. Delete machines from inside Parallels so their snapshots go with them."},
        {{"vm-virtualbox"}, "Shown for size. Remove machines from inside VirtualBox."},
        {{"vm-android"}, "Shown for size. Delete emulators from Android Studio's Device Manager."},
        {{"vm-simulators"},
         "Shown for size. Run `xcrun simctl delete unavailable` in Terminal to drop simulators Xcode no longer "
         "supports."},
    };
    std::set<std::string> covered{"sim-unavailable"}; // checked word for word above
    for (const auto& [ids, text] : notes)
        for (const char* id : ids) {
            const auto* row = DevCacheCatalog::recipe(id);
            ASSERT_TRUE(row) << id;
            EXPECT_EQ(row->note, text) << id;
            covered.insert(id);
        }
    EXPECT_EQ(covered.size(), 81u) << "every row's note is checked";
}
