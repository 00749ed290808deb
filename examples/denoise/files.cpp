// SPDX-License-Identifier: MIT
// A small WAV reader and writer of our own over C stdio, with one-line
// refusals; outputs written to a temporary name and renamed on success.
#include "files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "pipeline.h"

#if !QEL_DENOISE_DEVICE
#include <sys/stat.h>
#endif

namespace denoise {
namespace {

std::string quoted(const std::string& s) { return "'" + s + "'"; }

uint32_t le(const uint8_t* p, int bytes) {
  uint32_t v = 0;
  for (int i = bytes - 1; i >= 0; --i) v = (v << 8) | p[i];
  return v;
}

void put_le(std::vector<uint8_t>& out, uint32_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

bool starts_with(const std::vector<uint8_t>& b, const char* magic) {
  const size_t n = std::strlen(magic);
  return b.size() >= n && std::memcmp(b.data(), magic, n) == 0;
}

// Whether `path` is a directory, asked through stdio alone, as the device can:
// a directory fails to open for appending with EISDIR, and opening an existing
// file for appending changes nothing. (Under QEMU one opens for reading and
// reads as empty.)
bool is_directory(const std::string& path) {
  std::FILE* r = std::fopen(path.c_str(), "rb");
  if (!r) return false;  // missing: appending would create it
  std::fclose(r);
  std::FILE* a = std::fopen(path.c_str(), "ab");
  if (a) {
    std::fclose(a);
    return false;
  }
  return errno == EISDIR;
}

// Copies the file `from` to `to`, for when rename() is missing (QEMU's
// semihosting has none): errno is set when false.
bool copy_file(const std::string& from, const std::string& to) {
  std::FILE* in = std::fopen(from.c_str(), "rb");
  if (!in) return false;
  std::FILE* out = std::fopen(to.c_str(), "wb");
  bool ok = out != nullptr;
  uint8_t chunk[16384];
  for (size_t got; ok && (got = std::fread(chunk, 1, sizeof chunk, in)) > 0;) {
    ok = std::fwrite(chunk, 1, got, out) == got;
  }
  ok = ok && !std::ferror(in);
  std::fclose(in);
  if (out && std::fclose(out) != 0) ok = false;
  return ok;
}

// Every byte of the file; the errors a user can meet come first.
std::vector<uint8_t> slurp(const std::string& path, const std::string& name) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) throw Error("cannot open " + name + ": " + std::strerror(errno));
  std::vector<uint8_t> bytes;
  uint8_t chunk[16384];
  size_t got = 0;
  while ((got = std::fread(chunk, 1, sizeof chunk, f)) > 0)
    bytes.insert(bytes.end(), chunk, chunk + got);
  const int err = std::ferror(f) ? errno : 0;
  std::fclose(f);
  if (err == EISDIR || (bytes.empty() && is_directory(path))) {
    throw Error(name + " is a directory, not a WAV file");
  }
  if (err != 0) throw Error("cannot read " + name + ": " + std::strerror(err));
  if (bytes.empty()) throw Error(name + " is empty (0 bytes)");
  return bytes;
}

std::string sample_format_name(uint32_t tag, uint32_t bits) {
  if (tag == 1) return (bits == 8) ? "8-bit PCM" : std::to_string(bits) + "-bit PCM";
  if (tag == 3) return std::to_string(bits) + "-bit float";
  if (tag == 6) return "A-law";
  if (tag == 7) return "u-law";
  return "compressed or unusual";
}

}  // namespace

Pcm read_wav(const std::string& path) {
  const std::string name = "input " + quoted(path);
  const std::vector<uint8_t> b = slurp(path, name);
  if (b.size() < 12 || !starts_with(b, "RIFF") || std::memcmp(&b[8], "WAVE", 4) != 0) {
    for (const char* audio : {"FORM", "fLaC", "OggS", "ID3", "caff", ".snd", "RF64"}) {
      if (starts_with(b, audio)) {
        throw Error(name + " is audio but not a WAV file; convert it to a 16-bit mono 48 kHz WAV");
      }
    }
    throw Error(name + " is not a WAV audio file (no RIFF/WAVE header)");
  }
  // Chunks: a four-letter id, a 32-bit size, the data padded to an even length.
  const uint8_t* fmt = nullptr;
  uint32_t fmt_size = 0;
  size_t data_at = 0, data_size = 0;
  bool has_data = false;
  for (size_t at = 12; at + 8 <= b.size();) {
    const size_t size = le(&b[at + 4], 4), room = b.size() - at - 8;
    if (std::memcmp(&b[at], "fmt ", 4) == 0 && size >= 16 && size <= room) {
      fmt = &b[at + 8];
      fmt_size = static_cast<uint32_t>(size);
    } else if (std::memcmp(&b[at], "data", 4) == 0) {
      has_data = true;
      data_at = at + 8;
      data_size = std::min(size, room);  // a truncated file: what is there
      break;
    }
    if (size >= room) break;  // compared first: a 32-bit size_t must not wrap
    at += 8 + size + (size & 1u);
  }
  if (!fmt) throw Error(name + " is not a WAV audio file (no format chunk)");
  const uint32_t channels = le(fmt + 2, 2), rate = le(fmt + 4, 4), bits = le(fmt + 14, 2);
  uint32_t tag = le(fmt, 2);
  // WAVE_FORMAT_EXTENSIBLE: the sub-format's first two bytes are the tag.
  if (tag == 0xFFFE && fmt_size >= 26) tag = le(fmt + 24, 2);
  if (channels != 1) {
    throw Error(name + " has " + std::to_string(channels) +
                " channels; only mono is supported (mix it down first)");
  }
  if (rate != static_cast<uint32_t>(kInRate)) {
    throw Error(name + " is sampled at " + std::to_string(rate) +
                " Hz; only 48000 Hz is supported (resample it first)");
  }
  if (tag != 1 || (bits != 16 && bits != 24)) {
    throw Error(name + " holds " + sample_format_name(tag, bits) +
                " samples; only 16-bit or 24-bit PCM is supported");
  }
  if (!has_data || le(&b[data_at - 4], 4) == 0) throw Error(name + " holds no samples");
  Pcm pcm;
  pcm.bits = static_cast<int>(bits);
  const size_t width = bits / 8, n = data_size / width;
  if (n == 0) throw Error(name + " holds no readable samples (truncated?)");
  const uint8_t* p = &b[data_at];
  if (bits == 16) {
    pcm.s16.resize(n);
    for (size_t i = 0; i < n; ++i) pcm.s16[i] = static_cast<int16_t>(le(p + 2 * i, 2));
  } else {
    pcm.s24.resize(n);
    for (size_t i = 0; i < n; ++i) {
      // Sign-extend: the top byte goes to bits 24..31, then an arithmetic shift back.
      pcm.s24[i] = static_cast<int32_t>(le(p + 3 * i, 3) << 8) >> 8;
    }
  }
  return pcm;
}

