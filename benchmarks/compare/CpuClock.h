// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_COMPARE_CPU_CLOCK_H
#define ZELCONFUTILS_COMPARE_CPU_CLOCK_H

#include <ctime>

#include <cstdio>
#include <cstring>

/// The CPU time that this process has used, user and system, in seconds.
inline double CpuSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// The most memory that this process has had resident, in KiB. `getrusage` would tell that of the
/// program that started it, if that had more.
inline long PeakKib() {
  long kib = 0;
  if (std::FILE* status = std::fopen("/proc/self/status", "r")) {
    char line[256];
    while (std::fgets(line, sizeof line, status) != nullptr) {
      if (std::sscanf(line, "VmHWM: %ld", &kib) == 1) break;
    }
    std::fclose(status);
  }
  return kib;
}

/// Prints a result for the program that compares: its name, seconds, and the peak so far.
inline void Report(const char* item, double seconds) {
  std::printf("%s %.9f %ld\n", item, seconds, PeakKib());
}

#endif
