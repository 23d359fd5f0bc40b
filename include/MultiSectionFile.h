// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MULTI_SECTION_FILE_H
#define ZELCONFUTILS_MULTI_SECTION_FILE_H

#include <cstddef>

#include "ConfigException.h"
#include "ZelExport.h"

namespace Configuration {

class ConfigLineList;
class FileLock;
struct ConfigEntry;
struct ConfigSection;
struct EntryScope;
template <class Element>
class LinkedList;
template <class Element>
class LinkedListPosition;
using ConfigEntryList = LinkedList<ConfigEntry>;                  ///< entries, in file order
using ConfigEntryPosition = LinkedListPosition<ConfigEntry>;      ///< a cursor over them
using ConfigSectionList = LinkedList<ConfigSection>;              ///< the sections, in file order
using ConfigSectionPosition = LinkedListPosition<ConfigSection>;  ///< a cursor over them
namespace SectionSyntax {
struct SectionTokens;
}

/// A text file that mixes top-level key/value entries with named sections, held in memory: read,
/// queried, edited and written back so that every byte that no edit touched comes back as it was.
///
/// **Text format.** Lines, keys and values are those of `ConfigFile`. A section is a run of lines
/// from a header to a stop line. What a line means, the first that fits:
///
///     outside a section    a comment; a header: it holds the start token, and no separator
///                          before it; an entry: it holds the separator; nothing
///     inside a section     a comment; the stop line: it holds the stop token, anywhere; an entry
///                          of the section: it holds the separator; nothing
///
/// Sections do not nest. A token counts with its line feed: with the stop token `"}\n"` neither a
/// last line `}` without a line feed nor `} ` closes a section. The name in a header begins after
/// the section keyword and exactly one byte more, or at the line's first byte where there is no
/// keyword; it ends before the start token, which is taken to end the line, without the white space
/// there. Names and keys may repeat, and lookups meet the first.
///
/// A start token that begins with a line feed stands on a line of its own, and the line before it
/// is the section's name line, whatever that line holds. If it is also an entry's line or another
/// section's stop line, every edit that would rewrite or erase it is refused. Where the token line
/// is the first line of all, the section has an empty name that cannot be set; what is then added
/// before it, an entry or a section, changes nothing of that in memory, but its last line is the
/// section's name line when the file is next read.
///
/// **Cursors.** One over the sections, one over the top-level entries, and each section has one of
/// its own over its entries, unset at first, which keeps its place when the section cursor moves.
/// Each is unset (the walk has not begun), at an element, or at end. The current section is the one
/// that the section cursor is at. "Settles the section" says that an operation first moves an unset
/// section cursor to the first section.
///
/// A delete leaves a cursor on the element after the deleted one and sets the delete mark: the next
/// forward step, of whichever of the three walks, clears the mark and does not move. "Clears the
/// delete mark" says that an operation makes the object forget such a delete.
///
/// **Results, failures, threads** are as told for `ConfigFile`; what fails for want of a section is
/// told with each operation. The constructor, `Reload`, `Save` and `AttachToBuffer` throw
/// `ConfigException`; afterwards the object must not be used again, only destroyed.
class ZELCONFUTILS_API MultiSectionFile {
 public:
  /// Reads a file, or a text in memory.
  ///
  /// @param source           as for `ConfigFile`, and so are the three flags
  /// @param createIfMissing  see there
  /// @param readOnly         see there
  /// @param fromBuffer       see there
  /// @param sectionKeyword   stands before a section's name; null is empty
  /// @param startToken       ends a section's header line, or forms a line of its own if it begins
  ///                         with a line feed; 2 bytes or more
  /// @param stopToken        forms a section's last line; 2 bytes or more
  /// @param separator        parts key from value
  /// @param comment          begins a comment line
  /// @param linePrefix       begins each entry's line that the object composes; null is empty
  ///
  /// Afterwards the section cursor is at the first section and the entry cursor at the first
  /// top-level entry, or at end; with a null `source` both are unset.
  ///
  /// Throws `ConfigException` as the constructor of `ConfigFile` does, and with
  /// `Length of section's start & stop tokens must be at least 2!` (tested before anything else) or
  /// `File "PATH" is corrupted!` for a text that ends inside a section; the path is empty for a
  /// text in memory.
  MultiSectionFile(const char* source, bool createIfMissing, bool readOnly, bool fromBuffer,
                   const char* sectionKeyword, const char* startToken, const char* stopToken,
                   const char* separator, const char* comment, const char* linePrefix);

  /// Not offered: two objects would own one content.
  MultiSectionFile(const MultiSectionFile&) = delete;

