// SPDX-License-Identifier: MIT
// The program around one contender: flat|sections FILE TARGET PROBES COPIES REPEATS STEP...
// Prints of each step the CPU time for one copy, the peak after its first turn, and what a walk or
// the look-ups found. A fresh process for each run: no contender inherits another's heap.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "CpuClock.h"
#include "KeyFile.h"

namespace {

struct Probe {
  std::string section, key;
};

class Job {
 public:
  explicit Job(char** arguments)
      : sections(std::strcmp(arguments[0], "sections") == 0),
        file(arguments[1]),
        target(arguments[2]) {
    // The first line names the entry to change, the others those to look up.
    std::ifstream lines(arguments[3]);
    for (Probe probe; lines >> probe.section >> probe.key;) probes.push_back(probe);
    // Where objects are many and small, the first use of all code is not what is measured.
    if (std::strtoul(arguments[4], nullptr, 10) > 1) MakeKeyFile(sections)->Load(file);
  }

  void Make(std::size_t copies) {
    objects.clear();
    for (std::size_t i = 0; i < copies; ++i) objects.push_back(MakeKeyFile(sections));
  }

  // The CPU time of one step, for one copy.
  double Do(const std::string& step) {
    const double start = CpuSeconds();
    for (auto& object : objects) {
      if (DoOne(step, object)) continue;
      std::fprintf(stderr, "failed: %s\n", step.c_str());
      std::exit(1);
    }
    const double used = CpuSeconds() - start - clockSeconds;
    return std::max(0.0, used) / static_cast<double>(objects.size());
  }

  void PrintFound(const std::string& step) const {
    if (step == "walk") {
      std::printf(" %ju %ju %ju", totals.entries, totals.keyBytes, totals.firstBytes);
    }
    if (step == "lookup") std::printf(" %ju", foundBytes);
  }

 private:
  bool DoOne(const std::string& step, std::unique_ptr<KeyFile>& object) {
    if (step == "load") return object->Load(file);
    if (step == "lookup") return LookUp(*object);
    if (step == "walk") return (totals = object->Walk()).entries != 0;
    if (step == "save") return object->Save(target, false);
    if (step == "save1") return object->Save(target, true);
    if (step == "edit") return Change(*object) && object->Save(target, false);
    if (step == "release") return object.reset(), true;
    if (step != "job") return false;
    const bool done = object->Load(file) && Change(*object) && object->Save(target, false);
    object.reset();
    return done;
  }

  bool LookUp(KeyFile& object) {
    foundBytes = 0;
    char value[kTextBytes];
    for (std::size_t i = 1; i < probes.size(); ++i) {
      foundBytes += object.LookUp(probes[i].section.c_str(), probes[i].key.c_str(), value);
    }
    return foundBytes != 0;
  }

  bool Change(KeyFile& object) const {
    return object.Change(probes[0].section.c_str(), probes[0].key.c_str(), "changed-value");
  }

  // What it takes to ask for the time, beside which a walk of a small file is short.
  static double ClockSeconds() {
    constexpr int kTimes = 100;
    const double start = CpuSeconds();
    for (int i = 1; i < kTimes; ++i) CpuSeconds();
    return (CpuSeconds() - start) / kTimes;
  }

  const double clockSeconds = ClockSeconds();
  bool sections;
  const char* file;
  const char* target;
  std::vector<Probe> probes;
  std::vector<std::unique_ptr<KeyFile>> objects;
  WalkTotals totals;
  std::uint64_t foundBytes = 0;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 8) return 2;
  Job job(argv + 1);
  const unsigned long copies = std::strtoul(argv[5], nullptr, 10);
  const unsigned long repeats = std::strtoul(argv[6], nullptr, 10);
  const std::vector<std::string> steps(argv + 7, argv + argc);
  std::vector<double> seconds(steps.size());
  std::vector<long> peaks(steps.size());
  // Where the work is so small that it is repeated, the first turn only warms up.
  const unsigned long turns = repeats > 1 ? repeats + 1 : 1;
  for (unsigned long turn = 0; turn < turns; ++turn) {
    job.Make(copies);
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const double used = job.Do(steps[i]);
      if (turn != 0 || turns == 1) seconds[i] += used / static_cast<double>(repeats);
      if (turn == 0) peaks[i] = PeakKib();
    }
  }
  for (std::size_t i = 0; i < steps.size(); ++i) {
    std::printf("%s %.9f %ld", steps[i].c_str(), seconds[i], peaks[i]);
    job.PrintFound(steps[i]);
    std::printf("\n");
  }
}
