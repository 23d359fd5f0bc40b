# SPDX-License-Identifier: MIT
# Draws docs/architecture.svg from the includes of the code:
#
#     awk -f docs/architecture.awk include/*.h $(find src -name '*.h' -o -name '*.cpp' | sort) > docs/architecture.svg
#
# A box is a group of files. An arrow says "includes"; one that follows from two others is left
# out. A file without a box, an arrow that points up, and boxes in a ring are errors.

function unit(id, x, y, w, title, note, files,   names, n, i) {
  order[++units] = id
  left[id] = x; top[id] = y; width[id] = w; name[id] = title; words[id] = note
  n = split(files, names, " ")
  for (i = 1; i <= n; ++i) home[names[i]] = id
}
function fail(text) { print FILENAME ": " text > "/dev/stderr"; failures = 1 }
function stem(path) { sub(/.*\//, "", path); sub(/\..*/, "", path); return path }

BEGIN {
  HEIGHT = 50
  unit("flat", 100, 34, 160, "ConfigFile", "flat files", "ConfigFile")
  unit("sectioned", 390, 34, 160, "MultiSectionFile", "files with sections", "MultiSectionFile Sections SectionEntries TopLevelEntries")
  unit("parser", 590, 34, 150, "ZelParser, ZelLex", "tokens", "StreamIterator ZelLex ZelParser")
  unit("records", 750, 34, 150, "ZelSection, Tree", "records in memory", "ZelSection Tree TextBlock")
  unit("csv", 910, 34, 150, "CsvDocument", "delimited records", "CsvDocument CsvDocumentRow CsvRecordReader FieldEnds")
  unit("sections", 390, 124, 160, "section text", "SectionSyntax, -Load", "ConfigSection SectionSyntax SectionLoad")
  unit("edits", 200, 214, 160, "moves and edits", "Walk, EntryEdit", "Walk EntryEdit EntryOperations")
  unit("access", 10, 214, 160, "file access", "FileAccess, FileLock", "FileAccess FileLock PathCheck ConfigException Refill")
  unit("entries", 200, 304, 160, "index of entries", "ConfigEntry, EntrySyntax", "ConfigEntry EntrySyntax")
  unit("lines", 200, 394, 160, "lines", "ConfigLineList, LinkedList", "LinkedList ConfigLineList SlabChain TextPool Release")
  unit("platform", 10, 484, 1050, "platform", "Platform, Text: the only place that knows a system", "Platform PlatformPosix PlatformWindows LibraryEntryWindows Text")
  home["SmartBuffer"] = home["ZelExport"] = "none"  # leaves that stand alone
}

FNR == 1 { from = home[stem(FILENAME)]; if (from == "") fail("has no box: name it in docs/architecture.awk") }
/^#include "/ {
  split($0, quoted, "\"")
  to = home[stem(quoted[2])]
  if (to == "") fail(quoted[2] " has no box")
  if (from == to || from == "none" || to == "none") next
  if (top[from] >= top[to]) fail("points up or sideways: " quoted[2])
  direct[from, to] = reach[from, to] = 1
}

END {
  if (failures) exit 1
  for (k = 1; k <= units; ++k) for (i = 1; i <= units; ++i) for (j = 1; j <= units; ++j)
    if (reach[order[i], order[k]] && reach[order[k], order[j]]) reach[order[i], order[j]] = implied[order[i], order[j]] = 1
  print "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 1070 550\" font-family=\"sans-serif\" text-anchor=\"middle\">"
  print "<defs><marker id=\"head\" viewBox=\"0 0 8 8\" refX=\"8\" refY=\"4\" markerWidth=\"8\" markerHeight=\"8\" orient=\"auto\"><path d=\"M0 0 8 4 0 8z\" fill=\"#456\"/></marker></defs>"
  print "<rect width=\"1070\" height=\"550\" fill=\"#fff\"/>"
  print "<text x=\"535\" y=\"20\" font-size=\"14\" fill=\"#456\">public headers: include/</text>"
  for (i = 1; i <= units; ++i) for (j = 1; j <= units; ++j) {
    a = order[i]; b = order[j]
    if (!direct[a, b] || implied[a, b]) continue
    start = left[a] + width[a] / 2
    end = left[b] + width[b] / 2 + (left[a] - left[b]) / 6
    if (b == "platform") end = start
    printf "<line x1=\"%d\" y1=\"%d\" x2=\"%d\" y2=\"%d\" stroke=\"#456\" stroke-width=\"1.5\" marker-end=\"url(#head)\"/>\n", start, top[a] + HEIGHT, end, top[b]
  }
  for (i = 1; i <= units; ++i) {
    a = order[i]
    fill = top[a] < 100 ? "#dbe9f6" : a == "platform" ? "#f3e6d3" : "#eef2ee"
    printf "<rect x=\"%d\" y=\"%d\" width=\"%d\" height=\"%d\" rx=\"5\" fill=\"%s\" stroke=\"#456\"/>\n", left[a], top[a], width[a], HEIGHT, fill
    printf "<text x=\"%d\" y=\"%d\" font-size=\"15\" font-weight=\"bold\">%s</text>\n", left[a] + width[a] / 2, top[a] + 21, name[a]
    printf "<text x=\"%d\" y=\"%d\" font-size=\"12\" fill=\"#345\">%s</text>\n", left[a] + width[a] / 2, top[a] + 39, words[a]
  }
  print "</svg>"
}
