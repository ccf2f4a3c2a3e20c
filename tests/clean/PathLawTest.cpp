// The path law, rule by rule, on home-relative paths of a made-up user.
#include <gtest/gtest.h>

#include "clean/DevCacheCatalog.h"
#include "support/TestEnvironment.h"

using namespace bv;
using DC = DevCacheCatalog;

namespace {

const std::string kHome = "/home/ada";
std::string H(const std::string& relative) { return kHome + "/" + relative; }

struct Case {
    std::string path;
    bool expected;
};

} // namespace

// Absolute paths are held against an independent reading in PathLawPropertyTest; these are
// the forms its generator never makes: empty and relative text, and dots inside a name.
TEST(PathLaw, StandardizedPath) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""}, {"/a/..b/c..", "/a/..b/c.."}, {"a/../b", "b"}, {"../a", "../a"}, {"./", "."},
    };
    for (const auto& [in, out] : cases) EXPECT_EQ(DC::standardizedPath(in), out) << in;
}

TEST(PathLaw, IsInsideRoot) {
    const std::string root = H(".npm/_cacache");
    struct Row {
        std::string path, resolved, root;
        bool expected;
    };
    const Row rows[] = {
        {root, root, root, true},
        {root + "/x", root + "/x", root + "/", true},
        {root + "/x", "/tmp/elsewhere", root, false}, // a link that points out
        {"/tmp/elsewhere", root + "/x", root, false},
        {root + "/../_cacache2", root + "/x", root, false},
        {root + "2", root + "2", root, false},          // a sibling with the root as a prefix
        {root + "/a/../../x", root + "/a", root, false},
        {root + "/a/./b", root + "//a/b", root, true},
        {root, root, "", false},                          // an empty root admits nothing
        {H(".NPM/_cacache/x"), H(".NPM/_cacache/x"), root, false}, // case counts
    };
    for (const auto& r : rows) EXPECT_EQ(DC::isInsideRoot(r.path, r.resolved, r.root), r.expected) << r.path << " | " << r.resolved;
}

TEST(PathLaw, SystemAndGitPaths) {
    for (const auto& [path, system] : std::vector<std::pair<std::string, bool>>{
             {"/System", true}, {"/System/Library/x", true}, {"/Applications", true}, {"/Applications/Foo.app", true},
             {"/SystemX", false}, {"/system", false}, {"/Applications2/x", false}, {"/tmp/../System/x", true},
             {"/usr/bin", true}, {"/lib64/x.so", true}, {"/libx32", true}, {"/proc/1", true}, {"/run/user/0", true},
             {"/run/media/ada/USB/x", false}, {"/var/lib/x", true}, {"/variable", false}, {"/tmp/x", false},
             {"/mnt/backup/x", false}, {"/root/.bashrc", true}, {"/snap/core", true}, {"/home/bob/x", false}})
        EXPECT_EQ(DC::isSystemPath(path), system) << path;

    for (const auto& [path, git] : std::vector<std::pair<std::string, bool>>{
             {H("p/.git"), true}, {H("p/.git/objects"), true}, {H("p/.gitignore"), false}, {H("p/x.git"), false},
             {H("p/.GIT"), false}, {H(".git"), true}, {"/.git", true}, {H("p/.git/.."), true}})
        EXPECT_EQ(DC::hasGitComponent(path), git) << path;
}

TEST(PathLaw, ProtectedAndKnownAreas) {
    const Case protectedCases[] = {
        {kHome, true},
        {kHome + "/", true},
        {H("Desktop"), true},
        {H("Desktop/report.pdf"), true},
        {H("Library"), true},
        {H("Library/Caches/Homebrew"), true},
        {H(".ssh/id_ed25519"), true},
        {H("go/src/app"), true},
        {H("go/pkg/mod/cache"), false},
        {H("go/srcx"), false},
        {H("Projects/site/node_modules"), false},
        {H("desktop/x"), false}, // case counts
        {H("p/.git/x"), true},
        {"/System/x", true},
        {"/tmp/x", false},
    };
    for (const auto& c : protectedCases) EXPECT_EQ(DC::isProtectedPath(c.path, kHome), c.expected) << c.path;

    const Case knownCases[] = {
        {H("Library/Caches"), true},
        {H("Library/Caches/Foo"), true},
        {H("Library/Developer/Xcode/DerivedData/App-abc"), true},
        {H("Library/Developer/Xcode"), false},
        {H("Library"), false},
        {H(".rustup/toolchains/stable-x86_64-unknown-linux-gnu"), true},
        {H(".rustup/settings.toml"), false},
        {H("flutter/bin/cache/x"), true},
        {H("flutter/bin"), false},
        {H("library/caches/x"), false},
    };
    for (const auto& c : knownCases) EXPECT_EQ(DC::isKnownCachePath(c.path, kHome), c.expected) << c.path;
}

