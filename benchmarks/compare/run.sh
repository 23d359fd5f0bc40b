#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh BUILD [--record | --quick | ...]: the comparison with others, as a table, or into the page.
set -euo pipefail
programs=$(realpath "$1/benchmarks/compare")
shift
cd "$(dirname "${BASH_SOURCE[0]}")"

# In memory where that can be: to open and truncate a small file on a disk's file system takes ten
# times the work that is compared.
[ -n "${TMPDIR:-}" ] || [ ! -w /dev/shm ] || export TMPDIR=/dev/shm

# libini_config calls itself for each line of a file.
ulimit -S -s $((1 << 20)) 2>/dev/null || ulimit -S -s "$(ulimit -H -s)"

# On what the table was measured.
setting() {
  printf '\n%s, %s processors, %s MiB; Linux %s; %s; %s; load average %s at the end.\n' \
    "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)" "$(nproc)" \
    "$(awk '/^MemTotal/ { print int($2 / 1024) }' /proc/meminfo)" "$(uname -r)" \
    "$(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' /etc/os-release)" "$(c++ --version | head -n 1)" \
    "$(cut -d ' ' -f 1 /proc/loadavg)"
  printf 'Peers: '
  dpkg-query -W -f '${source:Package} ${source:Upstream-Version}, ' libglib2.0-dev libsimpleini-dev libiniparser-dev \
    libinih-dev libini-config-dev libaugeas-dev libcsv-dev libfccp-dev flex re2c sed git 2>/dev/null | sed 's/, $/.\n/'
}

if [ "${1:-}" = --record ]; then
  page=../../docs/performance
  table=$(python3 -B compare.py "$programs")
  python3 chart.py <<<"$table" >$page.svg
  # What stands between the two marks of the page is what was measured.
  { printf '%s\n' "$table" && setting; } | sed -i -e '/^<!-- measured -->/r /dev/stdin' \
    -e '/^<!-- measured -->/,/^<!-- end -->/{//!d}' $page.md
else
  python3 -B compare.py "$programs" "$@"
  setting
fi
