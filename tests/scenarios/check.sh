#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Every public operation of these classes occurs in a scenario of its family, or in a test beside them.
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
check include/ConfigFile.h tests/scenarios/flat.txt
check include/MultiSectionFile.h tests/scenarios/sectioned.txt
check include/ZelSection.h tests/scenarios/records.txt
check include/Tree.h tests/scenarios/records.txt tests/SectionRecordsTest.cpp
check include/CsvDocument.h tests/scenarios/csv.txt tests/CsvTest.cpp
check include/StreamIterator.h tests/LexerTest.cpp
exit "$missing"
