/* SPDX-License-Identifier: MIT */
/* The public header compiled as C99 and called from C: firmware is mostly C. */
#include "vector.h"

int qel_c_api_smoke(void);

/* Returns 0 when a short C session behaves; called by a C++ test. */
int qel_c_api_smoke(void) {
  int16 pcm[4] = {-32768, -1, 0, 32767};
  qel_float f[4];
  int16 back[4];
  qel_flt_vec view;
  qel_flt_vec* v = qel_flt_vec_init(4);
  int k;

  qel_vec_normalize(pcm, f, 4);
  qel_vec_denormalize(f, back, 4);
  for (k = 0; k < 4; ++k) {
    if (back[k] != pcm[k]) return 1;
  }
  qel_flt_vec_set(v, 0.5f);
  qel_flt_vec_get_subvec(v, 1, 2, &view);
  qel_flt_vec_set(&view, -1.0f);
  if (view.dim != 2 || v->data[0] != 0.5f || v->data[1] != -1.0f || v->data[3] != 0.5f) return 2;
  v = qel_flt_vec_resize(v, 6);
  if (v->dim != 6 || v->data[5] != 0.0f) return 3;
  qel_flt_vec_free(v);
  return 0;
}
