// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_CSV_DOCUMENT_H
#define ZELCONFUTILS_CSV_DOCUMENT_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "ZelExport.h"

namespace zelconfutils {
class CsvRecordReader;
}

/// The byte that separates the fields of a record.
enum CsvFieldDelimiter : std::int32_t {
  CommaDelimiter = 0,      ///< `,`
  SemicolonDelimiter = 1,  ///< `;`
  TabDelimiter = 2,        ///< horizontal tab
};

/// One record, split into its fields. A row owns its texts and outlives the document that filled
/// it. A field may hold any byte but NUL when `CsvDocument::GetRow` wrote it.
///
/// Memory: a `std::string` for each field, of 32 bytes with GCC's library, and its text where that
/// is longer than a string holds in itself. `CsvDocument::GetRow` needs in addition the record
/// while it splits it: a record of 20 million commas, 610 MiB of fields, took 634 MiB at its peak.
/// Of what a wide or long record leaves, the next record and `Reset` keep room for 8192 fields or
/// four times those needed, and of each field for 1 KiB of text or twice the text.
class ZELCONFUTILS_API CsvDocumentRow {
 public:
  /// A row without fields.
  CsvDocumentRow();

  /// A deep copy. Throws `std::bad_alloc`.
  CsvDocumentRow(const CsvDocumentRow& other);

  /// Replaces the fields by copies of the other's. Throws `std::bad_alloc` and keeps the old
  /// fields then.
  CsvDocumentRow& operator=(const CsvDocumentRow& other);

  virtual ~CsvDocumentRow();

  /// Appends a copy of a NUL-terminated text, which must not be null. Throws `std::bad_alloc`
  /// and leaves the row as it was then, like the call for a `std::string`.
  void AddField(const char* field);

  /// Appends a copy of all bytes of `field`, NUL bytes included.
  void AddField(const std::string& field);

  /// A copy of the field at `index`, counted from 0. An index past the last field gives the
  /// empty text, which looks the same as an empty field: `GetFieldsCount` tells the two apart.
  /// Throws `std::bad_alloc`.
  std::string GetField(unsigned short index) const;

  /// The number of fields modulo 65536: a row of 65536 fields says 0. `GetField` reaches the
  /// first 65536 of a longer row all the same.
  unsigned short GetFieldsCount() const;

  /// Removes all fields.
  void Reset();

 private:
  friend class CsvDocument;  // refills `fields` in place, so that a row reuses its strings

  void Cleanup();

  std::vector<std::string> fields;  ///< in the order of the record
};

/// Reads a file of delimited records one at a time and on demand: in memory are one record, one
/// block of 64 KiB, and the caller's row, however large the file is.
///
///     CsvDocument document;
///     CsvDocumentRow row;
///     CsvFieldDelimiter delimiter = SemicolonDelimiter;  // taken by reference: a variable
///     document.SetFieldDelimiter(delimiter);
///     if (!document.Load("table.csv")) return;
///     while (document.IsCsvRecordPresence()) {
///       if (document.GetRow(row)) Use(row.GetField(0));
///     }
///
/// A record ends at LF, CR LF or CR, or at the end of the file, on every system alike. Quotes
/// protect nothing: a line end always ends the record and a delimiter always ends the field.
/// Bytes from 0x80 up are data like any other, and so is 0x1A. A NUL ends the row but not the
/// record: what follows it up to the line end is dropped.
///
/// A copy shares the open file and the read position with its origin, so that each record goes
/// to only one of them; delimiter, token, counter and path are its own. The file is closed by
/// the last of the documents that share it. A document, together with its copies, belongs to one
/// thread at a time.
class ZELCONFUTILS_API CsvDocument {
 public:
  /// Without a file; the comma separates, and there is no special token.
  CsvDocument();

  /// Shares the other's open file, see above. Both throw `std::bad_alloc` for the copy of the
  /// path, before anything has changed.
  CsvDocument(const CsvDocument& other);

  /// The same. The file that this document had is closed unless another copy still has it.
  CsvDocument& operator=(const CsvDocument& other);

  /// Closes the file if no copy of the document still has it.
  virtual ~CsvDocument();

  /// Sets the byte that separates fields, from the next `GetRow` on. `kind` must be a variable, as
  /// in the example above, but is only read. A value outside the enumeration is remembered, but the
  /// delimiter stays what it was.
  void SetFieldDelimiter(CsvFieldDelimiter& kind);

  /// Sets the byte that is stripped from both ends of a field, for instance the double quote,
  /// from the next `GetRow` on. NUL, the start value, means none.
  void SetFieldSpecialToken(const char& token);

  /// Opens `path` and places the document before its first record. The path is copied. A
  /// file that the document has open is closed first, whatever comes of the new one; the row
  /// counter goes on.
  ///
  /// False, with one line on the standard error stream, if
  ///   path is null             "Invalid CSV file  (null)", and the document has no path
  ///   it cannot be opened      "Failed to open CSV file PATH"; a directory is such a path
  /// and then the document has no file and `IsCsvRecordPresence` stays what it was. An empty file
  /// is no failure. Throws `std::bad_alloc` before anything has changed.
  bool Load(const char* path);

  /// Reads the next record into `row`, whose former fields go. The storage of their texts is
  /// reused, so that one row for a whole file is the fast way.
  ///
  /// Of each field the special token is stripped first, at either end where it stands, then the
  /// spaces (0x20 only) at both ends. An empty line is a row of one empty field.
  ///
  /// False, with an empty row, at the end of the file, where it may be called again, and without
  /// an open file. A read error counts as the end of the file, an interrupted read does not.
  /// Throws `std::bad_alloc`, also for a record of 4 GiB or more; the row is then empty, and the
  /// next call gives the same record.
  bool GetRow(CsvDocumentRow& row);

  /// How many rows `GetRow` has delivered, over all files of this document, modulo 2^32.
  std::uint32_t GetRowCount() const;

  /// Whether another record can be expected: true after a good `Load`, even of an empty file,
  /// and for as long as `GetRow` saw at least one byte after its record.
  bool IsCsvRecordPresence() const;

 private:
  void Initialize();
  void CleanUp();

  // In the class, so that the loops over bytes and fields can inline them.
  bool IsFieldDelimiter(char c) const { return c == delimiter; }
  bool IsRowSeparator(char c) const { return c == '\r' || c == '\n'; }
  bool IsFieldSpecialChar(char c) const { return c == specialToken; }

  /// Lends the next record until the next call: its bytes, one CR or LF if it had a line end,
  /// and a NUL. `size` counts all of them. At the end of the file both stay as they are.
  void GetCsvRecord(char*& record, std::uint32_t& size);

  /// Splits a record into `row`, over whatever fields the row has. False if `size` is 0, and then
  /// the row is not touched.
  bool GetCsvFields(CsvDocumentRow* row, const char* record, const std::uint32_t& size);

  /// Takes the bytes that are in the terminated set `chars` off the chosen ends of `text`. Returns
  /// whether it took any.
  bool StringTrim(std::string& text, const char* chars, bool left, bool right);

  char delimiter = ',';
  char specialToken = '\0';
  char* path = nullptr;       ///< own copy, made with `new char[]`
  std::FILE* file = nullptr;  ///< what `reader` reads; its position is that of the reader's block
  std::uint32_t rowCount = 0;
  bool recordPresent = false;
  CsvFieldDelimiter delimiterKind = CommaDelimiter;
  /// Owns `file`; copies of the document share it.
  std::shared_ptr<zelconfutils::CsvRecordReader> reader;
};

#endif
