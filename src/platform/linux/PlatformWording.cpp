#include "platform/PlatformWording.h"

#include <utility>

#include "platform/XdgPaths.h"

namespace bv {
namespace {

// One of our folders as the user would type it: "~/..." when it lies in the home folder.
std::string folderForPeople(const std::string& folder) {
    const std::string home = XdgPaths::home();
    if (!home.empty() && home != "/" && folder.rfind(home + "/", 0) == 0) return "~" + folder.substr(home.size());
    return folder;
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
        {"~/Library/Logs/Brimvale", folderForPeople(XdgPaths::logsDir())},
        {"~/Library/Application Support/Brimvale", folderForPeople(XdgPaths::appDataDir())},
        // Starting at login is an autostart entry, which the desktop's session settings list.
        {"System Settings \u203a Login Items", "your desktop\u2019s autostart settings"},
        {"Login item is off in System Settings.", "The autostart entry is switched off in your desktop\u2019s settings."},
        {"Open Login Items", "Open Autostart Folder"},
        {"Menu bar and sound", "Tray icon and sound"},
        {"the Mac wakes", "the computer wakes"},
        {"the app and macOS versions", "the app and system versions"},
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
        // The system's own name follows ("on Debian GNU/Linux 12 (bookworm)").
        {" on macOS ", " on "},
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
