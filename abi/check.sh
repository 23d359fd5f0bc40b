#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check.sh LIBRARY [--record]: holds the binary interface of a library with debug information against
# the recorded one, or records it.
set -euo pipefail
library=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
record=abi/libzelconfutils.so.1.abi
# Foreign types count by the room that they take in our classes alone.
options=(--suppressions abi/foreign-types.ini)
if [ "${2:-}" = --record ]; then
  abidw "${options[@]}" --headers-dir include --drop-private-types --drop-undefined-syms \
    --exported-interfaces-only --no-show-locs --no-comp-dir-path --no-corpus-path --no-parameter-names \
    --no-write-default-sizes --type-id-style hash --out-file "$record" "$library"
else
  abidiff "${options[@]}" "$record" "$library" || {
    echo "the binary interface is not the recorded one: if that is meant, run ./dev abi --record" >&2
    exit 1
  }
fi
