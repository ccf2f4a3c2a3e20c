#pragma once
#include <set>
#include <string>
#include <vector>

namespace bv {

// What is installed on this system, as far as app leftovers need to know: every identifier
// and program name an installed application goes by, lower-cased. Built once per scan.
struct InstalledAppIndex {
    std::set<std::string> identifiers; // desktop file ids, Flatpak app ids, snap names
    std::set<std::string> names;       // Exec program names, StartupWMClass values, programs on PATH

    // Whether an installed app goes by this identifier or name (compared lower-cased).
    [[nodiscard]] bool knows(const std::string& identifierOrName) const;
};

// Builds the installed index from the places Linux keeps applications. The places come in as
// plain folders so tests can hand in their own; `forThisSystem` reads them from the
// environment.
class InstalledApps {
public:
    struct Roots {
        std::vector<std::string> dataDirs;       // XDG data folders; desktop entries in <dir>/applications
        std::vector<std::string> flatpakFolders; // Flatpak installations; apps in <dir>/app/<id>
        std::vector<std::string> snapFolders;    // snaps in <dir>/<name>
        std::vector<std::string> pathFolders;    // executables found on PATH
    };
    // $XDG_DATA_HOME (or ~/.local/share) and $XDG_DATA_DIRS (or /usr/local/share:/usr/share);
    // /var/lib/flatpak and the user's own flatpak folder; /snap; $PATH.
    [[nodiscard]] static Roots forThisSystem(const std::string& home);

    // Unreadable or missing places add nothing.
    [[nodiscard]] static InstalledAppIndex build(const Roots& roots);
};

} // namespace bv
