/* SPDX-License-Identifier: MIT */
/* Uses the installed headers and libraries from C; exits 0 when all is well. */
#include <stdio.h>

#include <qel/matrix/vector.h>

int main(void) {
  int16 pcm[5] = {-32768, -16384, 0, 16384, 32767};
  int16 back[5];
  qel_flt_vec* v = qel_flt_vec_init(5);
  int k;
  qel_vec_normalize(pcm, v->data, v->dim);
  qel_vec_denormalize(v->data, back, v->dim);
  for (k = 0; k < 5; ++k) {
    if (back[k] != pcm[k]) {
      printf("consumer_c: sample %d came back as %d\n", k, back[k]);
      return 1;
    }
  }
  v = qel_flt_vec_resize(v, 8);
  if (v->dim != 8 || v->data[7] != 0.0f) return 2;
  qel_flt_vec_free(v);
  printf("consumer_c: ok\n");
  return 0;
}
