#pragma once
#include <optional>
#include <string>
#include <vector>

namespace bv {

// What /proc says about one running process, as far as it names an application.
struct RunningProcess {
    int pid = 0;
    std::string commandName;    // /proc/<pid>/comm (at most 15 bytes)
    std::string executableName; // last component of /proc/<pid>/exe, " (deleted)" dropped
    std::vector<std::string> desktopIDs; // from the launch environment and the systemd app unit
};

// Which applications are running. Processes of other users that can't be read are skipped.
struct RunningApps {
    // Every readable process under `procRoot` (a folder laid out like /proc).
    [[nodiscard]] static std::vector<RunningProcess> list(const std::string& procRoot = "/proc");

    // The desktop IDs a systemd unit name carries, e.g. "app-gnome-org.gnome.Nautilus-1234.scope"
    // or "app-org.kde.dolphin@3b1f.service" gives "org.gnome.Nautilus" / "org.kde.dolphin"
    // among its candidates (the launcher prefix can't be told apart, so every split is offered).
    [[nodiscard]] static std::vector<std::string> desktopIDsOfUnit(const std::string& unitName);

    // Whether one of the owner's applications runs: a process whose desktop ID equals one of
    // `bundleIDs` (with or without ".desktop"), or whose command or executable name equals one
    // of `names` or one of the IDs' last components, ignoring case (a command name is cut at
    // 15 bytes, so a long name matches its first 15). Gives the name to show: the first of
    // `names` if there is one, else what matched. Nothing when no owner runs.
    [[nodiscard]] static std::optional<std::string> runningOwner(const std::vector<RunningProcess>& processes,
                                                                 const std::vector<std::string>& bundleIDs,
                                                                 const std::vector<std::string>& names);
};

// Runs a program found on PATH with arguments, its output thrown away, and waits. Gives the
// exit status, or nothing when it could not be started or was killed by a signal.
[[nodiscard]] std::optional<int> runToolQuietly(const std::vector<std::string>& argv);

} // namespace bv