  /// Drops what was not saved.
  ~MultiSectionFile();

  /// Copies all members as they stand, as for `ConfigFile`: only one of the two objects may be used
  /// and destroyed afterwards.
  MultiSectionFile& operator=(const MultiSectionFile& other);

  // --- The file -------------------------------------------------------------------------------

  /// Writes the image, as `ConfigFile::Save` does, with the same results and messages.
  bool Save(bool coalesced, const char* target);

  /// Drops the content and reads the file anew. Cursors as after construction. Without a path
  /// nothing happens. Throws as `ConfigFile::Reload` does, and for a text that ends inside a
  /// section.
  void Reload();

  /// Drops all lines, sections and entries; path and tokens stay. Both cursors are at end.
  void ClearAll();

  /// Replaces content and path, as `ConfigFile::AttachToBuffer` does. False at a line of 1024 bytes
  /// or more: no sections and no entries, both cursors at end. Throws `ConfigException` for a text
  /// that ends inside a section, also one whose stop line is dropped for want of a line feed.
  bool AttachToBuffer(const char* text, const char* newPath);

  /// Copies the image and a terminator to `buffer` of `size` bytes. False when they do not fit:
  /// `buffer` then begins with a NUL, if `size` is not 0.
  bool SaveToBuffer(char* buffer, size_t size);

  // --- Sections: the cursor and names ---------------------------------------------------------

  /// Makes the section cursor and the top-level entry cursor unset; the sections' own cursors keep
  /// their places. Clears the delete mark.
  void Restart();

  /// Goes to the first section of that name, which may be empty; false, and no move, without one.
  /// Clears the delete mark.
  bool GotoSection(const char* name);

  /// One section forward; from unset to the first; not at all where the delete mark is set. False
  /// when the cursor is at end afterwards. Clears the delete mark.
  bool GotoNextSection();

  /// One section back; from end to the last. False, and no move, from the first, from unset and
  /// without sections. Clears the delete mark.
  bool GotoPreviousSection();

  /// To the first section; false, and no move, without sections. Clears the delete mark.
  bool GotoFirstSection();

  /// To the last section; false, and no move, without sections. Clears the delete mark.
  bool GotoLastSection();

  /// Copies the current section's name with a terminator to `buffer` of `size` bytes: its length in
  /// bytes, the terminator not counted. 4294967295 without a section (`buffer` is not touched) and
  /// for a buffer that is too small (all its bytes are 0). Settles the section. Clears the delete
  /// mark.
  size_t GetSectionName(char* buffer, size_t size);

  /// Writes the current section's name line anew: keyword, blank, name, blank, start token (in the
  /// two-line form a line feed); for an empty name the start token or the line feed alone. All else
  /// that the line held goes. The name may have any length and may be in use.
  ///
  /// False without a section and where the section has no name line of its own. Settles the
  /// section. Clears the delete mark.
  bool SetSectionName(const char* name);

  /// The number of sections. Keeps the delete mark.
  size_t GetSectionCount() const;

  // --- Sections: adding and deleting ----------------------------------------------------------

  /// Adds an empty section: a header composed as by `SetSectionName`, and a stop line; after the
  /// last line of the file or, `atFront`, before the first. The name may be empty and in use.
  /// Always true. The new section becomes the current one. Clears the delete mark.
  bool AddSection(const char* name, bool atFront);

  /// `AddSection("", atFront)`.
  bool AddSection(bool atFront);

  /// Not offered: a name alone would be taken for `atFront`. A template, as a 0 is no name.
  template <class Character>
  bool AddSection(const Character* name) = delete;

  /// Adds an empty section directly before the current one; before the first, and from unset, at
  /// the very top of the file; from end after the last line. The new section becomes the current
  /// one. Clears the delete mark.
  ///
  /// True, but for one case of the two-line form, in which nothing changes: the current section's
  /// name line is the stop line of the section before it.
  bool InsertSection(const char* name);

  /// Deletes the current section with all its lines, from header to stop line; from unset the first
  /// one. The cursor goes to the section after it, or to end, and the delete mark is set.
  ///
  /// The number of sections that are left. 4294967295 without a section and where its first or last
  /// line is shared with another section or an entry: nothing is deleted, and the delete mark is
  /// kept.
  size_t DeleteSection();

  /// Goes to the first section of that name and deletes it. 4294967295 without one: the cursor does
  /// not move, and the delete mark is cleared.
  size_t DeleteSection(const char* name);

  // --- The current section's entries: reading -------------------------------------------------

