// SPDX-License-Identifier: MIT
#include "csv/RowMemory.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace zelconfutils::RowMemory {

void AddField(Fields& fields, const char* rest, char delimiter) {
  if (fields.size() == fields.capacity() && fields.size() >= kKeptFields) {
    const auto more = std::count(rest, rest + std::strlen(rest), delimiter);
    fields.reserve(fields.size() + 1 + static_cast<std::size_t>(more));
  }
  fields.emplace_back();
}

void GiveBack(Fields& fields) {
  if (fields.size() >= fields.capacity() / 4) return;
  Fields fitting;  // not shrink_to_fit, which hides where memory ran out
  fitting.reserve(fields.size());
  std::move(fields.begin(), fields.end(), std::back_inserter(fitting));
  fields.swap(fitting);
}

void Clear(Fields& fields) noexcept {
  fields.clear();
  if (fields.capacity() > kKeptFields) Fields().swap(fields);
}

}  // namespace zelconfutils::RowMemory
