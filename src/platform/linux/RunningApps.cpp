#include "platform/RunningApps.h"
#include "foundation/AsciiCase.h"

#include <cctype>
#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "foundation/FileIO.h"

extern char** environ;

namespace bv {
namespace {

std::string lastComponent(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string stripDesktopSuffix(std::string id) {
    constexpr std::string_view suffix = ".desktop";
    if (id.size() > suffix.size() && id.compare(id.size() - suffix.size(), suffix.size(), suffix) == 0)
        id.resize(id.size() - suffix.size());
    return id;
}

// systemd writes "-" inside a name as "\x2d".
std::string unescapeUnit(const std::string& s) {
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '\\' && i + 3 < s.size() && s[i + 1] == 'x' && std::isxdigit(static_cast<unsigned char>(s[i + 2])) &&
            std::isxdigit(static_cast<unsigned char>(s[i + 3]))) {
            out += static_cast<char>(std::stoi(s.substr(i + 2, 2), nullptr, 16));
            i += 3;
        } else {
            out += s[i];
        }
    }
    return out;
}

bool matchesName(const std::string& processName, const std::string& wanted, bool isCommandName) {
    if (processName.empty() || wanted.empty()) return false;
    const std::string a = asciiLowercased(processName);
    const std::string b = asciiLowercased(wanted);
    if (a == b) return true;
    return isCommandName && a.size() == 15 && b.size() > 15 && b.compare(0, 15, a) == 0;
}

} // namespace

std::vector<std::string> RunningApps::desktopIDsOfUnit(const std::string& unitName) {
    std::string unit = unitName;
    for (const char* suffix : {".scope", ".service"}) {
        const std::string s = suffix;
        if (unit.size() > s.size() && unit.compare(unit.size() - s.size(), s.size(), s) == 0) unit.resize(unit.size() - s.size());
    }
    if (unit.rfind("app-", 0) != 0) return {};
    unit = unit.substr(4);
    if (const auto at = unit.find('@'); at != std::string::npos) unit.resize(at);
    // A trailing "-<digits or hex>" is the instance of a scope.
    if (const auto dash = unit.rfind('-'); dash != std::string::npos && dash + 1 < unit.size() &&
                                           std::all_of(unit.begin() + static_cast<long>(dash) + 1, unit.end(),
                                                       [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); }))
        unit.resize(dash);
    std::vector<std::string> ids;
    // The launcher prefix ("gnome-", "flatpak-", "kde-") can't be told from the ID itself,
    // so every tail after a "-" is a candidate, the whole name first.
    ids.push_back(unescapeUnit(unit));
    for (size_t pos = unit.find('-'); pos != std::string::npos; pos = unit.find('-', pos + 1))
        if (pos + 1 < unit.size()) ids.push_back(unescapeUnit(unit.substr(pos + 1)));
    return ids;
}

std::vector<RunningProcess> RunningApps::list(const std::string& procRoot) {
    std::vector<RunningProcess> out;
    DIR* dir = ::opendir(procRoot.c_str());
    if (!dir) return out;
    while (dirent* d = ::readdir(dir)) {
        const std::string name = d->d_name;
        if (name.empty() || !std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; })) continue;
        const std::string base = procRoot + "/" + name;
        RunningProcess p;
        p.pid = std::stoi(name);
        if (auto comm = readWholeFile(base + "/comm")) {
            while (!comm->empty() && comm->back() == '\n') comm->pop_back();
            p.commandName = *comm;
        } else {
            continue; // gone, or not ours to read
        }
        char target[4096];
        if (const ssize_t n = ::readlink((base + "/exe").c_str(), target, sizeof target - 1); n > 0) {
            std::string exe(target, static_cast<size_t>(n));
            constexpr std::string_view deleted = " (deleted)";
            if (exe.size() > deleted.size() && exe.compare(exe.size() - deleted.size(), deleted.size(), deleted) == 0)
                exe.resize(exe.size() - deleted.size());
            p.executableName = lastComponent(exe);
        }
        if (auto env = readWholeFile(base + "/environ")) {
            size_t pos = 0;
            while (pos < env->size()) {
                size_t end = env->find('\0', pos);
                if (end == std::string::npos) end = env->size();
                const std::string var = env->substr(pos, end - pos);
                pos = end + 1;
                for (const char* key : {"GIO_LAUNCHED_DESKTOP_FILE=", "BAMF_DESKTOP_FILE_HINT="}) {
                    const std::string k = key;
                    if (var.rfind(k, 0) == 0) p.desktopIDs.push_back(stripDesktopSuffix(lastComponent(var.substr(k.size()))));
                }
                if (var.rfind("FLATPAK_ID=", 0) == 0) p.desktopIDs.push_back(var.substr(11));
            }
        }
        if (auto cg = readWholeFile(base + "/cgroup")) {
            // "0::/user.slice/.../app-gnome-org.gnome.Nautilus-1234.scope"
            size_t lineStart = 0;
            while (lineStart < cg->size()) {
                size_t end = cg->find('\n', lineStart);
                if (end == std::string::npos) end = cg->size();
                const std::string line = cg->substr(lineStart, end - lineStart);
                lineStart = end + 1;
                std::string path = line.substr(line.rfind(':') == std::string::npos ? 0 : line.rfind(':') + 1);
                size_t p0 = 0;
                while (p0 < path.size()) {
                    size_t p1 = path.find('/', p0);
                    if (p1 == std::string::npos) p1 = path.size();
                    for (auto& id : desktopIDsOfUnit(path.substr(p0, p1 - p0))) p.desktopIDs.push_back(std::move(id));
                    p0 = p1 + 1;
                }
            }
        }
        out.push_back(std::move(p));
    }
    ::closedir(dir);
    return out;
}

std::optional<std::string> RunningApps::runningOwner(const std::vector<RunningProcess>& processes,
                                                     const std::vector<std::string>& bundleIDs,
                                                     const std::vector<std::string>& names) {
    std::vector<std::string> wantedNames = names;
    for (const auto& id : bundleIDs) {
        // "org.gnome.Nautilus" also runs as "nautilus".
        const auto dot = id.rfind('.');
        if (dot != std::string::npos && dot + 1 < id.size()) wantedNames.push_back(id.substr(dot + 1));
    }
    for (const auto& p : processes) {
        std::optional<std::string> hit;
        for (const auto& id : bundleIDs) {
            const std::string want = asciiLowercased(stripDesktopSuffix(id));
            for (const auto& have : p.desktopIDs)
                if (!want.empty() && asciiLowercased(stripDesktopSuffix(have)) == want) hit = id;
        }
        for (const auto& n : wantedNames)
            if (!hit && (matchesName(p.commandName, n, true) || matchesName(p.executableName, n, false))) hit = n;
        if (hit) return names.empty() ? *hit : names.front();
    }
    return std::nullopt;
}

std::optional<int> runToolQuietly(const std::vector<std::string>& argv) {
    if (argv.empty()) return std::nullopt;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    std::vector<char*> args;
    for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    pid_t pid = 0;
    const int rc = ::posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) return std::nullopt;
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return std::nullopt;
    }
    if (!WIFEXITED(status)) return std::nullopt;
    return WEXITSTATUS(status);
}

} // namespace bv
