#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Evaluation of qel-denoise on speech in noise (scripts/eval_denoise.sh runs it).

Speech: espeak-ng talkers (several voices, three sentences each) at 48 kHz 16-bit,
and one recorded talker: the eight spoken channel names that alsa-utils ships
(a real voice, 48 kHz 16-bit, about 1.4 s each), read one after the other.
Noise: white, pink, brown and multi-talker babble (six other espeak talkers summed),
mixed at 5 and 0 dB SNR (speech power over its active frames) with fixed seeds.
Each noisy file is scored as it is, through the speexdsp preprocessor (default settings,
through qel-denoise's own 48 -> 16 -> 48 kHz rate change) and through qel-denoise.
All measures come from qel-denoise-score; this script only assembles and tabulates.
"""
import argparse
import concurrent.futures
import hashlib
import os
import subprocess
import sys
import wave

import numpy as np
from scipy.signal import resample_poly

RATE = 48000

TALKERS = [  # (espeak-ng voice, sentences)
    ("en-us+m3", ["Please check the small blue valve before you open the main line.",
                  "Seven ships waited in the harbour while the fog drifted over the bay.",
                  "She found a thick brown notebook under the kitchen table."]),
    ("en-gb+f2", ["Turn the dial slowly to the left until the green light starts to flash.",
                  "The children picked fresh cherries and shared them with their neighbours.",
                  "A sudden gust of wind scattered the papers across the quiet office."]),
    ("en-gb-scotland+m1", ["Measure the distance twice and cut the board only once.",
                           "Our train leaves at half past six from the far platform.",
                           "He fixed the broken chair with two screws and a bit of glue."]),
    ("en-029+f4", ["The weather report promised sunshine, but heavy rain fell all afternoon.",
                   "Bring your own cup, since the canteen has run out of paper ones.",
                   "Fresh bread smells wonderful early in the morning."]),
]
BABBLE = [
    ("en-us+f1", "Nobody expected the meeting to last until late in the evening."),
    ("en-gb+m2", "The old clock in the hall struck nine as the guests arrived."),
    ("en-us+m5", "Keep the receipt in case you need to return the jacket."),
    ("en-gb-x-rp+f3", "Two large dogs chased a ball along the sandy beach."),
    ("en-us+m7", "The library closes early on public holidays and Sundays."),
    ("en-gb-scotland+f5", "Add a pinch of salt and stir the soup for a minute."),
]
RECORDED = "/usr/share/sounds/alsa"  # alsa-utils
NOISES = ["white", "pink", "brown", "babble"]
SNRS = [5, 0]
MEASURES = ["snr_db", "segsnr_db", "lsd_db", "stoi"]


def speak(voice, text, path):
    if not os.path.exists(path):
        subprocess.run(["espeak-ng", "-v", voice, "-s", "160", "-w", path, text], check=True)
    with wave.open(path) as w:
        x = np.frombuffer(w.readframes(w.getnframes()), dtype=np.int16).astype(np.float64)
        rate = w.getframerate()
    g = np.gcd(rate, RATE)
    return resample_poly(x, RATE // g, rate // g)


def active_power(x):
    frames = x[: len(x) // 960 * 960].reshape(-1, 960)
    e = (frames ** 2).mean(axis=1)
    return e[e > e.max() * 1e-4].mean()


LEAD = 1.0  # seconds of noise before the first word (--lead)


def talker(utterances):
    gap = np.zeros(int(0.4 * RATE))
    parts = [np.zeros(int(LEAD * RATE))]
    for u in utterances:
        parts += [u, gap]
    x = np.concatenate(parts + [np.zeros(int(0.3 * RATE))])
    return x * np.sqrt((0.05 * 32768) ** 2 / active_power(x))  # -26 dBFS while speaking


def synthesised(voice, sentences, cache):
    return talker([speak(voice, s, os.path.join(cache, f"{voice}-{i}.wav"))
                   for i, s in enumerate(sentences)])


def recorded():
    names = ["Front_Left", "Front_Center", "Front_Right", "Side_Right", "Rear_Right",
             "Rear_Center", "Rear_Left", "Side_Left"]
    return talker([read_wav(os.path.join(RECORDED, n + ".wav")) for n in names])


def coloured(n, exponent, rng):
    spectrum = np.fft.rfft(rng.standard_normal(n))
    f = np.maximum(np.fft.rfftfreq(n, 1.0 / RATE), 20.0)
    return np.fft.irfft(spectrum / f ** (exponent / 2.0), n)


def noise(kind, n, rng, babble):
    if kind == "babble":
        return np.roll(np.resize(babble, n), int(rng.integers(len(babble))))
    return coloured(n, {"white": 0.0, "pink": 1.0, "brown": 2.0}[kind], rng)


def write_wav(path, x):
    with wave.open(path, "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(2)
        w.setframerate(RATE)
        w.writeframes(np.clip(np.round(x), -32768, 32767).astype("<i2").tobytes())


def read_wav(path):
    with wave.open(path) as w:
        return np.frombuffer(w.readframes(w.getnframes()), dtype="<i2").astype(np.float64)


def align(noisy_path, path):
    """Shifts `path` earlier by its lag behind the noisy input (the anchor's frame delay)."""
    x, y = read_wav(noisy_path), read_wav(path)
    n = 1 << int(np.ceil(np.log2(len(x) + len(y))))
    xc = np.fft.irfft(np.fft.rfft(y, n) * np.conj(np.fft.rfft(x, n)), n)[:4096]
    lag = int(np.argmax(xc))
    write_wav(path, np.concatenate([y[lag:], np.zeros(lag)]))


def score(tools, clean, path):
    out = subprocess.run([tools["score"], clean, path], check=True, capture_output=True, text=True)
    return {k: float(v) for k, v in (f.split("=") for f in out.stdout.split())}


def condition(tools, work, name, clean_path, noisy_path):
    d = os.path.join(work, name)
    qel, speex = os.path.join(d, "qel.wav"), os.path.join(d, "speex.wav")
    # The anchor's scores are kept between runs, under the build of the rate
    # change and the measures that made them: a new build makes them again.
    cached = f"{speex}.{tools['score_id']}.score"
    subprocess.run([tools["denoise"], "-q", "--no-png", "-o", qel, noisy_path], check=True,
                   capture_output=True)
    scores = {"noisy": score(tools, clean_path, noisy_path), "qel": score(tools, clean_path, qel)}
    if os.path.exists(cached):
        with open(cached) as f:
            scores["speex"] = {k: float(v) for k, v in (x.split("=") for x in f.read().split())}
    else:
        raw_in, raw_out = os.path.join(d, "in16.raw"), os.path.join(d, "out16.raw")
        subprocess.run([tools["score"], "--down", noisy_path, raw_in], check=True)
        subprocess.run([tools["speex"], raw_in, raw_out], check=True)
        subprocess.run([tools["score"], "--up", raw_out, speex], check=True)
        align(noisy_path, speex)
        scores["speex"] = score(tools, clean_path, speex)
        with open(cached, "w") as f:
            f.write(" ".join(f"{k}={v}" for k, v in scores["speex"].items()))
    return scores


def main():
    global LEAD
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--bin", default="build/host/examples", help="where qel-denoise(-score) are")
    ap.add_argument("--speex", default="build/eval/speex_anchor")
    ap.add_argument("--work", default="build/eval")
    ap.add_argument("--jobs", type=int, default=2)
    ap.add_argument("--lead", type=float, default=LEAD,
                    help="seconds of noise alone before the speech (use a fresh --work)")
    a = ap.parse_args()
    LEAD = a.lead
    tools = {"denoise": os.path.join(a.bin, "qel-denoise"),
             "score": os.path.join(a.bin, "qel-denoise-score"), "speex": a.speex}
    with open(tools["score"], "rb") as f:
        tools["score_id"] = hashlib.sha256(f.read()).hexdigest()[:12]
    cache = os.path.join(a.work, "speech")
    os.makedirs(cache, exist_ok=True)

    babble = sum(np.roll(np.resize(synthesised(v, [s], cache), 12 * RATE), int(i * 0.83 * RATE))
                 for i, (v, s) in enumerate(BABBLE))
    talkers = [(voice.split("+")[0], lambda v=voice, s=sentences: synthesised(v, s, cache))
               for voice, sentences in TALKERS] + [("recorded", recorded)]
    jobs = {}
    with concurrent.futures.ThreadPoolExecutor(a.jobs) as pool:
        for t, (who, make) in enumerate(talkers):
            clean = make()
            for kind in NOISES:
                for snr in SNRS:
                    name = f"{who}-{kind}-{snr}dB"
                    d = os.path.join(a.work, name)
                    os.makedirs(d, exist_ok=True)
                    rng = np.random.default_rng(1000 * t + 10 * NOISES.index(kind) + snr)
                    v = noise(kind, len(clean), rng, babble)
                    v *= np.sqrt(active_power(clean) / 10 ** (snr / 10) / np.mean(v ** 2))
                    peak = np.max(np.abs(clean + v))
                    s = min(1.0, 30000.0 / peak)
                    clean_path, noisy_path = os.path.join(d, "clean.wav"), os.path.join(d, "noisy.wav")
                    if not os.path.exists(noisy_path):
                        write_wav(clean_path, clean * s)
                        write_wav(noisy_path, (clean + v) * s)
                    jobs[name] = pool.submit(condition, tools, a.work, name, clean_path, noisy_path)
    results = {k: f.result() for k, f in jobs.items()}

    hdr = (f"{'condition':28} | {'noisy':^13} | {'speexdsp preprocessor':^27} | {'qel-denoise':^27}\n"
           f"{'':28} | {'LSD':>6} {'STOI':>6} | {'dSNR':>6} {'dSeg':>6} {'LSD':>6} {'STOI':>6} |"
           f" {'dSNR':>6} {'dSeg':>6} {'LSD':>6} {'STOI':>6}")
    print(hdr)
    print("-" * len(hdr.splitlines()[0]))
    rows = {}
    for name, r in results.items():
        row = [r["noisy"]["lsd_db"], r["noisy"]["stoi"]]
        for who in ("speex", "qel"):
            row += [r[who]["snr_db"] - r["noisy"]["snr_db"],
                    r[who]["segsnr_db"] - r["noisy"]["segsnr_db"], r[who]["lsd_db"], r[who]["stoi"]]
        rows[name] = row
    fmt = "{:28} | {:6.2f} {:6.3f} | {:6.2f} {:6.2f} {:6.2f} {:6.3f} | {:6.2f} {:6.2f} {:6.2f} {:6.3f}"
    for name, row in rows.items():
        print(fmt.format(name, *row))
    print("-" * len(hdr.splitlines()[0]))
    for kind in NOISES:
        for snr in SNRS:
            group = [row for name, row in rows.items() if name.endswith(f"-{kind}-{snr}dB")]
            print(fmt.format(f"{kind} {snr} dB, mean of {len(group)}", *np.mean(group, axis=0)))
    group = [row for name, row in rows.items() if name.startswith("recorded-")]
    print(fmt.format(f"recorded talker, mean of {len(group)}", *np.mean(group, axis=0)))
    mean = np.mean(np.array(list(rows.values())), axis=0)
    print(fmt.format(f"mean of {len(rows)} conditions", *mean))
    print("(dSNR, dSeg: gain in SNR and segmental SNR over the noisy input, dB; LSD: log-spectral"
          " distance, dB; STOI: intelligibility, 0-1)")
    checks = [("SNR gain >= 1.2 x the preprocessor's", mean[6] >= 1.2 * mean[2]),
              ("STOI >= the noisy input's", mean[9] >= mean[1]),
              ("STOI >= the preprocessor's", mean[9] >= mean[5]),
              ("LSD <= the preprocessor's", mean[8] <= mean[4])]
    for what, ok in checks:
        print(f"  {'met' if ok else 'NOT met':8} {what}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
