// SPDX-License-Identifier: MIT
// Spectrogram columns and their rendering to an indexed-colour PNG with libpng
// (host builds only: the device has no libpng).
#include "spectrogram.h"

#if QEL_DENOISE_PNG
#include <png.h>
#endif

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

namespace denoise {

Spectrogram::Spectrogram(int frames, int bins, int columns)
    : frames_(std::max(frames, 1)),
      bins_(bins),
      columns_(columns),
      sum_(static_cast<size_t>(bins) * static_cast<size_t>(columns), 0.0),
      count_(static_cast<size_t>(columns), 0) {}

void Spectrogram::add(int frame, const float* power) {
  const int c = static_cast<int>(static_cast<long long>(frame) * columns_ / frames_);
  if (c < 0 || c >= columns_) return;
  double* col = &sum_[static_cast<size_t>(c) * static_cast<size_t>(bins_)];
  for (int b = 0; b < bins_; ++b) col[b] += static_cast<double>(power[b]);
  ++count_[static_cast<size_t>(c)];
}

double Spectrogram::at(int column, int bin) const {
  int c = column;
  while (c > 0 && count_[static_cast<size_t>(c)] == 0) --c;
  const int n = count_[static_cast<size_t>(c)];
  if (n == 0) return 0.0;
  return sum_[static_cast<size_t>(c) * static_cast<size_t>(bins_) + static_cast<size_t>(bin)] / n;
}

#if QEL_DENOISE_PNG
namespace {

// Palette: kRamp colours from black through purple and orange to pale yellow
// (more steps look the same and compress worse), then the page colours.
constexpr int kRamp = 96;
constexpr uint8_t kWhite = kRamp, kInk = kRamp + 1;
constexpr int kColours = kRamp + 2;

std::array<png_color, kColours> palette() {
  constexpr double stops[][3] = {
      {0, 0, 4}, {87, 16, 110}, {188, 55, 84}, {249, 142, 9}, {252, 255, 164}};
  std::array<png_color, kColours> p{};
  for (int i = 0; i < kRamp; ++i) {
    const double x = 4.0 * i / (kRamp - 1);
    const int s = std::min(static_cast<int>(x), 3);
    const double t = x - s;
    auto mix = [&](int ch) {
      return static_cast<png_byte>(
          std::lround(stops[s][ch] + t * (stops[s + 1][ch] - stops[s][ch])));
    };
    p[static_cast<size_t>(i)] = png_color{mix(0), mix(1), mix(2)};
  }
  p[kWhite] = png_color{255, 255, 255};
  p[kInk] = png_color{20, 20, 20};
  return p;
}

// A 5x7 pixel font for the few characters the labels use.
struct Glyph {
  char c;
  const char* rows[7];
};
constexpr Glyph kFont[] = {
    {'0', {" ### ", "#   #", "#  ##", "# # #", "##  #", "#   #", " ### "}},
    {'1', {"  #  ", " ##  ", "  #  ", "  #  ", "  #  ", "  #  ", " ### "}},
    {'2', {" ### ", "#   #", "    #", "   # ", "  #  ", " #   ", "#####"}},
    {'3', {"#####", "   # ", "  #  ", "   # ", "    #", "#   #", " ### "}},
    {'4', {"   # ", "  ## ", " # # ", "#  # ", "#####", "   # ", "   # "}},
    {'5', {"#####", "#    ", "#### ", "    #", "    #", "#   #", " ### "}},
    {'6', {"  ## ", " #   ", "#    ", "#### ", "#   #", "#   #", " ### "}},
    {'7', {"#####", "    #", "   # ", "  #  ", " #   ", " #   ", " #   "}},
    {'8', {" ### ", "#   #", "#   #", " ### ", "#   #", "#   #", " ### "}},
    {'9', {" ### ", "#   #", "#   #", " ####", "    #", "   # ", " ##  "}},
    {'A', {" ### ", "#   #", "#   #", "#####", "#   #", "#   #", "#   #"}},
    {'B', {"#### ", "#   #", "#   #", "#### ", "#   #", "#   #", "#### "}},
    {'D', {"#### ", "#   #", "#   #", "#   #", "#   #", "#   #", "#### "}},
    {'E', {"#####", "#    ", "#    ", "#### ", "#    ", "#    ", "#####"}},
    {'H', {"#   #", "#   #", "#   #", "#####", "#   #", "#   #", "#   #"}},
    {'I', {" ### ", "  #  ", "  #  ", "  #  ", "  #  ", "  #  ", " ### "}},
    {'K', {"#   #", "#  # ", "# #  ", "##   ", "# #  ", "#  # ", "#   #"}},
    {'L', {"#    ", "#    ", "#    ", "#    ", "#    ", "#    ", "#####"}},
    {'N', {"#   #", "##  #", "# # #", "#  ##", "#   #", "#   #", "#   #"}},
    {'O', {" ### ", "#   #", "#   #", "#   #", "#   #", "#   #", " ### "}},
    {'P', {"#### ", "#   #", "#   #", "#### ", "#    ", "#    ", "#    "}},
    {'Q', {" ### ", "#   #", "#   #", "#   #", "# # #", "#  # ", " ## #"}},
    {'R', {"#### ", "#   #", "#   #", "#### ", "# #  ", "#  # ", "#   #"}},
    {'S', {" ####", "#    ", "#    ", " ### ", "    #", "    #", "#### "}},
    {'T', {"#####", "  #  ", "  #  ", "  #  ", "  #  ", "  #  ", "  #  "}},
    {'U', {"#   #", "#   #", "#   #", "#   #", "#   #", "#   #", " ### "}},
    {'Y', {"#   #", "#   #", " # # ", "  #  ", "  #  ", "  #  ", "  #  "}},
    {'Z', {"#####", "    #", "   # ", "  #  ", " #   ", "#    ", "#####"}},
    {'(', {"   # ", "  #  ", " #   ", " #   ", " #   ", "  #  ", "   # "}},
    {')', {" #   ", "  #  ", "   # ", "   # ", "   # ", "  #  ", " #   "}},
    {'.', {"     ", "     ", "     ", "     ", "     ", " ##  ", " ##  "}},
    {'-', {"     ", "     ", "     ", "#####", "     ", "     ", "     "}},
};
constexpr int kScale = 2;             // font pixels per glyph pixel
constexpr int kAdvance = 6 * kScale;  // glyph width plus one column of space
constexpr int kTextHeight = 7 * kScale;

class Canvas {
 public:
  Canvas(int w, int h)
      : w_(w), h_(h), px_(static_cast<size_t>(w) * static_cast<size_t>(h), kWhite) {}
  void set(int x, int y, uint8_t c) {
    if (x >= 0 && x < w_ && y >= 0 && y < h_) px_[static_cast<size_t>(y) * w_ + x] = c;
  }
  void text(int x, int y, const std::string& s) {
    for (char ch : s) {
      for (const Glyph& g : kFont) {
        if (g.c != ch) continue;
        for (int r = 0; r < 7; ++r) {
          for (int c = 0; c < 5; ++c) {
            if (g.rows[r][c] != '#') continue;
            for (int dy = 0; dy < kScale; ++dy) {
              for (int dx = 0; dx < kScale; ++dx)
                set(x + c * kScale + dx, y + r * kScale + dy, kInk);
            }
          }
        }
      }
      x += kAdvance;
    }
  }
  int width() const { return w_; }
  int height() const { return h_; }
  const uint8_t* row(int y) const { return &px_[static_cast<size_t>(y) * w_]; }

