// SPDX-License-Identifier: MIT
// Every public operation with its exact signature, and the spellings that programs may use. It is
// built as C++17 and as C++20 with warnings as errors: that it compiles is the test.
#include <cstdio>
#include <exception>
#include <initializer_list>
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

using Configuration::ConfigFile;
using Configuration::MultiSectionConfigFile;
using Configuration::MultiSectionFile;
using Text = const char*;

// Each operation named takes and returns exactly that.
template <class Signature>
void Are(std::initializer_list<Signature>) {}

template <class... Types>
void AreAssigned() {
  (Are<Types& (Types::*)(const Types&)>({&Types::operator=}), ...);
}

// As an argument is passed: no constructor may be explicit. Functions, as some cannot be copied.
template <class Type, class... Arguments>
Type Make(Arguments... arguments) {
  return {arguments...};
}

template <class... Types>
void AreCopied() {
  static_assert((std::is_convertible_v<const Types&, Types> && ...));
}

// With what derived classes may use.
struct Flat : ConfigFile {
  static void Check() {
    Are<void (Flat::*)()>({&Flat::Read, &Flat::Load, &Flat::Tidy});
    Are<Configuration::ConfigEntryList * Flat::*>({&Flat::entries});
    Are<Configuration::ConfigEntryPosition * Flat::*>({&Flat::cursor});
  }
};

struct Sectioned : MultiSectionFile {
  static void Check() {
    Are<void (Sectioned::*)()>({&Sectioned::Read, &Sectioned::Load, &Sectioned::Tidy});
    Are<Configuration::ConfigSectionList * Sectioned::*>({&Sectioned::sections});
    Are<Configuration::ConfigSectionPosition * Sectioned::*>({&Sectioned::sectionCursor});
    Are<Configuration::ConfigEntryList * Sectioned::*>({&Sectioned::entries});
    Are<Configuration::ConfigEntryPosition * Sectioned::*>({&Sectioned::entryCursor});
  }
};

// What a flat file and the top level of a sectioned one have in common.
template <class Type>
void CheckEntryOperations() {
  Are<bool (Type::*)(bool, Text)>({&Type::Save});
  Are<void (Type::*)()>({&Type::Reload, &Type::ClearAll, &Type::Restart});
  Are<bool (Type::*)(Text, Text)>({&Type::AttachToBuffer, &Type::InsertEntry});
  Are<bool (Type::*)(char*, size_t)>({&Type::SaveToBuffer});
  Are<bool (Type::*)(Text)>({&Type::GotoEntry, &Type::RenameEntry, &Type::DeleteEntry});
  Are<bool (Type::*)()>({&Type::GotoNextEntry, &Type::GotoPreviousEntry, &Type::GotoFirstEntry,
                         &Type::GotoLastEntry, &Type::DeleteCurrentEntry});
  Are<size_t (Type::*)(Text, char*, size_t)>({&Type::GetEntry});
  Are<size_t (Type::*)(char*, size_t, char*, size_t)>({&Type::GetCurrentEntry});
  Are<size_t (Type::*)() const>({&Type::GetEntryCount});
  Are<bool (Type::*)(Text, Text, bool)>({&Type::AddEntry});
  Are<size_t (Type::*)(Text, Text)>({&Type::SetEntry});
}

void CheckFiles() {
  using Type = MultiSectionFile;
  Flat::Check();
  Sectioned::Check();
  CheckEntryOperations<ConfigFile>();
  CheckEntryOperations<Type>();
  Make<ConfigFile>(nullptr, false, false, false, "=", "#", nullptr);
  Make<Type>(nullptr, false, false, false, nullptr, "{\n", "}\n", "=", "#", nullptr);
  Make<MultiSectionConfigFile>(nullptr, false, false, false, false);
  Are<size_t (ConfigFile::*)(Text)>({&ConfigFile::SetCurrentEntry});

  Are<bool (Type::*)(Text)>({&Type::GotoSection, &Type::SetSectionName, &Type::InsertSection,
                             &Type::GotoSecEntry, &Type::RenameSectionEntry,
                             &Type::DeleteSectionEntry});
  Are<bool (Type::*)()>({&Type::GotoNextSection, &Type::GotoPreviousSection,
                         &Type::GotoFirstSection, &Type::GotoLastSection, &Type::GotoSecNextEntry,
                         &Type::GotoSecPrevEntry, &Type::GotoSecFirstEntry, &Type::GotoSecLastEntry,
                         &Type::DeleteSectionEntry});
  Are<size_t (Type::*)(char*, size_t)>({&Type::GetSectionName});
  Are<size_t (Type::*)() const>({&Type::GetSectionCount, &Type::GetSecEntryCount});
  Are<void (Type::*)()>({&Type::RestartSection});
  Are<bool (Type::*)(Text, bool)>({&Type::AddSection});
  Are<bool (Type::*)(bool)>({&Type::AddSection});
  Are<size_t (Type::*)()>({&Type::DeleteSection});
  Are<size_t (Type::*)(Text)>({&Type::DeleteSection, &Type::SetSecCurrentEntry});
  Are<size_t (Type::*)(Text, char*, size_t)>({&Type::GetSectionEntry});
  Are<size_t (Type::*)(char*, size_t, char*, size_t)>({&Type::GetSecCurrentEntry});
  Are<bool (Type::*)(Text, Text)>({&Type::AddSectionEntry});
  Are<size_t (Type::*)(Text, Text)>({&Type::SetSectionEntry});
  Are<bool (Type::*)(Text, Text, bool)>({&Type::InsertSectionEntry});
}

