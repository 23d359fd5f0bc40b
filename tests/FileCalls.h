// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_CALLS_H
#define ZELCONFUTILS_TESTS_FILE_CALLS_H

#include <cctype>
#include <map>
#include <string>
#include <vector>

#include "FileFixtures.h"
#include "FileModel.h"

/// What calls are made with; both buffers begin as `~` and have a few bytes more than is told.
struct CallArguments {
  std::string key, value;
  std::size_t size = 64, otherSize = 64;
  std::string buffer = std::string(size + 4, '~'), other = std::string(otherSize + 4, '~');

  /// What the call left in the buffers.
  std::string Buffers() const { return "buffer " + Quoted(buffer) + ", other " + Quoted(other); }
};

/// One call of a file object, and the same of its model.
template <class File>
struct FileCall {
  std::string text;  // as it is written, with the names of what it is made with
  std::string (*onFile)(File&, CallArguments&);
  std::string (*onModel)(FileModel&, CallArguments&);

  std::string Statement(const CallArguments& with) const {
    const std::map<std::string, std::string> literals = {
        {"key", Quoted(with.key)},
        {"value", Quoted(with.value)},
        {"size", std::to_string(with.size)},
        {"otherSize", std::to_string(with.otherSize)}};
    std::string statement, word;
    for (const char c : text) {
      if (std::isalpha(static_cast<unsigned char>(c))) {
        word += c;
        continue;
      }
      const auto literal = literals.find(word);
      statement += (literal != literals.end() ? literal->second : word) + c;
      word.clear();
    }
    return statement;
  }
};

#define ZELCONFUTILS_CALL_ON(Type, ...)                                                           \
  [](Type& file, CallArguments& with) {                                                           \
    [[maybe_unused]] const char *const key = with.key.c_str(), *const value = with.value.c_str(); \
    [[maybe_unused]] char *const buffer = with.buffer.data(), *const other = with.other.data();   \
    [[maybe_unused]] const std::size_t size = with.size, otherSize = with.otherSize;              \
    return Outcome([&] { return file.__VA_ARGS__; });                                             \
  }
#define CALL(...)                                          \
  {                                                        \
#__VA_ARGS__, ZELCONFUTILS_CALL_ON(File, __VA_ARGS__), \
        ZELCONFUTILS_CALL_ON(FileModel, __VA_ARGS__)       \
  }

template <class File>
using FileCallTable = std::vector<FileCall<File>>;

/// All that moves, reads or edits entries of a flat file, or those outside sections.
template <class File>
const FileCallTable<File>& EntryCalls() {
  static const FileCallTable<File> calls = {
      CALL(Restart()),
      CALL(GotoEntry(key)),
      CALL(GotoNextEntry()),
      CALL(GotoPreviousEntry()),
      CALL(GotoFirstEntry()),
      CALL(GotoLastEntry()),
      CALL(GetEntry(key, buffer, size)),
      CALL(GetCurrentEntry(buffer, size, other, otherSize)),
      CALL(GetCurrentEntry(buffer, size, nullptr, 0)),
      CALL(GetCurrentEntry(nullptr, 0, other, otherSize)),
      CALL(GetEntryCount()),
      CALL(AddEntry(key, value, false)),
      CALL(AddEntry(key, value, true)),
      CALL(InsertEntry(key, value)),
      CALL(SetEntry(key, value)),
      CALL(RenameEntry(key)),
      CALL(DeleteEntry(key)),
      CALL(DeleteCurrentEntry()),
      CALL(ClearAll()),
  };
  return calls;
}
inline const FileCallTable<FlatFile>& FlatOnlyCalls() {
  using File = FlatFile;
  static const FileCallTable<File> calls = {CALL(SetCurrentEntry(value))};
  return calls;
}
/// Of sections as a whole.
inline const FileCallTable<SectionFile>& SectionCalls() {
  using File = SectionFile;
  static const FileCallTable<File> calls = {
      CALL(GotoSection(key)),      CALL(GotoNextSection()),   CALL(GotoPreviousSection()),
      CALL(GotoFirstSection()),    CALL(GotoLastSection()),   CALL(GetSectionName(buffer, size)),
      CALL(GetSectionCount()),     CALL(SetSectionName(key)), CALL(AddSection(key, false)),
      CALL(AddSection(key, true)), CALL(AddSection(false)),   CALL(InsertSection(key)),
      CALL(DeleteSection(key)),    CALL(DeleteSection()),
  };
  return calls;
}
/// Of the current section's entries.
inline const FileCallTable<SectionFile>& SectionEntryCalls() {
  using File = SectionFile;
  static const FileCallTable<File> calls = {
      CALL(RestartSection()),
      CALL(GotoSecEntry(key)),
      CALL(GotoSecNextEntry()),
      CALL(GotoSecPrevEntry()),
      CALL(GotoSecFirstEntry()),
      CALL(GotoSecLastEntry()),
      CALL(GetSectionEntry(key, buffer, size)),
      CALL(GetSecCurrentEntry(buffer, size, other, otherSize)),
      CALL(GetSecCurrentEntry(buffer, size, nullptr, 0)),
      CALL(GetSecCurrentEntry(nullptr, 0, other, otherSize)),
      CALL(GetSecEntryCount()),
      CALL(AddSectionEntry(key, value)),
      CALL(InsertSectionEntry(key, value, false)),
      CALL(InsertSectionEntry(key, value, true)),
      CALL(SetSectionEntry(key, value)),
      CALL(SetSecCurrentEntry(value)),
      CALL(RenameSectionEntry(key)),
      CALL(DeleteSectionEntry(key)),
      CALL(DeleteSectionEntry()),
  };
  return calls;
}

#undef CALL
#undef ZELCONFUTILS_CALL_ON

#endif
