# SPDX-License-Identifier: MIT
"""Element-wise families (scaling, sums with floors, min/max, products,
division, power): bit for bit against float32 formulas, every length 0..40
and a large one so every group and remainder of the kernels is reached, with
special values mixed in; plus out= and in-place use."""
import numpy as np
import pytest

import qel
import ref

f32 = np.float32
LENGTHS = list(range(0, 41)) + [1001]
EPS = f32(1e-8)


def where(c, a, b):
    return np.where(c, a, b).astype(np.float32)


def guarded_division(num, den):
    """Zero denominators: /eps in full groups of four, *1e8 in the tail."""
    n = len(den)
    tail = np.arange(n) >= n // 4 * 4
    zero = den == 0
    q = num / where(zero, EPS, den)
    return where(zero & tail, num * f32(1e8), q)


def cpx_power(z):
    return z.real * z.real + z.imag * z.imag


# (name, call, float32 reference)
REAL_CASES = [
    ("scale", lambda a, b: qel.scale(a, 0.3), lambda a, b: a * f32(0.3)),
    ("add_scaled", lambda a, b: qel.add_scaled(a, b, -1.7), lambda a, b: a + b * f32(-1.7)),
    ("scale_add", lambda a, b: qel.scale_add(a, 2.5, b), lambda a, b: a * f32(2.5) + b),
    ("add", lambda a, b: qel.add(a, b), lambda a, b: a + b),
    ("add scalar", lambda a, b: qel.add(a, 0.1), lambda a, b: a + f32(0.1)),
    ("subtract", lambda a, b: qel.subtract(a, b), lambda a, b: a - b),
    ("add_floor", lambda a, b: qel.add_floor(a, b, 0.5),
     lambda a, b: where(f32(0.5) > a + b, f32(0.5), a + b)),
    ("floor", lambda a, b: qel.floor(a, -1.0), lambda a, b: where(f32(-1) > a, f32(-1), a)),
    ("subtract_floor", lambda a, b: qel.subtract_floor(a, 1.5, 0.0),
     lambda a, b: where(f32(0) > a - f32(1.5), f32(0), a - f32(1.5))),
    ("rsub_ceiling", lambda a, b: qel.rsub_ceiling(2.0, a, b),
     lambda a, b: where(f32(2) - a > b, b, f32(2) - a)),
    ("minimum", lambda a, b: qel.minimum(a, b), lambda a, b: where(a < b, a, b)),
    ("maximum", lambda a, b: qel.maximum(a, b), lambda a, b: where(a > b, a, b)),
    ("max_scalar", lambda a, b: qel.max_scalar(a, 0.0), lambda a, b: where(a > 0, a, f32(0))),
    ("compress", lambda a, b: qel.compress(a, b, 1.0),
     lambda a, b: where(a > 1, f32(1) + (a - f32(1)) * b, a)),
    ("multiply", lambda a, b: qel.multiply(a, b), lambda a, b: a * b),
    ("divide", lambda a, b: qel.divide(a, b), guarded_division),
    ("ratio", lambda a, b: qel.ratio(a, b, 0.5), lambda a, b: guarded_division(a, f32(0.5) + b)),
    ("divide_eps", lambda a, b: qel.divide_eps(a, b), lambda a, b: a / where(b == 0, EPS, b)),
    ("power_law", lambda a, b: qel.power_law(np.abs(a), b, 0.5),
     lambda a, b: np.array([(lambda t: f32(0) if t != t else t)(ref.powf(abs(x), f32(0.5) * e))
                            for x, e in zip(a, b)], dtype=np.float32)),
]

