#!/usr/bin/env python3
"""Generates Brimvale's twelve cue sounds into data/sounds/<cue>.wav.

The samples are synthesized here from sine partials, envelopes and a little filtered noise,
so the repository holds no recorded audio of anyone else's. The output is committed; run
this script again after changing a recipe:

    python3 scripts/make_sounds.py            # writes data/sounds/*.wav
    python3 scripts/make_sounds.py OUTDIR     # writes somewhere else

Only the Python standard library is used (wave, math, struct, random with a fixed seed), so
the output is the same on every machine. Every file is 44.1 kHz, 16-bit, mono, peak
normalized to -3 dBFS, starts within a few milliseconds and fades to true silence at its end.
"""
import math
import os
import random
import struct
import sys
import wave

RATE = 44100
PEAK = 10 ** (-3 / 20)  # -3 dBFS leaves room for the player's own mixing
TAU = 2 * math.pi


def note(name):
    """Frequency of a note such as "C5" or "F#4" (A4 = 440 Hz)."""
    steps = {"C": -9, "C#": -8, "D": -7, "D#": -6, "E": -5, "F": -4, "F#": -3, "G": -2, "G#": -1,
             "A": 0, "A#": 1, "B": 2}
    pitch, octave = name[:-1], int(name[-1])
    return 440.0 * 2 ** ((steps[pitch] + 12 * (octave - 4)) / 12)


def silence(seconds):
    return [0.0] * int(seconds * RATE)


def envelope(i, n, attack, decay_rate):
    """A short linear attack, then an exponential decay; `decay_rate` is per second."""
    t = i / RATE
    a = min(1.0, t / attack) if attack > 0 else 1.0
    return a * math.exp(-decay_rate * t)


def tone(freq, seconds, attack=0.004, decay=6.0, partials=((1, 1.0),), glide=0.0, vibrato=0.0):
    """A pitched tone made of (ratio, level) partials. `glide` bends the pitch by that many
    semitones over the tone's length; `vibrato` adds a slow shimmer in cents."""
    n = int(seconds * RATE)
    out = []
    phases = [0.0] * len(partials)
    for i in range(n):
        t = i / RATE
        bend = 2 ** (glide * (i / n) / 12)
        wobble = 2 ** (vibrato * math.sin(TAU * 5.5 * t) / 1200)
        f = freq * bend * wobble
        v = 0.0
        for k, (ratio, level) in enumerate(partials):
            phases[k] += TAU * f * ratio / RATE
            v += level * math.sin(phases[k])
        out.append(v * envelope(i, n, attack, decay))
    return out


def noise_swish(seconds, low, high, seed):
    """Band-limited noise whose band sweeps from `low` to `high` Hz, shaped like a breath."""
    rng = random.Random(seed)
    n = int(seconds * RATE)
    out, lp1, lp2 = [], 0.0, 0.0
    for i in range(n):
        x = rng.uniform(-1, 1)
        cut = low + (high - low) * (i / n)
        a = 1 - math.exp(-TAU * cut / RATE)
        lp1 += a * (x - lp1)          # low-pass at the moving cut-off
        lp2 += 0.02 * (lp1 - lp2)     # a slow low-pass to take the rumble out
        x_pos = i / n
        shape = (x_pos / 0.2) if x_pos < 0.2 else math.cos(0.5 * math.pi * (x_pos - 0.2) / 0.8) ** 2
        out.append((lp1 - lp2) * shape)
    return out


def mix(length_seconds, *layers):
    """Adds (start_seconds, samples) layers into one buffer."""
    buf = [0.0] * int(length_seconds * RATE)
    for start, samples in layers:
        s = int(start * RATE)
        for i, v in enumerate(samples):
            if s + i < len(buf):
                buf[s + i] += v
    return buf


def finish(samples, fade_out=0.03):
    """Fades the tail to zero, ends on a few milliseconds of silence and normalizes."""
    n = len(samples)
    fade = int(fade_out * RATE)
    for i in range(fade):
        samples[n - fade + i] *= math.cos(0.5 * math.pi * i / fade) ** 2
    samples[0] = 0.0
    samples += silence(0.005)
    top = max(abs(v) for v in samples) or 1.0
    return [v * PEAK / top for v in samples]


BELL = ((1, 1.0), (2.0, 0.35), (3.01, 0.12), (4.2, 0.05))
WARM = ((1, 1.0), (2, 0.25), (3, 0.08))
PURE = ((1, 1.0),)


