// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_CALLS_H
#define ZELCONFUTILS_TESTS_FILE_CALLS_H

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

#include "Calls.h"
#include "FileFixtures.h"
#include "FileModel.h"

using Scenarios::ResultText;

/// One call of a file object, and what its model does: null where there is none.
template <class File>
struct FileCall : Scenarios::Call<File> {
  std::string (*onModel)(FileModel& on, Scenarios::Arguments& with);

  /// As it is written.
  std::string Statement(const Scenarios::Arguments& with) const {
    std::string statement = this->text;
    const std::size_t key = statement.find("key"), value = statement.find("value");
    if (value != statement.npos) statement.replace(value, 5, Quoted(with.value));
    if (key != statement.npos) statement.replace(key, 3, Quoted(with.key));
    return statement;
  }
};

#define CALL(call, step) \
  { SCENARIO_CALL(call), SCENARIO_FUNCTION(auto&, step) }
#define CALL_WITHOUT_MODEL(call) \
  { SCENARIO_CALL(call), nullptr }

// clang-format off
/// Each call of the class, and with either value where it takes a bool. The inputs of the walk
/// choose by their order.
template <class File>
std::vector<FileCall<File>> AllCalls() {
  std::vector<FileCall<File>> all = {
      CALL(Restart(), Restart()),
      CALL(GotoEntry(key), Goto(on.entries, key)),
      CALL(GotoNextEntry(), GotoNext(on.entries)),
      CALL(GotoPreviousEntry(), GotoPrevious(on.entries)),
      CALL(GotoFirstEntry(), GotoFirst(on.entries)),
      CALL(GotoLastEntry(), GotoLast(on.entries)),
      CALL_WITHOUT_MODEL(GetEntry(key, buffer, size)),
      CALL_WITHOUT_MODEL(GetCurrentEntry(buffer, size, other, otherSize)),
      CALL_WITHOUT_MODEL(GetCurrentEntry(buffer, size, nullptr, 0)),
      CALL_WITHOUT_MODEL(GetCurrentEntry(nullptr, 0, other, otherSize)),
      CALL(GetEntryCount(), entries.size()),
      CALL(AddEntry(key, value, false), Add(on.entries, key, value)),
      CALL(AddEntry(key, value, true), AddAtTop(key, value)),
      CALL(InsertEntry(key, value), InsertOutside(key, value)),
      CALL(SetEntry(key, value), Set(on.entries, key, value)),
      CALL(RenameEntry(key), Rename(on.entries, key)),
      CALL(DeleteEntry(key), Delete(on.entries, key)),
      CALL(DeleteCurrentEntry(), DeleteCurrent(on.Settled(on.entries))),
      CALL(ClearAll(), Clear()),
      CALL_WITHOUT_MODEL(Save(false, key)),
      CALL_WITHOUT_MODEL(Save(true, key)),
      CALL_WITHOUT_MODEL(Save(false, nullptr)),
      CALL_WITHOUT_MODEL(Save(true, nullptr)),
      CALL_WITHOUT_MODEL(SaveToBuffer(buffer, size)),
      CALL_WITHOUT_MODEL(Reload()),
      CALL_WITHOUT_MODEL(AttachToBuffer(value, key)),
      CALL_WITHOUT_MODEL(AttachToBuffer(value, nullptr)),
  };
  if constexpr (!File::kHasSections) {
    all.push_back(
        CALL(SetCurrentEntry(value), SetCurrentOutside(value)));
  } else {
    all.insert(all.end(), std::initializer_list<FileCall<File>>{
        CALL(GotoSection(key), Goto(on.sections, key)),
        CALL(GotoNextSection(), GotoNext(on.sections)),
        CALL(GotoPreviousSection(), GotoPrevious(on.sections)),
        CALL(GotoFirstSection(), GotoFirst(on.sections)),
        CALL(GotoLastSection(), GotoLast(on.sections)),
        CALL_WITHOUT_MODEL(GetSectionName(buffer, size)),
        CALL(GetSectionCount(), sections.size()),
        CALL(SetSectionName(key), RenameSection(key)),
        CALL(AddSection(key, false), AddSection(key, false)),
        CALL(AddSection(key, true), AddSection(key, true)),
        CALL(AddSection(false), AddSection("", false)),
        CALL(AddSection(true), AddSection("", true)),
        CALL(InsertSection(key), InsertSection(key)),
        CALL(DeleteSection(key), DeleteSection(key)),
        CALL(DeleteSection(), DeleteSection()),
        CALL(RestartSection(), Unset(on.InSection())),
        CALL(GotoSecEntry(key), Goto(on.InSettledSection(), key)),
        CALL(GotoSecNextEntry(), GotoNext(on.InSettledSection())),
        CALL(GotoSecPrevEntry(), GotoPrevious(on.InSettledSection())),
        CALL(GotoSecFirstEntry(), GotoFirst(on.InSettledSection())),
        CALL(GotoSecLastEntry(), GotoLast(on.InSettledSection())),
        CALL_WITHOUT_MODEL(GetSectionEntry(key, buffer, size)),
        CALL_WITHOUT_MODEL(GetSecCurrentEntry(buffer, size, other, otherSize)),
        CALL_WITHOUT_MODEL(GetSecCurrentEntry(buffer, size, nullptr, 0)),
        CALL_WITHOUT_MODEL(GetSecCurrentEntry(nullptr, 0, other, otherSize)),
        CALL(GetSecEntryCount(), InSettledSection().size()),
        CALL(AddSectionEntry(key, value), Add(on.InSettledSection(), key, value)),
        CALL(InsertSectionEntry(key, value, false), InsertIn(on.InSettledSection(), key, value)),
        CALL(InsertSectionEntry(key, value, true), Replace(on.InSettledSection(), key, value)),
        CALL(SetSectionEntry(key, value), Set(on.InSettledSection(), key, value)),
        CALL(SetSecCurrentEntry(value), SetCurrent(on.Cleared(on.InSection()), value)),
        CALL(RenameSectionEntry(key), Rename(on.Cleared(on.InSettledSection()), key)),
        CALL(DeleteSectionEntry(key), Delete(on.InSettledSection(), key)),
        CALL(DeleteSectionEntry(), DeleteCurrent(on.Cleared(on.InSection()))),
    });
  }
  return all;
}
// clang-format on

#undef CALL
#undef CALL_WITHOUT_MODEL

#endif
