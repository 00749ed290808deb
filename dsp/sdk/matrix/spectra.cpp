// SPDX-License-Identifier: MIT
// Complex spectra bin by bin: products and conjugation, guarded division,
// power, magnitude, power sums, the sum of products and a power law.
#include <cstdint>
#include <cstring>

#include "detail/blocks.hpp"
#include "detail/contract.hpp"
#include "detail/mac.hpp"
#include "vector.h"

namespace {

using qel::detail::Block;
using qel::detail::lanes;

// ---- Products ----
// The per-bin complex formulas, each written once in the operand order that
// fixes its rounding. Function objects, so a loop helper inlines them. mac and
// msc round the product before the addition (VMLA/VMLS on the M33), exactly
// as the written-out expression does.

// |a|^2 = re*re + im*im in single precision: the library's measure of a bin.
constexpr auto cpx_power = [](qel_float re, qel_float im) {
  return qel::detail::cpx_power(re, im);
};

// a*b = (ar*br - ai*bi) + i(ai*br + ar*bi).
constexpr auto cpx_product_re = [](qel_float ar, qel_float ai, qel_float br, qel_float bi) {
  return qel::detail::msc(ar * br, ai, bi);  // ar*br - ai*bi
};
constexpr auto cpx_product_im = [](qel_float ar, qel_float ai, qel_float br, qel_float bi) {
  return qel::detail::mac(ai * br, ar, bi);  // ai*br + ar*bi
};

// a*conj(b) = (ar*br + ai*bi) + i(ai*br - ar*bi): the conjugate is on b.
constexpr auto cpx_conj_product_re = [](qel_float ar, qel_float ai, qel_float br, qel_float bi) {
  return qel::detail::mac(ar * br, ai, bi);  // ar*br + ai*bi
};
constexpr auto cpx_conj_product_im = [](qel_float ar, qel_float ai, qel_float br, qel_float bi) {
  return qel::detail::msc(ai * br, ar, bi);  // ai*br - ar*bi
};

// C = f(A, B) bin by bin, G bins per step: a step loads all of its inputs
// before it stores anything, and a bin reads and writes only its own index, so
// C may be A or B. The n mod G last bins go one by one through the same formulas.
template <int G, typename Re, typename Im>
void complex_products(const qel_float* ar, const qel_float* ai, const qel_float* br,
                      const qel_float* bi, qel_float* cr, qel_float* ci, int n, Re re, Im im) {
  const unsigned count = static_cast<unsigned>(n);  // n >= 0: no signed rounding
  for (unsigned g = count / G; g > 0; --g) {
    auto xr = Block<G, 0>::load(ar), xi = Block<G, 1>::load(ai);
    auto yr = Block<G, 2>::load(br), yi = Block<G, 3>::load(bi);
    Block<G, 0>::store(cr, lanes<G>(re, xr, xi, yr, yi));
    Block<G, 1>::store(ci, lanes<G>(im, xr, xi, yr, yi));
  }
  for (unsigned k = count % G; k > 0; --k) {
    const qel_float xr = *ar++, xi = *ai++, yr = *br++, yi = *bi++;
    *cr++ = re(xr, xi, yr, yi);
    *ci++ = im(xr, xi, yr, yi);
  }
}

#if QEL_ARM_VFP && !QEL_USE_VMLA && !defined(__OPTIMIZE_SIZE__)
// Eight bins of a * conj(b) in fixed registers, for the split form. Loads of
// eight spread a VLDM's fixed cycle further than loads of four, but eight bins
// of four inputs and a product fill 33 registers; so b's imaginary parts come
// four at a time. Per bin k: ar s(k), br s(8+k), ai s(16+k), bi s(24+k%4):
//   s28    = ar*br               vmul  (p1)
//   s(8+k) = ai*br               vmul  (p3, br no longer needed)
//   s(k)   = ar*bi               vmul  (p4, ar no longer needed)
//   s(16+k)= ai*bi               vmul  (p2)
//   s(16+k)= p1 + p2             vadd  (re: ar*br + ai*bi)
//   s(8+k) = p3 - p4             vsub  (im: ai*br - ar*bi)
// so re ends in s16-s23 and im in s8-s15, each ready for one VSTM.
#define QEL_CONJ_BIN(AR, BR, AI, BI)   \
  "vmul.f32 s28, s" #AR ", s" #BR      \
  "\n\t"                               \
  "vmul.f32 s" #BR ", s" #AI ", s" #BR \
  "\n\t"                               \
  "vmul.f32 s" #AR ", s" #AR ", s" #BI \
  "\n\t"                               \
  "vmul.f32 s" #AI ", s" #AI ", s" #BI \
  "\n\t"                               \
  "vadd.f32 s" #AI ", s28, s" #AI      \
  "\n\t"                               \
  "vsub.f32 s" #BR ", s" #BR ", s" #AR "\n\t"
#define QEL_CONJ_BINS8                                                                           \
  "vldmia %[ar]!, {s0-s7}\n\t"                                                                   \
  "vldmia %[br]!, {s8-s15}\n\t"                                                                  \
  "vldmia %[ai]!, {s16-s23}\n\t"                                                                 \
  "vldmia %[bi]!, {s24-s27}\n\t" QEL_CONJ_BIN(0, 8, 16, 24) QEL_CONJ_BIN(1, 9, 17, 25)           \
      QEL_CONJ_BIN(2, 10, 18, 26)                                                                \
          QEL_CONJ_BIN(3, 11, 19, 27) "vldmia %[bi]!, {s24-s27}\n\t" QEL_CONJ_BIN(4, 12, 20, 24) \
              QEL_CONJ_BIN(5, 13, 21, 25) QEL_CONJ_BIN(6, 14, 22, 26) QEL_CONJ_BIN(7, 15, 23, 27)
#define QEL_CONJ_OPERANDS                                                                   \
  : [ar] "+r"(p.ar), [ai] "+r"(p.ai), [br] "+r"(p.br), [bi] "+r"(p.bi), [cr] "+r"(p.cr),  \
    [ci] "+r"(p.ci)                                                                       \
  :                                                                                       \
  : "s0", "s1", "s2", "s3", "s4", "s5", "s6", "s7", "s8", "s9", "s10", "s11", "s12", "s13", \
    "s14", "s15", "s16", "s17", "s18", "s19", "s20", "s21", "s22", "s23", "s24", "s25",     \
    "s26", "s27", "s28", "s29", "s30", "s31", "memory"

// The six arrays of a bin-wise product, each pointer at the next bin.
struct ProductArrays {
  const qel_float *ar, *ai, *br, *bi;
  qel_float *cr, *ci;
};

// C = A * conj(B) for the next eight bins; every load before the stores.
[[gnu::always_inline]] inline void conj_products8(ProductArrays& p) {
  __asm volatile(QEL_CONJ_BINS8
                 "vstmia %[cr]!, {s16-s23}\n\t"
                 "vstmia %[ci]!, {s8-s15}" QEL_CONJ_OPERANDS);
}

// C += A * conj(B) for the next eight bins: C's old parts go into s0-s7 (ar's
// registers, free by then) and s24-s31, and take the product as one term.
[[gnu::always_inline]] inline void conj_products8_add(ProductArrays& p) {
  __asm volatile(QEL_CONJ_BINS8
                 "vldmia %[cr], {s0-s7}\n\t"
                 "vldmia %[ci], {s24-s31}\n\t"
                 "vadd.f32 s0, s0, s16\n\tvadd.f32 s1, s1, s17\n\t"
                 "vadd.f32 s2, s2, s18\n\tvadd.f32 s3, s3, s19\n\t"
                 "vadd.f32 s4, s4, s20\n\tvadd.f32 s5, s5, s21\n\t"
                 "vadd.f32 s6, s6, s22\n\tvadd.f32 s7, s7, s23\n\t"
                 "vadd.f32 s24, s24, s8\n\tvadd.f32 s25, s25, s9\n\t"
                 "vadd.f32 s26, s26, s10\n\tvadd.f32 s27, s27, s11\n\t"
                 "vadd.f32 s28, s28, s12\n\tvadd.f32 s29, s29, s13\n\t"
                 "vadd.f32 s30, s30, s14\n\tvadd.f32 s31, s31, s15\n\t"
                 "vstmia %[cr]!, {s0-s7}\n\t"
                 "vstmia %[ci]!, {s24-s31}" QEL_CONJ_OPERANDS);
}
#undef QEL_CONJ_OPERANDS
#undef QEL_CONJ_BINS8
#undef QEL_CONJ_BIN

// Sixteen bins a step in two groups of eight, then one group of eight if
// left; returns the bins left (n mod 8), the pointers at the first of them.
template <typename Group>
[[gnu::always_inline]] inline int conj_groups(ProductArrays& p, int n, Group group) {
  const unsigned count = static_cast<unsigned>(n);  // n >= 0: no signed rounding
  for (unsigned g = count / 16; g > 0; --g) {
    group(p);
    group(p);
  }
  if (count % 16 >= 8) group(p);
  return static_cast<int>(count % 8);
}
#define QEL_CONJ_GROUPS 1
#else
#define QEL_CONJ_GROUPS 0
#endif

template <int G, typename Re, typename Im>
void complex_products(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C, int n, Re re,
                      Im im) {
  complex_products<G>(A->re, A->im, B->re, B->im, C->re, C->im, n, re, im);
}

// c[k] = a[k] * b[k], four per step, loads before stores: c may be a or b.
void real_products(const qel_float* a, const qel_float* b, qel_float* c, int n) {
  const auto times = [](qel_float x, qel_float y) { return x * y; };
  for (int g = n / 4; g > 0; --g) {
    auto x = Block<4, 0>::load(a), y = Block<4, 1>::load(b);
    Block<4, 0>::store(c, lanes<4>(times, x, y));
  }
  for (int k = n % 4; k > 0; --k) *c++ = times(*a++, *b++);
}

// ---- Division ----

// A denominator is zero when it compares equal to zero: +0 and -0, never a NaN
// or a subnormal. The grouped kernels guard it in two forms: inside a full group
// of four the zero becomes kEpsilon and the numerator is divided by it; in the
// n mod 4 tail the numerator is multiplied by 1e8 instead. The two are not the
// same computation (1.3f / kEpsilon = 130000000, 1.3f * 1e8f = 129999992), so a
// guarded result depends on whether its element sits in the tail.
constexpr qel_float kEpsilon = 1e-8f;            // the float nearest 1e-8
constexpr qel_float kInvEpsilon = 100000000.0f;  // 1e8, exact in single precision

// The guard is positive whatever the zero's sign: the result keeps the
// numerator's sign.
constexpr auto guarded = [](qel_float d) { return (d == 0.0f) ? kEpsilon : d; };

// a / d in the tail form of the guard.
constexpr auto tail_quotient = [](qel_float a, qel_float d) {
  return (d == 0.0f) ? a * kInvEpsilon : a / d;
};

// c[k] = a[k] / den(b[k]), guarded in the grouped and tail forms. All loads of
// a group come before its stores, so c may be a or b.
template <typename Den>
void guarded_quotients(const qel_float* a, const qel_float* b, qel_float* c, int n, Den den) {
  const auto quotient = [&](qel_float x, qel_float y) { return x / guarded(den(y)); };
  for (int g = n / 4; g > 0; --g) {
    auto x = Block<4, 0>::load(a), y = Block<4, 1>::load(b);
    Block<4, 0>::store(c, lanes<4>(quotient, x, y));
  }
  for (int k = n % 4; k > 0; --k) {
    const qel_float x = *a++;
    *c++ = tail_quotient(x, den(*b++));
  }
}

// ---- Power ----

// ((p0 + p1) + p2) + p3 of the next four bins, which it steps over. Bank picks
// the registers of its loads (see Block), so two calls in one loop step can
// load into distinct registers.
template <int Bank>
[[gnu::always_inline]] inline qel_float group_power(const qel_float*& re, const qel_float*& im) {
  auto x = Block<4, Bank>::load(re), y = Block<4, Bank + 1>::load(im);
  auto p = lanes<4>(cpx_power, x, y);
  return ((std::get<0>(p) + std::get<1>(p)) + std::get<2>(p)) + std::get<3>(p);
}

// The power sum over n bins from re/im: each full group of four is reduced to
// its own total, left to right, and that total added to the one running sum;
// the n mod 4 last powers are then added one by one. Two groups per loop step
// halve the loop's own instructions; every group still meets the sum in order.
qel_float power_sum(const qel_float* re, const qel_float* im, int n) {
  qel_float sum = 0.0f;
  const unsigned count = static_cast<unsigned>(n);  // n >= 0: no signed rounding
  unsigned groups = count / 4;
#if !defined(__OPTIMIZE_SIZE__)
  // Sixteen groups a step, each two loaded by one VLDM per part: the block
  // moves' and the loop's fixed cycles are spread over 64 bins.
  const auto pair = [&]() __attribute__((always_inline)) {
    // The loads wait for the running sum (no instruction): hoisted above the
    // previous pair's arithmetic, they made the compiler copy its registers.
    __asm("" : "+r"(re), "+r"(im) : "t"(sum));
    auto x = Block<8, 0>::load(re), y = Block<8, 1>::load(im);
    auto p = lanes<8>(cpx_power, x, y);
    sum = sum + (((std::get<0>(p) + std::get<1>(p)) + std::get<2>(p)) + std::get<3>(p));
    sum = sum + (((std::get<4>(p) + std::get<5>(p)) + std::get<6>(p)) + std::get<7>(p));
  };
  for (unsigned g = groups / 16; g > 0; --g) {
    pair();
    pair();
    pair();
    pair();
    pair();
    pair();
    pair();
    pair();
  }
  groups %= 16;
  for (unsigned g = groups / 2; g > 0; --g) pair();
  groups %= 2;
#else
  for (unsigned g = groups / 2; g > 0; --g) {
    sum = sum + group_power<0>(re, im);
    sum = sum + group_power<2>(re, im);
  }
  groups %= 2;
#endif
  if (groups > 0) sum = sum + group_power<0>(re, im);
  for (unsigned k = count % 4; k > 0; --k) sum = sum + cpx_power(*re++, *im++);
  return sum;
}

}  // namespace

