# SPDX-License-Identifier: MIT
"""Every kind of bad input raises an exception that says what was wrong,
before the library runs."""
import numpy as np
import pytest

import qel

f = np.zeros(8, np.float32)
z = np.zeros(8, np.complex64)
s16 = np.zeros(8, np.int16)
h = np.ones(4, np.float32)

CASES = [
    # (why, call, exception, message fragment)
    ("lists need copy=True", lambda: qel.add([1.0], [2.0]), TypeError, "pass copy=True"),
    ("complex against real", lambda: qel.add(z, f), TypeError, "must be complex64"),
    ("complex denominator", lambda: qel.divide(z, z), TypeError, "divide_parts"),
    ("float PCM input", lambda: qel.normalize(f), TypeError, "int16"),
    ("wrong bits", lambda: qel.denormalize(f, bits=12), ValueError, "16 or 24"),
    ("out of the wrong dtype", lambda: qel.denormalize(f, out=np.zeros(8, np.int32)), TypeError, "int16"),
    ("2-D input", lambda: qel.scale(np.zeros((2, 4), np.float32), 1), ValueError, "1-D"),
    ("strided view", lambda: qel.var(np.zeros(16, np.float32)[::2]), ValueError, "contiguous"),
    ("read-only out", lambda: qel.scale(f, 1, out=np.frombuffer(bytes(32), np.float32)), ValueError, "read-only"),
    ("short out", lambda: qel.scale(f, 1, out=np.zeros(7, np.float32)), ValueError, "8 elements"),
    ("gain too short", lambda: qel.DelayLine(2).process(f, f[:2]), ValueError, "same length"),
    ("sum range past the end", lambda: qel.sum(f, 4, 5), IndexError, "within x"),
    ("negative start", lambda: qel.power_sum(z, -1, 2), IndexError, "within z"),
    ("copy_range past the end", lambda: qel.copy_range(f, 2, 8, f.copy()), IndexError, "within src"),
    ("negative resize", lambda: qel.resize(f, -1), ValueError, ">= 0"),
    ("int16 fill out of range", lambda: qel.fill(s16.copy(), 40000), ValueError, "int16"),
    ("numTaps < 1", lambda: qel.Fir(np.zeros(0, np.float32)), ValueError, "numTaps >= 1"),
    ("M < 1", lambda: qel.FirDecimator(h, 0), ValueError, "M must be >= 1"),
    ("L < 1", lambda: qel.FirInterpolator(h, -2), ValueError, "L must be >= 1"),
    ("bad filter dtype", lambda: qel.FirDecimator(h, 2, dtype=np.int32), TypeError, "float32 or numpy.int16"),
    ("float into an int16 decimator", lambda: qel.FirDecimator(h, 2, dtype=np.int16).process(f), TypeError, "int16"),
    ("decimator out length", lambda: qel.FirDecimator(h, 2).process(f, out=np.zeros(8, np.float32)), ValueError, "4 elements"),
    ("interpolator out length", lambda: qel.FirInterpolator(h, 2).process(f, out=f.copy()), ValueError, "16 elements"),
    ("delay length 0", lambda: qel.DelayLine(0), ValueError, "length must be >= 1"),
    ("line_num 0", lambda: qel.dump(f, line_num=0), ValueError, "line_num"),
    ("Q with int16", lambda: qel.dump(s16, Q=1), TypeError, "no Q form"),
    ("divide_eps b not writeable", lambda: qel.divide_eps(f, np.frombuffer(bytes(32), np.float32), update_b=True), ValueError, "read-only"),
    ("out overlapping the updated b at an offset",
     lambda: (lambda buf: qel.divide_eps(f, buf[:8], out=buf[1:], update_b=True))(np.ones(9, np.float32)),
     ValueError, "overlaps b"),
    ("complex to real even with copy", lambda: qel.var([1j], copy=True), TypeError, "does not convert"),
]


@pytest.mark.parametrize("why,call,exc,fragment", CASES, ids=[c[0] for c in CASES])
def test_bad_input_raises(why, call, exc, fragment):
    with pytest.raises(exc, match=fragment):
        call()


def test_copy_true_makes_lists_and_strided_views_contiguous_float32():
    np.testing.assert_array_equal(qel.add([1, 2], np.arange(6, dtype=np.float32)[::3], copy=True), np.float32([1, 5]))


def test_nothing_ran_when_an_argument_was_bad():
    fir = qel.Fir(h)
    x = np.ones(8, np.float32)
    with pytest.raises(ValueError):
        fir.process(x, out=np.zeros(3, np.float32))
    assert not fir.history.any()
    out = np.full(8, 7, np.float32)
    with pytest.raises(ValueError):
        qel.add(x, x[:7], out=out)
    assert (out == 7).all()
