#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# edit_test.sh LINE_EDIT INI_EDIT BLOCK_EDIT [EMULATOR]: a table of edits, each with the whole file
# before and after.
set -euo pipefail
line=$(realpath "$1") ini=$(realpath "$2") block=$(realpath "$3")
emulator=("${@:4}")
feed=$'\n' # of a file that has none yet
[ "${1%.exe}" = "$1" ] || feed=$'\r\n'
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
failed=0 rows=0

# row WHAT BEFORE AFTER PROGRAM ARGUMENT...: `file` among the arguments is the file. AFTER may be
# "refused: TEXT": the file stays, and the program gives that reason.
row() {
  local what=$1 before=$2 after=$3 reason='' code=0
  shift 3
  rows=$((rows + 1))
  if [ "${after#refused: }" != "$after" ]; then reason=$after after=$before; fi
  printf '%s' "$before" >file
  "${emulator[@]}" "$@" >said 2>&1 || code=$?
  if [ "$(cat file && echo .)" != "$after." ]; then
    printf 'FAILED: %s\n  command:  %q\n  expected: %q\n  found:    %q\n' "$what" "${*:2}" "$after" "$(cat file)"
    failed=1
  fi
  if [ -z "$reason" ] && [ "$code" -ne 0 ] || [ -n "$reason" ] && ! grep -qF -- "$reason" said; then
    printf 'FAILED: %s\n  command:  %q\n  expected: %q\n  it said:  %q\n' "$what" "${*:2}" "${reason:-success}" "$(cat said)"
    failed=1
  fi
}

# --- Flat files ------------------------------------------------------------------------------------
equals() { row "$1" "$2" "$3" "$line" "${@:4:$#-4-$edit_words+1}" file = "${@:$#-$edit_words+1}"; }
edit_words=3
equals "blanks around the old value stay" $'a  =  1  \nb=2\n' $'a  =  9  \nb=2\n' set a 9
equals "a trailing comment stays" $'a = 1\t# why\n' $'a = 9\t# why\n' --note '#' set a 9
equals "a mark within quotes begins no comment" $'a = "1 # 2" # why\n' $'a = 9 # why\n' --note '#' set a 9
equals "a mark without a blank before it begins none" $'a = 1#2\n' $'a = 9\n' --note '#' set a 9
equals "what may be a comment is not thrown away" $'a = 1 # why\n' "refused: line 1, a: part of its value may be" set a 9
equals "nor kept for one" $'a = x ; y\n' $'a = 9\n' --note '' set a 9
equals "a quote that is not closed hides no comment" $'a = don\'t # why\n' "refused: line 1, a: part" --note '#' set a 9
equals "an empty value" $'a =\nb=\n' $'a = 9\nb=\n' set a 9
equals "an empty value before a comment" $'a =  # why\n' $'a =  9 # why\n' --note '#' set a 9
equals "CR LF" $'a = 1\r\nb=2\r\n' $'a = 9\r\nb=2\r\n' set a 9
equals "no line feed at the end" $'a=1\nb=2' $'a=1\nb=9' set b 9
equals "indented, after an indented comment with the key" $'\t# a = 0\n\ta = 1\n' $'\t# a = 0\n\ta = 9\n' set a 9
equals "a value with the separator" $'a = b=c\n' $'a = d=e\n' set a d=e
equals "a missing key is added" $'a = 1\n\n# end\n' $'a = 1\nb = 2\n\n# end\n' set b 2
equals "the key twice" $'a=1\nb=2\na=3\n' "refused: line 3, a: stands in line 1 already" set a 9
equals "a value that goes on in the next line" $'a = 1 \\\n  2\nb=3\n' "refused: line 1, a: it goes on" set a 9
equals "a line that may be part of the one before" $'a = 1 \\\nb = 2\n' "refused: line 2, b: it may belong" set b 9
equals "a value that would go on in the next line" $'a=1\nb=2\n' "refused: a: with this value" set a x\\
equals "a value that would begin a comment" $'a = 1\n' "refused: a: with this value" --note '#' set a '1 # 2'
equals "a value of two lines" $'a = 1\n' "refused: a line feed" set a $'1\nb=2'
equals "a line of more than 1023 bytes" "a = $(printf '%01100d' 0)"$'\n' "refused: line 1, a: its line is too long" set a 9
equals "add after the last of its kind" $'[x]\na=1\n# of b\nb=2\n' $'[x]\na=1\na=2\n# of b\nb=2\n' add a 2
equals "add after its continuation" $'a=1\\\n2\nb=2\n' $'a=1\\\n2\na=3\nb=2\n' add a 3
equals "add to an empty file" '' "a = 1$feed" add a 1
equals "add mends a missing last line feed" $'a=1' "a=1${feed}b=2$feed" add b 2
equals "add to CR LF without a last one" $'a=1\r\nb=2' $'a=1\r\nb=2\r\nc=3\r\n' add c 3
equals "add of more than 1023 bytes" $'a=1\n' "refused: b: a line has at most" add b "$(printf '%01100d' 0)"
equals "add with the separator in the key" $'a=1\n' "refused: b=c: with this value" add b=c 1
equals "rename" $' a  = 1 # why\n' $' long  = 1 # why\n' rename a long
equals "rename to what is there" $'a=1\nb=2\n' "refused: there is an entry b already" rename a b
equals "rename a key without a value" $'skip-it\na=1\n' $'skip\na=1\n' rename skip-it skip
equals "a key without a value is not set" $'skip\na=1\n' "refused: line 1, skip: it has no value" set skip 1
edit_words=2
equals "delete" $'# a\na=1\r\nb=2' $'# a\nb=2' delete a
equals "delete the last line" $'a=1\nb=2' $'a=1\n' delete b
equals "delete what is not there" $'a=1\n' "refused: there is no entry b" delete b

