// SPDX-License-Identifier: MIT
// Console dumps: the exact bk_printf calls (format and text) each dump makes,
// through the recording fake.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/fake_platform.h"
#include "support/values.h"
#include "vector.h"

namespace qel::test {
namespace {

using Calls = std::vector<fake::Print>;  // {format, text} per bk_printf call

void expect_calls(const Calls& want) {
  const Calls& got = fake::prints();
  ASSERT_EQ(got.size(), want.size()) << "console was:\n" << fake::console();
  for (size_t c = 0; c < want.size(); ++c) {
    SCOPED_TRACE("call " + std::to_string(c));
    EXPECT_EQ(got[c].format, want[c].format);
    EXPECT_EQ(got[c].text, want[c].text);
  }
}

// The 12 calls of the worked example: 1.0, -2.5, 3.0 with line_num 2.
const Calls kExampleCalls = {
    {"\n", "\n"}, {"\n", "\n"}, {" %e,", " 1.000000e+00,"},  {"\n", "\n"},
    {" %e,", " -2.500000e+00,"}, {"\n", "\n"}, {"\n", "\n"},  {"\n", "\n"},
    {" %e,", " 3.000000e+00,"},  {"\n", "\n"}, {"\n", "\n"},  {"\n", "\n"},
};
const char kExampleConsole[] = "\n\n 1.000000e+00,\n -2.500000e+00,\n\n\n 3.000000e+00,\n\n\n";

TEST(Dump, WorkedExampleMakesTwelveCallsInEveryRealForm) {
  float data[3] = {1.0f, -2.5f, 3.0f};
  qel_flt_vec v{3, data};
  const struct {
    const char* why;
    void (*run)(qel_flt_vec*);
  } kForms[] = {
      {"flt_vec_dump", [](qel_flt_vec* m) { qel_flt_vec_dump(m, 2); }},
      {"flt_vec_dump2 Q 0", [](qel_flt_vec* m) { qel_flt_vec_dump2(m, 2, 0); }},
      {"flt_vec_dump2 Q 15", [](qel_flt_vec* m) { qel_flt_vec_dump2(m, 2, 15); }},
      {"fl_dump", [](qel_flt_vec* m) { qel_fl_dump(m->data, m->dim, 2); }},
      {"fl_dump2 Q 31", [](qel_flt_vec* m) { qel_fl_dump2(m->data, m->dim, 2, 31); }},
      {"fl_dump2 Q 1000", [](qel_flt_vec* m) { qel_fl_dump2(m->data, m->dim, 2, 1000); }},
      {"fl_dump2 Q -5", [](qel_flt_vec* m) { qel_fl_dump2(m->data, m->dim, 2, -5); }},
      {"negative line_num breaks like its magnitude",
       [](qel_flt_vec* m) { qel_flt_vec_dump(m, -2); }},
  };
  for (const auto& form : kForms) {
    SCOPED_TRACE(form.why);
    fake::reset();
    form.run(&v);
    expect_calls(kExampleCalls);
    EXPECT_EQ(fake::console(), kExampleConsole);
  }
  EXPECT_SAME_FLOAT(-2.5f, data[1]);  // only read
}

// Hand-written console text of the layout: lengths 0, 1, line_num, line_num + 1
// and several lines, line_num 1 and line_num beyond the length.
struct LayoutCase {
  int len, line_num;
  const char* console;
  const char* why;
};
constexpr LayoutCase kLayoutCases[] = {
    {0, 3, "\n\n", "empty: only the two closing newlines"},
    {1, 3, "\n\n 1.000000e+00,\n\n\n", "one element: break, element, close"},
    {3, 3, "\n\n 1.000000e+00,\n 2.000000e+00,\n 3.000000e+00,\n\n\n", "exactly one line"},
    {4, 3, "\n\n 1.000000e+00,\n 2.000000e+00,\n 3.000000e+00,\n\n\n 4.000000e+00,\n\n\n",
     "line_num + 1 starts a second line"},
    {7, 3,
     "\n\n 1.000000e+00,\n 2.000000e+00,\n 3.000000e+00,\n\n\n 4.000000e+00,\n 5.000000e+00,\n"
     " 6.000000e+00,\n\n\n 7.000000e+00,\n\n\n",
     "three lines, the last one short"},
    {3, 1, "\n\n 1.000000e+00,\n\n\n 2.000000e+00,\n\n\n 3.000000e+00,\n\n\n",
     "line_num 1 breaks before every element"},
    {3, 50, "\n\n 1.000000e+00,\n 2.000000e+00,\n 3.000000e+00,\n\n\n",
     "line_num beyond the length breaks before element 0 only"},
    {4, -3, "\n\n 1.000000e+00,\n 2.000000e+00,\n 3.000000e+00,\n\n\n 4.000000e+00,\n\n\n",
     "negative line_num"},
};

TEST(Dump, RealLayoutByLength) {
  float data[7] = {1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f};
  for (const LayoutCase& c : kLayoutCases) {
    SCOPED_TRACE(c.why);
    qel_flt_vec v{c.len, data};
    for (int form = 0; form < 4; ++form) {
      SCOPED_TRACE(form);
      fake::reset();
      switch (form) {
        case 0: qel_flt_vec_dump(&v, c.line_num); break;
        case 1: qel_flt_vec_dump2(&v, c.line_num, 7); break;
        case 2: qel_fl_dump(data, c.len, c.line_num); break;
        default: qel_fl_dump2(data, c.len, c.line_num, 0); break;
      }
      EXPECT_EQ(fake::console(), c.console);
      // Every call is half of a pair: the value's format, then "\n".
      const Calls& calls = fake::prints();
      ASSERT_EQ(calls.size() % 2, 0u);
      for (size_t k = 1; k < calls.size(); k += 2) EXPECT_EQ(calls[k].format, "\n");
    }
  }
}

TEST(Dump, ShortSamplesInDecimal) {
  const short int data[4] = {-32768, 32767, 0, -7};
  const Calls want = {
      {"\n", "\n"},         {"\n", "\n"}, {"%d, ", "-32768, "}, {"\n", "\n"},
      {"%d, ", "32767, "},  {"\n", "\n"}, {"%d, ", "0, "},      {"\n", "\n"},
      {"\n", "\n"},         {"\n", "\n"}, {"%d, ", "-7, "},     {"\n", "\n"},
      {"\n", "\n"},         {"\n", "\n"},
  };
  qel_short_dump(data, 4, 3);
  expect_calls(want);

  fake::reset();
  qel_short_dump(data, 0, 3);
  expect_calls({{"\n", "\n"}, {"\n", "\n"}});

  fake::reset();
  qel_short_dump(data, 1, 1);
  EXPECT_EQ(fake::console(), "\n\n-32768, \n\n\n");
}

struct ComplexCase {
  float re, im;
  const char* format;
  const char* text;
  const char* why;
};
const ComplexCase kComplexCases[] = {
    {1.0f, -2.0f, "%e%ei, ", "1.000000e+00-2.000000e+00i, ", "negative im brings its own sign"},
    {1.0f, 2.0f, "%e+%ei, ", "1.000000e+00+2.000000e+00i, ", "positive im gets a +"},
    {1.0f, -0.0f, "%e+%ei, ", "1.000000e+00+-0.000000e+00i, ", "-0 is not below 0"},
    {0.0f, 0.0f, "%e+%ei, ", "0.000000e+00+0.000000e+00i, ", "zero"},
    {-1.5f, kInf, "%e+%ei, ", "-1.500000e+00+infi, ", "+inf"},
    {-1.5f, -kInf, "%e%ei, ", "-1.500000e+00-infi, ", "-inf is below 0"},
    {1.0f, kNaN, "%e+%ei, ", "1.000000e+00+nani, ", "NaN is not below 0"},
    {1.0f, -kNaN, "%e+%ei, ", "1.000000e+00+-nani, ", "nor is a negative NaN"},
    {2.5f, -kDenormMin, "%e%ei, ", "2.500000e+00-1.401298e-45i, ", "tiny negative"},
};

TEST(Dump, ComplexSignPicksTheFormat) {
  for (const ComplexCase& c : kComplexCases) {
    SCOPED_TRACE(c.why);
    Canary<float> re(std::vector<float>{c.re}), im(std::vector<float>{c.im});
    const qel_cpx_vec v = cpx_record(re, im);
    for (int Q : {-1, 0, 3, 40}) {
      SCOPED_TRACE(Q);
      fake::reset();
      if (Q < 0) {
        qel_cpx_vec_dump(&v, 4);
      } else {
        qel_cpx_vec_dump2(&v, 4, Q);
      }
      expect_calls({{"\n", "\n"}, {"\n", "\n"}, {c.format, c.text}, {"\n", "\n"}, {"\n", "\n"},
                    {"\n", "\n"}});
    }
  }
}

TEST(Dump, ComplexLayoutMatchesReal) {
  float re[4] = {1.0f, 2.0f, 3.0f, 4.0f};
  float im[4] = {-1.0f, 0.5f, -0.25f, 0.0f};
  const qel_cpx_vec v{4, re, im};
  qel_cpx_vec_dump2(&v, 3, 12);
  EXPECT_EQ(fake::console(),
            "\n\n1.000000e+00-1.000000e+00i, \n2.000000e+00+5.000000e-01i, \n"
            "3.000000e+00-2.500000e-01i, \n\n\n4.000000e+00+0.000000e+00i, \n\n\n");
  fake::reset();
  const qel_cpx_vec empty{0, re, im};
  qel_cpx_vec_dump(&empty, 3);
  expect_calls({{"\n", "\n"}, {"\n", "\n"}});
}

struct FloatTextCase {
  float value;
  const char* text;
  const char* why;
};
const FloatTextCase kFloatTextCases[] = {
    {-0.0f, " -0.000000e+00,", "negative zero keeps its sign"},
    {kDenormMin, " 1.401298e-45,", "smallest denormal, widened exactly"},
    {-1.1754942e-38f, " -1.175494e-38,", "largest denormal"},
    {kFloatMin, " 1.175494e-38,", "smallest normal"},
    {kFloatMax, " 3.402823e+38,", "largest finite"},
    {0.1f, " 1.000000e-01,", "0.1f rounds to six digits"},
    {kInf, " inf,", "+inf"},
    {-kInf, " -inf,", "-inf"},
    {kNaN, " nan,", "NaN"},
    {-kNaN, " -nan,", "negative NaN"},
};

TEST(Dump, FloatTextOfSpecialValues) {
  for (const FloatTextCase& c : kFloatTextCases) {
    SCOPED_TRACE(c.why);
    fake::reset();
    qel_fl_dump(&c.value, 1, 1);
    ASSERT_EQ(fake::prints().size(), 6u);
    EXPECT_EQ(fake::prints()[2].text, c.text);
  }
}

// The dumps widen floats with integer operations; the language's own widening
// is exact, so both must print the same text for any float (NaNs of either sign
// included: glibc and newlib both spell them nan and -nan).
TEST(Dump, WideningPrintsLikeTheLanguageConversion) {
  Rng rng(0xd0a1u);
  std::vector<float> values = special_values();
  for (int k = 0; k < 400; ++k) values.push_back(from_bits(rng.word()));
  for (uint32_t b = 1; b < 0x00800000u; b = b * 3 + 1) values.push_back(from_bits(b));  // denormals
  for (float x : values) {
    SCOPED_TRACE(describe(x));
    char want[64];
    std::snprintf(want, sizeof want, " %e,", static_cast<double>(x));
    fake::reset();
    qel_fl_dump(&x, 1, 1);
    ASSERT_EQ(fake::prints().size(), 6u);
    EXPECT_EQ(fake::prints()[2].text, want);
  }
}

}  // namespace
}  // namespace qel::test
