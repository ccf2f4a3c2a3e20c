#include "buildwatch/BuildWatchCatalog.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "clean/DevCacheCatalog.h"
#include "foundation/AsciiCase.h"
#include "platform/XdgPaths.h"

namespace bv {
namespace {

using Law = DevCacheCatalog;
using S = BuildStack;

const std::vector<std::string> kGradle{"build.gradle", "build.gradle.kts", "settings.gradle", "settings.gradle.kts"};
const std::vector<std::string> kPython{"pyproject.toml", "setup.py", "setup.cfg", "requirements.txt", "tox.ini"};

bool isBelow(std::string_view path, std::string_view root) {
    if (path == root) return true;
    if (root == "/") return !path.empty() && path.front() == '/';
    return path.size() > root.size() && path.starts_with(root) && path[root.size()] == '/';
}

bool isStrictlyBelow(std::string_view path, std::string_view root) { return path != root && isBelow(path, root); }

std::string underHome(const std::string& home, std::string_view relative) {
    std::string out = home;
    if (out.empty() || out.back() != '/') out += '/';
    out += relative;
    return out;
}

std::vector<std::string> split(std::string_view path) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        auto end = path.find('/', start);
        if (end == std::string_view::npos) end = path.size();
        if (end > start) parts.emplace_back(path.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string parentOf(const std::string& path) {
    const auto slash = path.rfind('/');
    if (slash == std::string::npos) return {};
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

// Places a project can never live in on this system. The first ones are the folders of the
// program's first platform, kept so a path named like them is refused the same way.
const std::vector<std::string>& systemRoots() {
    static const std::vector<std::string> roots{"/Users", "/Users/Shared", "/Library", "/private", "/bin", "/sbin",
                                                "/usr",   "/etc",          "/var",     "/opt",     "/boot", "/lib",
                                                "/lib32", "/lib64",        "/libx32",  "/proc",    "/sys",  "/dev",
                                                "/run",   "/srv",          "/root",    "/snap",    "/home"};
    return roots;
}

// Kernel and device trees, and the system's own areas: refused with all they hold.
bool isProtectedSystemArea(std::string_view path) {
    if (Law::isSystemPath(path)) return true;
    for (const char* area : {"/proc", "/sys", "/dev", "/boot"})
        if (isBelow(path, area)) return true;
    return false;
}

// A drive's own folder: /Volumes/<x>, /mnt/<x>, /media/<user>/<x>, /run/media/<user>/<x>,
// and the folders above them that hold only drives.
bool isVolumeRoot(std::string_view path) {
    for (const std::string_view root : {"/Volumes", "/mnt", "/media", "/run/media"}) {
        if (path == root) return true;
        if (!isStrictlyBelow(path, root)) continue;
        const auto depth = split(path.substr(root.size())).size();
        const bool perUser = root == "/media" || root == "/run/media";
        if (depth == 1 || (perUser && depth == 2)) return true;
    }
    return false;
}

} // namespace

BuildWatchCatalog::NameSet BuildWatchCatalog::lowerNames(const std::vector<std::string>& names) {
    NameSet set;
    set.reserve(names.size());
    for (const auto& n : names) set.insert(asciiLowercased(n));
    return set;
}

const std::vector<BuildWatchCatalog::Pattern>& BuildWatchCatalog::patterns() {
    static const std::vector<Pattern> rows = [] {
        std::vector<Pattern> table{
        {S::rust, {"Cargo.toml"}, {"target", "debug"}, "Rust debug build"},
        {S::rust, {"Cargo.toml"}, {"target", "*", "debug"}, "Rust debug build"},
        {S::rust, {"Cargo.toml"}, {"target", "release", "incremental"}, "Rust incremental cache"},
        {S::rust, {"Cargo.toml"}, {"target", "*", "release", "incremental"}, "Rust incremental cache"},
        {S::rust, {"Cargo.toml"}, {"target", "rust-analyzer"}, "rust-analyzer build"},
        {S::swiftPackage, {"Package.swift"}, {".build", "*", "debug"}, "Swift debug build"},
        {S::swiftPackage, {"Package.swift"}, {".build", "index-build"}, "Swift editor index"},
        {S::node, {"package.json"}, {"node_modules", ".cache"}, "Bundler cache"},
        {S::node, {"package.json"}, {"node_modules", ".vite"}, "Vite cache"},
        {S::node, {"package.json"}, {".next", "cache"}, "Next.js cache"},
        {S::node, {"package.json"}, {".turbo"}, "Turbo cache"},
        {S::node, {"package.json"}, {".parcel-cache"}, "Parcel cache"},
        {S::node, {"package.json"}, {".angular", "cache"}, "Angular cache"},
        {S::node, {"package.json"}, {".nx", "cache"}, "Nx cache"},
        {S::gradle, kGradle, {"build"}, "Gradle build"},
        {S::gradle, kGradle, {".gradle"}, "Gradle project cache"},
        {S::gradle, kGradle, {".cxx"}, "Native build cache"},
        {S::flutter, {"pubspec.yaml"}, {"build"}, "Flutter build"},
        {S::flutter, {"pubspec.yaml"}, {".dart_tool"}, "Dart tool cache"},
        {S::python, kPython, {".pytest_cache"}, "pytest cache"},
        {S::python, kPython, {".mypy_cache"}, "mypy cache"},
        {S::python, kPython, {".ruff_cache"}, "Ruff cache"},
        {S::python, kPython, {".tox"}, "tox environments"},
        {S::xcode, {"info.plist"}, {"Index.noindex"}, "Xcode index"},
        {S::xcode, {"info.plist"}, {"Build", "Intermediates.noindex"}, "Xcode intermediate files"},
        {S::xcode, {"info.plist"}, {"Build", "Products", "Debug*"}, "Xcode debug build"},
        };
        for (auto& row : table)
            for (const auto& m : row.manifests) row.lowerManifests.push_back(asciiLowercased(m));
        return table;
    }();
    return rows;
}

const std::vector<std::string>& BuildWatchCatalog::walkStopList() {
    static const std::vector<std::string> names{
        "node_modules", "target", ".build",      "build",        "dist",  ".next",      ".git",
        "pods",         ".venv",  "venv",        "vendor",       ".gradle", ".dart_tool", "deriveddata",
        ".turbo",       "__pycache__", ".tox",   "bower_components", "carthage", ".swiftpm"};
    return names;
}

const std::vector<std::string>& BuildWatchCatalog::packageExtensions() {
    static const std::vector<std::string> exts{"app",    "xcodeproj", "xcworkspace", "xcassets",  "photoslibrary",
                                               "framework", "bundle",  "xcframework", "playground"};
    return exts;
}

bool BuildWatchCatalog::walkSkips(std::string_view name) {
    if (name.empty() || name.front() == '.') return true;
    const std::string lower = asciiLowercased(name);
    for (const auto& stop : walkStopList())
        if (lower == stop) return true;
    if (const auto dot = lower.rfind('.'); dot != std::string::npos) {
        const std::string_view ext = std::string_view(lower).substr(dot + 1);
        for (const auto& e : packageExtensions())
            if (ext == e) return true;
    }
    return false;
}

bool BuildWatchCatalog::isProjectFileName(std::string_view name) {
    // Called for every name a walk meets: compares in place, allocating nothing.
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    const auto endsWith = [&](std::string_view lowerTail) {
        if (name.size() < lowerTail.size()) return false;
        const std::size_t from = name.size() - lowerTail.size();
        for (std::size_t i = 0; i < lowerTail.size(); ++i)
            if (lower(name[from + i]) != lowerTail[i]) return false;
        return true;
    };
    static const std::vector<std::string> manifests = [] {
        std::vector<std::string> all;
        for (const auto& row : patterns())
            if (row.stack != S::xcode)
                for (const auto& m : row.lowerManifests)
                    if (std::find(all.begin(), all.end(), m) == all.end()) all.push_back(m);
        return all;
    }();
    for (const auto& m : manifests)
        if (m.size() == name.size() && endsWith(m)) return true;
    return endsWith(".xcodeproj") || endsWith(".xcworkspace");
}

bool BuildWatchCatalog::isXcodeProjectName(std::string_view name) {
    const std::string lower = asciiLowercased(name);
    return lower.ends_with(".xcodeproj") || lower.ends_with(".xcworkspace");
}

std::vector<BuildStack> BuildWatchCatalog::recognizeStacks(const std::vector<std::string>& names) {
    return recognizeStacks(lowerNames(names));
}

std::vector<BuildStack> BuildWatchCatalog::recognizeStacks(const NameSet& lower) {
    const auto anyOf = [&](const std::vector<std::string>& wanted) {
        for (const auto& w : wanted)
            if (lower.contains(w)) return true;
        return false;
    };
    std::vector<BuildStack> stacks;
    if (lower.contains("cargo.toml")) stacks.push_back(lower.contains("tauri.conf.json") ? S::tauri : S::rust);
    if (lower.contains("package.swift")) stacks.push_back(S::swiftPackage);
    for (const auto& n : lower)
        if (n.ends_with(".xcodeproj") || n.ends_with(".xcworkspace")) {
            stacks.push_back(S::xcode);
            break;
        }
    if (lower.contains("package.json")) stacks.push_back(S::node);
    if (anyOf(kGradle)) stacks.push_back(S::gradle);
    if (lower.contains("pubspec.yaml")) stacks.push_back(S::flutter);
    if (anyOf(kPython)) stacks.push_back(S::python);
    return stacks;
}

std::vector<const BuildWatchCatalog::Pattern*> BuildWatchCatalog::applicablePatterns(const NameSet& lower, bool xcodeOnly) {
    std::vector<const Pattern*> out;
    for (const auto& row : patterns()) {
        if ((row.stack == S::xcode) != xcodeOnly) continue;
        for (const auto& m : row.lowerManifests)
            if (lower.contains(m)) {
                out.push_back(&row);
                break;
            }
    }
    return out;
}

std::vector<const BuildWatchCatalog::Pattern*> BuildWatchCatalog::applicablePatterns(const std::vector<std::string>& names,
                                                                                     bool xcodeOnly) {
    return applicablePatterns(lowerNames(names), xcodeOnly);
}

bool BuildWatchCatalog::componentMatches(std::string_view pattern, std::string_view component) {
    if (pattern == "*") return !component.empty() && component.front() != '.';
    if (pattern.ends_with('*'))
        return asciiLowercased(component).starts_with(asciiLowercased(pattern.substr(0, pattern.size() - 1)));
    return asciiLowercased(pattern) == asciiLowercased(component);
}

const BuildWatchCatalog::Pattern* BuildWatchCatalog::matchRelativePath(const std::vector<std::string>& components,
                                                                       const std::vector<std::string>& anchorNames,
                                                                       bool xcodeOnly) {
    for (const Pattern* row : applicablePatterns(anchorNames, xcodeOnly)) {
        if (row->components.size() != components.size()) continue;
        bool all = true;
        for (std::size_t i = 0; i < components.size() && all; ++i) all = componentMatches(row->components[i], components[i]);
        if (all) return row;
    }
    return nullptr;
}

std::string BuildWatchCatalog::standardizedPath(const std::string& path) {
    if (path.empty()) return {};
    char buf[PATH_MAX];
    if (::realpath(path.c_str(), buf)) return Law::standardizedPath(buf);
    // Resolve what exists of the path and keep the rest as written.
    const std::string textual = Law::standardizedPath(path);
    const std::string parent = parentOf(textual);
    if (parent.empty() || parent == textual) return textual;
    const std::string resolvedParent = standardizedPath(parent);
    const std::string name = textual.substr(textual.rfind('/') + 1);
    return resolvedParent == "/" ? "/" + name : resolvedParent + "/" + name;
}

BuildWatchCatalog::HomeFolders BuildWatchCatalog::homeFolders(const std::string& homeIn) {
    HomeFolders f;
    f.home = standardizedPath(homeIn);
    // The user's own folder names count only for the home folder the environment names.
    const bool isOwnHome = f.home == standardizedPath(XdgPaths::home());
    const auto userDir = [&](const char* key, const char* fallback) {
        return isOwnHome ? standardizedPath(XdgPaths::userDir(key, fallback)) : standardizedPath(underHome(f.home, fallback));
    };
    const std::vector<std::string> exactNames{"Desktop", "Documents", "Downloads", "Pictures", "Movies", "Music", "Videos"};
    for (const auto& n : exactNames) f.exactOnly.push_back(standardizedPath(underHome(f.home, n)));
    for (const auto& [key, fallback] : std::vector<std::pair<const char*, const char*>>{
             {"DESKTOP", "Desktop"}, {"DOCUMENTS", "Documents"}, {"DOWNLOAD", "Downloads"},
             {"PICTURES", "Pictures"}, {"VIDEOS", "Videos"}, {"MUSIC", "Music"}}) {
        const std::string p = userDir(key, fallback);
        // A user folder set to the home folder itself is already refused as the home.
        if (p != f.home) f.exactOnly.push_back(p);
    }
    static const std::vector<std::string> wholeNames{
        "Library", ".ssh", ".aws", ".kube", ".docker", ".config", ".cursor", ".vscode", ".codex", ".claude", ".ollama",
        ".rustup", "flutter", "go/src", "go/bin", "Public", "Applications", ".Trash", ".gnupg", ".m2", ".android",
        // This system's own places that hold settings, app data, caches and tool installs.
        ".local", ".var", "snap", ".mozilla", ".cache", ".cargo", ".npm", "Templates"};
    for (const auto& n : wholeNames) f.whole.push_back(standardizedPath(underHome(f.home, n)));
    f.desktop = userDir("DESKTOP", "Desktop");
    f.documents = userDir("DOCUMENTS", "Documents");
    f.derivedDataRoot = standardizedPath(underHome(f.home, "Library/Developer/Xcode/DerivedData"));
    return f;
}

bool BuildWatchCatalog::isExactOnlyHomeFolder(const std::string& path, const HomeFolders& home) {
    const std::string p = standardizedPath(path);
    for (const auto& e : home.exactOnly)
        if (p == e) return true;
    return false;
}

bool BuildWatchCatalog::isBlockedFolder(const std::string& path, const std::string& home) {
    return isBlockedFolder(path, homeFolders(home));
}

bool BuildWatchCatalog::isBlockedFolder(const std::string& path, const HomeFolders& home) {
    return isBlockedStandardizedFolder(standardizedPath(path), home);
}

bool BuildWatchCatalog::isBlockedStandardizedFolder(const std::string& p, const HomeFolders& home) {
    const std::string& h = home.home;
    if (p.empty() || p == "/" || p.front() != '/') return true;
    if (p == h) return true;
    if (isStrictlyBelow(h, p)) return true; // an ancestor of home
    if (isVolumeRoot(p)) return true;
    if (isProtectedSystemArea(p)) return true;
    if (Law::hasGitComponent(p)) return true;
    for (const auto& root : systemRoots())
        if (p == root) return true;
    for (const auto& e : home.exactOnly)
        if (p == e) return true;
    for (const auto& w : home.whole)
        if (isBelow(p, w)) return true;
    return false;
}

bool BuildWatchCatalog::isAllowedTarget(const std::string& targetIn, const std::string& anchorIn,
                                        const std::string& projectIn, const std::vector<std::string>& anchorNames,
                                        const std::string& homeIn) {
    const std::string target = standardizedPath(targetIn);
    const std::string anchor = standardizedPath(anchorIn);
    const HomeFolders home = homeFolders(homeIn);
    if (target.empty() || anchor.empty() || target == anchor) return false;
    if (!isStrictlyBelow(target, anchor)) return false;
    if (target == home.home) return false;
    if (isProtectedSystemArea(target) || Law::hasGitComponent(target) || Law::hasGitComponent(targetIn)) return false;

    bool xcodeOnly = false;
    if (parentOf(anchor) == home.derivedDataRoot) {
        if (anchor == home.derivedDataRoot) return false;
        xcodeOnly = true;
    } else {
        const std::string project = standardizedPath(projectIn);
        if (isBlockedFolder(project, home)) return false;
        if (!isBelow(anchor, project)) return false;
        for (const auto& w : home.whole)
            if (isBelow(target, w)) return false;
    }
    return matchRelativePath(split(std::string_view(target).substr(anchor.size() + 1)), anchorNames, xcodeOnly) != nullptr;
}

std::set<std::string> BuildWatchCatalog::toolsForStacks(const std::vector<BuildStack>& stacks) {
    std::set<std::string> tools;
    for (const BuildStack s : stacks) {
        switch (s) {
        case S::rust:
        case S::tauri: tools.insert({"cargo", "rustc", "cargo-tauri"}); break;
        case S::swiftPackage: tools.insert({"swift-build", "swift-test"}); break;
        case S::xcode: tools.insert("xcodebuild"); break;
        case S::gradle: tools.insert({"gradle", "gradlew"}); break;
        case S::flutter: tools.insert({"flutter", "dart"}); break;
        case S::node:
        case S::python: break;
        }
    }
    return tools;
}

} // namespace bv
