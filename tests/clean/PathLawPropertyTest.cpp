// Generated paths against an independent reading of what they mean: whatever mix of ".",
// "..", repeated slashes, links and non-Latin names a path holds, the law never calls a
// path inside a root it isn't in, and never admits a path outside the areas it allows.
#include <gtest/gtest.h>

#include <filesystem>
#include <cstdlib>
#include <random>
#include <set>

#include "clean/DevCacheCatalog.h"
#include "support/TestEnvironment.h"

using namespace bv;
using DC = DevCacheCatalog;
namespace fs = std::filesystem;

namespace {

using Parts = std::vector<std::string>;

// The reference reading: rewrite the text until nothing changes, then split it. Written
// without the stack the law uses, so the two can disagree if either is wrong.
Parts referenceParts(std::string p) {
    p += "/"; // every component now ends in a slash, so one set of rules covers the end too
    bool changed = true;
    while (changed) {
        changed = false;
        auto replaceAll = [&](const std::string& from, const std::string& to) {
            for (auto at = p.find(from); at != std::string::npos; at = p.find(from)) {
                p.replace(at, from.size(), to);
                changed = true;
            }
        };
        replaceAll("//", "/");
        replaceAll("/./", "/");
        if (p.starts_with("/../")) {
            p.erase(0, 3);
            changed = true;
        }
        // "/name/../" with a real name collapses to "/".
        for (std::size_t at = p.find("/../"); at != std::string::npos && at > 0; at = p.find("/../", at + 1)) {
            const auto start = p.rfind('/', at - 1);
            if (p.compare(start + 1, at - start - 1, "..") != 0) {
                p.erase(start, at + 3 - start);
                changed = true;
                break;
            }
        }
    }
    Parts parts;
    std::size_t start = 1;
    while (start < p.size()) {
        auto end = p.find('/', start);
        if (end == std::string::npos) end = p.size();
        if (end > start) parts.push_back(p.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

bool startsWithParts(const Parts& path, const Parts& root) {
    return path.size() >= root.size() && std::equal(root.begin(), root.end(), path.begin());
}

bool hasPart(const Parts& parts, const std::string& name) {
    return std::find(parts.begin(), parts.end(), name) != parts.end();
}

Parts split(const std::string& relative) { return referenceParts("/" + relative); }

Parts join(Parts a, const Parts& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

class PathMaker {
public:
    explicit PathMaker(std::uint32_t seed) : rng_(seed) {}

    std::string make(const std::string& base, int maxParts) {
        std::string p = base;
        const int n = pick(maxParts + 1);
        for (int i = 0; i < n; ++i) {
            p += slashes();
            p += kPool[pick(static_cast<int>(std::size(kPool)))];
        }
        if (pick(4) == 0) p += slashes();
        return p;
    }
    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng_); }

private:
    std::string slashes() { return pick(5) == 0 ? std::string(static_cast<std::size_t>(2 + pick(2)), '/') : "/"; }

    static constexpr const char* kPool[] = {
        ".", "..", "..", "...", ".git", "home", "ada", "Library", "Caches", "Homebrew", "Foo.ShipIt", ".cache",
        "npm-tool", "auth-token", ".npm", "_cacache", "Projects", "site", "Downloads", "Documents", ".ssh",
        ".rustup", "toolchains", "stable-x", "Desktop", "Bücher", "日本語", "é", "link-out", "link-in", "x",
        "Containers", "com.gone", "com.apple.x", "System", "Applications", ".nvm", "versions", "node", "v20.1.0",
        "Application Support", "Caches", "work", "Library/Caches", "...", "usr", "lib64", "run", "media", "bob",
        ".local", "lib", ".mozilla", ".var"};
    std::mt19937 rng_;
};

const std::string kHome = "/home/ada";
// Enough to reach every rule in CI; BV_PROPERTY_ROUNDS=120000 runs the long search.
const int kRounds = [] {
    const char* env = std::getenv("BV_PROPERTY_ROUNDS");
    return env ? std::max(1000, std::atoi(env)) : 20'000;
}();

} // namespace

TEST(PathLawProperty, ReferenceReadingAgreesOnKnownCases) {
    EXPECT_EQ(referenceParts("/a/b/../c/./"), (Parts{"a", "c"}));
    EXPECT_EQ(referenceParts("/../../a//b/.."), (Parts{"a"}));
    EXPECT_EQ(referenceParts("/a/../.."), Parts{});
}

TEST(PathLawProperty, StandardFormIsStableAndMatchesTheReference) {
    PathMaker maker(1);
    for (int i = 0; i < kRounds; ++i) {
        const std::string p = maker.make(maker.pick(2) ? "" : kHome, 10);
        const std::string s = DC::standardizedPath(p.empty() ? "/" : p);
        ASSERT_EQ(DC::standardizedPath(s), s) << p;
        ASSERT_EQ(referenceParts(s), referenceParts(p.empty() ? "/" : p)) << p;
        ASSERT_TRUE(s == "/" || !s.ends_with("/")) << p;
        ASSERT_EQ(s.find("//"), std::string::npos) << p;
    }
}

TEST(PathLawProperty, NothingOutsideARootIsReportedInsideIt) {
    // A real tree with links, so the resolved side is what the disk says.
    const std::string base = bv::test::TestEnvironment::freshFolder("property");
    const std::string root = base + "/home/ada/Projects";
    bv::test::makeDir(root + "/site");
    bv::test::makeDir(base + "/outside");
    fs::create_directory_symlink(base + "/outside", root + "/link-out");
    fs::create_directory_symlink(root + "/site", root + "/link-in");

    PathMaker maker(2);
    int inside = 0;
    for (int i = 0; i < kRounds; ++i) {
        const std::string p = maker.make(root, 6);
        std::error_code ec;
        const std::string resolved = fs::weakly_canonical(p, ec).string();
        if (ec) continue;
        const bool claimed = DC::isInsideRoot(p, resolved, root);
        const Parts rootParts = referenceParts(root);
        const bool truly = startsWithParts(referenceParts(p), rootParts) &&
                           startsWithParts(referenceParts(resolved), rootParts);
        ASSERT_EQ(claimed, truly) << p << " -> " << resolved;
        // A path through the outward link is never inside, whatever its text says.
        if (claimed) {
            ASSERT_EQ(resolved.find(base + "/outside"), std::string::npos) << p;
        }
        inside += claimed;
    }
    EXPECT_GT(inside, kRounds / 120) << "the generator should reach inside the root often";
}

TEST(PathLawProperty, NoCleanTestAdmitsAPathOutsideItsAreas) {
    const Parts home = referenceParts(kHome);
    std::vector<Parts> cacheRoots;
    for (const auto& r : DC::recipes()) {
        using Case = DC::Behavior::Case;
        if (r.behavior.kind == Case::reviewOnly || r.behavior.kind == Case::unavailableSimulators) continue;
        cacheRoots.push_back(join(home, split(r.relativePath)));
    }
    auto underProtected = [&](const Parts& p, bool skipContent) {
        for (const auto& name : DC::protectedNames()) {
            const auto& content = DC::userContentFolders();
            if (skipContent && std::find(content.begin(), content.end(), name) != content.end()) continue;
            if (startsWithParts(p, join(home, split(name)))) return true;
        }
        return false;
    };
    // The system roots, each read as a first component; the made-up user's home is /home/ada,
    // so any other folder under /home is another user's.
    auto isSystem = [&](const Parts& p) {
        static const std::set<std::string> roots{"System", "Applications", "usr", "etc", "boot", "bin", "sbin", "opt",
                                                 "proc", "sys", "dev", "srv", "root", "var", "snap"};
        if (p.empty()) return false;
        if (roots.contains(p[0]) || p[0].starts_with("lib")) return true;
        if (p[0] == "run") return !(p.size() > 1 && p[1] == "media");
        return p[0] == "home" && p.size() > 1 && p[1] != home[1];
    };

    PathMaker maker(3);
    int admitted = 0;
    for (int i = 0; i < kRounds; ++i) {
        const std::string p = maker.make(maker.pick(4) ? kHome : "", 8);
        if (p.empty()) continue;
        const Parts parts = referenceParts(p);
        const bool git = hasPart(parts, ".git") || hasPart(split(p), ".git");

        if (DC::canCleanCachePath(p, kHome, {})) {
            ++admitted;
            ASSERT_FALSE(git) << p;
            ASSERT_TRUE(startsWithParts(parts, home) && parts.size() > home.size()) << p;
            ASSERT_TRUE(std::any_of(cacheRoots.begin(), cacheRoots.end(),
                                    [&](const Parts& r) { return startsWithParts(parts, r); }))
                << p;
        }
        const std::string folder = maker.make(kHome, 3);
        if (DC::canCleanRulePath(p, folder, kHome)) {
            ++admitted;
            const Parts f = referenceParts(folder);
            ASSERT_FALSE(git) << p;
            ASSERT_TRUE(startsWithParts(parts, f) && parts.size() > f.size()) << p << " in " << folder;
            ASSERT_FALSE(underProtected(parts, false)) << p;
            ASSERT_FALSE(isSystem(parts)) << p;
            ASSERT_NE(parts, home) << p;
        }
        if (DC::canCleanDuplicatePath(p, kHome)) {
            ASSERT_FALSE(git) << p;
            ASSERT_FALSE(underProtected(parts, true)) << p;
            ASSERT_FALSE(isSystem(parts)) << p;
            ASSERT_NE(parts, home) << p;
        }
        if (DC::canCleanOrphanPath(p, kHome)) {
            ++admitted;
            ASSERT_FALSE(git) << p;
            bool directChild = false;
            for (const auto& folderName : DC::orphanLocationFolders()) {
                const Parts r = join(home, split(folderName));
                directChild |= startsWithParts(parts, r) && parts.size() == r.size() + 1;
            }
            ASSERT_TRUE(directChild) << p;
        }
    }
    EXPECT_GT(admitted, kRounds / 240) << "the generator should reach admitted areas often";
}
