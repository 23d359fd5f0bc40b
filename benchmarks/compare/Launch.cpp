// SPDX-License-Identifier: MIT
// TIMES NAME PROGRAM ARGUMENT...: runs a program in fresh processes, one after the other, and
// prints NAME with two figures of a process as a whole, from linking to its end: the mean CPU time,
// and the most memory resident.
//
// A new process starts with the peak of the one that makes it: this one is linked statically, with
// less memory resident than any contender.
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const int times = std::atoi(argv[1]);
  long microseconds = 0;
  long peakKib = 0;
  for (int i = 0; i < times; ++i) {
    pid_t child = 0;
    int status = 0;
    rusage used = {};
    if (posix_spawnp(&child, argv[3], nullptr, nullptr, argv + 3, environ) != 0 ||
        wait4(child, &status, 0, &used) != child || status != 0) {
      std::fprintf(stderr, "%s failed\n", argv[3]);
      return 1;
    }
    microseconds += (used.ru_utime.tv_sec + used.ru_stime.tv_sec) * 1000000;
    microseconds += used.ru_utime.tv_usec + used.ru_stime.tv_usec;
    peakKib = std::max(peakKib, used.ru_maxrss);
  }
  std::printf("%s %.9f %ld\n", argv[2], 1e-6 * static_cast<double>(microseconds) / times, peakKib);
}
