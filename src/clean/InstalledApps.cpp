#include "clean/InstalledApps.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "foundation/AsciiCase.h"

namespace bv {
namespace {

std::vector<std::string> splitList(const char* text, const char* fallback) {
    const std::string all = text && *text ? text : fallback;
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= all.size()) {
        const auto colon = all.find(':', start);
        const std::string part = all.substr(start, colon == std::string::npos ? std::string::npos : colon - start);
        if (!part.empty()) parts.push_back(part);
        if (colon == std::string::npos) break;
        start = colon + 1;
    }
    return parts;
}

struct Entry {
    std::string name;
    bool isDirectory = false;
};

std::vector<Entry> entriesOf(const std::string& folder) {
    std::vector<Entry> out;
    DIR* dir = ::opendir(folder.c_str());
    if (!dir) return out;
    while (dirent* e = ::readdir(dir)) {
        const std::string name = e->d_name;
        if (name == "." || name == "..") continue;
        struct stat st {};
        const bool isDir = ::stat((folder + "/" + name).c_str(), &st) == 0 && S_ISDIR(st.st_mode);
        out.push_back({name, isDir});
    }
    ::closedir(dir);
    return out;
}

std::string lastComponent(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The program an Exec line starts: its first word that is not an "env" call or a variable
// assignment, without its folder. "flatpak run ... <id>" names the app id instead.
std::vector<std::string> execNames(const std::string& exec) {
    std::vector<std::string> words;
    std::string word;
    char quote = 0;
    for (const char c : exec) {
        if (quote) {
            if (c == quote) quote = 0;
            else word.push_back(c);
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == ' ' || c == '\t') {
            if (!word.empty()) words.push_back(std::move(word)), word.clear();
        } else {
            word.push_back(c);
        }
    }
    if (!word.empty()) words.push_back(word);
    std::size_t i = 0;
    while (i < words.size() && (lastComponent(words[i]) == "env" || words[i].find('=') != std::string::npos)) ++i;
    if (i >= words.size()) return {};
    std::vector<std::string> names{lastComponent(words[i])};
    if (names.front() == "flatpak" && i + 1 < words.size() && words[i + 1] == "run")
        for (std::size_t j = i + 2; j < words.size(); ++j)
            if (!words[j].starts_with("-") && words[j].find('%') == std::string::npos) {
                names.push_back(words[j]);
                break;
            }
    return names;
}

void readDesktopEntries(const std::string& folder, const std::string& idPrefix, InstalledAppIndex& index, int depth) {
    if (depth > 4) return;
    for (const auto& e : entriesOf(folder)) {
        const std::string path = folder + "/" + e.name;
        if (e.isDirectory) {
            readDesktopEntries(path, idPrefix + e.name + "-", index, depth + 1);
            continue;
        }
        if (!e.name.ends_with(".desktop")) continue;
        index.identifiers.insert(asciiLowercased(idPrefix + e.name.substr(0, e.name.size() - 8)));
        std::ifstream in(path);
        std::string line;
        bool inMain = false;
        while (std::getline(in, line)) {
            if (!line.empty() && line.front() == '[') {
                inMain = line.starts_with("[Desktop Entry]");
                continue;
            }
            if (!inMain) continue;
            if (line.starts_with("Exec=")) {
                for (const auto& n : execNames(line.substr(5))) index.names.insert(asciiLowercased(n));
            } else if (line.starts_with("StartupWMClass=")) {
                index.names.insert(asciiLowercased(line.substr(15)));
            }
        }
    }
}

} // namespace

bool InstalledAppIndex::knows(const std::string& identifierOrName) const {
    const std::string lower = asciiLowercased(identifierOrName);
    return identifiers.count(lower) > 0 || names.count(lower) > 0;
}

InstalledApps::Roots InstalledApps::forThisSystem(const std::string& home) {
    Roots roots;
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    const std::string userData = dataHome && *dataHome ? dataHome : home + "/.local/share";
    roots.dataDirs.push_back(userData);
    for (auto& d : splitList(std::getenv("XDG_DATA_DIRS"), "/usr/local/share:/usr/share")) roots.dataDirs.push_back(d);
    roots.flatpakFolders = {"/var/lib/flatpak", userData + "/flatpak"};
    roots.snapFolders = {"/snap"};
    roots.pathFolders = splitList(std::getenv("PATH"), "/usr/local/bin:/usr/bin:/bin");
    return roots;
}

InstalledAppIndex InstalledApps::build(const Roots& roots) {
    InstalledAppIndex index;
    for (const auto& d : roots.dataDirs) readDesktopEntries(d + "/applications", "", index, 0);
    for (const auto& f : roots.flatpakFolders)
        for (const auto& e : entriesOf(f + "/app"))
            if (e.isDirectory) index.identifiers.insert(asciiLowercased(e.name));
    for (const auto& s : roots.snapFolders)
        for (const auto& e : entriesOf(s))
            if (e.isDirectory && e.name != "bin") index.identifiers.insert(asciiLowercased(e.name));
    for (const auto& p : roots.pathFolders)
        for (const auto& e : entriesOf(p))
            if (!e.isDirectory && ::access((p + "/" + e.name).c_str(), X_OK) == 0) index.names.insert(asciiLowercased(e.name));
    return index;
}

} // namespace bv
