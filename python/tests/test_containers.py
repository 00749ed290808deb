# SPDX-License-Identifier: MIT
"""Containers: fill, copies and resizing through the library's allocator."""
import numpy as np
import pytest

import qel
import ref



def test_fill_each_dtype():
    a = np.zeros(5, np.float32)
    ref.assert_same_bits(qel.fill(a, -0.0), np.full(5, -0.0, np.float32))
    z = np.zeros(3, np.complex64)
    ref.assert_same_bits(qel.fill(z, 0.1 + 2j), np.full(3, 0.1 + 2j, np.complex64))
    s = np.zeros(4, np.int16)
    np.testing.assert_array_equal(qel.fill(s, -32768), [-32768] * 4)


def test_copy_is_bit_exact_and_new_by_default():
    rng = np.random.default_rng(3)
    for x in (ref.rand(rng, 37), ref.crand(rng, 37)):
        y = qel.copy(x)
        assert y is not x
        ref.assert_same_bits(y, x)
        assert qel.copy(x, out=x) is x


@pytest.mark.parametrize("start,end,copied", [
    (1, 3, [1, 2, 3]),     # inclusive end
    (2, 3, [2, 3]),        # end = start + 1 copies two
    (2, 2, []),            # end == start copies nothing, as the library does
    (3, 1, []),            # end < start copies nothing
])
def test_copy_range(start, end, copied):
    src = np.arange(6, dtype=np.float32)
    out = np.full(6, -1, np.float32)
    qel.copy_range(src, start, end, out)
    want = np.full(6, -1, np.float32)
    want[copied] = src[copied]
    ref.assert_same_bits(out, want)
    zsrc, zout = src * (1 + 1j), np.zeros(6, np.complex64)
    qel.copy_range(zsrc.astype(np.complex64), start, end, zout)
    np.testing.assert_array_equal(zout[copied], zsrc[copied])


@pytest.mark.parametrize("n", [0, 1, 4, 9])
def test_resize_keeps_leading_elements_and_pads_zeros(n):
    rng = np.random.default_rng(4)
    for x in (ref.rand(rng, 4), ref.crand(rng, 4)):
        want = np.zeros(n, x.dtype)
        k = min(n, 4)
        want[:k] = x[:k]
        ref.assert_same_bits(qel.resize(x, n), want)
