#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# setups.sh [NAME ...]: builds the last commit the ways that its users may, from a tree without git in a
# folder with a blank in its name, and runs the tests. A warning is a failure.
# NAME: plain no_testing no_gtest ccache unity lto clang libcxx tgz (all of them without any), or another
# machine, whose compiler and emulator must be there: i686 aarch64 s390x.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
tree="$scratch/a folder"
mkdir "$tree"
git archive HEAD | tar -x -C "$tree"
cd "$tree"
log=$scratch/log

fail() { tail -n 100 "$log" && printf 'setups: FAILED: %s\n' "$*" >&2 && exit 1; }
holds() { grep -q -- "$1" "$2" || fail "$name: no '$1' in $2"; }
configure() { cmake -S . -B "build/$name" "$@" >"$log" 2>&1 || fail "$name"; }
build() { cmake --build "build/$name" -j "$(nproc)" >>"$log" 2>&1 || fail "$name"; }
not_here='(none)' # the tests that have no sense in a set-up
tests() {
  ctest --test-dir "build/$name" -j "$(nproc)" --output-on-failure --no-tests=error -E "$not_here" >>"$log" 2>&1 || fail "$name"
  ! grep -A5 -i 'warning:' "$log" || fail "$name: warnings"
  grep 'tests passed' "$log"
}
# Whole: configured as told, warnings as errors, built, tested.
whole() { configure -G Ninja -DCMAKE_COMPILE_WARNING_AS_ERROR=ON -DZELCONFUTILS_REQUIRE_TESTS=ON "$@" && build && tests; }

plain() {  # as the first page of any CMake guide has it: make, no build type
  configure -G "Unix Makefiles" && build && tests
  holds CMAKE_BUILD_TYPE:STRING=Release build/plain/CMakeCache.txt
}
no_testing() {
  configure -G Ninja -DBUILD_TESTING=OFF && build
  [[ $(ctest --test-dir build/no_testing -N) == *"Total Tests: 0"* && ! -e build/no_testing/tests ]] || fail "tests are there"
}
no_gtest() {
  configure -G Ninja -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON && build
  holds "the tests are left out" "$log"
  tests # of the examples
  ! cmake -S . -B build/no_gtest -DZELCONFUTILS_REQUIRE_TESTS=ON >"$log" 2>&1 || fail "required, and left out"
  holds "The tests are required" "$log"
}
ccache() { CCACHE_DIR=$scratch/ccache whole -DCMAKE_CXX_COMPILER_LAUNCHER=ccache; }
unity() { whole -DCMAKE_UNITY_BUILD=ON; }
lto() { whole -DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON; }
clang() { whole -DCMAKE_CXX_COMPILER=clang++-14; }
libcxx() { whole -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_CXX_FLAGS=-stdlib=libc++ -DZELCONFUTILS_GTEST_FROM_SOURCE=ON; }
tgz() {
  configure -G Ninja -DBUILD_TESTING=OFF && build
  (cd build/tgz && cpack -G TGZ) >>"$log" 2>&1 || fail cpack
  for archive in build/tgz/*.tar.gz; do tar -tzf "$archive"; done >"$scratch/list"
  holds '/LICENSE$' "$scratch/list"
}

# machine TRIPLET STARTER: a cross build, and what starts its programs: an emulator. Tests by way of a
# script start them as if they were this machine's and stay out.
machine() {
  local not_here='installed_library|page_|example_(set_safely|locked_update)'
  whole -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR="${1%%-*}" -DCMAKE_C_COMPILER="$1-gcc" -DCMAKE_CXX_COMPILER="$1-g++" \
    -DCMAKE_CROSSCOMPILING_EMULATOR="$2" -DZELCONFUTILS_GTEST_FROM_SOURCE=ON
}
emulated() { machine "$1" "$2;-L;/usr/$1"; }
i686() { # an x86-64 kernel runs these by itself, by way of their own loader
  local root=/usr/i686-linux-gnu/lib
  if "$root/ld-linux.so.2" --version >/dev/null 2>&1; then
    machine i686-linux-gnu "$root/ld-linux.so.2;--library-path;$root"
  else
    emulated i686-linux-gnu qemu-i386-static
  fi
}
aarch64() { emulated aarch64-linux-gnu qemu-aarch64-static; }
s390x() { emulated s390x-linux-gnu qemu-s390x-static; }

[ $# -gt 0 ] || set -- plain no_testing no_gtest ccache unity lto clang libcxx tgz
for name in "$@"; do
  printf '== %s\n' "$name"
  start=$SECONDS
  "$name"
  printf '== %s: ok, %s s\n' "$name" "$((SECONDS - start))"
done
