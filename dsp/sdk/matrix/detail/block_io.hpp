// SPDX-License-Identifier: MIT
// Moves a group of consecutive floats between memory and registers in one
// instruction on the M33, for the streaming kernels.
//
// The compiler emits one VLDR/VSTR per float; a VLDM/VSTM moves a whole group,
// which takes a streaming kernel from about 3.6 to under 2 instructions per
// element. A group lives in a fixed bank of consecutive registers, bank 0 at
// s8, bank 1 right after it, so two inputs of a pass can be loaded at once.
// Elsewhere the same calls are plain copies.
#pragma once

#include "../vector.h"

namespace qel::detail {

template <int G>
struct Block {
  qel_float v[G];
};

#if defined(__ARM_ARCH_8M_MAIN__) && defined(__ARM_FP) && !defined(__ARM_FEATURE_MVE)

#define QEL_BLOCK_OUT(k) "=t"(r##k)
#define QEL_BLOCK_IN(k) "t"(r##k)

// Registers r0..r7 named in one bank.
#define QEL_BANK8(s0, s1, s2, s3, s4, s5, s6, s7)                                  \
  register qel_float r0 asm(s0), r1 asm(s1), r2 asm(s2), r3 asm(s3), r4 asm(s4), \
      r5 asm(s5), r6 asm(s6), r7 asm(s7)
#define QEL_BANK4(s0, s1, s2, s3) register qel_float r0 asm(s0), r1 asm(s1), r2 asm(s2), r3 asm(s3)

template <int G, int Bank>
[[gnu::always_inline]] inline void load_block(const qel_float*& p, Block<G>& b) {
  static_assert((G == 8 || G == 4) && (Bank == 0 || Bank == 1));
  const auto& mem = *reinterpret_cast<const qel_float(*)[G]>(p);
  if constexpr (G == 8 && Bank == 0) {
    QEL_BANK8("s8", "s9", "s10", "s11", "s12", "s13", "s14", "s15");
    asm("vldmia %[p]!, {s8-s15}"
        : QEL_BLOCK_OUT(0), QEL_BLOCK_OUT(1), QEL_BLOCK_OUT(2), QEL_BLOCK_OUT(3),
          QEL_BLOCK_OUT(4), QEL_BLOCK_OUT(5), QEL_BLOCK_OUT(6), QEL_BLOCK_OUT(7), [p] "+r"(p)
        : "m"(mem));
    b = {{r0, r1, r2, r3, r4, r5, r6, r7}};
  } else if constexpr (G == 8) {
    QEL_BANK8("s16", "s17", "s18", "s19", "s20", "s21", "s22", "s23");
    asm("vldmia %[p]!, {s16-s23}"
        : QEL_BLOCK_OUT(0), QEL_BLOCK_OUT(1), QEL_BLOCK_OUT(2), QEL_BLOCK_OUT(3),
          QEL_BLOCK_OUT(4), QEL_BLOCK_OUT(5), QEL_BLOCK_OUT(6), QEL_BLOCK_OUT(7), [p] "+r"(p)
        : "m"(mem));
    b = {{r0, r1, r2, r3, r4, r5, r6, r7}};
  } else if constexpr (Bank == 0) {
    QEL_BANK4("s8", "s9", "s10", "s11");
    asm("vldmia %[p]!, {s8-s11}"
        : QEL_BLOCK_OUT(0), QEL_BLOCK_OUT(1), QEL_BLOCK_OUT(2), QEL_BLOCK_OUT(3), [p] "+r"(p)
        : "m"(mem));
    b = {{r0, r1, r2, r3}};
  } else {
    QEL_BANK4("s12", "s13", "s14", "s15");
    asm("vldmia %[p]!, {s12-s15}"
        : QEL_BLOCK_OUT(0), QEL_BLOCK_OUT(1), QEL_BLOCK_OUT(2), QEL_BLOCK_OUT(3), [p] "+r"(p)
        : "m"(mem));
    b = {{r0, r1, r2, r3}};
  }
}

// Results always leave from bank 0.
template <int G>
[[gnu::always_inline]] inline void store_block(qel_float*& p, const Block<G>& b) {
  static_assert(G == 8 || G == 4);
  auto& mem = *reinterpret_cast<qel_float(*)[G]>(p);
  if constexpr (G == 8) {
    QEL_BANK8("s8", "s9", "s10", "s11", "s12", "s13", "s14", "s15");
    r0 = b.v[0], r1 = b.v[1], r2 = b.v[2], r3 = b.v[3];
    r4 = b.v[4], r5 = b.v[5], r6 = b.v[6], r7 = b.v[7];
    asm("vstmia %[p]!, {s8-s15}"
        : "=m"(mem), [p] "+r"(p)
        : QEL_BLOCK_IN(0), QEL_BLOCK_IN(1), QEL_BLOCK_IN(2), QEL_BLOCK_IN(3), QEL_BLOCK_IN(4),
          QEL_BLOCK_IN(5), QEL_BLOCK_IN(6), QEL_BLOCK_IN(7));
  } else {
    QEL_BANK4("s8", "s9", "s10", "s11");
    r0 = b.v[0], r1 = b.v[1], r2 = b.v[2], r3 = b.v[3];
    asm("vstmia %[p]!, {s8-s11}"
        : "=m"(mem), [p] "+r"(p)
        : QEL_BLOCK_IN(0), QEL_BLOCK_IN(1), QEL_BLOCK_IN(2), QEL_BLOCK_IN(3));
  }
}

#undef QEL_BANK4
#undef QEL_BANK8
#undef QEL_BLOCK_IN
#undef QEL_BLOCK_OUT

#else

template <int G, int Bank>
[[gnu::always_inline]] inline void load_block(const qel_float*& p, Block<G>& b) {
  for (int k = 0; k < G; ++k) b.v[k] = p[k];
  p += G;
}

template <int G>
[[gnu::always_inline]] inline void store_block(qel_float*& p, const Block<G>& b) {
  for (int k = 0; k < G; ++k) p[k] = b.v[k];
  p += G;
}

#endif

}  // namespace qel::detail
