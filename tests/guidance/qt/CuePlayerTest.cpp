#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

#include "guidance/qt/CuePlayer.h"

// The test machines have no sound server or audio device: these prove the player returns at
// once there without a warning, and that a silent volume never creates a player. (A hang
// would end in the test's time limit.) The test clears any sound server of the caller's.
namespace bv {
namespace {

void spin(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

TEST(CuePlayer, SilentVolumeCreatesNoPlayer) {
    CuePlayer player;
    for (SoundCue cue : kAllSoundCues) player.play(cue, soundVolume(baseVolume(cue), false, true));
    player.play(SoundCue::toggle, 0.001F);
    EXPECT_EQ(player.loadedCount(), 0);
}

int g_warnings = 0;
void countWarnings(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtDebugMsg && type != QtInfoMsg) ++g_warnings;
}

TEST(CuePlayer, EverySampleIsBuiltInAndPlaysQuietlyWithoutAnAudioDevice) {
    qunsetenv("PULSE_SERVER");
    const auto previous = qInstallMessageHandler(countWarnings);
    CuePlayer player;
    for (SoundCue cue : kAllSoundCues) {
        EXPECT_TRUE(QFile::exists(QLatin1Char(':') + CuePlayer::sampleUrl(cue).path())) << soundCueName(cue);
        player.play(cue, baseVolume(cue));
    }
    player.play(SoundCue::success, 2.0F); // above full volume is clamped, never an error
    spin(300);
    qInstallMessageHandler(previous);
    EXPECT_EQ(player.loadedCount(), 0); // nowhere to play: nothing loaded, nothing said
    EXPECT_EQ(g_warnings, 0);
}

} // namespace
} // namespace bv
