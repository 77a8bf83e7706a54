#!/usr/bin/env python3
"""Synthesises the two typewriter sounds in resources/: a short key click and the carriage
return's bell. Run it again to remake them; the output is deterministic."""
import math
import os
import random
import struct
import wave

RATE = 22050
HERE = os.path.dirname(os.path.abspath(__file__))


def write(name, samples):
    path = os.path.join(HERE, "..", "resources", name)
    with wave.open(path, "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(2)
        w.setframerate(RATE)
        w.writeframes(b"".join(struct.pack("<h", max(-32767, min(32767, int(s * 32767)))) for s in samples))


def click(duration=0.045):
    rnd = random.Random(333)
    out = []
    for i in range(int(RATE * duration)):
        t = i / RATE
        env = math.exp(-t * 120)
        body = math.sin(2 * math.pi * 1800 * t) * 0.35 + math.sin(2 * math.pi * 620 * t) * 0.25
        out.append((body + rnd.uniform(-1, 1) * 0.4) * env * 0.8)
    return out


def bell(duration=0.35):
    out = click(0.03)
    for i in range(int(RATE * duration)):
        t = i / RATE
        env = math.exp(-t * 9)
        out.append((math.sin(2 * math.pi * 2093 * t) * 0.5 + math.sin(2 * math.pi * 4186 * t) * 0.15) * env * 0.6)
    return out


write("typewriter_key.wav", click())
write("typewriter_return.wav", bell())
