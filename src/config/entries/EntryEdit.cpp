// SPDX-License-Identifier: MIT
#include "config/entries/EntryEdit.h"

#include <cstring>

#include "config/entries/EntrySyntax.h"
#include "config/entries/Walk.h"

namespace Configuration::EntryEdit {

namespace {

// Brings a line from `oldPart` to `newPart` bytes at `at`, and puts the `restLength` bytes that
// stood behind the part, kept in `rest`, behind the new part. True when the text moved.
bool ReplacePart(ConfigLineList& lines, ConfigLinePosition line, std::size_t at,
                 std::size_t oldPart, std::string_view newPart, std::string_view rest) {
  bool moved = false;
  if (newPart.size() > oldPart) {
    moved = lines.GrowLine(line, newPart.size() - oldPart);
  } else {
    lines.ShrinkLine(line, oldPart - newPart.size(), false);
  }
  char* place = line->text + at;
  std::memcpy(place, newPart.data(), newPart.size());
  std::memcpy(place + newPart.size(), rest.data(), rest.size());
  line->text[line->length] = '\0';
  return moved;
}

// Copies the bytes of the line from `at` on into the work buffer; a null view when they and their
// terminator do not fit it.
std::string_view KeepRest(const ConfigLine& line, std::size_t at, char* buffer) {
  const std::size_t length = line.length - at;
  if (length + 1 > EntrySyntax::kWorkBufferBytes) return {};
  std::memcpy(buffer, line.text + at, length + 1);
  return {buffer, length};
}

}  // namespace

std::size_t CopyOut(std::string_view text, char* buffer, std::size_t size) {
  if (size < text.size() + 1) {
    if (size > 0) std::memset(buffer, 0, size);
    return kTooSmall;
  }
  text.copy(buffer, text.size());
  buffer[text.size()] = '\0';
  return text.size();
}

std::size_t CopyOut(const ConfigEntry& entry, char* keyBuffer, std::size_t keySize,
                    char* valueBuffer, std::size_t valueSize) {
  std::size_t result = 0;
  if (keyBuffer != nullptr) result = CopyOut(entry.Name(), keyBuffer, keySize);
  if (valueBuffer == nullptr || result == kTooSmall) return result;
  const std::size_t valueResult = CopyOut(entry.Value(), valueBuffer, valueSize);
  return valueResult == kTooSmall || result == 0 ? valueResult : result;
}

std::size_t CopyValueOf(ConfigEntryList& entries, std::string_view key, char* buffer,
                        std::size_t size) {
  const ConfigEntryPosition found = Walk::Find(entries, key);
  if (found.IsAtElement()) return CopyOut(found->Value(), buffer, size);
  if (size > 0) std::memset(buffer, 0, size);
  return 0;
}

std::size_t ReplaceValue(const EntryScope& scope, ConfigEntry& entry, std::string_view value) {
  if (scope.lines.IsFrozen(entry.line)) return kNothingDone;
  ConfigLine& line = *entry.line;
  const std::size_t keyAt = static_cast<std::size_t>(entry.key - line.text);
  const std::size_t valueAt = static_cast<std::size_t>(entry.value - line.text);
  const std::string_view tail = KeepRest(line, valueAt + entry.valueLength, scope.tailBuffer);
  if (tail.data() == nullptr) return kNothingDone;

  if (ReplacePart(scope.lines, entry.line, valueAt, entry.valueLength, value, tail)) {
    // A key composed with blanks around it loses them here, as it would when the file is read.
    EntrySyntax::EntrySpans spans = {keyAt, entry.keyLength, valueAt, value.size()};
    const std::size_t separatorAt = EntrySyntax::Find(line.View(), scope.separator);
    if (separatorAt + scope.separator.size() == valueAt) {
      spans = EntrySyntax::Parse(line.View(), separatorAt, scope.separator.size());
    }
    entry.key = line.text + spans.key;
    entry.keyLength = spans.keyLength;
  }
  entry.value = line.text + valueAt;
  entry.valueLength = value.size();
  return kWritten;
}

std::size_t SetValue(const EntryScope& scope, ConfigEntry& entry, std::string_view value) {
  return entry.Value() == value ? kAlreadySo : ReplaceValue(scope, entry, value);
}

bool ReplaceKey(const EntryScope& scope, ConfigEntry& entry, std::string_view newKey) {
  if (scope.lines.IsFrozen(entry.line)) return false;
  ConfigLine& line = *entry.line;
  std::size_t keyAt = static_cast<std::size_t>(entry.key - line.text);
  if (entry.keyLength == 0) {
    // The view of an empty key may lie anywhere in front of the separator.
    keyAt = EntrySyntax::KeyEnd(line.View(), EntrySyntax::Find(line.View(), scope.separator));
  }
  const std::size_t valueAt = static_cast<std::size_t>(entry.value - line.text);
  const std::string_view rest = KeepRest(line, keyAt + entry.keyLength, scope.tailBuffer);
  if (rest.data() == nullptr) return false;

  ReplacePart(scope.lines, entry.line, keyAt, entry.keyLength, newKey, rest);
  entry.key = line.text + keyAt;
  entry.value = line.text + valueAt + newKey.size() - entry.keyLength;
  entry.keyLength = newKey.size();
  return true;
}

ConfigEntryPosition Insert(const EntryScope& scope, ConfigLinePosition line,
                           ConfigEntryPosition entry, std::string_view key,
                           std::string_view value) {
  const std::string_view composed =
      EntrySyntax::Compose(scope.linePrefix, key, scope.separator, value, scope.lineBuffer);
  if (composed.empty()) return {};
  scope.entries.Reserve();  // with the node at hand, nothing behind the line's insertion throws
  scope.lines.InsertLine(line, composed);
  char* keyPlace = line->text + scope.linePrefix.size();
  char* valuePlace = keyPlace + key.size() + scope.separator.size();
  return scope.entries.Insert(entry, keyPlace, key.size(), valuePlace, value.size(), line);
}

bool Erase(const EntryScope& scope, ConfigEntryPosition entry) {
  if (scope.lines.IsFrozen(entry->line)) return false;
  scope.lines.EraseLine(entry->line);
  scope.cursor = scope.entries.Erase(entry);
  scope.afterDelete = true;
  return true;
}

}  // namespace Configuration::EntryEdit
