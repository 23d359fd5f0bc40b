#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Uses the library as its users do: check.sh installed BUILD | subproject | package BUILD | names ARCHIVE
# CXX and CXXFLAGS are the compiler and flags of the user, NM the lister that reads that compiler's archives.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
read=$root/examples/data/surprising.conf # a section that is not finished: an exception tells
printed="File \"$read\" is corrupted!"

# said PROGRAM ...: the last line of what it says of that file.
said() { "$@" "$read" | tail -n 1 | tr -d '\r'; }
fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
same() { [ "$2" = "$3" ] || fail "$1: expected"$'\n'"$2"$'\n'"but got"$'\n'"$3"; }
quiet() { "$@" >"$scratch/log" 2>&1 || { cat "$scratch/log" >&2; fail "$*"; }; }
configure() { cmake -G Ninja -S "$here" -B "$scratch/$1" "-DWAY=$1" "${@:2}"; }

# files LIBDIR: what an installation consists of.
files() {
  (cd "$root/include" && printf 'include/zelconfutils/%s\n' *.h)
  printf "$1/%s\n" cmake/zelconfutils/zelconfutils-config{,-TYPE,-version}.cmake pkgconfig/zelconfutils.pc
  if [ -n "$shared" ]; then printf "$1/%s\n" libzelconfutils.so{,.1,.1.0.0}; else echo "$1/libzelconfutils.a"; fi
}

# tree PREFIX: the files there, but for what only packages have.
tree() {
  (cd "$1" && find . ! -type d ! -path './share/*' |
    sed -E 's,^\./,,; s/-config-(release|debug|noconfig)/-config-TYPE/' | sort)
}

