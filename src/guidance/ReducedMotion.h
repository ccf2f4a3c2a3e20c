#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace bv {

// Whether the desktop asks for less motion, so celebrations and the tour's scenes stand still.
// Qt has no portable question for it, so two signs are read: the environment variable
// BV_REDUCE_MOTION (any value but "", "0" or "false" asks for it), and the GTK setting
// gtk-enable-animations in $XDG_CONFIG_HOME/gtk-3.0/settings.ini or gtk-4.0/settings.ini,
// which GNOME's and KDE's settings write when animations are turned off.
[[nodiscard]] bool reducedMotionRequested();

// The pure parts: the environment value, and the animation switch of a settings.ini text
// (nothing when the key is absent).
[[nodiscard]] bool reduceMotionFromEnvironment(const char* value);
[[nodiscard]] std::optional<bool> gtkAnimationsEnabled(std::string_view settingsIni);

} // namespace bv