extern "C" {

// ---- Products ----

// C = A * B: re = ar*br - ai*bi, im = ai*br + ar*bi. Count C->dim; C may be
// A or B (or both: squaring in place).
void qel_cpx_vec_dot_product(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  QEL_EXPECT_ELEMENTWISE(C->dim);
  complex_products<4>(A, B, C, C->dim, cpx_product_re, cpx_product_im);
}

// C = A * conj(B): re = ar*br + ai*bi, im = ai*br - ar*bi (not conj(A)*B:
// swapping A and B negates im). Count C->dim; C may be A or B.
void qel_cpx_vec_dot_product_conj(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  QEL_EXPECT_ELEMENTWISE(C->dim);
#if QEL_CONJ_GROUPS
  ProductArrays p{A->re, A->im, B->re, B->im, C->re, C->im};
  const int left = conj_groups(p, C->dim, conj_products8);
  complex_products<4>(p.ar, p.ai, p.br, p.bi, p.cr, p.ci, left, cpx_conj_product_re,
                      cpx_conj_product_im);
#else
  complex_products<4>(A, B, C, C->dim, cpx_conj_product_re, cpx_conj_product_im);
#endif
}

// C += A * conj(B): C.re = C.re + (ar*br + ai*bi), C.im = C.im + (ai*br - ar*bi);
// the product is one term added to C, not two added in turn. Count A->dim;
// C's old contents are the start; C may be A or B (a bin's inputs are all
// read before C is written).
void qel_cpx_vec_dot_product_maddc_conj(const qel_cpx_vec* A, const qel_cpx_vec* B,
                                        qel_cpx_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  // C + (p + q) as one term: the bin's conjugate product is formed first.
  const auto add_re = [](qel_float c, qel_float xr, qel_float xi, qel_float yr, qel_float yi) {
    return c + cpx_conj_product_re(xr, xi, yr, yi);
  };
  const auto add_im = [](qel_float c, qel_float xr, qel_float xi, qel_float yr, qel_float yi) {
    return c + cpx_conj_product_im(xr, xi, yr, yi);
  };
  const qel_float *ar = A->re, *ai = A->im, *br = B->re, *bi = B->im;
  qel_float *cr = C->re, *ci = C->im;
  int n = A->dim;
#if QEL_CONJ_GROUPS
  {
    ProductArrays p{ar, ai, br, bi, cr, ci};
    n = conj_groups(p, n, conj_products8_add);
    ar = p.ar, ai = p.ai, br = p.br, bi = p.bi, cr = p.cr, ci = p.ci;
  }
#endif
  const qel_float *zr = cr, *zi = ci;
  const unsigned count = static_cast<unsigned>(n);  // n >= 0: no signed rounding
  // Four bins per step, every load of a step before its stores: C may be A or B.
  for (unsigned g = count / 4; g > 0; --g) {
    auto xr = Block<4, 0>::load(ar), xi = Block<4, 1>::load(ai);
    auto yr = Block<4, 2>::load(br), yi = Block<4, 3>::load(bi);
    auto sr = Block<4, 4>::load(zr), si = Block<4, 5>::load(zi);
    Block<4, 4>::store(cr, lanes<4>(add_re, sr, xr, xi, yr, yi));
    Block<4, 5>::store(ci, lanes<4>(add_im, si, xr, xi, yr, yi));
  }
  for (unsigned k = count % 4; k > 0; --k) {
    const qel_float xr = *ar++, xi = *ai++, yr = *br++, yi = *bi++;
    *cr = add_re(*cr, xr, xi, yr, yi);
    *ci = add_im(*ci, xr, xi, yr, yi);
    ++cr;
    ++ci;
  }
}

// C = A * b (a real gain per bin): the whole real pass C.re = A.re * b, then
// the whole imaginary pass C.im = A.im * b. Count C->dim; C may be A. The
// second pass reads b again, so B->data must not be C->re.
void qel_cpx_vec_dot_product_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C) {
  QEL_EXPECT(A != nullptr && B != nullptr && C != nullptr, "A, B and C are not null");
  QEL_EXPECT(C->dim >= 0, "C->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(C->dim, A, B, C), "A, B and C have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(C->dim, C, A), "C is A or does not overlap it");
  QEL_EXPECT(qel::detail::floats_disjoint(B->data, C->re, C->dim) &&
                 qel::detail::same_or_apart(C->im, B->data, C->dim),
             "B is C's im or does not overlap C");
  const int n = C->dim;
  real_products(A->re, B->data, C->re, n);
  real_products(A->im, B->data, C->im, n);
}

