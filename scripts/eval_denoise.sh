#!/bin/sh
# Evaluates qel-denoise against the noisy input and Debian's speexdsp preprocessor
# on espeak-ng speech and a recorded voice (alsa-utils' spoken channel names) in
# white, pink, brown and babble noise at 5 and 0 dB SNR, and prints the table.
# Not part of the tests: it takes a minute or two.
# Options go to examples/denoise/eval/eval_denoise.py (--jobs N, --work DIR).
set -eu
cd "$(dirname "$0")/.."
./scripts/setup.sh espeak-ng libspeexdsp-dev alsa-utils
log=build/eval-build.log
mkdir -p build/eval
{ cmake --preset host && cmake --build --preset host --target qel-denoise qel-denoise-score &&
  cc -O2 -Wall -Wextra -o build/eval/speex_anchor examples/denoise/eval/speex_anchor.c \
    $(pkg-config --cflags --libs speexdsp); } >"$log" 2>&1 || {
  cat "$log"
  echo "eval_denoise.sh: the build failed (log above)" >&2
  exit 1
}
# Debian's interpreter: the packaged numpy and scipy live there.
exec /usr/bin/python3 examples/denoise/eval/eval_denoise.py "$@"
