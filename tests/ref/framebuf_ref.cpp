// SPDX-License-Identifier: MIT
#include "ref/framebuf_ref.h"

namespace qel::ref {

void fl_circular(float* out, float* delay, const float* in, const float* gain, int delay_len,
                 int delay_write_index, int in_len) {
  int p = delay_write_index;
  for (int i = 0; i < in_len; ++i) {
    const float value = gain[i] * delay[p];
    delay[p] = in[i];
    p = p + 1;
    if (p >= delay_len) p = 0;
    out[i] = value;
  }
}

void fl_maa(float* fft_data, const float* buff, const float* window, int nfft) {
  for (int k = 0; k < nfft; ++k) fft_data[k] = fft_data[k] + buff[k] * window[-k];
}

}  // namespace qel::ref