// Where Linux keeps per-user program data, and the system as one user sees it. Columns:
// protected as a whole, a duplicate copy may go, a cache row may clean it.
TEST(PathLaw, LinuxAppDataAndSystemAreas) {
    struct Row {
        std::string path;
        bool isProtected, duplicate, cache;
    };
    const Row rows[] = {
        {H(".local/lib/python3.12/site-packages/pkg/lib.so"), true, false, false},
        {H(".local/bin/tool"), true, false, false},
        {H(".local/share/Trash/files/x"), true, false, false},
        {H(".local/state/app/log"), true, false, false},
        {H(".local"), true, false, false},
        {H(".localx/y"), false, true, false},
        {H(".var/app/org.example.App/cache/x"), true, false, false},
        {H("snap/firefox/common/x"), true, false, false},
        {H(".mozilla/firefox/p.default/places.sqlite"), true, false, false},
        {H(".thunderbird/p/Mail/x"), true, false, false},
        {H(".wine/drive_c/x.dll"), true, false, false},
        {H(".pki/nssdb/cert9.db"), true, false, false},
        {H(".gnupg/pubring.kbx"), true, false, false},
        {H(".password-store/x.gpg"), true, false, false},
        {H(".config/app/settings.ini"), true, false, false},
        {H(".cache/npm-tool"), false, true, true},
        {"/usr/lib/x.so", true, false, false},
        {"/etc/passwd", true, false, false},
        {"/home/bob/Downloads/x.jpg", true, false, false}, // another user's home
        {"/run/media/ada/USB/x.jpg", false, true, false},
        {"/tmp/x", false, true, false},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(DC::isProtectedPath(r.path, kHome), r.isProtected) << r.path;
        EXPECT_EQ(DC::canCleanDuplicatePath(r.path, kHome), r.duplicate) << r.path;
        EXPECT_EQ(DC::canCleanCachePath(r.path, kHome, {}), r.cache) << r.path;
    }
    // A home kept under a system root stays its owner's: only the rest of that root is system.
    for (const std::string home : {"/root", "/var/home/ada"}) {
        EXPECT_TRUE(DC::canCleanDuplicatePath(home + "/Downloads/x.jpg", home)) << home;
        EXPECT_TRUE(DC::canCleanCachePath(home + "/.cache/npm-tool", home, {})) << home;
        EXPECT_FALSE(DC::canCleanDuplicatePath("/var/lib/x", home)) << home;
    }
    // A catalogue row inside an app-data place is a known area there; no other folder is.
    EXPECT_TRUE(DC::isKnownCachePath(H(".local/share/containers/podman/machine/x"), kHome));
    EXPECT_FALSE(DC::isKnownCachePath(H(".local/share/containers/storage"), kHome));
}

TEST(PathLaw, LooksPrivate) {
    const std::pair<const char*, bool> cases[] = {
        {".hidden", true},   {"auth-tokens", true}, {"MyPassword", true},    {"huggingface", true},
        {"gcloud-config", true}, {"Keychain", true}, {"npm-tool", false},    {"pip", false},
        {"ms-playwright", false}, {"", false},      {"Cookies.db", true},    {"pemberton", true},
    };
    for (const auto& [name, expected] : cases) EXPECT_EQ(DC::looksPrivate(name), expected) << name;
}

