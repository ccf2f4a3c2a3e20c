// The path law: what may be removed, judged on path text alone.
#include <algorithm>
#include <cctype>

#include "clean/DevCacheCatalog.h"
#include "foundation/AsciiCase.h"
#include "clean/KeptVersions.h"

namespace bv {
namespace {

using Case = DevCacheCatalog::Behavior::Case;

// Equal to root, or beginning with root + "/". Exact bytes, case included. Both sides are
// standardized already. Only "/" itself is below "/": a root of "/" never admits everything.
bool isBelow(std::string_view path, std::string_view root) {
    if (path == root) return true;
    return path.size() > root.size() && path.starts_with(root) && path[root.size()] == '/';
}

// Paths the law can judge begin at "/"; a relative path is never cleaned.
bool isAbsolute(std::string_view path) { return !path.empty() && path.front() == '/'; }

// Strictly below root: the root itself does not count.
bool isStrictlyBelow(std::string_view path, std::string_view root) { return path != root && isBelow(path, root); }

// The first component of `path` under `root`; call only when strictly below.
std::string_view firstComponentUnder(std::string_view path, std::string_view root) {
    std::string_view rest = path.substr(root.size() + 1);
    return rest.substr(0, rest.find('/'));
}

// home + "/" + relative, without a double slash when home is "/".
std::string underHome(const std::string& home, std::string_view relative) {
    std::string out = home;
    if (out.empty() || out.back() != '/') out += '/';
    out += relative;
    return out;
}

std::vector<std::string_view> componentsOf(std::string_view path) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        auto end = path.find('/', start);
        if (end == std::string_view::npos) end = path.size();
        if (end > start) parts.push_back(path.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

// Folders under which whole drives are mounted: the Linux places beside the one the law
// was first written for.
const std::vector<std::string>& driveRoots() {
    static const std::vector<std::string> roots{"/Volumes", "/media", "/run/media", "/mnt"};
    return roots;
}

// A whole drive: a mount folder directly under a drive root, or one user folder deeper for
// the per-user roots (/media/<user>/<label>, /run/media/<user>/<label>). The per-user
// folder itself counts too: it holds nothing but drives.
bool isWholeDrive(std::string_view folder) {
    for (const auto& root : driveRoots()) {
        if (!isStrictlyBelow(folder, root)) continue;
        const auto depth = componentsOf(folder.substr(root.size())).size();
        const bool perUser = root == "/media" || root == "/run/media";
        if (depth == 1 || (perUser && depth == 2)) return true;
    }
    return false;
}

// One catalogue row's answer for a standardized path.
bool rowAdmits(const DevCacheCatalog::Recipe& recipe, const std::string& path, const std::string& home,
               const DevCacheCatalog::KeptVersions& kept) {
    const std::string root = underHome(home, recipe.relativePath);
    switch (recipe.behavior.kind) {
    case Case::directory:
        return isBelow(path, root);
    case Case::children:
        return isStrictlyBelow(path, root) && !DevCacheCatalog::looksPrivate(firstComponentUnder(path, root));
    case Case::gradleDistributions:
        return isStrictlyBelow(path, root);
    case Case::nodeVersions:
        return isStrictlyBelow(path, root) && !kept.contains(versionKey(firstComponentUnder(path, root)));
    case Case::expoCaches:
        return isStrictlyBelow(path, root) && asciiLowercased(firstComponentUnder(path, root)).find("cache") != std::string::npos;
    case Case::rustToolchains:
        // Only here does the law read the disk: the toolchains folder and rustup's settings.
        return isStrictlyBelow(path, root) &&
               !keptToolchains(home).contains(std::string(firstComponentUnder(path, root)));
    case Case::suffixedChildren: {
        if (!isStrictlyBelow(path, root)) return false;
        const std::string_view name = firstComponentUnder(path, root);
        const std::string suffix = asciiLowercased(recipe.behavior.suffix);
        return name.size() > suffix.size() && asciiLowercased(name).ends_with(suffix) && !DevCacheCatalog::looksPrivate(name);
    }
    case Case::reviewOnly:
    case Case::unavailableSimulators:
        return false;
    }
    return false;
}

} // namespace

const std::vector<std::string>& DevCacheCatalog::protectedNames() {
    static const std::vector<std::string> names{
        "Desktop", "Documents", "Downloads", "Library", ".ssh", ".aws", ".kube", ".docker", ".config",
        ".cursor", ".vscode", ".codex", ".claude", ".ollama", ".rustup", "flutter", "go/src", "go/bin",
        "Pictures", "Movies", "Music", "Public", "Applications", ".Trash", ".gnupg", ".m2", ".android",
        // Linux: where programs keep their per-user data, libraries, keyrings and the Trash.
        ".local", ".var/app", "snap", ".mozilla", ".thunderbird", ".wine", ".pki", ".password-store"};
    return names;
}

const std::vector<std::string>& DevCacheCatalog::userContentFolders() {
    static const std::vector<std::string> names{"Desktop", "Documents", "Downloads", "Pictures", "Movies", "Music"};
    return names;
}

const std::vector<std::string>& DevCacheCatalog::knownCacheAreas() {
    static const std::vector<std::string> areas{
        "Library/Developer/Xcode/DerivedData",
        "Library/Developer/Xcode/Archives",
        "Library/Developer/CoreSimulator/Caches",
        "Library/Caches/CocoaPods",
        "Library/Caches/Homebrew",
        "Library/Caches/pip",
        "Library/Caches/Yarn",
        "Library/pnpm/store",
        "Library/Caches/ms-playwright",
        "Library/Caches/ms-playwright-go",
        "Library/Caches/Cypress",
        "Library/Caches/node-gyp",
        "Library/Caches/pdm",
        "Library/Logs/pdm",
        "Library/Caches/pypoetry",
        "Library/Caches/com.apple.python",
        "Library/Caches/aws",
        "Library/Caches/go-build",
        "Library/Caches/typescript",
        "Library/Caches/esbuild",
        "Library/Developer/Xcode/iOS DeviceSupport",
        "Library/Developer/Xcode/watchOS DeviceSupport",
        "Library/Developer/Xcode/tvOS DeviceSupport",
        "Library/Developer/Xcode/UserData/Previews",
        "Library/Developer/Xcode/DocumentationCache",
        "Library/Caches/org.swift.swiftpm",
        "Library/Caches/org.carthage.CarthageKit",
        "Library/Caches/deno",
        "Library/Caches/electron",
        "Library/Caches/electron-builder",
        "Library/Caches/Mozilla.sccache",
        "Library/Caches/bazelisk",
        "Library/Caches/composer",
        "Library/Caches/ccache",
        "Library/Caches/pipenv",
        "Library/Caches/dotslash",
        "Library/Caches/JetBrains",
        "Library/Application Support/Code/CachedExtensionVSIXs",
        "Library/Application Support/Cursor/CachedExtensionVSIXs",
        "Library/Caches",
        "Library/Application Support/Caches",
        ".rustup/downloads",
        ".rustup/tmp",
        ".rustup/toolchains",
        ".m2/repository",
        ".android/cache",
        "flutter/bin/cache",
    };
    // Linux: a catalogue row whose folder lies inside one of the app-data places above still
    // admits its own folder there, the way the Library/Caches rows are admitted under Library.
    static const std::vector<std::string> withLinuxRows = [] {
        std::vector<std::string> all = areas;
        const auto& names = protectedNames();
        const auto firstLinux = std::find(names.begin(), names.end(), ".local");
        for (const auto& recipe : recipes())
            for (auto it = names.begin(); it != names.end(); ++it) {
                const bool linuxPlace = it >= firstLinux || *it == ".config";
                if (linuxPlace && isBelow(recipe.relativePath, *it)) all.push_back(recipe.relativePath);
            }
        return all;
    }();
    return withLinuxRows;
}

const std::vector<std::string>& DevCacheCatalog::projectRoots() {
    static const std::vector<std::string> names{"Projects", "work", "Developer"};
    return names;
}

const std::vector<std::string>& DevCacheCatalog::systemRoots() {
    static const std::vector<std::string> roots{
        "/Users", "/Users/Shared", "/Library", "/private", "/System", "/Applications", "/bin", "/sbin", "/usr",
        "/etc", "/var", "/opt",
        // Linux: the rest of the operating system's tree, and the folder that holds the homes.
        "/boot", "/lib", "/lib32", "/lib64", "/libx32", "/proc", "/sys", "/dev", "/run", "/srv", "/root", "/snap",
        "/home"};
    return roots;
}

const std::vector<std::string>& DevCacheCatalog::privateWords() {
    static const std::vector<std::string> words{"credential", "secret", "token", "password", "passwd", "auth",
                                                "netrc", "config", "keychain", "pem", "ssh", "cookie",
                                                "gnupg", "gpg", "wallet", "huggingface"};
    return words;
}

const std::vector<std::string>& DevCacheCatalog::orphanLocationFolders() {
    static const std::vector<std::string> folders{
        "Library/Containers", "Library/Group Containers", "Library/Application Support", "Library/Caches",
        "Library/Preferences", "Library/Preferences/ByHost", "Library/Saved Application State",
        "Library/HTTPStorages", "Library/Cookies", "Library/WebKit", "Library/Logs", "Library/LaunchAgents",
        "Library/Application Scripts"};
    return folders;
}

std::string DevCacheCatalog::standardizedPath(std::string_view path) {
    if (path.empty()) return {};
    const bool absolute = path.front() == '/';
    std::vector<std::string_view> kept;
    for (const auto part : componentsOf(path)) {
        if (part == ".") continue;
        if (part == "..") {
            if (!kept.empty() && kept.back() != "..") kept.pop_back();
            else if (!absolute) kept.push_back(part); // a relative path keeps what it can't resolve
            continue;                                   // ".." above "/" stays at "/"
        }
        kept.push_back(part);
    }
    if (!absolute && kept.empty()) return std::string(1, '.');
    std::string out;
    if (absolute) out.push_back('/');
    for (std::size_t i = 0; i < kept.size(); ++i) {
        if (i > 0) out.push_back('/');
        out.append(kept[i]);
    }
    return out;
}

bool DevCacheCatalog::isInsideRoot(std::string_view path, std::string_view resolvedPath, std::string_view root) {
    const std::string r = standardizedPath(root);
    if (r.empty()) return false;
    return isBelow(standardizedPath(path), r) && isBelow(standardizedPath(resolvedPath), r);
}

bool DevCacheCatalog::isSystemPath(std::string_view path) {
    static constexpr std::string_view kRoots[] = {"/System", "/Applications", "/usr", "/etc", "/boot", "/bin",
                                                  "/sbin", "/opt", "/proc", "/sys", "/dev", "/run", "/srv",
                                                  "/root", "/var", "/snap"};
    const std::string p = standardizedPath(path);
    // Drives the desktop mounts for the user live under /run/media; they are not the system's.
    if (isBelow(p, "/run/media")) return false;
    // "/lib", "/lib32", "/lib64", "/libx32" and the like.
    const auto first = componentsOf(p);
    if (!first.empty() && p.front() == '/' && first.front().starts_with("lib")) return true;
    return std::any_of(std::begin(kRoots), std::end(kRoots), [&](std::string_view root) { return isBelow(p, root); });
}

bool DevCacheCatalog::isSystemArea(std::string_view path, std::string_view home) {
    const std::string p = standardizedPath(path);
    const std::string h = standardizedPath(home);
    if (isSystemPath(p)) return !isBelow(p, h);
    if (!isStrictlyBelow(p, "/home")) return false;
    const std::string owner = "/home/" + std::string(firstComponentUnder(p, "/home"));
    return !isBelow(h, owner);
}

bool DevCacheCatalog::hasGitComponent(std::string_view path) {
    // Looked for in the raw text too, so "x/.git/.." is refused although it standardizes away.
    for (const auto part : componentsOf(path))
        if (part == ".git") return true;
    const std::string standard = standardizedPath(path); // the views below point into it
    for (const auto part : componentsOf(standard))
        if (part == ".git") return true;
    return false;
}

bool DevCacheCatalog::isProtectedPath(std::string_view path, std::string_view home) {
    const std::string p = standardizedPath(path);
    const std::string h = standardizedPath(home);
    if (p == h) return true;
    if (isSystemArea(p, h) || hasGitComponent(path)) return true;
    for (const auto& name : protectedNames())
        if (isBelow(p, underHome(h, name))) return true;
    return false;
}

bool DevCacheCatalog::isKnownCachePath(std::string_view path, std::string_view home) {
    const std::string p = standardizedPath(path);
    const std::string h = standardizedPath(home);
    for (const auto& area : knownCacheAreas())
        if (isBelow(p, underHome(h, area))) return true;
    return false;
}

bool DevCacheCatalog::looksPrivate(std::string_view name) {
    if (name.starts_with(".")) return true;
    const std::string lower = asciiLowercased(name);
    for (const auto& word : privateWords())
        if (lower.find(word) != std::string::npos) return true;
    return false;
}

bool DevCacheCatalog::catalogAllows(std::string_view path, std::string_view home, const KeptVersions& kept) {
    const std::string p = standardizedPath(path);
    const std::string h = standardizedPath(home);
    for (const auto& recipe : recipes())
        if (rowAdmits(recipe, p, h, kept)) return true;
    return false;
}

bool DevCacheCatalog::canCleanCachePath(std::string_view path, std::string_view home, const KeptVersions& kept) {
    const std::string p = standardizedPath(path);
    const std::string h = standardizedPath(home);
    if (!isAbsolute(p) || p == h) return false;
    if (isSystemArea(p, h) || hasGitComponent(path)) return false;
    // A known cache area lifts the protected list, and nothing else.
    if (isProtectedPath(p, h) && !isKnownCachePath(p, h)) return false;
    return catalogAllows(p, h, kept);
}

bool DevCacheCatalog::canCleanRulePath(std::string_view path, std::string_view ruleFolder, std::string_view home) {
    if (path.empty() || ruleFolder.empty()) return false;
    const std::string p = standardizedPath(path);
    const std::string folder = standardizedPath(ruleFolder);
    const std::string h = standardizedPath(home);
    if (!isAbsolute(p) || p == h) return false;
    if (p == folder) return false; // the folder itself is never a target
    if (!isBelow(p, folder)) return false;
    if (isSystemArea(p, h) || hasGitComponent(path)) return false;
    if (isProtectedPath(p, h)) return false;
    for (const auto& name : projectRoots())
        if (p == underHome(h, name)) return false;
    return true;
}

bool DevCacheCatalog::canCleanDuplicatePath(std::string_view path, std::string_view home) {
    const std::string p = standardizedPath(path);
    const std::string h = standardizedPath(home);
    if (!isAbsolute(p) || p == h) return false;
    if (isSystemArea(p, h) || hasGitComponent(path)) return false;
    const auto& content = userContentFolders();
    for (const auto& name : protectedNames()) {
        if (std::find(content.begin(), content.end(), name) != content.end()) continue;
        if (isBelow(p, underHome(h, name))) return false;
    }
    return true;
}

bool DevCacheCatalog::canCleanOrphanPath(std::string_view path, std::string_view home) {
    const std::string p = standardizedPath(path);
    const std::string h = standardizedPath(home);
    if (!isBelow(p, underHome(h, "Library"))) return false;
    if (hasGitComponent(path)) return false;
    const std::string last = asciiLowercased(p.substr(p.rfind('/') + 1));
    if (isAppleOwnedName(last) || last.find("com.apple") != std::string::npos) return false;
    for (const auto& folder : orphanLocationFolders()) {
        const std::string root = underHome(h, folder);
        if (isStrictlyBelow(p, root) && p.find('/', root.size() + 1) == std::string::npos) return true;
    }
    return false;
}

bool DevCacheCatalog::isAppleOwnedName(std::string_view name) {
    const std::string lower = asciiLowercased(name);
    return lower == "com.apple" || lower == "apple" || lower.find("com.apple.") != std::string::npos ||
           lower.starts_with("com.icloud") || lower.starts_with("icloud");
}

bool DevCacheCatalog::isUnsafeRuleFolder(std::string_view folder, std::string_view home) {
    const std::string f = standardizedPath(folder);
    const std::string h = standardizedPath(home);
    if (f.empty() || f == "/" || f == "." || f.front() != '/') return true;
    for (const auto& root : driveRoots())
        if (f == root) return true;
    if (isWholeDrive(f)) return true;
    for (const auto& root : systemRoots())
        if (f == root) return true;
    if (f == h) return true;
    if (isBelow(h, f)) return true; // an ancestor of home
    return isProtectedPath(f, h);
}

} // namespace bv
