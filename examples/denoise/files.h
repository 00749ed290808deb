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

// Reads a WAV file, refusing with an Error anything but mono 48 kHz 16- or
// 24-bit PCM: a missing, empty, non-audio or non-WAV file, other channel
// counts, sample rates or sample formats (float included), no samples.
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

// Writes mono 48 kHz PCM at its own bit depth into `out` (not yet committed):
// a 44-byte canonical header, then little-endian samples.
void write_wav(PendingFile& out, const Pcm& pcm);

// True when both paths name the same existing file. The device sees no inodes:
// there the paths are compared as text, "./" segments and repeated slashes aside.
bool same_file(const std::string& a, const std::string& b);

}  // namespace denoise
