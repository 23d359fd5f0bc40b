#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# measure.sh LIBRARY_FOLDER [--show | --check | --write]: one small edit (the entry `port` of the section
# `server` goes from 8080 to 9090, or is added with 9090) by several tools in files with one hazard
# each, and what came back. Prints the tables of the README; --show also prints each difference;
# --check holds the README's tables against them, --write puts them there.
# Needs git crudini augeas-tools augeas-lenses python3 libglib2.0-dev pkg-config gcc g++ (./dev hazards
# installs them).
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
library=$(realpath "$1")
show=${2:-}
readme=$here/../../README.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 2
examples=$here/../../examples
compile() {  # PROGRAM SOURCE ...
  g++ -std=c++17 -O1 -I"$here/../../include" "${@:2}" -L"$library" -lzelconfutils -Wl,-rpath,"$library" -o "$1" || exit 2
}
compile set_zelconfutils "$here/set_zelconfutils.cpp"
for recipe in ini_edit block_edit; do compile "$recipe" "$examples/$recipe.cpp" "$examples/safe_save.cpp"; done
# shellcheck disable=SC2046
gcc -O1 "$here/set_gkeyfile.c" -o set_gkeyfile $(pkg-config --cflags --libs glib-2.0) || exit 2

# NAME | TEXT for printf. A file holds 8080 once, or the key is missing; where two places could be
# meant, the other one is 8081, and either counts as the edit. What is not the hazard itself is
# written in the tool's own style, so that a file without hazards comes back whole from each:
# {key:value} is an entry, {} the end of a section.
flat_hazards() {
  local long
  long=$(printf 'x%.0s' {1..1100})
  cat <<TEXT
(nothing unusual)|[server]\n{port:8080}\n{host:a}\n{}
blanks around the \`=\`|[server]\nport = 8080\nhost = a\n{}
no blanks around the \`=\`|[server]\nport=8080\nhost=a\n{}
values aligned in a column|[server]\nport     =   8080\nhostname =   a\n{}
indented keys|[server]\n  port = 8080\n    host = a\n{}
trailing blanks|[server]  \n{port:8080}   \n{host:a}\t\n{}
a comment after the value|[server]\n{port:8080} ; the proxy knows\n{host:a}\n{}
a comment after another value|[server]\n{port:8080}\n{host:a} ; the first\n{}
comments, \`#\` and \`;\`|# top\n; second\n[server]\n# not 8443\n{port:8080}\n;old = 1\n{host:a}\n# last\n{}
blank lines, several in a row|\n\n[server]\n\n{port:8080}\n\n\n{host:a}\n{}
the key is missing: added|[server]\n{host:a}\n{}
the same, no line feed at the end|[server]\n{host:a}
the same, CR LF line ends|[server]\r\n{host:a}\r\n{}
the same, another section follows|[server]\n{host:a}\n{}[client]\n{a:1}\n{}
no line feed at the end|[server]\n{host:a}\n{port:8080}
CR LF line ends|[server]\r\n{port:8080}\r\n{host:a}\r\n{}
mixed line ends|[server]\n{port:8080}\r\n{host:a}\n{}
keys in mixed case|[server]\n{MaxClients:10}\n{port:8080}\n{}
a value over several lines|[server]\n{allow:a}\n    b\n    c\n{port:8080}\n{}
the value is 1104 bytes long|[server]\n{port:8080$long}\n{host:a}\n{}
another value is 1100 bytes long|[server]\n{port:8080}\n{host:$long}\n{}
a line that is no entry|[server]\n!include other.conf\n{port:8080}\n{}
entries before all sections|{debug:1}\n[server]\n{port:8080}\n{}
the key twice|[server]\n{port:8080}\n{port:8081}\n{}
the section twice|[server]\n{port:8080}\n{}[client]\n{a:1}\n{}[server]\n{port:8081}\n{}
the key in an earlier section too|[client]\n{port:1}\n{}[server]\n{port:8080}\n{}
a byte of Latin-1|# caf\351\n[server]\n{port:8080}\n{}
a byte order mark|\357\273\277[server]\n{port:8080}\n{}
a NUL byte|# a\0b\n[server]\n{port:8080}\n{}
TEXT
}

# The same for files with blocks; {server} begins the header of the block.
block_hazards() {
  cat <<'TEXT'
(nothing unusual)|{server} {\n{port:8080}\n{mode:a}\n}\n
an indented block|  {server} {\n    {port:8080}\n    {mode:a}\n  }\n
the key is missing: added|{server} {\n{mode:a}\n}\n
CR LF line ends|{server} {\r\n{port:8080}\r\n{mode:a}\r\n}\r\n
no line feed at the end|{server} {\n{port:8080}\n}
a brace on a line of its own|{server}\n{\n{port:8080}\n}\n
blanks after the braces|{server} { \n{port:8080}\n} \n
a comment after the value|{server} {\n{port:8080} # the proxy knows\n}\n
another value ends in `}`|{server} {\n{mode:a}}\n{port:8080}\n}\n
a block inside, before the entry|{server} {\ninner {\n{mode:a}\n}\n{port:8080}\n}\n
TEXT
}

# TOOL TEXT: the text in the tool's style.
styled() {
  local entry='\1=\2' end='' between='' server='section server'
  case "$1" in
    git) entry='\\t\1 = \2' ;;
    crudini | augeas) entry='\1 = \2' ;;
    gkeyfile) between='\\n' ;;
    configparser) entry='\1 = \2' end='\\n' between='\\n' ;;
    augeas_blocks)  # its lens for logrotate's files, which knows the words of these
      entry='\1 \2' server='/var/log/server'
      set -- "$1" "$(sed 's/{port:/{rotate:/g; s/{mode:/{mail:/g' <<<"$2")"
      ;;
  esac
  sed -E "s#\{server\}#$server#; s/\{\}\[/${between}[/g; s/\{\}/$end/g; s/\{([^:{}\\]+):([^ \\]*)\}/$entry/g" <<<"$2"
}

# Each tool edits the file `f` its usual way; a result other than 0 says that it refused.
edit_zelconfutils() { ./set_zelconfutils f port 9090; }
edit_zelconfutils_blocks() { ./set_zelconfutils f server port 9090; }
edit_ini_recipe() { ./ini_edit --note '#;' f server set port 9090; }
edit_block_recipe() { ./block_edit --note '#' f server set port 9090; }
edit_git() { git config --file f server.port 9090; }
edit_crudini() { crudini --set f server port 9090; }
with_augeas() {  # LENS PATH: sets the node at the path below the file
  augtool --noload --noautoload >/dev/null 2>&1 <<TEXT
transform $1.lns incl $work/f
load
set /files$work/f/$2 9090
save
TEXT
}
edit_augeas() {  # the general lenses for this kind of file; the best result counts
  local lens
  for lens in Puppet PHP MySQL Dput; do
    cp original f
    with_augeas "$lens" server/port
    meant f && return 0
  done
}
edit_augeas_blocks() { with_augeas Logrotate rule/rotate; }
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

# Whether something differs from the original, and that is the edit. An added line may have been given the line
# feed that the last line lacked; which blanks it has is the tool's business, its section and its line
# end are not.
meant() {
  cmp -s "$1" original && return 1
  if grep -qa 808 original; then
    cmp -s "$1" <(sed 's/8080x*/9090/' original) || cmp -s "$1" <(sed 's/8081/9090/' original)
  else
    local end='' added
    grep -q $'\r' original && end=$'\r'
    added=$'^[ \t]*(port|rotate)[ \t]*[= ][ \t]*9090'"$end"'$'
    [ "$(grep -cE "$added" "$1")" -eq 1 ] &&
      ! sed '/^\[client\]/,$d' "$1" | grep -vE "$added" | cmp -s - /dev/null &&
      sed '/^\[client\]/,$d' "$1" | grep -qE "$added" &&
      { grep -vE "$added" "$1" | cmp -s - original || grep -vE "$added" "$1" | cmp -s - <(cat original; echo); }
  fi
}

verdict() {
  local tool=$1
  # shellcheck disable=SC2059
  printf "$(styled "$tool" "$2")" >original
  cp original f
  "edit_$tool" >said 2>&1
  if cmp -s f original; then echo "refused"
  elif meant f; then echo "only the edit"
  else echo "**other bytes**"
  fi
  if [ "$show" = --show ]; then
    { echo "--- $tool"; cat said; diff <(cat -A original) <(cat -A f); } >&2
  fi
}

# TITLE HAZARDS TOOL ...: a table with a column for each tool.
table() {
  local title=$1 hazards=$2 tool name text result row count=0
  shift 2
  local -A good=()
  printf '%s\n|---' "$title" && printf '|---%.0s' "$@" && echo '|'
  while IFS='|' read -r name text; do
    [ "$show" = --show ] && echo "=== $name" >&2
    row="| $name |"
    for tool in "$@"; do
      result=$(verdict "$tool" "$text")
      [ "$result" = "only the edit" ] && [ "$count" -gt 0 ] && good[$tool]=$((${good[$tool]:-0} + 1))
      row+=" $result |"
    done
    count=$((count + 1))
    echo "$row"
  done < <("$hazards")
  row="| only the edit, of $((count - 1)) |"
  for tool in "$@"; do row+=" ${good[$tool]:-0} |"; done
  echo "$row"
}

{
  # shellcheck disable=SC2016
  table '| In the file | `SetEntry` | recipe `ini_edit` | git config | crudini | Augeas | configparser | GKeyFile |' \
    flat_hazards zelconfutils ini_recipe git crudini augeas configparser gkeyfile
  echo
  # shellcheck disable=SC2016
  table '| In the file with blocks | `SetSectionEntry` | recipe `block_edit` | Augeas |' block_hazards \
    zelconfutils_blocks block_recipe augeas_blocks
} >tables

# The README with the tables between its two marks.
with_tables() { sed -e '/^<!-- hazards -->/r tables' -e '/^<!-- hazards -->/,/^<!-- end -->/{//!d}' "$readme"; }
case "$show" in
  --check) with_tables | diff -u --label README.md --label measured "$readme" - ;;
  --write) with_tables >fresh && cp fresh "$readme" ;;
  *) cat tables ;;
esac
