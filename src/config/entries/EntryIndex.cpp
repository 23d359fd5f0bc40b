// SPDX-License-Identifier: MIT
#include "config/entries/EntryIndex.h"

#include "config/entries/EntrySyntax.h"

namespace Configuration::EntryIndex {

void Append(ConfigEntryList& entries, ConfigLinePosition line, std::size_t separatorAt,
            std::size_t separatorLength) {
  const EntrySyntax::EntrySpans spans =
      EntrySyntax::Parse(line->View(), separatorAt, separatorLength);
  entries.Append(line->text + spans.key, spans.keyLength, line->text + spans.value,
                 spans.valueLength, line);
}

void AppendAll(ConfigEntryList& entries, ConfigLineList& lines, std::string_view separator,
               std::string_view comment) {
  LinkedList<ConfigLine>& list = lines.Lines();
  entries.Expect(list.Count() / 4 * 3);  // the other lines are comments and blanks
  for (auto line = list.begin(); line != list.end(); ++line) {
    const std::string_view text = (*line).View();
    if (EntrySyntax::IsComment(text, comment)) continue;
    const std::size_t separatorAt = EntrySyntax::Find(text, separator);
    if (separatorAt == EntrySyntax::kNone) continue;
    Append(entries, list.PositionOf(line), separatorAt, separator.size());
  }
}

}  // namespace Configuration::EntryIndex
