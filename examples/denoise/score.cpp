// SPDX-License-Identifier: MIT
// qel-denoise-score: the quality measures of a processed WAV against its clean
// original, and the demo's own 48 <-> 16 kHz resampling for other denoisers, so
// that the evaluation puts them through exactly the rate change qel-denoise has.
#include <cstdio>
#include <string>
#include <vector>

#include "files.h"
#include "pipeline.h"
#include "quality.h"

namespace {

using namespace denoise;

constexpr const char* kUsage =
    "usage: qel-denoise-score CLEAN.wav PROCESSED.wav   print snr_db segsnr_db lsd_db stoi\n"
    "       qel-denoise-score --down IN.wav OUT.raw      48 kHz WAV -> 16 kHz raw 16-bit\n"
    "       qel-denoise-score --up IN.raw OUT.wav        16 kHz raw 16-bit -> 48 kHz WAV\n"
    "The rate changes are qel-denoise's filters, their delay removed: lengths scale by 3.\n";

constexpr int kHalf = (kTaps - 1) / 2;  // each filter's delay, in 48 kHz samples

std::vector<double> samples(const std::string& path) {
  const Pcm p = read_wav(path);
  if (p.bits == 16) return to_double(p.s16);
  std::vector<double> x;
  for (int32_t v : p.s24) x.push_back(v / 256.0);
  return x;
}

// Runs a qel FIR rate changer block by block over `in` padded with zeros, and
// drops the first `skip` outputs (the filter's delay).
template <typename Step>
std::vector<float> run_blocks(std::vector<float> in, int block, int out_block, size_t skip,
                              size_t keep, Step step) {
  in.resize((in.size() / static_cast<size_t>(block) + 2) * static_cast<size_t>(block), 0.0f);
  std::vector<float> out(in.size() / static_cast<size_t>(block) * static_cast<size_t>(out_block));
  for (size_t b = 0; b * static_cast<size_t>(block) < in.size(); ++b) {
    step(&in[b * static_cast<size_t>(block)], &out[b * static_cast<size_t>(out_block)]);
  }
  return {out.begin() + static_cast<long>(skip), out.begin() + static_cast<long>(skip + keep)};
}

void down(const std::string& in_path, const std::string& out_path) {
  const std::vector<double> x = samples(in_path);
  std::vector<float> h(kTaps), state(kTaps - 1 + kHopIn, 0.0f), in;
  design_lowpass(h.data(), 1.0f);
  for (double v : x) in.push_back(static_cast<float>(v / 32768.0));
  const auto y = run_blocks(
      in, kHopIn, kHop, kHalf / kFactor, x.size() / kFactor, [&](const float* src, float* dst) {
        qel_flt_fir_decimate(src, dst, state.data(), h.data(), kTaps, kFactor, kHopIn);
      });
  std::vector<int16_t> pcm(y.size());
  qel_vec_denormalize(y.data(), pcm.data(), static_cast<int>(y.size()));
  FILE* f = std::fopen(out_path.c_str(), "wb");
  if (!f || std::fwrite(pcm.data(), 2, pcm.size(), f) != pcm.size() || std::fclose(f) != 0) {
    throw Error("cannot write '" + out_path + "'");
  }
}

void up(const std::string& in_path, const std::string& out_path) {
  std::vector<int16_t> pcm;
  FILE* f = std::fopen(in_path.c_str(), "rb");
  if (!f) throw Error("cannot read '" + in_path + "'");
  int16_t buf[4096];
  for (size_t n; (n = std::fread(buf, 2, 4096, f)) > 0;) pcm.insert(pcm.end(), buf, buf + n);
  std::fclose(f);
  std::vector<float> h(kTaps), state(kTaps - 1 + kHopIn, 0.0f), in(pcm.size());
  design_lowpass(h.data(), static_cast<float>(kFactor));
  qel_vec_normalize(pcm.data(), in.data(), static_cast<int>(pcm.size()));
  const auto y =
      run_blocks(in, kHop, kHopIn, kHalf, pcm.size() * kFactor, [&](const float* src, float* dst) {
        qel_flt_fir_interpolate(src, dst, state.data(), h.data(), kTaps, kFactor, kHop);
      });
  Pcm out;
  out.s16.resize(y.size());
  qel_vec_denormalize(y.data(), out.s16.data(), static_cast<int>(y.size()));
  PendingFile wav(out_path);
  write_wav(wav, out);
  wav.commit();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::vector<std::string> a(argv + 1, argv + argc);
    if (a.size() == 3 && a[0] == "--down") {
      down(a[1], a[2]);
    } else if (a.size() == 3 && a[0] == "--up") {
      up(a[1], a[2]);
    } else if (a.size() == 2 && a[0][0] != '-') {
      const Quality q = measure(samples(a[0]), samples(a[1]), kInRate);
      std::printf("snr_db=%.3f segsnr_db=%.3f lsd_db=%.3f stoi=%.4f\n", q.snr_db, q.segsnr_db,
                  q.lsd_db, q.stoi);
    } else {
      std::fputs(kUsage, stderr);
      return 2;
    }
    return 0;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "qel-denoise-score: error: %s\n", e.what());
    return 1;
  }
}
