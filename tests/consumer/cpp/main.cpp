// SPDX-License-Identifier: MIT
// Uses the installed header from C++ (the records and functions are extern "C").
#include <cstdio>

#include "vector.h"

int main() {
  float re[3] = {1.0f, 2.0f, 3.0f};
  float im[3] = {-1.0f, 0.0f, 1.0f};
  qel_cpx_vec v{3, re, im};
  qel_cpx_vec* c = qel_cpx_vec_clone(&v);
  qel_cpx_vec_set(&v, 0.0f, 0.0f);
  const bool ok = c->dim == 3 && c->re[2] == 3.0f && c->im[0] == -1.0f && re[2] == 0.0f;
  qel_cpx_vec_free(c);
  std::printf("consumer_cpp: %s\n", ok ? "ok" : "FAILED");
  return ok ? 0 : 1;
}