// C[k] = A[k] * B[k]; count A->dim; C may be A or B.
void qel_flt_vec_dot_product(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  real_products(A->data, B->data, C->data, A->dim);
}

// B = conj(A): re copied bit for bit, im with its sign bit flipped. Both are
// operations on bits, exact for every input: +0 becomes -0, a NaN keeps its
// payload, and conjugating twice restores every bit. Count A->dim; B may be A.
void qel_cpx_vec_conj(const qel_cpx_vec* A, qel_cpx_vec* B) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, B, A), "B is A or does not overlap it");
  // Negation is the IEEE sign-bit operation (VNEG on the M33, an XOR of the
  // sign on the host): no rounding, NaN payloads kept. Block moves copy bits.
  const auto negated = [](qel_float x) { return -x; };
  const qel_float *ar = A->re, *ai = A->im;
  qel_float *br = B->re, *bi = B->im;
  for (int g = A->dim / 4; g > 0; --g) {
    auto re = Block<4, 0>::load(ar), im = Block<4, 1>::load(ai);
    Block<4, 0>::store(br, re);
    Block<4, 1>::store(bi, lanes<4>(negated, im));
  }
  for (int k = A->dim % 4; k > 0; --k) {
    std::memcpy(br++, ar++, sizeof *br);
    *bi++ = negated(*ai++);
  }
}

