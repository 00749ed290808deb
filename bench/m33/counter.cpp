// SPDX-License-Identifier: MIT
#include "counter.h"

#include "marker.h"

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

// 4 + n instructions: each step of n moves the tick phase by one instruction.
[[gnu::noinline]] void pad(uint32_t n) {
  __asm volatile(
      "tst %0, #1\n\t"
      "beq 1f\n\t"
      "nop\n"
      "1: lsrs %0, %0, #1\n\t"
      "beq 3f\n"
      "2: subs %0, %0, #1\n\t"
      "bne 2b\n"
      "3:"
      : "+r"(n)
      :
      : "cc");
}

uint32_t ticks_once(void (*fn)(void*), void* ctx, uint32_t phase) {
  restart();
  pad(phase);
  const uint32_t start = systick().val;
  fn(ctx);
  return elapsed(start);
}

// Instructions from the first SysTick read to the second around fn(ctx).
uint32_t instructions_of(void (*fn)(void*), void* ctx) {
  const auto period = static_cast<uint32_t>(instructions_per_tick() + 0.5);
  uint32_t sum = 0;
  for (uint32_t phase = 0; phase < period; ++phase) sum += ticks_once(fn, ctx, phase);
  return sum;
}

// The same call between the markers, for the trace; it is also the warm-up.
[[gnu::noinline]] void marked(void (*fn)(void*), void* ctx) {
  qel_mark_begin();
  fn(ctx);
  qel_mark_end();
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

Measure count_call(void (*fn)(void*), void* ctx) {
  static int pairs = 0;
  marked(empty_call, nullptr);
  marked(fn, ctx);
  const uint32_t n = instructions_of(fn, ctx);
  const uint32_t n0 = instructions_of(empty_call, nullptr);
  return {static_cast<double>(n) - static_cast<double>(n0), pairs++};
}

}  // namespace qel::bench
