// SPDX-License-Identifier: MIT
// Console dumps: the exact bk_printf calls (format and text) each dump makes,
// through the recording fake.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/fake_platform.h"
#include "support/soak.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

using Calls = std::vector<fake::Print>;  // {format, text} per bk_printf call

void expect_calls(const Calls& want) {
  const Calls& got = fake::prints();
  ASSERT_EQ(got.size(), want.size()) << "console was:\n" << fake::console();
  for (size_t c = 0; c < want.size(); ++c) {
    EXPECT_EQ(got[c].format, want[c].format) << "call " << c;
    EXPECT_EQ(got[c].text, want[c].text) << "call " << c;
  }
}

const float real[7] = {1.0f, -2.5f, 3.0f, 0.5f, -0.0f, 6.0f, 7.0f};
const float imag[7] = {-1.0f, 2.0f, 0.0f, -0.25f, 8.0f, -0.0f, 1.0f};
const short int samples[7] = {-32768, 32767, 0, -1, 5, 100, -7};
const Calls kReal = {{" %e,", " 1.000000e+00,"},  {" %e,", " -2.500000e+00,"},
                     {" %e,", " 3.000000e+00,"},  {" %e,", " 5.000000e-01,"},
                     {" %e,", " -0.000000e+00,"}, {" %e,", " 6.000000e+00,"},
                     {" %e,", " 7.000000e+00,"}};
const Calls kSamples = {{"%d, ", "-32768, "}, {"%d, ", "32767, "}, {"%d, ", "0, "},
                        {"%d, ", "-1, "},     {"%d, ", "5, "},     {"%d, ", "100, "},
                        {"%d, ", "-7, "}};
const Calls kComplex = {
    {"%e%ei, ", "1.000000e+00-1.000000e+00i, "},   {"%e+%ei, ", "-2.500000e+00+2.000000e+00i, "},
    {"%e+%ei, ", "3.000000e+00+0.000000e+00i, "},  {"%e%ei, ", "5.000000e-01-2.500000e-01i, "},
    {"%e+%ei, ", "-0.000000e+00+8.000000e+00i, "}, {"%e+%ei, ", "6.000000e+00+-0.000000e+00i, "},
    {"%e+%ei, ", "7.000000e+00+1.000000e+00i, "}};

// The seven forms on the first n elements; Q must change nothing.
void dump(int form, int n, int line_num) {
  float* re = const_cast<float*>(real);  // records hold non-const pointers; dumps only read
  qel_flt_vec v{n, re};
  qel_cpx_vec z{n, re, const_cast<float*>(imag)};
  switch (form) {
    case 0:
      return qel_flt_vec_dump(&v, line_num);
    case 1:
      return qel_flt_vec_dump2(&v, line_num, 15);
    case 2:
      return qel_fl_dump(real, n, line_num);
    case 3:
      return qel_fl_dump2(real, n, line_num, -5);
    case 4:
      return qel_short_dump(samples, n, line_num);
    case 5:
      return qel_cpx_vec_dump(&z, line_num);
    default:
      return qel_cpx_vec_dump2(&z, line_num, 1000);
  }
}

// The layout of each case, written by hand: 'b' is a line break (two "\n"
// calls), digit k is element k's print (its format, then "\n").
struct LayoutCase {
  int len, line_num;
  const char* layout;
  const char* why;
};
constexpr LayoutCase kLayouts[] = {
    {3, 2, "b01b2b", "the worked example: 1, -2.5, 3 with line_num 2"},
    {0, 3, "b", "empty: only the two closing newlines"},
    {4, 3, "b012b3b", "line_num + 1 starts a second line"},
    {7, 3, "b012b345b6b", "three lines, the last one short"},
    {3, 1, "b0b1b2b", "line_num 1 breaks before every element"},
    {3, 50, "b012b", "line_num beyond the length breaks before element 0 only"},
    {4, -3, "b012b3b", "negative line_num breaks like its magnitude"},
};

