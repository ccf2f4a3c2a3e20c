#include "guidance/ReducedMotion.h"

#include <cstdlib>

#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"

namespace bv {

namespace {
std::string_view trim(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.remove_suffix(1);
    return s;
}
} // namespace

bool reduceMotionFromEnvironment(const char* value) {
    if (!value) return false;
    const std::string_view v(value);
    return !v.empty() && v != "0" && v != "false";
}

std::optional<bool> gtkAnimationsEnabled(std::string_view text) {
    std::optional<bool> found;
    while (!text.empty()) {
        const auto end = text.find('\n');
        const std::string_view line = trim(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        const auto eq = line.find('=');
        if (eq == std::string_view::npos || trim(line.substr(0, eq)) != "gtk-enable-animations") continue;
        const std::string_view value = trim(line.substr(eq + 1));
        found = !(value == "0" || value == "false" || value == "FALSE" || value == "False");
    }
    return found;
}

bool reducedMotionRequested() {
    if (reduceMotionFromEnvironment(std::getenv("BV_REDUCE_MOTION"))) return true;
    for (const char* version : {"gtk-4.0", "gtk-3.0"}) {
        const auto text = readWholeFile(XdgPaths::configHome() + "/" + version + "/settings.ini");
        if (!text) continue;
        if (const auto enabled = gtkAnimationsEnabled(*text)) return !*enabled;
    }
    return false;
}

} // namespace bv
