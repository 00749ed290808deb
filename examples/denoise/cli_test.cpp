// SPDX-License-Identifier: MIT
// qel-denoise as a user runs it: a short end-to-end run, and every bad input
// refused with one line on stderr, a non-zero exit and nothing written.
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;

struct TempDir {
  fs::path path;
  TempDir() {
    std::string tmpl = (fs::temp_directory_path() / "qel-denoise-test-XXXXXX").string();
    path = mkdtemp(tmpl.data());
  }
  ~TempDir() { fs::remove_all(path); }
  std::string operator/(const std::string& name) const { return (path / name).string(); }
  std::set<std::string> listing() const {
    std::set<std::string> names;
    for (const auto& e : fs::directory_iterator(path)) names.insert(e.path().filename().string());
    return names;
  }
};

std::string slurp(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

struct Outcome {
  int status;
  std::string out, err;
};

// Runs qel-denoise with `args` (already quoted where needed) from `dir`.
Outcome run(const TempDir& dir, const std::string& args) {
  const std::string out =
      (dir.path.parent_path() / (dir.path.filename().string() + ".out")).string();
  const std::string err =
      (dir.path.parent_path() / (dir.path.filename().string() + ".err")).string();
  const std::string cmd = "cd '" + dir.path.string() + "' && '" QEL_DENOISE_BIN "' " + args +
                          " >'" + out + "' 2>'" + err + "'";
  const int raw = std::system(cmd.c_str());
  Outcome o{WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, slurp(out), slurp(err)};
  fs::remove(out);
  fs::remove(err);
  return o;
}

void write_audio(const std::string& path, int format, int channels, int rate, int frames) {
  SF_INFO info{};
  info.samplerate = rate;
  info.channels = channels;
  info.format = format;
  SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
  ASSERT_NE(f, nullptr) << sf_strerror(nullptr);
  std::vector<float> x(static_cast<size_t>(frames) * static_cast<size_t>(channels));
  for (size_t i = 0; i < x.size(); ++i) x[i] = 0.25f * std::sin(0.05f * static_cast<float>(i));
  sf_writef_float(f, x.data(), frames);
  sf_close(f);
}

constexpr int kWav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
void good_wav(const std::string& path) { write_audio(path, kWav16, 1, 48000, 4800); }

double field(const std::string& report, const std::string& label) {
  const size_t at = report.find(label);
  if (at == std::string::npos) return NAN;
  return std::strtod(report.c_str() + at + label.size(), nullptr);
}

SF_INFO info_of(const std::string& path) {
  SF_INFO info{};
  SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
  EXPECT_NE(f, nullptr) << path;
  if (f) sf_close(f);
  return info;
}

TEST(DenoiseCli, ShortEmbeddedRunEndToEnd) {
  TempDir dir;
  const Outcome o = run(dir, "--seconds 2 --write-input noisy.wav -o out.wav");
  ASSERT_EQ(o.status, 0) << o.err;
  EXPECT_EQ(dir.listing(), (std::set<std::string>{"noisy.wav", "out.png", "out.wav"}));
  const SF_INFO in = info_of(dir / "noisy.wav"), out = info_of(dir / "out.wav");
  EXPECT_EQ(out.frames, in.frames) << "the pipeline delay is removed, not appended";
  EXPECT_EQ(out.format, kWav16);
  // Loose on purpose: the algorithm is tuned often, the test asks only that it helps.
  EXPECT_GT(field(o.out, "output SNR"), field(o.out, "input SNR") + 3.0) << o.out;
  EXPECT_EQ(field(o.out, "non-finite values"), 0.0) << o.out;
  EXPECT_EQ(slurp(dir / "out.png").substr(1, 3), "PNG");
}

TEST(DenoiseCli, TwentyFourBitFileIsWrittenBackAsTwentyFourBit) {
  TempDir dir;
  write_audio(dir / "in24.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 1, 48000, 4800);
  const Outcome o = run(dir, "in24.wav --no-png");
  ASSERT_EQ(o.status, 0) << o.err;
  const SF_INFO out = info_of(dir / "in24-denoised.wav");
  EXPECT_EQ(out.format, SF_FORMAT_WAV | SF_FORMAT_PCM_24);
  EXPECT_EQ(out.frames, 4800);
}

struct BadCase {
  const char* name;                           // also the test's name
  std::function<void(const TempDir&)> setup;  // makes the files the case needs
  const char* args;
  const char* message;  // a part of the one-line error
  int status;
};

const BadCase kBadCases[] = {
    {"MissingInput", [](const TempDir&) {}, "missing.wav", "No such file or directory", 1},
    {"NotAudio",
     [](const TempDir& d) { std::ofstream(d / "notes.wav") << "just some text, not audio\n"; },
     "notes.wav", "is not a WAV audio file", 1},
    {"EmptyFile", [](const TempDir& d) { std::ofstream(d / "empty.wav"); }, "empty.wav", "is empty",
     1},
    {"NoSamples", [](const TempDir& d) { write_audio(d / "none.wav", kWav16, 1, 48000, 0); },
     "none.wav", "holds no samples", 1},
    {"Stereo", [](const TempDir& d) { write_audio(d / "st.wav", kWav16, 2, 48000, 480); }, "st.wav",
     "has 2 channels; only mono", 1},
    {"Rate44100", [](const TempDir& d) { write_audio(d / "cd.wav", kWav16, 1, 44100, 480); },
     "cd.wav", "sampled at 44100 Hz; only 48000 Hz", 1},
    {"FloatSamples",
     [](const TempDir& d) {
       write_audio(d / "fl.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 1, 48000, 480);
     },
     "fl.wav", "32-bit float samples; only 16-bit or 24-bit PCM", 1},
    {"EightBitSamples",
     [](const TempDir& d) {
       write_audio(d / "u8.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 1, 48000, 480);
     },
     "u8.wav", "8-bit PCM samples", 1},
    {"AudioButNotWav",
     [](const TempDir& d) {
       write_audio(d / "in.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 1, 48000, 480);
     },
     "in.aiff", "is audio but not a WAV file", 1},
    {"OutputDirectoryMissing", [](const TempDir& d) { good_wav(d / "in.wav"); },
     "in.wav -o nodir/out.wav", "cannot write output 'nodir/out.wav'", 1},
    {"OutputIsADirectory",
     [](const TempDir& d) {
       good_wav(d / "in.wav");
       fs::create_directory(d / "sub");
     },
     "in.wav -o sub", "it is a directory", 1},
    {"OutputIsTheInput", [](const TempDir& d) { good_wav(d / "in.wav"); }, "in.wav -o ./in.wav",
     "is the input file", 1},
    {"SpectrogramWouldReplaceTheInput", [](const TempDir& d) { good_wav(d / "take.png"); },
     "take.png -o take.wav", "is the input file", 1},
    {"UnknownOption", [](const TempDir&) {}, "--frobnicate", "unknown option", 2},
};

class DenoiseRefuses : public testing::TestWithParam<BadCase> {};

TEST_P(DenoiseRefuses, WithOneLineAndWritesNothing) {
  const BadCase& c = GetParam();
  TempDir dir;
  c.setup(dir);
  const auto before = dir.listing();
  std::string input_bytes;
  for (const auto& name : before) input_bytes += slurp(dir / name);
  const Outcome o = run(dir, c.args);
  EXPECT_EQ(o.status, c.status) << o.err;
  EXPECT_EQ(o.out, "");
  EXPECT_EQ(o.err.rfind("qel-denoise: ", 0), 0u) << o.err;
  EXPECT_NE(o.err.find(c.message), std::string::npos) << o.err;
  EXPECT_EQ(o.err.find('\n'), o.err.size() - 1) << "one line: " << o.err;
  EXPECT_EQ(dir.listing(), before) << "no output and no temporary file left";
  std::string after_bytes;
  for (const auto& name : dir.listing()) after_bytes += slurp(dir / name);
  EXPECT_EQ(after_bytes, input_bytes) << "the inputs are untouched";
}

INSTANTIATE_TEST_SUITE_P(BadInput, DenoiseRefuses, testing::ValuesIn(kBadCases),
                         [](const testing::TestParamInfo<BadCase>& i) { return i.param.name; });

}  // namespace
