# SPDX-License-Identifier: MIT
"""FIR classes: against SciPy within a float32 tolerance, and bit for bit
against the plain float32 reference (ref.py) that accumulates each output in
the library's order, oldest sample first."""
import numpy as np
import pytest
from scipy import signal

import qel
import ref


# |float32 result - float64 result| <= TOL * sum|h| * max|x|: numTaps roundings
# of at most 2**-24 each, for the tap counts used here (<= 64).
TOL = 64 * 2.0**-23


def lowpass(num_taps, cutoff=0.3):
    return signal.firwin(num_taps, cutoff).astype(np.float32)


def assert_close(got, want, h, x):
    bound = TOL * np.abs(h).sum() * max(1.0, float(np.abs(x).max(initial=0)))
    assert np.max(np.abs(got - want), initial=0) <= bound


@pytest.mark.parametrize("num_taps", [1, 2, 7, 8, 9, 31, 64])
def test_fir_matches_lfilter_and_reference(num_taps):
    rng = np.random.default_rng(num_taps)
    h = (rng.standard_normal(num_taps) / num_taps).astype(np.float32)
    x = ref.rand(rng, 300, specials=False)
    y = qel.Fir(h).process(x)
    assert_close(y, signal.lfilter(h.astype(np.float64), 1.0, x.astype(np.float64)), h, x)
    ref.assert_same_bits(y, ref.fir(h, x))


def test_fir_with_specials_is_bit_exact():
    rng = np.random.default_rng(5)
    h = ref.rand(rng, 9)
    x = ref.rand(rng, 70)
    with np.errstate(all="ignore"):
        ref.assert_same_bits(qel.Fir(h).process(x), ref.fir(h, x))


def test_fir_blocks_of_any_size_continue_the_signal():
    h, x = lowpass(15), ref.rand(np.random.default_rng(6), 200, specials=False)
    whole = qel.Fir(h).process(x)
    f = qel.Fir(h)
    parts, pos = [], 0
    for size in [3, 5, 0, 1, 7, 64, 13, 107]:  # grows the state buffer on the way
        parts.append(f.process(x[pos:pos + size]))
        pos += size
    ref.assert_same_bits(np.concatenate(parts), whole)
    ref.assert_same_bits(f.history, x[-14:])


def test_fir_stores_h_reversed_reset_and_in_place():
    h = np.array([1, 2, 3], dtype=np.float32)
    f = qel.Fir(h)
    ref.assert_same_bits(f.coefficients, h)
    ref.assert_same_bits(f.library_coefficients, h[::-1].copy())
    impulse = np.zeros(5, np.float32)
    impulse[0] = 1
    ref.assert_same_bits(f.process(impulse), np.float32([1, 2, 3, 0, 0]))  # h comes out in order
    f.process(np.ones(4, np.float32))
    f.reset()
    ref.assert_same_bits(f.history, np.zeros(2, np.float32))
    x = impulse.copy()
    assert f.process(x, out=x) is x
    ref.assert_same_bits(x, np.float32([1, 2, 3, 0, 0]))


