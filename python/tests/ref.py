# SPDX-License-Identifier: MIT
"""Plain float32 references written straight from the library's formulas,
with every rounding where the formula puts it, and helpers to compare bits.

NumPy's float32 ufuncs round each operation to float32 and never fuse a
multiply with an add, so an element-wise expression here has the library's
bits; sums are spelled out in the library's order of additions."""
import ctypes
import ctypes.util

import numpy as np

f32 = np.float32
_libm = ctypes.CDLL(ctypes.util.find_library("m"))
_libm.powf.restype = ctypes.c_float
_libm.powf.argtypes = [ctypes.c_float, ctypes.c_float]

SPECIALS = np.array([0.0, -0.0, np.inf, -np.inf, np.nan, 1e-45, -1e-40, 3.4028235e38,
                     -3.4028235e38, 1.0, -1.0], dtype=np.float32)


def rand(rng, n, specials=True, scale=4.0):
    """n float32 values, a few of them special (signed zeros, inf, NaN, denormals)."""
    x = (rng.standard_normal(n) * scale).astype(np.float32)
    if specials and n:
        k = rng.integers(0, n, size=max(1, n // 8))
        x[k] = rng.choice(SPECIALS, size=k.size)
    return x


def crand(rng, n, specials=True):
    z = np.empty(n, dtype=np.complex64)
    z.real = rand(rng, n, specials)
    z.imag = rand(rng, n, specials)
    return z


def bits(a):
    """uint32 bit patterns of a float32 array, every NaN made one pattern."""
    a = np.ascontiguousarray(a, dtype=np.float32)
    b = a.view(np.uint32).copy()
    b[np.isnan(a)] = 0x7FC00000
    return b


def assert_same_bits(got, want):
    got, want = np.asarray(got), np.asarray(want)
    assert got.dtype == want.dtype, (got.dtype, want.dtype)
    assert got.shape == want.shape, (got.shape, want.shape)
    if got.dtype == np.complex64:
        assert_same_bits(got.real.copy(), want.real.copy())
        assert_same_bits(got.imag.copy(), want.imag.copy())
    elif got.dtype == np.float32:
        g, w = bits(got), bits(want)
        bad = np.nonzero(g != w)[0]
        assert bad.size == 0, f"first difference at {bad[0]}: {got[bad[0]]!r} != {want[bad[0]]!r}"
    else:
        np.testing.assert_array_equal(got, want)


def cpx(re, im):
    z = np.empty(len(re), dtype=np.complex64)
    z.real, z.imag = re, im
    return z


# ---- PCM -------------------------------------------------------------------

def float_to_int(v, lo, hi, dtype):
    """Saturate with strict comparisons, then truncate toward zero; NaN -> 0."""
    out = np.zeros(v.shape, dtype=dtype)
    for k, x in enumerate(v):
        if x > hi:
            out[k] = int(hi)
        elif x < lo:
            out[k] = int(lo)
        elif x == x:
            out[k] = int(x)  # int() truncates toward zero
    return out


def denormalize(x, bits=16):
    if bits == 16:
        return float_to_int(x * f32(32768.0), f32(-32768.0), f32(32767.0), np.int16)
    return float_to_int(x * f32(8388608.0), f32(-8388608.0), f32(8388607.0), np.int32)


# ---- Sums in the library's order -------------------------------------------

def grouped_sum(terms, group):
    """One running sum; each full group summed left to right, then added;
    the remainder added one by one."""
    terms = np.asarray(terms, dtype=np.float32)
    s = f32(0.0)
    full = len(terms) // group * group
    for g in range(0, full, group):
        t = terms[g]
        for k in range(1, group):
            t = f32(t + terms[g + k])
        s = f32(s + t)
    for k in range(full, len(terms)):
        s = f32(s + terms[k])
    return s


def var(x):
    n = len(x)
    if n == 1:
        return f32(0.0)
    s = f32(0.0)
    for v in x:
        s = f32(s + v)
    avg = f32(s / f32(n))
    acc = f32(0.0)
    for v in x:
        d = f32(v - avg)
        acc = f32(acc + d * d)
    return f32(acc / f32(n - 1))


def abs_max(x):
    m = f32(0.0)
    for v in x:
        t = v if v > 0 else -v
        if m < t:
            m = t
    return m


def powf(base, exponent):
    return f32(_libm.powf(float(base), float(exponent)))


# ---- FIR filters over the state-buffer convention ---------------------------

def fir_windows(coeffs, w, starts):
    """y[n] = sum_k coeffs[k] * w[starts[n] + k], one float32 accumulator per
    output taking the products in ascending k (vectorised across outputs)."""
    acc = np.zeros(len(starts), dtype=np.float32)
    for k, c in enumerate(np.asarray(coeffs, dtype=np.float32)):
        acc = acc + c * w[starts + k]
    return acc


def fir(h, x, history=None):
    """Block FIR with impulse response h (pCoeffs = h reversed)."""
    h = np.asarray(h, dtype=np.float32)
    hist = np.zeros(len(h) - 1, np.float32) if history is None else history
    w = np.concatenate([hist, x]).astype(np.float32)
    return fir_windows(h[::-1], w, np.arange(len(x)))


def fir_decimate(h, x, M):
    h = np.asarray(h, dtype=np.float32)
    n_out = len(x) // M
    w = np.concatenate([np.zeros(len(h) - 1, np.float32), x[:n_out * M]])
    return fir_windows(h[::-1], w, np.arange(n_out) * M)


def fir_interpolate(h, x, L):
    h = np.asarray(h, dtype=np.float32)
    stuffed = np.zeros(len(x) * L, dtype=np.float32)
    stuffed[::L] = x
    w = np.concatenate([np.zeros(len(h) - 1, np.float32), stuffed])
    return fir_windows(h[::-1], w, np.arange(len(stuffed)))
