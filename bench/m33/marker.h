// SPDX-License-Identifier: MIT
// Markers of a measured region for the cycle estimate (m33_cycles.py): the
// region is every instruction executed after qel_mark_begin returns, up to but
// not including the call of qel_mark_end. Link the target qel_m33_marker.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

void qel_mark_begin(void);
void qel_mark_end(void);

#ifdef __cplusplus
}
#endif
