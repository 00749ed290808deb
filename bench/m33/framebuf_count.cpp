// SPDX-License-Identifier: MIT
// Delay line and windowed accumulation on the M33.
#include "counter.h"
#include "vector.h"

QEL_M33_BENCH(framebuf) {
  using qel::bench::count;
  using qel::bench::report;
  constexpr int kDelay = 480, kBlock = 160, kFrame = 512;
  static float delay[kDelay], in[kBlock], gain[kBlock], out[kBlock];
  static float frame[kFrame], buff[kFrame], window[kFrame];
  for (int k = 0; k < kBlock; ++k) {
    in[k] = static_cast<float>(k) * 0.25f;
    gain[k] = 0.5f;
  }
  for (int k = 0; k < kFrame; ++k) {
    buff[k] = static_cast<float>(k % 17) * 0.125f;
    window[k] = static_cast<float>(k) / static_cast<float>(kFrame);
  }
  // Write position 400: every call wraps once, as a running line does.
  report("qel_fl_circular", "480/160",
         count([&] { qel_fl_circular(out, delay, in, gain, kDelay, 400, kBlock); }), kBlock,
         "sample");
  report("qel_fl_maa", "512", count([&] { qel_fl_maa(frame, buff, window + kFrame - 1, kFrame); }),
         kFrame, "elem", 7.00);
}
