#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# measure.sh LIBRARY_FOLDER [--show | --check README]: one small edit (the entry `port` of the section
# `server` goes from 8080 to 9090) by six tools in twenty files, and what came back. Prints the table
# of the README; --show also prints each difference; --check holds the README's table against it.
# Needs git crudini augeas-tools augeas-lenses python3 libglib2.0-dev pkg-config gcc g++ (./dev hazards
# installs them).
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
library=$(realpath "$1")
show=${2:-}
readme=$(realpath "${3:-$here/../../README.md}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 2
g++ -std=c++17 -O1 -I"$here/../../include" "$here/set_zelconfutils.cpp" -L"$library" -lzelconfutils \
  -Wl,-rpath,"$library" -o set_zelconfutils || exit 2
# shellcheck disable=SC2046
gcc -O1 "$here/set_gkeyfile.c" -o set_gkeyfile $(pkg-config --cflags --libs glib-2.0) || exit 2

# NAME | TEXT for printf. A file holds 8080 once; where two places could be meant, the other one is
# 8081, and either counts as the edit. What is not the hazard itself is written in the tool's own
# style, so that a file without hazards comes back whole from each: {key:value} is an entry, {} the
# end of a section.
hazards() {
  cat <<'TEXT'
(nothing unusual)|[server]\n{port:8080}\n{host:a}\n{}
comments, `#` and `;`|# top\n; second\n[server]\n# not 8443\n{port:8080}\n;old = 1\n{host:a}\n# last\n{}
blank lines, several in a row|\n\n[server]\n\n{port:8080}\n\n\n{host:a}\n{}
no line feed at the end|[server]\n{host:a}\n{port:8080}
CR LF line ends|[server]\r\n{port:8080}\r\n{host:a}\r\n{}
mixed line ends|[server]\n{port:8080}\r\n{host:a}\n{}
values aligned in a column|[server]\nport     =   8080\nhostname =   a\n{}
trailing blanks|[server]  \n{port:8080}   \n{host:a}\t\n{}
indented keys|[server]\n  port = 8080\n    host = a\n{}
keys in mixed case|[server]\n{MaxClients:10}\n{port:8080}\n{}
a comment behind the value|[server]\n{port:8080} ; the proxy knows\n{host:a}\n{}
a comment behind another value|[server]\n{port:8080}\n{host:a} ; the first\n{}
a value over several lines|[server]\n{allow:a}\n    b\n    c\n{port:8080}\n{}
a line that is no entry|[server]\n!include other.conf\n{port:8080}\n{}
entries in front of all sections|{debug:1}\n[server]\n{port:8080}\n{}
the key twice|[server]\n{port:8080}\n{port:8081}\n{}
the section twice|[server]\n{port:8080}\n{}[client]\n{a:1}\n{}[server]\n{port:8081}\n{}
the key in an earlier section too|[client]\n{port:1}\n{}[server]\n{port:8080}\n{}
a byte of Latin-1|# caf\351\n[server]\n{port:8080}\n{}
a byte order mark|\357\273\277[server]\n{port:8080}\n{}
a NUL byte|# a\0b\n[server]\n{port:8080}\n{}
TEXT
}

# TOOL TEXT: the text in the tool's style.
styled() {
  local entry='\1 = \2' end='' between=''
  case "$1" in
    git) entry='\\t\1 = \2' ;;
    gkeyfile) entry='\1=\2' between='\\n' ;;
    configparser) end='\\n' between='\\n' ;;
  esac
  sed -E "s/\{\}\[/${between}[/g; s/\{\}/$end/g; s/\{([^:}]+):([^}]*)\}/$entry/g" <<<"$2"
}

# Each tool edits the file `f` its usual way; a result other than 0 says that it refused.
edit_zelconfutils() { ./set_zelconfutils f port 9090; }
edit_git() { git config --file f server.port 9090; }
edit_crudini() { crudini --set f server port 9090; }
edit_augeas() {  # the general lenses for this kind of file; the best result counts
  local lens
  for lens in Puppet PHP MySQL Dput; do
    cp original f
    augtool --noload --noautoload >/dev/null 2>&1 <<TEXT && meant f && return 0
transform $lens.lns incl $work/f
load
set /files$work/f/server/port 9090
save
TEXT
  done
  return 0
}
edit_configparser() {
  /usr/bin/python3 - <<'TEXT'
import configparser
parser = configparser.ConfigParser()
parser.read("f", encoding="utf-8")
parser.set("server", "port", "9090")
with open("f", "w", encoding="utf-8") as file:
    parser.write(file)
TEXT
}
edit_gkeyfile() { ./set_gkeyfile f server port 9090; }

meant() { cmp -s "$1" <(sed 's/8080/9090/' original) || cmp -s "$1" <(sed 's/8081/9090/' original); }

verdict() {
  local tool=$1
  # shellcheck disable=SC2059
  printf "$(styled "$tool" "$2")" >original
  cp original f
  "edit_$tool" >said 2>&1
  if meant f && ! cmp -s f original; then echo "only the edit"
  elif cmp -s f original; then echo "refused"
  else echo "**other bytes**"
  fi
  if [ "$show" = --show ]; then
    { echo "--- $tool"; cat said; diff <(cat -A original) <(cat -A f); } >&2
  fi
}

tools=(zelconfutils git crudini augeas configparser gkeyfile)
{
  echo '| In the file | zelconfutils | git config | crudini | Augeas | configparser | GKeyFile |'
  echo '|---|---|---|---|---|---|---|'
  declare -A good=()
  count=0
  while IFS='|' read -r name text; do
    [ "$show" = --show ] && echo "=== $name" >&2
    row="| $name |"
    for tool in "${tools[@]}"; do
      result=$(verdict "$tool" "$text")
      [ "$result" = "only the edit" ] && [ "$count" -gt 0 ] && good[$tool]=$((${good[$tool]:-0} + 1))
      row+=" $result |"
    done
    count=$((count + 1))
    echo "$row"
  done < <(hazards)
  row="| only the edit, of $((count - 1)) |"
  for tool in "${tools[@]}"; do row+=" ${good[$tool]:-0} |"; done
  echo "$row"
} >table

if [ "$show" = --check ]; then
  diff -u --label "$readme" --label measured <(grep -F -x -f table "$readme") table
else
  cat table
fi
