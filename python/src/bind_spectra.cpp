// SPDX-License-Identifier: MIT
// Complex spectra: element-wise products and conjugation, guarded division,
// power, magnitude, power sums, the sum of products and the power law.
#include <cstring>

#include "families.hpp"

namespace qelpy {
namespace {

float scalar(double v) { return static_cast<float>(v); }

Split cpx_in(py::handle z, const std::string& what, bool copy) {
  return Split(input<cfloat>(z, what, copy));
}

void check_same(const Split& a, py::ssize_t n, const std::string& what) {
  same_length(static_cast<py::ssize_t>(a.re.size()), n, what);
}

// y[k] = measure of bin k of z (power or magnitude), into a new array or out.
Array<float> bin_measure(const std::string& name, void (*kernel)(const qel_cpx_vec*, qel_flt_vec*),
                         py::handle z, py::handle out, bool copy) {
  Split a = cpx_in(z, name + ": z", copy);
  auto y = output<float>(out, static_cast<py::ssize_t>(a.re.size()), name + ": out");
  auto ra = a.record();
  auto ry = record(y);
  kernel(&ra, &ry);
  return y;
}

}  // namespace

void bind_spectra(py::module_& m) {
  // ---- Element-wise products
  m.def(
      "multiply",
      [](py::handle a, py::handle b, py::handle out, bool copy) -> py::array {
        const bool ca = is_complex(a), cb = is_complex(b);
        if (ca && cb) {
          Split sa = cpx_in(a, "multiply: a", copy), sb = cpx_in(b, "multiply: b", copy);
          check_same(sa, static_cast<py::ssize_t>(sb.re.size()), "multiply: a and b");
          Split c(static_cast<py::ssize_t>(sa.re.size()));
          auto ra = sa.record(), rb = sb.record(), rc = c.record();
          qel_cpx_vec_dot_product(&ra, &rb, &rc);
          return joined(c, out, "multiply: out");
        }
        if (ca || cb) {
          // A real gain per bin; float32 products commute bit for bit.
          Split z = cpx_in(ca ? a : b, "multiply: complex operand", copy);
          auto g = input<float>(ca ? b : a, "multiply: real operand", copy);
          check_same(z, g.size(), "multiply: a and b");
          Split c(g.size());
          auto rz = z.record(), rc = c.record();
          auto rg = record(g);
          qel_cpx_vec_dot_product_flt(&rz, &rg, &rc);
          return joined(c, out, "multiply: out");
        }
        auto x = input<float>(a, "multiply: a", copy), y = input<float>(b, "multiply: b", copy);
        same_length(x.size(), y.size(), "multiply: a and b");
        auto c = output<float>(out, x.size(), "multiply: out");
        x = detach(x, c, true);
        y = detach(y, c, true);
        auto rx = record(x), ry = record(y), rc = record(c);
        qel_flt_vec_dot_product(&rx, &ry, &rc);
        return c;
      },
      "a"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Element-wise product ("dot" in the library means element by element).

    complex * complex:  re = ar*br - ai*bi,  im = ai*br + ar*bi
    complex * real:     re = ar*b,           im = ai*b     (a real gain per bin)
    real * real:        y = a*b

Each part is two float32 products and one float32 sum or difference, with no
fused multiply-add. Infinities and NaNs follow IEEE arithmetic (no guard).

>>> qel.multiply(np.array([1 + 2j], dtype=np.complex64), np.array([3 + 4j], dtype=np.complex64))
array([-5.+10.j], dtype=complex64)
>>> qel.multiply(np.array([1 + 2j], dtype=np.complex64), np.array([0.5], dtype=np.float32))
array([0.5+1.j], dtype=complex64)
)doc");

  m.def(
      "multiply_conj",
      [](py::handle a, py::handle b, py::handle out, bool copy) {
        Split sa = cpx_in(a, "multiply_conj: a", copy), sb = cpx_in(b, "multiply_conj: b", copy);
        check_same(sa, static_cast<py::ssize_t>(sb.re.size()), "multiply_conj: a and b");
        Split c(static_cast<py::ssize_t>(sa.re.size()));
        auto ra = sa.record(), rb = sb.record(), rc = c.record();
        qel_cpx_vec_dot_product_conj(&ra, &rb, &rc);
        return joined(c, out, "multiply_conj: out");
      },
      "a"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Product with the conjugate of the second operand: y = a * conj(b).

    re = ar*br + ai*bi,  im = ai*br - ar*bi

This is a*conj(b), not conj(a)*b: swapping a and b negates the imaginary part.

>>> qel.multiply_conj(np.array([1 + 2j], dtype=np.complex64), np.array([3 + 4j], dtype=np.complex64))
array([11.+2.j], dtype=complex64)
)doc");

  m.def(
      "multiply_conj_add",
      [](py::handle acc, py::handle a, py::handle b, py::handle out, bool copy) {
        Split sc = cpx_in(acc, "multiply_conj_add: acc", copy);
        Split sa = cpx_in(a, "multiply_conj_add: a", copy);
        Split sb = cpx_in(b, "multiply_conj_add: b", copy);
        check_same(sa, static_cast<py::ssize_t>(sb.re.size()), "multiply_conj_add: a and b");
        check_same(sa, static_cast<py::ssize_t>(sc.re.size()), "multiply_conj_add: a and acc");
        auto ra = sa.record(), rb = sb.record(), rc = sc.record();
        qel_cpx_vec_dot_product_maddc_conj(&ra, &rb, &rc);
        return joined(sc, out, "multiply_conj_add: out");
      },
      "acc"_a, "a"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Accumulate a conjugate product: y = acc + a * conj(b). Pass out=acc to accumulate in place.

    p = ar*br + ai*bi,  q = ai*br - ar*bi,  y.re = acc.re + p,  y.im = acc.im + q

The product of an element is formed in full before it is added to the
running value (acc + (x + y), not (acc + x) + y); that fixes the rounding.

>>> acc = np.array([1 + 1j], dtype=np.complex64)
>>> qel.multiply_conj_add(acc, np.array([1 + 2j], dtype=np.complex64),
...                       np.array([3 + 4j], dtype=np.complex64), out=acc)
array([12.+3.j], dtype=complex64)
)doc");

  m.def(
      "conj",
      [](py::handle z, py::handle out, bool copy) {
        Split a = cpx_in(z, "conj: z", copy);
        Split b(static_cast<py::ssize_t>(a.re.size()));
        auto ra = a.record(), rb = b.record();
        qel_cpx_vec_conj(&ra, &rb);
        return joined(b, out, "conj: out");
      },
      "z"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Complex conjugate: the real part copied bit for bit, the imaginary part's sign bit flipped.

Exact: +0 becomes -0 and a NaN keeps its payload; applied twice it restores
every bit.

>>> qel.conj(np.array([1 - 2j], dtype=np.complex64))
array([1.+2.j], dtype=complex64)
)doc");

  // ---- Division
  m.def(
      "divide",
      [](py::handle a, py::handle b, py::handle out, bool copy) -> py::array {
        if (is_complex(b)) {
          throw py::type_error(
              "divide: the denominator b must be real (float32); for two complex arrays use "
              "divide_parts, which divides part by part (it is not complex division)");
        }
        auto d = input<float>(b, "divide: b", copy);
        if (is_complex(a)) {
          Split n = cpx_in(a, "divide: a", copy);
          check_same(n, d.size(), "divide: a and b");
          Split c(d.size());
          auto rn = n.record(), rc = c.record();
          auto rd = record(d);
          qel_cpx_vec_dot_division_flt(&rn, &rd, &rc);
          return joined(c, out, "divide: out");
        }
        auto n = input<float>(a, "divide: a", copy);
        same_length(n.size(), d.size(), "divide: a and b");
        auto c = output<float>(out, n.size(), "divide: out");
        n = detach(n, c, true);
        d = detach(d, c, true);
        auto rn = record(n), rd = record(d), rc = record(c);
        qel_flt_vec_dot_division(&rn, &rd, &rc);
        return c;
      },
      "a"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Guarded quotient by a real denominator: y[k] = a[k] / b[k] (a float32 or complex64, b float32).

A denominator equal to zero (+0 or -0; not NaN, not a subnormal) is
guarded, in a form that depends on the element's position: elements in the
full groups of four (k < 4 * (n // 4)) divide by eps = 1e-8 (as float32),
the last n % 4 elements are multiplied by 1e8 instead. The two usually
agree but not always: 1.3 / eps = 130000000 while 1.3 * 1e8 = 129999992.
The guarded result has the numerator's sign. A complex a divides both parts
by the same b[k].

>>> y = qel.divide(np.full(5, 1.3, dtype=np.float32), np.zeros(5, dtype=np.float32))
>>> print(y[0], y[4])   # a group of four, then the tail
130000000.0 129999990.0
)doc");

  m.def(
      "ratio",
      [](py::handle a, py::handle b, double alpha, py::handle out, bool copy) {
        auto n = input<float>(a, "ratio: a", copy), d = input<float>(b, "ratio: b", copy);
        same_length(n.size(), d.size(), "ratio: a and b");
        auto c = output<float>(out, n.size(), "ratio: out");
        n = detach(n, c, true);
        d = detach(d, c, true);
        auto rn = record(n), rd = record(d), rc = record(c);
        qel_flt_vec_ratio_flt(&rn, &rd, scalar(alpha), &rc);
        return c;
      },
      "a"_a, "b"_a, "alpha"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Ratio with an offset denominator: y[k] = a[k] / (alpha + b[k]).

The sum alpha + b[k] is formed in float32 and guarded when it equals zero,
exactly as in divide (eps in the groups of four, 1e8 in the last n % 4).

>>> qel.ratio(np.array([1, 1], dtype=np.float32), np.array([-0.5, 0], dtype=np.float32), 0.5)
array([1.e+08, 2.e+00], dtype=float32)
)doc");

  m.def(
      "divide_parts",
      [](py::handle a, py::handle b, py::handle out, bool copy) {
        Split sa = cpx_in(a, "divide_parts: a", copy), sb = cpx_in(b, "divide_parts: b", copy);
        check_same(sa, static_cast<py::ssize_t>(sb.re.size()), "divide_parts: a and b");
        Split c(static_cast<py::ssize_t>(sa.re.size()));
        auto ra = sa.record(), rb = sb.record(), rc = c.record();
        qel_cpx_vec_dot_division(&ra, &rb, &rc);
        return joined(c, out, "divide_parts: out");
      },
      "a"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Part-by-part quotient of complex64 arrays: y.re = a.re / b.re, y.im = a.im / b.im.

NOT complex division (no conjugate, no division by |b|**2). Each part's
denominator is guarded by itself: a zero part divides by eps = 1e-8.

>>> qel.divide_parts(np.array([6 + 8j], dtype=np.complex64), np.array([2 + 0j], dtype=np.complex64))
array([3.+8.e+08j], dtype=complex64)
)doc");

  m.def(
      "divide_eps",
      [](py::handle a, py::handle b, py::handle out, bool update_b, bool copy) {
        auto n = input<float>(a, "divide_eps: a", copy);
        Array<float> d = update_b ? output<float>(b, n.size(), "divide_eps: b (update_b=True)")
                                  : input<float>(b, "divide_eps: b", copy);
        same_length(n.size(), d.size(), "divide_eps: a and b");
        if (!update_b) d = Array<float>(d.size(), d.data());  // the library writes into b
        auto c = output<float>(out, n.size(), "divide_eps: out");
        if (overlap(c, d) && !same_memory(c, d)) {
          throw py::value_error("divide_eps: out overlaps b without being b");
        }
        n = detach(n, c, true);
        qel_fl_division(n.data(), d.mutable_data(), c.mutable_data(),
                        count(n.size(), "divide_eps: a"));
        return c;
      },
      "a"_a, "b"_a, "out"_a = py::none(), "update_b"_a = false, "copy"_a = false,
      R"doc(Quotient with zero denominators replaced by eps = 1e-8 (float32): y[i] = a[i] / b'[i].

b'[i] = eps where b[i] == 0 (+0 or -0), else b[i]; every element divides
(no 1e8 form here). The library writes the replacement into the caller's
denominator array: with update_b=True b is updated in place the same way
(b must then be a writeable float32 array); by default b is left alone.

>>> b = np.array([0, 2], dtype=np.float32)
>>> qel.divide_eps(np.array([1, 4], dtype=np.float32), b, update_b=True)
array([1.e+08, 2.e+00], dtype=float32)
>>> b
array([1.e-08, 2.e+00], dtype=float32)
)doc");

  // ---- Magnitude and power
  m.def(
      "power",
      [](py::handle z, py::handle out, bool copy) {
        return bin_measure("power", qel_cpx_vec_power, z, out, copy);
      },
      "z"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Power of every bin: y[k] = re*re + im*im, in float32 (float32 result).

No rescaling: a part above about 1.8e19 in magnitude gives +inf.

>>> qel.power(np.array([3 + 4j], dtype=np.complex64))
array([25.], dtype=float32)
)doc");

  m.def(
      "magnitude",
      [](py::handle z, py::handle out, bool copy) {
        return bin_measure("magnitude", qel_cpx_vec_abs, z, out, copy);
      },
      "z"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Magnitude of every bin: y[k] = sqrtf(re*re + im*im) (float32 result).

The plain square root of the float32 power (the platform's qel_sqrtf; here
the C library's correctly rounded sqrtf), with no guard against overflow.

>>> qel.magnitude(np.array([3 + 4j, -1j], dtype=np.complex64))
array([5., 1.], dtype=float32)
)doc");

  m.def(
      "power_sum",
      [](py::handle z, int start, py::handle num, bool copy) {
        Split a = cpx_in(z, "power_sum: z", copy);
        auto ra = a.record();
        const auto len = static_cast<py::ssize_t>(a.re.size());
        if (start == 0 && num.is_none()) return float32_scalar(qel_cpx_vec_power_sum(&ra));
        const int n = num.is_none() ? static_cast<int>(len) - start : num.cast<int>();
        if (start < 0 || n < 0 || static_cast<py::ssize_t>(start) + n > len) {
          throw py::index_error("power_sum: the range start=" + std::to_string(start) +
                                ", num=" + std::to_string(n) + " must lie within z (" +
                                std::to_string(len) + " elements)");
        }
        return float32_scalar(qel_cpx_vec_power_sum_part(&ra, start, n));
      },
      "z"_a, "start"_a = 0, "num"_a = py::none(), "copy"_a = false,
      R"doc(Total power of z[start : start+num] (all of z by default) as numpy.float32.

One running sum s = 0; each full group of four powers p = re*re + im*im
(counted from start) is summed left to right, ((p0+p1)+p2)+p3, and added to
s; the last num % 4 powers are then added one by one.

>>> z = np.zeros(8, dtype=np.complex64); z[0] = 4096; z[4:] = 1
>>> print(qel.power_sum(z))   # 4096**2 + (1+1+1+1): the group of ones meets first
16777220.0
)doc");

  m.def(
      "inner_product",
      [](py::handle a, py::handle b, bool copy) {
        Split sa = cpx_in(a, "inner_product: a", copy), sb = cpx_in(b, "inner_product: b", copy);
        check_same(sa, static_cast<py::ssize_t>(sb.re.size()), "inner_product: a and b");
        auto ra = sa.record(), rb = sb.record();
        float re = 0.0f, im = 0.0f;
        qel_cpx_vec_inner_product(&ra, &rb, &re, &im);
        return complex64_scalar(re, im);
      },
      "a"_a, "b"_a, "copy"_a = false,
      R"doc(Sum of element-wise products, NO conjugate: sum_k a[k] * b[k], as numpy.complex64.

Two running float32 sums starting at +0; for each k in order the product's
real part (ar*br - ai*bi) is formed in full and added, then its imaginary
part (ai*br + ar*bi). An empty input gives 0j.

>>> print(qel.inner_product(np.array([1 + 2j, 1 - 1j], dtype=np.complex64),
...                         np.array([3 + 4j, 2], dtype=np.complex64)))
(-3+8j)
)doc");

  m.def(
      "power_law",
      [](py::handle x, py::handle exponents, double alpha, py::handle out, bool copy) {
        auto a = input<float>(x, "power_law: x", copy);
        auto e = input<float>(exponents, "power_law: exponents", copy);
        same_length(a.size(), e.size(), "power_law: x and exponents");
        auto y = output<float>(out, a.size(), "power_law: out");
        e = detach(e, y, same_memory(a, y));  // exponents may be x itself
        load(y, a);
        auto ry = record(y), re = record(e);
        qel_flt_vec_powf(&ry, &re, scalar(alpha));
        return y;
      },
      "x"_a, "exponents"_a, "alpha"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Per-element power law: y[j] = powf(x[j], alpha * exponents[j]), a NaN result stored as +0.

The exponent is one float32 product; the power is the platform's qel_powf
(here the C library's powf). Only NaN results are replaced (a negative base
with a non-integer exponent gives 0); infinities pass.

>>> qel.power_law(np.array([4, -8], dtype=np.float32), np.array([1, 1], dtype=np.float32), 0.5)
array([2., 0.], dtype=float32)
)doc");
}

}  // namespace qelpy