CPX_CASES = [
    ("scale", lambda a, b: qel.scale(a, 0.3), lambda a, b: ref.cpx(a.real * f32(0.3), a.imag * f32(0.3))),
    ("add_scaled", lambda a, b: qel.add_scaled(a, b, 2.0),
     lambda a, b: ref.cpx(a.real + b.real * f32(2), a.imag + b.imag * f32(2))),
    ("scale_add", lambda a, b: qel.scale_add(a, 2.0, b),
     lambda a, b: ref.cpx(a.real * f32(2) + b.real, a.imag * f32(2) + b.imag)),
    ("add", lambda a, b: qel.add(a, b), lambda a, b: ref.cpx(a.real + b.real, a.imag + b.imag)),
    ("subtract", lambda a, b: qel.subtract(a, b), lambda a, b: ref.cpx(a.real - b.real, a.imag - b.imag)),
    ("minimum", lambda a, b: qel.minimum(a, b), lambda a, b: np.where(cpx_power(a) < cpx_power(b), a, b)),
    ("maximum", lambda a, b: qel.maximum(a, b), lambda a, b: np.where(cpx_power(a) > cpx_power(b), a, b)),
    ("magnitude_floor", lambda a, b: qel.magnitude_floor(a, 1.5),
     lambda a, b: np.where(cpx_power(a) < f32(1.5) * f32(1.5), np.complex64(1.5), a)),
    ("multiply", lambda a, b: qel.multiply(a, b),
     lambda a, b: ref.cpx(a.real * b.real - a.imag * b.imag, a.imag * b.real + a.real * b.imag)),
    ("multiply by real", lambda a, b: qel.multiply(a, b.real.copy()),
     lambda a, b: ref.cpx(a.real * b.real, a.imag * b.real)),
    ("multiply_conj", lambda a, b: qel.multiply_conj(a, b),
     lambda a, b: ref.cpx(a.real * b.real + a.imag * b.imag, a.imag * b.real - a.real * b.imag)),
    ("multiply_conj_add", lambda a, b: qel.multiply_conj_add(b, a, b),
     lambda a, b: ref.cpx(b.real + (a.real * b.real + a.imag * b.imag),
                          b.imag + (a.imag * b.real - a.real * b.imag))),
    ("conj", lambda a, b: qel.conj(a), lambda a, b: ref.cpx(a.real, -a.imag)),
    ("divide by real", lambda a, b: qel.divide(a, b.real.copy()),
     lambda a, b: ref.cpx(guarded_division(a.real, b.real), guarded_division(a.imag, b.real))),
    ("divide_parts", lambda a, b: qel.divide_parts(a, b),
     lambda a, b: ref.cpx(a.real / where(b.real == 0, EPS, b.real),
                          a.imag / where(b.imag == 0, EPS, b.imag))),
    ("power", lambda a, b: qel.power(a), lambda a, b: cpx_power(a)),
    ("magnitude", lambda a, b: qel.magnitude(a), lambda a, b: np.sqrt(cpx_power(a))),
]


