// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_CONFIG_FILE_H
#define ZELCONFUTILS_CONFIG_FILE_H

#include <cstddef>

#include "ConfigException.h"
#include "ZelExport.h"

namespace Configuration {

class ConfigLineList;
class FileLock;
struct ConfigEntry;
struct EntryScope;
template <class Element>
class LinkedList;
template <class Element>
class LinkedListPosition;
using ConfigEntryList = LinkedList<ConfigEntry>;              ///< the entries, in file order
using ConfigEntryPosition = LinkedListPosition<ConfigEntry>;  ///< a cursor over them

/// A flat key/value text file held in memory: read, queried, edited and written back so that every
/// byte that no edit touched comes back as it was.
///
/// **Text format.** Each line is one of three things, tested in this order: a comment (the comment
/// token is its very first bytes), an entry (it holds the separator; the first occurrence counts),
/// or neither. The key is what stands before the separator without the white space at its ends; the
/// value is what stands after it without the white space at its end: white space right after the
/// separator belongs to the value. There is no quoting, escaping or continuation. A physical line
/// of more than 1023 bytes, its line feed counted, is stored as several lines, which join up again
/// when they are written. Keys are compared byte for byte; of several entries with one key, lookups
/// meet the first.
///
/// **Cursor.** One cursor walks the entries in file order. It is unset (the walk has not begun), on
/// an entry, or at end. A delete leaves it on the entry after the deleted one and sets the delete
/// mark: the next `GotoNextEntry` clears the mark and does not move, so that a walk with deletes in
/// it meets every entry:
///
///     file.Restart();
///     while (file.GotoNextEntry()) {
///       if (unwanted(file)) file.DeleteCurrentEntry();
///     }
///
/// Below, "clears the delete mark" says that an operation makes the object forget such a delete.
///
/// **Results.** `size_t` codes of the set operations: 0 nothing changed, 1 already so, 2 written.
/// Reads into a buffer: the length in bytes without the terminator, 0 for nothing found, and
/// 4294967295 (0xFFFFFFFF in a 64-bit `size_t`, not its largest value) for a buffer that is too
/// small. A key or value is copied whole with its terminator or not at all. A text of exactly
/// 4294967295 bytes that is copied gives the same result: only the buffer tells then, as one that
/// is too small is filled with zeros.
///
/// **Failures.** Only the constructor, `Reload` and `Save` throw `ConfigException`; afterwards the
/// object must not be used again, only destroyed. Where memory runs out, an operation throws
/// `std::bad_alloc`: no line and no entry has changed then, and the object stays usable.
///
/// Edits change the image in memory; the file changes at `Save` alone. Between calls the object
/// holds no open file and no lock; within one, the file is not inherited by programs that are
/// started meanwhile. It is used by one thread at a time, reads included. No text pointer may be
/// null except where that is said; what is passed in is copied.
class ZELCONFUTILS_API ConfigFile {
 public:
  /// Reads a file, or a text in memory.
  ///
  /// @param source           the path of the file; with `fromBuffer` the text itself; null makes an
  ///                         empty object without a file, its cursor unset
  /// @param createIfMissing  a missing file is made, empty (its directory must exist)
  /// @param readOnly         the file is opened for reading only, and never made; has no bearing
  ///                         on `Save`. Without both flags the file must be writable
  /// @param fromBuffer       fills the object as `AttachToBuffer(source, nullptr)` does and ignores
  ///                         the result: the object has no path
  /// @param separator        parts key from value; one byte or more: an empty one occurs in no line
  /// @param comment          begins a comment line; an empty one makes every line a comment
  /// @param linePrefix       begins each entry's line that the object composes; null is empty
  ///
  /// Waits about ten seconds at most for a lock that another process holds on the file. Afterwards
  /// the cursor is on the first entry, or at end.
  ///
  /// A read that a signal interrupts goes on. One that fails, as on a broken disk, ends the content
  /// as the end of the file does, and nothing tells: a program that must know compares the length
  /// of the image with that of the file before it saves.
  ///
  /// Throws `ConfigException` with one of `Path DIRECTORY does not exist.` (also for a directory
  /// that the system does not let this process look at), `Error opening file "PATH" : REASON`,
  /// `Error locking file "PATH" : REASON`; REASON is the system's text.
  ConfigFile(const char* source, bool createIfMissing, bool readOnly, bool fromBuffer,
             const char* separator, const char* comment, const char* linePrefix);

