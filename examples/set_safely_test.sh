#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# set_safely_test.sh KILLS COMMAND...: kills the program inside its saves, fills its disk, gives it
# files that cannot be replaced, fails each of its system calls, and looks at what became of the
# file. COMMAND may be the Windows program, by way of Wine.
set -euo pipefail
kills=$1
shift
program=("$@")
last=${program[-1]}
program[-1]=$(realpath "$last")
windows=false
[ "${last%.exe}" = "$last" ] || windows=true
end=
! $windows || end=$'\r' # the text mode's line end
work=$(mktemp -d)
chmod 755 "$work"
trap 'chmod -R u+rwX "$work"; rm -rf "$work"' EXIT
cd "$work"
failed=0
fail() { echo "FAILED: $*"; failed=1; }
skip() { echo "NOT TRIED: $*"; }
run() { "${program[@]}" "$@"; }
lines() { printf "%s$end\n" "$@"; }
leftovers() { compgen -G '.*.safe-save~' || true; }
same() { # WHAT EXPECTED ACTUAL
  [ "$2" = "$3" ] || fail "$1: expected '$2', found '$3'"
}

# About 200 KiB, so that a save takes a while; the entry that changes stands in the middle.
seq -f "entry%05g = some value$end" 4000 >part
original() { cat part; lines counter=0; cat part; }
counter() { sed -n 's/^counter=\([0-9]*\).*/\1/p' file; }
whole() { # the file is one that was saved: nothing but the number has changed
  sed -E 's/^counter=[0-9]+/counter=0/' file | cmp -s - <(original)
}
unchanged() { cmp -s file <(original) || fail "$1: the file has changed"; }

# Kills $2 processes that save in a loop (the program with the option $1), each after a time of its
# own: as long as it takes to start and save once, and up to 15 ms more. Prints how many left a damaged
# file, how many died inside a save, how many had saved.
kill_savers() {
  local damaged=0 inside=0 before moved=0 values pid start pause after
  values=$(seq 1 2000)
  original >file
  start=$(date +%s%N)
  # shellcheck disable=SC2086
  run $1 file counter 1 >/dev/null
  pause=$(($(date +%s%N) - start))
  original >file
  for ((n = 0; n < $2; ++n)); do
    before=$(counter)
    # shellcheck disable=SC2086
    "${program[@]}" $1 file counter $values >/dev/null & # not the function: its process would be another
    pid=$!
    after=$((pause + n % 16 * 1000000))
    sleep "$(printf '%d.%09d' $((after / 1000000000)) $((after % 1000000000)))"
    kill -KILL "$pid"
    wait "$pid" 2>/dev/null || true
    if [ -n "$(leftovers)" ]; then inside=$((inside + 1)); rm -f .*.safe-save~; fi
    if whole; then
      [ "$(counter)" = "$before" ] || moved=$((moved + 1))
    else
      damaged=$((damaged + 1))
      original >file
    fi
  done
  echo "$damaged $inside $moved"
}

read -r damaged inside moved < <(kill_savers "" "$kills")
echo "safe save: $kills kills, $moved after a save, $inside with a sibling half written, $damaged damaged files"
[ "$damaged" -eq 0 ] || fail "damaged files"
if [ "$inside" -eq 0 ] || [ "$moved" -eq 0 ]; then fail "no kill met a save"; fi
# The same with the plain save, to see that the test can tell.
read -r damaged inside moved < <(kill_savers --plain 30)
echo "plain save: 30 kills, $damaged damaged files"
[ "$damaged" -gt 0 ] || fail "the plain save was never damaged"

# What a kill has left is told by its name.
original >file
: >.file.abc123.safe-save~
run file counter 1 >said
grep -q '^left by a save .*file\.abc123\.safe-save~' said || fail "a leftover sibling was not reported"
rm -f .*.safe-save~

