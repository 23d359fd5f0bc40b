// SPDX-License-Identifier: MIT
// Lists the blocks of a brace file (logrotate, dhcpd.conf), edits one entry of one, or adds a
// block.
//
//   block_edit FILE [OPTION]...
//   block_edit FILE [OPTION]... BLOCK EDIT
//   block_edit FILE [OPTION]... BLOCK add-block [KEY VALUE]...
//
// BLOCK is the text before the brace, or one word of it. EDIT and OPTION are those of line_edit.
// The blocks are read by one object whose separator occurs nowhere, so that no header is taken for
// an entry; the lines of one block are edited as a flat text of their own.
#include "MultiSectionFile.h"
#include "SmartBuffer.h"
#include "edit_program.h"

namespace {

struct Block {
  std::string name;
  std::size_t begin, end;  // the lines between the braces
  std::size_t line;        // the number of the line with the opening brace
};

std::string Trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first == std::string::npos
             ? ""
             : text.substr(first, text.find_last_not_of(" \t\r\n") + 1 - first);
}

bool NamesFile(const std::string& line) {
  return !line.empty() && std::strchr("/\"'~*", line[0]) != nullptr;
}

// The blocks, found line by line as the library finds them. Refused is what it would read as
// something else than was meant.
std::vector<Block> FindBlocks(const std::string& text) {
  const std::string lineEnd = LineEnd(text);
  std::vector<Block> blocks;
  std::string above;  // what may belong to the name: the line before, or several with file names
  bool inside = false;
  std::size_t number = 1;
  const auto refuse = [&number](const char* why) {
    throw Refused("line " + std::to_string(number) + ": " + why);
  };
  for (std::size_t at = 0, next; at < text.size(); at = next, ++number) {
    next = std::min(text.find('\n', at), text.size() - 1) + 1;
    const std::string line = text.substr(at, next - at), seen = Trimmed(line);
    if (line[0] == '#') continue;  // a comment to the library too
    const char last = seen.empty() ? '\0' : seen.back();
    const bool opens = last == '{', closes = last == '}' && (inside || seen.size() == 1);
    if (opens || closes) {
      if (seen[0] == '#') refuse("an indented comment that ends in a brace");
      if (line.find_first_not_of("\r\n", line.rfind(last) + 1) != std::string::npos)
        refuse("white space after a brace");
      if (EndsItsLastLine(line) && LineEnd(line) != lineEnd)
        refuse("a brace whose line ends otherwise than the first line");
    }
    if (opens) {
      if (inside) refuse("a block within a block");
      const std::string name = Trimmed(seen.substr(0, seen.size() - 1));
      const bool whole = !name.empty() && !NamesFile(above);
      blocks.push_back({whole ? name : Trimmed(above + name), next, text.size(), number});
    } else if (closes) {
      if (!inside) refuse("a brace that closes nothing");
      if (seen.size() > 1) refuse("a closing brace after other text");
      blocks.back().end = at;
    }
    inside = opens || (inside && !closes);
    if (opens || closes || !NamesFile(above)) above.clear();
    if (!inside && !closes) above += seen + " ";
  }
  if (inside) {
    number = blocks.back().line;
    refuse("the block has no end");
  }
  return blocks;
}

const Block& FindBlock(const std::vector<Block>& blocks, const std::string& name) {
  const Block* found = nullptr;
  for (const Block& block : blocks) {
    if (block.name != name && (" " + block.name + " ").find(" " + name + " ") == std::string::npos)
      continue;
    if (found != nullptr) {
      throw Refused("line " + std::to_string(block.line) + ": " + name + " stands in line " +
                    std::to_string(found->line) + " already");
    }
    found = &block;
  }
  if (found == nullptr) throw Refused("there is no block " + name);
  return *found;
}

// How entries are written in this file: as the first one in a block.
void TakeManner(const std::string& text, const std::vector<Block>& blocks, FlatStyle& style) {
  style.indent = "\t";
  for (const Block& block : blocks) {
    for (std::size_t at = block.begin, next; at < block.end; at = next) {
      next = text.find('\n', at) + 1;
      const std::string line = text.substr(at, next - at), seen = Trimmed(line);
      if (seen.empty() || seen[0] == '#') continue;
      style.indent = line.substr(0, line.find(seen));
      style.semicolons = Trimmed(seen.substr(0, seen.find(" #"))).back() == ';';
      return;
    }
  }
}

void List(Configuration::MultiSectionFile& file, const std::vector<Block>& blocks) {
  SmartBuffer name;
  file.Restart();
  for (const Block& block : blocks) {
    file.GotoNextSection();
    file.GetSectionName(&name, name.size());  // its own line's part of it
    std::printf("line %zu: %s\n", block.line, *name() != '\0' ? name() : block.name.c_str());
  }
}

std::string EditBlock(const std::string& text, const Block& block, const Options& options) {
  const auto& words = options.words;
  FlatText lines(text.substr(block.begin, block.end - block.begin), options.style, block.line + 1);
  bool good = words[2] != "add-block" ? Edit(lines, words, 2) : words.size() % 2 == 1;
  if (words[2] == "add-block")
    for (std::size_t at = 3; at + 1 < words.size(); at += 2) lines.Add(words[at], words[at + 1]);
  if (!good) throw Refused("no such edit: " + words[2]);
  return text.substr(0, block.begin) + lines.Text() + text.substr(block.end);
}

}  // namespace

int main(int count, char** arguments) try {
  Options options = ParseOptions(count, arguments);
  const auto& words = options.words;
  if (words.empty() || words.size() == 2)
    return std::puts("usage: block_edit FILE [OPTION]... [BLOCK EDIT]"), 2;
  const std::string before = ReadBytes(words[0]);
  const std::string end = LineEnd(before);
  std::vector<Block> blocks = FindBlocks(before);
  options.style.blanks = options.style.scripts = true;
  options.style.lineEnd = end;
  TakeManner(before, blocks, options.style);

  const std::string text = EndsItsLastLine(before) ? before : before + end;
  const char* nowhere = "\x01";
  Configuration::MultiSectionFile file(text.c_str(), false, false, true, "", ("{" + end).c_str(),
                                       ("}" + end).c_str(), nowhere, "#", "");
  if (TextOf(file) != text || file.GetSectionCount() != blocks.size())
    throw Refused("a NUL byte, or a line of more than 1023 bytes");
  if (words.size() == 1) return List(file, blocks), 0;

  std::string after = before;
  if (words[2] == "add-block") {
    file.AddSection(words[1].c_str(), false);
    after = TextOf(file);
    blocks = FindBlocks(after);
    if (blocks.size() != file.GetSectionCount() || blocks.back().name != words[1])
      throw Refused("with this name the block would be read as something else");
  }
  after = EditBlock(after, FindBlock(blocks, words[1]), options);
  Finish(options, words[0], before, after);
  return 0;
} catch (const std::exception& error) {
  std::printf("refused: %s\n", error.what());
  return 1;
}