  /// The number of its entries; 0 without a section. Settles the section. Keeps the delete mark.
  size_t GetSecEntryCount() const;

  /// Puts its cursor on the first entry with that key; false, and no move, without one. Settles the
  /// section. Clears the delete mark.
  bool GotoSecEntry(const char* key);

  /// One entry forward; from unset to the first; not at all where the delete mark is set. False
  /// without a section and when the cursor is at end afterwards. Settles the section. Clears the
  /// delete mark.
  bool GotoSecNextEntry();

  /// One entry back; from end to the last. False, and no move, from the first, from unset, without
  /// entries and without a section. Settles the section. Clears the delete mark.
  bool GotoSecPrevEntry();

  /// To the first entry; false, and no move, without one. Settles the section. Clears the delete
  /// mark.
  bool GotoSecFirstEntry();

  /// To the last entry; false, and no move, without one. Settles the section. Clears the delete
  /// mark.
  bool GotoSecLastEntry();

  /// Makes the current section's entry cursor unset. Does not settle the section. Clears the delete
  /// mark.
  void RestartSection();

  /// Copies the value of the section's first entry with that key, as `ConfigFile::GetEntry` does.
  /// Without a section 0 and zeros, as without such a key. Moves no entry cursor. Settles the
  /// section. Clears the delete mark.
  size_t GetSectionEntry(const char* key, char* buffer, size_t size);

  /// Copies key and value of the section's current entry, as `ConfigFile::GetCurrentEntry` does; an
  /// unset entry cursor goes to the first entry. Without a section 0, and the buffers are not
  /// written. Settles the section. Unlike `GetCurrentEntry` it clears the delete mark.
  size_t GetSecCurrentEntry(char* keyBuffer, size_t keySize, char* valueBuffer, size_t valueSize);

  // --- The current section's entries: editing -------------------------------------------------
  // Limits and what survives of a line are as told for `ConfigFile`. A section's operations differ
  // from the top-level ones on purpose, in their cursors and in the delete mark.

  /// Sets the value of the section's current entry: 2 written, 1 already so, 0 without a section or
  /// a current entry and when more than 1023 bytes stand after the value. Does not settle the
  /// section, and an unset entry cursor is no current entry. Clears the delete mark.
  size_t SetSecCurrentEntry(const char* value);

  /// Gives the section's current entry another key; an unset entry cursor goes to the first entry,
  /// also when the key is refused. False as for `RenameEntry` and without a section. Settles the
  /// section. Clears the delete mark.
  bool RenameSectionEntry(const char* newKey);

  /// Adds an entry directly before the section's stop line. False without a section and when the
  /// line would have more than 1023 bytes. The entry cursor does not move: at end it stays after
  /// the new entry. Settles the section. Clears the delete mark.
  bool AddSectionEntry(const char* key, const char* value);

  /// Sets the value of the section's first entry with that key, or adds one: 2 written or added, 1
  /// already so, 0 without a section and when the edit is refused. The entry cursor does not move.
  /// Settles the section. Clears the delete mark.
  size_t SetSectionEntry(const char* key, const char* value);

  /// Inserts an entry directly before the section's current one and makes it the current one. From
  /// unset before the first; at end, and without entries, as `AddSectionEntry`: the cursor stays at
  /// end. With `replaceExisting`, a key that exists is set instead, and the cursor stays.
  ///
  /// False without a section (the delete mark is kept) and when the line would have more than 1023
  /// bytes. Settles the section. Clears the delete mark.
  bool InsertSectionEntry(const char* key, const char* value, bool replaceExisting);

  /// Deletes the section's first entry with that key, with its line. The entry cursor goes to the
  /// entry after it, or to end, wherever it was, and the delete mark is set. False without a
  /// section or such a key: the delete mark is cleared. Settles the section.
  bool DeleteSectionEntry(const char* key);

  /// Deletes the section's current entry likewise. False without a section or a current entry: the
  /// delete mark is cleared. Does not settle the section, and an unset entry cursor is no current
  /// entry.
  bool DeleteSectionEntry();

  // --- Top-level entries ----------------------------------------------------------------------
  // These are the operations of `ConfigFile`, over the entries outside sections. They neither see
  // nor move anything of a section. First and last line are those of the whole file.

