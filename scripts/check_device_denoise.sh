#!/bin/sh
# qel-denoise on the Cortex-M33 (QEMU) must write the very bytes the host build
# writes: the embedded default and a WAV file, 16-bit and 24-bit, and refuse a
# bad input with the same line, the same exit status and no file.
# Usage: scripts/check_device_denoise.sh [HOST_BUILD_DIR [M33_BUILD_DIR]]
set -eu
cd "$(dirname "$0")/.."
host="${1:-build/host}/examples/qel-denoise"
m33="${2:-build/m33}/examples/qel-denoise"
for p in "$host" "$m33"; do [ -f "$p" ] || { echo "check_device_denoise.sh: $p not built" >&2; exit 1; }; done
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

# Inputs: the embedded default's noisy signal at 16 bits; the same at 24 bits
# with the low byte filled, so every bit of the 24-bit path counts; a WAV at
# 44.1 kHz and a file that is not a WAV for the refusals. And a long recording,
# 90 s: the device streams a file through frame by frame, it could not hold it whole.
"$host" --seconds 2 --no-png -q --write-input "$tmp/in16.wav" -o "$tmp/unused.wav" >/dev/null
"$host" --seconds 90 --no-png -q --write-input "$tmp/long16.wav" -o "$tmp/unused.wav" >/dev/null
python3 - "$tmp" <<'PY'
import sys, wave
d = sys.argv[1]
with wave.open(d + "/in16.wav", "rb") as w:
    frames = w.readframes(w.getnframes())
s16 = [int.from_bytes(frames[i:i + 2], "little", signed=True) for i in range(0, len(frames), 2)]
with wave.open(d + "/in24.wav", "wb") as w:
    w.setnchannels(1), w.setsampwidth(3), w.setframerate(48000)
    w.writeframes(b"".join(((s << 8) | (i * 37 & 255)).to_bytes(3, "little", signed=True)
                           for i, s in enumerate(s16)))
with wave.open(d + "/cd.wav", "wb") as w:
    w.setnchannels(1), w.setsampwidth(2), w.setframerate(44100), w.writeframes(frames[:9600])
open(d + "/notes.wav", "w").write("not audio\n")
PY

fail=0
# run NAME WIDTH ARGS...: both builds, outputs NAME-host.wav and NAME-m33.wav.
run() {
  name="$1" width="$2"
  shift 2
  "$host" --no-png -q "$@" -o "$tmp/$name-host.wav" >"$tmp/$name-host.out" 2>"$tmp/$name-host.err" &&
    hs=0 || hs=$?
  ./cmake/qemu-m33.sh "$m33" -q "$@" -o "$tmp/$name-m33.wav" >"$tmp/$name-m33.out" \
    2>"$tmp/$name-m33.err" && ms=0 || ms=$?
  if [ "$width" = 0 ]; then  # a refusal
    if [ "$hs" != "$ms" ] || [ "$hs" = 0 ] || ! cmp -s "$tmp/$name-host.err" "$tmp/$name-m33.err" ||
      [ -e "$tmp/$name-m33.wav" ] || [ -e "$tmp/$name-host.wav" ]; then
      echo "FAIL $name: refusals differ (status host $hs, M33 $ms; output files:" \
        "$(cd "$tmp" && echo "$name"-*.wav))"
      cat "$tmp/$name-host.err" "$tmp/$name-m33.err"
      fail=1
    else
      echo "ok   $name: same refusal and status $hs on both, no file: $(cat "$tmp/$name-m33.err")"
    fi
    return
  fi
  if [ "$hs" != 0 ] || [ "$ms" != 0 ]; then
    echo "FAIL $name: exit status host $hs, M33 $ms"
    cat "$tmp/$name-host.err" "$tmp/$name-m33.err"
    fail=1
  elif diff=$(cmp "$tmp/$name-host.wav" "$tmp/$name-m33.wav" 2>&1); then
    echo "ok   $name: host and M33 outputs identical ($(wc -c <"$tmp/$name-m33.wav") bytes)"
  else
    # cmp counts bytes from 1; samples start after the 44-byte header.
    byte=$(echo "$diff" | sed -n 's/.*differ: byte \([0-9]*\).*/\1/p')
    if [ -n "$byte" ] && [ "$byte" -gt 44 ]; then
      where="first at sample $(((byte - 45) / width)) (byte $byte)"
    else
      where="${diff#*: }"
    fi
    echo "FAIL $name: host and M33 outputs differ, $where"
    fail=1
  fi
}
run embedded 2 --seconds 2
run wav16 2 "$tmp/in16.wav"
run wav24 3 "$tmp/in24.wav"
run long16 2 "$tmp/long16.wav"
# The outputs keep the inputs' format and length: their 44-byte headers match
# the inputs' (in24.wav comes from Python's wave module, not from our writer).
for w in 16 24; do
  if cmp -s -n 44 "$tmp/in$w.wav" "$tmp/wav$w-m33.wav"; then
    echo "ok   wav$w: the output's header is the input's (format, rate, length)"
  else
    echo "FAIL wav$w: the output's header is not the input's"
    fail=1
  fi
done
run not-a-wav 0 "$tmp/notes.wav"
run rate-44100 0 "$tmp/cd.wav"
if [ "$fail" != 0 ]; then
  echo "check_device_denoise.sh: the Cortex-M33 build does not compute what the host computes" >&2
  exit 1
fi