 private:
  int w_, h_;
  std::vector<uint8_t> px_;
};

int text_width(const std::string& s) { return static_cast<int>(s.size()) * kAdvance - kScale; }

std::string fixed1(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.1f", v);
  return buf;
}

constexpr double kRangeDb = 70.0;

void draw_panel(Canvas& cv, int x0, int y0, const Spectrogram& s, double ref_db,
                const std::string& title, double seconds, double top_hz) {
  const int w = s.columns(), h = s.bins();
  cv.text(x0 + (w - text_width(title)) / 2, y0 - kTextHeight - 10, title);
  for (int c = 0; c < w; ++c) {
    for (int b = 0; b < h; ++b) {
      const double db = 10.0 * std::log10(s.at(c, b) + 1e-30);
      const double t = std::clamp((db - (ref_db - kRangeDb)) / kRangeDb, 0.0, 1.0);
      cv.set(x0 + c, y0 + (h - 1 - b), static_cast<uint8_t>(std::lround(t * (kRamp - 1))));
    }
  }
  // Frequency ticks every 2 kHz on the left edge, time ticks every second below.
  for (int khz = 0; khz * 1000.0 <= top_hz; khz += 2) {
    const int y = y0 + (h - 1) - static_cast<int>(std::lround(khz * 1000.0 / top_hz * (h - 1)));
    for (int d = 1; d <= 5; ++d) cv.set(x0 - d, y, kInk);
  }
  const double step = (seconds > 20.0) ? std::ceil(seconds / 10.0) : 1.0;
  for (double t = 0.0; t <= seconds + 1e-9; t += step) {
    const int x = x0 + static_cast<int>(std::lround(t / std::max(seconds, 1e-9) * (w - 1)));
    for (int d = 1; d <= 5; ++d) cv.set(x, y0 + h - 1 + d, kInk);
  }
  const std::string end = fixed1(seconds) + " S";
  cv.text(x0, y0 + h + 8, "0");
  cv.text(x0 + w - text_width(end), y0 + h + 8, end);
}

}  // namespace

void write_png(PendingFile& out, const Spectrogram& in, const Spectrogram& outp, double seconds,
               double top_hz) {
  double ref = -300.0;
  for (int c = 0; c < in.columns(); ++c) {
    for (int b = 0; b < in.bins(); ++b) ref = std::max(ref, 10.0 * std::log10(in.at(c, b) + 1e-30));
  }
  const int left = 80, top = 40, gap = 40, right = 20, bottom = 40;
  const int w = in.columns(), h = in.bins();
  Canvas cv(left + 2 * w + gap + right, top + h + bottom);
  draw_panel(cv, left, top, in, ref, "INPUT", seconds, top_hz);
  draw_panel(cv, left + w + gap, top, outp, ref, "OUTPUT (QEL-DENOISE)", seconds, top_hz);
  const std::string khz = std::to_string(static_cast<int>(std::lround(top_hz / 1000.0))) + " KHZ";
  cv.text(left - 10 - text_width(khz), top, khz);
  cv.text(left - 10 - text_width("0 HZ"), top + h - kTextHeight, "0 HZ");
  const std::string range = std::to_string(-static_cast<int>(kRangeDb)) + " TO 0 DB";
  cv.text(cv.width() - right - text_width(range), top + h + 8 + kTextHeight + 4, range);

  FILE* f = out.file();
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (!png || !info || setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    throw Error("cannot write output '" + out.path() + "': PNG encoding failed");
  }
  png_init_io(png, f);
  png_set_IHDR(png, info, static_cast<png_uint_32>(cv.width()),
               static_cast<png_uint_32>(cv.height()), 8, PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  const auto pal = palette();
  png_set_PLTE(png, info, pal.data(), static_cast<int>(pal.size()));
  png_set_compression_level(png, 9);
  png_write_info(png, info);
  for (int y = 0; y < cv.height(); ++y) png_write_row(png, cv.row(y));
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  out.close();
}

#else

void write_png(PendingFile& out, const Spectrogram&, const Spectrogram&, double, double) {
  throw Error("cannot write output '" + out.path() + "': this build writes no PNG");
}

#endif  // QEL_DENOISE_PNG

}  // namespace denoise
