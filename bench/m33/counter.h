// SPDX-License-Identifier: MIT
// Instruction counting on the emulated Cortex-M33 (QEMU -icount shift=0).
//
// QEMU models no cycle counter, but with -icount every instruction advances
// virtual time by the same step, so SysTick on the processor clock moves once
// per P instructions (P calibrated in the same run on a loop of known length).
// One call spans X instructions and floor((a + X) / P) - floor(a / P) ticks,
// a being the phase at the start; over P runs with the phase stepped by one
// instruction each, the ticks add up to X exactly. count() does that for the
// call and for an empty call, and returns the difference: an exact count.
// Before that it runs each once between the markers of marker.h, so a trace
// of the same run (m33_cycles.py) prices the same instructions in cycles.
#pragma once

#include <cstdint>
#include <type_traits>

namespace qel::bench {

// SysTick ticks to instructions, calibrated once per run on a loop of known length.
double instructions_per_tick();

// One measurement: instructions per call, and the number of its pair of
// marked regions (the empty call, then the call) in the run, from 0.
struct Measure {
  double instructions;
  int pair;
  operator double() const { return instructions; }
};

// Instructions per call of fn(ctx), an empty call's cost subtracted. The
// count is exact when every call takes the same path.
Measure count_call(void (*fn)(void*), void* ctx);

template <typename F>
[[gnu::noinline]] void call_trampoline(void* f) {
  (*static_cast<F*>(f))();
}

// Instructions per call of f(); f is typically a lambda that calls one kernel.
template <typename F>
Measure count(F&& f) {
  using Fn = std::remove_reference_t<F>;
  return count_call(&call_trampoline<Fn>, &f);
}

// The benchmark program (bench_main.cpp) below; other programs may link the
// counter alone (counter.cpp, target qel_m33_counter).

// One row of the report, tab-separated for m33_cycles.py --bench, which adds
// the cycles: "qel-row", pair, kernel, size, instructions per call, units,
// unit, target and why it may be missed. The target is in estimated cycles per
// unit of the default build (0: none); `why` says in one line why it cannot be
// met, where that is so.
void report(const char* kernel, const char* size, const Measure& m, double units, const char* unit,
            double target = 0.0, const char* why = "");

// A family's measurements; each bench/m33/<family>_count.cpp registers one.
struct Family {
  Family(const char* name, void (*run)());
};

}  // namespace qel::bench

#define QEL_M33_BENCH(name)                                               \
  static void qel_bench_##name();                                         \
  static ::qel::bench::Family qel_family_##name(#name, qel_bench_##name); \
  static void qel_bench_##name()
