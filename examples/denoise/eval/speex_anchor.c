/* SPDX-License-Identifier: MIT
 * The evaluation's anchor: Debian's libspeexdsp preprocessor with its default
 * settings (noise suppression on), over raw 16 kHz 16-bit mono in frames of
 * 256 samples (16 ms, the hop of qel-denoise).
 * usage: speex_anchor IN.raw OUT.raw */
#include <speex/speex_preprocess.h>
#include <stdio.h>

enum { kFrame = 256, kRate = 16000 };

int main(int argc, char** argv) {
  if (argc != 3) {
    fputs("usage: speex_anchor IN.raw OUT.raw\n", stderr);
    return 2;
  }
  FILE* in = fopen(argv[1], "rb");
  FILE* out = fopen(argv[2], "wb");
  if (!in || !out) {
    perror("speex_anchor");
    return 1;
  }
  SpeexPreprocessState* st = speex_preprocess_state_init(kFrame, kRate);
  spx_int16_t frame[kFrame];
  size_t n;
  while ((n = fread(frame, sizeof frame[0], kFrame, in)) > 0) {
    for (size_t i = n; i < kFrame; ++i) frame[i] = 0;
    speex_preprocess_run(st, frame);
    fwrite(frame, sizeof frame[0], n, out);
  }
  speex_preprocess_state_destroy(st);
  fclose(in);
  return fclose(out) == 0 ? 0 : 1;
}
