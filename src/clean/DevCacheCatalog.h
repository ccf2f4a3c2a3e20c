#pragma once
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace bv {

// The fixed table, compiled in, of the folders developer tools fill and that come back on
// their own, plus large folders that are only shown. Nothing outside it is ever offered as
// a developer cache, and the path law below admits only what a row of it admits.
//
// The path law: pure functions over path text with the home folder as an input. None
// touches the disk except catalogAllows (and canCleanCachePath through it), which for the
// Rust toolchain row lists ~/.rustup/toolchains and reads ~/.rustup/settings.toml. Every
// function standardizes its arguments first, so "..", "." and trailing "/" cannot fool it.
// "Below R" always means: equal to R, or beginning with R + "/"; comparison is by exact
// bytes, case included.
class DevCacheCatalog {
public:
    // How a row's folder is scanned and what in it is admitted. A tagged value: only
    // `suffixedChildren` carries a payload, the suffix.
    struct Behavior {
        enum class Case {
            suffixedChildren,      // each direct child whose name ends in `suffix`
            directory,             // the folder as a whole
            children,              // each direct child, unless it looks private
            nodeVersions,          // each installed runtime version; the default stays
            gradleDistributions,   // each build tool distribution; the newest stays
            expoCaches,            // only children with "cache" in the name
            reviewOnly,            // shown for size, never cleaned
            rustToolchains,        // each toolchain; the default and overrides stay
            unavailableSimulators, // one row for what the simulator tool would delete
        };
        Case kind = Case::directory;
        std::string suffix; // only for suffixedChildren

        [[nodiscard]] static Behavior suffixed(std::string suffixText) {
            return {Case::suffixedChildren, std::move(suffixText)};
        }
        bool operator==(const Behavior&) const = default;
    };

    struct Recipe {
        std::string id;           // stable key; scan row ids begin with it
        std::string title;
        std::string relativePath; // under the home folder
        std::string note;         // what happens if it goes
        std::string group;        // "Packages", "Build tools", "Apple", ...
        Behavior behavior;
        std::optional<std::string> toolCommand;
        bool optIn = false;       // never part of "Select recommended"

        bool operator==(const Recipe&) const = default;
    };

    // Kept runtime versions: names lower-cased and without a leading "v" ("20.11.1").
    using KeptVersions = std::set<std::string>;

    // The 81 rows, in scan order.
    [[nodiscard]] static const std::vector<Recipe>& recipes();
    // The row with this id, or nullptr.
    [[nodiscard]] static const Recipe* recipe(std::string_view id);

    // ---- The lists the law uses, each in its testing order ----
    // Home-relative folders off limits as a whole. The 27 names come first; the Linux places
    // follow that hold what the Library folder holds elsewhere: ~/.local as a whole, Flatpak
    // and snap app data, browser and mail profiles, Wine prefixes, certificate and password
    // stores (~/.config and ~/.gnupg are among the 27).
    [[nodiscard]] static const std::vector<std::string>& protectedNames();
    // The six protected folders duplicate removal may pass through.
    [[nodiscard]] static const std::vector<std::string>& userContentFolders();
    // The 47 home-relative areas that stay cleanable inside a protected folder, then the
    // folders of catalogue rows that lie inside the Linux app-data places.
    [[nodiscard]] static const std::vector<std::string>& knownCacheAreas();
    // "Projects", "work", "Developer": a rule may clean inside, never be aimed at them.
    [[nodiscard]] static const std::vector<std::string>& projectRoots();
    // The absolute folders a rule folder may never be: the twelve, then Linux's own.
    [[nodiscard]] static const std::vector<std::string>& systemRoots();
    // The 16 lower-case words that make a name private.
    [[nodiscard]] static const std::vector<std::string>& privateWords();
    // The 13 home-relative library folders app leftovers live in, in case order.
    [[nodiscard]] static const std::vector<std::string>& orphanLocationFolders();

    // ---- The path law ----
    // "." and ".." removed (".." above "/" stays at "/"), repeated slashes collapsed, one
    // trailing "/" dropped; "/" stays "/" and "" stays "". Purely textual: links are not
    // followed, so callers pass the resolved path beside the path where it matters.
    [[nodiscard]] static std::string standardizedPath(std::string_view path);
    // True only if `path` and `resolvedPath` are both below `root`. An empty root admits nothing.
    [[nodiscard]] static bool isInsideRoot(std::string_view path, std::string_view resolvedPath, std::string_view root);
    // Below the operating system's own folders: "/System", "/Applications", and on Linux /usr,
    // /etc, /boot, /lib*, /bin, /sbin, /opt, /proc, /sys, /dev, /run (but not the drives under
    // /run/media), /srv, /root, /var and /snap.
    [[nodiscard]] static bool isSystemPath(std::string_view path);
    // The system as this user sees it: a system path outside their own home (a home kept under
    // /var or /root stays theirs), or another user's home under /home.
    [[nodiscard]] static bool isSystemArea(std::string_view path, std::string_view home);
    // Some component is exactly ".git".
    [[nodiscard]] static bool hasGitComponent(std::string_view path);
    // Home itself, a system area, a ".git" path, or below a protected name.
    [[nodiscard]] static bool isProtectedPath(std::string_view path, std::string_view home);
    // Below one of the known cache areas.
    [[nodiscard]] static bool isKnownCachePath(std::string_view path, std::string_view home);
    // A name that must not be treated as a cache: hidden, or holding a private word.
    [[nodiscard]] static bool looksPrivate(std::string_view name);
    // Some catalogue row admits the path (first row that does answers yes).
    [[nodiscard]] static bool catalogAllows(std::string_view path, std::string_view home, const KeptVersions& kept);
    // The full test of a developer cache entry.
    [[nodiscard]] static bool canCleanCachePath(std::string_view path, std::string_view home, const KeptVersions& kept);
    // The full test of a folder rule's match: strictly inside the rule folder, never
    // protected, never a project root itself.
    [[nodiscard]] static bool canCleanRulePath(std::string_view path, std::string_view ruleFolder, std::string_view home);
    // The full test of a redundant duplicate copy.
    [[nodiscard]] static bool canCleanDuplicatePath(std::string_view path, std::string_view home);
    // The full test of an app leftover: a direct child of one of the library folders.
    [[nodiscard]] static bool canCleanOrphanPath(std::string_view path, std::string_view home);
    // A name the operating system's maker owns ("com.apple...", "icloud...").
    [[nodiscard]] static bool isAppleOwnedName(std::string_view name);
    // A folder the user may not pick for a rule: "/", whole drives, system roots, home and
    // its ancestors, protected folders.
    [[nodiscard]] static bool isUnsafeRuleFolder(std::string_view folder, std::string_view home);

    // What the model says when the rule folder picker returns an unsafe folder, and when a
    // rule preview is asked for one.
    static constexpr const char* kUnsafeRuleFolderPicked =
        "That folder is kept safe. Choose a project folder instead. Your home folder, whole drives, Desktop, "
        "Documents, Downloads, Pictures, Movies, Music, and Library can\u2019t be cleaned automatically.";
    static constexpr const char* kUnsafeRuleFolderPreview =
        "That folder is kept safe. Pick a project folder, then preview again.";
};

} // namespace bv
