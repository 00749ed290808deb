// SPDX-License-Identifier: MIT
// The input and output spectrograms of a run, side by side in one PNG.
#pragma once

#include <vector>

#include "files.h"

namespace denoise {

// Per-bin powers of a run gathered into a fixed number of columns, so a long
// input costs no more memory than a short one: frame f of `frames` lands in
// column f * columns / frames, and a column holds the mean of its frames.
class Spectrogram {
 public:
  Spectrogram(int frames, int bins, int columns);
  void add(int frame, const float* power);
  int columns() const { return columns_; }
  int bins() const { return bins_; }
  // Mean power in a column and bin; an empty column (fewer frames than
  // columns) shows its nearest filled neighbour to the left.
  double at(int column, int bin) const;

 private:
  int frames_, bins_, columns_;
  std::vector<double> sum_;
  std::vector<int> count_;
};

// Writes input (left) and output (right) on one shared dB scale (the top 70 dB
// of the input), 0 to `top_hz` from bottom to top, with titles and axes.
void write_png(PendingFile& out, const Spectrogram& in, const Spectrogram& outp, double seconds,
               double top_hz);

}  // namespace denoise
