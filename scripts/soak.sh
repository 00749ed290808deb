#!/bin/sh
# Randomized differential soak on the host: every test binary's randomized
# tests (suites named *Diff*) against the plain references, with fresh seeds.
# usage: scripts/soak.sh [seconds-per-test] [seed]   (defaults: 5, from the clock)
set -eu
cd "$(dirname "$0")/.."
seconds="${1:-5}"
seed="${2:-$(date +%s)}"
echo "soak: seed $seed, $seconds s per randomized test (replay: scripts/soak.sh $seconds $seed)"
cmake --preset host >/dev/null
cmake --build --preset host >/dev/null
log=$(mktemp)
status=0
for t in build/host/tests/*_test; do
  if "$t" --gtest_filter='*Diff*' --gtest_brief=1 "--qel_seed=$seed" "--qel_seconds=$seconds" >"$log" 2>&1; then
    # Binaries without randomized tests run nothing here; name only those that did.
    rounds=$(grep -c '^\[ soak' "$log" || true)
    if [ "$rounds" -gt 0 ]; then echo "soak: $(basename "$t"): $rounds rounds passed"; fi
  else
    # The last seed line before the failure replays it with --qel_rounds=1.
    cat "$log"
    status=1
  fi
done
rm -f "$log"
[ "$status" -eq 0 ] && echo "soak: passed"
exit "$status"
