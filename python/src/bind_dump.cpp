// SPDX-License-Identifier: MIT
// Console dumps: the library prints through the platform's bk_printf, which
// the hosted port sends to the C library's stdout.
#include <cstdio>

#include "families.hpp"

namespace qelpy {

void bind_dump(py::module_& m) {
  m.def(
      "dump",
      [](py::handle x, int line_num, py::handle Q, bool copy) {
        if (line_num == 0) throw py::value_error("dump: line_num must not be 0 (it divides by it)");
        // Keep Python's buffered text and the C library's output in order.
        py::module_::import("sys").attr("stdout").attr("flush")();
        const bool q = !Q.is_none();
        const int qv = q ? Q.cast<int>() : 0;
        if (is_array_of<int16_t>(x)) {
          if (q) throw py::type_error("dump: int16 arrays have no Q form");
          auto a = input<int16_t>(x, "dump: x", copy);
          qel_short_dump(a.data(), count(a.size(), "dump: x"), line_num);
        } else if (is_complex(x)) {
          Split s(input<cfloat>(x, "dump: x", copy));
          auto r = s.record();
          q ? qel_cpx_vec_dump2(&r, line_num, qv) : qel_cpx_vec_dump(&r, line_num);
        } else {
          auto a = input<float>(x, "dump: x", copy);
          const int n = count(a.size(), "dump: x");
          q ? qel_fl_dump2(a.data(), n, line_num, qv) : qel_fl_dump(a.data(), n, line_num);
        }
        std::fflush(stdout);
      },
      "x"_a, "line_num"_a = 8, "Q"_a = py::none(), "copy"_a = false,
      R"doc(Print x to the console (the process's stdout) for diagnosis; returns None.

float32 values print as " %e,", complex64 as "%e+%ei, " (or "%e%ei, " when
the imaginary part is negative; -0 and NaN take the "+" form), int16 as
"%d, ". Every value is followed by a newline of its own; two newlines come
before every line_num-th element (element 0 included) and two after the
last. line_num must not be 0; a negative one breaks as its magnitude does.
Q selects the library's Q forms (float32 and complex64 only), which print
exactly the same values, unscaled, whatever Q is.

>>> qel.dump(np.array([1.0, -2.5, 3.0], dtype=np.float32), line_num=2)  # doctest: +SKIP
<BLANKLINE>
<BLANKLINE>
 1.000000e+00,
 -2.500000e+00,
<BLANKLINE>
<BLANKLINE>
 3.000000e+00,
<BLANKLINE>
<BLANKLINE>
)doc");
}

}  // namespace qelpy
