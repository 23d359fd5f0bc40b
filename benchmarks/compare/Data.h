// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_COMPARE_DATA_H
#define ZELCONFUTILS_COMPARE_DATA_H

#include <cstddef>
#include <cstdint>
#include <string>

/// What a reader must find in a file that was made; the contenders' own counts are held against it.
struct KeyFileTotals {
  std::uint64_t entries = 0;
  std::uint64_t keyBytes = 0;
  std::uint64_t firstBytes = 0;  ///< the sum of the values' first bytes
  std::uint64_t foundBytes = 0;  ///< the lengths of the values that the probes find
  std::string changeSection;     ///< the entry to change stands in the middle of the file
  std::string changeKey;
};

/// The same data each time: all comes from a seed of its own.
///
/// A file of one section with `lines` lines, a fifth of them comments and a tenth blank, keys
/// unique; and a list of 1,000 of its entries, the one to change before them.
KeyFileTotals MakeFlatFile(const std::string& path, const std::string& probes, std::size_t lines);

constexpr std::size_t kEntriesPerSection = 20;
constexpr std::size_t kLinesPerSection = kEntriesPerSection + 4;  // in our form

/// Sections with a comment before and a blank line after each: once as `section NAME {` for the
/// library, once as an INI file for the others.
KeyFileTotals MakeSectionFiles(const std::string& path, const std::string& iniPath,
                               const std::string& probes, std::size_t sections);

/// What a reader must find in a file of records or of tokens.
struct StreamTotals {
  std::uint64_t count = 0;  ///< fields or tokens
  std::uint64_t bytes = 0;  ///< in all of them together
};

/// Records of 10 fields, some 145 bytes each, until the file has `bytes` bytes; no quotes.
StreamTotals MakeCsvFile(const std::string& path, std::size_t bytes);

/// Words, numbers, punctuation and blanks in lines, until the file has `bytes` bytes. A token is a
/// run of letters, a run of digits, or a single other byte.
StreamTotals MakeTokenFile(const std::string& path, std::size_t bytes);

#endif