  /// Not offered: two objects would own one content.
  ConfigFile(const ConfigFile&) = delete;

  /// Drops what was not saved.
  ~ConfigFile();

  /// Copies all members as they stand, pointers included, and releases nothing: both objects then
  /// share one content, and what this one held is left without an owner. Only one of the two may be
  /// used and destroyed afterwards; the caller ensures that.
  ConfigFile& operator=(const ConfigFile& other);

  // --- The file -------------------------------------------------------------------------------

  /// Writes the image to `target`, or to the object's own path where `target` is null or empty. A
  /// target does not become the path. The file is truncated before it is locked and written.
  ///
  /// `coalesced` chooses how: false writes the lines in blocks of 16 KiB on the stack (a thread
  /// with a stack of 32 KiB can save) and needs no memory; true gathers the image in a buffer, kept
  /// from save to save, and writes it with one call.
  ///
  /// True when the system has accepted every byte. False when the object has no path: then no file
  /// is touched, even with a target. Lines, entries, cursor and the delete mark are as before.
  ///
  /// Throws `ConfigException` with `Error saving file "TARGET" : REASON` (it cannot be opened),
  /// `Error locking file "TARGET" : REASON`, or `Error saving file "TARGET" : file is too big.`
  /// for any failure to write, and where there is no memory for the buffer. The target is then
  /// empty or partly written.
  bool Save(bool coalesced, const char* target);

  /// Drops the content and reads the file anew: unsaved edits are lost, the cursor is on the first
  /// entry, or at end. Without a path nothing happens. Throws as the constructor does, but does not
  /// test the directory: without it the file cannot be opened.
  void Reload();

  /// Drops all lines and entries; path and tokens stay, and the file is not touched. The cursor is
  /// at end.
  void ClearAll();

  /// Replaces the content by the lines of `text`, and the path by `newPath`; null leaves the object
  /// without one. Bytes after the last line feed are dropped.
  ///
  /// True: the cursor is on the first entry, or at end. False at a line of 1024 bytes or more, its
  /// line feed counted: the lines before it are stored, there are no entries, and the cursor is at
  /// end.
  bool AttachToBuffer(const char* text, const char* newPath);

  /// Copies the image and a terminator to `buffer` of `size` bytes. False when they do not fit:
  /// `buffer` then begins with a NUL, if `size` is not 0.
  bool SaveToBuffer(char* buffer, size_t size);

  // --- The cursor -----------------------------------------------------------------------------

  /// Makes the cursor unset: the next `GotoNextEntry` goes to the first entry. Clears the delete
  /// mark.
  void Restart();

  /// Puts the cursor on the first entry with that key; false, and no move, without one. Clears the
  /// delete mark.
  bool GotoEntry(const char* key);

  /// One entry forward; from unset to the first; not at all where the delete mark is set. False
  /// when the cursor is at end afterwards. Clears the delete mark.
  bool GotoNextEntry();

  /// One entry back; from end to the last. False, and no move, from the first entry, from unset and
  /// without entries. Clears the delete mark.
  bool GotoPreviousEntry();

  /// To the first entry; false, and no move, without entries. Clears the delete mark.
  bool GotoFirstEntry();

  /// To the last entry; false, and no move, without entries. Clears the delete mark.
  bool GotoLastEntry();

  // --- Reading --------------------------------------------------------------------------------

  /// Copies the value of the first entry with that key to `buffer` of `size` bytes:
  ///
  ///     found, and it fits    value and terminator, the bytes after them stay; its length
  ///     found, too small      `size` zero bytes; 4294967295
  ///     no such key           `size` zero bytes; 0, as for an empty value: `GotoEntry` tells
  ///
  /// Moves no cursor. Clears the delete mark.
  size_t GetEntry(const char* key, char* buffer, size_t size);

  /// Copies key and value of the current entry; either buffer may be null: not wanted. An unset
  /// cursor goes to the first entry. Keeps the delete mark.
  ///
  /// The key's length if a key was asked for and is not empty, else the value's if one was asked
  /// for, else 0. At end 0, and the buffers are not written. A buffer that is too small is filled
  /// with zeros, and the result is 4294967295: a key that is too long leaves the value's buffer
  /// untouched, a key already copied stays.
  size_t GetCurrentEntry(char* keyBuffer, size_t keySize, char* valueBuffer, size_t valueSize);

