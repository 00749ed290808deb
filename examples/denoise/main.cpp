// SPDX-License-Identifier: MIT
// qel-denoise: noise reduction of a mono 48 kHz WAV with the qel frame pipeline.
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "denoise.h"
#include "quality.h"
#include "testsignal.h"

namespace {

using namespace denoise;

constexpr const char* kUsage = R"(usage: qel-denoise [options] [INPUT.wav]

Reduces steady background noise in a mono 48 kHz WAV with the qel frame pipeline
(48 -> 16 kHz FIR decimation, 512-point STFT with 50% overlap, speech-presence-
weighted noise estimate, decision-directed Wiener gain with onset protection,
overlap-add, 16 -> 48 kHz FIR interpolation) and writes the result and a
spectrogram PNG (input | output).
The Cortex-M33 build (run under QEMU, its files through semihosting) takes the
same command line, writes the same WAV bytes and no PNG.

With no INPUT it processes the embedded default: a deterministic speech-like test
signal in noise at 5 dB SNR. Its clean part is known, so the SNR, an
intelligibility score and the log-spectral distance are reported.

INPUT must be a mono 48000 Hz WAV of 16-bit PCM, or of 24-bit PCM, which is
converted through the library's 24-bit path (qel_vec_normalize24) and written
back as 24-bit. Float, 8-bit, 32-bit and compressed WAVs, other sample rates and
more channels are refused with an error. The input is never overwritten.

options:
  -o, --output FILE       output WAV (default: INPUT-denoised.wav, or denoised.wav
                          for the embedded default); the PNG goes next to it, .png
  --seconds S             length of the embedded default in seconds (default 10)
  --write-input FILE      also write the embedded default's noisy input as a WAV
  --m33-instructions N    instructions of one whole frame on the Cortex-M33 and
  --m33-cycles C          its estimated cycles, for the report (scripts/demo.sh
                          measures both under QEMU)
  --no-png                do not write the spectrogram
  -q, --quiet             no progress indication
  -h, --help              this text
)";

struct Options {
  std::string input, output, write_input;
  double seconds = 10.0;
  long long m33_instructions = -1, m33_cycles = -1;
  bool png = QEL_DENOISE_PNG, quiet = false;
};

struct UsageError : Error {
  using Error::Error;
};

std::string need_value(int& i, int argc, char** argv) {
  if (i + 1 >= argc) throw UsageError(std::string("option ") + argv[i] + " needs a value");
  return argv[++i];
}

Options parse(int argc, char** argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "-h" || a == "--help") {
      std::fputs(kUsage, stdout);
      std::exit(0);
    } else if (a == "-o" || a == "--output") {
      o.output = need_value(i, argc, argv);
    } else if (a == "--seconds") {
      const std::string v = need_value(i, argc, argv);
      char* end = nullptr;
      o.seconds = std::strtod(v.c_str(), &end);
      if (*end != '\0' || !(o.seconds > 0.0) || o.seconds > 3600.0) {
        throw UsageError("--seconds wants a number of seconds between 0 and 3600, not '" + v + "'");
      }
    } else if (a == "--write-input") {
      o.write_input = need_value(i, argc, argv);
    } else if (a == "--m33-instructions" || a == "--m33-cycles") {
      const std::string v = need_value(i, argc, argv);
      char* end = nullptr;
      long long& n = (a == "--m33-cycles") ? o.m33_cycles : o.m33_instructions;
      n = std::strtoll(v.c_str(), &end, 10);
      if (*end != '\0' || v.empty() || n <= 0) {
        throw UsageError(a + " wants a positive count, not '" + v + "'");
      }
    } else if (a == "--no-png") {
      o.png = false;
    } else if (a == "-q" || a == "--quiet") {
      o.quiet = true;
    } else if (a.size() > 1 && a[0] == '-') {
      throw UsageError("unknown option '" + a + "' (see --help)");
    } else if (o.input.empty()) {
      o.input = a;
    } else {
      throw UsageError("one input file at most (see --help)");
    }
  }
  return o;
}

