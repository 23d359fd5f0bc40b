// SPDX-License-Identifier: MIT
#include "config/entries/EntryEdit.h"

#include <cstring>

#include "config/entries/EntrySyntax.h"

namespace Configuration::EntryEdit {

namespace {

// The key or the value in a line's text.
struct Part {
  std::size_t at;
  std::size_t length;

  std::size_t End() const { return at + length; }
};

// Edits carry over what stands after a part only up to this length.
bool CarriesOver(const ConfigLine& line, const Part& part) {
  return line.length - part.End() <= EntrySyntax::kLongestRestBytes;
}

// Writes `text` over the part; what stands after it moves along. True when the line's text has
// moved to another block.
bool Replace(ConfigLineList& lines, ConfigLinePosition line, const Part& part,
             std::string_view text) {
  const std::size_t rest = line->length - part.End() + 1;  // with the terminator
  bool moved = false;
  if (text.size() > part.length) moved = lines.GrowLine(line, text.size() - part.length);
  char* place = line->text + part.at;
  std::memmove(place + text.size(), place + part.length, rest);
  std::memcpy(place, text.data(), text.size());
  if (text.size() < part.length) lines.ShrinkLine(line, part.length - text.size(), false);
  return moved;
}

// The key of an entry whose line's text has moved. One composed with blanks around it loses them
// here, as it would when the file is read.
Part MovedKey(const ConfigLine& line, const Part& key, std::size_t valueAt,
              std::string_view separator) {
  const std::size_t separatorAt = EntrySyntax::Find(line.View(), separator);
  if (separatorAt + separator.size() != valueAt) return key;
  const auto spans = EntrySyntax::Parse(line.View(), separatorAt, separator.size());
  return {spans.key, spans.keyLength};
}

}  // namespace

std::size_t SetValue(const EntryScope& scope, ConfigEntry& entry, std::string_view value) {
  if (entry.Value() == value) return kAlreadySo;
  if (scope.lines.IsShared(entry.line)) return kNothingDone;
  const ConfigLine& line = *entry.line;
  Part key = {static_cast<std::size_t>(entry.key - line.text), entry.keyLength};
  const Part old = {static_cast<std::size_t>(entry.value - line.text), entry.valueLength};
  if (!CarriesOver(line, old)) return kNothingDone;

  if (Replace(scope.lines, entry.line, old, value)) {
    key = MovedKey(line, key, old.at, scope.separator);
  }
  entry = {line.text + key.at, key.length, line.text + old.at, value.size(), entry.line};
  return kWritten;
}

bool ReplaceKey(const EntryScope& scope, ConfigEntry& entry, std::string_view newKey) {
  if (scope.lines.IsShared(entry.line)) return false;
  const ConfigLine& line = *entry.line;
  Part key = {static_cast<std::size_t>(entry.key - line.text), entry.keyLength};
  if (key.length == 0) {
    // The view of an empty key may lie anywhere before the separator.
    key.at = EntrySyntax::KeyEnd(line.View(), EntrySyntax::Find(line.View(), scope.separator));
  }
  const std::size_t valueAt = static_cast<std::size_t>(entry.value - line.text);
  if (!CarriesOver(line, key)) return false;

  Replace(scope.lines, entry.line, key, newKey);
  entry.key = line.text + key.at;
  entry.value = line.text + valueAt + newKey.size() - key.length;
  entry.keyLength = newKey.size();
  return true;
}

ConfigEntryPosition Insert(const EntryScope& scope, Place place, std::string_view key,
                           std::string_view value) {
  if (scope.separator.empty()) return {};  // it occurs in no line: there would be no entry
  const std::string_view composed =
      EntrySyntax::Compose({scope.linePrefix, key, scope.separator, value}, scope.lineBuffer);
  if (composed.empty()) return {};
  scope.entries.Reserve();  // with the node at hand, nothing after the line's insertion throws
  ConfigLinePosition line = place.line;
  scope.lines.InsertLine(line, composed);
  char* keyPlace = line->text + scope.linePrefix.size();
  char* valuePlace = keyPlace + key.size() + scope.separator.size();
  return scope.entries.Insert(place.entry, keyPlace, key.size(), valuePlace, value.size(), line);
}

bool Erase(const EntryScope& scope, ConfigEntryPosition entry) {
  if (scope.lines.IsShared(entry->line)) return false;
  scope.lines.EraseLine(entry->line);
  scope.cursor = scope.entries.Erase(entry);
  scope.afterDelete = true;
  return true;
}

}  // namespace Configuration::EntryEdit
