// SPDX-License-Identifier: MIT
// FIR filters as small classes that own the library's state buffer and keep
// the coefficients in the library's order (the impulse response reversed).
#include <algorithm>

#include "families.hpp"

namespace qelpy {
namespace {

constexpr const char* kStateDoc = R"doc(
Coefficients and state
    h is the impulse response in the usual order, h[0] first (what
    scipy.signal.firwin returns; float32, or anything with copy=True). The
    library wants it the other way round: its pCoeffs[0] weighs the OLDEST
    sample of a window, so the filter stores pCoeffs = h[::-1] (see
    library_coefficients). Symmetric (linear-phase) sets read the same
    either way. The filter owns the library's state buffer: numTaps - 1
    history samples (zero at construction and after reset()) followed by
    a working area, grown as needed, that holds the samples a call appends.
    Feeding a signal in blocks of any sizes gives the same output, bit for
    bit, as feeding it in one call.
)doc";

// The parts every filter shares: coefficients in library order, the state
// buffer, and the checks on construction.
class Filter {
 public:
  Filter(py::handle h, bool copy, const std::string& cls) {
    auto a = input<float>(h, cls + ": h", copy);
    if (a.size() < 1) {
      throw py::value_error(cls + ": h must hold at least one coefficient (numTaps >= 1)");
    }
    num_taps_ = count(a.size(), cls + ": h");
    coeffs_.assign(a.data(), a.data() + a.size());
    std::reverse(coeffs_.begin(), coeffs_.end());
    state_.assign(static_cast<size_t>(num_taps_ - 1), 0.0f);
  }

  int num_taps() const { return num_taps_; }
  void reset() { std::fill(state_.begin(), state_.begin() + (num_taps_ - 1), 0.0f); }
  Array<float> history() const { return Array<float>(num_taps_ - 1, state_.data()); }
  Array<float> library_coefficients() const { return Array<float>(num_taps_, coeffs_.data()); }
  Array<float> coefficients() const {
    Array<float> h(num_taps_);
    std::reverse_copy(coeffs_.begin(), coeffs_.end(), h.mutable_data());
    return h;
  }

 protected:
  // Room for numTaps - 1 history samples and `appended` new ones; growing
  // keeps the history at the front.
  float* state_for(py::ssize_t appended, const std::string& what) {
    const py::ssize_t need = num_taps_ - 1 + appended;
    (void)count(need, what + " (numTaps - 1 + appended samples)");
    if (static_cast<size_t>(need) > state_.size()) state_.resize(static_cast<size_t>(need));
    return state_.data();
  }
  const float* coeffs() const { return coeffs_.data(); }

 private:
  int num_taps_ = 0;
  std::vector<float> coeffs_;
  std::vector<float> state_;
};

bool pcm_dtype(py::handle dtype, const std::string& cls) {
  const auto dt = py::dtype::from_args(py::reinterpret_borrow<py::object>(dtype));
  if (dt.equal(py::dtype::of<float>())) return false;
  if (dt.equal(py::dtype::of<int16_t>())) return true;
  throw py::type_error(cls + ": dtype must be numpy.float32 or numpy.int16, got " +
                       py::str(static_cast<py::handle>(dt)).cast<std::string>());
}

int factor(int f, const char* name, const std::string& cls) {
  if (f < 1) throw py::value_error(cls + ": " + name + " must be >= 1, got " + std::to_string(f));
  return f;
}

class Fir : public Filter {
 public:
  Fir(py::handle h, bool copy) : Filter(h, copy, "Fir") {}

  Array<float> process(py::handle x, py::handle out, bool copy) {
    auto in = input<float>(x, "Fir.process: x", copy);
    auto y = output<float>(out, in.size(), "Fir.process: out");
    in = detach(in, y, true);
    float* state = state_for(in.size(), "Fir.process: x");
    qel_flt_fir(in.data(), y.mutable_data(), state, coeffs(), num_taps(),
                count(in.size(), "Fir.process: x"));
    return y;
  }
};

class FirDecimator : public Filter {
 public:
  FirDecimator(py::handle h, int M, py::handle dtype, bool copy)
      : Filter(h, copy, "FirDecimator"),
        M_(factor(M, "M", "FirDecimator")),
        pcm_(pcm_dtype(dtype, "FirDecimator")) {}

  int M() const { return M_; }
  py::dtype dtype() const { return pcm_ ? py::dtype::of<int16_t>() : py::dtype::of<float>(); }

  py::array process(py::handle x, py::handle out, bool drop_leftover, bool copy) {
    if (pcm_) return run<int16_t>(x, out, drop_leftover, copy, qel_flt_fir_decimate_int16);
    return run<float>(x, out, drop_leftover, copy, qel_flt_fir_decimate);
  }

