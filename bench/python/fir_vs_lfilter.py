#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""qel.Fir against scipy.signal.lfilter on 1 s of 48 kHz audio with 128 taps,
both measured in this one run (best of 20), printed as a ratio.

    PYTHONPATH=build/host/python /usr/bin/python3 bench/python/fir_vs_lfilter.py
"""
import timeit

import numpy as np
from scipy import signal

import qel

x = np.random.default_rng(0).standard_normal(48000).astype(np.float32)
h = signal.firwin(128, 0.25).astype(np.float32)
h64, x64 = h.astype(np.float64), x.astype(np.float64)
out = np.empty_like(x)


def run_qel():
    qel.Fir(h).process(x, out=out)


def run_scipy32():
    signal.lfilter(h, np.float32(1), x)


def run_scipy64():
    signal.lfilter(h64, 1.0, x64)


def best(fn):
    return min(timeit.repeat(fn, number=1, repeat=20))


t_qel, t_s32, t_s64 = best(run_qel), best(run_scipy32), best(run_scipy64)
print(f"qel.Fir, 128 taps, 48000 float32 samples: {t_qel * 1e3:.2f} ms")
print(f"scipy.signal.lfilter float32:             {t_s32 * 1e3:.2f} ms  (qel {t_s32 / t_qel:.2f}x as fast)")
print(f"scipy.signal.lfilter float64:             {t_s64 * 1e3:.2f} ms  (qel {t_s64 / t_qel:.2f}x as fast)")