exported_classes() { sed -nE 's/^(class|struct) ZELCONFUTILS_API (\w+).*/\2/p' "$root"/include/*.h | paste -sd'|'; }

# shared_library FILE: its name, what it needs, and that our classes, all of them, are what it exports.
shared_library() {
  local classes name
  dynamic=$(readelf -dW "$1")
  same SONAME libzelconfutils.so.1 "$(sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p' <<<"$dynamic")"
  [[ $dynamic == *BIND_NOW* && $(readelf -lW "$1") == *GNU_RELRO* ]] || fail "not read-only once it is linked"
  same RUNPATH "" "$(grep -E 'RPATH|RUNPATH' <<<"$dynamic" || true)"
  [[ " ${CXXFLAGS:-} " == *-fsanitize* ]] ||
    same "other libraries needed" "" "$(sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p' <<<"$dynamic" |
      grep -vE '^(libstdc\+\+|libc\+\+|libc\+\+abi|libunwind|libgcc_s|libc|libm|ld-linux.*)\.so\.[0-9]+$' || true)"
  same "undefined names" "" "$(ldd -r "$1" 2>&1 | grep -E 'undefined|not found' || true)"

  classes=$(exported_classes)
  nm -DC --defined-only "$1" | sed -E 's/^[0-9a-f ]{17}. //; s/@@.*//; /^ZELCONFUTILS_1$/d' >"$scratch/exports"
  same "foreign names exported" "" "$(grep -vE \
    "^((vtable|typeinfo( name)?) for )?(Configuration::)?($classes)(<ZelSection>)?(::.*)?$" "$scratch/exports" || true)"
  for name in ${classes//|/ }; do
    [ "$name" = ZelLexToken ] || grep -qE "^(Configuration::)?$name(<ZelSection>)?::$name\(" "$scratch/exports" ||
      fail "no constructor of $name is exported"
  done
}

# names ARCHIVE: what a static library defines for the linker lies in our namespaces or is a member of an exported
# class. The templates of the standard library and the compiler's own helpers are nobody's. Mangled names tell: the
# readable form of a template starts with its result.
names() {
  local name owners='S[tabsiod]|9__gnu_cxx|10__cxxabiv1|13Configuration|12zelconfutils'
  while read -r name; do owners+="|${#name}$name"; done < <(exported_classes | tr '|' '\n')
  "${NM:-nm}" --defined-only --extern-only --no-sort "$1" | sed -nE 's/^[0-9a-f]+ [A-Za-z] //p' | sort -u >"$scratch/names"
  [ "$(wc -l <"$scratch/names")" -gt 200 ] || fail "not the whole library: $1"
  same "names at top level" "" "$(grep -vE \
    "^_Z(T[VTIS]|Th[n0-9]+_|G[VR])?Z?N?[rVK]*[RO]?($owners)|^_Z(nw[jm]Pv|dlPvS_)$|^(DW\.ref\.|__clang_call_terminate$|__x86\.get_pc_thunk\.)" \
    "$scratch/names" | c++filt || true)"
}

# use PREFIX: an installed tree, found as CMake and pkg-config find it.
use() {
  local library libdir
  library=$(find "$1" -name 'libzelconfutils.so' -o -name 'libzelconfutils.a')
  libdir=$(dirname "$library")
  shared=$([[ $library != *.so ]] || echo yes)
  same "installed files" "$(files "${libdir#"$1"/}" | sort)" "$(tree "$1")"
  same "installed paths of this build" "" "$(grep -rlIF -e "$root" -e "$scratch" "$1" || true)"
  [ -z "$shared" ] || shared_library "$library"

  if configure find_package "-DCMAKE_PREFIX_PATH=$1" -DVERSION=2.0 >"$scratch/log" 2>&1; then fail "version 2.0 found"; fi
  grep -q 'zelconfutils-config.cmake, version: 1.0' "$scratch/log" || { cat "$scratch/log"; fail "2.0 refused, but not by name"; }
  quiet configure find_package "-DCMAKE_PREFIX_PATH=$1" -DVERSION=1.0
  quiet cmake --build "$scratch/find_package"
  same "by find_package" "$printed" "$(said "$scratch/find_package/consumer")"

  export PKG_CONFIG_PATH=$libdir/pkgconfig LD_LIBRARY_PATH=$libdir
  quiet pkg-config --exact-version=1.0.0 zelconfutils
  same "static flag of pkg-config" "$([ -n "$shared" ] || echo -DZELCONFUTILS_STATIC)" \
    "$(pkg-config --cflags-only-other zelconfutils | tr -d ' ')"
  # Hidden visibility in the program: the exception must be caught all the same.
  # shellcheck disable=SC2046,SC2086  # flags are several words
  quiet "${CXX:-c++}" ${CXXFLAGS:-} -std=c++17 -fvisibility=hidden -include zelconfutils/MultiSectionFile.h \
    "$root/examples/check_config.cpp" -o "$scratch/consumer" $(pkg-config --cflags --libs zelconfutils)
  same "by pkg-config" "$printed" "$(said "$scratch/consumer")"
}

# installed BUILD: works from any place, also after the tree was moved.
installed() {
  quiet cmake --install "$1" --prefix "$scratch/first"
  mv "$scratch/first" "$scratch/moved"
  use "$scratch/moved"
}

# installed_dll BUILD TOOLCHAIN WINE: the same of a cross-built DLL. It lies beside the program there,
# with the DLLs of the compiler's runtime.
installed_dll() {
  local prefix=$scratch/moved imports
  quiet cmake --install "$1" --prefix "$scratch/first"
  mv "$scratch/first" "$prefix"
  shared=
  same "installed files" "$({ files lib | grep -v '^lib/lib' && printf '%s\n' bin/zelconfutils.dll \
      lib/libzelconfutils.dll.a lib/zelconfutils.def; } | sort)" "$(tree "$prefix")"
  imports=$(objdump -p "$prefix/bin/zelconfutils.dll")
  same "other libraries needed" "" "$(sed -n 's/.*DLL Name: //p' <<<"$imports" |
    grep -viE '^(libstdc\+\+-6|libgcc_s_(seh|dw2|sjlj)-1|libwinpthread-1|kernel32|msvcrt)\.dll$' || true)"
  grep -q DisableThreadLibraryCalls <<<"$imports" || fail "the load entry is not ours"
  same "foreign names exported" "" "$(sed -n 's/^ *\([^ ]*\) @.*/\1/p' "$prefix/lib/zelconfutils.def" | c++filt |
    grep -vE "^((vtable|typeinfo( name)?) for )?(Configuration::)?($(exported_classes))(<ZelSection>)?(::.*)?$" || true)"

  quiet configure find_package "--toolchain=$2" "-DCMAKE_PREFIX_PATH=$prefix" -DVERSION=1.0
  quiet cmake --build "$scratch/find_package"
  cp "$prefix/bin/zelconfutils.dll" "$1"/bin/lib*.dll "$scratch/find_package"
  same "by find_package" "$printed" "$(said "$3" "$scratch/find_package/consumer.exe")"
}