TEST(PathLaw, CanCleanCachePath) {
    const Case cases[] = {
        // ~/Library is protected and no known area: refused; a known area admitted by its row.
        {H("Library"), false},
        {H("Library/Caches/Homebrew"), true},
        {H("Library/Caches/Homebrew/downloads/x.tar.gz"), true},
        {H("Library/Caches"), false},             // known area, but no row admits the folder itself
        {H("Library/Caches/Foo"), false},         // ... nor a child without the suffix
        {H("Library/Caches/com.foo.ShipIt"), true},
        {H("Library/Caches/com.foo.shipit"), true}, // the suffix is compared in lower case
        {H("Library/Caches/.ShipIt"), false},     // not longer than the suffix
        {H("Library/Caches/auth.ShipIt"), false}, // private
        {H("Library/Application Support/Caches/notion-updater"), true},
        {H("Library/Application Support/Foo"), false},
        // ~/.cache: children admitted unless private; the folder itself never.
        {H(".cache"), false},
        {H(".cache/npm-tool"), true},
        {H(".cache/npm-tool/deep/file"), true},
        {H(".cache/auth-tokens"), false},
        {H(".cache/.hidden"), false},
        {H(".cache/huggingface/hub"), false},
        {H(".cache/pip/.git/x"), false},
        {H(".npm/_cacache"), true},
        {H(".npm/_cacache/../_logs"), false},
        {H(".npm"), false},
        {H(".gradle/wrapper/dists"), false},
        {H(".gradle/wrapper/dists/gradle-8.5-bin"), true},
        {H(".expo/web-cache"), true},
        {H(".expo/state.json"), false},
        {H(".expo"), false},
        {H(".ollama/models/blobs"), false},       // shown for size only
        {H("Library/Developer/CoreSimulator/Devices/ABC"), false},
        {H(".m2/repository/org"), true},
        {H(".m2/settings.xml"), false},
        {H(".android/cache"), true},
        {H(".android/avd/Pixel.avd"), false},
        {H("go/pkg/mod/cache/download"), true},
        {H("Library/Caches/pip/.git"), false},
        {H("Library/caches/pip"), false},         // case counts
        {kHome, false},
        {"/System/Library/Caches/x", false},
        {"/tmp/.npm/_cacache", false},
        {".npm/_cacache", false},                 // relative text is never judged cleanable
    };
    for (const auto& c : cases) EXPECT_EQ(DC::canCleanCachePath(c.path, kHome, {}), c.expected) << c.path;
}

TEST(PathLaw, NodeVersionsKeepTheKeptOnes) {
    const DC::KeptVersions kept{"20.11.1"};
    EXPECT_FALSE(DC::canCleanCachePath(H(".nvm/versions/node/v20.11.1"), kHome, kept));
    EXPECT_FALSE(DC::canCleanCachePath(H(".nvm/versions/node/V20.11.1/bin/node"), kHome, kept));
    EXPECT_TRUE(DC::canCleanCachePath(H(".nvm/versions/node/v18.19.0"), kHome, kept));
    EXPECT_FALSE(DC::canCleanCachePath(H(".nvm/versions/node"), kHome, kept));
    EXPECT_TRUE(DC::canCleanCachePath(H(".nvm/versions/node/v20.11.1"), kHome, {}));
}

// Which toolchains are kept is KeptVersionsTest's; here the row admits all but those.
TEST(PathLaw, RustDefaultToolchainIsKept) {
    const std::string home = bv::test::TestEnvironment::freshFolder("rust-home");
    const std::string toolchains = home + "/.rustup/toolchains";
    for (const char* name : {"stable-x86_64-unknown-linux-gnu", "nightly-x86_64-unknown-linux-gnu"})
        bv::test::makeDir(toolchains + "/" + name);
    bv::test::writeFile(home + "/.rustup/settings.toml", "default_toolchain = \"stable\"\n");
    EXPECT_FALSE(DC::canCleanCachePath(toolchains + "/stable-x86_64-unknown-linux-gnu/lib", home, {}));
    EXPECT_TRUE(DC::canCleanCachePath(toolchains + "/nightly-x86_64-unknown-linux-gnu", home, {}));
    EXPECT_FALSE(DC::canCleanCachePath(toolchains, home, {}));
    EXPECT_FALSE(DC::canCleanCachePath(home + "/.rustup/settings.toml", home, {}));
}

