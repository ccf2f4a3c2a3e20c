#include "guidance/SoundCue.h"

namespace bv {

std::string_view soundCueName(SoundCue cue) {
    switch (cue) {
    case SoundCue::success: return "success";
    case SoundCue::sparkle: return "sparkle";
    case SoundCue::droplet: return "droplet";
    case SoundCue::page: return "page";
    case SoundCue::chime: return "chime";
    case SoundCue::bloom: return "bloom";
    case SoundCue::loading: return "loading";
    case SoundCue::ready: return "ready";
    case SoundCue::error: return "error";
    case SoundCue::toggle: return "toggle";
    case SoundCue::scan: return "scan";
    case SoundCue::arrival: return "arrival";
    }
    return "success";
}

std::optional<SoundCue> soundCueFromName(std::string_view name) {
    for (SoundCue cue : kAllSoundCues)
        if (soundCueName(cue) == name) return cue;
    return std::nullopt;
}

float baseVolume(SoundCue cue) {
    switch (cue) {
    case SoundCue::success: return 0.385F;
    case SoundCue::chime: return 0.35F;
    case SoundCue::arrival: return 0.35F;
    case SoundCue::ready: return 0.322F;
    case SoundCue::scan: return 0.308F;
    case SoundCue::bloom: return 0.28F;
    case SoundCue::loading: return 0.266F;
    case SoundCue::toggle: return 0.224F;
    // No event names a level for these: a celebration's glint and the error sit at the
    // success level's side of the scale, the small landing and page sounds lower.
    case SoundCue::sparkle: return 0.35F;
    case SoundCue::error: return 0.322F;
    case SoundCue::droplet: return 0.266F;
    case SoundCue::page: return 0.224F;
    }
    return 0.0F;
}

float soundVolume(float base, bool playSounds, bool interfaceSounds) {
    return playSounds && interfaceSounds ? base : 0.0F;
}

bool interfaceSoundsOn(const std::optional<Json>& stored) {
    if (!stored) return true;
    if (stored->is_boolean()) return stored->get<bool>();
    if (stored->is_number()) return stored->get<double>() != 0.0;
    return true;
}

} // namespace bv
