#!/bin/sh
# Runs a Cortex-M33 ELF under QEMU (mps2-an505) with semihosting: the program's
# arguments go through -semihosting-config (QEMU would parse them otherwise),
# its stdout/stderr arrive on ours and its exit status becomes ours.
# A GoogleTest run passes only with status 0 AND gtest's final "[  PASSED  ]"
# line: a run that dies quietly must not count as a pass.
set -u
elf="$1"
shift
cfg="enable=on,target=native,arg=$elf"
listing=no
for a in "$@"; do
  case "$a" in --gtest_list_tests*) listing=yes ;; esac
  cfg="$cfg,arg=$(printf '%s' "$a" | sed 's/,/,,/g')"
done
run() {
  timeout "${QEL_QEMU_TIMEOUT:-600}" qemu-system-arm -M mps2-an505 -cpu cortex-m33 \
    -nographic -monitor none -serial none ${QEL_QEMU_EXTRA:-} \
    -semihosting-config "$cfg" -kernel "$elf"
}
case "$(basename "$elf")" in
  *_test | *_tests)
    if [ "$listing" = yes ]; then
      run
      exit $?
    fi
    out=$(mktemp)
    run >"$out" 2>&1
    status=$?
    cat "$out"
    if [ "$status" -eq 0 ] && ! grep -q '^\[  PASSED  \]' "$out"; then
      echo "qemu-m33.sh: exit status 0 but no '[  PASSED  ]' line: counted as a failure"
      status=1
    fi
    rm -f "$out"
    exit "$status"
    ;;
  *)
    run
    ;;
esac
