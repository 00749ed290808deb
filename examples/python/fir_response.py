#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Designs a 63-tap low-pass, runs two tones through qel.Fir in blocks of 256
and plots the filter's response and the spectra before and after to a PNG.

    build/host/python/pytest runs the tests; this runs with the same module:
    PYTHONPATH=build/host/python /usr/bin/python3 examples/python/fir_response.py [out.png]
"""
import sys

import matplotlib
matplotlib.use("Agg")  # no display needed
import matplotlib.pyplot as plt  # noqa: E402
import numpy as np  # noqa: E402
from scipy import signal  # noqa: E402

import qel  # noqa: E402

fs = 48000.0
h = signal.firwin(63, 4000.0, fs=fs).astype(np.float32)

t = np.arange(int(fs)) / fs
x = (0.5 * np.sin(2 * np.pi * 1000 * t) + 0.5 * np.sin(2 * np.pi * 12000 * t)).astype(np.float32)
fir = qel.Fir(h)
y = np.concatenate([fir.process(x[i:i + 256]) for i in range(0, len(x), 256)])

w, resp = signal.freqz(h, worN=4096, fs=fs)
win = np.hanning(8192)
freqs = np.fft.rfftfreq(8192, 1 / fs)
spectrum = [20 * np.log10(np.abs(np.fft.rfft(v[-8192:] * win)) / win.sum() + 1e-12) for v in (x, y)]

fig, (a, b) = plt.subplots(2, 1, figsize=(8, 7))
a.plot(w, 20 * np.log10(np.abs(resp) + 1e-12))
a.set(title="qel.Fir: 63-tap low-pass at 4 kHz (scipy.signal.firwin)", xlabel="Hz",
      ylabel="dB", ylim=(-100, 5))
a.grid(True)
b.plot(freqs, spectrum[0], label="input: 1 kHz + 12 kHz", alpha=0.7)
b.plot(freqs, spectrum[1], label="after qel.Fir", alpha=0.9)
b.set(title="Spectrum of the last 8192 samples", xlabel="Hz", ylabel="dBFS", ylim=(-160, 0))
b.legend()
b.grid(True)
fig.tight_layout()
out = sys.argv[1] if len(sys.argv) > 1 else "fir_response.png"
fig.savefig(out, dpi=100)
print(f"wrote {out}: 12 kHz tone {spectrum[0][2048]:.0f} dBFS in, {spectrum[1][2048]:.0f} dBFS out")
