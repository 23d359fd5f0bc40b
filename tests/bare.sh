#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# bare.sh [--user] [COMMAND ...]: makes a minimal Debian 12 in a temporary folder, clones the last commit of
# this checkout there and runs ./dev COMMAND for each, as root or as a user with sudo: without any, the
# README's two commands. What this machine happens to have does not count there.
# Exit status: 0 passed, 1 failed, 77 could not be tried here (no root, no mirror).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

say() { printf '== bare: %s\n' "$*"; }
could_not() { printf 'bare: could not be tried: %s\n' "$*" >&2; exit 77; }
fail() { printf 'bare: FAILED: %s\n' "$*" >&2; exit 1; }

# What is mounted and started for the system lives in namespaces, and ends with them, however this ends.
if [ -z "${BARE_SYSTEM:-}" ]; then
  [ "$(id -u)" -eq 0 ] || could_not "to make a system needs root"
  unshare --mount --pid --fork true 2>/dev/null || could_not "mounting is not allowed here"
  BARE_SYSTEM=$(mktemp -d)
  export BARE_SYSTEM
  child=
  # shellcheck disable=SC2317  # by way of the trap
  remove() {
    [ -z "$child" ] || kill "$child" 2>/dev/null || true
    rm -rf --one-file-system "$BARE_SYSTEM" 2>/dev/null || { sleep 2 && rm -rf --one-file-system "$BARE_SYSTEM"; }
  }
  trap remove EXIT
  trap 'exit 130' INT TERM HUP
  unshare --mount --pid --fork --kill-child --mount-proc bash tests/bare.sh "$@" &
  child=$!
  result=0
  wait "$child" || result=$?
  child=
  exit "$result"
fi

user=root
home=/root
if [ "${1:-}" = --user ]; then
  user=developer
  home=/home/developer
  shift
fi
[ $# -gt 0 ] || set -- demo test

# The machine's own mirror of Debian 12, and its way there.
sources=$(apt-get indextargets --no-release-info --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
  'Identifier: Packages' 2>/dev/null | grep -E ' bookworm(-[a-z]+)? main$' | sort -u) || true
mirror=$(sed -n 's/^deb \(.*\) bookworm main$/\1/p' <<<"$sources" | head -n 1)
[ -n "$mirror" ] || could_not "apt knows no mirror of Debian 12"
eval "$(apt-config shell http_proxy Acquire::http::Proxy https_proxy Acquire::https::Proxy)"
export http_proxy="${http_proxy:-}" https_proxy="${https_proxy:-}" no_proxy="${no_proxy:-}"

system=$BARE_SYSTEM/system
mkdir -p "$system/etc/dpkg/dpkg.cfg.d"
echo force-unsafe-io >"$system/etc/dpkg/dpkg.cfg.d/unsafe-io" # it need not survive a power failure
say "a minimal Debian 12 from $mirror (half a minute)"
debootstrap --variant=minbase bookworm "$system" "$mirror" >"$BARE_SYSTEM/log" 2>&1 || {
  tail -n 5 "$BARE_SYSTEM/log" >&2
  could_not "debootstrap did not make the system"
}
mount -t proc proc "$system/proc"
mount -t devpts devpts "$system/dev/pts"                   # apt and sudo complain where this
echo "127.0.0.1 localhost $(hostname)" >"$system/etc/hosts" # and this is missing
printf '%s\n' "$sources" >"$system/etc/apt/sources.list"
apt-config dump | grep -E '^Acquire::(http|https|Check|ForceIPv|Retries)' >"$system/etc/apt/apt.conf.d/machine" || true
chroot "$system" apt-get update -qq >"$BARE_SYSTEM/log" 2>&1 || { cat "$BARE_SYSTEM/log" >&2 && could_not "the mirror does not answer"; }

chroot "$system" useradd --create-home --shell /bin/bash developer
git clone --quiet "file://$PWD" "$system$home/zelconfutils"
as() { chroot "$system" su -w http_proxy,https_proxy,no_proxy - "$1" -c "cd $home/zelconfutils && ./dev $2" 2>&1; }

# Whoever cannot install is told all that is missing, at once.
all="missing: cmake ninja g++ gtest.h pkg-config (Debian packages: cmake ninja-build g++ libgtest-dev pkg-config); there is no"
chmod a+rx "$system$home"
[[ $(as developer test) == "dev: $all sudo here"* ]] || fail "without sudo: $(as developer test)"
mv "$system/usr/bin/apt-get" "$system/usr/bin/apt-get.away"
[[ $(as developer test) == "dev: $all apt-get here"* ]] || fail "without apt-get: $(as developer test)"
mv "$system/usr/bin/apt-get.away" "$system/usr/bin/apt-get"

if [ "$user" != root ]; then
  chroot "$system" apt-get install -y -qq --no-install-recommends sudo >/dev/null 2>&1
  echo "$user ALL=(ALL) NOPASSWD: ALL" >"$system/etc/sudoers.d/$user"
  chroot "$system" chown -R "$user:" "$home"
fi
for command in "$@"; do
  say "./dev $command, as $user"
  as "$user" "$command" | sed -u 's/^/| /' || fail "./dev $command, as $user"
done
say "passed: $*"
