// SPDX-License-Identifier: MIT
#include <csv.h>

#include "Files.h"
#include "Stream.h"

namespace {

struct Reading {
  StringSink& sink;
  std::string field;
};

void TakeField(void* bytes, std::size_t length, void* data) {
  Reading& reading = *static_cast<Reading*>(data);
  reading.field.assign(static_cast<const char*>(bytes), length);
  reading.sink.Take(reading.field);
}

void EndRecord(int, void*) {}

}  // namespace

bool ReadStream(const char* path, StringSink& sink) {
  Reading reading{sink, {}};
  csv_parser parser;
  csv_init(&parser, 0);
  const bool read = ReadBlocks(path, [&](const char* bytes, std::size_t size) {
    csv_parse(&parser, bytes, size, TakeField, EndRecord, &reading);
  });
  csv_fini(&parser, TakeField, EndRecord, &reading);
  csv_free(&parser);
  return read;
}
