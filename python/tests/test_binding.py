# SPDX-License-Identifier: MIT
"""One table: each wrapper runs the right kernel on its operands in order
(results worked by hand from the docstrings), takes out=, converts only
with copy=True and checks every length."""
from functools import partial

import numpy as np
import pytest

import qel

f32, c64 = np.float32, np.complex64
R, C = (lambda *v: np.array(v, f32)), (lambda *v: np.array(v, c64))  # noqa: E731

a, b = R(1, -2, 3, 0.5, -4), R(4, 0.5, -1, 2, 8)
z, w, r = C(1 + 2j, -3 + 0.5j, 2 - 1j), C(4 + 4j, 2 - 2j, -1 + 0.5j), R(2, -1, 0.5)

ROWS = [  # (function, arguments, result)
    (qel.scale, (a, 0.5), R(0.5, -1, 1.5, 0.25, -2)),
    (qel.gain_ramp, (a, 1, 0.5), R(1, -3, 6, 1.25, -12)),  # gains 1, 1.5, 2, 2.5, 3
    (qel.add_scaled, (a, b, 0.25), R(2, -1.875, 2.75, 1, -2)),
    (qel.scale_add, (a, 3, b), R(7, -5.5, 8, 3.5, -4)),
    (qel.add, (a, b), R(5, -1.5, 2, 2.5, 4)),
    (qel.add, (a, 1), R(2, -1, 4, 1.5, -3)),
    (qel.subtract, (a, b), R(-3, -2.5, 4, -1.5, -12)),
    (qel.add_floor, (a, b, 2.25), R(5, 2.25, 2.25, 2.5, 4)),
    (qel.floor, (a, -1), R(1, -1, 3, 0.5, -1)),
    (qel.subtract_floor, (a, 1, -2), R(0, -2, 2, -0.5, -2)),
    (qel.rsub_ceiling, (2, a, b), R(1, 0.5, -1, 1.5, 6)),
    (qel.minimum, (a, b), R(1, -2, -1, 0.5, -4)),
    (qel.maximum, (a, b), R(4, 0.5, 3, 2, 8)),
    (qel.max_scalar, (a, 0.75), R(1, 0.75, 3, 0.75, 0.75)),
    (qel.compress, (a, b, 0.5), R(2.5, -2, -2, 0.5, -4)),
    (qel.multiply, (a, b), R(4, -1, -3, 1, -32)),
    (qel.divide, (a, b), R(0.25, -4, -3, 0.25, -0.5)),
    (qel.ratio, (a, b, 4), a / (f32(4) + b)),
    (qel.divide_eps, (a, b), R(0.25, -4, -3, 0.25, -0.5)),
    (qel.power_law, (R(4, 9, 16), R(1, 2, -1), 0.5), R(2, 9, 0.25)),
    (qel.window_accumulate, (a, b, R(1, 0, 2, 0.5, 3)), R(13, -1.75, 1, 0.5, 4)),
    (qel.sum, (a,), f32(-1.5)),
    (qel.sum, (a, 2, 3), f32(-0.5)),  # a range that ends at the last element
    (qel.var, (R(1, 3, 5, 7, 9),), f32(10)),
    (qel.abs_max, (a,), f32(4)),
    (qel.normalize, (np.int16([16384, -32768, 1]),), R(0.5, -1, 2**-15)),
    (qel.normalize, (np.int32([1 << 22, -(1 << 23)]),), R(0.5, -1)),
    (qel.denormalize, (R(0.5, -1, 1, -0.25),), np.int16([16384, -32768, 32767, -8192])),
    (partial(qel.denormalize, bits=24), (R(0.5, -1),), np.int32([1 << 22, -(1 << 23)])),
    (qel.copy, (a,), a),
    (qel.resize, (a, 2), R(1, -2)),
    (qel.scale, (z, 0.5), C(0.5 + 1j, -1.5 + 0.25j, 1 - 0.5j)),
    (qel.add, (z, w), C(5 + 6j, -1 - 1.5j, 1 - 0.5j)),
    (qel.subtract, (z, w), C(-3 - 2j, -5 + 2.5j, 3 - 1.5j)),
    (qel.add_scaled, (z, w, 0.5), C(3 + 4j, -2 - 0.5j, 1.5 - 0.75j)),
    (qel.scale_add, (z, 2, w), C(6 + 8j, -4 - 1j, 3 - 1.5j)),
    (qel.multiply, (z, w), C(-4 + 12j, -5 + 7j, -1.5 + 2j)),
    (qel.multiply, (z, r), C(2 + 4j, 3 - 0.5j, 1 - 0.5j)),
    (qel.multiply, (r, z), C(2 + 4j, 3 - 0.5j, 1 - 0.5j)),
    (qel.multiply_conj, (z, w), C(12 + 4j, -7 - 5j, -2.5)),
    (qel.multiply_conj_add, (C(1 - 1j, 1 - 1j, 1 - 1j), z, w), C(13 + 3j, -6 - 6j, -1.5 - 1j)),
    (qel.conj, (z,), C(1 - 2j, -3 - 0.5j, 2 + 1j)),
    (qel.divide, (z, r), C(0.5 + 1j, 3 - 0.5j, 4 - 2j)),
    (qel.divide_parts, (z, w), C(0.25 + 0.5j, -1.5 - 0.25j, -2 - 2j)),
    (qel.minimum, (z, w), C(1 + 2j, 2 - 2j, -1 + 0.5j)),  # powers 5, 9.25, 5 against 32, 8, 1.25
    (qel.maximum, (z, w), C(4 + 4j, -3 + 0.5j, 2 - 1j)),
    (qel.magnitude_floor, (z, 2.5), C(2.5, -3 + 0.5j, 2.5)),
    (qel.power, (z,), R(5, 9.25, 5)),
    (qel.magnitude, (C(3 + 4j, -5j, 6 - 8j),), R(5, 5, 10)),
    (qel.power_sum, (z,), f32(19.25)),
    (qel.power_sum, (z, 1, 2), f32(14.25)),
    (qel.inner_product, (z, w), c64(-10.5 + 21j)),
    (qel.copy, (z,), z),
    (qel.resize, (z, 4), C(1 + 2j, -3 + 0.5j, 2 - 1j, 0)),
]
NO_OUT = {"sum", "var", "abs_max", "power_sum", "inner_product", "resize"}