 private:
  template <typename T>
  Array<T> run(py::handle x, py::handle out, bool drop_leftover, bool copy,
               void (*kernel)(const T*, T*, float*, const float*, int, int, int)) {
    auto in = input<T>(x, "FirDecimator.process: x", copy);
    const py::ssize_t n = in.size();
    if (n % M_ != 0 && !drop_leftover) {
      throw py::value_error(
          "FirDecimator.process: len(x) = " + std::to_string(n) + " is not a multiple of M = " +
          std::to_string(M_) + "; the library would ignore the last " + std::to_string(n % M_) +
          " sample(s): they would give no output and never enter the history, so the next "
          "block would not continue the signal. Pass blocks whose length is a multiple of M, "
          "or drop_leftover=True to let them be ignored.");
    }
    auto y = output<T>(out, n / M_, "FirDecimator.process: out");
    in = detach(in, y, true);
    float* state = state_for(n / M_ * M_, "FirDecimator.process: x");
    kernel(in.data(), y.mutable_data(), state, coeffs(), num_taps(), M_,
           count(n, "FirDecimator.process: x"));
    return y;
  }

  int M_;
  bool pcm_;
};

class FirInterpolator : public Filter {
 public:
  FirInterpolator(py::handle h, int L, py::handle dtype, bool copy)
      : Filter(h, copy, "FirInterpolator"),
        L_(factor(L, "L", "FirInterpolator")),
        pcm_(pcm_dtype(dtype, "FirInterpolator")) {}

  int L() const { return L_; }
  py::dtype dtype() const { return pcm_ ? py::dtype::of<int16_t>() : py::dtype::of<float>(); }

  py::array process(py::handle x, py::handle out, bool copy) {
    if (pcm_) return run<int16_t>(x, out, copy, qel_flt_fir_interpolate_int16);
    return run<float>(x, out, copy, qel_flt_fir_interpolate);
  }

 private:
  template <typename T>
  Array<T> run(py::handle x, py::handle out, bool copy,
               void (*kernel)(const T*, T*, float*, const float*, int, int, int)) {
    auto in = input<T>(x, "FirInterpolator.process: x", copy);
    const py::ssize_t n_out = in.size() * L_;
    (void)count(n_out, "FirInterpolator.process: the output (L * len(x))");
    auto y = output<T>(out, n_out, "FirInterpolator.process: out");
    in = detach(in, y, true);
    float* state = state_for(n_out, "FirInterpolator.process: x");
    kernel(in.data(), y.mutable_data(), state, coeffs(), num_taps(), L_,
           count(in.size(), "FirInterpolator.process: x"));
    return y;
  }

  int L_;
  bool pcm_;
};

template <typename C>
void common(py::class_<C>& c) {
  c.def("reset", &C::reset, "Zero the history: the filter is at rest, as when it was made.")
      .def_property_readonly("num_taps", &C::num_taps, "Number of coefficients (numTaps).")
      .def_property_readonly("coefficients", &C::coefficients,
                             "The impulse response h, h[0] first (a copy, float32).")
      .def_property_readonly("library_coefficients", &C::library_coefficients,
                             "pCoeffs as the library reads them: h reversed, pCoeffs[0] weighing "
                             "the oldest sample (a copy, float32).")
      .def_property_readonly("history", &C::history,
                             "The numTaps - 1 history samples, oldest first (a copy, float32; "
                             "raw PCM values for int16 filters).");
}

}  // namespace

