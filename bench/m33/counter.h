// SPDX-License-Identifier: MIT
// Instruction counting on the emulated Cortex-M33 (QEMU -icount shift=0).
//
// QEMU models no cycle counter, but with -icount every instruction advances
// virtual time by the same step, so SysTick on the processor clock moves once
// per fixed number of instructions. count() restarts SysTick, runs the call
// `reps` times, subtracts the same loop around an empty call, and converts
// ticks to instructions with a ratio calibrated in the same run on a loop of
// known length. QEMU is deterministic: reruns give the same figures.
#pragma once

#include <cstdint>
#include <type_traits>

namespace qel::bench {

// SysTick ticks to instructions, calibrated once per run on a loop of known length.
double instructions_per_tick();

// Instructions per call of fn(ctx), an empty call's cost subtracted.
double count_call(void (*fn)(void*), void* ctx, int reps);

template <typename F>
[[gnu::noinline]] void call_trampoline(void* f) {
  (*static_cast<F*>(f))();
}

// Instructions per call of f(); f is typically a lambda that calls one kernel.
template <typename F>
double count(F&& f, int reps = 64) {
  using Fn = std::remove_reference_t<F>;
  return count_call(&call_trampoline<Fn>, &f, reps);
}

// The benchmark program (bench_main.cpp) below; other programs may link the
// counter alone (counter.cpp, target qel_m33_counter).

// One line of the report: kernel, size, instructions per call, per unit.
void report(const char* kernel, const char* size, double per_call, double units, const char* unit);

// A family's measurements; each bench/m33/<family>_count.cpp registers one.
struct Family {
  Family(const char* name, void (*run)());
};

}  // namespace qel::bench

#define QEL_M33_BENCH(name)                                               \
  static void qel_bench_##name();                                         \
  static ::qel::bench::Family qel_family_##name(#name, qel_bench_##name); \
  static void qel_bench_##name()
