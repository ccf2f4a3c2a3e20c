#pragma once
#include <array>
#include <optional>
#include <string_view>

#include "foundation/Json.h"

namespace bv {

// The short samples that mark events. Each case's text is the sample's file name without
// ".wav" ("success.wav"), and the order is the order the samples are listed everywhere.
enum class SoundCue { success, sparkle, droplet, page, chime, bloom, loading, ready, error, toggle, scan, arrival };

inline constexpr std::array<SoundCue, 12> kAllSoundCues = {
    SoundCue::success, SoundCue::sparkle, SoundCue::droplet, SoundCue::page, SoundCue::chime, SoundCue::bloom,
    SoundCue::loading, SoundCue::ready,   SoundCue::error,   SoundCue::toggle, SoundCue::scan, SoundCue::arrival};

[[nodiscard]] std::string_view soundCueName(SoundCue cue);
// The cue whose text this is, or nothing for an unknown text.
[[nodiscard]] std::optional<SoundCue> soundCueFromName(std::string_view name);

// The volume a cue is played at when sounds are on. The events that name a level use it; the
// cues no event gives a level to sit with the quieter ones.
[[nodiscard]] float baseVolume(SoundCue cue);

// What every call site hands the player: the base when the user's setting and the desktop's
// interface sounds are both on, else 0 (which the player takes as "do nothing").
[[nodiscard]] float soundVolume(float base, bool playSounds, bool interfaceSoundsOn);

// Whether the desktop's interface sounds are on, from the stored value of that switch:
// absent, or neither a Bool nor a number, counts as on; a number is on unless it is 0.
[[nodiscard]] bool interfaceSoundsOn(const std::optional<Json>& stored);

// The key of that switch in the per-user defaults store.
inline constexpr const char* kInterfaceSoundsKey = "com.apple.sound.uiaudio.enabled";

// A volume at or below this plays nothing and touches no file.
inline constexpr float kSilentVolume = 0.001F;

} // namespace bv
