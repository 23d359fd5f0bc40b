#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# locked_update_test.sh COUNT COMMAND...: 4 processes, two of them by way of a symbolic link, add
# COUNT each; none may be lost. COMMAND may be the Windows program, by way of Wine.
set -euo pipefail
count=$1
shift
program=("$@")
last=${program[-1]}
program[-1]=$(realpath "$last")
end=
[ "${last%.exe}" = "$last" ] || end=$'\r' # the text mode's line end
work=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d) # so many flushes cost seconds on a disk
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
cd "$work"
failed=0
fail() { echo "FAILED: $*"; failed=1; }
skip() { echo "NOT TRIED: $*"; }
lines() { printf "%s$end\n" "$@"; }

mkdir folder links
lines '# shared' counter=0 >folder/file
ln -s ../folder/file links/link
pids=()
for name in folder/file links/link "folder/../folder/file" links/link; do
  "${program[@]}" "$name" counter "$count" &
  pids+=($!)
done
for pid in "${pids[@]}"; do wait "$pid"; done
lines '# shared' counter=$((4 * count)) | diff -u - folder/file || fail "updates were lost"
echo "4 processes, $count updates each, by name and by link: $(grep counter folder/file)"
[ "$(ls -A links)" = link ] || fail "a companion is named after the link: $(ls -A links)"

# An entry that is added begins a line of its own.
printf 'a=1' >short
"${program[@]}" short counter 1
cmp short <(lines a=1 counter=1) || fail "a missing last line feed: $(cat -A short)"

[ -z "$end" ] || exit $failed

# Whoever may write the file may open its companion, whoever was first, and nobody else.
lines counter=0 >file
for mode in 600 660 664 640 4755; do
  rm -f file.lock
  chmod $mode file
  (umask 077 && "${program[@]}" file counter 1)
  want=$(printf '%o' $((8#$mode & 8#666)))
  [ "$(stat -c %a file.lock)" = "$want" ] ||
    fail "the companion of a file of mode $mode has $(stat -c %a file.lock), not $want"
done
if [ "$(id -u)" -eq 0 ]; then
  as_user() { setpriv --reuid 65534 --regid 65534 --clear-groups "$@"; }
  chmod 777 folder
  chown 65534:65534 folder/file
  rm folder/file.lock
  "${program[@]}" folder/file counter 1 # as root, first
  if as_user test -x "${program[0]}"; then
    as_user "${program[@]}" folder/file counter 1 || fail "its owner cannot open a companion that root has made"
  else
    skip "an update by another user (it cannot start the program)"
  fi
else
  skip "a companion made by another user (not root)"
fi
exit $failed
