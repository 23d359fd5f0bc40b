# SPDX-License-Identifier: MIT
# Writes the classes of public headers as Markdown: names, declarations, and the comments before
# them. Private members are left out. Relies on the layout that clang-format gives the headers.

function trim(text) { gsub(/^ +| +$/, "", text); return text }
function braces(text, opened) { opened = gsub(/\{/, "{", text); return opened - gsub(/\}/, "}", text) }
function say(text) { print text; blank = text == "" }
function gap() { if (!blank) say("") }

# Comment lines as Markdown: a @param list becomes a list, and what is set in columns stays so.
function say_doc(indent, i, line, state) {
  gap()
  for (i = 1; i <= docs; ++i) {
    line = doc[i]
    if (sub(/^@param +/, "", line)) {
      match(line, /^[^ ]+/)
      line = "- `" substr(line, 1, RLENGTH) "`: " trim(substr(line, RLENGTH + 1))
      state = "list"
    } else if (line ~ /^ *- /) {
      sub(/^ +/, "", line)
      state = "list"
    } else if (line !~ /^ /) {
      if (state == "columns" && line != "") gap()
      state = ""
    } else if (state == "list") {
      line = "  " trim(line)
    } else {
      if (state != "columns") gap()
      state = "columns"
      if (line !~ /^    /) line = "  " line
    }
    say(indent line)
  }
  docs = 0
}

# One line of a list: a type's name, an enumerator, a data member.
function say_item(text, i, words) {
  for (i = 1; i <= docs; ++i) words = words " " doc[i]
  docs = 0
  sub(/[;,]$/, "", text)
  sub(/ = nullptr$/, "", text)
  if (!listing) gap()
  listing = 1
  say("- `" text "`" (words == "" ? "" : ":" words))
}

function call_name(text) {
  if (text ~ /operator\(\)/) return "operator()"
  sub(/\(.*/, "", text)
  if (text !~ /operator/) sub(/.*[ *&\n]/, "", text)
  else sub(/.*operator/, "operator", text)
  return text
}

function say_call(text, name) {
  sub(/ *\{.*/, ";", text)
  name = call_name(text)
  if (name != lastName && (docs || name !~ /^(~|operator=$)/)) {
    gap()
    say("#### `" name "`")
    lastName = name
  }
  gap()
  say("```c++")
  say(text)
  say("```")
  if (docs) say_doc("")
  listing = 0
}

function open_class(text, name, kind) {
  name = text
  sub(/\n?\{$/, "", name)
  kind = name ~ /(^|\n)enum / ? "enum" : "class"
  sub(/^template[^\n]*\n/, "", name)
  sub(/^(class|struct|enum) /, "", name)
  sub(/ *:.*/, "", name)
  scopeKind[++depth] = kind
  scopeName[depth] = name
  access[depth] = text ~ /(^|\n)class / ? "private" : "public"
  sub(/ *\{$/, "", text)
  gap()
  say("## `" qualified(depth) "`")
  gap()
  say("```c++")
  say("#include \"" header "\"\n")
  say(text ";")
  say("```")
  if (docs) say_doc("")
  lastName = ""
  listing = 0
}

function qualified(last, i, name) {
  for (i = 1; i <= last; ++i) name = name (name == "" ? "" : "::") trim(scopeName[i])
  return name
}

FNR == 1 { header = FILENAME; sub(/.*\//, "", header); depth = docs = 0; declaration = ""; skipped = 0; inGroup = 0 }
/^#/ { next }

# Bodies and private parts.
skipped > 0 { skipped += braces($0); next }

{ line = trim($0) }
line == "" { inGroup = 0; if (declaration == "") docs = 0; next }

/^ *\/\/\/ @(name|\{|\})/ {
  if (sub(/^\/\/\/ @name /, "", line)) { gap(); say("### " line); lastName = ""; named = 1 }
  docs = 0
  next
}
/^ *\/\/\/( |$)/ { sub(/^\/\/\/ ?/, "", line); doc[++docs] = line; next }

line ~ /^\/\/ --- / {
  gsub(/^\/\/ --- | -+$/, "", line)
  gap()
  say("### " line)
  lastName = ""
  inGroup = 1
  listing = 0
  next
}
line ~ /^\/\// {
  if (inGroup) { if (inGroup++ == 1) gap(); say(substr(line, 4)) }
  next
}

line ~ /^(public|protected|private):$/ {
  access[depth] = substr(line, 1, length(line) - 1)
  if (access[depth] == "protected") { gap(); say("### For derived classes"); lastName = "" }
  next
}

line ~ /^namespace / { scopeKind[++depth] = "namespace"; scopeName[depth] = $2; next }
declaration == "" && line ~ /^\}/ {
  lastName = ""
  --depth
  if (depth > 0 && scopeKind[depth] == "class") { gap(); say("### The rest of `" trim(scopeName[depth]) "`") }
  next
}

# Everything else is part of a declaration.
{
  if (match(line, / *\/\/\/< ?/)) {
    doc[++docs] = substr(line, RSTART + RLENGTH)
    line = substr(line, 1, RSTART - 1)
  }
  sub(/ *\/\/ .*$/, "", line)
  gsub(/ZELCONFUTILS_API /, "", line)
  hidden = depth == 0 || scopeKind[depth] == "namespace" ? 0 : access[depth] == "private"
  if (hidden || line ~ /^friend /) {
    docs = 0
    skipped = braces(line)
    next
  }
  own = $0
  if (declaration == "") { match(own, /^ */); margin = RLENGTH }
  match(own, /^ */)
  declaration = declaration (declaration == "" ? "" : "\n" substr(own, margin + 1, RLENGTH - margin)) line
  if (line !~ /[;{}]$/ && !(scopeKind[depth] == "enum" && depth > 0)) next

  text = declaration
  declaration = ""
  inClass = depth > 0 && scopeKind[depth] != "namespace"
  if (text ~ /(^|\n)(class|struct|enum) / && text ~ /\{$/) {
    open_class(text)
  } else if (!inClass && !(docs && text ~ /^using /)) {
    docs = 0
    skipped = braces(text)
  } else if (!inClass) {
    if (!listing) { gap(); say("## Types of `" qualified(depth) "`") }
    say_item(text)
  } else if (text !~ /\(/ || text ~ /^using / || scopeKind[depth] == "enum") {
    say_item(text)
  } else {
    skipped = braces(text)
    say_call(text)
  }
}
