#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# update.sh [--check]: writes the calls of each page of the reference anew from the headers that the
# page names in "<!-- calls: HEADER ... -->", up to "<!-- end -->". --check only compares.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
changed=0 pages=0
for page in *.md; do
  read -r -a headers < <(sed -n 's/^<!-- calls: \(.*\) -->$/\1/p' "$page") || continue
  pages=$((pages + 1))
  {
    sed '/^<!-- calls: /q' "$page"
    awk -f calls.awk "${headers[@]/#/../../include/}"
    printf '\n<!-- end -->\n'
  } >"$work/$page"
  cmp -s "$work/$page" "$page" && continue
  changed=1
  if [ "${1:-}" = --check ]; then
    diff -u --label "$page" --label "from the headers" "$page" "$work/$page" | head -n 40
  else
    cp "$work/$page" "$page"
    echo "$page"
  fi
done
[ "$pages" -gt 0 ] || { echo "no page names a header"; exit 1; }
if [ "${1:-}" = --check ] && [ "$changed" -ne 0 ]; then
  echo "run docs/reference/update.sh"
  exit 1
fi
