/* SPDX-License-Identifier: MIT */
/* Vector table and reset handler for QEMU's mps2-an505 (Cortex-M33). */
#include <stdint.h>
#include <stdlib.h>

extern uint32_t __stack_top;
extern void _start(void); /* newlib's C runtime entry (rdimon crt0) */
extern void _exit(int status);

#define SCB_CPACR (*(volatile uint32_t*)0xE000ED88u)

void Reset_Handler(void);

/* The C runtime uses the FPU from its first instructions, so CP10 and CP11
   get full access before _start; without it the first VFP op faults. */
__attribute__((noreturn)) void Reset_Handler(void) {
  SCB_CPACR |= (0xFu << 20);
  __asm volatile("dsb\n\tisb" ::: "memory");
  _start();
  for (;;) {
  }
}

/* Any fault ends the run with status 99 at once instead of hanging QEMU. */
void Fault_Handler(void);
void Fault_Handler(void) { _exit(99); }

typedef void (*vector_fn)(void);

__attribute__((section(".vectors"), used)) const vector_fn qel_vectors[16] = {
    (vector_fn)(uintptr_t)&__stack_top,
    Reset_Handler,
    Fault_Handler, /* NMI */
    Fault_Handler, /* HardFault */
    Fault_Handler, /* MemManage */
    Fault_Handler, /* BusFault */
    Fault_Handler, /* UsageFault */
    Fault_Handler, /* SecureFault */
    0,
    0,
    0,
    Fault_Handler, /* SVCall */
    Fault_Handler, /* DebugMonitor */
    0,
    Fault_Handler, /* PendSV */
    Fault_Handler, /* SysTick */
};