// ---- Division ----

// C = A / (alpha + B). The zero test is on the sum: alpha = -B[k] gives +0 and
// is guarded. Count A->dim; C may be A or B.
void qel_flt_vec_ratio_flt(const qel_flt_vec* A, const qel_flt_vec* B, qel_float alpha,
                           qel_flt_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  guarded_quotients(A->data, B->data, C->data, A->dim, [alpha](qel_float b) { return alpha + b; });
}

// C = A / B. Count A->dim; C may be A or B.
void qel_flt_vec_dot_division(const qel_flt_vec* A, const qel_flt_vec* B, qel_flt_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  guarded_quotients(A->data, B->data, C->data, A->dim, [](qel_float b) { return b; });
}

// C = A / B with one real denominator for both parts, guarded in the same form
// for both. In a group the four real parts are stored first, then the four
// imaginary parts, after all loads. Count A->dim; C may be A.
void qel_cpx_vec_dot_division_flt(const qel_cpx_vec* A, const qel_flt_vec* B, qel_cpx_vec* C) {
  QEL_EXPECT(A != nullptr && B != nullptr && C != nullptr, "A, B and C are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B, C), "A, B and C have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, C, A), "C is A or does not overlap it");
  QEL_EXPECT(qel::detail::floats_disjoint(B->data, C->re, A->dim) &&
                 qel::detail::floats_disjoint(B->data, C->im, A->dim),
             "B does not overlap C");
  const int n = A->dim;
  const qel_float *ar = A->re, *ai = A->im, *b = B->data;
  qel_float *cr = C->re, *ci = C->im;
  const auto over = [](qel_float x, qel_float d) { return x / d; };
  for (int g = n / 4; g > 0; --g) {
    auto xr = Block<4, 0>::load(ar), xi = Block<4, 1>::load(ai);
    auto d = Block<4, 2>::load(b);
    d = lanes<4>(guarded, d);
    Block<4, 0>::store(cr, lanes<4>(over, xr, d));
    Block<4, 1>::store(ci, lanes<4>(over, xi, d));
  }
  for (int k = n % 4; k > 0; --k) {
    const qel_float xr = *ar++, xi = *ai++, d = *b++;
    *cr++ = tail_quotient(xr, d);
    *ci++ = tail_quotient(xi, d);
  }
}