bool ends_with(const std::string& s, const std::string& tail) {
  return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

std::string stem(const std::string& path) {
  if (ends_with(path, ".wav") || ends_with(path, ".WAV")) return path.substr(0, path.size() - 4);
  return path;
}

void refuse_overwrite(const std::string& input, const std::string& out) {
  if (!input.empty() && same_file(input, out)) {
    throw Error("output '" + out + "' is the input file; choose another output name");
  }
}

// Progress on stderr: a line rewritten in place on a terminal, a few plain
// lines otherwise (logs).
class Progress {
 public:
  Progress(bool on, double seconds) : on_(on), seconds_(seconds), tty_(isatty(2) != 0) {}
  void operator()(double fraction) {
    if (!on_) return;
    const int pct = static_cast<int>(fraction * 100.0);
    const int step = tty_ ? 1 : 25;
    if (pct / step == last_ / step) return;
    last_ = pct;
    std::fprintf(stderr, "%sqel-denoise: %3d%% of %.1f s%s", tty_ ? "\r" : "", pct, seconds_,
                 (tty_ && pct < 100) ? "" : "\n");
  }

 private:
  bool on_;
  double seconds_;
  bool tty_;
  int last_ = -1;
};

std::string with_commas(long long v) {
  std::string s = std::to_string(v), r;
  for (size_t i = 0; i < s.size(); ++i) {
    if (i > 0 && (s.size() - i) % 3 == 0) r += ',';
    r += s[i];
  }
  return r;
}

// The report's lines on speed: this machine's real-time factor, and the cost
// of one whole frame (FFT included) on the Cortex-M33 when it was measured.
void report_cost(const Options& o, double rtf) {
  if (QEL_DENOISE_DEVICE) {
    std::printf("  real-time factor    not measured here: QEMU's clock is not the core's\n");
  } else {
    std::printf("  real-time factor    %.4f on this machine (%.0fx faster than real time)\n", rtf,
                rtf > 0.0 ? 1.0 / rtf : 0.0);
  }
  if (o.m33_cycles > 0) {
    const double budget = 150e6 * kHopIn / static_cast<double>(kInRate);
    std::printf("  Cortex-M33 cost     %s estimated cycles per frame = %.1f%% of a 150 MHz core\n",
                with_commas(o.m33_cycles).c_str(),
                100.0 * static_cast<double>(o.m33_cycles) / budget);
  }
  if (o.m33_instructions > 0) {
    std::printf("  %-20s%s instructions per frame (the whole frame, FFT included,\n",
                o.m33_cycles > 0 ? "" : "Cortex-M33 cost", with_commas(o.m33_instructions).c_str());
    std::printf(
        "                      counted under QEMU; per stage: scripts/m33_frame_cost.sh)\n");
  }
  if (o.m33_cycles <= 0 && o.m33_instructions <= 0) {
    std::printf(
        "  Cortex-M33 cost     not measured (scripts/demo.sh measures it; or pass"
        " --m33-cycles C --m33-instructions N)\n");
  }
}

int run_cli(const Options& o) {
  TestSignal sig;
  Pcm in;  // the embedded default; a file is read as it is processed
  std::unique_ptr<WavReader> file;
  const bool embedded = o.input.empty();
  if (embedded) {
    sig = make_test_signal(o.seconds);
    in.bits = 16;
    in.s16 = sig.noisy;
  } else {
    file = std::make_unique<WavReader>(o.input);  // checks the header: refusals come first
  }
  const int bits = embedded ? in.bits : file->bits();
  const size_t samples = embedded ? in.size() : file->size();
  const std::string out_path =
      !o.output.empty() ? o.output : (embedded ? "denoised.wav" : stem(o.input) + "-denoised.wav");
  const std::string png_path = stem(out_path) + ".png";
  refuse_overwrite(o.input, out_path);
  if (o.png) refuse_overwrite(o.input, png_path);
  if (!o.write_input.empty()) {
    if (o.write_input == out_path || o.write_input == png_path) {
      throw Error("--write-input '" + o.write_input + "' would collide with an output");
    }
  }

  // Claim every output before the work, so an unwritable path fails fast;
  // nothing appears under its name until all of them are written.
  PendingFile wav(out_path);
  std::unique_ptr<PendingFile> png, noisy;
  if (o.png) png = std::make_unique<PendingFile>(png_path);
  if (embedded && !o.write_input.empty()) noisy = std::make_unique<PendingFile>(o.write_input);

  const double seconds = static_cast<double>(samples) / kInRate;
  Progress progress(!o.quiet && seconds > 5.0, seconds);
  const int columns = png ? 480 : 0;  // no picture, no spectrogram to gather
  // A file streams through, one frame at a time: any length fits the device.
  Stream stream;
  if (!embedded) {
    write_wav_header(wav, bits, samples);
    stream.bits = bits;
    stream.size = samples;
    stream.read = [&](int16_t* s16, int32_t* s24, size_t n) { return file->read(s16, s24, n); };
    stream.write = [&](const int16_t* s16, const int32_t* s24, size_t n) {
      write_samples(wav, bits, s16, s24, n);
    };
  }
  const auto tick = [&](double f) { progress(f); };
  const Result r =
      embedded ? run(in, Params{}, columns, tick) : run(stream, Params{}, columns, tick);
  if (embedded) {
    write_wav(wav, r.out);
  } else {
    wav.close();
  }
  if (png) write_png(*png, r.in_spec, r.out_spec, seconds, kRate / 2.0);
  if (noisy) write_wav(*noisy, in);
  wav.commit();
  if (png) png->commit();
  if (noisy) noisy->commit();

  std::printf("qel-denoise: %s, %.2f s at 48 kHz, %d-bit mono\n",
              embedded ? "embedded test signal (speech-like bursts in noise)"
                       : ("'" + o.input + "'").c_str(),
              seconds, bits);
  std::printf(
      "  frames processed    %d of 16 ms (512-point FFT at 16 kHz, 50%% overlap),"
      " %d of them flushing the delay\n",
      r.frames, r.frames - static_cast<int>(samples / kHopIn));
  if (embedded) {
    const double snr_in = snr_db(sig.clean, sig.noisy);
    const double snr_out = snr_db(sig.clean, r.out.s16);
    Params bypass;
    bypass.bypass = true;
    const Result b = run(in, bypass, 1);
    const double snr_band = snr_db(sig.clean, b.out.s16);
    std::printf("  input SNR           %.1f dB\n", snr_in);
    std::printf(
        "  output SNR          %.1f dB  (%+.1f dB; resampling alone, gain held at 1: %+.1f dB)\n",
        snr_out, snr_out - snr_in, snr_band - snr_in);
    if (QEL_DENOISE_DEVICE) {
      // In double precision over whole signals: too slow and too big for the
      // device, and beside the point there (the output is the host's).
      std::printf("  intelligibility     not measured on the device (the host's report has it)\n");
    } else {
      const Quality q_in = measure(sig.clean, to_double(sig.noisy), kInRate);
      const Quality q_out = measure(sig.clean, to_double(r.out.s16), kInRate);
      std::printf("  intelligibility     %.3f in, %.3f out  (STOI-style score from 0 to 1)\n",
                  q_in.stoi, q_out.stoi);
      std::printf("  log-spectral dist.  %.1f dB in, %.1f dB out  (to the clean signal, 0-8 kHz)\n",
                  q_in.lsd_db, q_out.lsd_db);
    }
  } else {
    std::printf("  SNR                 not reported: the clean signal of a file is unknown\n");
  }
  std::printf(
      "  alignment           pipeline delay of %d samples (%.1f ms) removed: output %lld"
      " samples = input %lld\n",  // newlib's printf has no %zu
      kDelay, 1000.0 * kDelay / kInRate, static_cast<long long>(r.written),
      static_cast<long long>(samples));
  std::printf("  non-finite values   %lld\n", r.nonfinite);
  report_cost(o, r.seconds / seconds);
  std::printf("  output              %s\n", out_path.c_str());
  if (png)
    std::printf("  spectrogram         %s (input left, output right, 0-8 kHz)\n", png_path.c_str());
  if (noisy) std::printf("  noisy input         %s\n", o.write_input.c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run_cli(parse(argc, argv));
  } catch (const UsageError& e) {
    std::fprintf(stderr, "qel-denoise: %s\n", e.what());
    return 2;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "qel-denoise: error: %s\n", e.what());
    return 1;
  }
}
