#include "clean/LeftoverOwners.h"

#include <algorithm>
#include <cctype>

#include "clean/DevCacheCatalog.h"
#include "foundation/AsciiCase.h"

namespace bv {
namespace {

struct LocationRow {
    OrphanLocation location;
    const char* text;
    const char* folder;
    const char* label;
};

const LocationRow kLocations[] = {
    {OrphanLocation::containers, "containers", "Library/Containers", "Container"},
    {OrphanLocation::groupContainers, "groupContainers", "Library/Group Containers", "Group container"},
    {OrphanLocation::applicationSupport, "applicationSupport", "Library/Application Support", "Application Support"},
    {OrphanLocation::caches, "caches", "Library/Caches", "Cache"},
    {OrphanLocation::preferences, "preferences", "Library/Preferences", "Preferences"},
    {OrphanLocation::preferencesByHost, "preferencesByHost", "Library/Preferences/ByHost", "Preferences"},
    {OrphanLocation::savedState, "savedState", "Library/Saved Application State", "Saved window state"},
    {OrphanLocation::httpStorages, "httpStorages", "Library/HTTPStorages", "Web storage"},
    {OrphanLocation::cookies, "cookies", "Library/Cookies", "Cookies"},
    {OrphanLocation::webKit, "webKit", "Library/WebKit", "WebKit data"},
    {OrphanLocation::logs, "logs", "Library/Logs", "Logs"},
    {OrphanLocation::launchAgents, "launchAgents", "Library/LaunchAgents", "Login agent"},
    {OrphanLocation::applicationScripts, "applicationScripts", "Library/Application Scripts", "Scripts"},
    {OrphanLocation::flatpakData, "flatpakData", ".var/app", "App data"},
    {OrphanLocation::settings, "settings", ".config", "Settings"},
    {OrphanLocation::appData, "appData", ".local/share", "App data"},
    {OrphanLocation::cache, "cache", ".cache", "Cache"},
    {OrphanLocation::loginItem, "loginItem", ".config/autostart", "Login item"},
};

const LocationRow& rowOf(OrphanLocation location) { return kLocations[static_cast<int>(location)]; }

bool endsWith(std::string_view text, std::string_view tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

bool isHex(char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; }

// Removes a required suffix; nothing when the name does not end in it.
std::optional<std::string> withoutSuffix(std::string_view name, std::string_view suffix) {
    if (!endsWith(name, suffix)) return std::nullopt;
    return std::string(name.substr(0, name.size() - suffix.size()));
}

// The folders and files every Linux desktop keeps in the XDG places, lower-cased.
const std::vector<std::string>& desktopOwnNames() {
    static const std::vector<std::string> names{
        "dconf", "gtk-2.0", "gtk-3.0", "gtk-4.0", "pulse", "pipewire", "wireplumber", "systemd", "autostart",
        "fontconfig", "fonts", "ibus", "user-dirs.dirs", "user-dirs.locale", "mimeapps.list", "menus",
        "environment.d", "xdg-desktop-portal", "gnome-session", "gvfs-metadata", "recently-used.xbel", "trash",
        "applications", "icons", "keyrings", "sounds", "themes", "mime", "desktop-directories", "flatpak", "snap",
        "tracker", "tracker3", "thumbnails", "mesa_shader_cache", "gstreamer-1.0", "at-spi", "at-spi2",
        "dbus-1", "kdeglobals", "plasma-org.kde.plasma.desktop-appletsrc", "kwinrc", "baloo", "akonadi",
        "session", "xsettingsd", "qt5ct", "qt6ct", "kde.org", "brimvale", "nvidia", "gnome-shell",
        "evolution", "goa-1.0", "gnome-settings-daemon", "ubuntu-report", "update-notifier", "gpg",
    };
    return names;
}

} // namespace

std::string_view textValue(OrphanLocation location) { return rowOf(location).text; }

const std::vector<OrphanLocation>& LeftoverOwners::locations() {
    static const std::vector<OrphanLocation> all = [] {
        std::vector<OrphanLocation> v;
        for (const auto& r : kLocations) v.push_back(r.location);
        return v;
    }();
    return all;
}

std::string_view LeftoverOwners::relativeFolder(OrphanLocation location) { return rowOf(location).folder; }
std::string_view LeftoverOwners::label(OrphanLocation location) { return rowOf(location).label; }
bool LeftoverOwners::isLinuxPlace(OrphanLocation location) { return location >= OrphanLocation::flatpakData; }

const std::vector<LeftoverOwners::KnownApp>& LeftoverOwners::knownApps() {
    static const std::vector<KnownApp> table{
        {"Docker Desktop", {"com.docker.docker", "com.electron.dockerdesktop", "group.com.docker", "com.docker.helper"},
         {"docker desktop", "docker", "docker-secrets-engine"}},
        {"Cursor", {"com.todesktop.230313mzl4w4u92"}, {"cursor"}},
        {"Visual Studio Code", {"com.microsoft.vscode"}, {"code"}},
        {"Slack", {"com.tinyspeck.slackmacgap"}, {"slack"}},
        {"Discord", {"com.hnc.discord"}, {"discord"}},
        {"Spotify", {"com.spotify.client"}, {"spotify"}},
        {"Zoom", {"us.zoom.xos"}, {"zoom.us", "zoom"}},
        {"Microsoft Teams", {"com.microsoft.teams", "com.microsoft.teams2"}, {"microsoft teams", "teams"}},
        {"Notion", {"notion.id"}, {"notion"}},
        {"Figma", {"com.figma.desktop"}, {"figma"}},
        {"Postman", {"com.postmanlabs.mac"}, {"postman"}},
        {"Lens", {"com.electron.kontena-lens"}, {"lens"}},
        {"Google Chrome", {"com.google.chrome"}, {"google/chrome", "google"}},
        {"Firefox", {"org.mozilla.firefox"}, {"firefox"}},
        {"Arc", {"company.thebrowser.browser"}, {"arc"}},
        {"Obsidian", {"md.obsidian"}, {"obsidian"}},
        {"1Password", {"com.1password.1password", "com.agilebits.onepassword7"}, {"1password"}},
        {"Dropbox", {"com.getdropbox.dropbox"}, {"dropbox"}},
        {"Steam", {"com.valvesoftware.steam"}, {"steam"}},
        {"Parallels Desktop", {"com.parallels.desktop.console"}, {"parallels"}},
        {"VMware Fusion", {"com.vmware.fusion"}, {"vmware fusion"}},
        {"UTM", {"com.utmapp.utm"}, {"utm"}},
        {"OrbStack", {"dev.orbstack", "dev.orbstack.orbstack"}, {"orbstack"}},
        {"Rancher Desktop", {"io.rancherdesktop.app"}, {"rancher-desktop"}},
        {"Android Studio", {"com.google.android.studio"}, {"google/androidstudio", "androidstudio"}},
        {"JetBrains Toolbox", {"com.jetbrains.toolbox"}, {"jetbrains"}},
        {"Microsoft Edge", {"com.microsoft.edgemac"}, {"microsoft edge"}},
        {"WhatsApp", {"net.whatsapp.whatsapp"}, {"whatsapp"}},
        {"Telegram", {"ru.keepcoder.telegram"}, {"telegram"}},
        {"Adobe Creative Cloud", {"com.adobe.acc.accc", "com.adobe.ccxprocess"}, {"adobe"}},
    };
    return table;
}

const LeftoverOwners::KnownApp* LeftoverOwners::knownApp(std::string_view name) {
    const std::string lower = asciiLowercased(name);
    for (const auto& row : knownApps()) {
        if (std::find(row.identifiers.begin(), row.identifiers.end(), lower) != row.identifiers.end()) return &row;
        if (std::find(row.folderNames.begin(), row.folderNames.end(), lower) != row.folderNames.end()) return &row;
    }
    return nullptr;
}

bool LeftoverOwners::isUuidName(std::string_view name) {
    if (name.size() != 36) return false;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? name[i] != '-' : !isHex(name[i])) return false;
    }
    return true;
}