def success():
    # A bright rising major arpeggio that rings out: a run finished.
    notes = ["C5", "E5", "G5", "C6"]
    layers = [(0.07 * k, tone(note(n), 0.55 - 0.05 * k, decay=5.5, partials=BELL)) for k, n in enumerate(notes)]
    return mix(0.62, *layers)


def sparkle():
    # Quick high glints, slightly detuned, for a celebration.
    rng = random.Random(7)
    picks = ["E6", "B6", "G#6", "E7", "C#7", "B6"]
    layers = [(0.045 * k, tone(note(n) * (1 + rng.uniform(-0.003, 0.003)), 0.22, attack=0.002, decay=16.0,
                               partials=((1, 1.0), (2.76, 0.2)))) for k, n in enumerate(picks)]
    return mix(0.5, *layers)


def droplet():
    # A water drop: a pure tone that bends sharply upwards and dies fast.
    return mix(0.16, (0, tone(note("A5"), 0.16, attack=0.002, decay=24.0, glide=14)))


def page():
    # A page turning: a soft swish of noise that brightens.
    return mix(0.22, (0, noise_swish(0.22, 900, 5200, seed=3)))


def chime():
    # Two bell strikes a fourth apart: a rule saved.
    return mix(0.75, (0, tone(note("G5"), 0.7, decay=4.5, partials=BELL)),
               (0.11, tone(note("C6"), 0.64, decay=4.5, partials=BELL)))


def bloom():
    # A chord that swells in softly and opens: a preview is on its way.
    chord = ["F4", "A4", "C5", "E5"]
    layers = [(0.03 * k, tone(note(n), 0.58, attack=0.05, decay=3.0, partials=WARM, vibrato=6)) for k, n in enumerate(chord)]
    return mix(0.62, *layers)


def loading():
    # Two soft low notes stepping upwards: work has started.
    return mix(0.36, (0, tone(note("D4"), 0.2, attack=0.01, decay=9.0, partials=WARM)),
               (0.12, tone(note("A4"), 0.24, attack=0.01, decay=9.0, partials=WARM)))


def ready():
    # A rising fourth, round and clear: the scan is done.
    return mix(0.42, (0, tone(note("E5"), 0.3, decay=8.0, partials=BELL)),
               (0.1, tone(note("A5"), 0.32, decay=7.0, partials=BELL)))


def error():
    # Two low notes falling a minor third, muted rather than harsh.
    return mix(0.42, (0, tone(note("E4"), 0.22, attack=0.006, decay=8.0, partials=WARM)),
               (0.14, tone(note("C#4"), 0.28, attack=0.006, decay=7.0, partials=WARM)))


def toggle():
    # A tiny click with a hint of pitch: a switch flipped.
    return mix(0.05, (0, tone(note("E6"), 0.05, attack=0.001, decay=90.0, partials=((1, 1.0), (1.5, 0.4)))))


def scan():
    # A soft sweep with a gentle pulse, like a look around: space is running low.
    n = int(0.55 * RATE)
    base = tone(note("A4"), 0.55, attack=0.03, decay=3.5, partials=WARM, glide=7)
    return [v * (0.75 + 0.25 * math.cos(TAU * 9 * i / RATE)) for i, v in enumerate(base[:n])]


def arrival():
    # A warm three-note rise that settles: access granted.
    notes = ["G4", "D5", "G5"]
    layers = [(0.08 * k, tone(note(n), 0.5 - 0.06 * k, attack=0.006, decay=5.0, partials=BELL)) for k, n in enumerate(notes)]
    return mix(0.52, *layers)


# In the order the program lists its cues.
CUES = [("success", success), ("sparkle", sparkle), ("droplet", droplet), ("page", page), ("chime", chime),
        ("bloom", bloom), ("loading", loading), ("ready", ready), ("error", error), ("toggle", toggle),
        ("scan", scan), ("arrival", arrival)]


def write(path, samples):
    frames = b"".join(struct.pack("<h", max(-32767, min(32767, int(round(v * 32767))))) for v in samples)
    with wave.open(path, "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(2)
        w.setframerate(RATE)
        w.writeframes(frames)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "data", "sounds")
    os.makedirs(out, exist_ok=True)
    for name, make in CUES:
        samples = finish(make())
        write(os.path.join(out, name + ".wav"), samples)
        print(f"{name}.wav  {len(samples) / RATE:.3f} s")


if __name__ == "__main__":
    main()
