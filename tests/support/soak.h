// SPDX-License-Identifier: MIT
// Randomized tests run once with a fixed seed in the normal suite. A soak run
// (test binary flags --qel_seed=S with --qel_rounds=N or --qel_seconds=T)
// repeats them with fresh seeds derived from S, printing each one so that a
// failure can be replayed with --qel_seed=<printed seed> --qel_rounds=1.
#pragma once

#include <cstdint>
#include <functional>

#include "support/values.h"

namespace qel::test {

// Calls body(rng) with Rng(base) normally; in a soak run, once per round.
void randomized(uint32_t base, const std::function<void(Rng&)>& body);

// Reads and removes the --qel_* flags; called by the test main.
void parse_soak_flags(int* argc, char** argv);

}  // namespace qel::test
