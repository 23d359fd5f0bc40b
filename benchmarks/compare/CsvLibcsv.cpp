// SPDX-License-Identifier: MIT
#include <csv.h>

#include <cstdio>
#include <memory>

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
  constexpr std::size_t kBlockBytes = std::size_t{64} * 1024;
  std::FILE* stream = std::fopen(path, "rb");
  if (stream == nullptr) return false;
  Reading reading{sink, {}};
  csv_parser parser;
  csv_init(&parser, 0);
  const std::unique_ptr<char[]> block(new char[kBlockBytes]);
  while (const std::size_t got = std::fread(block.get(), 1, kBlockBytes, stream)) {
    if (csv_parse(&parser, block.get(), got, TakeField, EndRecord, &reading) != got) return false;
  }
  csv_fini(&parser, TakeField, EndRecord, &reading);
  csv_free(&parser);
  std::fclose(stream);
  return true;
}

bool ReadOnly(const char*, std::uint64_t&) { return false; }