TEST(PathLaw, CanCleanRulePath) {
    struct Row {
        std::string path, folder;
        bool expected;
    };
    const Row rows[] = {
        {H("Projects/site/dist/app.js"), H("Projects/site"), true},
        {H("Projects/site"), H("Projects/site"), false},      // the folder itself
        {H("Projects/site/"), H("Projects/site"), false},
        {H("Projects/other/x"), H("Projects/site"), false},
        {H("Projects/site2/x"), H("Projects/site"), false},
        {H("Projects/site/../other/x"), H("Projects/site"), false},
        {H("Projects/site/.git/index"), H("Projects/site"), false},
        {H("Projects"), kHome, false},                        // a project root itself
        {H("work"), kHome, false},
        {H("Developer"), kHome, false},
        {H("Projects/site"), kHome, true},                    // deeper passes
        {H("Documents/old.txt"), H("Documents"), false},
        {H("Library/Caches/x"), H("Library/Caches"), false},
        {H("scratch/tmp.txt"), kHome, true},
        {kHome, kHome, false},
        {"", H("Projects"), false},
        {H("Projects/x"), "", false},
        {H("projects/x"), H("Projects"), false},              // case counts
    };
    for (const auto& r : rows) EXPECT_EQ(DC::canCleanRulePath(r.path, r.folder, kHome), r.expected) << r.path << " in " << r.folder;
}

TEST(PathLaw, CanCleanDuplicatePath) {
    const Case cases[] = {
        {H("Downloads/photo (1).jpg"), true},
        {H("Desktop/a.pdf"), true},
        {H("Pictures/x/y.png"), true},
        {H("Movies/clip.mov"), true},
        {H("Music/song.mp3"), true},
        {H("Documents/a.txt"), true},
        {H(".ssh/id_rsa.bak"), false},
        {H("Library/Mail/x"), false},
        {H("Public/x"), false},
        {H(".config/app/x"), false},
        {H("Projects/a/.git/objects/ab"), false},
        {H("Projects/a/b.txt"), true},
        {kHome, false},
        {"/Applications/Foo.app/x", false},
        {H("Downloads/../.ssh/id_rsa"), false},
    };
    for (const auto& c : cases) EXPECT_EQ(DC::canCleanDuplicatePath(c.path, kHome), c.expected) << c.path;
}

TEST(PathLaw, CanCleanOrphanPath) {
    const Case cases[] = {
        {H("Library/Containers/com.gone.app"), true},
        {H("Library/Application Support/GoneApp"), true},
        {H("Library/Application Support/GoneApp/data"), false}, // not a direct child
        {H("Library/Preferences/com.gone.app.plist"), true},
        {H("Library/Preferences/ByHost/com.gone.app.ABC.plist"), true},
        {H("Library/Caches/com.apple.Safari"), false},
        {H("Library/Caches/iCloudDrive"), false},
        {H("Library/Caches/Apple"), false},
        {H("Library/Caches/my.com.apple.fork"), false},
        {H("Library/Mail/x"), false},
        {H("Library/Containers"), false},
        {H("Library"), false},
        {H("Documents/x"), false},
        {H("Library/Containers/../Mail"), false},
    };
    for (const auto& c : cases) EXPECT_EQ(DC::canCleanOrphanPath(c.path, kHome), c.expected) << c.path;

    const std::pair<const char*, bool> names[] = {{"com.apple", true},   {"Apple", true},       {"x.com.apple.y", true},
                                                  {"com.icloud.x", true}, {"iCloud Drive", true}, {"applesauce", false},
                                                  {"com.apples", false},  {"my-icloud", false}};
    for (const auto& [name, expected] : names) EXPECT_EQ(DC::isAppleOwnedName(name), expected) << name;
}

TEST(PathLaw, UnsafeRuleFolders) {
    const Case cases[] = {
        {"", true},
        {"/", true},
        {"/Volumes", true},
        {"/Volumes/Drive", true},
        {"/Volumes/Drive/", true},
        {"/Volumes/Drive/Projects", false},
        {"/media/ada/USB", true},
        {"/media/ada", true},
        {"/media/ada/USB/work", false},
        {"/run/media/ada/USB", true},
        {"/mnt/backup", true},
        {"/mnt/backup/old", false},
        {"/Users", true},
        {"/usr", true},
        {"/usr/local/src/x", true},
        {"/srv/www", true},
        {"/home/bob/Projects", true},   // another user's home
        {H(".local/lib/python3/site-packages"), true},
        {H(".mozilla"), true},
        {"/home", true},          // the home folder's parent
        {kHome, true},
        {kHome + "/.", true},
        {H("Documents"), true},
        {H("Documents/Work"), true},
        {H("Library"), true},
        {H("Projects"), false},
        {H("Projects/site"), false},
        {H("Projects/site/.git"), true},
        {"relative/folder", true},
    };
    for (const auto& c : cases) EXPECT_EQ(DC::isUnsafeRuleFolder(c.path, kHome), c.expected) << c.path;
}
