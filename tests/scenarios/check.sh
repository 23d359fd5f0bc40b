#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Every public operation of the two file classes occurs in a scenario, or in a test of a file's life.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
missing=0
check() { # HEADER TEST ...
  local name
  while read -r name; do
    grep -q "\b$name(" "${@:2}" && continue
    printf '%s: no scenario calls %s\n' "$1" "$name" >&2
    missing=1
  done < <(awk '/^ (public|protected|private):/ { public = $1 == "public:" }
                public && /^  (bool|size_t|void) [A-Za-z]+\(/ { sub(/\(.*/, "", $2); print $2 }' "$1" | sort -u)
}
check include/ConfigFile.h tests/scenarios/flat.txt tests/FileLifeTest.cpp
check include/MultiSectionFile.h tests/scenarios/sectioned.txt tests/FileLifeTest.cpp
exit "$missing"
