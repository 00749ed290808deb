// SPDX-License-Identifier: MIT
#include "counter.h"

namespace qel::bench {
namespace {

struct SysTick {
  volatile uint32_t ctrl, load, val, calib;
};
SysTick& systick() { return *reinterpret_cast<SysTick*>(0xE000E010u); }

constexpr uint32_t kMask = 0x00FFFFFFu;  // 24-bit down-counter

void restart() {
  systick().ctrl = 0;
  systick().load = kMask;
  systick().val = 0;    // any write clears the counter: it reloads on the next tick
  systick().ctrl = 5u;  // enable, processor clock, no interrupt
}

uint32_t elapsed(uint32_t start) { return (start - systick().val) & kMask; }

// 2 * n instructions plus a fixed few: subs + bne per iteration.
[[gnu::noinline]] void known_loop(uint32_t n) {
  __asm volatile(
      "1: subs %0, %0, #1\n\t"
      "bne 1b"
      : "+r"(n)
      :
      : "cc");
}

[[gnu::noinline]] void empty_call(void*) { __asm volatile("" ::: "memory"); }

uint32_t ticks_of(void (*fn)(void*), void* ctx, int reps) {
  restart();
  const uint32_t start = systick().val;
  for (int r = 0; r < reps; ++r) fn(ctx);
  return elapsed(start);
}

}  // namespace

double instructions_per_tick() {
  static double ratio = 0.0;
  if (ratio == 0.0) {
    constexpr uint32_t kShort = 200000, kLong = 2200000;
    restart();
    uint32_t start = systick().val;
    known_loop(kShort);
    const uint32_t t_short = elapsed(start);
    restart();
    start = systick().val;
    known_loop(kLong);
    const uint32_t t_long = elapsed(start);
    // The difference removes the fixed cost of the call and the reads.
    ratio = 2.0 * (kLong - kShort) / static_cast<double>(t_long - t_short);
  }
  return ratio;
}

double count_call(void (*fn)(void*), void* ctx, int reps) {
  fn(ctx);  // warm-up: the first call may take a different path (nothing cached, but be fair)
  const uint32_t t = ticks_of(fn, ctx, reps);
  const uint32_t t0 = ticks_of(empty_call, nullptr, reps);
  return (static_cast<double>(t) - static_cast<double>(t0)) * instructions_per_tick() / reps;
}

}  // namespace qel::bench
