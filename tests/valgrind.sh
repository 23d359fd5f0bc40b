#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# valgrind.sh BUILD: the tests of a build, and the kept inputs of the fuzz targets, under valgrind.
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "${BASH_SOURCE[0]}")/.."
memcheck() {
  printf '== valgrind %s\n' "$*"
  # The tests count and fail allocations by an operator new of their own: keep it.
  valgrind --soname-synonyms=somalloc=nouserintercepts --quiet --leak-check=full --error-exitcode=9 "$@"
}
for program in "$build"/tests/*_test; do memcheck "$program" --gtest_brief=1; done
for corpus in fuzz/corpus/*; do memcheck "$build/fuzz/fuzz_${corpus##*/}" "$corpus" 20; done
