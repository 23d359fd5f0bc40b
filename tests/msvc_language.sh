#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The library's sources as the Microsoft compiler takes them, as far as can be told without it:
# Clang in its mode for that language, without GNU extensions. Its headers are MinGW's, for which
# the macros are given that this mode takes away.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
echo "== the language of the Microsoft compiler"
headers=/usr/lib/gcc/x86_64-w64-mingw32/12-posix/include/c++
find src -name '*.cpp' ! -name '*Posix*' -print0 | xargs -0 -P "$(nproc)" -n 4 clang++-14 -fsyntax-only -std=c++20 \
  --target=x86_64-w64-windows-gnu -fms-compatibility -fms-compatibility-version=19.30 \
  -D__GNUC__=12 -D__GNUC_MINOR__=2 -D__STRICT_ANSI__ -D__GXX_EXPERIMENTAL_CXX0X__ \
  -D__GCC_ATOMIC_TEST_AND_SET_TRUEVAL=1 -D__GCC_ATOMIC_POINTER_LOCK_FREE=2 \
  -nostdinc++ -isystem $headers -isystem $headers/x86_64-w64-mingw32 \
  -isystem /usr/x86_64-w64-mingw32/include -Iinclude -Isrc -DZELCONFUTILS_BUILDING \
  -Werror -pedantic-errors -Wall -Wextra -Wgnu -Wvla -Wmicrosoft -Wshorten-64-to-32
