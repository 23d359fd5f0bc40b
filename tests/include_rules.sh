#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Who may include whom, and who may know a system.
set -euo pipefail
cd "$(dirname "$0")/.."

# A folder, the folders that it may include, and the families of public headers.
folders='
platform      platform
config        config platform
multisection  multisection config platform
parser        parser platform
sections      sections platform
csv           csv platform'
public='
config        ConfigFile ConfigException SmartBuffer
multisection  MultiSectionFile
parser        StreamIterator ZelLex ZelParser
sections      ZelSection Tree
csv           CsvDocument'
# Within src/config: each file may include only those that stand before it.
floor='ConfigException SmartBuffer SlabChain LinkedList TextPool ConfigLineList ConfigEntry EntrySyntax Walk EntryEdit EntryOperations
FileLock PathCheck Release Refill FileAccess ConfigFile'

find src include -name '*.h' -o -name '*.cpp' | sort | xargs awk -v folders="$folders" -v public="$public" -v floor="$floor" '
  function fail(why) { printf "%s:%d: %s: %s\n", FILENAME, FNR, why, $0; failures++ }
  function stem(path) { sub(/.*\//, "", path); sub(/\..*/, "", path); return path }
  BEGIN {
    n = split(folders, rows, "\n")
    for (i = 1; i <= n; i++) { m = split(rows[i], cell, " "); for (j = 2; j <= m; j++) may[cell[1], cell[j]] = 1 }
    n = split(public, rows, "\n")
    for (i = 1; i <= n; i++) { m = split(rows[i], cell, " "); for (j = 2; j <= m; j++) family[cell[j]] = cell[1] }
    n = split(floor, names, /[ \n]+/)
    for (i = 1; i <= n; i++) level[names[i]] = i
  }
  FNR == 1 {
    self = stem(FILENAME)
    split(FILENAME, part, "/")
    folder = part[1] == "include" ? family[self] : part[2]
    system_file = folder == "platform" || self == "ZelExport"
    files++
    if (folder == "config" && !level[self]) fail("a file without a place in the floor plan")
    if (part[1] == "include" && folder == "" && self != "ZelExport") fail("a public header without a family")
  }
  /^[ \t]*#[ \t]*include[ \t]*"/ {
    split($0, quoted, "\"")
    target = quoted[2]
    name = stem(target)
    to = target ~ /\// ? substr(target, 1, index(target, "/") - 1) : family[name]
    if (target == "ZelExport.h") next
    if (!((folder, to) in may)) fail("may not be included from " folder)
    if (folder == "multisection" && name == "ConfigFile") fail("stands beside it, not on it")
    if (part[1] == "include" && target ~ /\//) fail("not installed")
    if (folder == "config" && to == "config" && !(name == self || (level[name] && level[name] < level[self])))
      fail("not below " self " in the floor plan")
  }
  /^[ \t]*#[ \t]*include[ \t]*<.*(\.h|\/)/ && folder != "platform" { fail("not a header of the C++ standard library") }
  /^[ \t]*#[ \t]*(el)?if.*(WIN32|WIN64|WINNT|MINGW|MSC_VER|CYGWIN|linux|unix|APPLE|BSD|POSIX|ANDROID)/ && !system_file {
    fail("only src/platform knows a system")
  }
  END {
    printf "%d files\n", files
    exit failures > 0 || files < 30
  }'
