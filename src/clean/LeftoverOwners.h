#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bv {

// Where app leftovers are looked for: the library folders, in case order, then the places
// Linux keeps per-app data. Text values are the case names.
enum class OrphanLocation {
    containers, groupContainers, applicationSupport, caches, preferences, preferencesByHost, savedState,
    httpStorages, cookies, webKit, logs, launchAgents, applicationScripts,
    flatpakData,  // ~/.var/app/<app-id>: the folder is named by the app's id
    settings,     // ~/.config/<name>
    appData,      // ~/.local/share/<name>
    cache,        // ~/.cache/<name>
    loginItem,    // ~/.config/autostart/<name>.desktop
};

[[nodiscard]] std::string_view textValue(OrphanLocation location);

// Names and owners of the children found in leftover locations. Pure: no disk.
class LeftoverOwners {
public:
    // Every location, in case order.
    [[nodiscard]] static const std::vector<OrphanLocation>& locations();
    // The location's folder relative to home ("Library/Caches", ".var/app", ".config").
    [[nodiscard]] static std::string_view relativeFolder(OrphanLocation location);
    // The word an entry's title carries: "Container", "Settings", "Login item"...
    [[nodiscard]] static std::string_view label(OrphanLocation location);
    // Whether the location is one of Linux's own places rather than a library folder.
    [[nodiscard]] static bool isLinuxPlace(OrphanLocation location);

    struct KnownApp {
        std::string name;
        std::vector<std::string> identifiers; // lower-case
        std::vector<std::string> folderNames; // lower-case
    };
    // The 30 rows that tie odd folder names to an owner.
    [[nodiscard]] static const std::vector<KnownApp>& knownApps();
    // The row whose identifiers or folder names equal the lower-cased name, or nullptr.
    [[nodiscard]] static const KnownApp* knownApp(std::string_view name);

    // The owner name a child of a location stands for, or nothing when the child names no
    // owner (hidden, wrong suffix, the system's own, or private-looking and not known). A
    // container named by a UUID gives nothing here: its owner comes from its metadata.
    [[nodiscard]] static std::optional<std::string> ownerName(std::string_view childName, OrphanLocation location);

    // At least two non-empty dot-separated parts, no blank and no "/".
    [[nodiscard]] static bool isBundleLike(std::string_view name);
    // A bundle-like name that reads as a reverse-DNS app id: three or more parts of letters,
    // digits, "-" and "_", the first of lower-case letters ("org.example.App").
    [[nodiscard]] static bool isReverseDnsId(std::string_view name);
    // Whether a name names an app identity in this location: reverse-DNS ids in the XDG
    // folders (where "user-dirs.dirs" and "app.conf" are plain files), bundle-like elsewhere.
    [[nodiscard]] static bool namesAnApp(std::string_view name, OrphanLocation location);
    // The operating system's and the desktop's own names: the maker's ("com.apple...",
    // "icloud...") and the folders every Linux desktop keeps ("dconf", "gtk-3.0", "pulse",
    // "autostart", "Trash", "flatpak" and their like), never offered as leftovers.
    [[nodiscard]] static bool isSystemOwnedName(std::string_view name);
    // The UUID pattern of containers named by their manager.
    [[nodiscard]] static bool isUuidName(std::string_view name);
    // A display name for an owner with no row, capitalised: the last part of an app id, or
    // the whole name of anything else ("sometool.conf" stays whole).
    [[nodiscard]] static std::string displayName(std::string_view name, bool isAppId);
};

} // namespace bv
