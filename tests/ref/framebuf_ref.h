// SPDX-License-Identifier: MIT
// Plain references for the delay line and the windowed accumulation.
#pragma once

namespace qel::ref {

// One step per sample: read gain and slot, store the input, advance, store.
void fl_circular(float* out, float* delay, const float* in, const float* gain, int delay_len,
                 int delay_write_index, int in_len);
void fl_maa(float* fft_data, const float* buff, const float* window, int nfft);

// The names the benchmarks use.
inline constexpr auto circular = fl_circular;
inline constexpr auto maa = fl_maa;

}  // namespace qel::ref
