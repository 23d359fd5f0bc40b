#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# demo.sh BUILD [--shipped | --check | --record]: examples of that build edit copies of real files of this
# machine; with an option, as where the machine has no such file, of files of the same kind in data/. What
# they print stands in the README: --check holds it against that, --record writes it there.
# demo.sh --programs: the programs that it runs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
programs=(edit_value read_values block_edit)

# show PROGRAM FILE SHIPPED ARGUMENT ...
show() {
  local file=$2
  [ -z "$shipped" ] && [ -r "$file" ] || file=examples/data/$3
  printf '==%s\n' "$(printf ' %q' "$1" "$file" "${@:4}")"
  "$build/examples/$1" "$file" "${@:4}"
}
demo() {
  show edit_value /etc/login.defs login.defs $'\t' \
    set PASS_MAX_DAYS 90 delete PASS_MIN_DAYS rename LOGIN_RETRIES LOGIN_TRIES add CREATE_HOME yes
  show read_values /etc/os-release os-release VERSION_ID 0
  show block_edit /etc/logrotate.d/dpkg logrotate --dry-run /var/log/dpkg.log set rotate 4
}

# The README with what the demo prints in the place of what stands there.
page() {
  demo | awk 'FNR == NR { text = text $0 "\n"; next }
    /^== / && !shown { printf "%s", text; shown = inside = 1 }
    /^```$/ { inside = 0 }
    !inside
    END { exit !shown }' - README.md
}

build=$1
shipped=${2:-}
case "$*" in
  --programs) echo "${programs[@]}" ;;
  *--check) page | diff README.md - || { echo "The README (<) shows something else than ./dev demo --record (>)." >&2 && exit 1; } ;;
  *--record) page >"$build/README.md" && cat "$build/README.md" >README.md ;;
  *) demo ;;
esac
