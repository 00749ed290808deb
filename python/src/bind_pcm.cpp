// SPDX-License-Identifier: MIT
// PCM conversion: int16 / int32 (24-bit) samples to and from normalised float32.
#include "families.hpp"

namespace qelpy {
namespace {

int pcm_bits(py::handle pcm, py::handle bits, const char* fn) {
  if (!bits.is_none()) {
    const int b = bits.cast<int>();
    if (b != 16 && b != 24) {
      throw py::value_error(std::string(fn) + ": bits must be 16 or 24, got " + std::to_string(b));
    }
    return b;
  }
  if (is_array_of<int16_t>(pcm)) return 16;
  if (is_array_of<int32_t>(pcm)) return 24;
  throw py::type_error(std::string(fn) +
                       ": pcm must be an int16 array (16-bit PCM) or an int32 array (24-bit PCM "
                       "held in 32 bits); with another dtype pass bits=16 or 24 and copy=True");
}

template <typename Pcm>
Array<float> to_float(py::handle pcm, py::handle out, bool copy,
                      void (*kernel)(const Pcm*, qel_float*, int)) {
  auto in = input<Pcm>(pcm, "normalize: pcm", copy);
  auto y = output<float>(out, in.size(), "normalize: out");
  in = detach(in, y, false);
  kernel(in.data(), y.mutable_data(), count(in.size(), "normalize: pcm"));
  return y;
}

template <typename Pcm>
Array<Pcm> from_float(py::handle x, py::handle out, bool copy,
                      void (*kernel)(const qel_float*, Pcm*, int)) {
  auto in = input<float>(x, "denormalize: x", copy);
  auto y = output<Pcm>(out, in.size(), "denormalize: out");
  in = detach(in, y, false);
  kernel(in.data(), y.mutable_data(), count(in.size(), "denormalize: x"));
  return y;
}

}  // namespace

void bind_pcm(py::module_& m) {
  m.def(
      "normalize",
      [](py::handle pcm, py::handle bits, py::handle out, bool copy) -> py::array {
        if (pcm_bits(pcm, bits, "normalize") == 16) {
          return to_float<int16_t>(pcm, out, copy, qel_vec_normalize);
        }
        return to_float<int32_t>(pcm, out, copy, qel_vec_normalize24);
      },
      "pcm"_a, "bits"_a = py::none(), "out"_a = py::none(), "copy"_a = false,
      R"doc(PCM samples to normalised float32 (full scale is +-1.0).

    16-bit (int16):  y[k] = pcm[k] * 2**-15, so -32768 -> -1.0, 32767 -> 0.999969482421875
    24-bit (int32):  y[k] = pcm[k] * 2**-23, so -8388608 -> -1.0

Exact for every sample. The form follows the dtype (int16: 16-bit, int32:
24-bit held sign-extended in 32 bits), or bits=16 / bits=24 with copy=True for
other integer arrays. The 24-bit form neither masks nor clamps: an int32 value
beyond the 24-bit range gives a float beyond +-1.0 (16777216 -> 2.0).

>>> qel.normalize(np.array([-32768, 16384, 1], dtype=np.int16))
array([-1.0000000e+00,  5.0000000e-01,  3.0517578e-05], dtype=float32)
>>> qel.normalize(np.array([8388607 // 2 + 1], dtype=np.int32))
array([0.5], dtype=float32)
)doc");

  m.def(
      "denormalize",
      [](py::handle x, int bits, py::handle out, bool copy) -> py::array {
        if (bits == 16) return from_float<int16_t>(x, out, copy, qel_vec_denormalize);
        if (bits == 24) return from_float<int32_t>(x, out, copy, qel_vec_denormalize24);
        throw py::value_error("denormalize: bits must be 16 or 24, got " + std::to_string(bits));
      },
      "x"_a, "bits"_a = 16, "out"_a = py::none(), "copy"_a = false,
      R"doc(Normalised float32 to PCM: int16 (bits=16) or int32 holding 24-bit samples (bits=24).

    bits=16:  y[k] = x[k] * 32768, saturated to -32768..32767, truncated toward zero
    bits=24:  y[k] = x[k] * 8388608, saturated to -8388608..8388607, truncated toward zero

The product is formed in float32 and compared with the bounds before the
conversion; it never rounds to nearest (0.99999 * 32768 = 32767.67 -> 32767,
-0.5/32768 -> 0) and a NaN gives 0. So 1.0 gives 32767, not 32768.
A 16-bit frame that goes through normalize and back comes back unchanged.

>>> qel.denormalize(np.array([1.0, -1.0, 0.5, -2.9 / 32768, np.nan], dtype=np.float32))
array([ 32767, -32768,  16384,     -2,      0], dtype=int16)
>>> qel.denormalize(np.array([1.0, -1.0], dtype=np.float32), bits=24)
array([ 8388607, -8388608], dtype=int32)
)doc");
}

}  // namespace qelpy