void bind_fir(py::module_& m) {
  py::class_<Fir> fir(m, "Fir",
                      (std::string(R"doc(Block FIR filter on float32 samples.

    y[n] = sum_{j=0}^{numTaps-1} h[j] * x[n - j]

with x before the first sample taken from the history (zeros for a new
filter): the same output as scipy.signal.lfilter(h, 1, x), computed in
float32 with one accumulator per output that takes the products in a fixed
order (oldest sample first, i.e. j = numTaps-1 down to 0). There is no
16-bit form of the block filter: normalize PCM first.
)doc") + kStateDoc + R"doc(
Example
    >>> f = qel.Fir(np.array([0.5, 0.25], dtype=np.float32))
    >>> f.process(np.array([1, 0, 0, 4], dtype=np.float32))
    array([0.5 , 0.25, 0.  , 2.  ], dtype=float32)
    >>> f.process(np.array([0], dtype=np.float32))   # carries on from the history
    array([1.], dtype=float32)
)doc")
                          .c_str());
  fir.def(py::init<py::handle, bool>(), "h"_a, "copy"_a = false,
          "Make a filter at rest from the impulse response h (h[0] first, at least one tap).")
      .def("process", &Fir::process, "x"_a, "out"_a = py::none(), "copy"_a = false,
           R"doc(Filter one block x (float32, any length, 0 included); returns len(x) outputs.

out may be x itself (filtering in place). Output n belongs to input n.
)doc")
      .def("__call__", &Fir::process, "x"_a, "out"_a = py::none(), "copy"_a = false,
           "Same as process().");
  common(fir);

  py::class_<FirDecimator> dec(
      m, "FirDecimator",
      (std::string(R"doc(FIR decimator: filter, keep every M-th output (only those are computed).

    y[n] = sum_{j=0}^{numTaps-1} h[j] * x[n*M - j]

so y is scipy.signal.lfilter(h, 1, x)[::M] (and scipy.signal.upfirdn(h, x,
down=M)[:len(x)//M]): outputs are aligned with inputs 0, M, 2M, ... and the
M-1 samples after each first count in the next output. No gain is applied.

A block gives len(x) // M outputs. The library takes only the first
M * (len(x) // M) samples and IGNORES the rest: they produce no output and
never enter the history. Since that silently breaks a stream, process()
raises ValueError when len(x) is not a multiple of M, unless you pass
drop_leftover=True to accept the library's behaviour.

dtype=numpy.int16 selects the 16-bit PCM form: samples enter the state as
their raw integer values (1000 as 1000.0, no scaling), the coefficients
apply at PCM scale, and each output is saturated to -32768..32767 and
truncated toward zero (never rounded; a NaN gives 0).
)doc") +
       kStateDoc + R"doc(
Example
    >>> d = qel.FirDecimator(np.array([0.5, 0.5], dtype=np.float32), M=2)
    >>> d.process(np.array([2, 4, 6, 8], dtype=np.float32))
    array([1., 5.], dtype=float32)
    >>> qel.FirDecimator(np.array([0.5], dtype=np.float32), 1, dtype=np.int16).process(
    ...     np.array([5, -5], dtype=np.int16))
    array([ 2, -2], dtype=int16)
)doc")
          .c_str());
  dec.def(py::init<py::handle, int, py::handle, bool>(), "h"_a, "M"_a,
          "dtype"_a = py::dtype::of<float>(), "copy"_a = false,
          "Make a decimator at rest: impulse response h (h[0] first), factor M >= 1, sample "
          "dtype numpy.float32 or numpy.int16.")
      .def("process", &FirDecimator::process, "x"_a, "out"_a = py::none(),
           "drop_leftover"_a = false, "copy"_a = false,
           R"doc(Decimate one block x (the filter's dtype); returns len(x) // M outputs.

len(x) must be a multiple of M unless drop_leftover=True, in which case the
last len(x) % M samples are ignored as the library ignores them.
)doc")
      .def("__call__", &FirDecimator::process, "x"_a, "out"_a = py::none(),
           "drop_leftover"_a = false, "copy"_a = false, "Same as process().")
      .def_property_readonly("M", &FirDecimator::M, "The decimation factor.")
      .def_property_readonly("dtype", &FirDecimator::dtype, "Sample dtype: float32 or int16.");
  common(dec);

  py::class_<FirInterpolator> itp(
      m, "FirInterpolator",
      (std::string(
           R"doc(FIR interpolator: L-1 zeros after each sample, then the whole filter at the output rate.

    s[L*i] = x[i], s[L*i + p] = 0 for p = 1..L-1
    y[m]   = sum_{j=0}^{numTaps-1} h[j] * s[m - j]        (L * len(x) outputs)

the same as scipy.signal.upfirdn(h, x, up=L)[:L*len(x)]. Every output takes
all numTaps products, inserted zeros included, and NO gain is applied: for a
unity passband scale h by L (resample_poly does that for you). The history
holds the last numTaps - 1 entries of the zero-stuffed sequence.

dtype=numpy.int16 selects the 16-bit PCM form, as for FirDecimator: raw
sample values in, outputs saturated and truncated toward zero.
)doc") +
       kStateDoc + R"doc(
Example
    >>> i = qel.FirInterpolator(np.array([1, 0.5], dtype=np.float32), L=2)
    >>> i.process(np.array([2, 4], dtype=np.float32))
    array([2., 1., 4., 2.], dtype=float32)
)doc")
          .c_str());
  itp.def(py::init<py::handle, int, py::handle, bool>(), "h"_a, "L"_a,
          "dtype"_a = py::dtype::of<float>(), "copy"_a = false,
          "Make an interpolator at rest: impulse response h (h[0] first), factor L >= 1, sample "
          "dtype numpy.float32 or numpy.int16.")
      .def("process", &FirInterpolator::process, "x"_a, "out"_a = py::none(), "copy"_a = false,
           "Interpolate one block x (the filter's dtype); returns L * len(x) outputs.")
      .def("__call__", &FirInterpolator::process, "x"_a, "out"_a = py::none(), "copy"_a = false,
           "Same as process().")
      .def_property_readonly("L", &FirInterpolator::L, "The interpolation factor.")
      .def_property_readonly("dtype", &FirInterpolator::dtype, "Sample dtype: float32 or int16.");
  common(itp);
}

}  // namespace qelpy
