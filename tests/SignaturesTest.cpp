// SPDX-License-Identifier: MIT
// The operations of signatures.txt, and the spellings that programs may use. It is built as C++17
// and as C++20 with warnings as errors: that it compiles is the test.
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

static_assert(std::is_same_v<Configuration::ConfigException, ConfigException>);
static_assert(std::is_convertible_v<ConfigException*, std::exception*>);
static_assert(std::is_same_v<Configuration::SmartBuffer, SmartBuffer>);
static_assert(!std::is_copy_constructible_v<FileIterator>);
static_assert(!std::is_copy_assignable_v<FileIterator>);

using Token = ZelLexToken;
static_assert(UnknownToken == 0 && PunctuationToken == 1 && StringConstantToken == 2);
static_assert(DigitConstantToken == 3 && WhiteSpaceToken == 4 && NewLineToken == 5);
static_assert(Token::UnknownToken == 0 && Token::PunctuationToken == 1);
static_assert(Token::StringConstantToken == 2 && Token::DigitConstantToken == 3);
static_assert(Token::WhiteSpaceToken == 4 && Token::NewLineToken == 5);
static_assert(CommaDelimiter == 0 && SemicolonDelimiter == 1 && TabDelimiter == 2);

// One member, and each way to write a comparison means it.
template <class Type>
bool CheckComparison(const Type& same) {
  const auto equals = &Type::operator==;
  static_assert(std::is_same_v<decltype(equals), bool (Type::*const)(const Type&)>);
  Type left = same, right = same;
  return (left.*equals)(same) && left == same && left == right && left == Type(same) &&
         Type(same) == left && Type(same) == same && Type(same) == Type(same);
}

}  // namespace

int main() {
  CheckRows();
  ZelSection named("name");
  const bool equal = CheckComparison(named) && CheckComparison(ZelSectionEntry("k", "v", "c")) &&
                     named == "NAME" && !(named == "other");
  if (!equal) std::puts("a comparison of equal records, or with a text, went wrong");
  return equal ? 0 : 1;
}
