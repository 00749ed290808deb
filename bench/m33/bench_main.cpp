// SPDX-License-Identifier: MIT
// The benchmark program: every family registered with QEL_M33_BENCH, one table.
#include <cstdio>

#include "counter.h"

namespace qel::bench {
namespace {

struct Registry {
  const char* names[32];
  void (*runs[32])();
  int n = 0;
};
Registry& registry() {
  static Registry r;
  return r;
}

}  // namespace

void report(const char* kernel, const char* size, const Measure& m, double units, const char* unit,
            double target, const char* why) {
  std::printf("qel-row\t%d\t%s\t%s\t%.0f\t%.0f\t%s\t%.2f\t%s\n", m.pair, kernel, size,
              m.instructions, units, unit, target, why);
}

Family::Family(const char* name, void (*run)()) {
  Registry& r = registry();
  r.names[r.n] = name;
  r.runs[r.n] = run;
  ++r.n;
}

}  // namespace qel::bench

int main() {
  using namespace qel::bench;
  std::printf("instructions per tick (calibrated): %.4f\n", instructions_per_tick());
  Registry& r = registry();
  for (int i = 0; i < r.n; ++i) r.runs[i]();
  return 0;
}
