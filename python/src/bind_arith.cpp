// SPDX-License-Identifier: MIT
// Element-wise arithmetic: scaling and affine updates, sums and differences
// with floors and a ceiling, minimum, maximum and clipping.
#include "families.hpp"

namespace qelpy {
namespace {

float scalar(double v) { return static_cast<float>(v); }

// Real inputs a and b of one length; `what` is the function's name.
struct RealPair {
  Array<float> a, b;
  RealPair(py::handle x, py::handle y, const std::string& what, bool copy, const char* na = "a",
           const char* nb = "b")
      : a(input<float>(x, what + ": " + na, copy)), b(input<float>(y, what + ": " + nb, copy)) {
    same_length(a.size(), b.size(), what + ": " + na + " and " + nb);
  }
};

struct CpxPair {
  Split a, b;
  CpxPair(py::handle x, py::handle y, const std::string& what, bool copy)
      : a(input<cfloat>(x, what + ": a", copy)), b(input<cfloat>(y, what + ": b", copy)) {
    same_length(static_cast<py::ssize_t>(a.re.size()), static_cast<py::ssize_t>(b.re.size()),
                what + ": a and b");
  }
};

// C = op(A, B) for the real and complex forms of a two-operand function whose
// output may be either input.
template <typename RealFn, typename CpxFn>
py::array binary(const std::string& what, py::handle a, py::handle b, py::handle out, bool copy,
                 RealFn real, CpxFn cpx) {
  if (is_complex(a) || is_complex(b)) {
    CpxPair p(a, b, what, copy);
    Split c(static_cast<py::ssize_t>(p.a.re.size()));
    auto ra = p.a.record(), rb = p.b.record(), rc = c.record();
    cpx(&ra, &rb, &rc);
    return joined(c, out, what + ": out");
  }
  RealPair p(a, b, what, copy);
  auto y = output<float>(out, p.a.size(), what + ": out");
  p.a = detach(p.a, y, true);
  p.b = detach(p.b, y, true);
  auto ra = record(p.a), rb = record(p.b), rc = record(y);
  real(&ra, &rb, &rc);
  return y;
}

}  // namespace

void bind_arith(py::module_& m) {
  // ---- Scaling and affine updates
  m.def(
      "scale",
      [](py::handle x, double gain, py::handle out, bool copy) -> py::array {
        if (is_complex(x)) {
          Split a(input<cfloat>(x, "scale: x", copy));
          Split b(static_cast<py::ssize_t>(a.re.size()));
          auto ra = a.record(), rb = b.record();
          qel_cpx_vec_scale2(&ra, scalar(gain), &rb);
          return joined(b, out, "scale: out");
        }
        auto a = input<float>(x, "scale: x", copy);
        auto y = output<float>(out, a.size(), "scale: out");
        a = detach(a, y, true);
        qel_fl_mul_scale(y.mutable_data(), a.data(), scalar(gain), count(a.size(), "scale: x"));
        return y;
      },
      "x"_a, "gain"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Scale by a scalar: y[i] = x[i] * gain (complex: each part times gain).

Real (float32) or complex (complex64) x; one float32 product per value.

>>> qel.scale(np.array([1, -2], dtype=np.float32), 0.5)
array([ 0.5, -1. ], dtype=float32)
>>> qel.scale(np.array([1 + 2j], dtype=np.complex64), -1)
array([-1.-2.j], dtype=complex64)
)doc");

  m.def(
      "gain_ramp",
      [](py::handle x, double gain, double step, py::handle out, bool copy) {
        auto a = input<float>(x, "gain_ramp: x", copy);
        auto y = output<float>(out, a.size(), "gain_ramp: out");
        a = detach(a, y, true);
        qel_fl_mul_step(y.mutable_data(), a.data(), scalar(gain), scalar(step),
                        count(a.size(), "gain_ramp: x"));
        return y;
      },
      "x"_a, "gain"_a, "step"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Scale by a linear gain ramp: y[i] = x[i] * g_i, g_0 = gain, g_{i+1} = g_i + step.

The gain advances by repeated float32 addition, so g_i is the i-fold
running sum, not gain + i*step computed afresh (with gain 0 and step 0.1,
g_10 is 1.00000012, one unit in the last place above 1).

>>> qel.gain_ramp(np.ones(4, dtype=np.float32), 1.0, -0.25)
array([1.  , 0.75, 0.5 , 0.25], dtype=float32)
)doc");

  m.def(
      "add_scaled",
      [](py::handle a, py::handle b, double scale, py::handle out, bool copy) -> py::array {
        if (is_complex(a) || is_complex(b)) {
          CpxPair p(a, b, "add_scaled", copy);
          auto ra = p.a.record(), rb = p.b.record();
          qel_cpx_vec_pairwise_bias(&ra, &rb, scalar(scale));
          return joined(p.a, out, "add_scaled: out");
        }
        RealPair p(a, b, "add_scaled", copy);
        auto y = output<float>(out, p.a.size(), "add_scaled: out");
        p.b = detach(p.b, y, same_memory(p.a, y));  // b may be a, then a + a*scale
        load(y, p.a);
        auto ry = record(y), rb = record(p.b);
        qel_flt_vec_pairwise_bias(&ry, &rb, scalar(scale));
        return y;
      },
      "a"_a, "b"_a, "scale"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Scaled accumulation: y[i] = a[i] + b[i] * scale (complex: per part, same scale).

The product is rounded to float32, then the sum.

>>> qel.add_scaled(np.array([1, 1], dtype=np.float32), np.array([2, 4], dtype=np.float32), 0.5)
array([2., 3.], dtype=float32)
)doc");

  m.def(
      "scale_add",
      [](py::handle a, double scale, py::handle b, py::handle out, bool copy) -> py::array {
        if (is_complex(a) || is_complex(b)) {
          CpxPair p(a, b, "scale_add", copy);
          auto ra = p.a.record(), rb = p.b.record();
          qel_cpx_vec_scale_add(&ra, scalar(scale), &rb);
          return joined(p.a, out, "scale_add: out");
        }
        RealPair p(a, b, "scale_add", copy);
        auto y = output<float>(out, p.a.size(), "scale_add: out");
        // The library stores a*scale before it reads b: a b that is the
        // output would be read changed, so it is copied first.
        p.b = detach(p.b, y, false);
        load(y, p.a);
        auto ry = record(y), rb = record(p.b);
        qel_flt_vec_scale_add(&ry, scalar(scale), &rb);
        return y;
      },
      "a"_a, "scale"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Scale and add: y[i] = a[i] * scale + b[i] (complex: per part).

The product is rounded to float32, then the sum. Inputs are read as they
were, also when out is b.

>>> qel.scale_add(np.array([1, 2], dtype=np.float32), 3, np.array([1, 1], dtype=np.float32))
array([4., 7.], dtype=float32)
)doc");

  // ---- Sums and differences with floors
  m.def(
      "add",
      [](py::handle a, py::handle b, py::handle out, bool copy) -> py::array {
        if (is_scalar(b)) {
          auto x = input<float>(a, "add: a", copy);
          auto y = output<float>(out, x.size(), "add: out");
          load(y, x);
          auto ry = record(y);
          qel_flt_vec_add_flt(&ry, scalar(b.cast<double>()));
          return y;
        }
        return binary(
            "add", a, b, out, copy,
            [](qel_flt_vec* A, qel_flt_vec* B, qel_flt_vec* C) {
              qel_fl_add(A->data, B->data, C->data, A->dim);
            },
            [](qel_cpx_vec* A, qel_cpx_vec* B, qel_cpx_vec* C) { qel_cpx_vec_add(A, B, C); });
      },
      "a"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Sum: y[i] = a[i] + b[i] for two float32 or two complex64 arrays; y[i] = a[i] + b for a scalar b (float32 a).

>>> qel.add(np.array([1, 2], dtype=np.float32), np.array([0.5, 0.5], dtype=np.float32))
array([1.5, 2.5], dtype=float32)
>>> qel.add(np.array([1, 2], dtype=np.float32), 1)
array([2., 3.], dtype=float32)
)doc");

  m.def(
      "subtract",
      [](py::handle a, py::handle b, py::handle out, bool copy) {
        return binary(
            "subtract", a, b, out, copy,
            [](qel_flt_vec* A, qel_flt_vec* B, qel_flt_vec* C) { qel_flt_vec_subtract(A, B, C); },
            [](qel_cpx_vec* A, qel_cpx_vec* B, qel_cpx_vec* C) { qel_cpx_vec_subtract(A, B, C); });
      },
      "a"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Difference: y[i] = a[i] - b[i] for two float32 or two complex64 arrays.

>>> qel.subtract(np.array([1 + 1j], dtype=np.complex64), np.array([1j], dtype=np.complex64))
array([1.+0.j], dtype=complex64)
)doc");

  m.def(
      "add_floor",
      [](py::handle a, py::handle b, double floor, py::handle out, bool copy) {
        RealPair p(a, b, "add_floor", copy);
        auto y = output<float>(out, p.a.size(), "add_floor: out");
        p.a = detach(p.a, y, true);
        p.b = detach(p.b, y, true);
        qel_fl_add_max(p.a.data(), p.b.data(), y.mutable_data(), scalar(floor),
                       count(p.a.size(), "add_floor: a"));
        return y;
      },
      "a"_a, "b"_a, "floor"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Floored sum: s = a[i] + b[i]; y[i] = floor if floor > s else s.

The comparison is strict: a sum equal to the floor is kept (so -0 stays -0
under a floor of +0), a NaN sum is kept, and a NaN floor keeps every sum.

>>> qel.add_floor(np.array([1, -3], dtype=np.float32), np.array([1, 1], dtype=np.float32), 0)
array([2., 0.], dtype=float32)
)doc");

  m.def(
      "floor",
      [](py::handle x, double c, py::handle out, bool copy) {
        auto a = input<float>(x, "floor: x", copy);
        auto y = output<float>(out, a.size(), "floor: out");
        a = detach(a, y, false);
        qel_fl_max(a.data(), y.mutable_data(), scalar(c), count(a.size(), "floor: x"));
        return y;
      },
      "x"_a, "c"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Floor: y[i] = c if c > x[i] else x[i].

Strict: an element equal to c is copied, a NaN element is kept, and a NaN c
keeps every element. Compare max_scalar, where the threshold wins ties and NaNs.

>>> qel.floor(np.array([-1, 0.5, np.nan], dtype=np.float32), 0)
array([0. , 0.5, nan], dtype=float32)
)doc");

  m.def(
      "subtract_floor",
      [](py::handle x, double b, double floor, py::handle out, bool copy) {
        auto a = input<float>(x, "subtract_floor: x", copy);
        auto y = output<float>(out, a.size(), "subtract_floor: out");
        a = detach(a, y, false);
        auto ra = record(a), ry = record(y);
        qel_flt_vec_subtract_max(&ra, scalar(b), &ry, scalar(floor));
        return y;
      },
      "x"_a, "b"_a, "floor"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Floored difference with a scalar: d = x[i] - b; y[i] = floor if floor > d else d.

Same floor rule as add_floor (ties and NaNs keep the difference).

>>> qel.subtract_floor(np.array([3, 1], dtype=np.float32), 2, 0)
array([1., 0.], dtype=float32)
)doc");

  m.def(
      "rsub_ceiling",
      [](double alpha, py::handle x, py::handle ceiling, py::handle out, bool copy) {
        RealPair p(x, ceiling, "rsub_ceiling", copy, "x", "ceiling");
        auto y = output<float>(out, p.a.size(), "rsub_ceiling: out");
        p.a = detach(p.a, y, true);
        // The library stores alpha - x before it reads the ceiling: a ceiling
        // that is the output would be read changed, so it is copied first.
        p.b = detach(p.b, y, false);
        auto ra = record(p.a), rb = record(p.b), ry = record(y);
        qel_flt_vec_subtract_min(&ra, &rb, scalar(alpha), &ry);
        return y;
      },
      "alpha"_a, "x"_a, "ceiling"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Reversed difference under a ceiling: d = alpha - x[i]; y[i] = ceiling[i] if d > ceiling[i] else d.

The scalar is the minuend. Strict: on equality the difference stays, a NaN
difference stays, and a NaN ceiling leaves the difference.

>>> qel.rsub_ceiling(1, np.array([0, 0.75], dtype=np.float32), np.array([0.5, 0.5], dtype=np.float32))
array([0.5 , 0.25], dtype=float32)
)doc");

  // ---- Minimum, maximum and clipping
  m.def(
      "minimum",
      [](py::handle a, py::handle b, py::handle out, bool copy) {
        return binary(
            "minimum", a, b, out, copy,
            [](qel_flt_vec* A, qel_flt_vec* B, qel_flt_vec* C) { qel_flt_vec_min(A, B, C); },
            [](qel_cpx_vec* A, qel_cpx_vec* B, qel_cpx_vec* C) { qel_cpx_vec_min(A, B, C); });
      },
      "a"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Element-wise minimum: y[i] = a[i] if a[i] < b[i] else b[i].

b wins ties and NaNs (a NaN in a gives b[i]; a NaN in b gives the NaN).
Complex arrays are ranked by power re*re + im*im (float32, no square root)
and copied whole: y[i] = a[i] if power(a[i]) < power(b[i]) else b[i], so b
wins equal powers of different phase.

>>> qel.minimum(np.array([1, np.nan, 2], dtype=np.float32), np.array([2, 1, np.nan], dtype=np.float32))
array([ 1.,  1., nan], dtype=float32)
>>> qel.minimum(np.array([3 + 4j], dtype=np.complex64), np.array([5], dtype=np.complex64))
array([5.+0.j], dtype=complex64)
)doc");

  m.def(
      "maximum",
      [](py::handle a, py::handle b, py::handle out, bool copy) {
        return binary(
            "maximum", a, b, out, copy,
            [](qel_flt_vec* A, qel_flt_vec* B, qel_flt_vec* C) { qel_flt_vec_max(A, B, C); },
            [](qel_cpx_vec* A, qel_cpx_vec* B, qel_cpx_vec* C) { qel_cpx_vec_max(A, B, C); });
      },
      "a"_a, "b"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Element-wise maximum: y[i] = a[i] if a[i] > b[i] else b[i].

b wins ties and NaNs. Complex arrays are ranked by power re*re + im*im and
copied whole, b winning equal powers.

>>> qel.maximum(np.array([1j], dtype=np.complex64), np.array([1], dtype=np.complex64))
array([1.+0.j], dtype=complex64)
)doc");

  m.def(
      "max_scalar",
      [](py::handle x, double threshold, py::handle out, bool copy) {
        auto a = input<float>(x, "max_scalar: x", copy);
        auto y = output<float>(out, a.size(), "max_scalar: out");
        a = detach(a, y, true);
        auto ra = record(a), ry = record(y);
        qel_flt_vec_max_value(&ra, scalar(threshold), &ry);
        return y;
      },
      "x"_a, "threshold"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Maximum with a scalar: y[i] = x[i] if x[i] > threshold else threshold.

The threshold wins ties and NaNs: -0 under a threshold of +0 gives +0, a
NaN element gives the threshold, a NaN threshold gives NaN everywhere.
Compare floor, where the element wins.

>>> qel.max_scalar(np.array([-1, -0.0, 2, np.nan], dtype=np.float32), 0)
array([0., 0., 2., 0.], dtype=float32)
)doc");

  m.def(
      "magnitude_floor",
      [](py::handle z, double max_abs_value, py::handle out, bool copy) {
        Split a(input<cfloat>(z, "magnitude_floor: z", copy));
        auto ra = a.record();
        qel_cpx_vec_max_value(&ra, scalar(max_abs_value));
        return joined(a, out, "magnitude_floor: out");
      },
      "z"_a, "max_abs_value"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Magnitude floor on complex64: where re*re + im*im < max_abs_value**2, z[i] becomes max_abs_value + 0j.

Both sides are float32 powers (the bound squared once), no square root.
The phase is lost: the floored element is max_abs_value itself, with its
sign. Elements whose power equals the bound, elements with a NaN part, and
every element when max_abs_value is NaN are left unchanged.

>>> qel.magnitude_floor(np.array([0.5 + 0.5j, 1, 1 + 1j], dtype=np.complex64), 1)
array([1.+0.j, 1.+0.j, 1.+1.j], dtype=complex64)
)doc");

  m.def(
      "compress",
      [](py::handle x, py::handle slopes, double threshold, py::handle out, bool copy) {
        RealPair p(x, slopes, "compress", copy, "x", "slopes");
        auto y = output<float>(out, p.a.size(), "compress: out");
        p.b = detach(p.b, y, false);
        load(y, p.a);
        auto ry = record(y), rb = record(p.b);
        qel_flt_vec_smooth(&ry, &rb, scalar(threshold));
        return y;
      },
      "x"_a, "slopes"_a, "threshold"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Threshold compression: y[i] = threshold + (x[i] - threshold) * slopes[i] where x[i] > threshold, else x[i].

Strict: an element equal to the threshold, or a NaN on either side, is left
unchanged. A slope of 0 clamps to the threshold, 0..1 compresses the excess,
above 1 expands it.

>>> qel.compress(np.array([3, 1, 3], dtype=np.float32), np.array([0.5, 0.5, 0], dtype=np.float32), 1)
array([2., 1., 1.], dtype=float32)
)doc");
}

}  // namespace qelpy