// C.re = A.re / B.re and C.im = A.im / B.im: part by part, not a complex
// division. Each zero part divides by kEpsilon on its own, in every bin (no
// tail form here). Count A->dim; C may be A or B.
void qel_cpx_vec_dot_division(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_cpx_vec* C) {
  QEL_EXPECT_ELEMENTWISE(A->dim);
  const auto over = [](qel_float a, qel_float d) { return a / guarded(d); };
  const qel_float *ar = A->re, *ai = A->im, *br = B->re, *bi = B->im;
  qel_float *cr = C->re, *ci = C->im;
  // Four bins per step (one guard form throughout), loads before stores: C
  // may be A or B.
  for (int g = A->dim / 4; g > 0; --g) {
    auto xr = Block<4, 0>::load(ar), yr = Block<4, 1>::load(br);
    auto xi = Block<4, 2>::load(ai), yi = Block<4, 3>::load(bi);
    Block<4, 0>::store(cr, lanes<4>(over, xr, yr));
    Block<4, 2>::store(ci, lanes<4>(over, xi, yi));
  }
  for (int k = A->dim % 4; k > 0; --k) {
    *cr++ = over(*ar++, *br++);
    *ci++ = over(*ai++, *bi++);
  }
}

// C[i] = A[i] / B[i], where a zero B[i] is first overwritten with kEpsilon in
// B itself: B is an output too. The write comes before A[i] is read, so with A
// the same array as B a zero gives kEpsilon / kEpsilon = 1. Count len; C may be
// A or B.
void qel_fl_division(const qel_float* A, qel_float* B, qel_float* C, int len) {
  QEL_EXPECT(len >= 0, "len >= 0");
  QEL_EXPECT(len == 0 || (A != nullptr && B != nullptr && C != nullptr), "A, B and C are not null");
  QEL_EXPECT(
      qel::detail::is_each_or_apart(len, C, A, B) && qel::detail::is_each_or_apart(len, B, A),
      "A, B and C are each the same array or do not overlap");
  for (int i = 0; i < len; ++i) {
    if (B[i] == 0.0f) B[i] = kEpsilon;
    C[i] = A[i] / B[i];
  }
}

