#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# facts.sh [--write]: what pages say twice agrees. The figures in the README are those of the page of
# performance (--write copies them from there); the version is one, and released or not everywhere.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

# The rows between the marks, each with the first five cells that the other page has for it.
figures() {
  awk -F ' *[|] *' '
    NR == FNR { if (NF > 6) row[$2] = "| " $2 " | " $3 " | " $4 " | " $5 " | " $6 " |"; next }
    /^<!-- end -->/ { inside = 0 }
    inside && $2 !~ /^(work item|-*)$/ { print $2 in row ? row[$2] : "| " $2 " | is not measured |"; next }
    /^<!-- figures: / { inside = 1 }
    { print }' docs/performance.md README.md
}
if [ "${1:-}" = --write ]; then
  fresh=$(figures)
  printf '%s\n' "$fresh" >README.md
fi
bad=0
diff -u --label README.md --label docs/performance.md README.md <(figures) || { echo "run tests/pages/facts.sh --write"; bad=1; }

agree() { [ "$2" = "$3" ] || { echo "$1: '$2' and '$3'"; bad=1; }; }
version=$(sed -n 's/^project(zelconfutils VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
newest=$(sed -n 's/^## //p' CHANGELOG.md | head -n 1)
suite=unstable
[[ $newest == *"(not released)" ]] && suite=UNRELEASED
agree "version of the project, and of the changelog" "$version" "${newest%% *}"
agree "version, and find_package in the README" "${version%.*}" "$(sed -n 's/^find_package(zelconfutils \([0-9.]*\) .*/\1/p' README.md)"
agree "package name with the SONAME, and in the README" "libzelconfutils${version%%.*}" "$(grep -oE 'libzelconfutils[0-9]+' README.md | sort -u)"
agree "suite of the changelog, and of the packages" "$suite" "$(sed -n 's/^zelconfutils (.*) \([A-Za-z]*\);.*/\1/p' cmake/debian/changelog.in)"
exit "$bad"