@pytest.mark.parametrize("M", [1, 2, 3, 5])
@pytest.mark.parametrize("num_taps", [1, 4, 13, 32])
def test_decimator_matches_upfirdn_and_reference(M, num_taps):
    rng = np.random.default_rng(M * 100 + num_taps)
    h = lowpass(num_taps, 0.8 / M) if num_taps > 1 else np.float32([0.75])
    x = ref.rand(rng, 60 * M, specials=False)
    y = qel.FirDecimator(h, M).process(x)
    want = signal.upfirdn(h.astype(np.float64), x.astype(np.float64), down=M)[:len(x) // M]
    assert_close(y, want, h, x)
    np.testing.assert_allclose(want, signal.lfilter(h, 1.0, x.astype(np.float64))[::M])
    ref.assert_same_bits(y, ref.fir_decimate(h, x, M))


def test_decimator_leftover_raises_or_is_dropped_like_the_library():
    h = lowpass(8)
    x = ref.rand(np.random.default_rng(7), 10, specials=False)
    d = qel.FirDecimator(h, 3)
    with pytest.raises(ValueError, match="ignore the last 1 sample"):
        d.process(x)
    ref.assert_same_bits(d.history, np.zeros(7, np.float32))  # nothing ran
    y = d.process(x, drop_leftover=True)
    ref.assert_same_bits(y, ref.fir_decimate(h, x[:9], 3))
    ref.assert_same_bits(d.history, x[2:9])  # input 9 never entered the history


def test_decimator_blocks_of_multiples_of_M_continue_the_signal():
    h, x = lowpass(11), ref.rand(np.random.default_rng(8), 240, specials=False)
    d = qel.FirDecimator(h, 4)
    y = np.concatenate([d.process(x[a:b]) for a, b in [(0, 8), (8, 12), (12, 100), (100, 240)]])
    ref.assert_same_bits(y, qel.FirDecimator(h, 4).process(x))


@pytest.mark.parametrize("L", [1, 2, 3, 4])
@pytest.mark.parametrize("num_taps", [1, 5, 24])
def test_interpolator_matches_upfirdn_and_reference(L, num_taps):
    rng = np.random.default_rng(L * 100 + num_taps)
    h = lowpass(num_taps, 0.9 / L) * np.float32(L) if num_taps > 1 else np.float32([2.0])
    x = ref.rand(rng, 50, specials=False)
    i = qel.FirInterpolator(h, L)
    y = np.concatenate([i.process(x[:17]), i.process(x[17:])])
    want = np.zeros(L * len(x))
    full = signal.upfirdn(h.astype(np.float64), x.astype(np.float64), up=L)[:L * len(x)]
    want[:len(full)] = full  # with one tap upfirdn stops at the last input sample
    assert_close(y, want, h, x)
    ref.assert_same_bits(y, ref.fir_interpolate(h, x, L))


def test_resample_poly_phase():
    """resample_poly(x, L, 1, window=h) is upfirdn with gain L, delayed by
    (len(h) - 1) / 2 output samples: the interpolator's output shifted."""
    L, h = 3, signal.firwin(31, 1.0 / 3).astype(np.float32)
    x = np.sin(np.arange(200) * 0.05).astype(np.float32)
    y = qel.FirInterpolator(h, L).process(x).astype(np.float64)
    want = signal.resample_poly(x.astype(np.float64), L, 1, window=h.astype(np.float64))
    delay = (len(h) - 1) // 2
    np.testing.assert_allclose(L * y[delay:delay + 400], want[:400],
                               atol=1e-5)


def float_to_int16(v):
    return ref.float_to_int(v, np.float32(-32768), np.float32(32767), np.int16)


def test_int16_forms_keep_raw_pcm_values_and_truncate():
    rng = np.random.default_rng(9)
    h = lowpass(16) * np.float32(1.5)
    x = rng.integers(-32768, 32768, 400).astype(np.int16)
    d = qel.FirDecimator(h, 2, dtype=np.int16)
    assert d.dtype == np.int16
    y = d.process(x)
    np.testing.assert_array_equal(y, float_to_int16(ref.fir_decimate(h, x.astype(np.float32), 2)))
    i = qel.FirInterpolator(h, 3, dtype=np.int16)
    y = i.process(x)
    np.testing.assert_array_equal(y, float_to_int16(ref.fir_interpolate(h, x.astype(np.float32), 3)))
    # Hand cases: 0.5 * +-5 truncates toward zero; saturation at both ends.
    half = qel.FirDecimator(np.float32([0.5]), 1, dtype=np.int16)
    np.testing.assert_array_equal(half.process(np.int16([5, -5])), [2, -2])
    two = qel.FirInterpolator(np.float32([1, 1]), 1, dtype=np.int16)
    np.testing.assert_array_equal(two.process(np.int16([32767] * 3)), [32767] * 3)
    np.testing.assert_array_equal(two.process(np.int16([-32768] * 2)), [-1, -32768])


@pytest.mark.parametrize("factor", [1, 2, 3, 5])
def test_rate_changers_with_specials_are_bit_exact(factor):
    rng = np.random.default_rng(40 + factor)
    with np.errstate(all="ignore"):
        for num_taps in (1, 3, 8, 11):
            h, x = ref.rand(rng, num_taps), ref.rand(rng, 12 * factor)
            ref.assert_same_bits(qel.FirDecimator(h, factor).process(x),
                                 ref.fir_decimate(h, x, factor))
            ref.assert_same_bits(qel.FirInterpolator(h, factor).process(x),
                                 ref.fir_interpolate(h, x, factor))
