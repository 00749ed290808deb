#!/bin/sh
# Format and static checks: clang-format on the library, tests, benchmarks and
# examples and bindings; clang-tidy on the library sources (host build with
# the contract checks compiled in).
set -eu
cd "$(dirname "$0")/.."
# The file set is found, not asked of git: a release tarball has no .git
# and a fresh machine may have no git.
sources() {
  find "$@" -type f \( -name '*.h' -o -name '*.hpp' -o -name '*.cpp' -o -name '*.c' \) \
    -not -path '*/build/*' | sort
}
files=$(sources dsp tests bench examples python)
# shellcheck disable=SC2086
clang-format --dry-run --Werror $files
echo "clang-format: clean ($(echo "$files" | wc -w) files)"
# The checked build compiles every contract check as well as the kernels.
cmake --preset host-checked -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null
lib=$(sources dsp/sdk/matrix dsp/sdk/port/hosted | grep '\.cpp$')
# shellcheck disable=SC2086
clang-tidy --quiet -p build/host-checked $lib 2>&1 | grep -v -E '^[0-9]+ warnings? generated|Suppressed|Use -header-filter|^$' || true
# shellcheck disable=SC2086
clang-tidy --quiet -p build/host-checked $lib >/dev/null 2>&1
echo "clang-tidy: clean ($(echo "$lib" | wc -w) library files)"
