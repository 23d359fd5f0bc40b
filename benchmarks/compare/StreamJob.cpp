// SPDX-License-Identifier: MIT
// The program around one reader of records or tokens: FILE REPEATS read|only...
// Prints of each step the CPU time of one, the peak so far, and how many strings and bytes it
// found.
#include "Stream.h"

#include <cstdio>
#include <cstdlib>

#include "CpuClock.h"

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const unsigned long repeats = std::strtoul(argv[2], nullptr, 10);
  for (int i = 3; i < argc; ++i) {
    StringSink sink;
    const auto readOnce = [&, countOnly = argv[i] == std::string("only")] {
      sink = {0, 0, countOnly};
      if (!ReadStream(argv[1], sink)) std::exit(1);
    };
    if (repeats > 1) readOnce();  // so small is the work that its first turn only warms up
    const double start = CpuSeconds();
    for (unsigned long turn = 0; turn < repeats; ++turn) readOnce();
    const double seconds = (CpuSeconds() - start) / static_cast<double>(repeats);
    std::printf("%s %.9f %ld %ju %ju\n", argv[i], seconds, PeakKib(), sink.count, sink.bytes);
  }
}
