#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_page.sh PAGE PROGRAM: runs the code blocks of a page in its order, in a folder of its own,
# and holds what they print and write against what the page shows.
set -euo pipefail
page=$(realpath "$1")
program=$(realpath "$2")
steps=$(dirname "$(realpath "${BASH_SOURCE[0]}")")/page.awk
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/texts" "$work/run"
awk -v mode=steps -v out="$work/texts" -f "$steps" "$page" >"$work/steps"
cd "$work/run"

failed=0 checks=0
same() {  # WHAT EXPECTED ACTUAL
  checks=$((checks + 1))
  diff -u --label "the page: $1" --label "what it really is" "$2" "$3" || failed=1
}
: >"$work/printed"
while read -r step first second; do
  case "$step" in
    file) mkdir -p "$(dirname "$first")" && cp "$second" "$first" ;;
    run)
      "$program" "$first" >"$work/printed" || { echo "block $first: result $?"; failed=1; }
      checks=$((checks + 1))
      ;;
    prints) same "output" "$first" "$work/printed" ;;
    result) same "$first" "$second" "$first" ;;
  esac
done <"$work/steps"
[ "$checks" -gt 0 ] || { echo "$page: no code block found"; exit 1; }
exit "$failed"
