#pragma once
#include <stdexcept>
#include <string>

namespace bv {

// Starting at login, as an XDG autostart entry: "brimvale.desktop" in the user's
// autostart folder (~/.config/autostart). The entry is ours alone; a desktop's session
// settings may switch it off in place (Hidden=true or X-GNOME-Autostart-enabled=false),
// which reads as off.
class LoginItemService {
public:
    enum class Status { enabled, requiresApproval, off };

    // A failure to change the entry; what() is a sentence for the user.
    struct Error : std::runtime_error {
        using std::runtime_error::runtime_error;
    };

    // The user's autostart folder and this program's executable (/proc/self/exe).
    [[nodiscard]] static LoginItemService live();
    LoginItemService(std::string autostartDirectory, std::string executable);

    [[nodiscard]] std::string entryPath() const;

    // True writes the entry unless it is already enabled; false removes it unless nothing is
    // registered. Throws Error when the folder or the file cannot be written or removed.
    void setEnabled(bool enabled) const;
    // Enabled when our entry is there and not switched off. Autostart asks nobody's
    // approval, so requiresApproval never comes from here.
    [[nodiscard]] Status status() const;

    // The entry's text: Exec quoted by the desktop entry rules.
    [[nodiscard]] std::string entryText() const;

private:
    std::string directory_;
    std::string executable_;
};

} // namespace bv
