#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# locked_update_test.sh PROGRAM: 4 processes add 300 each; none of the 1200 may be lost.
set -euo pipefail
program=$(realpath "$1")
work=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)  # 1200 flushes cost seconds on a disk
trap 'rm -rf "$work"' EXIT
cd "$work"
printf '# shared\ncounter=0\n' >file
pids=()
for _ in 1 2 3 4; do
  "$program" file counter 300 &
  pids+=($!)
done
for pid in "${pids[@]}"; do wait "$pid"; done
printf '# shared\ncounter=1200\n' | diff -u - file
echo "4 processes, 300 increments each: $(grep counter file)"
