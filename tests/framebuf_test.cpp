// SPDX-License-Identifier: MIT
// Delay line and windowed accumulation: hand-worked cases.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

struct CircularCase {
  std::vector<float> line;  // the delay line before the call
  int write_index;
  std::vector<float> in, gain;
  std::vector<float> want_out, want_line;
  const char* why;
};
const CircularCase kCircularCases[] = {
    {{0, 0, 0},
     0,
     {1, 2, 3, 4, 5},
     {1, 1, 1, 1, 1},
     {0, 0, 0, 1, 2},
     {4, 5, 3},
     "new line of 3, five inputs: the fourth output is the first input"},
    {{4, 5, 3},
     2,
     {6, 7},
     {1, 1},
     {3, 4},
     {7, 5, 6},
     "the next call continues at write position (0 + 5) mod 3 = 2"},
    {{9},
     0,
     {1, 2, 3},
     {2, 3, 4},
     {18, 3, 8},
     {3},
     "line of 1: each output is the previous input times its own gain"},
    {{10, 20},
     1,
     {1, 2, 3, 4, 5, 6, 7},
     {1, 1, 1, 1, 1, 1, 1},
     {20, 10, 1, 2, 3, 4, 5},
     {6, 7},
     "seven inputs through a line of 2 wrap three times; later outputs are this call's inputs"},
    {{1, 2, -3},
     1,
     {4, 5, 6, 7},
     {2, 0, 0, 2},
     {4, -0.0f, 0, 8},
     {6, 7, 5},
     "gain 0 gives a zero (signed as the slot) and still stores the input"},
    {{1, 2, 3}, 2, {}, {}, {}, {1, 2, 3}, "no input changes nothing"},
    {{5, 6, 7, 8},
     3,
     {1, 2, 3},
     {0.5f, 0.25f, -1},
     {4, 1.25f, -6},
     {2, 3, 7, 1},
     "start at the last slot: the wrap comes after the first sample"},
};

TEST(Framebuf, CircularWorkedCases) {
  for (const CircularCase& c : kCircularCases) {
    SCOPED_TRACE(c.why);
    const int n = static_cast<int>(c.in.size());
    Canary<float> line(c.line), out(n);
    qel_fl_circular(out.data(), line.data(), c.in.data(), c.gain.data(), line.size(), c.write_index,
                    n);
    expect_same_values(c.want_out.data(), out.data(), n, "out");
    expect_same_values(c.want_line.data(), line.data(), line.size(), "line");
    EXPECT_TRUE(out.intact());
    EXPECT_TRUE(line.intact());
  }
}

// Each step reads gain[i] and in[i] before it writes out[i], so the output may
// take the place of either input.
TEST(Framebuf, CircularOutputMayBeInputOrGain) {
  const std::vector<float> line0 = {1, 2, 3}, in0 = {4, 5, 6, 7}, gain0 = {2, 3, 0.5f, -1};
  const float want_out[4] = {4, 9, 0.5f, -4};  // slots 1, 2, 0, 1 (now input 4) times gain
  const float want_line[3] = {6, 7, 5};
  {
    SCOPED_TRACE("out == in");
    Canary<float> line(line0), io(in0);
    qel_fl_circular(io.data(), line.data(), io.data(), gain0.data(), 3, 1, 4);
    expect_same_values(want_out, io.data(), 4);
    expect_same_values(want_line, line.data(), 3);
    EXPECT_TRUE(io.intact());
  }
  {
    SCOPED_TRACE("out == gain");
    Canary<float> line(line0), io(gain0);
    qel_fl_circular(io.data(), line.data(), in0.data(), io.data(), 3, 1, 4);
    expect_same_values(want_out, io.data(), 4);
    expect_same_values(want_line, line.data(), 3);
    EXPECT_TRUE(io.intact());
  }
}

// The line stores inputs bit for bit: a signalling NaN, -0 and a denormal come
// back out of the line untouched (read back as slots, not through the gain).
TEST(Framebuf, CircularStoresInputsBitForBit) {
  const float in[3] = {from_bits(0x7f800001u), -0.0f, kDenormMin};
  const float gain[3] = {1, 1, 1};
  Canary<float> line(3), out(3);
  qel_fl_circular(out.data(), line.data(), in, gain, 3, 0, 3);
  for (int k = 0; k < 3; ++k) EXPECT_EQ(bits(line[k]), bits(in[k])) << k;
  const float zeros[3] = {0, 0, 0};
  expect_same_values(zeros, out.data(), 3);
  // One more lap: the denormal times gain 1 comes out unflushed.
  const float in2[3] = {0, 0, 0};
  qel_fl_circular(out.data(), line.data(), in2, gain, 3, 0, 3);
  EXPECT_EQ(bits(out[1]), bits(-0.0f));
  EXPECT_EQ(bits(out[2]), bits(kDenormMin));
}

TEST(Framebuf, MaaWindowReadBackwards) {
  const float w[5] = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f};
  const float buff0[5] = {1, 1, 1, 1, 1};
  Canary<float> fft(5), buff(std::vector<float>(buff0, buff0 + 5));
  qel_fl_maa(fft.data(), buff.data(), &w[4], 5);
  const float once[5] = {0.5f, 0.4f, 0.3f, 0.2f, 0.1f};
  expect_same_values(once, fft.data(), 5);
  qel_fl_maa(fft.data(), buff.data(), &w[4], 5);
  const float twice[5] = {1.0f, 0.8f, 0.6f, 0.4f, 0.2f};  // x + x is exact
  expect_same_values(twice, fft.data(), 5);
  expect_same_values(buff0, buff.data(), 5, "buff only read");
  EXPECT_TRUE(fft.intact());

  qel_fl_maa(fft.data(), buff.data(), &w[4], 0);
  expect_same_values(twice, fft.data(), 5, "nfft 0 changes nothing");
}

// Small integers keep every product and sum exact: fft[k] = 100 + (k + 1) * (L - k)
// for buff[k] = k + 1 and weights w[j] = j + 1, window at w[L - 1]. Lengths around
// the groups of four.
TEST(Framebuf, MaaEveryRemainder) {
  for (int len = 1; len <= 13; ++len) {
    SCOPED_TRACE(len);
    std::vector<float> w, buff;
    for (int k = 0; k < len; ++k) {
      w.push_back(static_cast<float>(k + 1));
      buff.push_back(static_cast<float>(k + 1));
    }
    Canary<float> fft(len, 100.0f);
    qel_fl_maa(fft.data(), buff.data(), &w[static_cast<size_t>(len - 1)], len);
    for (int k = 0; k < len; ++k) {
      EXPECT_SAME_FLOAT(static_cast<float>(100 + (k + 1) * (len - k)), fft[k]) << k;
    }
    EXPECT_TRUE(fft.intact());
  }
}

TEST(Framebuf, MaaInPlaceOnBuff) {
  const float w[6] = {3, 3, 3, 3, 3, -1};
  Canary<float> io(std::vector<float>{2, 2, 2, 2, 2, 2});
  qel_fl_maa(io.data(), io.data(), &w[5], 6);
  const float want[6] = {0, 8, 8, 8, 8, 8};  // 2 + 2 * -1, then 2 + 2 * 3
  expect_same_values(want, io.data(), 6);
  EXPECT_TRUE(io.intact());
}

}  // namespace
}  // namespace qel::test
