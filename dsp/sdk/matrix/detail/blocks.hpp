// SPDX-License-Identifier: MIT
// Runs of consecutive floats moved as one block, and lane-wise maps over them:
// the grouped steps of the element-wise kernels, written once.
#pragma once

#include <array>
#include <type_traits>
#include <utility>

#include "utils.h"

namespace qel::detail {

template <int N>
using Lanes = std::array<qel_float, N>;

// Block<N, Bank>::load(p) reads p[0..N-1] and advances p by N; store(p, v)
// writes v there and advances p. Bank only matters on the M33 (below).
template <int N, int Bank>
struct Block {
  [[gnu::always_inline]] static Lanes<N> load(const qel_float*& p) {
    const Lanes<N> v = [&]<int... k>(std::integer_sequence<int, k...>) { return Lanes<N>{p[k]...}; }
    (std::make_integer_sequence<int, N>{});
    p += N;
    return v;
  }
  [[gnu::always_inline]] static void store(qel_float*& p, const Lanes<N>& v) {
    [&]<int... k>(std::integer_sequence<int, k...>) { ((p[k] = std::get<k>(v)), ...); }
    (std::make_integer_sequence<int, N>{});
    p += N;
  }
};

// Two runs of four, from p and q, into registers that calls preserve: for a
// group whose inputs must outlive calls. Both advance by 4.
struct RunPair {
  Lanes<4> p, q;
};
#if !QEL_ARM_VFP
[[gnu::always_inline]] inline RunPair load_saved_pair(const qel_float*& p, const qel_float*& q) {
  return {Block<4, 0>::load(p), Block<4, 1>::load(q)};
}
#endif

#if QEL_ARM_VFP
// On the FPU a block is one VLDMIA/VSTMIA with write-back: one instruction for
// N floats where separate loads cost N. The register list must be consecutive
// registers, which the compiler cannot be asked for; so each bank pins its
// lanes to fixed registers (bank b of size N is s[N*b] .. s[N*b+N-1]) and the
// loads of one step use distinct banks. The memory operands tell the compiler
// exactly which floats are read or written, so ordering against other accesses
// to the same arrays (in-place use) stays its business, without a full clobber.
// Hold loaded lanes in non-const locals: GCC 12 keeps a const aggregate in
// memory across the next asm statement, a store and a load per float.
#define QEL_BLOCK_REGS_2(R0, R1) \
  register qel_float r0 asm(R0); \
  register qel_float r1 asm(R1)
#define QEL_BLOCK_REGS_4(R0, R1, R2, R3) \
  QEL_BLOCK_REGS_2(R0, R1);              \
  register qel_float r2 asm(R2);         \
  register qel_float r3 asm(R3)
#define QEL_BLOCK_REGS_8(R0, R1, R2, R3, R4, R5, R6, R7) \
  QEL_BLOCK_REGS_4(R0, R1, R2, R3);                      \
  register qel_float r4 asm(R4);                         \
  register qel_float r5 asm(R5);                         \
  register qel_float r6 asm(R6);                         \
  register qel_float r7 asm(R7)
#define QEL_BLOCK_LIST_2 "{%[r0], %[r1]}"
#define QEL_BLOCK_LIST_4 "{%[r0], %[r1], %[r2], %[r3]}"
#define QEL_BLOCK_LIST_8 "{%[r0], %[r1], %[r2], %[r3], %[r4], %[r5], %[r6], %[r7]}"
#define QEL_BLOCK_OUT_2 [r0] "=t"(r0), [r1] "=t"(r1)
#define QEL_BLOCK_OUT_4 QEL_BLOCK_OUT_2, [r2] "=t"(r2), [r3] "=t"(r3)
#define QEL_BLOCK_OUT_8 QEL_BLOCK_OUT_4, [r4] "=t"(r4), [r5] "=t"(r5), [r6] "=t"(r6), [r7] "=t"(r7)
#define QEL_BLOCK_IN_2 [r0] "t"(r0), [r1] "t"(r1)
#define QEL_BLOCK_IN_4 QEL_BLOCK_IN_2, [r2] "t"(r2), [r3] "t"(r3)
#define QEL_BLOCK_IN_8 QEL_BLOCK_IN_4, [r4] "t"(r4), [r5] "t"(r5), [r6] "t"(r6), [r7] "t"(r7)
#define QEL_BLOCK_SET_2 r0 = v[0], r1 = v[1]
#define QEL_BLOCK_SET_4 QEL_BLOCK_SET_2, r2 = v[2], r3 = v[3]
#define QEL_BLOCK_SET_8 QEL_BLOCK_SET_4, r4 = v[4], r5 = v[5], r6 = v[6], r7 = v[7]
#define QEL_BLOCK_GET_2 r0, r1
#define QEL_BLOCK_GET_4 QEL_BLOCK_GET_2, r2, r3
#define QEL_BLOCK_GET_8 QEL_BLOCK_GET_4, r4, r5, r6, r7

#define QEL_BLOCK(N, BANK, ...)                                                  \
  template <>                                                                    \
  struct Block<N, BANK> {                                                        \
    [[gnu::always_inline]] static Lanes<N> load(const qel_float*& p) {           \
      QEL_BLOCK_REGS_##N(__VA_ARGS__);                                           \
      asm("vldmia %[p]!, " QEL_BLOCK_LIST_##N                                    \
          : [p] "+r"(p), QEL_BLOCK_OUT_##N                                       \
          : "m"(*reinterpret_cast<const qel_float(*)[N]>(p)));                   \
      return {QEL_BLOCK_GET_##N};                                                \
    }                                                                            \
    [[gnu::always_inline]] static void store(qel_float*& p, const Lanes<N>& v) { \
      QEL_BLOCK_REGS_##N(__VA_ARGS__);                                           \
      QEL_BLOCK_SET_##N;                                                         \
      asm("vstmia %[p]!, " QEL_BLOCK_LIST_##N                                    \
          : [p] "+r"(p), "=m"(*reinterpret_cast<qel_float(*)[N]>(p))             \
          : QEL_BLOCK_IN_##N);                                                   \
    }                                                                            \
  }

QEL_BLOCK(2, 0, "s0", "s1");
QEL_BLOCK(2, 1, "s2", "s3");
QEL_BLOCK(2, 2, "s4", "s5");
QEL_BLOCK(2, 3, "s6", "s7");
QEL_BLOCK(4, 0, "s0", "s1", "s2", "s3");
QEL_BLOCK(4, 1, "s4", "s5", "s6", "s7");
QEL_BLOCK(4, 2, "s8", "s9", "s10", "s11");
QEL_BLOCK(4, 3, "s12", "s13", "s14", "s15");
QEL_BLOCK(4, 4, "s16", "s17", "s18", "s19");
QEL_BLOCK(4, 5, "s20", "s21", "s22", "s23");
QEL_BLOCK(8, 0, "s0", "s1", "s2", "s3", "s4", "s5", "s6", "s7");
QEL_BLOCK(8, 1, "s8", "s9", "s10", "s11", "s12", "s13", "s14", "s15");
QEL_BLOCK(8, 2, "s16", "s17", "s18", "s19", "s20", "s21", "s22", "s23");

// One statement for both runs: values loaded by one asm and kept in fixed
// registers across a second one get spilled around calls by the allocator.
[[gnu::always_inline]] inline RunPair load_saved_pair(const qel_float*& p, const qel_float*& q) {
  QEL_BLOCK_REGS_4("s16", "s17", "s18", "s19");
  register qel_float r4 asm("s20");
  register qel_float r5 asm("s21");
  register qel_float r6 asm("s22");
  register qel_float r7 asm("s23");
  // The pointers outlive the calls too: in callee-saved registers the
  // allocator needs no copies around the asm.
  register const qel_float* pp asm("r4") = p;
  register const qel_float* qq asm("r5") = q;
  asm("vldmia %[p]!, " QEL_BLOCK_LIST_4 "\n\tvldmia %[q]!, {%[r4], %[r5], %[r6], %[r7]}"
      : [p] "+r"(pp), [q] "+r"(qq),
        QEL_BLOCK_OUT_4, [r4] "=t"(r4), [r5] "=t"(r5), [r6] "=t"(r6), [r7] "=t"(r7)
      : "m"(*reinterpret_cast<const qel_float(*)[4]>(p)),
        "m"(*reinterpret_cast<const qel_float(*)[4]>(q)));
  p = pp;
  q = qq;
  return {{r0, r1, r2, r3}, {r4, r5, r6, r7}};
}

#undef QEL_BLOCK
#undef QEL_BLOCK_REGS_2
#undef QEL_BLOCK_REGS_4
#undef QEL_BLOCK_LIST_2
#undef QEL_BLOCK_LIST_4
#undef QEL_BLOCK_OUT_2
#undef QEL_BLOCK_OUT_4
#undef QEL_BLOCK_IN_2
#undef QEL_BLOCK_IN_4
#undef QEL_BLOCK_SET_2
#undef QEL_BLOCK_SET_4
#undef QEL_BLOCK_GET_2
#undef QEL_BLOCK_GET_4
#undef QEL_BLOCK_REGS_8
#undef QEL_BLOCK_LIST_8
#undef QEL_BLOCK_OUT_8
#undef QEL_BLOCK_IN_8
#undef QEL_BLOCK_SET_8
#undef QEL_BLOCK_GET_8
#endif

// {f(x[0], y[0], ...), ..., f(x[N-1], y[N-1], ...)}: one formula, every lane.
// Lanes are indexed at compile time only, so they stay in registers.
template <int N, typename F, typename... L>
[[gnu::always_inline]] inline Lanes<N> lanes(F f, const L&... in) {
  return [&]<int... k>(std::integer_sequence<int, k...>) {
    const auto at = [&]<int j>() { return f(std::get<j>(in)...); };
    return Lanes<N>{at.template operator()<k>()...};
  }
  (std::make_integer_sequence<int, N>{});
}

// f(k) for the lane indices k = 0, 1, ..., N-1 in that order, unrolled; k is a
// std::integral_constant, usable as std::get<k>(lanes).
template <int N, typename F>
[[gnu::always_inline]] inline void each_lane(F f) {
  [&]<int... k>(std::integer_sequence<int, k...>) { (f(std::integral_constant<int, k>{}), ...); }
  (std::make_integer_sequence<int, N>{});
}

}  // namespace qel::detail
