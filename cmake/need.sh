# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Sourced by ./dev, which has say and fail.

# need PROGRAM-OR-FILE PACKAGE ...: installs the packages whose program, or file of that absolute path,
# is missing. A command calls it once, with all that it wants: whoever cannot install is told all of it.
need() {
  local packages=() names=()
  while [ $# -gt 0 ]; do
    case "$1" in
      /*) [ -e "$1" ] ;;
      *) type -P "$1" >/dev/null ;;
    esac || { packages+=("$2") && names+=("${1##*/}"); }
    shift 2
  done
  [ ${#packages[@]} -eq 0 ] && return 0
  local missing="missing: ${names[*]} (Debian packages: ${packages[*]})"
  type -P apt-get >/dev/null || fail "$missing; there is no apt-get here: install them and run this again"
  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    type -P sudo >/dev/null || fail "$missing; there is no sudo here: run as root: apt-get install ${packages[*]}"
    sudo=(sudo)
  fi
  say "installing ${packages[*]} (with what they need; this can take minutes)"
  "${sudo[@]}" apt-get update -qq
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${packages[@]}" >/dev/null
}
