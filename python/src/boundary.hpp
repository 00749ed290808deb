// SPDX-License-Identifier: MIT
// The boundary between NumPy and the library: argument checks, complex split
// and join, output allocation. Nothing here does arithmetic on samples: values
// are only checked, copied or moved between arrays, bit for bit.
#pragma once

#include <pybind11/complex.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <complex>
#include <string>
#include <vector>

#include "vector.h"

namespace qelpy {

namespace py = pybind11;

using cfloat = std::complex<float>;
template <typename T>
using Array = py::array_t<T, py::array::c_style>;

// Name of T for messages: "float32", "complex64", "int16", "int32".
template <typename T>
const char* dtype_name();

// A 1-D, C-contiguous array of exactly T, or an exception that says what was
// wrong. With copy=True anything NumPy converts to T without losing its kind
// (float64 to float32, lists, strided views) is converted into a fresh array;
// without it nothing is converted. `what` names the argument in messages,
// e.g. "Fir.process: x".
template <typename T>
Array<T> input(py::handle obj, const std::string& what, bool copy);

// The output: a new array of n elements when `out` is None, else `out` itself,
// which must be a writeable 1-D contiguous array of exactly T and n elements.
template <typename T>
Array<T> output(py::handle out, py::ssize_t n, const std::string& what);

// True when obj is a NumPy array whose dtype is exactly T.
template <typename T>
bool is_array_of(py::handle obj) {
  return py::isinstance<py::array>(obj) && py::isinstance<py::array_t<T>>(obj);
}
// True when obj holds complex values (a complex array, or a list NumPy would
// make complex): the functions that take real or complex vectors pick their
// complex form by this.
bool is_complex(py::handle obj);

// Length of an array as the library's int count; too long raises.
int count(py::ssize_t n, const std::string& what);

// Raises ValueError unless both arrays have the same length.
void same_length(py::ssize_t a, py::ssize_t b, const std::string& what);

// True when the two arrays share any byte of memory.
bool overlap(const py::array& a, const py::array& b);
// True when the two arrays are the very same memory (same start, same size).
bool same_memory(const py::array& a, const py::array& b);

// `in` unchanged, or a private copy of it when it overlaps `out` without being
// exactly the array the library may take as input and output at once
// (`in_place_ok`). Inputs are thus always read as they were before the call.
template <typename T>
Array<T> detach(const Array<T>& in, const py::array& out, bool in_place_ok);

// For library functions that update their first argument in place: copies
// `a` into the output `y` (nothing when y is a). Detach the other inputs from
// y first, since this overwrites y.
void load(Array<float>& y, const Array<float>& a);

// A complex result joined into `out` (or a new complex64 array).
struct Split;
Array<cfloat> joined(const Split& s, py::handle out, const std::string& what);

// True for a Python or NumPy scalar, as opposed to an array or a sequence.
bool is_scalar(py::handle obj);

// A NumPy float32 / complex64 scalar holding exactly the library's result.
py::object float32_scalar(float v);
py::object complex64_scalar(float re, float im);

// A real array handed to the library as a caller-built record.
template <typename T>
qel_flt_vec record(Array<T>& a) {
  return qel_flt_vec{static_cast<int>(a.size()), a.mutable_data()};
}

// A complex array in the library's split storage: two private float arrays.
struct Split {
  std::vector<float> re, im;
  explicit Split(py::ssize_t n) : re(static_cast<size_t>(n)), im(static_cast<size_t>(n)) {}
  explicit Split(const Array<cfloat>& z);
  qel_cpx_vec record() { return qel_cpx_vec{static_cast<int>(re.size()), re.data(), im.data()}; }
  // Interleaves the parts back into `z`, which holds as many elements.
  void join_into(Array<cfloat>& z) const;
};

// Shorthand for docstrings and keyword arguments.
using namespace pybind11::literals;

}  // namespace qelpy
