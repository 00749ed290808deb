// SPDX-License-Identifier: MIT
// Containers: fill, whole and range copies, and resizing through the library's
// own allocation (clone, resize, free). Views are NumPy slices.
#include <climits>

#include "families.hpp"

namespace qelpy {
namespace {

void fill(py::handle out, py::handle value) {
  if (is_array_of<cfloat>(out)) {
    auto z = output<cfloat>(out, py::len(out), "fill: out");
    const auto v = value.cast<std::complex<double>>();
    Split s(z.size());
    auto rec = s.record();
    qel_cpx_vec_set(&rec, static_cast<float>(v.real()), static_cast<float>(v.imag()));
    s.join_into(z);
  } else if (is_array_of<int16_t>(out)) {
    auto a = output<int16_t>(out, py::len(out), "fill: out");
    const long v = value.cast<long>();
    if (v < INT16_MIN || v > INT16_MAX) {
      throw py::value_error("fill: value " + std::to_string(v) + " does not fit in int16");
    }
    qel_short_vec_set(a.mutable_data(), static_cast<int16_t>(v), count(a.size(), "fill: out"));
  } else if (is_array_of<float>(out)) {
    auto a = output<float>(out, py::len(out), "fill: out");
    auto rec = record(a);
    qel_flt_vec_set(&rec, static_cast<float>(value.cast<double>()));
  } else {
    throw py::type_error("fill: out must be a float32, complex64 or int16 array");
  }
}

template <typename T>
void check_range(const Array<T>& src, const Array<T>& dst, int start, int end) {
  if (end <= start) return;  // the library copies nothing
  if (start < 0 || end >= src.size() || end >= dst.size()) {
    throw py::index_error("copy_range: start..end = " + std::to_string(start) + ".." +
                          std::to_string(end) + " must lie within src (" +
                          std::to_string(src.size()) + " elements) and out (" +
                          std::to_string(dst.size()) + " elements)");
  }
}

}  // namespace

void bind_containers(py::module_& m) {
  m.def(
      "fill",
      [](py::handle out, py::handle value) {
        fill(out, value);
        return out;
      },
      "out"_a, "value"_a,
      R"doc(Set every element of out to value, in place; returns out.

    out[k] = value   for k in 0..len(out)-1

float32 arrays take a real value, complex64 arrays a complex one (re and im
each rounded to float32), int16 arrays an integer in -32768..32767.

>>> qel.fill(np.zeros(3, dtype=np.complex64), 1 - 2j)
array([1.-2.j, 1.-2.j, 1.-2.j], dtype=complex64)
)doc");

  m.def(
      "copy",
      [](py::handle src, py::handle out, bool copy) -> py::array {
        if (is_complex(src)) {
          auto a = input<cfloat>(src, "copy: src", copy);
          auto b = output<cfloat>(out, a.size(), "copy: out");
          Split sa(a), sb(b.size());
          auto ra = sa.record(), rb = sb.record();
          qel_cpx_vec_copy(&ra, &rb);
          sb.join_into(b);
          return b;
        }
        auto a = input<float>(src, "copy: src", copy);
        auto b = output<float>(out, a.size(), "copy: out");
        auto ra = record(a), rb = record(b);
        qel_flt_vec_copy(&ra, &rb);
        return b;
      },
      "src"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Copy a float32 or complex64 vector: out[k] = src[k], bit for bit.

out, when given, must have src's length. Copying an array onto itself does
nothing (the library skips it by a pointer comparison).

>>> qel.copy(np.array([1.5, -0.0], dtype=np.float32))
array([ 1.5, -0. ], dtype=float32)
)doc");

  m.def(
      "copy_range",
      [](py::handle src, int start, int end, py::handle out, bool copy) -> py::handle {
        if (is_complex(src)) {
          auto a = input<cfloat>(src, "copy_range: src", copy);
          auto b = output<cfloat>(out, py::len(out), "copy_range: out");
          check_range(a, b, start, end);
          Split sa(a), sb(b);
          auto ra = sa.record(), rb = sb.record();
          qel_cpx_vec_copy_subvec(&ra, start, end, &rb);
          sb.join_into(b);
          return out;
        }
        auto a = input<float>(src, "copy_range: src", copy);
        auto b = output<float>(out, py::len(out), "copy_range: out");
        check_range(a, b, start, end);
        auto ra = record(a), rb = record(b);
        qel_flt_vec_copy_subvec(&ra, start, end, &rb);
        return out;
      },
      "src"_a, "start"_a, "end"_a, "out"_a, "copy"_a = false,
      R"doc(Copy src[start..end] (both ends INCLUSIVE) into the same positions of out; returns out.

    out[k] = src[k]   for k = start, start+1, ..., end

Like the library, nothing at all is copied when end <= start, so a range
of a single element (end == start) copies nothing; end = start + 1 copies two.
Otherwise start and end must be indices of both arrays (IndexError if not).
src and out may differ in length; elements outside the range are untouched.

>>> out = np.zeros(5, dtype=np.float32)
>>> qel.copy_range(np.arange(5, dtype=np.float32), 1, 3, out)
array([0., 1., 2., 3., 0.], dtype=float32)
)doc");

  m.def(
      "resize",
      [](py::handle x, int n, bool copy) -> py::array {
        if (n < 0) throw py::value_error("resize: n must be >= 0, got " + std::to_string(n));
        if (is_complex(x)) {
          auto a = input<cfloat>(x, "resize: x", copy);
          Split sa(a);
          auto ra = sa.record();
          qel_cpx_vec* v = qel_cpx_vec_resize(qel_cpx_vec_clone(&ra), n);
          Split sy(n);
          std::copy(v->re, v->re + n, sy.re.begin());
          std::copy(v->im, v->im + n, sy.im.begin());
          qel_cpx_vec_free(v);
          Array<cfloat> y(n);
          sy.join_into(y);
          return y;
        }
        auto a = input<float>(x, "resize: x", copy);
        auto ra = record(a);
        qel_flt_vec* v = qel_flt_vec_resize(qel_flt_vec_clone(&ra), n);
        Array<float> y(n, v->data);
        qel_flt_vec_free(v);
        return y;
      },
      "x"_a, "n"_a, "copy"_a = false,
      R"doc(A new vector of n elements: x's leading elements, then zeros.

    y[k] = x[k] for k < min(n, len(x)), 0.0 after

Runs the library's lifecycle: clone x into a vector of its own allocator,
resize it (a new zeroed vector, one block copy, release of the old one), copy
the result out and free it. Works for float32 and complex64.

>>> qel.resize(np.array([1, 2], dtype=np.float32), 4)
array([1., 2., 0., 0.], dtype=float32)
>>> qel.resize(np.array([1, 2, 3], dtype=np.complex64), 1)
array([1.+0.j], dtype=complex64)
)doc");
}

}  // namespace qelpy
