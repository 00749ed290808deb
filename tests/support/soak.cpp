// SPDX-License-Identifier: MIT
#include "support/soak.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace qel::test {
namespace {

struct SoakSettings {
  bool active = false;
  uint32_t seed = 0;
  long rounds = 1;
  double seconds = 0.0;
};

SoakSettings& settings() {
  static SoakSettings s;
  return s;
}

bool take(const char* arg, const char* name, const char** value) {
  const size_t n = std::strlen(name);
  if (std::strncmp(arg, name, n) != 0 || arg[n] != '=') return false;
  *value = arg + n + 1;
  return true;
}

}  // namespace

void parse_soak_flags(int* argc, char** argv) {
  SoakSettings& s = settings();
  int kept = 1;
  for (int i = 1; i < *argc; ++i) {
    const char* v = nullptr;
    if (take(argv[i], "--qel_seed", &v)) {
      s.active = true;
      s.seed = static_cast<uint32_t>(std::strtoul(v, nullptr, 0));
    } else if (take(argv[i], "--qel_rounds", &v)) {
      s.active = true;
      s.rounds = std::strtol(v, nullptr, 0);
    } else if (take(argv[i], "--qel_seconds", &v)) {
      s.active = true;
      s.seconds = std::strtod(v, nullptr);
    } else {
      argv[kept++] = argv[i];
    }
  }
  *argc = kept;
}

void randomized(uint32_t base, const std::function<void(Rng&)>& body) {
  const SoakSettings& s = settings();
  if (!s.active) {
    Rng rng(base);
    body(rng);
    return;
  }
  const std::clock_t start = std::clock();
  for (long round = 0;; ++round) {
    const bool by_time = s.seconds > 0.0;
    if (!by_time && round >= s.rounds) break;
    if (by_time && static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC >= s.seconds) break;
    // Each round's seed is printed before it runs, so the last line before a
    // failure gives the --qel_seed that replays it in one round.
    const uint32_t round_seed = s.seed + static_cast<uint32_t>(round) * 0x9e3779b9u;
    std::printf("[ soak     ] --qel_seed=0x%08lx\n", static_cast<unsigned long>(round_seed));
    Rng rng(base ^ round_seed);
    body(rng);
    if (::testing::Test::HasFailure()) break;
  }
}

}  // namespace qel::test
