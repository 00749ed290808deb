# SPDX-License-Identifier: MIT
"""Delay line, windowed accumulation and console dumps."""
import numpy as np

import qel
import ref

f32 = np.float32


def test_delay_line_against_reference_across_calls():
    rng = np.random.default_rng(31)
    length = 7
    d = qel.DelayLine(length)
    x = ref.rand(rng, 100)
    g = ref.rand(rng, 100)
    history = np.concatenate([np.zeros(length, np.float32), x])
    got, pos = [], 0
    with np.errstate(all="ignore"):
        for size in [3, 0, 1, 20, 6, 70]:  # longer than the line: several laps in one call
            got.append(d.process(x[pos:pos + size], g[pos:pos + size]))
            pos += size
        ref.assert_same_bits(np.concatenate(got), g * history[:100])
    assert d.write_index == 100 % length
    d.reset()
    assert d.write_index == 0 and not d.line.any()


def test_delay_line_hand_case_and_in_place():
    d = qel.DelayLine(3)
    x = np.float32([1, 2, 3, 4, 5])
    assert d.process(x, 1.0, out=x) is x
    ref.assert_same_bits(x, f32([0, 0, 0, 1, 2]))
    ref.assert_same_bits(d.line, f32([4, 5, 3]))
    ref.assert_same_bits(d.process(f32([6, 7])), f32([3, 4]))


def test_window_accumulate_reads_the_window_backwards():
    rng = np.random.default_rng(32)
    with np.errstate(all="ignore"):
        for n in list(range(0, 12)) + [257]:
            acc, buff, w = ref.rand(rng, n), ref.rand(rng, n), ref.rand(rng, n)
            want = acc + buff * w[::-1]
            ref.assert_same_bits(qel.window_accumulate(acc, buff, w), want)
            qel.window_accumulate(acc, buff, w, out=acc)
            ref.assert_same_bits(acc, want)


def test_dump_prints_the_library_text(capfd):
    qel.dump(f32([1.0, -2.5, 3.0]), line_num=2)
    assert capfd.readouterr().out == "\n\n 1.000000e+00,\n -2.500000e+00,\n\n\n 3.000000e+00,\n\n\n"
    z = np.zeros(3, np.complex64)
    z.real, z.imag = [1, 1, 1], [-2, 2, -0.0]
    qel.dump(z, line_num=-5, Q=4)  # Q prints the same values, unscaled
    assert capfd.readouterr().out == ("\n\n1.000000e+00-2.000000e+00i, \n1.000000e+00+2.000000e+00i, \n"
                                      "1.000000e+00+-0.000000e+00i, \n\n\n")
    qel.dump(np.int16([-32768]), line_num=1)
    assert capfd.readouterr().out == "\n\n-32768, \n\n\n"
    qel.dump(np.zeros(0, np.float32))
    assert capfd.readouterr().out == "\n\n"
