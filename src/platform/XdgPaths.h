#pragma once
#include <string>

namespace bv {

// Where the user's folders are, read from the environment each time it is asked, so a test
// that points HOME and the XDG variables at a temporary folder moves everything with it.
struct XdgPaths {
    [[nodiscard]] static std::string home();        // $HOME, else the password database
    [[nodiscard]] static std::string dataHome();    // $XDG_DATA_HOME or ~/.local/share
    [[nodiscard]] static std::string stateHome();   // $XDG_STATE_HOME or ~/.local/state
    [[nodiscard]] static std::string configHome();  // $XDG_CONFIG_HOME or ~/.config
    [[nodiscard]] static std::string cacheHome();   // $XDG_CACHE_HOME or ~/.cache
    [[nodiscard]] static std::string runtimeDir();  // $XDG_RUNTIME_DIR or /tmp
    // A user folder from user-dirs.dirs ("DESKTOP", "DOWNLOAD"), else ~/<fallback>.
    [[nodiscard]] static std::string userDir(const std::string& key, const std::string& fallback);
    [[nodiscard]] static std::string desktop() { return userDir("DESKTOP", "Desktop"); }
    [[nodiscard]] static std::string downloads() { return userDir("DOWNLOAD", "Downloads"); }

    // The program's own folders.
    [[nodiscard]] static std::string appDataDir();  // dataHome()/Brimvale
    [[nodiscard]] static std::string logsDir();     // stateHome()/Brimvale/Logs
    [[nodiscard]] static std::string appConfigDir(); // configHome()/Brimvale
};

} // namespace bv
