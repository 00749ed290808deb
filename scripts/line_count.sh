#!/bin/sh
# Non-blank lines of C, C++ and Python in the tests and in the code they test,
# and the tests' share of all lines. Works without git (a release tarball).
#   tests: tests/, python/tests/, examples/**/*_test.cpp
#   code:  dsp/, examples/ (less its tests), python/src/, bench/, scripts/*.py
set -eu
cd "$(dirname "$0")/.."
sources() {
  find "$@" -type f \( -name '*.c' -o -name '*.h' -o -name '*.cpp' -o -name '*.hpp' \
    -o -name '*.py' \) -not -path '*/build/*' -not -path '*/__pycache__/*' | sort
}
count() {
  # shellcheck disable=SC2046
  set -- $(cat)
  [ "$#" -eq 0 ] && { echo 0; return; }
  cat "$@" | grep -c -v '^[[:space:]]*$' || true
}
tests=$({ sources tests python/tests; sources examples | grep '_test\.cpp$'; } | count)
code=$({ sources dsp python/src bench scripts; sources examples | grep -v '_test\.cpp$'; } | count)
echo "### Lines (non-blank; C, C++ and Python)"
echo
echo "| part | lines |"
echo "|---|---:|"
echo "| tests | $tests |"
echo "| code | $code |"
awk -v t="$tests" -v c="$code" 'BEGIN { printf "| tests / (tests + code) | %.1f %% |\n", 100 * t / (t + c) }'