def inputs(rng, n, complex_):
    a = ref.crand(rng, n) if complex_ else ref.rand(rng, n)
    b = ref.crand(rng, n) if complex_ else ref.rand(rng, n)
    if n > 3:
        b[rng.integers(0, n, max(1, n // 5))] = 0  # zero denominators, ties with a
        b[n // 2] = a[n // 2]
    return a, b


@pytest.mark.parametrize("complex_,name,call,want",
                         [(False,) + c for c in REAL_CASES] + [(True,) + c for c in CPX_CASES],
                         ids=[f"real-{c[0]}" for c in REAL_CASES] + [f"cpx-{c[0]}" for c in CPX_CASES])
def test_bit_exact_against_formula(complex_, name, call, want):
    rng = np.random.default_rng(abs(hash(name)) % 2**32)
    with np.errstate(all="ignore"):
        for n in LENGTHS:
            a, b = inputs(rng, n, complex_)
            a0, b0 = a.copy(), b.copy()
            got = call(a, b)
            ref.assert_same_bits(got, want(a0, b0))
            ref.assert_same_bits(a, a0)  # inputs untouched
            ref.assert_same_bits(b, b0)


def test_against_numpy_semantics_where_they_agree():
    rng = np.random.default_rng(11)
    a, b = ref.rand(rng, 257, specials=False), ref.rand(rng, 257, specials=False)
    np.testing.assert_array_equal(qel.add(a, b), a + b)
    np.testing.assert_array_equal(qel.minimum(a, b), np.minimum(a, b))
    np.testing.assert_array_equal(qel.maximum(a, b), np.maximum(a, b))
    np.testing.assert_allclose(qel.gain_ramp(a, 0.5, 0.001),
                               a * (0.5 + 0.001 * np.arange(257)), rtol=1e-5, atol=1e-6)


def test_complex_products_and_magnitudes_against_numpy():
    rng = np.random.default_rng(12)
    a, b = ref.crand(rng, 300, specials=False), ref.crand(rng, 300, specials=False)
    a64, b64 = a.astype(np.complex128), b.astype(np.complex128)
    tol = dict(rtol=1e-6, atol=1e-5)
    np.testing.assert_allclose(qel.multiply(a, b), a64 * b64, **tol)
    np.testing.assert_allclose(qel.multiply_conj(a, b), a64 * np.conj(b64), **tol)
    np.testing.assert_allclose(qel.magnitude(a), np.abs(a64), **tol)
    np.testing.assert_allclose(qel.power(a), np.abs(a64) ** 2, rtol=1e-6, atol=1e-4)
    np.testing.assert_allclose(qel.inner_product(a, b), np.sum(a64 * b64), rtol=1e-5)
    np.testing.assert_allclose(qel.power_sum(a), np.sum(np.abs(a64) ** 2), rtol=1e-5)


def test_gain_ramp_runs_the_gain_as_a_float32_sum():
    x = np.ones(12, np.float32)
    g, want = f32(0), []
    for _ in x:
        want.append(g)
        g = f32(g + f32(0.1))
    ref.assert_same_bits(qel.gain_ramp(x, 0.0, 0.1), np.array(want, np.float32))
    assert qel.gain_ramp(x, 0.0, 0.1)[10] == f32(1.00000012)


@pytest.mark.parametrize("fn", ["add", "subtract", "minimum", "maximum", "multiply",
                                "scale_add", "add_scaled"])
def test_out_may_be_either_input(fn):
    f = getattr(qel, fn)
    call = {"scale_add": lambda a, b, **k: f(a, 0.5, b, **k),
            "add_scaled": lambda a, b, **k: f(a, b, 0.5, **k)}.get(fn, f)
    rng = np.random.default_rng(13)
    for make in (ref.rand, ref.crand):
        a, b = make(rng, 19, False), make(rng, 19, False)
        want = call(a, b)
        for target in ("a", "b"):
            x, y = a.copy(), b.copy()
            out = x if target == "a" else y
            assert call(x, y, out=out) is out
            ref.assert_same_bits(out, want)
        x = a.copy()
        ref.assert_same_bits(call(x, x, out=x), call(a, a.copy()))  # all three the same array


def test_divide_eps_update_b_writes_eps_like_the_library():
    b = np.float32([0, 2, -0.0])
    a = np.float32([1, 4, -1])
    ref.assert_same_bits(qel.divide_eps(a, b), np.float32([1e8, 2, -1e8]))
    ref.assert_same_bits(b, np.float32([0, 2, -0.0]))  # untouched by default
    qel.divide_eps(a, b, update_b=True)
    ref.assert_same_bits(b, np.float32([1e-8, 2, 1e-8]))
    same = np.float32([0, 3])
    ref.assert_same_bits(qel.divide_eps(same, same, update_b=False), np.float32([0, 1]))


def test_out_overlapping_inputs_at_an_offset_reads_inputs_as_they_were():
    buf = np.arange(10, dtype=np.float32)
    want = buf[:8] + buf[1:9]
    ref.assert_same_bits(qel.add(buf[:8], buf[1:9], out=buf[2:10]), want)
    buf = np.arange(10, dtype=np.float32)
    want = buf[1:9] * f32(0.5) + buf[:8]
    ref.assert_same_bits(qel.scale_add(buf[1:9], 0.5, buf[:8], out=buf[:8]), want)
