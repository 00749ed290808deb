// SPDX-License-Identifier: MIT
// File handling of qel-denoise: checked WAV input, all-or-nothing outputs.
#pragma once

#include <cstdint>
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
  explicit PendingFile(std::string path);  // throws Error when the directory is not writable
  ~PendingFile();
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  int fd() const { return fd_; }  // open for writing; closed by the writer or the destructor
  void release_fd() { fd_ = -1; }
  const std::string& path() const { return path_; }
  void commit();

 private:
  std::string path_, tmp_;
  int fd_ = -1;
  bool committed_ = false;
};

// Writes mono 48 kHz PCM at its own bit depth into `out` (not yet committed).
void write_wav(PendingFile& out, const Pcm& pcm);

// True when both paths name the same existing file (hard links and symlinks included).
bool same_file(const std::string& a, const std::string& b);

}  // namespace denoise
