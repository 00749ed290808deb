// SPDX-License-Identifier: MIT
// Frame buffers: a circular delay line with a gain per sample, and the
// accumulation of a buffer into a frame through a window read backwards.
#include "detail/contract.hpp"
#include "detail/loops.hpp"
#include "detail/mac.hpp"
#include "utils.h"
#include "vector.h"

namespace {

#if QEL_ARM_VFP
// One group of four of qel_fl_maa on an Arm FPU. The compiler loads and stores
// floats one by one (six instructions an element); VLDM/VSTM move four in one
// instruction, and VLDMDB reads the window backwards. Each pointer moves on by
// the group. window_end is one past the weight of the group's first element,
// so s11 weighs the first element and s8 the last. The product is rounded
// before the addition (VMLA does so too), so each element is
// fft + buff * weight with the bits of the portable loop.
#if QEL_USE_VMLA
#define QEL_MAA4             \
  "vmla.f32 s4, s0, s11\n\t" \
  "vmla.f32 s5, s1, s10\n\t" \
  "vmla.f32 s6, s2, s9\n\t"  \
  "vmla.f32 s7, s3, s8\n\t"
#else
#define QEL_MAA4              \
  "vmul.f32 s11, s0, s11\n\t" \
  "vmul.f32 s10, s1, s10\n\t" \
  "vmul.f32 s9, s2, s9\n\t"   \
  "vmul.f32 s8, s3, s8\n\t"   \
  "vadd.f32 s4, s4, s11\n\t"  \
  "vadd.f32 s5, s5, s10\n\t"  \
  "vadd.f32 s6, s6, s9\n\t"   \
  "vadd.f32 s7, s7, s8\n\t"
#endif
[[gnu::always_inline]] inline void accumulate4(qel_float*& fft, const qel_float*& buff,
                                               const qel_float*& window_end) {
  __asm__ volatile(
      "vldmia %[b]!, {s0-s3}\n\t"
      "vldmdb %[w]!, {s8-s11}\n\t"
      "vldmia %[f], {s4-s7}\n\t" QEL_MAA4 "vstmia %[f]!, {s4-s7}"
      : [f] "+r"(fft), [b] "+r"(buff), [w] "+r"(window_end)
      :
      : "s0", "s1", "s2", "s3", "s4", "s5", "s6", "s7", "s8", "s9", "s10", "s11", "memory");
}
#undef QEL_MAA4
#endif

}  // namespace

extern "C" {

// out[i] = gain[i] * (the sample written delay_len steps earlier), then that
// slot takes in[i]; count in_len; p starts at delay_write_index and wraps to 0
// when it reaches delay_len. The caller advances its own write position by
// in_len mod delay_len. Each step reads gain[i] and in[i] before it writes
// out[i], so out may be in or gain.
//
// The position only wraps between runs, so each run walks the line straight,
// with no wrap test per sample; the steps and their order are unchanged.
// Groups of eight: on the M33 a step is six instructions and the loop's
// pointer updates are shared by the group (groups of four left 8.1 per sample).
void qel_fl_circular(qel_float* out, qel_float* delay, const qel_float* in, const qel_float* gain,
                     int delay_len, int delay_write_index, int in_len) {
  QEL_EXPECT(in_len >= 0, "in_len >= 0");
  QEL_EXPECT(delay_len >= 1, "delay_len >= 1");
  QEL_EXPECT(delay_write_index >= 0 && delay_write_index < delay_len,
             "0 <= delay_write_index < delay_len");
  QEL_EXPECT(
      in_len == 0 || (out != nullptr && delay != nullptr && in != nullptr && gain != nullptr),
      "out, delay, in and gain are not null");
  QEL_EXPECT(qel::detail::is_each_or_apart(in_len, out, in, gain),
             "out is in or gain, or does not overlap them");
  QEL_EXPECT(qel::detail::floats_disjoint(delay, delay_len, out, in_len) &&
                 qel::detail::floats_disjoint(delay, delay_len, in, in_len) &&
                 qel::detail::floats_disjoint(delay, delay_len, gain, in_len),
             "delay does not overlap out, in or gain");
  int p = delay_write_index;
  int i = 0;
  while (i < in_len) {
    const int left_in_line = delay_len - p;
    const int run = (in_len - i < left_in_line) ? in_len - i : left_in_line;
    qel_float* slot = delay + p;
    qel::detail::for_each_grouped<8>(run, [&](int k) {
      const int e = i + k;
      const qel_float g = gain[e];
      const qel_float x = in[e];
      const qel_float v = g * slot[k];
      slot[k] = x;
      out[e] = v;
    });
    i += run;
    p = (run == left_in_line) ? 0 : p + run;
  }
}

// fft_data[k] = fft_data[k] + buff[k] * window[-k]; count nfft; window points
// at the weight of element 0 and is read towards lower addresses. Elements are
// independent, so groups of four give the bits of the plain loop. fft_data may
// be buff; it must not overlap window.
void qel_fl_maa(qel_float* fft_data, const qel_float* buff, const qel_float* window, int nfft) {
  QEL_EXPECT(nfft >= 0, "nfft >= 0");
  QEL_EXPECT(nfft == 0 || (fft_data != nullptr && buff != nullptr && window != nullptr),
             "fft_data, buff and window are not null");
  QEL_EXPECT(qel::detail::is_each_or_apart(nfft, fft_data, buff),
             "fft_data is buff or does not overlap it");
  QEL_EXPECT(qel::detail::floats_disjoint_from_window(fft_data, window, nfft),
             "fft_data does not overlap window");
  const auto step = [&](int k) { fft_data[k] = fft_data[k] + buff[k] * window[-k]; };
#if QEL_ARM_VFP
  qel_float* f = fft_data;
  const qel_float* b = buff;
  const qel_float* w = window + 1;
  int k = 0;
  for (; k + 4 <= nfft; k += 4) accumulate4(f, b, w);
  for (; k < nfft; ++k) step(k);
#else
  qel::detail::for_each_grouped<4>(nfft, step);
#endif
}

}  // extern "C"
