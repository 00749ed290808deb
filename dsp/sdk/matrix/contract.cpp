// SPDX-License-Identifier: MIT
// The stop of the QEL_CHECKED build; empty in the normal build.
#include "detail/contract.hpp"

#if defined(QEL_CHECKED) && QEL_CHECKED

#include "os_support.h"

namespace qel::detail {

void contract_failed(const char* function, const char* promise) {
  bk_printf("qel: %s: broken promise: %s\n", function, promise);
  __builtin_trap();
}

}  // namespace qel::detail

#endif
