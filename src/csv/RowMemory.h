// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_CSV_ROW_MEMORY_H
#define ZELCONFUTILS_CSV_ROW_MEMORY_H

#include <cstddef>
#include <string>
#include <vector>

/// How much memory a row may hold: that of its record, not of the largest one that ever stood in
/// it. What usual rows need is kept from record to record, so that they allocate nothing.
namespace zelconfutils::RowMemory {

using Fields = std::vector<std::string>;

inline constexpr std::size_t kKeptFields = 8192;     // room that a row keeps, 256 KiB
inline constexpr std::size_t kKeptTextBytes = 1024;  // room that each of its fields keeps

/// Adds an empty field. A row that is wide already gets room for all that the rest of the record
/// holds: growing by doubling takes three times the room. `rest`, terminated, starts with the byte
/// that ends the new field. Throws `std::bad_alloc`.
void AddField(Fields& fields, const char* rest, char delimiter);

/// Gives back what wide records have left, if it is far more than the fields need now. Throws
/// `std::bad_alloc`, and then nothing has changed.
void GiveBack(Fields& fields);

/// Removes all fields, and gives back likewise.
void Clear(Fields& fields) noexcept;

/// Removes the fields from the one at `count` on, and gives back likewise.
inline void Truncate(Fields& fields, std::size_t count) {
  fields.resize(count);
  if (fields.capacity() > kKeptFields) GiveBack(fields);
}

}  // namespace zelconfutils::RowMemory

#endif
