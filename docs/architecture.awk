# SPDX-License-Identifier: MIT
# Draws docs/architecture.svg from the includes of the code:
#
#     awk -f docs/architecture.awk $(find src include -name '*.h' -o -name '*.cpp' | LC_ALL=C sort) > docs/architecture.svg
#
# A box is a folder of src/, with the public headers whose sources lie there. An arrow says "includes"; one that follows from two others is left out.
# A folder stands one floor above the highest that it includes. Folders in a ring are an error.

function stem(path) { sub(/.*\//, "", path); sub(/\..*/, "", path); return path }
function folder(path) { sub(/^src\//, "", path); sub(/\/?[^\/]*$/, "", path); return path }
function floor_of(box,   i, below) {
  if (open[box]) { print "a ring of includes through " box > "/dev/stderr"; failed = 1; exit 1 }
  if (box in level) return level[box]
  open[box] = 1
  for (i = 1; i <= boxes; i++) if (direct[box, name[i]]) { below = floor_of(name[i]) + 1; if (below > level[box]) level[box] = below }
  open[box] = 0
  if (level[box] > top) top = level[box]
  return level[box] += 0
}
function text(x, y, size, style, words) {
  printf "<text x=\"%d\" y=\"%d\" font-size=\"%d\"%s>%s</text>\n", x, y, size, style, words
}

BEGIN {
  WIDTH = 1000; BOX_WIDTH = 220; BOX_HEIGHT = 48; FLOOR_HEIGHT = 86
  for (i = 1; i < ARGC; i++) if (ARGV[i] ~ /^src\/.*\.cpp$/) home[stem(ARGV[i])] = folder(ARGV[i])
}
FNR == 1 {
  from = FILENAME ~ /^src\// ? folder(FILENAME) : home[stem(FILENAME)]
  if (from == "") nextfile  # ZelExport.h, of nobody and everybody
  if (!(from in headers)) { name[++boxes] = from; headers[from] = "" }
  if (FILENAME !~ /^src\//) headers[from] = headers[from] (headers[from] == "" ? "" : ", ") stem(FILENAME)
}
/^#include "/ {
  split($0, quoted, "\"")
  to = quoted[2] ~ /\// ? folder(quoted[2]) : home[stem(quoted[2])]
  if (to != "" && to != from) direct[from, to] = reach[from, to] = 1
}

END {
  if (failed) exit 1
  for (i = 1; i <= boxes; i++) floor_of(name[i])
  for (k = 1; k <= boxes; k++) for (i = 1; i <= boxes; i++) for (j = 1; j <= boxes; j++)
    if (reach[name[i], name[k]] && reach[name[k], name[j]]) reach[name[i], name[j]] = implied[name[i], name[j]] = 1
  height = (top + 1) * FLOOR_HEIGHT - FLOOR_HEIGHT + BOX_HEIGHT + 20

  # On each floor from left to right by the middle of what stands below, then by name.
  for (f = 0; f <= top; f++) {
    count = 0
    for (i = 1; i <= boxes; i++) {
      box = name[i]
      if (level[box] != f) continue
      weight[box] = below = 0
      for (j = 1; j <= boxes; j++) if (direct[box, name[j]]) { weight[box] += middle[name[j]]; below++ }
      if (below > 0) weight[box] /= below
      for (k = ++count; k > 1 && (weight[row[k - 1]] > weight[box] || (weight[row[k - 1]] == weight[box] && row[k - 1] > box)); k--)
        row[k] = row[k - 1]
      row[k] = box
    }
    for (k = 1; k <= count; k++) {
      middle[row[k]] = WIDTH * (2 * k - 1) / (2 * count)
      upper[row[k]] = height - 10 - BOX_HEIGHT - f * FLOOR_HEIGHT
    }
  }

  printf "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 %d %d\" font-family=\"sans-serif\" text-anchor=\"middle\">\n", WIDTH, height
  print "<defs><marker id=\"head\" viewBox=\"0 0 8 8\" refX=\"8\" refY=\"4\" markerWidth=\"8\" markerHeight=\"8\" orient=\"auto\"><path d=\"M0 0 8 4 0 8z\" fill=\"#456\"/></marker></defs>"
  printf "<rect width=\"%d\" height=\"%d\" fill=\"#fff\"/>\n", WIDTH, height
  for (i = 1; i <= boxes; i++) for (j = 1; j <= boxes; j++) {
    a = name[i]; b = name[j]
    if (!direct[a, b] || implied[a, b]) continue
    printf "<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\" stroke=\"#456\" stroke-width=\"1.5\" marker-end=\"url(#head)\"/>\n",
      middle[a], upper[a] + BOX_HEIGHT, middle[b] + (middle[a] - middle[b]) / 6, upper[b]
  }
  for (i = 1; i <= boxes; i++) {
    a = name[i]
    printf "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" rx=\"5\" fill=\"%s\" stroke=\"#456\"/>\n",
      middle[a] - BOX_WIDTH / 2, upper[a], BOX_WIDTH, BOX_HEIGHT, headers[a] == "" ? "#eef2ee" : "#dbe9f6"
    text(middle[a], upper[a] + (headers[a] == "" ? 29 : 20), 15, " font-weight=\"bold\"", a "/")
    if (headers[a] != "") text(middle[a], upper[a] + 38, 12, " fill=\"#345\"", headers[a])
  }
  print "</svg>"
}
