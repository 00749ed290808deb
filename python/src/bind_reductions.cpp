// SPDX-License-Identifier: MIT
// Reductions: sums over a vector or a range, variance, absolute peak.
#include "families.hpp"

namespace qelpy {

void bind_reductions(py::module_& m) {
  m.def(
      "sum",
      [](py::handle x, int start, py::handle num, bool copy) {
        auto a = input<float>(x, "sum: x", copy);
        auto ra = record(a);
        if (start == 0 && num.is_none()) return float32_scalar(qel_flt_vec_sum(&ra));
        const int n = num.is_none() ? static_cast<int>(a.size()) - start : num.cast<int>();
        if (start < 0 || n < 0 || static_cast<py::ssize_t>(start) + n > a.size()) {
          throw py::index_error("sum: the range start=" + std::to_string(start) +
                                ", num=" + std::to_string(n) + " must lie within x (" +
                                std::to_string(a.size()) + " elements)");
        }
        return float32_scalar(qel_flt_vec_sum_part(&ra, start, n));
      },
      "x"_a, "start"_a = 0, "num"_a = py::none(), "copy"_a = false,
      R"doc(Sum of x[start : start+num] (all of x by default) as numpy.float32.

The order of additions is part of the result: one running sum s = 0; each
full group of eight elements (counted from start) is summed left to right,
((((((x0+x1)+x2)+x3)+x4)+x5)+x6)+x7, and the subtotal added to s; the last
num % 8 elements are then added to s one by one. Below eight elements that
is a plain left-to-right sum. NaN or inf elements give NaN or inf.

>>> x = np.zeros(16, dtype=np.float32); x[0] = 2**24; x[8] = x[9] = 1
>>> print(qel.sum(x))   # the two ones meet in their group first
16777218.0
>>> print(qel.sum(x, start=8, num=2))
2.0
)doc");

  m.def(
      "var",
      [](py::handle x, bool copy) {
        auto a = input<float>(x, "var: x", copy);
        auto ra = record(a);
        return float32_scalar(qel_flt_vec_var(&ra));
      },
      "x"_a, "copy"_a = false,
      R"doc(Unbiased sample variance (divisor n - 1, like numpy.var(x, ddof=1)) as numpy.float32.

Two passes in float32: s = plain left-to-right sum, avg = s / n, then
v = sum of (x[k] - avg)**2 left to right, result v / (n - 1). One element
gives 0.0; an empty array gives -0.0 (0 / -1), never NaN.

>>> print(qel.var(np.array([1, 2, 3, 4], dtype=np.float32)))
1.6666666
)doc");

  m.def(
      "abs_max",
      [](py::handle x, bool copy) {
        auto a = input<float>(x, "abs_max: x", copy);
        return float32_scalar(qel_fl_abs_max(a.data(), count(a.size(), "abs_max: x")));
      },
      "x"_a, "copy"_a = false,
      R"doc(Largest absolute value, never below +0.0, as numpy.float32.

m = 0; for each element t = |x[k]|; if m < t then m = t. NaN elements fail
the comparison and are passed over, so the result is never NaN; an empty
array gives +0.0.

>>> print(qel.abs_max(np.array([np.nan, -3, 2], dtype=np.float32)))
3.0
)doc");
}

}  // namespace qelpy
