// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ZEL_SECTION_H
#define ZELCONFUTILS_ZEL_SECTION_H

#include <vector>

#include "ZelExport.h"

/// One record of three texts: key, value, comment. The library gives the comment no meaning.
///
/// A text is null until it is first set; from then on it is a block of 512 bytes that belongs to
/// the object: the text, its NUL, and zeros up to the block's end. The block is allocated once,
/// so that a pointer from a getter stays good, and shows each later text, until the object ends
/// (the comment's: until `UndoComment`). Null and an empty text are different states.
///
/// All texts passed in are terminated and are copied. A failed allocation throws
/// `std::bad_alloc` and changes nothing. No locks: one thread at a time.
class ZELCONFUTILS_API ZelSectionEntry {
 public:
  /// All three texts null.
  ZelSectionEntry();

  /// Sets the three texts as the setters do: a null argument leaves that text null.
  ZelSectionEntry(const char* keyName, const char* value, const char* comment);

  /// A deep copy, with blocks of its own. A null text stays null.
  ZelSectionEntry(const ZelSectionEntry& other);

  virtual ~ZelSectionEntry();

  /// Sets the key. Null changes nothing: only the comment can go back to null. A text of 512
  /// bytes or more, NUL not counted, is truncated to its first 511. `text` may be (part of) what
  /// the same getter returns: `SetValue(GetValue() + 2)` drops the first two bytes.
  void SetKeyName(const char* text);
  /// As `SetKeyName`, for the value.
  void SetValue(const char* text);
  /// As `SetKeyName`, for the comment.
  void SetComment(const char* text);

  /// The object's own block, or null.
  const char* GetKeyName() const;
  /// The object's own block, or null.
  const char* GetValue() const;
  /// The object's own block, or null.
  const char* GetComment() const;

  /// Releases the comment's block; the comment is null afterwards. Nothing if it is null already.
  void UndoComment();

  /// Whether all three texts match: both null, or both present and equal with ASCII case ignored
  /// (in values and comments as in keys). Null does not match an empty text. Never throws.
  bool operator==(const ZelSectionEntry& other);

  /// The same, for C++20: it also tries each comparison with its sides swapped, and finds neither
  /// order the better one for two objects that are not const. These four are better.
  friend bool operator==(ZelSectionEntry& left, ZelSectionEntry& right) {
    return left.operator==(right);
  }
  /// Likewise.
  friend bool operator==(ZelSectionEntry& left, ZelSectionEntry&& right) {
    return left.operator==(right);
  }
  /// Likewise.
  friend bool operator==(ZelSectionEntry&& left, ZelSectionEntry& right) {
    return left.operator==(right);
  }
  /// Likewise.
  friend bool operator==(ZelSectionEntry&& left, ZelSectionEntry&& right) {
    return left.operator==(right);
  }

  /// Sets value, key and comment to those of `other`. What is null there stays as it is here:
  /// an entry without a comment, assigned over one with a comment, leaves that comment.
  void operator=(const ZelSectionEntry& other);

 private:
  char* keyName = nullptr;
  char* value = nullptr;
  char* comment = nullptr;
};

/// A named, ordered list of entries, all owned by the section. Entries may repeat: nothing looks
/// at those present before one is added.
///
/// The name is a text of the same kind as those of `ZelSectionEntry`: null until it is set, then
/// one block of 512 bytes. A position denotes one entry, or the end, one past the last; it is
/// good until the next call that adds or removes an entry.
///
/// Entries passed in are copied and stay the caller's; a null entry adds, finds and removes
/// nothing. A failed allocation throws `std::bad_alloc` and changes nothing. No locks: one
/// thread at a time.
class ZELCONFUTILS_API ZelSection {
 public:
  using EntryList = std::vector<ZelSectionEntry*>;       ///< the section owns what it points to
  using EntryPosition = EntryList::iterator;             ///< an entry, or the end
  using ConstEntryPosition = EntryList::const_iterator;  ///< the same, for reading

  /// No name, no entries.
  ZelSection();

  /// The same, then `SetName(name)`.
  ZelSection(const char* name);

  /// A deep copy: name and entries of its own.
  ZelSection(const ZelSection& other);

  virtual ~ZelSection();

  /// Sets the name, truncated to 511 bytes. Null changes nothing. The old name is wiped before
  /// `name` is read: with (part of) `GetName()` as the argument the name becomes empty.
  void SetName(const char* name);

  /// The object's own block, or null.
  const char* GetName() const;

  /// Appends a new entry with these texts, of which each may be null. Always true.
  bool AddEntry(const char* keyName, const char* value, const char* comment);

  /// Appends a copy of `entry`, which may be an entry of this section. True; false for null.
  bool AddEntry(ZelSectionEntry* entry);

  /// Appends a copy of `entry`. The end position, not that of the new entry.
  EntryPosition InsertEntry(ZelSectionEntry* entry);

  /// Puts a copy of `entry` before `position`, which may be the end. The position of the
  /// copy; for a null `entry` the end position.
  EntryPosition InsertEntry(ZelSectionEntry* entry, ConstEntryPosition position);

  /// Destroys the entry at `position`. The position of the entry that followed it, which may be
  /// the end. At the end position nothing happens, and the end position comes back.
  EntryPosition RemoveEntry(ConstEntryPosition position);

  /// Destroys the first entry that equals `*entry`; the result is as above, and the end position
  /// if there is none. `entry` may itself be an entry of this section; it is void afterwards if
  /// it was the first of its kind.
  EntryPosition RemoveEntry(ZelSectionEntry* entry);

  /// The first entry whose content equals that of `*entry` (`ZelSectionEntry::operator==`), or
  /// the end position. Never throws.
  EntryPosition FindEntry(ZelSectionEntry* entry);

  /// The end position. The first is that of the array: `GetEntryList()->begin()`.
  ConstEntryPosition EndEntry() const;

  /// The section's own array, not a copy. The section stays the owner of the array and of each
  /// entry in it, and deletes what it finds there. Slots may be null: they are skipped.
  EntryList* GetEntryList();
  /// The same, for reading.
  const EntryList* GetEntryList() const;

  /// Destroys all entries, from the front. The name stays.
  void ClearEntryList();

  /// Whether both sections have a name, the names are equal with ASCII case ignored, and the
  /// entries are as many and equal pair by pair. A section without a name equals none, itself
  /// included. Never throws.
  bool operator==(const ZelSection& other);

  /// The same, for C++20, as in `ZelSectionEntry`.
  friend bool operator==(ZelSection& left, ZelSection& right) { return left.operator==(right); }
  /// Likewise.
  friend bool operator==(ZelSection& left, ZelSection&& right) { return left.operator==(right); }
  /// Likewise.
  friend bool operator==(ZelSection&& left, ZelSection& right) { return left.operator==(right); }
  /// Likewise.
  friend bool operator==(ZelSection&& left, ZelSection&& right) { return left.operator==(right); }

  /// Takes the name of `other`, if it has one, and appends copies of its entries. The entries of
  /// this section stay before them: call `ClearEntryList` first to replace them. Assigning
  /// a section to itself changes nothing.
  void operator=(const ZelSection& other);

 private:
  EntryList entries;
  char* name = nullptr;
};

#endif