// ---- Magnitude and power ----

// The promises of a per-bin measure B of A (power, magnitude): the real output
// may be exactly one of A's parts, as the bins are read before they are written.
#define QEL_EXPECT_BIN_MEASURE()                                             \
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");          \
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");                                    \
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays"); \
  QEL_EXPECT(qel::detail::same_or_apart(B->data, A->re, A->dim) &&           \
                 qel::detail::same_or_apart(B->data, A->im, A->dim),         \
             "B is A's re or im, or does not overlap them")

// B[k] = re*re + im*im. Count A->dim; B->data may be A->re or A->im (a group's
// loads come before its stores).
void qel_cpx_vec_power(const qel_cpx_vec* A, qel_flt_vec* B) {
  QEL_EXPECT_BIN_MEASURE();
  const int n = A->dim;
  const qel_float *re = A->re, *im = A->im;
  qel_float* b = B->data;
#if !defined(__OPTIMIZE_SIZE__)
  // Sixteen bins a step, in two groups of eight: a block move's fixed cycle
  // and the loop's own are spread over more bins.
  const auto group8 = [&]() __attribute__((always_inline)) {
    auto x = Block<8, 0>::load(re), y = Block<8, 1>::load(im);
    Block<8, 0>::store(b, lanes<8>(cpx_power, x, y));
  };
  for (int g = n / 16; g > 0; --g) {
    group8();
    group8();
  }
  if (n % 16 >= 8) group8();
  for (int g = n % 8 / 4; g > 0; --g) {
#else
  for (int g = n / 4; g > 0; --g) {
#endif
    auto x = Block<4, 0>::load(re), y = Block<4, 1>::load(im);
    Block<4, 0>::store(b, lanes<4>(cpx_power, x, y));
  }
  for (int k = n % 4; k > 0; --k) *b++ = cpx_power(*re++, *im++);
}

// B[k] = qel_sqrtf(re*re + im*im): the plain root of the single-precision
// power, no rescaling, one qel_sqrtf call per bin in index order. Count A->dim;
// B->data may be A->re or A->im (a group's loads come before its roots).
void qel_cpx_vec_abs(const qel_cpx_vec* A, qel_flt_vec* B) {
  QEL_EXPECT_BIN_MEASURE();
  const int n = A->dim;
  const qel_float *re = A->re, *im = A->im;
  qel_float* b = B->data;
  for (int g = n / 4; g > 0; --g) {
    auto run = qel::detail::load_saved_pair(re, im);
    qel::detail::each_lane<4>(
        [&](auto j) { *b++ = qel_sqrtf(cpx_power(std::get<j>(run.p), std::get<j>(run.q))); });
  }
  for (int k = n % 4; k > 0; --k) *b++ = qel_sqrtf(cpx_power(*re++, *im++));
}

// Sum of re*re + im*im over all A->dim bins; groups of four summed left to
// right, each group total added to one running sum, the rest added one by one.
qel_float qel_cpx_vec_power_sum(const qel_cpx_vec* A) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::has_arrays(A, A->dim), "A has arrays");
  return power_sum(A->re, A->im, A->dim);
}

