# SPDX-License-Identifier: MIT
"""The classes keep their state: blocks of any size give what one call gives."""
import numpy as np
import pytest
from scipy import signal

import qel

f32 = np.float32
h = signal.firwin(13, 0.3).astype(f32) * np.linspace(1, 2, 13, dtype=f32)  # not symmetric
x = np.sin(np.arange(240) * f32(0.07)).astype(f32)
pcm = (x * 20000).astype(np.int16)

MAKERS = [  # (make a fresh object, one signal, block sizes: the state grows on the way)
    (lambda: qel.Fir(h), x, [3, 0, 1, 64, 13, 159]),
    (lambda: qel.FirDecimator(h, 3), x, [3, 0, 6, 93, 138]),
    (lambda: qel.FirDecimator(h, 2, dtype=np.int16), pcm, [2, 0, 40, 198]),
    (lambda: qel.FirInterpolator(h, 4), x, [1, 0, 5, 100, 134]),
    (lambda: qel.FirInterpolator(h, 3, dtype=np.int16), pcm, [7, 0, 33, 200]),
    (lambda: qel.DelayLine(7), x, [3, 0, 1, 20, 6, 210]),  # longer than the line: several laps
]


@pytest.mark.parametrize("make,sig,sizes", MAKERS, ids=["Fir", "Dec", "Dec16", "Int", "Int16", "Delay"])
def test_blocks_continue_the_signal_and_reset_restarts_it(make, sig, sizes):
    whole = make().process(sig)
    obj, parts, pos = make(), [], 0
    for n in sizes:
        parts.append(obj.process(sig[pos:pos + n]))
        pos += n
    np.testing.assert_array_equal(np.concatenate(parts), whole)
    obj.reset()
    np.testing.assert_array_equal(obj.process(sig), whole)


def test_filters_agree_with_scipy():
    h64, x64, tol = h.astype(float), x.astype(float), dict(rtol=0, atol=1e-5)
    np.testing.assert_allclose(qel.Fir(h).process(x), signal.lfilter(h64, 1, x64), **tol)
    np.testing.assert_allclose(qel.FirDecimator(h, 3).process(x), signal.upfirdn(h64, x64, down=3)[:80], **tol)
    np.testing.assert_allclose(qel.FirInterpolator(h, 4).process(x), signal.upfirdn(h64, x64, up=4)[:960], **tol)


def test_fir_keeps_h_in_order_and_the_last_inputs_as_history():
    f = qel.Fir(np.float32([1, 2, 3]))
    np.testing.assert_array_equal(f.library_coefficients, [3, 2, 1])
    x = np.float32([1, 0, 0, 0, 5])
    assert f.process(x, out=x) is x  # in place
    np.testing.assert_array_equal(x, [1, 2, 3, 0, 5])  # h comes out in order
    np.testing.assert_array_equal(f.history, [0, 5])
    np.testing.assert_array_equal(f.process(np.float32([0, 0])), [10, 15])


def test_decimator_leftover_is_refused_or_dropped_as_the_library_drops_it():
    d = qel.FirDecimator(np.float32([1, 1]), 3)
    x = np.float32([1, 2, 3, 4, 5, 6, 7])
    with pytest.raises(ValueError, match="ignore the last 1 sample"):
        d.process(x)
    np.testing.assert_array_equal(d.history, [0])  # nothing ran
    np.testing.assert_array_equal(d.process(x, drop_leftover=True), [1, 7])  # x0 + 0, x3 + x2
    np.testing.assert_array_equal(d.history, [6])  # the 7 never entered


def test_int16_interpolator_saturates_both_ways():
    two = qel.FirInterpolator(np.float32([1, 1]), 1, dtype=np.int16)
    np.testing.assert_array_equal(two.process(np.int16([32767, 32767, -32768, -32768])), [32767, 32767, -1, -32768])


def test_delay_line_gain_as_out_and_reset():
    d, g = qel.DelayLine(3), np.float32([2, 2, 2, 2])
    np.testing.assert_array_equal(d.process(np.float32([1, 2, 3, 4]), g, out=g), [0, 0, 0, 2])
    d.reset()
    assert d.write_index == 0 and not d.line.any()
