#pragma once
#include <QObject>
#include <QUrl>

#include <map>

#include "guidance/SoundOutput.h"

class QSoundEffect;

namespace bv {

// Plays the cue samples built into the program (":/Sounds/<cue>.wav"). A sample is loaded the
// first time its cue plays and kept, so repeated cues cost no disk access. Main thread only.
//
// Never blocks and never fails loudly: a silent volume returns before anything is created, a
// missing sample is silent, and where no sound server or output device exists nothing is
// created either, so a machine without audio hears nothing and logs nothing.
class CuePlayer : public QObject, public SoundOutput {
    Q_OBJECT
public:
    explicit CuePlayer(QObject* parent = nullptr);
    ~CuePlayer() override;

    // Plays at min(volume, 1) from the start; a cue already playing starts over.
    void play(SoundCue cue, float volume) override;

    // How many samples are loaded (for tests: no player exists before a cue is heard).
    [[nodiscard]] int loadedCount() const { return static_cast<int>(players_.size()); }
    // The built-in sample of a cue.
    [[nodiscard]] static QUrl sampleUrl(SoundCue cue);

private:
    std::map<SoundCue, QSoundEffect*> players_;
};

} // namespace bv
