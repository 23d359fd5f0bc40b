# SPDX-License-Identifier: MIT
# Reads a Markdown page. mode=program writes one C++ program made of all ```cpp blocks of the page:
# each stands in a namespace of its own, includes go to the top, and a block without a `main` is
# the body of one; a `main` is the last function of its block. mode=steps writes the page's texts
# below `out` and prints what is to be done with them, in the order of the page:
#
#     file NAME TEXT      the fence after "<!-- file: NAME -->": the file exists from here on
#     run N               block N runs
#     prints TEXT         the ```text fence after a cpp block: what the block prints
#     result NAME TEXT    the fence after "<!-- result: NAME -->": the file now holds this
#
# "<!-- cpp" up to "-->" holds lines that go before the next block and that no reader needs.

function flush_block() {
  ++blocks
  if (mode == "steps") { print "run", blocks; return }
  line = "#line " first " \"" page "\"\n"
  if (sub(/int main\(/, "int Main(", block)) {
    sub(/\}\n$/, "return 0;\n}\n", block)
    body[blocks] = hidden line block
  } else {
    body[blocks] = "int Main() {\n" hidden line block "return 0;\n}\n"
  }
  hidden = ""
}

function keep(text, name) {
  name = out "/" ++texts
  printf "%s", text > name
  close(name)
  return name
}

function flush_text() {
  if (mode != "steps") return
  if (marker != "") print marker, keep(block)
  else if (language == "text" && previous == "cpp") print "prints", keep(block)
}

FNR == 1 { page = FILENAME }

in_fence && /^```/ {
  in_fence = 0
  if (language == "cpp") flush_block(); else flush_text()
  previous = language
  marker = ""
  next
}
in_fence {
  if (language == "cpp" && /^#include/) { if (!seen[$0]++) includes = includes $0 "\n"; block = block "\n" }
  else block = block $0 "\n"
  next
}
in_hidden && /^-->/ { in_hidden = 0; next }
in_hidden {
  if (/^#include/) { if (!seen[$0]++) includes = includes $0 "\n" } else hidden = hidden $0 "\n"
  next
}
/^<!-- cpp$/ { in_hidden = 1; next }
/^<!-- (file|result): .* -->$/ { marker = $2 " " $3; sub(/:/, "", marker); next }
/^```/ { in_fence = 1; language = substr($0, 4); block = ""; first = FNR + 1; next }

END {
  if (mode == "steps") exit
  print "#include <cstdlib>\n" includes
  for (i = 1; i <= blocks; ++i) print "namespace block_" i " {\n" body[i] "}"
  print "int main(int, char** arguments) {\n  switch (std::atoi(arguments[1])) {"
  for (i = 1; i <= blocks; ++i) print "    case " i ": return block_" i "::Main();"
  print "  }\n  return 9;\n}"
}