void CheckExceptionAndBuffer() {
  static_assert(std::is_same_v<Configuration::ConfigException, ConfigException>);
  static_assert(std::is_convertible_v<ConfigException*, std::exception*>);
  Make<ConfigException>("text");
  Are<Text (ConfigException::*)() const noexcept>({&ConfigException::what});

  using Type = Configuration::SmartBuffer;
  static_assert(std::is_same_v<Type, SmartBuffer>);
  Make<Type>();
  Are<char* (Type::*)()>({&Type::operator&});
  Are<Text (Type::*)() const>({&Type::operator()});
  Are<char& (Type::*)(size_t)>({&Type::operator[]});
  Are<char& (Type::*)(size_t) const>({&Type::operator[]});
  Are<size_t (Type::*)() const>({&Type::size});
}

struct Source : StreamIterator {
  bool HasMoreLines() override { return false; }
  std::string GetLine() override { return {}; }
};

struct Parser : ZelParser {
  bool Parse(void*) override { return true; }
};

void CheckParsing() {
  Make<Source>();
  Are<bool (FileIterator::*)()>({&StreamIterator::HasMoreLines, &FileIterator::HasMoreLines});
  Are<std::string (FileIterator::*)()>({&StreamIterator::GetLine, &FileIterator::GetLine});
  static_assert(std::is_convertible_v<Text, FileIterator>);
  static_assert(!std::is_copy_constructible_v<FileIterator>);
  static_assert(!std::is_copy_assignable_v<FileIterator>);
  Are<void (FileIterator::*)()>({&FileIterator::CloseFile});
  Make<BufferIterator>("text");
  Are<bool (BufferIterator::*)()>({&BufferIterator::HasMoreLines});
  Are<std::string (BufferIterator::*)()>({&BufferIterator::GetLine});

  static_assert(std::is_same_v<decltype(ZelLexToken::kind), std::int32_t>);
  static_assert(std::is_same_v<decltype(ZelLexToken::text), std::string>);
  static_assert(UnknownToken == 0 && PunctuationToken == 1 && StringConstantToken == 2);
  static_assert(DigitConstantToken == 3 && WhiteSpaceToken == 4 && NewLineToken == 5);
  using Token = ZelLexToken;
  static_assert(Token::UnknownToken == 0 && Token::PunctuationToken == 1);
  static_assert(Token::StringConstantToken == 2 && Token::DigitConstantToken == 3);
  static_assert(Token::WhiteSpaceToken == 4 && Token::NewLineToken == 5);
  Make<ZelLex>(nullptr, true);
  Are<ZelLexToken* (ZelLex::*)()>({&ZelLex::GetToken});

  Make<Parser>();
  Are<bool (ZelParser::*)(Text, void*)>({&ZelParser::ParseFile, &ZelParser::ParseBuffer});
  Are<bool (ZelParser::*)(void*)>({&ZelParser::Parse});
  Are<ZelLexToken* (ZelParser::*)()>({&ZelParser::GetToken});
}

