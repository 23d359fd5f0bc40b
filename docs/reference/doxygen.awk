# SPDX-License-Identifier: MIT
# What Doxygen is given of a page: without the calls, since it reads the headers anyway, and without
# links out of the reference; named after its file, whose path would be the name otherwise.
FNR == 1 && !/^# Reference$/ {
  name = FILENAME
  gsub(/.*\/|\.md$/, "", name)
  $0 = $0 " {#" name "}"
}
/^<!-- calls:/ { hidden = 1 }
/^<!-- end -->/ { hidden = 0; next }
hidden { next }
{
  while (match($0, /\[[^]]*\]\(\.\.\/[^)]*\)/)) {
    link = substr($0, RSTART, RLENGTH)
    text = link
    gsub(/^\[|\].*$/, "", text)
    $0 = substr($0, 1, RSTART - 1) text substr($0, RSTART + RLENGTH)
  }
  print
}
