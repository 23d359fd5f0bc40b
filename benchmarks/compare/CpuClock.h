// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_COMPARE_CPU_CLOCK_H
#define ZELCONFUTILS_COMPARE_CPU_CLOCK_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

/// The CPU time that this process has used, user and system, in seconds.
inline double CpuSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// The most memory that this process has had resident, in KiB. `getrusage` counts less exactly.
inline long PeakKib() {
  long kib = 0;
  std::FILE* status = std::fopen("/proc/self/status", "r");
  for (char line[256]; kib == 0 && std::fgets(line, sizeof line, status) != nullptr;) {
    if (std::strncmp(line, "VmHWM:", 6) == 0) kib = std::strtol(line + 6, nullptr, 10);
  }
  std::fclose(status);
  return kib;
}

#endif