std::optional<std::string> LeftoverOwners::ownerName(std::string_view childName, OrphanLocation location) {
    if (childName.empty() || childName.front() == '.' || isUuidName(childName)) return std::nullopt;
    std::optional<std::string> name = std::string(childName);
    switch (location) {
    case OrphanLocation::groupContainers: {
        std::string n = *name;
        const bool teamPrefix = n.size() > 11 && n[10] == '.' && std::all_of(n.begin(), n.begin() + 10, [](char c) {
            return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        });
        if (teamPrefix) n = n.substr(11);
        if (n.starts_with("group.")) n = n.substr(6);
        else if (n.starts_with("groups.")) n = n.substr(7);
        name = n;
        break;
    }
    case OrphanLocation::preferences:
    case OrphanLocation::launchAgents: name = withoutSuffix(*name, ".plist"); break;
    case OrphanLocation::preferencesByHost:
        name = withoutSuffix(*name, ".plist");
        if (name && name->size() > 37) {
            const std::string_view tail = std::string_view(*name).substr(name->size() - 37);
            if (tail.front() == '.' && std::all_of(tail.begin() + 1, tail.end(), [](char c) { return isHex(c) || c == '-'; }))
                name = name->substr(0, name->size() - 37);
        }
        break;
    case OrphanLocation::savedState: name = withoutSuffix(*name, ".savedState"); break;
    case OrphanLocation::cookies: name = withoutSuffix(*name, ".binarycookies"); break;
    case OrphanLocation::caches:
        if (endsWith(*name, ".ShipIt")) name = name->substr(0, name->size() - 7);
        break;
    case OrphanLocation::loginItem: name = withoutSuffix(*name, ".desktop"); break;
    default: break;
    }
    if (!name || name->empty()) return std::nullopt;
    if (isSystemOwnedName(*name) || asciiLowercased(*name).find("com.apple") != std::string::npos) return std::nullopt;
    if (!knownApp(*name) && DevCacheCatalog::looksPrivate(*name)) return std::nullopt;
    return name;
}

