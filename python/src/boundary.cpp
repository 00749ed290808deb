// SPDX-License-Identifier: MIT
// Argument checks and the complex split/join at the NumPy boundary.
#include "boundary.hpp"

#include <climits>
#include <cstdint>
#include <cstring>

namespace qelpy {

template <>
const char* dtype_name<float>() {
  return "float32";
}
template <>
const char* dtype_name<cfloat>() {
  return "complex64";
}
template <>
const char* dtype_name<int16_t>() {
  return "int16";
}
template <>
const char* dtype_name<int32_t>() {
  return "int32";
}

namespace {

std::string type_of(py::handle obj) {
  if (py::isinstance<py::array>(obj)) {
    return "a " + py::str(obj.attr("dtype")).cast<std::string>() + " array";
  }
  return "a " + py::str(py::type::handle_of(obj).attr("__name__")).cast<std::string>();
}

template <typename T>
Array<T> checked_shape(py::array a, const std::string& what, bool copy_hint) {
  const std::string hint = copy_hint ? " (pass copy=True to make a contiguous 1-D copy)" : "";
  if (a.ndim() != 1) {
    throw py::value_error(what + " must be a 1-D array, got " + std::to_string(a.ndim()) +
                          " dimensions (pass one row, or x.ravel())");
  }
  if (!(a.flags() & py::array::c_style)) {
    throw py::value_error(what + " must be contiguous, got a strided view" + hint);
  }
  (void)count(a.shape(0), what);
  return py::reinterpret_borrow<Array<T>>(a);
}

}  // namespace

bool is_complex(py::handle obj) {
  return py::module_::import("numpy").attr("iscomplexobj")(obj).cast<bool>();
}

int count(py::ssize_t n, const std::string& what) {
  if (n > INT_MAX) {
    throw py::value_error(what + " has " + std::to_string(n) +
                          " elements; the library counts in int, at most " +
                          std::to_string(INT_MAX));
  }
  return static_cast<int>(n);
}

template <typename T>
Array<T> input(py::handle obj, const std::string& what, bool copy) {
  if (copy) {
    // NumPy converts within a kind (float64 -> float32, int64 -> int16 ...)
    // but never across kinds (complex -> float, float -> int) by itself.
    py::module_ np = py::module_::import("numpy");
    py::object a = np.attr("asarray")(obj);
    try {
      a = a.attr("astype")(py::dtype::of<T>(), "casting"_a = "same_kind", "copy"_a = false);
    } catch (py::error_already_set& e) {
      if (!e.matches(PyExc_TypeError)) throw;
      throw py::type_error(what + " must be " + dtype_name<T>() + ", got " + type_of(obj) +
                           ", which copy=True does not convert (" + e.what() + ")");
    }
    if (py::cast<py::array>(a).ndim() != 1) {
      return checked_shape<T>(py::cast<py::array>(a), what, false);
    }
    return checked_shape<T>(np.attr("ascontiguousarray")(a), what, false);
  }
  if (!py::isinstance<py::array>(obj)) {
    throw py::type_error(what + " must be a NumPy array of " + dtype_name<T>() + ", got " +
                         type_of(obj) + " (pass copy=True to convert)");
  }
  if (!py::isinstance<py::array_t<T>>(obj)) {
    throw py::type_error(what + " must be " + dtype_name<T>() + ", got " + type_of(obj) +
                         " (pass copy=True to convert; nothing is converted silently)");
  }
  return checked_shape<T>(py::reinterpret_borrow<py::array>(obj), what, true);
}

template <typename T>
Array<T> output(py::handle out, py::ssize_t n, const std::string& what) {
  if (out.is_none()) return Array<T>(n);
  if (!py::isinstance<py::array>(out) || !py::isinstance<py::array_t<T>>(out)) {
    throw py::type_error(what + " must be a " + dtype_name<T>() + " array, got " + type_of(out) +
                         " (outputs are never converted)");
  }
  auto a = py::reinterpret_borrow<py::array>(out);
  if (a.ndim() != 1 || !(a.flags() & py::array::c_style)) {
    throw py::value_error(what + " must be a contiguous 1-D array");
  }
  if (!a.writeable()) throw py::value_error(what + " is read-only");
  if (a.shape(0) != n) {
    throw py::value_error(what + " must have " + std::to_string(n) + " elements, got " +
                          std::to_string(a.shape(0)));
  }
  return py::reinterpret_borrow<Array<T>>(a);
}

void same_length(py::ssize_t a, py::ssize_t b, const std::string& what) {
  if (a != b) {
    throw py::value_error(what + " must have the same length, got " + std::to_string(a) + " and " +
                          std::to_string(b));
  }
}

bool overlap(const py::array& a, const py::array& b) {
  const auto pa = reinterpret_cast<uintptr_t>(a.data());
  const auto pb = reinterpret_cast<uintptr_t>(b.data());
  const auto na = static_cast<uintptr_t>(a.nbytes());
  const auto nb = static_cast<uintptr_t>(b.nbytes());
  return na != 0 && nb != 0 && pa < pb + nb && pb < pa + na;
}

bool same_memory(const py::array& a, const py::array& b) {
  return a.data() == b.data() && a.nbytes() == b.nbytes();
}

template <typename T>
Array<T> detach(const Array<T>& in, const py::array& out, bool in_place_ok) {
  if (!overlap(in, out) || (in_place_ok && same_memory(in, out))) return in;
  return Array<T>(in.size(), in.data());  // no base object: pybind11 copies
}

void load(Array<float>& y, const Array<float>& a) {
  if (same_memory(a, y)) return;
  const auto src = detach(a, y, false);
  std::memcpy(y.mutable_data(), src.data(), static_cast<size_t>(src.nbytes()));
}

Array<cfloat> joined(const Split& s, py::handle out, const std::string& what) {
  auto y = output<cfloat>(out, static_cast<py::ssize_t>(s.re.size()), what);
  s.join_into(y);
  return y;
}

bool is_scalar(py::handle obj) {
  if (py::isinstance<py::array>(obj)) return py::reinterpret_borrow<py::array>(obj).ndim() == 0;
  return !py::isinstance<py::sequence>(obj) && PyNumber_Check(obj.ptr());
}

py::object float32_scalar(float v) {
  Array<float> a(1, &v);
  return a[py::int_(0)];
}

py::object complex64_scalar(float re, float im) {
  Split s(1);
  s.re[0] = re;
  s.im[0] = im;
  Array<cfloat> a(1);
  s.join_into(a);
  return a[py::int_(0)];
}

Split::Split(const Array<cfloat>& z) : Split(z.size()) {
  // std::complex<float> is laid out as float[2]: re, im.
  const auto* p = reinterpret_cast<const float*>(z.data());
  for (size_t k = 0; k < re.size(); ++k) {
    std::memcpy(&re[k], p + 2 * k, sizeof(float));
    std::memcpy(&im[k], p + 2 * k + 1, sizeof(float));
  }
}

void Split::join_into(Array<cfloat>& z) const {
  auto* p = reinterpret_cast<float*>(z.mutable_data());
  for (size_t k = 0; k < re.size(); ++k) {
    std::memcpy(p + 2 * k, &re[k], sizeof(float));
    std::memcpy(p + 2 * k + 1, &im[k], sizeof(float));
  }
}

#define QELPY_INSTANTIATE(T)                                                \
  template Array<T> input<T>(py::handle, const std::string&, bool);         \
  template Array<T> output<T>(py::handle, py::ssize_t, const std::string&); \
  template Array<T> detach<T>(const Array<T>&, const py::array&, bool);
QELPY_INSTANTIATE(float)
QELPY_INSTANTIATE(cfloat)
QELPY_INSTANTIATE(int16_t)
QELPY_INSTANTIATE(int32_t)
#undef QELPY_INSTANTIATE

}  // namespace qelpy