PendingFile::PendingFile(std::string path) : path_(std::move(path)) {
  if (is_directory(path_)) fail("it is a directory");
  const size_t slash = path_.rfind('/');
  const size_t cut = (slash == std::string::npos) ? 0 : slash + 1;
  tmp_ = path_.substr(0, cut) + "." + path_.substr(cut) + ".qel-tmp";
  f_ = std::fopen(tmp_.c_str(), "wb");
  if (!f_) {
    const int err = errno;
    tmp_.clear();
    fail(std::strerror(err));
  }
}

PendingFile::~PendingFile() {
  if (f_) std::fclose(f_);
  if (!committed_ && !tmp_.empty()) std::remove(tmp_.c_str());
}

void PendingFile::fail(const std::string& why) const {
  throw Error("cannot write output " + quoted(path_) + ": " + why);
}

void PendingFile::close() {
  if (!f_) return;
  const bool bad = std::ferror(f_) != 0;
  const int err = errno;
  const bool closed = std::fclose(f_) == 0;
  f_ = nullptr;
  if (bad || !closed) fail(std::strerror(bad ? err : errno));
}

void PendingFile::commit() {
  close();
  if (std::rename(tmp_.c_str(), path_.c_str()) != 0) {
    if (errno != ENOSYS || !copy_file(tmp_, path_)) fail(std::strerror(errno));
    std::remove(tmp_.c_str());
  }
  committed_ = true;
}

void write_wav(PendingFile& out, const Pcm& pcm) {
  const uint32_t width = static_cast<uint32_t>(pcm.bits / 8);
  const uint32_t data = static_cast<uint32_t>(pcm.size()) * width;
  std::vector<uint8_t> b;
  b.reserve(44 + 3 * 4096);
  b.insert(b.end(), {'R', 'I', 'F', 'F'});
  put_le(b, 36 + data, 4);
  b.insert(b.end(), {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '});
  put_le(b, 16, 4);
  put_le(b, 1, 2);  // PCM
  put_le(b, 1, 2);  // mono
  put_le(b, static_cast<uint32_t>(kInRate), 4);
  put_le(b, static_cast<uint32_t>(kInRate) * width, 4);  // bytes per second
  put_le(b, width, 2);                                   // bytes per frame
  put_le(b, static_cast<uint32_t>(pcm.bits), 2);
  b.insert(b.end(), {'d', 'a', 't', 'a'});
  put_le(b, data, 4);
  for (size_t i = 0; i < pcm.size(); ++i) {
    const auto v =
        (pcm.bits == 16) ? static_cast<uint32_t>(pcm.s16[i]) : static_cast<uint32_t>(pcm.s24[i]);
    put_le(b, v, static_cast<int>(width));
    if (b.size() >= 3 * 4096) {
      std::fwrite(b.data(), 1, b.size(), out.file());
      b.clear();
    }
  }
  std::fwrite(b.data(), 1, b.size(), out.file());
  out.close();
}

bool same_file(const std::string& a, const std::string& b) {
#if QEL_DENOISE_DEVICE
  auto plain = [](std::string s) {
    for (size_t at; (at = s.find("//")) != std::string::npos;) s.erase(at, 1);
    for (size_t at; (at = s.find("/./")) != std::string::npos;) s.erase(at, 2);
    while (s.rfind("./", 0) == 0) s.erase(0, 2);
    return s;
  };
  return plain(a) == plain(b);
#else
  struct stat sa {
  }, sb{};
  if (stat(a.c_str(), &sa) != 0 || stat(b.c_str(), &sb) != 0) return false;
  return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
#endif
}

}  // namespace denoise