  /// As `ConfigFile::GotoEntry`.
  bool GotoEntry(const char* key);
  /// As `ConfigFile::GotoNextEntry`.
  bool GotoNextEntry();
  /// As `ConfigFile::GotoPreviousEntry`.
  bool GotoPreviousEntry();
  /// As `ConfigFile::GotoFirstEntry`.
  bool GotoFirstEntry();
  /// As `ConfigFile::GotoLastEntry`.
  bool GotoLastEntry();
  /// As `ConfigFile::GetEntry`.
  size_t GetEntry(const char* key, char* buffer, size_t size);
  /// As `ConfigFile::GetCurrentEntry`.
  size_t GetCurrentEntry(char* keyBuffer, size_t keySize, char* valueBuffer, size_t valueSize);
  /// The number of top-level entries: no section's entries count. Keeps the delete mark.
  size_t GetEntryCount() const;
  /// As `ConfigFile::RenameEntry`.
  bool RenameEntry(const char* newKey);
  /// As `ConfigFile::AddEntry`.
  bool AddEntry(const char* key, const char* value, bool atBeginning);
  /// As `ConfigFile::InsertEntry`.
  bool InsertEntry(const char* key, const char* value);
  /// As `ConfigFile::SetEntry`.
  size_t SetEntry(const char* key, const char* value);
  /// As `ConfigFile::DeleteEntry`.
  bool DeleteEntry(const char* key);
  /// As `ConfigFile::DeleteCurrentEntry`.
  bool DeleteCurrentEntry();

 protected:
  /// Appends the lines of the file at `path` to `lines`; index and cursors are not touched. Throws
  /// `ConfigException` with everything released, and `std::bad_alloc` with `lines` as before.
  void Read();

  /// Builds sections and entries, of which there are none before, from `lines` and sets both
  /// cursors to the first. Throws `ConfigException` with everything released when the text ends
  /// inside a section, and `std::bad_alloc` with all as before.
  void Load();

  /// Releases everything; may run twice.
  void Tidy();

  /// @name Members
  /// All pointers are owned; null means absent or released.
  /// @{
  char* path = nullptr;             ///< what `Read` and `Save` open; null: no file
  char* startToken = nullptr;       ///< ends a header line, or is a line of its own
  char* stopToken = nullptr;        ///< a section's last line
  char* separator = nullptr;        ///< parts key from value
  char* comment = nullptr;          ///< begins a comment line
  char* sectionKeyword = nullptr;   ///< before a section's name; may be empty
  char* linePrefix = nullptr;       ///< begins each composed entry's line; may be empty
  char* lineBuffer = nullptr;       ///< 1024 bytes: the line being composed
  char* tailBuffer = nullptr;       ///< 1024 bytes for a derived class; nothing here needs them
  bool afterDelete = false;         ///< the delete mark: the next forward step does not move
  bool readOnly = false;            ///< `Read` opens for reading only
  bool createIfMissing = false;     ///< `Read` makes a missing file, empty
  size_t separatorLength = 0;       ///< in bytes
  size_t sectionKeywordLength = 0;  ///< in bytes
  size_t linePrefixLength = 0;      ///< in bytes
  ConfigLineList* lines = nullptr;  ///< the image: all lines of the file
  ConfigSectionList* sections = nullptr;           ///< in file order
  ConfigEntryList* entries = nullptr;              ///< those outside sections, in file order
  ConfigSectionPosition* sectionCursor = nullptr;  ///< the current section
  ConfigEntryPosition* entryCursor = nullptr;      ///< over the entries outside sections
  FileLock* fileLock = nullptr;                    ///< held within `Read` and `Save` alone

  /// @}

 private:
  MultiSectionFile();
  SectionSyntax::SectionTokens Tokens() const;
  EntryScope TopLevelScope();
  EntryScope SectionScope(ConfigSection& section);
  EntryScope Scope(LinkedList<ConfigEntry>& scopeEntries, LinkedListPosition<ConfigEntry>& cursor);
  ConfigSection* CurrentSection() const;
  ConfigSection* SettledSection() const;
};

/// A `MultiSectionFile` with the tokens of this format:
///
///     # a comment
///     timeout = 30
///     section alpha {
///     host = a
///     }
///
/// Keyword "section", start token "{\n", stop token "}\n", separator "=", comment "#", no prefix.
class ZELCONFUTILS_API MultiSectionConfigFile : public MultiSectionFile {
 public:
  /// As the constructor of `MultiSectionFile`. `ignoredFlag` is read by nothing.
  MultiSectionConfigFile(const char* source, bool createIfMissing, bool ignoredFlag, bool readOnly,
                         bool fromBuffer);
  /// Not offered, as for the base class.
  MultiSectionConfigFile(const MultiSectionConfigFile&) = delete;
  ~MultiSectionConfigFile();
  /// As for the base class.
  MultiSectionConfigFile& operator=(const MultiSectionConfigFile& other);
};

}  // namespace Configuration

#endif
