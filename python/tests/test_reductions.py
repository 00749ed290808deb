# SPDX-License-Identifier: MIT
"""Reductions and power sums: bit for bit against the library's order of
additions, and against NumPy within a float32 tolerance."""
import numpy as np
import pytest

import qel
import ref

f32 = np.float32


def test_sum_var_abs_max_bit_exact():
    rng = np.random.default_rng(21)
    with np.errstate(all="ignore"):
        for n in list(range(0, 41)) + [999]:
            x = ref.rand(rng, n, specials=n % 3 == 0)
            ref.assert_same_bits(np.float32([qel.sum(x)]), np.float32([ref.grouped_sum(x, 8)]))
            if n:
                ref.assert_same_bits(np.float32([qel.var(x)]), np.float32([ref.var(x)]))
            ref.assert_same_bits(np.float32([qel.abs_max(x)]), np.float32([ref.abs_max(x)]))
            for start in range(0, min(n, 10)):
                num = (n - start) // 2
                ref.assert_same_bits(np.float32([qel.sum(x, start, num)]),
                                     np.float32([ref.grouped_sum(x[start:start + num], 8)]))


def test_against_numpy():
    x = ref.rand(np.random.default_rng(22), 4800, specials=False)
    x64 = x.astype(np.float64)
    assert abs(qel.sum(x) - x64.sum()) <= 1e-5 * np.abs(x64).sum()
    assert abs(qel.var(x) - np.var(x64, ddof=1)) <= 1e-5 * np.var(x64, ddof=1)
    assert qel.abs_max(x) == np.abs(x).max()
    assert type(qel.sum(x)) is np.float32


def test_hand_cases():
    x = np.zeros(16, np.float32)
    x[0], x[8], x[9] = 2**24, 1, 1
    assert qel.sum(x) == f32(16777218)  # the ones meet in their group of eight
    assert qel.var(np.float32([1, 2, 3, 4])) == f32(5 / 3)
    assert qel.var(np.float32([7])) == 0
    assert np.signbit(qel.var(np.float32([])))  # 0 / -1
    assert qel.abs_max(np.float32([np.nan, -1])) == 1


def test_power_sum_and_inner_product_bit_exact():
    rng = np.random.default_rng(23)
    with np.errstate(all="ignore"):
        for n in list(range(0, 30)) + [513]:
            z, w = ref.crand(rng, n, specials=False), ref.crand(rng, n, specials=False)
            p = z.real * z.real + z.imag * z.imag
            assert ref.bits(np.float32([qel.power_sum(z)]))[0] == \
                ref.bits(np.float32([ref.grouped_sum(p, 4)]))[0]
            if n > 3:
                got = qel.power_sum(z, 2, n - 3)
                assert got == ref.grouped_sum(p[2:n - 1], 4)
            re, im = f32(0), f32(0)
            for a, b in zip(z, w):
                re = f32(re + (a.real * b.real - a.imag * b.imag))
                im = f32(im + (a.imag * b.real + a.real * b.imag))
            got = qel.inner_product(z, w)
            assert type(got) is np.complex64
            assert (got.real, got.imag) == (re, im)
    z = np.zeros(8, np.complex64)
    z[0], z[4:] = 4096, 1
    assert qel.power_sum(z) == f32(16777220)
