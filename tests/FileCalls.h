// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_CALLS_H
#define ZELCONFUTILS_TESTS_FILE_CALLS_H

#include <cstddef>
#include <string>
#include <vector>

#include "FileFixtures.h"
#include "FileModel.h"

/// What calls are made with; both buffers begin as `~` and have a few bytes more than is told.
struct CallArguments {
  std::string key = "", value = "";
  std::size_t size = 64, otherSize = 64;
  std::string buffer = std::string(size + 4, '~'), other = std::string(otherSize + 4, '~');
};

/// One call of a file object, and what its model does.
template <class File>
struct FileCall {
  std::string text;  // as it is written, with the names of what it is made with
  std::string (*onFile)(File&, CallArguments&);
  std::string (*onModel)(FileModel&, CallArguments&);  // null where there is none

  std::string Statement(const CallArguments& with) const {
    std::string statement = text;
    const std::size_t key = text.find("key"), value = text.find("value");
    if (value != text.npos) statement.replace(value, 5, Quoted(with.value));
    if (key != text.npos) statement.replace(key, 3, Quoted(with.key));
    return statement;
  }
};
template <class File>
using FileCallTable = std::vector<FileCall<File>>;

#define ZELCONFUTILS_WITH(Object, call)                                                           \
  [](Object, CallArguments& with) {                                                               \
    [[maybe_unused]] const char *const key = with.key.c_str(), *const value = with.value.c_str(); \
    [[maybe_unused]] char *const buffer = with.buffer.data(), *const other = with.other.data();   \
    [[maybe_unused]] const std::size_t size = with.size, otherSize = with.otherSize;              \
    return Outcome([&] { return call; });                                                         \
  }
#define CALL(call, step) \
  { #call, ZELCONFUTILS_WITH(File& file, file.call), ZELCONFUTILS_WITH(FileModel& m, m.step) }
#define CALL_WITHOUT_MODEL(call) \
  { #call, ZELCONFUTILS_WITH(File& file, file.call), nullptr }

// clang-format off
/// Each call of the class, and with either value where it takes a bool. The inputs of the walk
/// choose by their order.
template <class File>
FileCallTable<File> AllCalls() {
  FileCallTable<File> all = {
      CALL(Restart(), Restart()),
      CALL(GotoEntry(key), Goto(m.entries, key)),
      CALL(GotoNextEntry(), GotoNext(m.entries)),
      CALL(GotoPreviousEntry(), GotoPrevious(m.entries)),
      CALL(GotoFirstEntry(), GotoFirst(m.entries)),
      CALL(GotoLastEntry(), GotoLast(m.entries)),
      CALL_WITHOUT_MODEL(GetEntry(key, buffer, size)),
      CALL_WITHOUT_MODEL(GetCurrentEntry(buffer, size, other, otherSize)),
      CALL_WITHOUT_MODEL(GetCurrentEntry(buffer, size, nullptr, 0)),
      CALL_WITHOUT_MODEL(GetCurrentEntry(nullptr, 0, other, otherSize)),
      CALL(GetEntryCount(), Count(m.entries)),
      CALL(AddEntry(key, value, false), Add(m.entries, key, value)),
      CALL(AddEntry(key, value, true), AddAtTop(key, value)),
      CALL(InsertEntry(key, value), InsertOutside(key, value)),
      CALL(SetEntry(key, value), Set(m.entries, key, value)),
      CALL(RenameEntry(key), Rename(m.entries, key)),
      CALL(DeleteEntry(key), Delete(m.entries, key)),
      CALL(DeleteCurrentEntry(), DeleteCurrent(m.Settled(m.entries))),
      CALL(ClearAll(), Clear()),
      CALL_WITHOUT_MODEL(Save(false, nullptr)),
      CALL_WITHOUT_MODEL(Save(true, nullptr)),
      CALL_WITHOUT_MODEL(SaveToBuffer(buffer, size)),
      CALL_WITHOUT_MODEL(Reload()),
      CALL_WITHOUT_MODEL(AttachToBuffer(value, nullptr)),
  };
  if constexpr (!File::kHasSections) {
    all.push_back(
        CALL(SetCurrentEntry(value), SetCurrentOutside(value)));
  } else {
    all.insert(all.end(), {
        CALL(GotoSection(key), Goto(m.sections, key)),
        CALL(GotoNextSection(), GotoNext(m.sections)),
        CALL(GotoPreviousSection(), GotoPrevious(m.sections)),
        CALL(GotoFirstSection(), GotoFirst(m.sections)),
        CALL(GotoLastSection(), GotoLast(m.sections)),
        CALL_WITHOUT_MODEL(GetSectionName(buffer, size)),
        CALL(GetSectionCount(), Count(m.sections)),
        CALL(SetSectionName(key), RenameSection(key)),
        CALL(AddSection(key, false), AddSection(key, false)),
        CALL(AddSection(key, true), AddSection(key, true)),
        CALL(AddSection(false), AddSection("", false)),
        CALL(AddSection(true), AddSection("", true)),
        CALL(InsertSection(key), InsertSection(key)),
        CALL(DeleteSection(key), DeleteSection(key)),
        CALL(DeleteSection(), DeleteSection()),
        CALL(RestartSection(), Unset(m.InSection())),
        CALL(GotoSecEntry(key), Goto(m.InSettledSection(), key)),
        CALL(GotoSecNextEntry(), GotoNext(m.InSettledSection())),
        CALL(GotoSecPrevEntry(), GotoPrevious(m.InSettledSection())),
        CALL(GotoSecFirstEntry(), GotoFirst(m.InSettledSection())),
        CALL(GotoSecLastEntry(), GotoLast(m.InSettledSection())),
        CALL_WITHOUT_MODEL(GetSectionEntry(key, buffer, size)),
        CALL_WITHOUT_MODEL(GetSecCurrentEntry(buffer, size, other, otherSize)),
        CALL_WITHOUT_MODEL(GetSecCurrentEntry(buffer, size, nullptr, 0)),
        CALL_WITHOUT_MODEL(GetSecCurrentEntry(nullptr, 0, other, otherSize)),
        CALL(GetSecEntryCount(), Count(m.InSettledSection())),
        CALL(AddSectionEntry(key, value), Add(m.InSettledSection(), key, value)),
        CALL(InsertSectionEntry(key, value, false), InsertIn(m.InSettledSection(), key, value)),
        CALL(InsertSectionEntry(key, value, true), Replace(m.InSettledSection(), key, value)),
        CALL(SetSectionEntry(key, value), Set(m.InSettledSection(), key, value)),
        CALL(SetSecCurrentEntry(value), SetCurrent(m.Cleared(m.InSection()), value)),
        CALL(RenameSectionEntry(key), Rename(m.Cleared(m.InSettledSection()), key)),
        CALL(DeleteSectionEntry(key), Delete(m.InSettledSection(), key)),
        CALL(DeleteSectionEntry(), DeleteCurrent(m.Cleared(m.InSection()))),
    });
  }
  return all;
}
// clang-format on

#undef CALL
#undef CALL_WITHOUT_MODEL
#undef ZELCONFUTILS_WITH

#endif
