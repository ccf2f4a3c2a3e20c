#pragma once
#include "guidance/SoundCue.h"

namespace bv {

// Where the model sends a cue to be heard. The desktop program hands in the player that
// really makes sound; without one (the terminal front end, tests) cues are silent.
class SoundOutput {
public:
    virtual ~SoundOutput() = default;
    // Plays `cue` at `volume` (0 to 1); a volume of kSilentVolume or less does nothing.
    virtual void play(SoundCue cue, float volume) = 0;
};

} // namespace bv