bool LeftoverOwners::isBundleLike(std::string_view name) {
    if (name.find(' ') != std::string_view::npos || name.find('/') != std::string_view::npos) return false;
    int parts = 0;
    std::size_t start = 0;
    for (;;) {
        const auto dot = name.find('.', start);
        const auto part = name.substr(start, dot == std::string_view::npos ? std::string_view::npos : dot - start);
        if (!part.empty()) ++parts;
        if (dot == std::string_view::npos) break;
        start = dot + 1;
    }
    return parts >= 2;
}

bool LeftoverOwners::isReverseDnsId(std::string_view name) {
    int parts = 0;
    std::size_t start = 0;
    for (;;) {
        const auto dot = name.find('.', start);
        const auto part = name.substr(start, dot == std::string_view::npos ? std::string_view::npos : dot - start);
        if (part.empty()) return false;
        for (const char c : part)
            if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_') return false;
        if (parts == 0 && !std::all_of(part.begin(), part.end(), [](char c) { return c >= 'a' && c <= 'z'; })) return false;
        ++parts;
        if (dot == std::string_view::npos) break;
        start = dot + 1;
    }
    return parts >= 3;
}

bool LeftoverOwners::namesAnApp(std::string_view name, OrphanLocation location) {
    const bool xdgFolder = location == OrphanLocation::settings || location == OrphanLocation::appData ||
                           location == OrphanLocation::cache;
    return xdgFolder ? isReverseDnsId(name) : isBundleLike(name);
}

bool LeftoverOwners::isSystemOwnedName(std::string_view name) {
    if (DevCacheCatalog::isAppleOwnedName(name)) return true;
    const std::string lower = asciiLowercased(name);
    const auto& own = desktopOwnNames();
    return std::find(own.begin(), own.end(), lower) != own.end() || lower.starts_with("org.freedesktop.");
}

std::string LeftoverOwners::displayName(std::string_view name, bool isAppId) {
    std::string n(name);
    if (isAppId) {
        auto dot = n.find_last_of('.');
        while (dot != std::string::npos && dot + 1 == n.size()) {
            n.pop_back();
            dot = n.find_last_of('.');
        }
        if (dot != std::string::npos) n = n.substr(dot + 1);
    }
    if (!n.empty()) n.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(n.front())));
    return n;
}

} // namespace bv
