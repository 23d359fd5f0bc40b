#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# run.sh BUILD SECONDS: each libFuzzer program of a build for so long. New inputs are not kept; what
# breaks an invariant is, in a folder that is then named.
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")"
for corpus in "$PWD"/corpus/*; do # the programs work in a directory of their own
  name=fuzz_${corpus##*/}
  scratch=$(mktemp -d)
  printf '== %s, %s s\n' "$name" "$2"
  "$build/fuzz/$name" -max_total_time="$2" -timeout=20 -artifact_prefix="$scratch/" -print_final_stats=1 \
    "$scratch" "$corpus"
  rm -rf "$scratch"
done
