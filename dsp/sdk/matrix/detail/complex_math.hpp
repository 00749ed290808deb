// SPDX-License-Identifier: MIT
// Per-element complex formulas shared by the spectra and the power-ranked
// selections: each written once, in the operand order that fixes its rounding.
// They are function objects, so passing one to a loop helper still inlines it.
#pragma once

#include "../../utils/os_support.h"

namespace qel::detail {

// |a|^2 = re*re + im*im in single precision: the library's measure of a bin.
inline constexpr auto cpx_power = [](qel_float re, qel_float im) { return re * re + im * im; };

// a*b = (ar*br - ai*bi) + i(ai*br + ar*bi).
inline constexpr auto cpx_product_re = [](qel_float ar, qel_float ai, qel_float br, qel_float bi) {
  return ar * br - ai * bi;
};
inline constexpr auto cpx_product_im = [](qel_float ar, qel_float ai, qel_float br, qel_float bi) {
  return ai * br + ar * bi;
};

// a*conj(b) = (ar*br + ai*bi) + i(ai*br - ar*bi): the conjugate is on b.
inline constexpr auto cpx_conj_product_re = [](qel_float ar, qel_float ai, qel_float br,
                                               qel_float bi) { return ar * br + ai * bi; };
inline constexpr auto cpx_conj_product_im = [](qel_float ar, qel_float ai, qel_float br,
                                               qel_float bi) { return ai * br - ar * bi; };

}  // namespace qel::detail
