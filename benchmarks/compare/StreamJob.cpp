// SPDX-License-Identifier: MIT
// The program around one reader of records or tokens: FILE REPEATS read|only...
#include <cstdlib>

#include "CpuClock.h"
#include "Stream.h"

namespace {

StreamTotals totals;

bool ReadOnce(const char* path, const char* step) {
  totals = {};
  if (std::strcmp(step, "only") == 0) return ReadOnly(path, totals.count);
  StringSink sink;
  const bool read = ReadStream(path, sink);
  totals = sink.totals;
  return read;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const unsigned long repeats = std::strtoul(argv[2], nullptr, 10);
  for (int i = 3; i < argc; ++i) {
    // Where the work is so small that it is repeated, the first turn only warms up.
    if (repeats > 1 && !ReadOnce(argv[1], argv[i])) return 1;
    const double start = CpuSeconds();
    for (unsigned long turn = 0; turn < repeats; ++turn) {
      if (!ReadOnce(argv[1], argv[i])) return 1;
    }
    Report(argv[i], (CpuSeconds() - start) / static_cast<double>(repeats));
    std::printf("totals %llu %llu\n", static_cast<unsigned long long>(totals.count),
                static_cast<unsigned long long>(totals.bytes));
  }
  return 0;
}