# A full disk, by a limit of 100 KiB: the old file and the object both live.
original >file
if (trap '' XFSZ; ulimit -f 100; run file counter 17) >said; then fail "a full disk: no failure"; fi
grep -q '^not saved: .*; in memory counter=17' said || fail "a full disk: it said: $(cat said)"
unchanged "a full disk"
same "siblings after a full disk" "" "$(leftovers)"

# An entry that is added begins a line of its own.
printf 'a=1%s\nb=2' "$end" >short
run short c 3 >/dev/null
cmp short <(lines a=1 b=2 c=3) || fail "a missing last line feed: $(cat -A short)"

# A symbolic link is followed; the folder is another one.
mkdir folder
lines counter=0 >folder/real
ln -s folder/real link
run link counter 18 >/dev/null
[ -L link ] || fail "a symbolic link was replaced"
cmp -s folder/real <(lines counter=18) || fail "a symbolic link: its file was not saved"
same "files in the link's folder" real "$(ls -A folder)"

# refused WHAT FILE: the save fails, and the file with all that belongs to it stays as it was.
refused() {
  local before
  before=$(stat -c '%F %i %a %s' "$2")
  if run "$2" counter 19 >said 2>&1; then fail "$1: was replaced"; fi
  same "$1" "$before" "$(stat -c '%F %i %a %s' "$2")"
  same "$1, siblings" "" "$(leftovers)"
}
lines counter=0 >named
ln named other-name
refused "a file with two names" named
grep -q 'hard links' said || fail "a file with two names: it said: $(cat said)"
mkdir a-folder
refused "a folder" a-folder
ln -s nowhere dangling
refused "a link to nowhere" dangling

if $windows; then
  printf 'counter=0\nb=1\n' >unix # the text mode would write CR LF
  refused "line feeds alone" unix
  printf 'counter=0\r\n\032b=1\r\n' >substitute # the text mode ends there
  refused "a byte 0x1A" substitute
  exit $failed
fi

# --- What POSIX systems have -----------------------------------------------------------------------

# Mode and owner are kept.
lines counter=0 >file
owner=$(id -u):$(id -g)
if [ "$(id -u)" -eq 0 ]; then owner=12:34; else skip "another owner's file (not root)"; fi
chown "$owner" file
chmod 4751 file
run file counter 18 >/dev/null
same "mode and owner" "4751 $owner" "$(stat -c '%a %u:%g' file)"
rm -f file

# As root: files of others, through the eyes of a user.
as_user() { setpriv --reuid 65534 --regid 65534 --clear-groups "$@"; }
if [ "$(id -u)" -eq 0 ] && as_user test -x "${program[0]}"; then
  mkdir -m 777 shared
  lines counter=0 >shared/file
  chmod 666 shared/file
  before=$(stat -c '%i %a %u:%g' shared/file)
  if as_user "${program[@]}" shared/file counter 1 >said; then fail "somebody else's file: was replaced"; fi
  same "somebody else's file" "$before" "$(stat -c '%i %a %u:%g' shared/file)"
  mkdir -m 777 closed
  lines counter=0 >closed/file
  chmod 600 closed
  if as_user "${program[@]}" closed/file counter 1 >said; then fail "a target that cannot be looked at: no failure"; fi
  same "files in a folder that cannot be looked at" file "$(ls -A closed)"
  chmod 755 shared
  chown 65534:65534 shared/file
  if as_user "${program[@]}" shared/file counter 1 >said; then fail "a folder that takes no file: no failure"; fi
  chmod 777 shared
  chmod 444 shared/file
  if as_user "${program[@]}" shared/file counter 1 >said; then fail "a write-protected file: was replaced"; fi
else
  skip "the files of others (not root, or others cannot start the program)"
fi

# A device and a pipe are no files to be replaced.
if [ "$(id -u)" -eq 0 ] && mknod device c 1 3 2>/dev/null; then
  refused "a device" device
  grep -q 'not a regular file' said || fail "a device: it said: $(cat said)"
  rm -f device
else
  skip "a device (mknod is refused)"
fi

