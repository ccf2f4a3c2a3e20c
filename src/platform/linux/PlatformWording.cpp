#include "platform/PlatformWording.h"

#include <utility>

#include "platform/XdgPaths.h"

namespace bv {
namespace {

// The manifests folder as the user would type it: "~/..." when it lies in the home folder.
std::string logsFolderForPeople() {
    const std::string logs = XdgPaths::logsDir();
    const std::string home = XdgPaths::home();
    if (!home.empty() && home != "/" && logs.rfind(home + "/", 0) == 0) return "~" + logs.substr(home.size());
    return logs;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (size_t pos = text.find(from); pos != std::string::npos; pos = text.find(from, pos + to.size()))
        text.replace(pos, from.size(), to);
}

} // namespace

std::string platformWording(const std::string& text) {
    // Longest phrases first, so a short one never breaks a long one apart.
    const std::pair<std::string, std::string> table[] = {
        {"open the Trash in the Dock and choose Put Back", "open the Trash in your file manager and choose Restore"},
        {"~/Library/Logs/Brimvale", logsFolderForPeople()},
        {"the Dock", "your file manager"},
        {"in Finder", "in your file manager"},
        {"this Mac", "this computer"},
        {"Your Mac", "Your computer"},
        {"other APFS volumes", "other volumes"},
        // The rule-folder refusal names Linux's app-data places where it names the Library.
        {"Music, and Library can\u2019t", "Music, and app data such as ~/.local and ~/.config can\u2019t"},
        // A folder Build Watch may not list: on Linux only its permissions decide.
        {". This happens when a folder is tied to another app, or when Full Disk Access is off. Turn on Brimvale in "
         "System Settings \u203a Privacy & Security \u203a Full Disk Access, then try again.",
         ". Its permissions don\u2019t let your account open it. Choose a folder you own, or change who may read "
         "this one, then try again."},
        {"macOS won\u2019t let Brimvale read ", "Brimvale can\u2019t read "},
    };
    std::string out = text;
    for (const auto& [from, to] : table) replaceAll(out, from, to);
    return out;
}

} // namespace bv

namespace bv {

std::string noSafeMoveWording(const std::string& driveName) {
    const std::string drive = driveName.empty() ? "This drive" : "The drive \u201c" + driveName + "\u201d";
    return drive + " can\u2019t move items safely, so nothing was moved.";
}

} // namespace bv
