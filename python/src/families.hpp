// SPDX-License-Identifier: MIT
// One binder per library family; module.cpp calls those the library holds.
#pragma once

#include "boundary.hpp"

namespace qelpy {

void bind_containers(py::module_& m);
void bind_pcm(py::module_& m);
void bind_arith(py::module_& m);
void bind_reductions(py::module_& m);
void bind_spectra(py::module_& m);
void bind_framebuf(py::module_& m);
void bind_fir(py::module_& m);
void bind_dump(py::module_& m);

}  // namespace qelpy
