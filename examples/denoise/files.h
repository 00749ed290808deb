// SPDX-License-Identifier: MIT
// File handling of qel-denoise: checked WAV input, all-or-nothing outputs.
// Plain C stdio only, so the host and the Cortex-M33 (stdio through
// semihosting) run the same code, write the same bytes and refuse with the
// same messages.
#pragma once

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

namespace denoise {

// Every refusal and I/O failure; what() is the one line the user sees.
struct Error : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A mono 48 kHz PCM input: 16-bit samples, or 24-bit ones sign-extended in 32 bits.
struct Pcm {
  int bits = 16;
  std::vector<int16_t> s16;
  std::vector<int32_t> s24;
  size_t size() const { return bits == 16 ? s16.size() : s24.size(); }
};

// A WAV input read in blocks, so a long recording needs no more memory than a
// short one. The constructor reads and checks the header, refusing with an
// Error anything but mono 48 kHz 16- or 24-bit PCM: a missing, empty, non-audio
// or non-WAV file, other channel counts, sample rates or sample formats (float
// included), no samples.
class WavReader {
 public:
  explicit WavReader(const std::string& path);
  ~WavReader();
  WavReader(const WavReader&) = delete;
  WavReader& operator=(const WavReader&) = delete;
  int bits() const { return bits_; }
  size_t size() const { return size_; }  // samples in the file (a truncated one: what is there)
  // The next samples, up to n: into s16 at 16 bits, into s24 (sign-extended)
  // at 24 bits; the other pointer is not used. Returns how many; 0 at the end.
  size_t read(int16_t* s16, int32_t* s24, size_t n);

 private:
  std::FILE* f_ = nullptr;
  std::string name_;
  int bits_ = 16;
  size_t size_ = 0, left_ = 0;
};

// All samples of a WAV file, checked as WavReader checks them.
Pcm read_wav(const std::string& path);

// An output file that appears under its name only when commit() is called: it
// is written to a temporary file in the same directory and renamed, so a failed
// run leaves nothing behind and a reader never sees half a file. The
// destructor removes an uncommitted temporary.
class PendingFile {
 public:
  explicit PendingFile(std::string path);  // throws Error when it cannot be written
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  std::FILE* file() const { return f_; }  // open for writing until close()
  void close();                           // throws Error when the data did not reach the file
  const std::string& path() const { return path_; }
  void commit();

 private:
  [[noreturn]] void fail(const std::string& why) const;
  std::string path_, tmp_;
  std::FILE* f_ = nullptr;
  bool committed_ = false;
};

// Mono 48 kHz PCM into `out` (not yet committed): a 44-byte canonical header
// for `samples` samples of `bits` bits, then the samples, little-endian, in
// as many calls as the caller likes (s16 at 16 bits, s24 at 24).
void write_wav_header(PendingFile& out, int bits, size_t samples);
void write_samples(PendingFile& out, int bits, const int16_t* s16, const int32_t* s24, size_t n);

// The header and all of `pcm`, then closes `out`.
void write_wav(PendingFile& out, const Pcm& pcm);

// True when both paths name the same existing file. The device sees no inodes:
// there the paths are compared as text, "./" segments and repeated slashes aside.
bool same_file(const std::string& a, const std::string& b);

}  // namespace denoise
