// SPDX-License-Identifier: MIT
#include "support/fake_platform.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "os_support.h"

namespace qel::test::fake {
namespace {

struct Records {
  std::vector<Block> blocks;
  int allocations = 0;
  int live = 0;
  std::vector<float> sqrt_calls;
  std::vector<PowCall> pow_calls;
  std::vector<Print> prints;
  std::function<float(float, float)> pow;
  bool allocation_allowed = false;
  bool echo = false;
};

Records& records() {
  static Records r;
  return r;
}

}  // namespace

void reset() { records() = Records{}; }
const std::vector<Block>& blocks() { return records().blocks; }
int allocations() { return records().allocations; }
int live_blocks() { return records().live; }
const std::vector<float>& sqrt_calls() { return records().sqrt_calls; }
const std::vector<PowCall>& pow_calls() { return records().pow_calls; }
const std::vector<Print>& prints() { return records().prints; }
void set_pow(std::function<float(float, float)> fn) { records().pow = std::move(fn); }
void echo_console_to_stderr() { records().echo = true; }
void allow_allocation() { records().allocation_allowed = true; }
bool allocation_allowed() { return records().allocation_allowed; }

std::string console() {
  std::string s;
  for (const Print& p : records().prints) s += p.text;
  return s;
}

}  // namespace qel::test::fake

using qel::test::fake::records;

extern "C" {

// A request of 0 bytes still gets a distinct, releasable block.
void* quelta_calloc(size_t size) {
  void* p = std::calloc(1, size == 0 ? 1 : size);
  records().blocks.push_back({true, size, p});
  ++records().allocations;
  ++records().live;
  return p;
}

void quelta_free(void* p) {
  records().blocks.push_back({false, 0, p});
  --records().live;
  std::free(p);
}

qel_float qel_sqrtf(qel_float x) {
  records().sqrt_calls.push_back(x);
  return std::sqrt(x);
}

qel_float qel_powf(qel_float base, qel_float exponent) {
  records().pow_calls.push_back({base, exponent});
  return records().pow ? records().pow(base, exponent) : std::pow(base, exponent);
}

int bk_printf(const char* fmt, ...) {
  char buf[256];
  va_list args;
  va_start(args, fmt);
  const int n = std::vsnprintf(buf, sizeof buf, fmt, args);
  va_end(args);
  records().prints.push_back({fmt, buf});
  if (records().echo) std::fputs(buf, stderr);
  return n;
}

}  // extern "C"
