#!/bin/sh
# Format and static checks: clang-format on the library, tests, benchmarks and
# examples; clang-tidy on the library sources (host compile commands).
set -eu
cd "$(dirname "$0")/.."
files=$(git ls-files 'dsp/*.h' 'dsp/*.hpp' 'dsp/*.cpp' 'dsp/*.c' 'tests/*.h' 'tests/*.cpp' 'tests/*.c' \
  'bench/*.h' 'bench/*.cpp' 'examples/*.h' 'examples/*.cpp' 'examples/*.c')
# shellcheck disable=SC2086
clang-format --dry-run --Werror $files
echo "clang-format: clean ($(echo "$files" | wc -w) files)"
cmake --preset host -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
lib=$(git ls-files 'dsp/sdk/matrix/*.cpp' 'dsp/sdk/port/hosted/*.cpp')
# shellcheck disable=SC2086
clang-tidy --quiet -p build/host $lib 2>&1 | grep -v -E '^[0-9]+ warnings? generated|Suppressed|Use -header-filter|^$' || true
# shellcheck disable=SC2086
clang-tidy --quiet -p build/host $lib >/dev/null 2>&1
echo "clang-tidy: clean ($(echo "$lib" | wc -w) library files)"