void CheckRecords() {
  using Entry = ZelSectionEntry;
  Make<Entry>();
  Make<Entry>("key", "value", "comment");
  Are<void (Entry::*)(Text)>({&Entry::SetKeyName, &Entry::SetValue, &Entry::SetComment});
  Are<Text (Entry::*)() const>({&Entry::GetKeyName, &Entry::GetValue, &Entry::GetComment});
  Are<void (Entry::*)()>({&Entry::UndoComment});
  Are<void (Entry::*)(const Entry&)>({&Entry::operator=});

  using Type = ZelSection;
  using Position = std::vector<Entry*>::iterator;
  using ConstPosition = std::vector<Entry*>::const_iterator;
  Make<Type>();
  Make<Type>("name");
  Are<void (Type::*)(Text)>({&Type::SetName});
  Are<Text (Type::*)() const>({&Type::GetName});
  Are<bool (Type::*)(Text, Text, Text)>({&Type::AddEntry});
  Are<bool (Type::*)(Entry*)>({&Type::AddEntry});
  Are<Position (Type::*)(Entry*)>({&Type::InsertEntry, &Type::RemoveEntry, &Type::FindEntry});
  Are<Position (Type::*)(Entry*, ConstPosition)>({&Type::InsertEntry});
  Are<Position (Type::*)(ConstPosition)>({&Type::RemoveEntry});
  Are<ConstPosition (Type::*)() const>({&Type::EndEntry});
  Are<std::vector<Entry*>* (Type::*)()>({&Type::GetEntryList});
  Are<const std::vector<Entry*>* (Type::*)() const>({&Type::GetEntryList});
  Are<void (Type::*)()>({&Type::ClearEntryList});
  Are<void (Type::*)(const Type&)>({&Type::operator=});
}

void CheckTreesAndRows() {
  using Type = ZelSectionHolder;
  Make<Type>();
  Make<Tree<ZelSection>>();
  Are<Tree<ZelSection>::TreeNode* (Type::*)()>({&Type::GetRootItem});
  Are<bool (Type::*)()>({&Type::Empty, &Type::DeleteAllItems});
  using Node = Tree<ZelSection>::TreeNode;
  using Callback = bool (*)(ZelSection*);
  Are<void (Node::*)(Callback)>({&Node::Traverse});
  Are<void (Node::*)(Callback, Callback)>({&Node::Traverse});
  Are<Node* (Node::*)(const ZelSection&)>({&Node::AddChild});
  Are<ZelSection* (Node::*)()>({&Node::GetData});

  static_assert(CommaDelimiter == 0 && SemicolonDelimiter == 1 && TabDelimiter == 2);
  Make<CsvDocument>();
  Are<void (CsvDocument::*)(CsvFieldDelimiter&)>({&CsvDocument::SetFieldDelimiter});
  Are<void (CsvDocument::*)(const char&)>({&CsvDocument::SetFieldSpecialToken});
  Are<bool (CsvDocument::*)(Text)>({&CsvDocument::Load});
  Are<bool (CsvDocument::*)(CsvDocumentRow&)>({&CsvDocument::GetRow});
  Are<std::uint32_t (CsvDocument::*)() const>({&CsvDocument::GetRowCount});
  Are<bool (CsvDocument::*)() const>({&CsvDocument::IsCsvRecordPresence});

  using Row = CsvDocumentRow;
  Make<Row>();
  Are<void (Row::*)(Text)>({&Row::AddField});
  Are<void (Row::*)(const std::string&)>({&Row::AddField});
  Are<std::string (Row::*)(unsigned short) const>({&Row::GetField});
  Are<unsigned short (Row::*)() const>({&Row::GetFieldsCount});
  Are<void (Row::*)()>({&Row::Reset});
}

void CheckCopies() {
  AreAssigned<ConfigFile, MultiSectionFile, MultiSectionConfigFile, StreamIterator>();
  AreAssigned<ConfigException, SmartBuffer, BufferIterator, ZelLex>();
  AreAssigned<Tree<ZelSection>, ZelSectionHolder, CsvDocument, CsvDocumentRow>();
  AreCopied<ConfigException, Source, BufferIterator, ZelLex, ZelSectionEntry>();
  AreCopied<ZelSection, Tree<ZelSection>, ZelSectionHolder, CsvDocument, CsvDocumentRow>();
}

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
  CheckFiles();
  CheckExceptionAndBuffer();
  CheckParsing();
  CheckRecords();
  CheckTreesAndRows();
  CheckCopies();
  ZelSection named("name");
  const bool equal = CheckComparison(named) && CheckComparison(ZelSectionEntry("k", "v", "c")) &&
                     named == "NAME" && !(named == "other");
  if (!equal) std::puts("a comparison of equal records, or with a text, went wrong");
  return equal ? 0 : 1;
}
