// SPDX-License-Identifier: MIT
// A user's program: one class of each family, and an exception that the library throws. Headers are
// found by their names alone and in the library's folder, in one program and both ways.
#include <zelconfutils/ConfigFile.h>
#include <zelconfutils/ZelSection.h>

#include <cstdio>

#include "ConfigFile.h"
#include "CsvDocument.h"
#include "MultiSectionFile.h"
#include "Tree.h"
#include "ZelParser.h"

struct TokenCount : ZelParser {
  bool Parse(void* count) override {
    while (GetToken() != nullptr) ++*static_cast<int*>(count);
    return true;
  }
};

int main(int, char** argv) {
  Configuration::ConfigFile flat("one = 1\n", false, true, true, "=", "#", "");
  Configuration::MultiSectionConfigFile sectioned("section two {\n}\n", false, false, true, true);
  int tokens = 0;
  TokenCount().ParseBuffer("3", &tokens);
  ZelSectionHolder tree;
  tree.GetRootItem()->AddChild(ZelSection("four"));
  CsvDocument self;
  std::printf("%zu %zu %d %d %d ", flat.GetEntryCount(), sectioned.GetSectionCount(), tokens,
              tree.Empty(), self.Load(argv[0]));
  try {
    sectioned.AttachToBuffer("section two {\n", "two.cfg");
  } catch (const ConfigException& error) {
    std::puts(error.what());
  }
}
