// SPDX-License-Identifier: MIT
// Frame buffers: a circular delay line that owns its line and write position,
// and the windowed accumulation of a buffer into a frame.
#include <algorithm>

#include "families.hpp"

namespace qelpy {
namespace {

class DelayLine {
 public:
  explicit DelayLine(int length) {
    if (length < 1) {
      throw py::value_error("DelayLine: length must be >= 1, got " + std::to_string(length));
    }
    line_.assign(static_cast<size_t>(length), 0.0f);
  }

  Array<float> process(py::handle x, py::handle gain, py::handle out, bool copy) {
    auto in = input<float>(x, "DelayLine.process: x", copy);
    Array<float> g = is_scalar(gain) ? Array<float>(in.size())
                                     : input<float>(gain, "DelayLine.process: gain", copy);
    if (is_scalar(gain)) {
      std::fill(g.mutable_data(), g.mutable_data() + g.size(),
                static_cast<float>(gain.cast<double>()));
    }
    same_length(in.size(), g.size(), "DelayLine.process: x and gain");
    auto y = output<float>(out, in.size(), "DelayLine.process: out");
    in = detach(in, y, true);
    g = detach(g, y, true);
    const int n = count(in.size(), "DelayLine.process: x");
    const int len = static_cast<int>(line_.size());
    qel_fl_circular(y.mutable_data(), line_.data(), in.data(), g.data(), len, pos_, n);
    pos_ = static_cast<int>((static_cast<long long>(pos_) + n) % len);
    return y;
  }

  void reset() {
    std::fill(line_.begin(), line_.end(), 0.0f);
    pos_ = 0;
  }
  int length() const { return static_cast<int>(line_.size()); }
  int write_index() const { return pos_; }
  Array<float> line() const { return Array<float>(length(), line_.data()); }

 private:
  std::vector<float> line_;
  int pos_ = 0;
};

}  // namespace

void bind_framebuf(py::module_& m) {
  py::class_<DelayLine>(m, "DelayLine",
                        R"doc(Circular delay line of `length` samples with a gain per output sample.

For each input sample in order, with p the write position:

    y[i] = gain[i] * line[p];   line[p] = x[i];   p = (p + 1) % length

so every output is the input of exactly `length` samples earlier (counting
across calls; zeros before the first), scaled by the gain of its own output
position. The line and p are kept between calls; the stored samples never
move, only the position turns. gain is a float32 array as long as x, or a
scalar used for every sample.

>>> d = qel.DelayLine(3)
>>> d.process(np.array([1, 2, 3, 4, 5], dtype=np.float32), 1.0)
array([0., 0., 0., 1., 2.], dtype=float32)
>>> d.line, d.write_index
(array([4., 5., 3.], dtype=float32), 2)
>>> d.process(np.array([6, 7], dtype=np.float32), np.array([1, 0.5], dtype=np.float32))
array([3., 2.], dtype=float32)
)doc")
      .def(py::init<int>(), "length"_a, "A line of `length` >= 1 zeros, write position 0.")
      .def("process", &DelayLine::process, "x"_a, "gain"_a = 1.0, "out"_a = py::none(),
           "copy"_a = false,
           "Push x (float32) through the line; returns len(x) outputs. out may be x or gain.")
      .def("__call__", &DelayLine::process, "x"_a, "gain"_a = 1.0, "out"_a = py::none(),
           "copy"_a = false, "Same as process().")
      .def("reset", &DelayLine::reset, "Zero the line and set the write position to 0.")
      .def_property_readonly("length", &DelayLine::length, "Number of samples of delay.")
      .def_property_readonly("write_index", &DelayLine::write_index,
                             "Slot the next sample is written to; it holds the oldest sample.")
      .def_property_readonly("line", &DelayLine::line, "The stored samples, by slot (a copy).");

  m.def(
      "window_accumulate",
      [](py::handle acc, py::handle buff, py::handle window, py::handle out, bool copy) {
        auto a = input<float>(acc, "window_accumulate: acc", copy);
        auto b = input<float>(buff, "window_accumulate: buff", copy);
        auto w = input<float>(window, "window_accumulate: window", copy);
        same_length(a.size(), b.size(), "window_accumulate: acc and buff");
        same_length(a.size(), w.size(), "window_accumulate: acc and window");
        auto y = output<float>(out, a.size(), "window_accumulate: out");
        b = detach(b, y, false);
        w = detach(w, y, false);
        load(y, a);
        const int n = count(a.size(), "window_accumulate: acc");
        // The library reads the window backwards from the weight of element 0.
        qel_fl_maa(y.mutable_data(), b.data(), n > 0 ? w.data() + (n - 1) : w.data(), n);
        return y;
      },
      "acc"_a, "buff"_a, "window"_a, "out"_a = py::none(), "copy"_a = false,
      R"doc(Windowed accumulation, window read backwards: y[k] = acc[k] + buff[k] * window[n-1-k].

n = len(acc) = len(buff) = len(window). One float32 product and one sum per
element. The library takes a pointer to the weight of element 0 and reads
the coefficients at decreasing addresses; the binding passes it the last
element of `window`, so element k is weighted by window[n-1-k]
(a symmetric window reads the same either way). Pass out=acc to accumulate
in place.

>>> acc = np.zeros(5, dtype=np.float32)
>>> w = np.array([0.1, 0.2, 0.3, 0.4, 0.5], dtype=np.float32)
>>> qel.window_accumulate(acc, np.ones(5, dtype=np.float32), w, out=acc)
array([0.5, 0.4, 0.3, 0.2, 0.1], dtype=float32)
)doc");
}

}  // namespace qelpy