TEST(Dump, LayoutInEveryForm) {
  for (const LayoutCase& c : kLayouts) {
    SCOPED_TRACE(c.why);
    for (int form = 0; form < 7; ++form) {
      SCOPED_TRACE(form);
      const Calls& prints = form < 4 ? kReal : form == 4 ? kSamples : kComplex;
      Calls want;
      for (const char* l = c.layout; *l != '\0'; ++l) {
        want.push_back(*l == 'b' ? fake::Print{"\n", "\n"} : prints[static_cast<size_t>(*l - '0')]);
        want.push_back({"\n", "\n"});
      }
      fake::reset();
      dump(form, c.len, c.line_num);
      expect_calls(want);
    }
  }
  fake::reset();
  dump(0, 3, 2);
  EXPECT_EQ(fake::console(), "\n\n 1.000000e+00,\n -2.500000e+00,\n\n\n 3.000000e+00,\n\n\n");
}

struct TextCase {
  float re, im;
  bool complex;
  const char* format;
  const char* text;
};
const TextCase kTexts[] = {
    {1, -2, true, "%e%ei, ", "1.000000e+00-2.000000e+00i, "},
    {1, 2, true, "%e+%ei, ", "1.000000e+00+2.000000e+00i, "},
    {1, -0.0f, true, "%e+%ei, ", "1.000000e+00+-0.000000e+00i, "},  // -0 is not below 0
    {-1.5f, kInf, true, "%e+%ei, ", "-1.500000e+00+infi, "},
    {-1.5f, -kInf, true, "%e%ei, ", "-1.500000e+00-infi, "},
    {1, kNaN, true, "%e+%ei, ", "1.000000e+00+nani, "},
    {1, -kNaN, true, "%e+%ei, ", "1.000000e+00+-nani, "},  // nor is a negative NaN
    {2.5f, -kDenormMin, true, "%e%ei, ", "2.500000e+00-1.401298e-45i, "},
    {kDenormMin, 0, false, " %e,", " 1.401298e-45,"},
    {from_bits(0x807fffffu), 0, false, " %e,", " -1.175494e-38,"},
    {kFloatMax, 0, false, " %e,", " 3.402823e+38,"},
    {0.1f, 0, false, " %e,", " 1.000000e-01,"},
    {-kInf, 0, false, " %e,", " -inf,"},
    {-kNaN, 0, false, " %e,", " -nan,"},
};

TEST(Dump, TextOfOneElement) {
  for (const TextCase& c : kTexts) {
    SCOPED_TRACE(c.text);
    float re = c.re, im = c.im;
    qel_cpx_vec v{1, &re, &im};
    fake::reset();
    c.complex ? qel_cpx_vec_dump(&v, 4) : qel_fl_dump(&re, 1, 4);
    expect_calls(
        {{"\n", "\n"}, {"\n", "\n"}, {c.format, c.text}, {"\n", "\n"}, {"\n", "\n"}, {"\n", "\n"}});
  }
}

// The dumps widen floats with integer operations; the language's own widening
// is exact, so both must print the same text for any float (NaNs of either sign
// included: glibc and newlib both spell them nan and -nan).
TEST(Dump, WideningPrintsLikeTheLanguageConversion) {
  randomized(0xd0a1u, [&](Rng& rng) {
    std::vector<float> values = special_values();
    for (int k = 0; k < 400; ++k) values.push_back(from_bits(rng.word()));
    for (uint32_t b = 1; b < 0x00800000u; b = b * 3 + 1) values.push_back(from_bits(b));
    for (float x : values) {
      char want[64];
      std::snprintf(want, sizeof want, " %e,", static_cast<double>(x));
      fake::reset();
      qel_fl_dump(&x, 1, 1);
      ASSERT_EQ(fake::prints().size(), 6u);
      EXPECT_EQ(fake::prints()[2].text, want) << describe(x);
    }
  });
}

}  // namespace
}  // namespace qel::test