// As qel_cpx_vec_power_sum over bins start..start+num-1, the groups counted
// from start. A->dim is not read.
qel_float qel_cpx_vec_power_sum_part(const qel_cpx_vec* A, int start, int num) {
  QEL_EXPECT(A != nullptr, "A is not null");
  QEL_EXPECT(num >= 0, "num >= 0");
  QEL_EXPECT(qel::detail::has_arrays(A, num), "A has arrays");
  return power_sum(A->re + start, A->im + start, num);
}

// *re + i*(*im) = sum over k of A[k]*B[k], no conjugate. Both outputs are set
// to +0 first (an empty A gives 0 + 0i) and hold the running sums, each bin's
// product formed in full and then added. Count A->dim.
void qel_cpx_vec_inner_product(const qel_cpx_vec* A, const qel_cpx_vec* B, qel_float* re,
                               qel_float* im) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(re != nullptr && im != nullptr, "re and im are not null");
  QEL_EXPECT(qel::detail::outside(re, A, A->dim) && qel::detail::outside(re, B, A->dim) &&
                 qel::detail::outside(im, A, A->dim) && qel::detail::outside(im, B, A->dim),
             "re and im point into neither A nor B");
  *im = 0.0f;
  *re = 0.0f;
  const int n = A->dim;
  for (int k = 0; k < n; ++k) {
    const qel_float ar = A->re[k], ai = A->im[k], br = B->re[k], bi = B->im[k];
    *re = *re + cpx_product_re(ar, ai, br, bi);
    *im = *im + cpx_product_im(ar, ai, br, bi);
  }
}

// A[j] = qel_powf(A[j], alpha * B[j]), one call per element in index order; a
// NaN result is stored as +0, infinities pass. Count A->dim; B may be A.
void qel_flt_vec_powf(qel_flt_vec* A, const qel_flt_vec* B, qel_float alpha) {
  QEL_EXPECT(A != nullptr && B != nullptr, "A and B are not null");
  QEL_EXPECT(A->dim >= 0, "A->dim >= 0");
  QEL_EXPECT(qel::detail::have_arrays(A->dim, A, B), "A and B have arrays");
  QEL_EXPECT(qel::detail::is_each_or_apart(A->dim, A, B), "B is A or does not overlap it");
  const int n = A->dim;
  qel_float* a = A->data;
  const qel_float* b = B->data;
  for (int j = 0; j < n; ++j) {
    const qel_float t = qel_powf(a[j], alpha * b[j]);
    a[j] = (t != t) ? 0.0f : t;
  }
}

}  // extern "C"
