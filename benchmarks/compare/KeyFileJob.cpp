// SPDX-License-Identifier: MIT
// The program around one contender: does the steps that it is told to and prints the CPU time of
// each. A fresh process for each run: no contender inherits another's heap.
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "CpuClock.h"
#include "KeyFile.h"

namespace {

struct Probe {
  std::string section;
  std::string key;
};

// The first line names the entry to change, the others those to look up.
std::vector<Probe> ReadProbes(const char* path) {
  std::vector<Probe> probes;
  std::ifstream file(path);
  Probe probe;
  while (file >> probe.section >> probe.key) probes.push_back(probe);
  return probes;
}

[[noreturn]] void Fail(const std::string& step) {
  std::fprintf(stderr, "failed: %s\n", step.c_str());
  std::exit(1);
}

class Job {
 public:
  Job(char** arguments)
      : sections(std::strcmp(arguments[0], "sections") == 0),
        file(arguments[1]),
        target(arguments[2]),
        probes(ReadProbes(arguments[3])),
        copies(std::strtoul(arguments[4], nullptr, 10)) {}

  void Make() {
    objects.clear();
    for (std::size_t i = 0; i < copies; ++i) objects.push_back(MakeKeyFile(sections));
  }

  // Where objects are many and small, the first use of all code is not what is measured.
  void WarmUp() {
    if (copies == 1) return;
    MakeKeyFile(sections)->Load(file);
  }

  // The CPU time of one step, for one copy.
  double Do(const std::string& step) {
    const double start = CpuSeconds();
    for (auto& object : objects) {
      if (!DoOne(step, object)) Fail(step);
    }
    return std::max(0.0, CpuSeconds() - start - clockSeconds) / static_cast<double>(copies);
  }

  void PrintTotals() const {
    std::printf("totals %llu %llu %llu %llu\n", static_cast<unsigned long long>(totals.entries),
                static_cast<unsigned long long>(totals.keyBytes),
                static_cast<unsigned long long>(totals.firstBytes),
                static_cast<unsigned long long>(foundBytes));
  }

 private:
  bool DoOne(const std::string& step, std::unique_ptr<KeyFile>& object) {
    if (step == "load") return object->Load(file);
    if (step == "lookup") return LookUp(*object);
    if (step == "walk") return (totals = object->Walk()).entries != 0;
    if (step == "save") return object->Save(target);
    if (step == "save1") return object->SaveInOneCall(target);
    if (step == "edit") return Change(*object) && object->Save(target);
    if (step == "release") return object.reset(), true;
    if (step == "job") {
      const bool done = object->Load(file) && Change(*object) && object->Save(target);
      object.reset();
      return done;
    }
    return false;
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
  std::size_t copies;
  std::vector<std::unique_ptr<KeyFile>> objects;
  WalkTotals totals;
  std::uint64_t foundBytes = 0;
};

}  // namespace

// flat|sections FILE TARGET PROBES COPIES REPEATS STEP...
int main(int argc, char** argv) {
  if (argc < 8) return 2;
  Job job(argv + 1);
  job.WarmUp();
  const unsigned long repeats = std::strtoul(argv[6], nullptr, 10);
  std::vector<double> seconds(static_cast<std::size_t>(argc - 7));
  std::vector<long> peaks(seconds.size());
  // Where the work is so small that it is repeated, the first turn only warms up.
  const unsigned long turns = repeats > 1 ? repeats + 1 : 1;
  for (unsigned long turn = 0; turn < turns; ++turn) {
    job.Make();
    for (std::size_t i = 0; i < seconds.size(); ++i) {
      const double used = job.Do(argv[i + 7]);
      if (turn != 0 || turns == 1) seconds[i] += used / static_cast<double>(repeats);
      if (turn == 0) peaks[i] = PeakKib();
    }
  }
  for (std::size_t i = 0; i < seconds.size(); ++i) {
    std::printf("%s %.9f %ld\n", argv[i + 7], seconds[i], peaks[i]);
  }
  job.PrintTotals();
  return 0;
}