  /// The number of entries, those with equal keys included. Keeps the delete mark.
  size_t GetEntryCount() const;

  // --- Editing --------------------------------------------------------------------------------

  /// Adds a line of prefix, key, separator, value and a line feed after the last line of the file
  /// or, `atBeginning`, before the first. Neither text is examined, and keys may repeat. A last
  /// line without a line feed is not mended: in the saved file the new line runs on from it.
  ///
  /// False, and nothing is added, when the line would have more than 1023 bytes with its line feed
  /// (or the separator is empty). The cursor does not move. Clears the delete mark.
  bool AddEntry(const char* key, const char* value, bool atBeginning);

  /// Adds an entry before the current one, its line directly before that entry's line. Before the
  /// first entry, and from unset, the line goes to the very top of the file; from end after the
  /// last line. The cursor stays on its entry; from unset it goes to the first position as it was
  /// before the call, also when the line is refused. Result as for `AddEntry`. Clears the delete
  /// mark.
  bool InsertEntry(const char* key, const char* value);

  /// Sets the value of the first entry with that key, or adds an entry at the end of the file.
  ///
  /// White space right after the separator goes with the old value; trailing white space and line
  /// end stay. The new value may have any length, but a line of more than 1023 bytes is read back
  /// as several. 2 written or added, 1 already so, 0 when a new line would not fit or when more
  /// than 1023 bytes stand after the value. The cursor does not move. Clears the delete mark.
  size_t SetEntry(const char* key, const char* value);

  /// Sets the value of the current entry, as `SetEntry` does; 0 also at end. An unset cursor goes
  /// to the first entry. Clears the delete mark, but not at end or when the value is equal already.
  size_t SetCurrentEntry(const char* value);

  /// Gives the current entry another key; the blanks around it, separator and value stay. Other
  /// entries may have that key. An unset cursor goes to the first entry. Keeps the delete mark.
  ///
  /// False, and nothing is changed, at end, for an empty `newKey`, and when more than 1023 bytes
  /// stand after the key.
  bool RenameEntry(const char* newKey);

  /// Deletes the first entry with that key, with its line. The cursor goes to the entry after it,
  /// or to end, wherever it was, and the delete mark is set. False without such a key: the cursor
  /// does not move, and the delete mark is cleared.
  bool DeleteEntry(const char* key);

  /// Deletes the current entry, as `DeleteEntry` does; from unset the first one. False at end: the
  /// delete mark is kept.
  bool DeleteCurrentEntry();

 protected:
  /// Appends the lines of the file at `path` to `lines`; entries and cursor are not touched. Throws
  /// `ConfigException` with everything released, and `std::bad_alloc` with `lines` as before.
  void Read();

  /// Appends an entry to `entries`, which is empty before, for each line that is one; puts the
  /// cursor on the first. Throws `std::bad_alloc` with entries and cursor as before.
  void Load();

  /// Releases everything; may run twice.
  void Tidy();

  /// @name Members
  /// All pointers are owned; null means absent or released.
  /// @{
  char* path = nullptr;                ///< what `Read` and `Save` open; null: no file
  char* separator = nullptr;           ///< parts key from value
  char* comment = nullptr;             ///< begins a comment line
  char* linePrefix = nullptr;          ///< begins each composed entry's line; may be empty
  char* lineBuffer = nullptr;          ///< 1024 bytes: the line being composed
  char* tailBuffer = nullptr;          ///< 1024 bytes for a derived class; nothing here needs them
  bool afterDelete = false;            ///< the delete mark: the next forward step does not move
  bool readOnly = false;               ///< `Read` opens for reading only
  bool createIfMissing = false;        ///< `Read` makes a missing file, empty
  size_t separatorLength = 0;          ///< in bytes
  size_t linePrefixLength = 0;         ///< in bytes
  ConfigLineList* lines = nullptr;     ///< the image: all lines of the file
  ConfigEntryList* entries = nullptr;  ///< the index, in file order
  ConfigEntryPosition* cursor = nullptr;  ///< unset, on an entry, or at end
  FileLock* fileLock = nullptr;           ///< held within `Read` and `Save` alone

  /// @}

 private:
  ConfigFile();
  EntryScope Scope();
};

}  // namespace Configuration

#endif
