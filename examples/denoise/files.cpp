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

std::string sample_format_name(uint32_t tag, uint32_t bits) {
  if (tag == 1) return (bits == 8) ? "8-bit PCM" : std::to_string(bits) + "-bit PCM";
  if (tag == 3) return std::to_string(bits) + "-bit float";
  if (tag == 6) return "A-law";
  if (tag == 7) return "u-law";
  return "compressed or unusual";
}

}  // namespace

WavReader::WavReader(const std::string& path) {
  const std::string name = "input " + quoted(path);
  f_ = std::fopen(path.c_str(), "rb");
  if (!f_) throw Error("cannot open " + name + ": " + std::strerror(errno));
  // The errors a user can meet come first: a directory, an unreadable or empty file.
  uint8_t head[12];
  const size_t got = std::fread(head, 1, sizeof head, f_);
  const int err = std::ferror(f_) ? errno : 0;
  if (err == EISDIR || (got == 0 && is_directory(path))) {
    throw Error(name + " is a directory, not a WAV file");
  }
  if (err != 0) throw Error("cannot read " + name + ": " + std::strerror(err));
  if (got == 0) throw Error(name + " is empty (0 bytes)");
  const auto starts_with = [&](const char* magic) {
    const size_t n = std::strlen(magic);
    return got >= n && std::memcmp(head, magic, n) == 0;
  };
  if (got < 12 || !starts_with("RIFF") || std::memcmp(head + 8, "WAVE", 4) != 0) {
    for (const char* audio : {"FORM", "fLaC", "OggS", "ID3", "caff", ".snd", "RF64"}) {
      if (starts_with(audio)) {
        throw Error(name + " is audio but not a WAV file; convert it to a 16-bit mono 48 kHz WAV");
      }
    }
    throw Error(name + " is not a WAV audio file (no RIFF/WAVE header)");
  }
  if (std::fseek(f_, 0, SEEK_END) != 0)
    throw Error("cannot read " + name + ": " + std::strerror(errno));
  const long end = std::ftell(f_);
  if (end < 0) throw Error("cannot read " + name + ": " + std::strerror(errno));
  const size_t length = static_cast<size_t>(end);
  // The `n` bytes at `at`, all of them or an error.
  const auto bytes_at = [&](size_t at, uint8_t* to, size_t n) {
    if (std::fseek(f_, static_cast<long>(at), SEEK_SET) != 0 || std::fread(to, 1, n, f_) != n) {
      throw Error("cannot read " + name + ": " + std::strerror(errno));
    }
  };
  // Chunks: a four-letter id, a 32-bit size, the data padded to an even length.
  uint8_t fmt[40] = {};
  bool has_fmt = false, has_data = false;
  uint32_t fmt_size = 0;
  size_t data_at = 0, data_size = 0, declared = 0;
  for (size_t at = 12; at + 8 <= length;) {
    uint8_t chunk[8];
    bytes_at(at, chunk, sizeof chunk);
    const size_t size = le(chunk + 4, 4), room = length - at - 8;
    if (std::memcmp(chunk, "fmt ", 4) == 0 && size >= 16 && size <= room) {
      fmt_size = static_cast<uint32_t>(size);
      bytes_at(at + 8, fmt, std::min(size, sizeof fmt));
      has_fmt = true;
    } else if (std::memcmp(chunk, "data", 4) == 0) {
      has_data = true;
      data_at = at + 8;
      declared = size;
      data_size = std::min(size, room);  // a truncated file: what is there
      break;
    }
    if (size >= room) break;  // compared first: a 32-bit size_t must not wrap
    at += 8 + size + (size & 1u);
  }
  if (!has_fmt) throw Error(name + " is not a WAV audio file (no format chunk)");
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
  if (!has_data || declared == 0) throw Error(name + " holds no samples");
  bits_ = static_cast<int>(bits);
  left_ = data_size / (bits / 8);
  size_ = left_;
  if (size_ == 0) throw Error(name + " holds no readable samples (truncated?)");
  if (std::fseek(f_, static_cast<long>(data_at), SEEK_SET) != 0) {
    throw Error("cannot read " + name + ": " + std::strerror(errno));
  }
  name_ = name;
}

WavReader::~WavReader() {
  if (f_) std::fclose(f_);
}

size_t WavReader::read(int16_t* s16, int32_t* s24, size_t n) {
  const size_t width = static_cast<size_t>(bits_ / 8);
  size_t done = 0;
  uint8_t chunk[3 * 4096];
  while (done < n && left_ > 0) {
    const size_t want = std::min({n - done, left_, sizeof chunk / width});
    if (std::fread(chunk, width, want, f_) != want) {
      throw Error("cannot read " + name_ + ": " + std::strerror(errno));
    }
    for (size_t i = 0; i < want; ++i) {
      if (bits_ == 16) {
        s16[done + i] = static_cast<int16_t>(le(chunk + 2 * i, 2));
      } else {
        // Sign-extend: the top byte goes to bits 24..31, then an arithmetic shift back.
        s24[done + i] = static_cast<int32_t>(le(chunk + 3 * i, 3) << 8) >> 8;
      }
    }
    done += want;
    left_ -= want;
  }
  return done;
}

Pcm read_wav(const std::string& path) {
  WavReader r(path);
  Pcm pcm;
  pcm.bits = r.bits();
  if (r.bits() == 16) {
    pcm.s16.resize(r.size());
  } else {
    pcm.s24.resize(r.size());
  }
  r.read(pcm.s16.data(), pcm.s24.data(), r.size());
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

void write_wav_header(PendingFile& out, int bits, size_t samples) {
  const uint32_t width = static_cast<uint32_t>(bits / 8);
  const uint32_t data = static_cast<uint32_t>(samples) * width;
  std::vector<uint8_t> b;
  b.insert(b.end(), {'R', 'I', 'F', 'F'});
  put_le(b, 36 + data, 4);
  b.insert(b.end(), {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '});
  put_le(b, 16, 4);
  put_le(b, 1, 2);  // PCM
  put_le(b, 1, 2);  // mono
  put_le(b, static_cast<uint32_t>(kInRate), 4);
  put_le(b, static_cast<uint32_t>(kInRate) * width, 4);  // bytes per second
  put_le(b, width, 2);                                   // bytes per frame
  put_le(b, static_cast<uint32_t>(bits), 2);
  b.insert(b.end(), {'d', 'a', 't', 'a'});
  put_le(b, data, 4);
  std::fwrite(b.data(), 1, b.size(), out.file());
}

void write_samples(PendingFile& out, int bits, const int16_t* s16, const int32_t* s24, size_t n) {
  const int width = bits / 8;
  std::vector<uint8_t> b;
  b.reserve(3 * 4096);
  for (size_t i = 0; i < n; ++i) {
    put_le(b, bits == 16 ? static_cast<uint32_t>(s16[i]) : static_cast<uint32_t>(s24[i]), width);
    if (b.size() >= 3 * 4096) {
      std::fwrite(b.data(), 1, b.size(), out.file());
      b.clear();
    }
  }
  std::fwrite(b.data(), 1, b.size(), out.file());
}

void write_wav(PendingFile& out, const Pcm& pcm) {
  write_wav_header(out, pcm.bits, pcm.size());
  write_samples(out, pcm.bits, pcm.s16.data(), pcm.s24.data(), pcm.size());
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
