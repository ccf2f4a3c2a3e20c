// The developer cache catalogue itself: one row per folder, in scan order.
#include "clean/DevCacheCatalog.h"

namespace bv {
namespace {

using Recipe = DevCacheCatalog::Recipe;
using Behavior = DevCacheCatalog::Behavior;
using Case = Behavior::Case;

// The notes the user reads. Several rows share one.
namespace note {
constexpr const char* installPackages = "Comes back the next time you install packages.";
constexpr const char* genericCache = "Apps create these again the next time they run.";
constexpr const char* build = "Comes back the next time you build.";
constexpr const char* gradleDists = "Older copies of the build tool. The newest one stays.";
constexpr const char* pub = "Projects download these again the next time you build.";
constexpr const char* go = "Comes back the next time you build. Your own projects are not touched.";
constexpr const char* derived = "Xcode creates these again the next time you build.";
constexpr const char* archives = "Copies you exported for release. Choose these only if you no longer need them.";
constexpr const char* simCaches = "The simulator creates these again the next time it runs.";
constexpr const char* cocoapods = "Comes back the next time you install libraries.";
constexpr const char* homebrew = "Comes back the next time you install an app.";
constexpr const char* minikube = "Comes back the next time the cluster needs them.";
constexpr const char* expo = "Preview files come back the next time you open the app. Everything else here is left alone.";
constexpr const char* nvm = "Other projects can still use a version you keep. The one you use every day stays.";
constexpr const char* testsRun = "Downloaded again the next time your tests run.";
constexpr const char* cypress = "Downloaded again the next time Cypress runs.";
constexpr const char* nodeGyp = "Downloaded again when a native package builds.";
constexpr const char* pdmLogs = "Old install logs. Nothing reads them.";
constexpr const char* pythonBytecode = "Python rebuilds these when a script runs.";
constexpr const char* awsCache = "Cached command metadata. Your credentials in ~/.aws are never touched.";
constexpr const char* typescript = "Comes back the next time the editor type-checks.";
constexpr const char* deviceSupport =
    "Xcode downloads symbols again the next time that iOS version connects. Often several GB per version.";
constexpr const char* u2net = "Downloaded again the first time rembg runs.";
constexpr const char* watchDeviceSupport =
    "Xcode downloads symbols again the next time that watchOS version connects.";
constexpr const char* tvDeviceSupport = "Xcode downloads symbols again the next time that tvOS version connects.";
constexpr const char* xcodePreviews = "Xcode builds these again the next time a preview runs.";
constexpr const char* xcodeDocs = "Xcode downloads it again when you open the documentation.";
constexpr const char* swiftpm = "Comes back the next time a package resolves.";
constexpr const char* carthage = "Comes back the next time Carthage resolves.";
constexpr const char* simUnavailable =
    "These simulators can\u2019t run with your Xcode any more. Removed with `xcrun simctl delete unavailable`. "
    "Simulators you can still use stay.";
constexpr const char* rustupDownloads = "Leftover installer files. Installed toolchains are not touched.";
constexpr const char* rustupTmp = "Leftovers from interrupted installs.";
constexpr const char* rustupToolchains =
    "Your default toolchain and folder overrides stay. A project that pins this version downloads it again.";
constexpr const char* compileCache = "Rebuilt as you compile.";
constexpr const char* deno = "Comes back the next time a script runs.";
constexpr const char* electron = "Downloaded again the next time you install or build an Electron app.";
constexpr const char* electronBuilder = "Downloaded again the next time you package an app.";
constexpr const char* maven =
    "Downloaded again the next time you build. Libraries you installed yourself with `mvn install` come back when "
    "you build those projects. Your settings.xml is never touched.";
constexpr const char* androidCache =
    "Comes back the next time the Android tools run. Emulators and keys are not touched.";
constexpr const char* flutterCache =
    "Flutter downloads these again the next time it runs, which takes a few minutes.";
constexpr const char* bazelisk = "Downloaded again the next time Bazel runs.";
constexpr const char* bundler = "Comes back the next time you run bundle install.";
constexpr const char* conda =
    "Package archives conda keeps after installing. Your environments keep working; conda downloads a package "
    "again only if you reinstall it.";
constexpr const char* dotslash = "Tools fetched by dotslash. Downloaded again the next time they run.";
constexpr const char* vsix = "Installer copies of extensions you already have. Installed extensions stay.";
constexpr const char* jetbrains =
    "Indexes and caches for IntelliJ, PyCharm, WebStorm and friends. Quit the IDE first; it re-indexes your "
    "projects on next open.";
constexpr const char* updater =
    "An installer the app already used to update itself. It downloads a new one for the next update.";
constexpr const char* ollama = "Shown for size. Remove models you no longer use with `ollama rm <name>`.";
constexpr const char* huggingface =
    "Shown for size. Remove models with `huggingface-cli delete-cache`; your login token stays.";
constexpr const char* lmstudio = "Shown for size. Remove models from LM Studio\u2019s My Models page.";
constexpr const char* androidImages =
    "Shown for size. Remove images you no longer use in Android Studio\u2019s SDK Manager.";
constexpr const char* docker =
    "Shown for size. Images and stopped containers are safe to prune inside Docker Desktop (Troubleshoot \u203a "
    "Clean / Purge data); named volumes may hold local databases.";
constexpr const char* colima = "Shown for size. Use `colima delete` to remove a machine you no longer need.";
constexpr const char* lima = "Shown for size. Use `limactl delete` for machines you no longer need.";
constexpr const char* orbstack = "Shown for size. Prune images and machines inside OrbStack.";
constexpr const char* rancher = "Shown for size. Reset or prune inside Rancher Desktop.";
constexpr const char* podman = "Shown for size. Use `podman machine rm` for machines you no longer need.";
constexpr const char* parallels =
    "Shown for size. Delete machines from inside Parallels so their snapshots go with them.";
constexpr const char* virtualbox = "Shown for size. Remove machines from inside VirtualBox.";
constexpr const char* androidAvd = "Shown for size. Delete emulators from Android Studio's Device Manager.";
constexpr const char* simulators =
    "Shown for size. Run `xcrun simctl delete unavailable` in Terminal to drop simulators Xcode no longer supports.";
} // namespace note

// The two markers a row can carry beside its behaviour.
constexpr bool optIn = true;
constexpr bool plain = false;

const Behavior directory{Case::directory, {}};
const Behavior children{Case::children, {}};
const Behavior gradleDistributions{Case::gradleDistributions, {}};
const Behavior expoCaches{Case::expoCaches, {}};
const Behavior nodeVersions{Case::nodeVersions, {}};
const Behavior rustToolchains{Case::rustToolchains, {}};
const Behavior unavailableSimulators{Case::unavailableSimulators, {}};
const Behavior reviewOnly{Case::reviewOnly, {}};

Recipe row(const char* id, const char* title, const char* relativePath, const char* group, const char* noteText,
           const Behavior& behavior = directory, bool isOptIn = plain, std::optional<std::string> tool = std::nullopt) {
    return Recipe{id, title, relativePath, noteText, group, behavior, std::move(tool), isOptIn};
}

std::vector<Recipe> makeTable() {
    return {
        // id, title, relativePath, group, note [, behaviour, opt-in, tool command]
        row("npm", "Package downloads cache", ".npm/_cacache", "Packages", note::installPackages, directory, plain,
            "npm cache clean --force"),
        row("generic-cache", "Tool caches (~/.cache)", ".cache", "Other", note::genericCache, children),
        row("gradle-caches", "Build tool cache", ".gradle/caches", "Build tools", note::build),
        row("gradle-dists", "Older build tools", ".gradle/wrapper/dists", "Build tools", note::gradleDists,
            gradleDistributions),
        row("yarn", "Yarn package downloads", ".yarn/cache", "Packages", note::installPackages),
        row("yarn-library", "Yarn package downloads", "Library/Caches/Yarn", "Packages", note::installPackages),
        row("pnpm", "Stored packages", "Library/pnpm/store", "Packages", note::installPackages),
        row("pub", "App packages", ".pub-cache/hosted", "Packages", note::pub),
        row("cargo-cache", "Code library downloads", ".cargo/registry/cache", "Packages", note::build),
        row("cargo-src", "Code library files", ".cargo/registry/src", "Packages", note::build),
        row("cargo-git", "Downloaded source copies", ".cargo/git/checkouts", "Packages", note::build),
        row("go", "Code library downloads", "go/pkg/mod/cache", "Packages", note::go),
        row("derived", "Xcode build files", "Library/Developer/Xcode/DerivedData", "Apple", note::derived),
        row("archives", "Xcode release copies", "Library/Developer/Xcode/Archives", "Apple", note::archives,
            directory, optIn),
        row("sim-caches", "Simulator extras", "Library/Developer/CoreSimulator/Caches", "Apple", note::simCaches),
        row("cocoapods", "iOS library downloads", "Library/Caches/CocoaPods", "Apple", note::cocoapods),
        row("homebrew", "App installer downloads", "Library/Caches/Homebrew", "Other", note::homebrew),
        row("pip", "Python package downloads", "Library/Caches/pip", "Packages", note::installPackages),
        row("minikube", "Local cluster downloads", ".minikube/cache", "Other", note::minikube),
        row("expo", "App preview files", ".expo", "Packages", note::expo, expoCaches),
        row("nvm", "Old runtime versions", ".nvm/versions/node", "Packages", note::nvm, nodeVersions, optIn),
        row("playwright", "Playwright browsers", "Library/Caches/ms-playwright", "Testing", note::testsRun),
        row("playwright-go", "Playwright Go browsers", "Library/Caches/ms-playwright-go", "Testing", note::testsRun),
        row("cypress", "Cypress binaries", "Library/Caches/Cypress", "Testing", note::cypress),
        row("node-gyp", "Node build headers", "Library/Caches/node-gyp", "Packages", note::nodeGyp),
        row("bun", "Bun package downloads", ".bun/install/cache", "Packages", note::installPackages),
        row("pdm", "pdm package downloads", "Library/Caches/pdm", "Packages", note::installPackages),
        row("pdm-logs", "pdm logs", "Library/Logs/pdm", "Packages", note::pdmLogs),
        row("poetry", "Poetry package downloads", "Library/Caches/pypoetry", "Packages", note::installPackages),
        row("python-bytecode", "Python compiled files", "Library/Caches/com.apple.python", "Packages",
            note::pythonBytecode),
        row("aws-cache", "AWS CLI cache", "Library/Caches/aws", "Other", note::awsCache),
        row("go-build", "Go build cache", "Library/Caches/go-build", "Build tools", note::build),
        row("typescript-cache", "TypeScript cache", "Library/Caches/typescript", "Packages", note::typescript),
        row("esbuild-cache", "esbuild cache", "Library/Caches/esbuild", "Packages", note::build),
        row("device-support", "iOS device symbols", "Library/Developer/Xcode/iOS DeviceSupport", "Apple",
            note::deviceSupport, directory, optIn),
        row("u2net", "Background removal models", ".u2net", "Other", note::u2net, directory, optIn),
        row("watch-device-support", "watchOS device symbols", "Library/Developer/Xcode/watchOS DeviceSupport", "Apple",
            note::watchDeviceSupport, directory, optIn),
        row("tv-device-support", "tvOS device symbols", "Library/Developer/Xcode/tvOS DeviceSupport", "Apple",
            note::tvDeviceSupport, directory, optIn),
        row("xcode-previews", "SwiftUI preview builds", "Library/Developer/Xcode/UserData/Previews", "Apple",
            note::xcodePreviews),
        row("xcode-docs", "Xcode documentation cache", "Library/Developer/Xcode/DocumentationCache", "Apple",
            note::xcodeDocs),
        row("swiftpm", "Swift package downloads", "Library/Caches/org.swift.swiftpm", "Apple", note::swiftpm),
        row("carthage", "Carthage downloads", "Library/Caches/org.carthage.CarthageKit", "Apple", note::carthage),
        row("sim-unavailable", "Simulators Xcode no longer supports", "Library/Developer/CoreSimulator/Devices", "Apple",
            note::simUnavailable, unavailableSimulators, optIn, "xcrun simctl delete unavailable"),
        row("rustup-downloads", "Rust installer downloads", ".rustup/downloads", "Rust", note::rustupDownloads),
        row("rustup-tmp", "Rust installer temp files", ".rustup/tmp", "Rust", note::rustupTmp),
        row("rustup-toolchains", "Older Rust toolchains", ".rustup/toolchains", "Rust", note::rustupToolchains,
            rustToolchains, optIn),
        row("sccache", "sccache compile cache", "Library/Caches/Mozilla.sccache", "Rust", note::compileCache),
        row("deno", "Deno cache", "Library/Caches/deno", "Packages", note::deno),
        row("electron", "Electron downloads", "Library/Caches/electron", "Packages", note::electron),
        row("electron-builder", "electron-builder downloads", "Library/Caches/electron-builder", "Packages",
            note::electronBuilder),
        row("maven", "Maven libraries", ".m2/repository", "Build tools", note::maven, directory, optIn),
        row("android-cache", "Android tools cache", ".android/cache", "Build tools", note::androidCache),
        row("flutter-cache", "Flutter engine downloads", "flutter/bin/cache", "Build tools", note::flutterCache,
            directory, optIn),
        row("bazelisk", "Bazel downloads", "Library/Caches/bazelisk", "Build tools", note::bazelisk),
        row("ccache", "ccache compile cache", "Library/Caches/ccache", "Build tools", note::compileCache),
        row("composer", "Composer package downloads", "Library/Caches/composer", "Packages", note::installPackages),
        row("bundler", "Ruby gem downloads", ".bundle/cache", "Packages", note::bundler),
        row("pipenv", "Pipenv package downloads", "Library/Caches/pipenv", "Packages", note::installPackages),
        row("conda-miniconda", "Conda package downloads", "miniconda3/pkgs", "Packages", note::conda, directory, optIn),
        row("conda-anaconda", "Conda package downloads", "anaconda3/pkgs", "Packages", note::conda, directory, optIn),
        row("conda-miniforge", "Conda package downloads", "miniforge3/pkgs", "Packages", note::conda, directory, optIn),
        row("dotslash", "dotslash downloads", "Library/Caches/dotslash", "Other", note::dotslash),
        row("vscode-vsix", "VS Code extension downloads", "Library/Application Support/Code/CachedExtensionVSIXs",
            "Editors", note::vsix),
        row("cursor-vsix", "Cursor extension downloads", "Library/Application Support/Cursor/CachedExtensionVSIXs",
            "Editors", note::vsix),
        row("jetbrains", "JetBrains IDE caches", "Library/Caches/JetBrains", "Editors", note::jetbrains, directory,
            optIn),
        row("updater-shipit", "App update downloads", "Library/Caches", "App updates", note::updater,
            Behavior::suffixed(".ShipIt")),
        row("updater-electron", "App update downloads", "Library/Application Support/Caches", "App updates",
            note::updater, Behavior::suffixed("-updater")),
        row("models-ollama", "Ollama models", ".ollama/models", "AI models", note::ollama, reviewOnly),
        row("models-huggingface", "Hugging Face models", ".cache/huggingface/hub", "AI models", note::huggingface,
            reviewOnly),
        row("models-lmstudio", "LM Studio models", ".lmstudio/models", "AI models", note::lmstudio, reviewOnly),
        row("android-images", "Android system images", "Library/Android/sdk/system-images", "Virtual machines",
            note::androidImages, reviewOnly),
        row("vm-docker", "Docker Desktop virtual disk", "Library/Containers/com.docker.docker/Data/vms/0/data",
            "Virtual machines", note::docker, reviewOnly),
        row("vm-colima", "Colima virtual machine", ".colima", "Virtual machines", note::colima, reviewOnly),
        row("vm-lima", "Lima virtual machines", ".lima", "Virtual machines", note::lima, reviewOnly),
        row("vm-orbstack", "OrbStack data", ".orbstack", "Virtual machines", note::orbstack, reviewOnly),
        row("vm-rancher", "Rancher Desktop virtual machine", "Library/Application Support/rancher-desktop/lima",
            "Virtual machines", note::rancher, reviewOnly),
        row("vm-podman", "Podman machines", ".local/share/containers/podman/machine", "Virtual machines", note::podman,
            reviewOnly),
        row("vm-parallels", "Parallels virtual machines", "Parallels", "Virtual machines", note::parallels, reviewOnly),
        row("vm-virtualbox", "VirtualBox virtual machines", "VirtualBox VMs", "Virtual machines", note::virtualbox,
            reviewOnly),
        row("vm-android", "Android emulators", ".android/avd", "Virtual machines", note::androidAvd, reviewOnly),
        row("vm-simulators", "iOS simulators", "Library/Developer/CoreSimulator/Devices", "Virtual machines",
            note::simulators, reviewOnly),
    };
}

} // namespace

const std::vector<Recipe>& DevCacheCatalog::recipes() {
    static const std::vector<Recipe> table = makeTable();
    return table;
}

const Recipe* DevCacheCatalog::recipe(std::string_view id) {
    for (const auto& r : recipes())
        if (r.id == id) return &r;
    return nullptr;
}

} // namespace bv
