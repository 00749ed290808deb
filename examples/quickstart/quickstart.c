/* SPDX-License-Identifier: MIT */
/* A first look at qel from C: make a vector, bring a 16-bit frame in as
   normalised floats, apply a gain, take it back out as 16-bit PCM, and dump
   the floats through the platform's console print. */
#include <stdio.h>

#include "vector.h"

enum { kFrame = 8 };

int main(void) {
  int16 pcm[kFrame];
  int16 out[kFrame];
  qel_flt_vec* frame = qel_flt_vec_init(kFrame);
  int k;

  /* A deterministic ramp that crosses full scale in both directions. */
  for (k = 0; k < kFrame; ++k) pcm[k] = (int16)(-32768 + k * 9362);

  qel_vec_normalize(pcm, frame->data, frame->dim);
  qel_flt_vec_scale(frame, 1.5f); /* +3.5 dB: clips at the ends */
  qel_vec_denormalize(frame->data, out, frame->dim);

  printf("   in    float*1.5        out\n");
  for (k = 0; k < kFrame; ++k) {
    printf("%6d  %+.6f  %6d\n", pcm[k], (double)frame->data[k], out[k]);
  }
  printf("\nqel_fl_dump of the first four floats, two per line (through bk_printf):");
  qel_fl_dump(frame->data, 4, 2);
  qel_flt_vec_free(frame);
  return 0;
}
