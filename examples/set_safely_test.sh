#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# set_safely_test.sh PROGRAM [KILLS]: kills the program inside its saves, fills its disk, and looks
# at what became of the file.
set -euo pipefail
program=$(realpath "$1")
kills=${2:-300}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "set_safely_test: $*"; exit 1; }

# About 200 KiB, so that a save takes a while; the entry that changes stands in the middle.
seq -f 'entry%05g = some value' 4000 >part
original() { cat part; echo 'counter=0'; cat part; }
whole() {  # the file is one that was saved: nothing but the number has changed
  sed -E 's/^counter=[0-9]+$/counter=0/' file | cmp -s - <(original)
}

# Kills $2 processes that save in a loop (the program with the option $1), each after a time of its
# own between 0 and 15 ms. Prints how many left a damaged file and how many died inside a save.
kill_savers() {
  local damaged=0 inside=0 last=-1 moved=0 values now pid
  values=$(seq 1 2000)
  original >file
  for ((n = 0; n < $2; ++n)); do
    # shellcheck disable=SC2086
    "$program" $1 file counter $values >/dev/null &
    pid=$!
    sleep "0.0$(printf '%02d' $((n % 16)))"
    kill -KILL "$pid"
    wait "$pid" 2>/dev/null || true
    if compgen -G 'file.??????' >/dev/null; then inside=$((inside + 1)); rm -f file.??????; fi
    if whole; then
      now=$(grep -a '^counter=' file)
      [ "$now" = "$last" ] || moved=$((moved + 1))
      last=$now
    else
      damaged=$((damaged + 1))
      original >file
    fi
  done
  echo "$damaged $inside $moved"
}

read -r damaged inside moved < <(kill_savers "" "$kills")
echo "safe save: $kills kills, $inside of them with a sibling half written, $damaged damaged files"
[ "$damaged" -eq 0 ] || fail "damaged files"
[ "$inside" -gt 0 ] && [ "$moved" -gt 0 ] || fail "no kill met a save"
# The same with the plain save, to see that the test can tell.
read -r damaged inside moved < <(kill_savers --plain 30)
echo "plain save: 30 kills, $damaged damaged files"
[ "$damaged" -gt 0 ] || fail "the plain save was never damaged"

# A full disk, by a limit of 100 KiB: the old file and the object both live.
original >file
chmod 640 file
if (trap '' XFSZ; ulimit -f 100; "$program" file counter 17) >said; then fail "no failure"; fi
grep -q '^not saved: .*; in memory counter=17$' said || fail "it said: $(cat said)"
whole && [ "$(grep '^counter' file)" = counter=0 ] || fail "the old file is gone"
! compgen -G 'file.??????' >/dev/null || fail "the temporary file was left"

# Mode, owner and a symbolic link are kept; the folder is another one.
mkdir folder
mv file folder/real
ln -s folder/real link
owner=$(id -u):$(id -g)
if [ "$(id -u)" -eq 0 ]; then owner=12:34; fi
chown "$owner" folder/real
chmod 4751 folder/real
"$program" link counter 18 >/dev/null
[ -L link ] && grep -q '^counter=18$' folder/real || fail "the link was replaced"
[ "$(stat -c '%a %u:%g' folder/real)" = "4751 $owner" ] || fail "$(stat -c '%a %u:%g' folder/real)"
