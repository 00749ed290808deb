// SPDX-License-Identifier: MIT
// The module `qel`: its documentation and the families it binds.
#include "boundary.hpp"
#include "families.hpp"

namespace {

constexpr const char* kModuleDoc =
    R"doc(qel: the single-precision audio DSP kernels of the qel library, on NumPy arrays.

Every function runs the library's own C kernel on the arrays you pass; the
binding only checks arguments and moves values between arrays, so a result is
the very same float32 bit pattern the library computes on its target.

Arrays
    Real vectors are 1-D C-contiguous float32 arrays, complex vectors 1-D
    complex64 arrays (split into the library's separate real and imaginary
    storage at the boundary and joined back), 16-bit PCM is int16 and 24-bit
    PCM is int32 (the sample sign-extended). Nothing is converted silently: a
    float64 array, a list, a strided view or a 2-D array raises TypeError or
    ValueError, unless you pass copy=True, which lets NumPy convert within a
    kind (float64 -> float32, a list -> an array) into a fresh contiguous copy.
    Scalars (gains, floors, thresholds) are rounded to float32 once, on entry.

Outputs
    Functions return new arrays. Where you want the result in an array you
    already have, pass it as out= (same dtype, same length, contiguous,
    writeable); it is filled and returned. out may be one of the inputs:
    inputs are always read as they were before the call (an input that
    overlaps out is copied first where the library could not take it in
    place), so results never depend on how arrays share memory.

Lengths
    Arrays that the library walks together must have the same length; the
    library itself trusts its caller, so the binding checks every length,
    index and count and raises ValueError before anything is computed.

Families
    PCM conversion ....... normalize, denormalize
    Containers ........... fill, copy, copy_range, resize
    Scaling, updates ..... scale, gain_ramp, add_scaled, scale_add
    Sums with floors ..... add, subtract, add_floor, floor, subtract_floor, rsub_ceiling
    Min, max, clipping ... minimum, maximum, max_scalar, magnitude_floor, compress
    Products ............. multiply, multiply_conj, multiply_conj_add, conj
    Division ............. divide, ratio, divide_parts, divide_eps
    Magnitude, power ..... power, magnitude, power_sum, inner_product, power_law
    Reductions ........... sum, var, abs_max
    Frame buffers ........ DelayLine, window_accumulate
    FIR filters .......... Fir, FirDecimator, FirInterpolator
    Diagnostics .......... dump

Example
    >>> import numpy as np, qel
    >>> x = qel.normalize(np.array([16384, -32768], dtype=np.int16))
    >>> x
    array([ 0.5, -1. ], dtype=float32)
    >>> qel.denormalize(qel.scale(x, 0.5))
    array([  8192, -16384], dtype=int16)
)doc";

}  // namespace

namespace py = pybind11;

PYBIND11_MODULE(qel, m) {
  m.doc() = kModuleDoc;
  qelpy::bind_pcm(m);
  qelpy::bind_containers(m);
  qelpy::bind_arith(m);
  qelpy::bind_spectra(m);
  qelpy::bind_reductions(m);
  qelpy::bind_framebuf(m);
  qelpy::bind_fir(m);
  qelpy::bind_dump(m);
}
