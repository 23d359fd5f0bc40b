#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Every relative link of our pages leads to a file or folder.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
bad=0 links=0
for page in *.md docs/*.md docs/*/*.md; do
  while read -r link; do
    links=$((links + 1))
    [ -e "$(dirname "$page")/${link%%#*}" ] || { echo "$page: $link"; bad=1; }
  done < <(sed '/^```/,/^```/d' "$page" | grep -oE '\]\([^)]+\)' | sed -E 's/^..(.*).$/\1/' | grep -vE '^https?:')
done
echo "$links links"
[ "$bad" -eq 0 ] && [ "$links" -gt 20 ]
