#include "platform/XdgPaths.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

#include "foundation/FileIO.h"

namespace bv {
namespace {

std::string env(const char* name) {
    const char* v = std::getenv(name);
    return v && *v ? std::string(v) : std::string();
}

std::string absoluteOr(const char* name, const std::string& fallback) {
    std::string v = env(name);
    // Relative values are invalid by the base directory rules and are ignored.
    return !v.empty() && v.front() == '/' ? v : fallback;
}

} // namespace

std::string XdgPaths::home() {
    std::string h = env("HOME");
    if (!h.empty()) return h;
    if (const passwd* pw = ::getpwuid(::getuid()); pw && pw->pw_dir) return pw->pw_dir;
    return "/";
}

std::string XdgPaths::dataHome() { return absoluteOr("XDG_DATA_HOME", home() + "/.local/share"); }
std::string XdgPaths::stateHome() { return absoluteOr("XDG_STATE_HOME", home() + "/.local/state"); }
std::string XdgPaths::configHome() { return absoluteOr("XDG_CONFIG_HOME", home() + "/.config"); }
std::string XdgPaths::cacheHome() { return absoluteOr("XDG_CACHE_HOME", home() + "/.cache"); }
std::string XdgPaths::runtimeDir() { return absoluteOr("XDG_RUNTIME_DIR", "/tmp"); }

std::string XdgPaths::userDir(const std::string& key, const std::string& fallback) {
    const std::string h = home();
    // user-dirs.dirs holds lines like XDG_DOWNLOAD_DIR="$HOME/Downloads".
    if (auto text = readWholeFile(configHome() + "/user-dirs.dirs")) {
        const std::string prefix = "XDG_" + key + "_DIR=";
        size_t pos = 0;
        while (pos < text->size()) {
            size_t end = text->find('\n', pos);
            if (end == std::string::npos) end = text->size();
            std::string line = text->substr(pos, end - pos);
            pos = end + 1;
            if (line.rfind(prefix, 0) != 0) continue;
            std::string value = line.substr(prefix.size());
            if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
            if (value.rfind("$HOME", 0) == 0) value = h + value.substr(5);
            if (value.empty() || value.front() != '/') continue;
            while (value.size() > 1 && value.back() == '/') value.pop_back();
            // A user dir equal to home means "disabled"; the usual folder then stands.
            if (value == h) break;
            return value;
        }
    }
    return h + "/" + fallback;
}

std::string XdgPaths::appDataDir() { return dataHome() + "/Brimvale"; }
std::string XdgPaths::logsDir() { return stateHome() + "/Brimvale/Logs"; }
std::string XdgPaths::appConfigDir() { return configHome() + "/Brimvale"; }

} // namespace bv