# Access control lists and extended attributes.
if command -v setfacl >/dev/null && : >probe && setfacl -m u:12:r probe 2>/dev/null; then
  lists() { getfacl -cn "$1" 2>/dev/null; }
  kept() { # WHAT: the list of `file` is the same after a save
    local before
    lines counter=0 >file.new && cat file.new >file && rm file.new
    before=$(lists file)
    run file counter 20 >said || fail "$1: $(cat said)"
    same "$1" "$before" "$(lists file)"
    cmp -s file <(lines counter=20) || fail "$1: not saved"
  }
  : >file
  setfacl --set u::rw,g::---,o::---,u:12:r,m::r file
  kept "a list whose group has no right, with a mask"
  setfacl --set u::rw,g::r,o::r,u:12:---,g:34:rw,m::rw file
  kept "a list that shuts one user out"
  mkdir listed
  setfacl -d --set u::rwx,g::r,o::---,u:12:rwx,m::rwx listed
  cd listed
  : >file
  setfacl -b file
  chmod 644 file
  kept "a plain file in a folder with a default list"
  cd ..
else
  skip "access control lists (no setfacl, or a file system without them)"
fi
if command -v setfattr >/dev/null && setfattr -n user.note -v kept part 2>/dev/null; then
  lines counter=0 >noted
  setfattr -n user.note -v 'kept as it is' noted
  setfattr -n user.empty noted
  before=$(getfattr -d noted)
  run noted counter 21 >/dev/null
  same "extended attributes" "$before" "$(getfattr -d noted)"
else
  skip "extended attributes (no setfattr, or a file system without them)"
fi

# Each system call of the program fails once, in turn: the file is the old one or the new one, and a
# program that says 'saved' has saved. The loader's calls, before the file is first named, are left out.
# A sanitizer checks system calls of its own, which must not fail.
if command -v strace >/dev/null && strace -o /dev/null true 2>/dev/null && ! grep -qa __asan_init "${program[@]: -1}"; then
  runs=0 lost=0 lies=0 left=0
  export ASAN_OPTIONS=detect_leaks=0 # its search for leaks is a tracer too: there can be one only
  lines counter=0 b=1 >file
  strace -o trace "${program[@]}" file counter 1 >/dev/null
  # The bytes are on the disk before the name, and the name before the end.
  order=$(grep -oE '^(write|fsync|rename)\(' trace | tr -d '\n')
  [[ $order == *"write(fsync(rename(fsync("* ]] || fail "calls in the wrong order: $order"
  # Each call as its name and the how-many-eth of that name it is.
  awk -F '(' '/^[a-z0-9_]+\(/ && !/^(exit|execve|mmap|munmap|brk|mprotect)/ {
    ++calls[$1]
    if (/"file"/) seen = 1
    if (seen) print $1, calls[$1]
  }' trace >calls
  while read -r call n; do
    for reason in EIO EINTR EACCES; do
      lines counter=0 b=1 >file
      chmod 640 file
      code=0
      strace -o /dev/null -e "inject=$call:error=$reason:when=$n" "${program[@]}" file counter 1 >said 2>&1 || code=$?
      runs=$((runs + 1))
      if [ "$(stat -c %a file)" != 640 ]; then
        lost=$((lost + 1))
        echo "lost: $call $n, $reason: the mode is $(stat -c %a file)"
      elif cmp -s file <(lines counter=1 b=1); then :
      elif ! cmp -s file <(lines counter=0 b=1); then
        lost=$((lost + 1))
        echo "lost: $call $n, $reason: $(cat -A file)"
      elif [ "$code" -eq 0 ]; then
        lies=$((lies + 1))
        echo "not saved: $call $n, $reason: $(cat said)"
      fi
      [ -z "$(leftovers)" ] || left=$((left + 1))
      rm -f .*.safe-save~
    done
  done <calls
  echo "failing system calls: $runs runs, $lost damaged files, $lies false successes, $left siblings left"
  if [ "$((lost + lies))" -gt 0 ] || [ "$runs" -lt 60 ]; then fail "failing system calls"; fi
else
  skip "failing system calls (no strace, or a sanitized program)"
fi
exit $failed