blanks() { row "$1" "$2" "$3" "$line" "${@:4:$#-4-$edit_words+1}" file blanks "${@:$#-$edit_words+1}"; }
edit_words=3
mixed=$'Port 22\nLogin\t\tyes\n  Root   no\nUse=1\n'
blanks "one blank" "$mixed" "${mixed/ 22/ 2222}" set Port 2222
blanks "tabs" "$mixed" "${mixed/yes/no}" set Login no
blanks "indented, several blanks" "$mixed" "${mixed/   no/   yes}" set Root yes
blanks "an equals sign" "$mixed" "${mixed/=1/=2}" set Use 2
blanks "keys without case" "$mixed" "${mixed/ 22/ 23}" --ignore-case set port 23
blanks "a key with case" "$mixed" "${mixed}port=23"$'\n' set port 23
blanks "rename keeps tabs" "$mixed" "${mixed/Login/Logon}" rename Login Logon
ssh=$'Port 22\n#Port 23\nUse yes\n\n# for one\nMatch User a\n\tUse no\n'
blanks "set before Match only" "$ssh" "${ssh/Use yes/Use no}" --before Match set Use no
blanks "set what stands in Match only" $'Match User a\n\tUse no\n' $'Use yes\nMatch User a\n\tUse no\n' --before Match set Use yes
blanks "add before Match" "$ssh" "${ssh/Use yes/Use yes$'\n'New 1}" --before Match add New 1
blanks "add a second of its kind" "$ssh" "${ssh/22/22$'\n'Port 24}" --before Match add Port 24

# --- Sections --------------------------------------------------------------------------------------
section() { row "$1" "$2" "$3" "$ini" "${@:4}"; }
two=$'p = 0\r\n[one]\r\np = 1\r\n\r\n; of two\r\n[two]\r\np=2'
section "set in the first section" "$two" "${two/= 1/= 9}" file one set p 9
section "set in the second, no last line feed" "$two" "${two/p=2/p=9}" file two set p 9
section "set before all sections" "$two" "${two/= 0/= 9}" file '' set p 9
section "add at the end of a section" "$two" "${two/= 1/= 1$'\r\n'q = 2}" file one add q 2
section "add at the end of the file" "$two" "$two"$'\r\nq=3\r\n' file two add q 3
section "rename" "$two" "${two/p=2/q=2}" file two rename p q
section "delete" "$two" "${two/p = 1$'\r\n'/}" file one delete p
section "no such section" "$two" "refused: there is no section [three]" file three set p 1
section "the section twice" $'[a]\nx=1\n[b]\n[a]\ny=2\n' "refused: line 4: [a] stands in line 1 already" file a set x 2
section "a line number counts from the top" $'[a]\nx=1\n\nx=2\n' "refused: line 4, x: stands in line 2" file a set x 3
section "a header with a comment" $' [a] ; why\nx=1\n' $' [a] ; why\nx=2\n' file a set x 2
section "an empty section" $'[a]\n\n[b]\nx=1\n' $'[a]\ny = 2\n\n[b]\nx=1\n' file a add y 2
section "an empty section without a line feed" $'[a]' "[a]${feed}y = 2$feed" file a add y 2
section "a dry run" "$two" "$two" --dry-run file one set p 9
section "options after the file" "$two" "$two" file --dry-run one set p 9
section "keys with blanks" $'[g]\nlog level = 1\n' $'[g]\nlog level = 2\n' file g set 'log level' 2

