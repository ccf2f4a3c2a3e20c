#pragma once
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "buildwatch/BuildStack.h"

namespace bv {

// The fixed knowledge of Build Watch: which project kinds exist and how a folder is known as
// one, which sub-folders of a project the next build recreates (the pattern table: nothing
// else can ever make a folder a build target), which folders a walk never enters, which
// paths can never be watched, and which process names mean a build is running.
//
// Pure functions over names and paths. The disk is read only to resolve links when a path
// is standardised, and to read the user's folder names (user-dirs.dirs) for the home folders.
class BuildWatchCatalog {
public:
    struct Pattern {
        BuildStack stack;
        std::vector<std::string> manifests;  // one must stand in the anchor; compared in lower case
        std::vector<std::string> components; // "*" = any one visible component; "Debug*" = prefix
        std::string title;
        std::vector<std::string> lowerManifests = {}; // `manifests` lower-cased, made with the table
    };

    // The names of one folder, lower-cased once for the lookups below.
    using NameSet = std::unordered_set<std::string>;
    [[nodiscard]] static NameSet lowerNames(const std::vector<std::string>& names);

    // The 26 rows, in the order they are tried.
    [[nodiscard]] static const std::vector<Pattern>& patterns();
    // The 20 lower-case folder names a project walk never enters.
    [[nodiscard]] static const std::vector<std::string>& walkStopList();
    // The 9 path extensions (lower case, no dot) whose folders a walk never enters.
    [[nodiscard]] static const std::vector<std::string>& packageExtensions();
    // Whether a walk skips a child of this name: hidden, on the stop list, or a package.
    [[nodiscard]] static bool walkSkips(std::string_view name);

    // The stacks of a folder from its names, in the fixed order (rust or tauri, swiftPackage,
    // xcode, node, gradle, flutter, python). A Tauri project is never also rust.
    [[nodiscard]] static std::vector<BuildStack> recognizeStacks(const std::vector<std::string>& names);
    [[nodiscard]] static std::vector<BuildStack> recognizeStacks(const NameSet& lowerNames);
    // Whether a name shows an Xcode project (".xcodeproj" or ".xcworkspace", any case).
    [[nodiscard]] static bool isXcodeProjectName(std::string_view name);
    // Whether a name, in any case, is one that recognising stacks or a non-Xcode row looks
    // for. A folder none of whose names is gives no stacks and no rows, so walks can pass it
    // by without building its name set.
    [[nodiscard]] static bool isProjectFileName(std::string_view name);

    // The rows that apply to a folder with these names, in table order: only Xcode rows when
    // `xcodeOnly`, only the others otherwise.
    [[nodiscard]] static std::vector<const Pattern*> applicablePatterns(const NameSet& lowerNames, bool xcodeOnly);
    [[nodiscard]] static std::vector<const Pattern*> applicablePatterns(const std::vector<std::string>& names,
                                                                        bool xcodeOnly);
    // The first row matching a path relative to the anchor (split into components), or null.
    [[nodiscard]] static const Pattern* matchRelativePath(const std::vector<std::string>& components,
                                                          const std::vector<std::string>& anchorNames, bool xcodeOnly);
    // Whether one path component fits one pattern component.
    [[nodiscard]] static bool componentMatches(std::string_view patternComponent, std::string_view component);

    // The folders under a home folder that can never be watched, standardised.
    struct HomeFolders {
        std::string home;
        std::vector<std::string> exactOnly; // refused themselves, but not what is inside
        std::vector<std::string> whole;     // refused together with everything inside
        std::string derivedDataRoot;        // home/Library/Developer/Xcode/DerivedData
        std::string desktop, documents;     // the user's own, localised where theirs are
    };
    // The 27 home names plus this system's own (.local, .var, snap, .cache, .cargo, ...). The
    // exact-only ones are the user's folders as xdg-user-dirs names them (Desktop, Documents,
    // Downloads, Pictures, Videos, Music, localised where the user's are) and Movies.
    [[nodiscard]] static HomeFolders homeFolders(const std::string& home);

    // A path with its links resolved as far as it exists, then standardised (no ".", "..",
    // doubled or trailing "/").
    [[nodiscard]] static std::string standardizedPath(const std::string& path);

    // Whether this folder may never be a watched project.
    [[nodiscard]] static bool isBlockedFolder(const std::string& path, const std::string& home);
    [[nodiscard]] static bool isBlockedFolder(const std::string& path, const HomeFolders& home);
    // The same for a path standardised already (a walk below a standardised root that enters
    // real folders only), without resolving it again.
    [[nodiscard]] static bool isBlockedStandardizedFolder(const std::string& standardized, const HomeFolders& home);
    // Whether the path is one of the exact-only home folders (searched, never watched).
    [[nodiscard]] static bool isExactOnlyHomeFolder(const std::string& path, const HomeFolders& home);

    // The check between a measured folder and its removal: the target strictly inside the
    // anchor, the anchor inside the project (or a DerivedData folder), no protected place,
    // and a pattern row that names it relative to the anchor.
    [[nodiscard]] static bool isAllowedTarget(const std::string& target, const std::string& anchor,
                                              const std::string& project, const std::vector<std::string>& anchorNames,
                                              const std::string& home);

    // The lower-case process names that mean a build of one of these stacks is running.
    [[nodiscard]] static std::set<std::string> toolsForStacks(const std::vector<BuildStack>& stacks);
};

} // namespace bv
