// SPDX-License-Identifier: MIT
// Reads an INI file into a tree of sections, by a parser made from `ZelParser`, and prints it.
#include <cstdio>
#include <exception>
#include <string>

#include "Tree.h"
#include "ZelParser.h"

namespace {

std::string Trim(std::string text) {
  text.erase(text.find_last_not_of(" \t\r") + 1);
  return text.erase(0, text.find_first_not_of(" \t"));
}

// [section], key = value, blank lines; a comment (`#`, `;`) goes with the entry right below it.
class IniParser : public ZelParser {
 public:
  bool Parse(void* context) override {
    ZelSectionHolder::TreeNode* root = static_cast<ZelSectionHolder*>(context)->GetRootItem();
    ZelSection* section = root->GetData();  // entries before the first header are the root's
    std::string line, comment;
    bool good = true;
    for (int number = 1; ReadLine(line); ++number) {
      line = Trim(line);
      const std::size_t separator = line.find('=');
      if (line.empty() || line[0] == '#' || line[0] == ';') {
        comment = line;
      } else if (line[0] == '[' && line.back() == ']') {
        section = root->AddChild(ZelSection(line.substr(1, line.size() - 2).c_str()))->GetData();
      } else if (line[0] == '[' || separator == std::string::npos) {
        std::fprintf(stderr, "line %d: neither [section] nor key = value\n", number);
        good = false;
      } else {
        section->AddEntry(Trim(line.substr(0, separator)).c_str(),
                          Trim(line.substr(separator + 1)).c_str(),
                          comment.empty() ? nullptr : comment.c_str());
        comment.clear();
      }
    }
    return good;
  }

 private:
  // The texts of all tokens up to the line end; false at the end of the input.
  bool ReadLine(std::string& line) {
    line.clear();
    const ZelLexToken* token = GetToken();
    const bool found = token != nullptr;
    for (; token != nullptr && token->kind != NewLineToken; token = GetToken()) line += token->text;
    return found;
  }
};

int depth = 0;  // the callbacks of a walk are plain functions
bool Enter(ZelSection* section) {
  std::printf("%*s%s {\n", 2 * depth++, "", section->GetName());
  for (const ZelSectionEntry* entry : *section->GetEntryList()) {
    if (entry->GetComment() != nullptr) std::printf("%*s%s\n", 2 * depth, "", entry->GetComment());
    std::printf("%*s%s = %s\n", 2 * depth, "", entry->GetKeyName(), entry->GetValue());
  }
  return true;
}
bool Leave(ZelSection*) { return std::printf("%*s}\n", 2 * --depth, "") > 0; }

}  // namespace

int main(int argc, char** argv) try {
  const char* path = argc > 1 ? argv[1] : "/lib/systemd/system/fstrim.service";  // of util-linux
  ZelSectionHolder tree;
  tree.GetRootItem()->GetData()->SetName(path);
  const int result = IniParser().ParseFile(path, &tree) ? 0 : 1;
  tree.GetRootItem()->Traverse(Enter, Leave);
  return result;
} catch (const std::exception&) {
  std::fputs("the file cannot be read\n", stderr);
  return 1;
}