def name(fn):
    return getattr(fn, "__name__", None) or fn.func.__name__


def rows(keep=lambda fn, args, want: True):
    return [pytest.param(*row, id=f"{name(row[0])}-{k}") for k, row in enumerate(ROWS) if keep(*row)]


def arrays(args):
    return [k for k, x in enumerate(args) if isinstance(x, np.ndarray)]


def copies(args):
    return [x.copy() if isinstance(x, np.ndarray) else x for x in args]


def assert_same(got, want):
    assert type(got) is type(want) and np.asarray(got).dtype == np.asarray(want).dtype
    np.testing.assert_array_equal(got, want)
    np.testing.assert_array_equal(np.signbit(np.real(got)), np.signbit(np.real(want)))


@pytest.mark.parametrize("fn,args,want", rows())
def test_runs_the_right_kernel_on_operands_in_order(fn, args, want):
    before = copies(args)
    assert_same(fn(*args), want)
    for x, y in zip(args, before):
        assert_same(x, y)  # inputs are never written


@pytest.mark.parametrize("fn,args,want", rows(lambda fn, args, want: name(fn) not in NO_OUT))
def test_out_may_be_a_fresh_array_or_any_input(fn, args, want):
    for k in [None] + [k for k in arrays(args) if args[k].dtype == want.dtype and args[k].size == want.size]:
        xs = copies(args)
        out = np.full_like(want, 7) if k is None else xs[k]
        assert fn(*xs, out=out) is out
        assert_same(out, want)


@pytest.mark.parametrize("fn,args,want", rows(lambda fn, args, want: name(fn) != "normalize"))
def test_converts_only_with_copy_true(fn, args, want):
    wide = [x.astype(np.complex128 if x.dtype == c64 else np.float64) if k in arrays(args) else x
            for k, x in enumerate(args)]
    with pytest.raises(TypeError, match="copy=True"):
        fn(*wide)
    assert_same(fn(*wide, copy=True), want)


@pytest.mark.parametrize("fn,args,want", rows(lambda fn, args, want: len(arrays(args)) > 1))
def test_every_operand_length_is_checked(fn, args, want):
    for k in arrays(args):
        xs = copies(args)
        xs[k] = xs[k][:-1].copy()
        with pytest.raises(ValueError, match="same length"):
            fn(*xs)


def test_out_overlapping_inputs_at_an_offset_reads_inputs_as_they_were():
    buf = np.arange(10, dtype=f32)
    assert_same(qel.add(buf[:8], buf[1:9], out=buf[2:10]), np.arange(1, 17, 2, dtype=f32))
    buf = np.arange(10, dtype=f32)  # a * 0.5 + b with out = b
    assert_same(qel.scale_add(buf[1:9], 0.5, buf[:8], out=buf[:8]), np.arange(1, 23, 3, dtype=f32) / 2)


def test_divide_eps_leaves_b_alone_unless_asked():
    num, den = R(1, -1), R(0, -0.0)
    assert_same(qel.divide_eps(num, den), R(1e8, -1e8))
    assert_same(den, R(0, -0.0))


def test_fill_and_copy_range_per_dtype():
    assert_same(qel.fill(np.zeros(1, f32), -0.0), R(-0.0))
    assert_same(qel.fill(np.zeros(1, np.int16), -32768), np.int16([-32768]))
    for src, end, want in [(R(0, 1, 2, 3), 1, R(9, 9, 9, 9)), (C(0, 1j, 2, 3j), 3, C(9, 1j, 2, 3j))]:
        assert_same(qel.copy_range(src, 1, end, np.full_like(src, 9)), want)  # end inclusive, > start


def test_dump_prints_each_dtype_through_the_library(capfd):
    qel.dump(R(1, -2.5, 3), line_num=2)
    qel.dump(C(1 - 2j), line_num=1, Q=4)  # the Q form prints the same, unscaled
    qel.dump(np.int16([-32768]), line_num=1)
    assert capfd.readouterr().out == ("\n\n 1.000000e+00,\n -2.500000e+00,\n\n\n 3.000000e+00,\n\n\n"
                                      "\n\n1.000000e+00-2.000000e+00i, \n\n\n\n\n-32768, \n\n\n")


def test_agrees_with_numpy():
    rng = np.random.default_rng(1)
    p, q = (rng.standard_normal((2, 1000)) + 1j * rng.standard_normal((2, 1000))).astype(c64)
    np.testing.assert_allclose(qel.multiply_conj(p, q), p.astype(complex) * np.conj(q), rtol=1e-6, atol=1e-6)
    np.testing.assert_allclose(qel.inner_product(p, q), np.sum(p.astype(complex) * q), atol=1e-3)
    np.testing.assert_allclose(qel.var(p.real.copy()), np.var(p.real, ddof=1), rtol=1e-5)
    pcm = np.arange(-32768, 32768).astype(np.int16)  # every 16-bit sample: exact, and back
    np.testing.assert_array_equal(qel.normalize(pcm), pcm / 32768.0)
    np.testing.assert_array_equal(qel.denormalize(qel.normalize(pcm)), pcm)
