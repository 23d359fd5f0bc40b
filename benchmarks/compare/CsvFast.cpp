// SPDX-License-Identifier: MIT
#define CSV_IO_NO_THREAD  // its thread reads ahead, which costs more CPU time than it saves
#pragma GCC diagnostic ignored "-Wstringop-truncation"  // inlined from its header
#include <libfccp/csv.h>

#include "Stream.h"

bool ReadStream(const char* path, StringSink& sink) {
  io::CSVReader<10> reader(path);
  reader.set_header("0", "1", "2", "3", "4", "5", "6", "7", "8", "9");
  std::string f[10];
  while (reader.read_row(f[0], f[1], f[2], f[3], f[4], f[5], f[6], f[7], f[8], f[9])) {
    for (const std::string& field : f) sink.Take(field);
  }
  return true;
}
