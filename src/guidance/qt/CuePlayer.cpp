#include "guidance/qt/CuePlayer.h"

#include <QAudioDevice>
#include <QFile>
#include <QMediaDevices>
#include <QSoundEffect>

#include <sys/stat.h>

#include <algorithm>

namespace bv {

namespace {

// Whether a sound server could be there to play through. Qt's audio on Linux goes through
// the PulseAudio protocol (PipeWire serves it too): with no server named and no socket in
// the runtime folder there is no output at all, and asking the audio layer anyway only
// prints connection warnings. A server started later is found at the next cue.
bool soundServerReachable() {
    if (!qEnvironmentVariableIsEmpty("PULSE_SERVER")) return true;
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (runtime.isEmpty()) return false;
    struct stat info {};
    return ::stat((runtime + "/pulse/native").constData(), &info) == 0 && S_ISSOCK(info.st_mode);
}

} // namespace

CuePlayer::CuePlayer(QObject* parent) : QObject(parent) {}

CuePlayer::~CuePlayer() = default; // the effects are children

QUrl CuePlayer::sampleUrl(SoundCue cue) {
    return QUrl(QStringLiteral("qrc:/Sounds/") + QString::fromLatin1(soundCueName(cue).data()) +
                QStringLiteral(".wav"));
}

void CuePlayer::play(SoundCue cue, float volume) {
    if (volume <= kSilentVolume) return;
    // Without an output device there is nowhere to play; asking anyway only earns a warning
    // on every cue.
    if (!soundServerReachable() || QMediaDevices::defaultAudioOutput().isNull()) return;
    auto found = players_.find(cue);
    if (found == players_.end()) {
        const QUrl url = sampleUrl(cue);
        if (!QFile::exists(QLatin1Char(':') + url.path())) return;
        auto* effect = new QSoundEffect(this);
        effect->setSource(url);
        found = players_.emplace(cue, effect).first;
    }
    QSoundEffect* effect = found->second;
    effect->setVolume(std::min(volume, 1.0F));
    // From the start: a cue that is still sounding starts over rather than overlapping.
    if (effect->isPlaying()) effect->stop();
    effect->play();
}

} // namespace bv
