#include "core/LoginItemService.h"
#include "foundation/AsciiCase.h"

#include <cerrno>
#include <cstring>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"

namespace bv {
namespace {

constexpr const char* kEntryName = "brimvale.desktop";

// An Exec argument, quoted: inside double quotes ", `, $ and \ take a backslash; then the
// whole value is a desktop entry string, in which every backslash is doubled again.
std::string quotedExecArgument(const std::string& path) {
    std::string quoted = "\"";
    for (char c : path) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += '\\';
        quoted += c;
    }
    quoted += '"';
    std::string out;
    for (char c : quoted) {
        if (c == '\\') out += "\\\\";
        else if (c == '\n') out += "\\n";
        else out += c;
    }
    return out;
}

} // namespace

LoginItemService LoginItemService::live() {
    std::string exe;
    char buf[4096];
    const ssize_t n = ::readlink("/proc/self/exe", buf, sizeof buf - 1);
    if (n > 0) exe.assign(buf, static_cast<std::size_t>(n));
    if (exe.empty()) exe = "brimvale";
    return {XdgPaths::configHome() + "/autostart", exe};
}

LoginItemService::LoginItemService(std::string autostartDirectory, std::string executable)
    : directory_(std::move(autostartDirectory)), executable_(std::move(executable)) {}

std::string LoginItemService::entryPath() const { return directory_ + "/" + kEntryName; }

std::string LoginItemService::entryText() const {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Brimvale\n"
           "Comment=Keeps your disk tidy while you work\n"
           "Exec=" + quotedExecArgument(executable_) + "\n"
           "Icon=brimvale\n"
           "Terminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

LoginItemService::Status LoginItemService::status() const {
    const auto text = readWholeFile(entryPath());
    if (!text) return Status::off;
    std::istringstream lines(*text);
    std::string line;
    bool inMainGroup = false;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.front() == '[') {
            inMainGroup = line == "[Desktop Entry]";
            continue;
        }
        if (!inMainGroup) continue;
        const auto eq = line.find('=');
        if (eq == std::string::npos) continue;
        std::string key = line.substr(0, eq), value = asciiLowercased(line.substr(eq + 1));
        while (!key.empty() && key.back() == ' ') key.pop_back();
        while (!value.empty() && value.front() == ' ') value.erase(0, 1);
        if (key == "Hidden" && value == "true") return Status::off;
        if (key == "X-GNOME-Autostart-enabled" && value == "false") return Status::off;
    }
    return Status::enabled;
}

void LoginItemService::setEnabled(bool enabled) const {
    if (enabled) {
        if (status() == Status::enabled) return;
        if (!makeDirectories(directory_, 0700))
            throw Error("The autostart folder " + directory_ + " couldn’t be made (" + std::strerror(errno) + ").");
        if (!writeFileAtomically(entryPath(), entryText()))
            throw Error("The login entry couldn’t be written in " + directory_ + " (" + std::strerror(errno) + ").");
        return;
    }
    struct stat st{};
    if (::lstat(entryPath().c_str(), &st) != 0) return; // nothing registered
    if (::unlink(entryPath().c_str()) != 0)
        throw Error("The login entry " + entryPath() + " couldn’t be removed (" + std::strerror(errno) + ").");
}

} // namespace bv
