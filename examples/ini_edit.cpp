// SPDX-License-Identifier: MIT
// Edits one entry of one section of an INI file. The section's lines are cut out, edited as a flat
// text, and put back; every other byte stays.
//
//   ini_edit FILE [OPTION]... SECTION EDIT
//
// SECTION is the name between the brackets; '' is what stands before the first section. EDIT and
// OPTION are those of line_edit.
#include <optional>

#include "edit_program.h"

namespace {

struct Section {
  std::size_t begin, end;  // its lines, the header not counted
  std::size_t line;        // the number of the first of them
};

// The name in a header line, or nothing.
std::optional<std::string> HeaderName(const std::string& line) {
  const std::size_t open = line.find_first_not_of(" \t");
  if (open == std::string::npos || line[open] != '[') return std::nullopt;
  const std::size_t close = line.find(']', open);
  if (close == std::string::npos) return std::nullopt;
  return line.substr(open + 1, close - open - 1);
}

Section FindSection(const std::string& text, const std::string& name) {
  std::vector<Section> found;
  if (name.empty()) found.push_back({0, text.size(), 1});
  bool inside = name.empty();
  std::size_t number = 1;
  for (std::size_t at = 0; at < text.size(); ++number) {
    const std::size_t next = std::min(text.find('\n', at), text.size() - 1) + 1;
    if (const auto header = HeaderName(text.substr(at, next - at))) {
      if (inside) found.back().end = at;
      inside = *header == name && !name.empty();
      if (inside) found.push_back({next, text.size(), number + 1});
    }
    at = next;
  }
  if (found.empty()) throw Refused("there is no section [" + name + "]");
  if (found.size() > 1) {
    throw Refused("line " + std::to_string(found[1].line - 1) + ": [" + name + "] stands in line " +
                  std::to_string(found[0].line - 1) + " already");
  }
  return found[0];
}

}  // namespace

int main(int count, char** arguments) try {
  Options options = ParseOptions(count, arguments);
  const auto& words = options.words;
  if (words.size() < 4 || !options.before.empty())
    return std::puts("usage: ini_edit FILE [OPTION]... SECTION EDIT"), 2;
  const std::string before = ReadBytes(words[0]);
  options.style.lineEnd = LineEnd(before);

  const Section section = FindSection(before, words[1]);
  FlatText text(before.substr(section.begin, section.end - section.begin), options.style,
                section.line);
  if (!Edit(text, words, 2)) return std::printf("no such edit: %s\n", words[2].c_str()), 2;
  std::string head = before.substr(0, section.begin);
  if (!text.Text().empty() && !EndsItsLastLine(head)) head += options.style.lineEnd;
  Finish(options, words[0], before, head + text.Text() + before.substr(section.end));
  return 0;
} catch (const std::exception& error) {
  std::printf("refused: %s\n", error.what());
  return 1;
}
