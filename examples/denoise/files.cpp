// SPDX-License-Identifier: MIT
// WAV input through libsndfile with one-line refusals; outputs written to a
// temporary name and renamed on success.
#include "files.h"

#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "pipeline.h"

namespace denoise {
namespace {

std::string quoted(const std::string& s) { return "'" + s + "'"; }

std::string sample_format_name(int subtype) {
  switch (subtype) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
      return "8-bit PCM";
    case SF_FORMAT_PCM_32:
      return "32-bit PCM";
    case SF_FORMAT_FLOAT:
      return "32-bit float";
    case SF_FORMAT_DOUBLE:
      return "64-bit float";
    case SF_FORMAT_ULAW:
      return "u-law";
    case SF_FORMAT_ALAW:
      return "A-law";
    default:
      return "compressed or unusual";
  }
}

struct SndFile {
  SNDFILE* f = nullptr;
  ~SndFile() {
    if (f) sf_close(f);
  }
};

}  // namespace

Pcm read_wav(const std::string& path) {
  const std::string name = "input " + quoted(path);
  struct stat st {};
  if (stat(path.c_str(), &st) != 0)
    throw Error("cannot open " + name + ": " + std::strerror(errno));
  if (S_ISDIR(st.st_mode)) throw Error(name + " is a directory, not a WAV file");
  if (st.st_size == 0) throw Error(name + " is empty (0 bytes)");
  if (access(path.c_str(), R_OK) != 0) {
    throw Error("cannot read " + name + ": " + std::strerror(errno));
  }
  SF_INFO info{};
  SndFile in;
  in.f = sf_open(path.c_str(), SFM_READ, &info);
  if (!in.f) {
    throw Error(name + " is not a WAV audio file (" + sf_strerror(nullptr) + ")");
  }
  const int major = info.format & SF_FORMAT_TYPEMASK;
  const int subtype = info.format & SF_FORMAT_SUBMASK;
  if (major != SF_FORMAT_WAV && major != SF_FORMAT_WAVEX) {
    throw Error(name + " is audio but not a WAV file; convert it to a 16-bit mono 48 kHz WAV");
  }
  if (info.channels != 1) {
    throw Error(name + " has " + std::to_string(info.channels) +
                " channels; only mono is supported (mix it down first)");
  }
  if (info.samplerate != kInRate) {
    throw Error(name + " is sampled at " + std::to_string(info.samplerate) +
                " Hz; only 48000 Hz is supported (resample it first)");
  }
  Pcm pcm;
  if (subtype == SF_FORMAT_PCM_16) {
    pcm.bits = 16;
  } else if (subtype == SF_FORMAT_PCM_24) {
    pcm.bits = 24;
  } else {
    throw Error(name + " holds " + sample_format_name(subtype) +
                " samples; only 16-bit or 24-bit PCM is supported");
  }
  if (info.frames <= 0) throw Error(name + " holds no samples");
  const auto frames = static_cast<size_t>(info.frames);
  sf_count_t got = 0;
  if (pcm.bits == 16) {
    pcm.s16.resize(frames);
    got = sf_read_short(in.f, pcm.s16.data(), info.frames);
    pcm.s16.resize(static_cast<size_t>(got > 0 ? got : 0));
  } else {
    // libsndfile hands 24-bit samples left-justified in 32 bits: shift them
    // back to the sign-extended 24-bit integers the library's 24-bit path takes.
    pcm.s24.resize(frames);
    got = sf_read_int(in.f, pcm.s24.data(), info.frames);
    pcm.s24.resize(static_cast<size_t>(got > 0 ? got : 0));
    for (int32_t& s : pcm.s24) s >>= 8;
  }
  if (got <= 0) throw Error(name + " holds no readable samples (truncated?)");
  return pcm;
}

PendingFile::PendingFile(std::string path) : path_(std::move(path)) {
  struct stat st {};
  if (stat(path_.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) {
    throw Error("cannot write output " + quoted(path_) + ": it is a directory");
  }
  const size_t slash = path_.rfind('/');
  const std::string dir = (slash == std::string::npos) ? "" : path_.substr(0, slash + 1);
  const std::string base = (slash == std::string::npos) ? path_ : path_.substr(slash + 1);
  std::string tmpl = dir + "." + base + ".tmp-XXXXXX";
  fd_ = mkstemp(tmpl.data());
  if (fd_ < 0) {
    throw Error("cannot write output " + quoted(path_) + ": " + std::strerror(errno));
  }
  tmp_ = tmpl;
}

PendingFile::~PendingFile() {
  if (fd_ >= 0) close(fd_);
  if (!committed_) unlink(tmp_.c_str());
}

void PendingFile::commit() {
  if (fd_ >= 0) {
    close(fd_);
    fd_ = -1;
  }
  // mkstemp makes the file private; give it the usual permissions.
  const mode_t mask = umask(0);
  umask(mask);
  chmod(tmp_.c_str(), 0666 & ~mask);
  if (rename(tmp_.c_str(), path_.c_str()) != 0) {
    throw Error("cannot write output " + quoted(path_) + ": " + std::strerror(errno));
  }
  committed_ = true;
}

void write_wav(PendingFile& out, const Pcm& pcm) {
  SF_INFO info{};
  info.samplerate = kInRate;
  info.channels = 1;
  info.format = SF_FORMAT_WAV | (pcm.bits == 16 ? SF_FORMAT_PCM_16 : SF_FORMAT_PCM_24);
  SndFile f;
  f.f = sf_open_fd(out.fd(), SFM_WRITE, &info, SF_TRUE);
  if (!f.f) {
    throw Error("cannot write output " + quoted(out.path()) + ": " + sf_strerror(nullptr));
  }
  out.release_fd();  // libsndfile closes it
  const auto n = static_cast<sf_count_t>(pcm.size());
  sf_count_t put = 0;
  if (pcm.bits == 16) {
    put = sf_write_short(f.f, pcm.s16.data(), n);
  } else {
    std::vector<int32_t> left(pcm.s24.size());
    for (size_t i = 0; i < left.size(); ++i) {
      left[i] = static_cast<int32_t>(static_cast<uint32_t>(pcm.s24[i]) << 8);
    }
    put = sf_write_int(f.f, left.data(), n);
  }
  const int closed = sf_close(f.f);
  f.f = nullptr;
  if (put != n || closed != 0) {
    throw Error("cannot write output " + quoted(out.path()) + ": " + sf_strerror(nullptr));
  }
}

bool same_file(const std::string& a, const std::string& b) {
  struct stat sa {
  }, sb{};
  if (stat(a.c_str(), &sa) != 0 || stat(b.c_str(), &sb) != 0) return false;
  return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

}  // namespace denoise
