// SPDX-License-Identifier: MIT
// Empty on purpose: the trace reader finds them by address. noipa keeps each
// a function of its own (never inlined, cloned or folded into the other).
#include "marker.h"

__attribute__((noipa)) void qel_mark_begin(void) { __asm volatile("" ::: "memory"); }

__attribute__((noipa)) void qel_mark_end(void) { __asm volatile("" ::: "memory"); }
