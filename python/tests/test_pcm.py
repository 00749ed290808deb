# SPDX-License-Identifier: MIT
"""PCM conversion: exact scalings and the saturate-then-truncate rule."""
import numpy as np
import pytest

import qel
import ref



def test_normalize_is_exact_power_of_two_scaling():
    pcm16 = np.arange(-32768, 32768, dtype=np.int16)
    np.testing.assert_array_equal(qel.normalize(pcm16), pcm16.astype(np.float64) / 32768.0)
    pcm24 = np.array([-8388608, -1, 0, 1, 8388607, 16777216], dtype=np.int32)
    np.testing.assert_array_equal(qel.normalize(pcm24), pcm24.astype(np.float64) / 8388608.0)


@pytest.mark.parametrize("bits", [16, 24])
def test_denormalize_matches_reference_bit_for_bit(bits):
    rng = np.random.default_rng(1)
    x = np.concatenate([ref.rand(rng, 500, scale=0.7), ref.SPECIALS,
                        np.float32([0.99999994, -0.99999994, 1.5, 2.9 / 32768, -2.9 / 32768])])
    with np.errstate(all="ignore"):
        ref.assert_same_bits(qel.denormalize(x, bits=bits), ref.denormalize(x, bits))


@pytest.mark.parametrize("dtype,bits", [(np.int16, 16), (np.int32, 24)])
def test_round_trip_and_out(dtype, bits):
    pcm = np.random.default_rng(2).integers(-2**(bits - 1), 2**(bits - 1), 257).astype(dtype)
    x = np.empty(pcm.size, np.float32)
    assert qel.normalize(pcm, out=x) is x
    back = np.empty_like(pcm)
    assert qel.denormalize(x, bits=bits, out=back) is back
    np.testing.assert_array_equal(back, pcm)


def test_bits_override_with_copy_converts_int64():
    np.testing.assert_array_equal(qel.normalize([16384, -16384], bits=16, copy=True), [0.5, -0.5])