# The sources as a part of a larger project. Nothing but the target comes in, and what the parent
# installs starts: a static library is in the program; a shared one is installed where that is wanted.
# One is built file by file, the others as a parent in a hurry does.
subproject() {
  local way kind install unity build prefix
  while read -r way kind install unity; do
    build=$scratch/$way-$kind-$install
    kind=${kind/-/}
    prefix=$build/prefix
    quiet configure "$way" -B "$build" -DLIBRARY_SOURCE="$root" ${kind:+-DBUILD_SHARED_LIBS="$kind"} \
      -DZELCONFUTILS_INSTALL="$install" -DCMAKE_UNITY_BUILD="$unity" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
    quiet cmake --build "$build"
    same "$way" "$printed" "$(said "$build/consumer")"
    same "$way: tests" "Total Tests: 1" "$(cd "$build" && ctest -N | grep Total)"
    quiet cmake --install "$build" --prefix "$prefix"
    shared=${kind/OFF/}
    same "$way: installed files" "$({ [ "$install" = OFF ] || files lib; echo bin/consumer; } | sort)" "$(tree "$prefix")"
    [ -n "$shared" ] && [ "$install" = OFF ] || same "$way: installed program" "$printed" "$(said "$prefix/bin/consumer")"
    same "$way: flags of the parent" "" \
      "$(grep '"command".*check_config.cpp' "$build/compile_commands.json" | grep -oE ' -(W|f|DZELCONFUTILS_B)[^ ]*' || true)"
    printf '%s, BUILD_SHARED_LIBS=%s, ZELCONFUTILS_INSTALL=%s: ok\n' "$way" "${kind:-(undefined)}" "$install"
  done <<<$'add_subdirectory - OFF OFF\nadd_subdirectory ON OFF ON\nFetchContent OFF ON ON\nFetchContent ON ON ON'
}

# debs FOLDER: the packages of the sources in that folder.
debs() {
  (umask 022 && cd "$1" && quiet cmake --preset package --fresh && quiet cmake --build --preset package &&
    cd build/package && rm -f ./*.deb && quiet cpack -G DEB)
}

# package: the Debian packages, left in build/package: the same bytes from another folder, no error
# by lintian, dependencies that this system meets, and a library that works once installed.
package() {
  local copy=$scratch/another/folder name
  export SOURCE_DATE_EPOCH
  : "${SOURCE_DATE_EPOCH:=$(git -C "$root" log -1 --format=%ct 2>/dev/null || stat -c %Y "$root/LICENSE")}"
  mkdir -p "$copy"
  tar -C "$root" --exclude=./build --exclude=./.git -c . | tar -C "$copy" -x
  debs "$root"
  TZ=Asia/Tokyo LC_ALL=C.UTF-8 debs "$copy"
  for name in "$root"/build/package/*.deb; do
    quiet cmp "$name" "$copy/build/package/${name##*/}"
    printf '%s\n  depends: %s\n' "${name##*/}" "$(dpkg-deb -f "$name" Depends)"
    sha256sum <"$name"
  done
  [[ $(dpkg-deb -f "$root"/build/package/libzelconfutils1_*.deb Depends) == *'libc6 (>= '*'libstdc++6 (>= '* ]] ||
    fail "dependencies on the runtimes were not computed"
  lintian --allow-root --fail-on error "$root"/build/package/*.deb

  # A database of its own that knows the runtimes of this system, so that dpkg checks against them.
  local database=$scratch/root/var/lib/dpkg
  mkdir -p "$database"/{info,updates,triggers}
  dpkg-query -s libc6 libgcc-s1 libstdc++6 >"$database/status"
  touch "$database"/info/{libc6,libgcc-s1,libstdc++6}:"$(dpkg --print-architecture)".list
  mkdir "$scratch/bin"
  ln -s "$(type -P true)" "$scratch/bin/ldconfig"  # which the package's script calls
  PATH=$scratch/bin:$PATH quiet dpkg --force-not-root --force-script-chrootless --no-triggers \
    --log="$scratch/dpkg.log" --root="$scratch/root" --install "$root"/build/package/*.deb
  use "$scratch/root/usr"
  printf 'installed in a test root and used from there: ok\n'
}

"$@"
