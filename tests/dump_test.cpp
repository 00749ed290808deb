// SPDX-License-Identifier: MIT
// Console dumps: the exact bk_printf calls (format and text) each dump makes,
// through the recording fake.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
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
    {"\n", "\n"},
    {"\n", "\n"},
    {" %e,", " 1.000000e+00,"},
    {"\n", "\n"},
    {" %e,", " -2.500000e+00,"},
    {"\n", "\n"},
    {"\n", "\n"},
    {"\n", "\n"},
    {" %e,", " 3.000000e+00,"},
    {"\n", "\n"},
    {"\n", "\n"},
    {"\n", "\n"},
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

// The layout of each case, written by hand: 'b' is a line break (two "\n"
// calls), digit k is element k's print (its format, then "\n").
struct LayoutCase {
  int len, line_num;
  const char* layout;
  const char* why;
};
constexpr LayoutCase kLayoutCases[] = {
    {0, 3, "b", "empty: only the two closing newlines"},
    {1, 3, "b0b", "one element: break, element, close"},
    {3, 3, "b012b", "exactly one line"},
    {4, 3, "b012b3b", "line_num + 1 starts a second line"},
    {7, 3, "b012b345b6b", "three lines, the last one short"},
    {3, 1, "b0b1b2b", "line_num 1 breaks before every element"},
    {3, 50, "b012b", "line_num beyond the length breaks before element 0 only"},
    {4, -3, "b012b3b", "negative line_num breaks like its magnitude"},
    {5, -1, "b0b1b2b3b4b", "line_num -1"},
};

// One element's print: {format, text}.
using Element = fake::Print;

Calls expand(const char* layout, const std::vector<Element>& elements) {
  Calls calls;
  for (const char* c = layout; *c != '\0'; ++c) {
    if (*c == 'b') {
      calls.push_back({"\n", "\n"});
    } else {
      calls.push_back(elements[static_cast<size_t>(*c - '0')]);
    }
    calls.push_back({"\n", "\n"});
  }
  return calls;
}

// Every form, with the same elements in each of its kind.
TEST(Dump, LayoutByLengthInEveryForm) {
  float real[7] = {1.0f, -2.0f, 3.0f, 0.5f, -0.0f, 6.0f, 7.0f};
  float imag[7] = {-1.0f, 2.0f, 0.0f, -0.25f, 8.0f, -0.0f, 1.0f};
  const short int samples[7] = {-32768, 32767, 0, -1, 5, 100, -7};
  const std::vector<Element> real_prints = {
      {" %e,", " 1.000000e+00,"}, {" %e,", " -2.000000e+00,"}, {" %e,", " 3.000000e+00,"},
      {" %e,", " 5.000000e-01,"}, {" %e,", " -0.000000e+00,"}, {" %e,", " 6.000000e+00,"},
      {" %e,", " 7.000000e+00,"},
  };
  const std::vector<Element> sample_prints = {
      {"%d, ", "-32768, "}, {"%d, ", "32767, "}, {"%d, ", "0, "},  {"%d, ", "-1, "},
      {"%d, ", "5, "},      {"%d, ", "100, "},   {"%d, ", "-7, "},
  };
  const std::vector<Element> complex_prints = {
      {"%e%ei, ", "1.000000e+00-1.000000e+00i, "},   {"%e+%ei, ", "-2.000000e+00+2.000000e+00i, "},
      {"%e+%ei, ", "3.000000e+00+0.000000e+00i, "},  {"%e%ei, ", "5.000000e-01-2.500000e-01i, "},
      {"%e+%ei, ", "-0.000000e+00+8.000000e+00i, "}, {"%e+%ei, ", "6.000000e+00+-0.000000e+00i, "},
      {"%e+%ei, ", "7.000000e+00+1.000000e+00i, "},
  };
  for (const LayoutCase& c : kLayoutCases) {
    SCOPED_TRACE(c.why);
    qel_flt_vec v{c.len, real};
    qel_cpx_vec z{c.len, real, imag};
    const struct {
      const char* name;
      std::function<void()> run;
      const std::vector<Element>& prints;
    } kForms[] = {
        {"flt_vec_dump", [&] { qel_flt_vec_dump(&v, c.line_num); }, real_prints},
        {"flt_vec_dump2", [&] { qel_flt_vec_dump2(&v, c.line_num, 7); }, real_prints},
        {"fl_dump", [&] { qel_fl_dump(real, c.len, c.line_num); }, real_prints},
        {"fl_dump2", [&] { qel_fl_dump2(real, c.len, c.line_num, 0); }, real_prints},
        {"short_dump", [&] { qel_short_dump(samples, c.len, c.line_num); }, sample_prints},
        {"cpx_vec_dump", [&] { qel_cpx_vec_dump(&z, c.line_num); }, complex_prints},
        {"cpx_vec_dump2", [&] { qel_cpx_vec_dump2(&z, c.line_num, 30); }, complex_prints},
    };
    for (const auto& form : kForms) {
      SCOPED_TRACE(form.name);
      fake::reset();
      form.run();
      expect_calls(expand(c.layout, form.prints));
    }
  }
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
    for (int form = 0; form < 4; ++form) {  // the plain form, then Q 0, 3, 40
      SCOPED_TRACE(form);
      fake::reset();
      if (form == 0) {
        qel_cpx_vec_dump(&v, 4);
      } else {
        qel_cpx_vec_dump2(&v, 4, form == 1 ? 0 : (form == 2 ? 3 : 40));
      }
      expect_calls({{"\n", "\n"},
                    {"\n", "\n"},
                    {c.format, c.text},
                    {"\n", "\n"},
                    {"\n", "\n"},
                    {"\n", "\n"}});
    }
  }
}

struct FloatTextCase {
  float value;
  const char* text;
  const char* why;
};
const FloatTextCase kFloatTextCases[] = {
    {-0.0f, " -0.000000e+00,", "negative zero keeps its sign"},
    {kDenormMin, " 1.401298e-45,", "smallest denormal, widened exactly"},
    {from_bits(0x807fffffu), " -1.175494e-38,", "largest denormal, negative"},
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
