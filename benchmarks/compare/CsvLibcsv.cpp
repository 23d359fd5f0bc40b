// SPDX-License-Identifier: MIT
#include <csv.h>

#include "Files.h"
#include "Stream.h"

namespace {

std::string field;

void TakeField(void* bytes, std::size_t length, void* sink) {
  field.assign(static_cast<const char*>(bytes), length);
  static_cast<StringSink*>(sink)->Take(field);
}

void EndRecord(int, void*) {}

}  // namespace

bool ReadStream(const char* path, StringSink& sink) {
  csv_parser parser;
  csv_init(&parser, 0);
  const bool read = ReadBlocks(path, [&](const char* bytes, std::size_t size) {
    csv_parse(&parser, bytes, size, TakeField, EndRecord, &sink);
  });
  csv_fini(&parser, TakeField, EndRecord, &sink);
  csv_free(&parser);
  return read;
}
