// SPDX-License-Identifier: MIT
// Recording fakes of the platform hooks, linked into the tests in place of a
// port: every allocation and release in order, every math call with its
// arguments, every console print with its format and the text it made.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace qel::test::fake {

struct Block {
  bool is_alloc;  // quelta_calloc (true) or quelta_free (false)
  size_t size;    // requested bytes, for allocations
  void* ptr;
};
struct PowCall {
  float base, exponent;
};
struct Print {
  std::string format;
  std::string text;
};

// Clears every record (done before each test by the test main).
void reset();

const std::vector<Block>& blocks();  // allocations and releases, in order
int allocations();                   // quelta_calloc calls since reset
int live_blocks();                   // allocated and not yet released
const std::vector<float>& sqrt_calls();
const std::vector<PowCall>& pow_calls();
const std::vector<Print>& prints();
std::string console();  // all printed text, concatenated

// Replaces what qel_powf returns (default: std::pow) until the next reset.
void set_pow(std::function<float(float, float)> fn);

// Also writes every printed text to stderr (for death tests, which see only
// the dying process's stderr).
void echo_console_to_stderr();

// A test that creates vectors says so; any other test that allocates fails.
void allow_allocation();
bool allocation_allowed();

}  // namespace qel::test::fake
