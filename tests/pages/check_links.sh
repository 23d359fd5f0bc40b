#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Every relative link of our pages leads to a file or folder, and to a heading where it names one.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
text() { awk '/^```/ { code = !code; next } !code' "$1"; }
# The names that code hosts give to the headings of a page.
anchors() { text "$1" | sed -nE 's/^#+ +//p' | tr '[:upper:]' '[:lower:]' | sed -E 's/[^a-z0-9 _-]//g; s/ /-/g'; }
bad=0 links=0
for page in *.md docs/*.md docs/*/*.md; do
  while read -r link; do
    links=$((links + 1))
    target=$(dirname "$page")/${link%%#*}
    [ -n "${link%%#*}" ] || target=$page
    if [ ! -e "$target" ]; then
      echo "$page: $link: no such file"
      bad=1
    elif [[ $link == *#* ]] && ! grep -qxF -- "${link#*#}" <(anchors "$target"); then
      echo "$page: $link: no such heading"
      bad=1
    fi
  done < <(text "$page" | grep -oE '\]\([^)]+\)' | sed -E 's/^..(.*).$/\1/' | grep -vE '^https?:')
done
echo "$links links"
[ "$bad" -eq 0 ] && [ "$links" -gt 20 ]
