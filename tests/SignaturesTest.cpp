// SPDX-License-Identifier: MIT
// The rows of signatures.txt, and the ways to write a comparison. It is built as C++17 and as C++20
// with warnings as errors: that it compiles is the test.
#include <cstdio>
#include <exception>
#include <string>
#include <type_traits>
#include <vector>

#include "ConfigException.h"
#include "ConfigFile.h"
#include "CsvDocument.h"
#include "MultiSectionFile.h"
#include "SmartBuffer.h"
#include "StreamIterator.h"
#include "Tree.h"
#include "ZelLex.h"
#include "ZelParser.h"
#include "ZelSection.h"

namespace {

struct DerivedFile : Configuration::ConfigFile {
  using ConfigFile::cursor, ConfigFile::entries;
  using ConfigFile::Load, ConfigFile::Read, ConfigFile::Tidy;
};

struct DerivedSectionFile : Configuration::MultiSectionFile {
  using MultiSectionFile::entries, MultiSectionFile::entryCursor;
  using MultiSectionFile::Load, MultiSectionFile::Read, MultiSectionFile::Tidy;
  using MultiSectionFile::sectionCursor, MultiSectionFile::sections;
};

struct DerivedIterator : StreamIterator {
  bool HasMoreLines() override { return false; }
  std::string GetLine() override { return {}; }
};

struct DerivedParser : ZelParser {
  bool Parse(void*) override { return true; }
};

template <class Member>
void Is(Member) {}

// As an argument is passed: no constructor may be explicit. A function, as some cannot be copied.
template <class Type, class... Arguments>
Type Made(Arguments... arguments) {
  return {arguments...};
}

void CheckRows() {
#include "signatures.inc"
}

static_assert(CommaDelimiter == 0 && SemicolonDelimiter == 1 && TabDelimiter == 2);

// Each way to write a comparison.
template <class Type>
bool CheckComparison(const Type& same) {
  Type left = same, right = same;
  return left == same && left == right && left == Type(same) && Type(same) == left &&
         Type(same) == same && Type(same) == Type(same);
}

}  // namespace

int main() {
  CheckRows();
  ZelSection named("name");
  if (CheckComparison(named) && CheckComparison(ZelSectionEntry("k", "v", "c")) &&
      named == "NAME" && !(named == "other")) {
    return 0;
  }
  std::puts("a comparison of equal records, or with a text, went wrong");
  return 1;
}