# --- Blocks ----------------------------------------------------------------------------------------
braces() { row "$1" "$2" "$3" "$block" "${@:4}"; }
rotate=$'compress\n/a.log /b.log {\n\tweekly\n\trotate\t4\n\tpostrotate\n\t\trotate 1\n\tendscript\n}\n/c.log\n/d.log\n{\n    rotate 7\n}'
braces "two paths in a header" "$rotate" "${rotate/$'\t'4/$'\t'5}" file /b.log set rotate 5
braces "a brace on a line of its own, two paths above" "$rotate" "${rotate/7/8}" file /c.log set rotate 8
braces "the whole header" "$rotate" "${rotate/7/8}" file "/c.log /d.log" set rotate 8
braces "add before a script" "$rotate" "${rotate/$'\t'4/$'\t'4$'\n\t'su$'\t'root adm}" file /a.log add su "root adm"
braces "add a word alone" "$rotate" "${rotate/7/7$'\n    'missingok}" file /d.log add missingok ''
braces "rename" "$rotate" "${rotate/weekly/daily}" file /a.log rename weekly daily
braces "delete" "$rotate" "${rotate/$'\tweekly\n'/}" file /a.log delete weekly
braces "a new block" "$rotate" "$rotate"$'\n/e.log {\n\trotate 2\n\tcompress\n}\n' file /e.log add-block rotate 2 compress ''
braces "what was added is read again" $'/e.log {\n\trotate 2\n}\n' $'/e.log {\n\trotate 3\n}\n' file /e.log set rotate 3
braces "CR LF" $'a {\r\n x 1\r\n}\r\n' $'a {\r\n x 1\r\n}\r\nb {\r\n x 3\r\n}\r\n' file b add-block x 3
braces "a block within a block" $'a {\n x 1\n b {\n  x 2\n }\n}\n' "refused: line 3: a block within a block" file a set x 9
braces "a function in a script" $'a {\n postrotate\n  f() {\n  }\n endscript\n}\n' "refused: line 3: a block within" file a set x 9
braces "a brace after other text" $'a {\n x ${y}\n}\n' "refused: line 2: a closing brace after other text" file a set x 9
braces "white space after a brace" $'a { \n x 1\n}\n' "refused: line 1: white space after a brace" file a set x 9
braces "a comment with a brace" $'a {\n # b {\n x 1\n}\n' "refused: line 2: an indented comment" file a set x 9
braces "a block without an end" $'a {\n x 1\n' "refused: line 1: the block has no end" file a set x 9
braces "a brace that closes nothing" $'a {\n}\n}\n' "refused: line 3: a brace that closes nothing" file a set x 9
braces "mixed line ends" $'a {\r\n x 1\n}\n' "refused: line 3: a brace whose line ends otherwise" file a set x 9
braces "the block twice" $'a {\n}\nb a {\n}\n' "refused: line 3: a stands in line 1 already" file a set x 9
braces "no such block" $'a {\n}\n' "refused: there is no block b" file b set x 9
dhcp=$'# subnet x {\nsubnet 10.0.0.0 netmask 255.0.0.0 {\n  option routers 10.0.0.1; # main\n  allow old;\n  pass;\n}\n'
braces "semicolons stay" "$dhcp" "${dhcp/10.0.0.1/10.0.0.2}" --note '#' file 10.0.0.0 set "option routers" 10.0.0.2
braces "an added entry gets one" "$dhcp" "${dhcp/pass;/pass;$'\n'  lease 600;}" --note '#' file 10.0.0.0 add lease 600
braces "two words, a second of its kind" "$dhcp" "${dhcp/main/main$'\n'  option routers 10.0.0.3;}" --note '#' file 10.0.0.0 add "option routers" 10.0.0.3
printf '%s' "$rotate" >file
"${emulator[@]}" "$block" file | tr -d '\r' >said
diff -u --label expected --label actual - said <<'TEXT' || failed=1
line 2: /a.log /b.log
line 11: /c.log /d.log
TEXT
echo "$rows edits"
exit $failed
