// SPDX-License-Identifier: MIT
// Delay line and windowed accumulation: the worked cases.
#include <gtest/gtest.h>

#include <vector>

#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

const float kSignalling = from_bits(0x7f800001u);

struct CircularCase {
  std::vector<float> line;  // the delay line before the call
  int write_index;
  std::vector<float> in, gain, want_out, want_line;
  const char* why;
};
const CircularCase kCircular[] = {
    {{0, 0, 0},
     0,
     {1, 2, 3, 4, 5},
     {1, 1, 1, 1, 1},
     {0, 0, 0, 1, 2},
     {4, 5, 3},
     "a new line of 3: the fourth output is the first input"},
    {{4, 5, 3}, 2, {6, 7}, {1, 1}, {3, 4}, {7, 5, 6}, "the next call goes on at position 2"},
    {{9}, 0, {1, 2, 3}, {2, 3, 4}, {18, 3, 8}, {3}, "a line of 1: the previous input times gain"},
    {{1, 2, -3},
     1,
     {kSignalling, -0.0f, 6},
     {2, 0, 0},
     {4, -0.0f, 0},
     {6, kSignalling, -0.0f},
     "gain 0 gives a zero and still stores the input, bit for bit"},
};

TEST(Framebuf, CircularWorkedCases) {
  for (const CircularCase& c : kCircular) {
    SCOPED_TRACE(c.why);
    std::vector<float> line = c.line, out(c.in.size());
    qel_fl_circular(out.data(), line.data(), c.in.data(), c.gain.data(),
                    static_cast<int>(line.size()), c.write_index, static_cast<int>(c.in.size()));
    expect_same_values(c.want_out.data(), out.data(), static_cast<int>(out.size()), "out", true);
    expect_same_values(c.want_line.data(), line.data(), static_cast<int>(line.size()), "line",
                       true);
  }
}

TEST(Framebuf, MaaReadsTheWindowBackwards) {
  const float w[5] = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f}, buff[5] = {1, 1, 1, 1, 1};
  float fft[5] = {};
  qel_fl_maa(fft, buff, &w[4], 5);
  const float once[5] = {0.5f, 0.4f, 0.3f, 0.2f, 0.1f};
  expect_same_values(once, fft, 5);
  qel_fl_maa(fft, buff, &w[4], 5);
  const float twice[5] = {1.0f, 0.8f, 0.6f, 0.4f, 0.2f};  // x + x is exact
  expect_same_values(twice, fft, 5);
}

}  // namespace
}  // namespace qel::test
