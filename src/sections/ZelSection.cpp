// SPDX-License-Identifier: MIT
#include "ZelSection.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "sections/TextBlock.h"

namespace TextBlock = zelconfutils::TextBlock;

namespace {

// `text` where `block` is missing: what a temporary owner has to make a block for.
const char* IfMissing(const char* block, const char* text) {
  return block == nullptr ? text : nullptr;
}

ZelSection::EntryPosition Insert(ZelSection::EntryList& entries,
                                 ZelSection::ConstEntryPosition position,
                                 std::unique_ptr<ZelSectionEntry> entry) {
  const auto slot = entries.insert(position, nullptr);  // may throw; what follows cannot
  *slot = entry.release();
  return slot;
}

// Slots are null only where a caller has written into the array.
bool EqualSlots(ZelSectionEntry* left, const ZelSectionEntry* right) {
  if (left == nullptr || right == nullptr) return left == right;
  return *left == *right;
}

}  // namespace

ZelSectionEntry::ZelSectionEntry() = default;

// By way of the blank entry: from there on the destructor releases what a throw leaves.
ZelSectionEntry::ZelSectionEntry(const char* keyText, const char* valueText,
                                 const char* commentText)
    : ZelSectionEntry() {
  SetKeyName(keyText);
  SetValue(valueText);
  SetComment(commentText);
}

ZelSectionEntry::ZelSectionEntry(const ZelSectionEntry& other)
    : ZelSectionEntry(other.keyName, other.value, other.comment) {}

ZelSectionEntry::~ZelSectionEntry() {
  delete[] keyName;
  delete[] value;
  delete[] comment;
}

void ZelSectionEntry::SetKeyName(const char* text) { TextBlock::Set(keyName, text); }
void ZelSectionEntry::SetValue(const char* text) { TextBlock::Set(value, text); }
void ZelSectionEntry::SetComment(const char* text) { TextBlock::Set(comment, text); }

const char* ZelSectionEntry::GetKeyName() const { return keyName; }
const char* ZelSectionEntry::GetValue() const { return value; }
const char* ZelSectionEntry::GetComment() const { return comment; }

void ZelSectionEntry::UndoComment() { delete[] std::exchange(comment, nullptr); }

bool ZelSectionEntry::operator==(const ZelSectionEntry& other) {
  return TextBlock::Match(value, other.value) && TextBlock::Match(keyName, other.keyName) &&
         TextBlock::Match(comment, other.comment);
}

void ZelSectionEntry::operator=(const ZelSectionEntry& other) {
  ZelSectionEntry added(IfMissing(keyName, other.keyName), IfMissing(value, other.value),
                        IfMissing(comment, other.comment));  // all that may throw
  TextBlock::Adopt(value, added.value, other.value);
  TextBlock::Adopt(keyName, added.keyName, other.keyName);
  TextBlock::Adopt(comment, added.comment, other.comment);
}

ZelSection::ZelSection() = default;

ZelSection::ZelSection(const char* text) : ZelSection() { SetName(text); }

ZelSection::ZelSection(const ZelSection& other) : ZelSection() { *this = other; }

ZelSection::~ZelSection() {
  delete[] name;
  ClearEntryList();
}

void ZelSection::SetName(const char* text) {
  if (text == nullptr) return;
  TextBlock::Wipe(name);
  TextBlock::Set(name, text);
}

const char* ZelSection::GetName() const { return name; }

bool ZelSection::AddEntry(const char* keyName, const char* value, const char* comment) {
  Insert(entries, entries.end(), std::make_unique<ZelSectionEntry>(keyName, value, comment));
  return true;
}

bool ZelSection::AddEntry(ZelSectionEntry* entry) {
  if (entry == nullptr) return false;
  InsertEntry(entry, entries.end());
  return true;
}

ZelSection::EntryPosition ZelSection::InsertEntry(ZelSectionEntry* entry) {
  AddEntry(entry);
  return entries.end();
}

ZelSection::EntryPosition ZelSection::InsertEntry(ZelSectionEntry* entry,
                                                  ConstEntryPosition position) {
  if (entry == nullptr) return entries.end();
  return Insert(entries, position, std::make_unique<ZelSectionEntry>(*entry));
}

ZelSection::EntryPosition ZelSection::RemoveEntry(ConstEntryPosition position) {
  if (position == entries.end()) return entries.end();
  delete *position;
  return entries.erase(position);
}

ZelSection::EntryPosition ZelSection::RemoveEntry(ZelSectionEntry* entry) {
  return RemoveEntry(FindEntry(entry));
}

ZelSection::EntryPosition ZelSection::FindEntry(ZelSectionEntry* entry) {
  if (entry == nullptr) return entries.end();
  return std::find_if(entries.begin(), entries.end(),
                      [entry](ZelSectionEntry* slot) { return EqualSlots(slot, entry); });
}

ZelSection::ConstEntryPosition ZelSection::EndEntry() const { return entries.end(); }

ZelSection::EntryList* ZelSection::GetEntryList() { return &entries; }
const ZelSection::EntryList* ZelSection::GetEntryList() const { return &entries; }

void ZelSection::ClearEntryList() {
  for (const ZelSectionEntry* entry : entries) delete entry;
  entries.clear();
}

bool ZelSection::operator==(const ZelSection& other) {
  return other.name != nullptr && name != nullptr && TextBlock::Match(name, other.name) &&
         std::equal(entries.begin(), entries.end(), other.entries.begin(), other.entries.end(),
                    EqualSlots);
}

void ZelSection::operator=(const ZelSection& other) {
  if (this == &other) return;
  ZelSection added(IfMissing(name, other.name));
  added.entries.reserve(other.entries.size());
  for (ZelSectionEntry* entry : other.entries) added.AddEntry(entry);
  // The last step that may throw. A blank target takes the array itself.
  if (entries.empty()) {
    entries.swap(added.entries);
  } else {
    entries.insert(entries.end(), added.entries.begin(), added.entries.end());
    added.entries.clear();
  }
  TextBlock::Adopt(name, added.name, other.name);
}
