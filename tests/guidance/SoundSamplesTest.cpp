#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

#include "guidance/SoundCue.h"

// Reads every committed cue sample back from data/sounds and holds it to what a cue must
// be: a plain 16-bit PCM file, short, normalized to the same peak, starting at once and
// ending in silence so it never clicks.
namespace bv {
namespace {

struct Pcm {
    int channels = 0, rate = 0, bits = 0;
    std::vector<std::int16_t> samples;
};

std::uint32_t le(const unsigned char* p, int n) {
    std::uint32_t v = 0;
    for (int i = n - 1; i >= 0; --i) v = (v << 8) | p[i];
    return v;
}

// The RIFF chunks of a WAV file: "fmt " for the format, "data" for the samples.
bool readWav(const std::string& path, Pcm& out) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(in)), {});
    if (bytes.size() < 12 || std::memcmp(bytes.data(), "RIFF", 4) != 0 || std::memcmp(bytes.data() + 8, "WAVE", 4) != 0)
        return false;
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        const std::size_t size = le(&bytes[at + 4], 4);
        const unsigned char* body = &bytes[at + 8];
        if (at + 8 + size > bytes.size()) return false;
        if (std::memcmp(&bytes[at], "fmt ", 4) == 0) {
            if (le(body, 2) != 1) return false; // PCM only
            out.channels = static_cast<int>(le(body + 2, 2));
            out.rate = static_cast<int>(le(body + 4, 4));
            out.bits = static_cast<int>(le(body + 14, 2));
        } else if (std::memcmp(&bytes[at], "data", 4) == 0) {
            for (std::size_t i = 0; i + 1 < size; i += 2)
                out.samples.push_back(static_cast<std::int16_t>(le(body + i, 2)));
        }
        at += 8 + size + (size & 1);
    }
    return out.rate > 0 && !out.samples.empty();
}

TEST(SoundSamples, EveryCueIsShortNormalizedAndSilentAtBothEnds) {
    for (SoundCue cue : kAllSoundCues) {
        const std::string name(soundCueName(cue));
        SCOPED_TRACE(name);
        Pcm pcm;
        ASSERT_TRUE(readWav(std::string(BV_SOUNDS_DIR) + "/" + name + ".wav", pcm));
        EXPECT_EQ(pcm.channels, 1);
        EXPECT_EQ(pcm.bits, 16);
        EXPECT_EQ(pcm.rate, 44100);

        const double seconds = static_cast<double>(pcm.samples.size()) / pcm.rate;
        const bool tick = cue == SoundCue::toggle || cue == SoundCue::droplet;
        EXPECT_GE(seconds, tick ? 0.03 : 0.15);
        EXPECT_LE(seconds, tick ? 0.25 : 0.8);

        int peak = 0;
        for (auto s : pcm.samples) peak = std::max(peak, std::abs(static_cast<int>(s)));
        const double peakDb = 20 * std::log10(peak / 32767.0);
        EXPECT_NEAR(peakDb, -3.0, 0.2);

        // Silence: the first sample and the last 4 ms are (near) zero; the sound is audible
        // within 30 ms of the start.
        EXPECT_LE(std::abs(pcm.samples.front()), 8);
        const std::size_t tail = static_cast<std::size_t>(pcm.rate * 0.004);
        for (std::size_t i = pcm.samples.size() - tail; i < pcm.samples.size(); ++i)
            ASSERT_LE(std::abs(pcm.samples[i]), 8) << "sample " << i;
        const auto onset = std::find_if(pcm.samples.begin(), pcm.samples.end(),
                                        [&](std::int16_t s) { return std::abs(s) > peak / 20; });
        EXPECT_LT(static_cast<double>(onset - pcm.samples.begin()) / pcm.rate, 0.03);
    }
}

} // namespace
} // namespace bv
