#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Who may include whom, told by folders, and who may know a system. A public header belongs to the
# folder of the source of its name.
set -euo pipefail
cd "$(dirname "$0")/.."

# A folder and all that its files may include beside those of their own folder.
folders='
text
platform
config/memory   text platform
config/lines    text platform config/memory
config/entries  text platform config/memory config/lines
config/files    text platform config/memory config/lines config/entries
config          text platform config/memory config/lines config/entries config/files
multisection    text platform config/memory config/lines config/entries config/files
parser          text platform
sections        text platform
csv             text platform'

find src include -name '*.h' -o -name '*.cpp' | sort | xargs awk -v folders="$folders" '
  function fail(why) { printf "%s:%d: %s: %s\n", FILENAME, FNR, why, $0; failures++ }
  function stem(path) { sub(/.*\//, "", path); sub(/\..*/, "", path); return path }
  function folder_of(path) { sub(/\/?[^\/]*$/, "", path); return path }
  BEGIN {
    rows = split(folders, row, "\n")
    for (i = 2; i <= rows; i++) {
      cells = split(row[i], cell, " ")
      for (j = 1; j <= cells; j++) may[cell[1], cell[j]] = 1
      known[cell[1]] = 1
    }
    for (i = 1; i < ARGC; i++) if (ARGV[i] ~ /^src.*\.cpp$/) home[stem(ARGV[i])] = folder_of(substr(ARGV[i], 5))
  }
  FNR == 1 {
    is_public = FILENAME ~ /^include\//
    if (stem(FILENAME) == "ZelExport") nextfile
    from = is_public ? home[stem(FILENAME)] : folder_of(substr(FILENAME, 5))
    if (!(from in known)) fail("no folder of the plan")
    files++
  }
  /^[ \t]*#[ \t]*include[ \t]*"/ {
    split($0, quoted, "\"")
    target = quoted[2]
    if (target == "ZelExport.h") next
    to = target ~ /\// ? folder_of(target) : home[stem(target)]
    if (!((from, to) in may)) fail("may not be included from " from)
    if (is_public && target ~ /\//) fail("not installed")
  }
  /^[ \t]*#[ \t]*include[ \t]*<.*(\.h|\/)/ && from != "platform" { fail("not a header of the C++ standard library") }
  /^[ \t]*#[ \t]*(el)?if.*(WIN32|WIN64|WINNT|MINGW|MSC_VER|CYGWIN|linux|unix|APPLE|BSD|POSIX|ANDROID)/ && from != "platform" {
    fail("only src/platform knows a system")
  }
  END {
    printf "%d files\n", files
    exit failures > 0 || files < 30
  }'
