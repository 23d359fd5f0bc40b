// SPDX-License-Identifier: MIT
// Makes the data, runs the contenders alternately, each in a fresh process, and prints the medians
// of their CPU times side by side.
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "Data.h"
#include "Report.h"

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

struct Sizes {
  std::size_t flatLines;
  std::size_t sections;
  std::size_t csvMegabytes;
  std::size_t tokenMegabytes;
  int rounds;               // after one that only warms up
  std::size_t warmedBytes;  // the most that a contender needs, about
  unsigned restMilliseconds;
};
constexpr Sizes kFull = {1000000, 20000, 100, 50, 5, std::size_t{500} << 20, 5000};
constexpr Sizes kQuick = {100000, 2000, 10, 5, 3, std::size_t{50} << 20, 500};

// How often the work is done in one process, and by how many processes.
struct Repetition {
  const char* copies;   // objects alive at once
  const char* repeats;  // times in a row
  int rounds;           // for one of the large data: short runs scatter more
};
constexpr Repetition kOnce = {"1", "1", 1};
constexpr Repetition kDropped = {"4", "100", 4};  // the memory of one serves the next
constexpr Repetition kKept = {"200", "1", 4};     // each needs memory that nothing has used yet
constexpr Repetition kSmallCsv = {"1", "200", 4};

constexpr int kSmallLines = 100;
constexpr std::size_t kSmallCsvBytes = 15000;
constexpr int kFirstUses = 20;  // programs for one figure

// A folder for the data, gone with this object.
class Folder {
 public:
  Folder() : path((fs::temp_directory_path() / "zel_compare_XXXXXX").string()) {
    if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("no temporary folder");
  }
  ~Folder() { fs::remove_all(path); }
  std::string File(const char* name) const { return path + "/" + name; }

 private:
  std::string path;
};

// Fills memory and frees it again, in a process of its own. A virtual machine that gives free
// memory back to its host would otherwise count the host's work of finding it against whoever comes
// next.
void WarmMemory(std::size_t bytes) {
  const pid_t child = fork();
  if (child == 0) {
    void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block != MAP_FAILED) {
      madvise(block, bytes, MADV_HUGEPAGE);
      std::memset(block, 1, bytes);
    }
    _exit(0);
  }
  if (child > 0) waitpid(child, nullptr, 0);
}

struct Finished {
  std::string output;
  Figure whole;  // of the process
};

// libini_config calls itself for each line of a file.
void RaiseStackLimit() {
  rlimit limit = {};
  getrlimit(RLIMIT_STACK, &limit);
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, rlim_t{1} << 30);
  setrlimit(RLIMIT_STACK, &limit);
}

Finished Run(const Arguments& arguments) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  posix_spawn_file_actions_addclose(&actions, ends[1]);
  std::vector<char*> argv;
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t child = 0;
  const int error = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  if (error != 0) {
    close(ends[0]);
    throw std::runtime_error("cannot run " + arguments[0]);
  }
  Finished finished;
  char buffer[4096];
  for (ssize_t got; (got = read(ends[0], buffer, sizeof buffer)) > 0;) {
    finished.output.append(buffer, static_cast<std::size_t>(got));
  }
  close(ends[0]);
  int status = 0;
  rusage usage = {};
  wait4(child, &status, 0, &usage);
  if (status != 0) throw std::runtime_error(arguments[0] + " failed");
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  finished.whole = {seconds(usage.ru_utime) + seconds(usage.ru_stime), usage.ru_maxrss};
  return finished;
}

// All figures of one work item, by contender.
class Item {
 public:
  void Add(const std::string& contender, Figure figure) { runs[contender].push_back(figure); }

  std::optional<Figure> Median(const std::string& contender) const {
    const auto found = runs.find(contender);
    if (found == runs.end()) return std::nullopt;
    std::vector<Figure> sorted = found->second;
    std::sort(sorted.begin(), sorted.end(),
              [](const Figure& a, const Figure& b) { return a.seconds < b.seconds; });
    return sorted[sorted.size() / 2];
  }

  std::string FastestPeer() const {
    std::string fastest;
    for (const auto& [name, figures] : runs) {
      if (name == "ours" || name == "limit") continue;
      if (fastest.empty() || Median(name)->seconds < Median(fastest)->seconds) fastest = name;
    }
    return fastest;
  }

  void PrintAll(const std::string& title) const {
    for (const auto& [name, figures] : runs) {
      std::fprintf(stderr, "%-50s %-14s %12.3f us", title.c_str(), name.c_str(),
                   1e6 * Median(name)->seconds);
      for (const Figure& figure : figures) std::fprintf(stderr, " %.3f", 1e6 * figure.seconds);
      std::fprintf(stderr, "\n");
    }
  }

 private:
  std::map<std::string, std::vector<Figure>> runs;
};

struct Contender {
  const char* name;
  const char* program;
  const char* steps;  // in one process; those after a bar in another
};

struct KeyFileScenario {
  const char* kind;  // "flat" or "sections"
  std::string title;
  std::string file;     // for ours and the limit
  std::string iniFile;  // for the others
  std::string probes;
  KeyFileTotals totals;
  Repetition repetition;
  std::vector<Contender> contenders;
  std::size_t lines = 0;  // where the memory is told for each of them
  bool cold = false;      // after a rest, on memory that nothing has warmed
};

struct StreamScenario {
  std::string title;
  std::string file;
  StreamTotals totals;
  Repetition repetition;
  std::vector<Contender> contenders;
};

// 1000000 as 1,000,000.
std::string Grouped(std::size_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t i = digits.size(); i > 3; i -= 3) digits.insert(i - 3, 1, ',');
  return digits;
}

class Comparison {
 public:
  Comparison(const std::string& programFolder, const Sizes& chosen)
      : programs(programFolder), sizes(chosen) {}

  void KeyFiles(const KeyFileScenario& scenario) {
    items.clear();
    const int rounds = scenario.repetition.rounds * sizes.rounds;
    for (int round = 0; round <= rounds; ++round) {
      for (const Contender& contender : scenario.contenders) {
        if (!Installed(contender)) continue;
        std::istringstream processes(contender.steps);
        for (std::string steps; std::getline(processes, steps, '|');) {
          if (steps == "sed" || steps == "git") {
            RunTool(scenario, contender, steps, round);
          } else if (steps == "first") {
            RunFirstUses(scenario, contender, round);
          } else {
            RunSteps(scenario, contender, steps, round);
          }
        }
      }
    }
    for (const auto& [step, label] : kLabels) {
      // Only the library knows two ways to save.
      const std::string others = step == std::string("save1") ? "save" : step;
      AddRow(step, scenario.title + ": " + label, others);
      if (step == std::string("load") && !rows.empty()) rows.back().lines = scenario.lines;
    }
  }

  void Streams(const StreamScenario& scenario) {
    items.clear();
    const int rounds = scenario.repetition.rounds * sizes.rounds;
    for (int round = 0; round <= rounds; ++round) {
      for (const Contender& contender : scenario.contenders) {
        if (!Installed(contender)) continue;
        Arguments arguments = {programs + "/" + contender.program, scenario.file,
                               scenario.repetition.repeats};
        std::istringstream words(contender.steps);
        for (std::string step; words >> step;) arguments.push_back(step);
        if (scenario.repetition.rounds == 1) WarmMemory(sizes.warmedBytes);
        TakeStream(Run(arguments).output, scenario, contender.name, round);
      }
    }
    AddRow("read", scenario.title, "read");
    AddRow("only", scenario.title + ", not asking the rows for them", "read");
  }

  std::string File(const char* name) const { return folder.File(name); }

  std::vector<Row> rows;
  bool verbose = false;

 private:
  static constexpr std::pair<const char*, const char*> kLabels[] = {
      {"load", "load"},
      {"lookup", "look up 1,000 keys"},
      {"walk", "walk all"},
      {"save", "save unchanged"},
      {"save1", "save in one call"},
      {"edit", "edit + save"},
      {"job", "load + edit + save + release"},
      {"release", "release"},
      {"first", "a program that starts, loads, reads a value and ends"}};

  bool Installed(const Contender& contender) const {
    if (*contender.program == '\0') return true;
    return fs::exists(fs::path(programs) / contender.program);
  }

  void RunSteps(const KeyFileScenario& scenario, const Contender& contender,
                const std::string& steps, int round) {
    const bool peer =
        contender.name != std::string("ours") && contender.name != std::string("limit");
    const std::string& file = peer ? scenario.iniFile : scenario.file;
    const std::string target = folder.File("target");
    fs::copy_file(file, target, fs::copy_options::overwrite_existing);
    Arguments arguments = {programs + "/" + contender.program,
                           scenario.kind,
                           file,
                           target,
                           scenario.probes,
                           scenario.repetition.copies,
                           scenario.repetition.repeats};
    std::istringstream words(steps);
    for (std::string step; words >> step;) arguments.push_back(step);
    PrepareMemory(scenario);
    Take(Run(arguments).output, scenario, contender.name, round);
    if (steps.find("edit") != std::string::npos || steps == "job") {
      CheckChanged(target, contender.name);
    }
  }

  void PrepareMemory(const KeyFileScenario& scenario) const {
    if (scenario.cold) {
      usleep(sizes.restMilliseconds * 1000);
    } else if (scenario.repetition.rounds == 1) {
      WarmMemory(sizes.warmedBytes);  // of small data there is little to warm
    }
  }

  // Linking, loading and the end of the process count.
  void RunFirstUses(const KeyFileScenario& scenario, const Contender& contender, int round) {
    Figure sum;
    for (int i = 0; i < kFirstUses; ++i) {
      const Figure whole = Run({programs + "/" + contender.program, scenario.file,
                                scenario.totals.changeSection, scenario.totals.changeKey})
                               .whole;
      sum.seconds += whole.seconds / kFirstUses;
      sum.peakKib = std::max(sum.peakKib, whole.peakKib);
    }
    if (round != 0) items["first"].Add(contender.name, sum);
  }

  // These change the file in place.
  void RunTool(const KeyFileScenario& scenario, const Contender& contender, const std::string& tool,
               int round) {
    const std::string target = folder.File("target");
    fs::copy_file(scenario.iniFile, target, fs::copy_options::overwrite_existing);
    const std::string& key = scenario.totals.changeKey;
    PrepareMemory(scenario);
    const Finished finished =
        tool == "sed" ? Run({"sed", "-i", "s/^" + key + "=.*/" + key + "=changed-value/", target})
                      : Run({"git", "config", "-f", target,
                             scenario.totals.changeSection + "." + key, "changed-value"});
    CheckChanged(target, contender.name);
    if (round != 0) items["job"].Add(contender.name, finished.whole);
  }

  void Take(const std::string& output, const KeyFileScenario& scenario, const char* contender,
            int round) {
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      std::string item;
      words >> item;
      if (item == "totals") {
        KeyFileTotals found;
        words >> found.entries >> found.keyBytes >> found.firstBytes >> found.foundBytes;
        CheckTotals(found, scenario.totals, contender);
      } else {
        Figure figure;
        words >> figure.seconds >> figure.peakKib;
        if (round != 0) items[item].Add(contender, figure);
      }
    }
  }

  void TakeStream(const std::string& output, const StreamScenario& scenario, const char* contender,
                  int round) {
    std::istringstream words(output);
    std::string item;
    std::string label;
    Figure figure;
    StreamTotals found;
    while (words >> item >> figure.seconds >> figure.peakKib >> label >> found.count >>
           found.bytes) {
      if (found.count != scenario.totals.count ||
          (item == "read" && found.bytes != scenario.totals.bytes)) {
        throw std::runtime_error(std::string(contender) + " read something else");
      }
      if (round != 0) items[item].Add(contender, figure);
    }
  }

  // Zeros: it was not asked to walk or to look up.
  static void CheckTotals(const KeyFileTotals& found, const KeyFileTotals& expected,
                          const std::string& contender) {
    const bool walked = found.entries == 0 ||
                        (found.entries == expected.entries && found.keyBytes == expected.keyBytes &&
                         found.firstBytes == expected.firstBytes);
    const bool lookedUp = found.foundBytes == 0 || found.foundBytes == expected.foundBytes;
    if (!walked || !lookedUp) throw std::runtime_error(contender + " found something else");
  }

  static void CheckChanged(const std::string& path, const std::string& contender) {
    std::ifstream file(path);
    int count = 0;
    for (std::string line; std::getline(file, line);) {
      if (line.find("changed-value") != std::string::npos) ++count;
    }
    if (count != 1) throw std::runtime_error(contender + " did not save the change");
  }

  // `otherStep`: what the others do instead.
  void AddRow(const std::string& step, const std::string& title, const std::string& otherStep) {
    const auto found = items.find(step);
    if (found == items.end()) return;
    if (verbose) found->second.PrintAll(title);
    const auto ours = found->second.Median("ours");
    if (!ours) return;
    const Item& others = items[otherStep];
    const std::string peer = others.FastestPeer();
    rows.push_back({title, *ours, others.Median(peer), peer, others.Median("limit"), 0});
  }

  std::string programs;
  Sizes sizes;
  Folder folder;
  std::map<std::string, Item> items;
};

const std::vector<Contender> kLargeFlat = {
    {"ours", "keyfile_ours", "load lookup walk save save1 edit release|job"},
    {"GKeyFile", "keyfile_glib", "load lookup walk save edit release|job"},
    {"SimpleIni", "keyfile_simpleini", "load lookup walk save edit release|job"},
    {"limit", "keyfile_limit", "load lookup walk save edit|job"},
    {"inih", "keyfile_inih", "load lookup release"},
    {"libini_config", "keyfile_libini_config", "load save edit release|job"},
    {"sed -i", "", "sed"},
};
const std::vector<Contender> kSections = {
    {"ours", "keyfile_ours", "load lookup walk save save1 edit release|job"},
    {"GKeyFile", "keyfile_glib", "load lookup walk save edit release|job"},
    {"SimpleIni", "keyfile_simpleini", "load lookup walk save edit release|job"},
    {"limit", "keyfile_limit", "load lookup walk save edit|job"},
    {"inih", "keyfile_inih", "load lookup release"},
    {"git config", "", "git"},
};
const std::vector<Contender> kColdFlat = {
    {"ours", "keyfile_ours", "job"},
    {"GKeyFile", "keyfile_glib", "job"},
    {"limit", "keyfile_limit", "job"},
    {"sed -i", "", "sed"},
};
// The buffer of a save in one call, which no peer has, is not to be released with the rest.
const std::vector<Contender> kSmallFlat = {
    {"ours", "keyfile_ours", "load lookup walk save edit release|load save1|job"},
    {"GKeyFile", "keyfile_glib", "load lookup walk save edit release|job"},
    {"SimpleIni", "keyfile_simpleini", "load lookup walk save edit release|job"},
    {"limit", "keyfile_limit", "load lookup walk save edit|job"},
    {"inih", "keyfile_inih", "load lookup release"},
    {"iniparser", "keyfile_iniparser", "load lookup walk save edit release|job"},
    {"libini_config", "keyfile_libini_config", "load lookup walk save edit release|job"},
};
const std::vector<Contender> kKeptFlat = {
    {"ours", "keyfile_ours", "load lookup walk save release"},
    {"GKeyFile", "keyfile_glib", "load lookup walk save release"},
    {"SimpleIni", "keyfile_simpleini", "load lookup walk save release"},
    {"limit", "keyfile_limit", "load lookup walk save"},
    {"inih", "keyfile_inih", "load lookup release"},
    {"iniparser", "keyfile_iniparser", "load lookup walk save release"},
};
const std::vector<Contender> kFirstUse = {
    {"ours", "first_ours", "first"},
    {"GKeyFile", "first_glib", "first"},
    {"SimpleIni", "first_simpleini", "first"},
    {"limit", "first_limit", "first"},
    {"inih", "first_inih", "first"},
    {"iniparser", "first_iniparser", "first"},
    {"libini_config", "first_libini_config", "first"},
};

const std::vector<Contender> kCsv = {
    {"ours", "csv_ours", "read only"},
    {"fast-cpp-csv-parser", "csv_fast", "read"},
    {"libcsv", "csv_libcsv", "read"},
    {"limit", "csv_limit", "read"},
};
const std::vector<Contender> kLexers = {
    {"ours", "lexer_ours", "read"},
    {"re2c", "lexer_re2c", "read"},
    {"flex", "lexer_flex", "read"},
    {"limit", "lexer_limit", "read"},
};

void CompareAll(Comparison& comparison, const Sizes& sizes, const std::string& only) {
  const auto wanted = [&only](const char* name) { return only.empty() || only == name; };
  if (wanted("flat")) {
    const std::string file = comparison.File("flat.ini");
    const std::string probes = comparison.File("flat.probes");
    const auto totals = MakeFlatFile(file, probes, sizes.flatLines);
    const std::string title = "flat, " + Grouped(sizes.flatLines) + " lines";
    comparison.KeyFiles(
        {"flat", title, file, file, probes, totals, kOnce, kLargeFlat, sizes.flatLines});
    comparison.KeyFiles(
        {"flat", title + ", after a rest", file, file, probes, totals, kOnce, kColdFlat, 0, true});
    fs::remove(file);
  }
  if (wanted("sections")) {
    const std::string file = comparison.File("sections.conf");
    const std::string ini = comparison.File("sections.ini");
    const std::string probes = comparison.File("sections.probes");
    const auto totals = MakeSectionFiles(file, ini, probes, sizes.sections);
    comparison.KeyFiles({"sections", Grouped(sizes.sections) + " sections", file, ini, probes,
                         totals, kOnce, kSections, sizes.sections * kLinesPerSection});
  }
  if (wanted("small")) {
    const std::string file = comparison.File("small.ini");
    const std::string probes = comparison.File("small.probes");
    const auto totals = MakeFlatFile(file, probes, kSmallLines);
    const std::string title = "flat, 100 lines";
    comparison.KeyFiles(
        {"flat", title + ", dropped", file, file, probes, totals, kDropped, kSmallFlat});
    comparison.KeyFiles({"flat", title + ", kept", file, file, probes, totals, kKept, kKeptFlat});
    comparison.KeyFiles({"flat", title, file, file, probes, totals, kOnce, kFirstUse});
  }
  if (wanted("csv")) {
    const std::string file = comparison.File("table.csv");
    const std::string megabytes = std::to_string(sizes.csvMegabytes);
    auto totals = MakeCsvFile(file, sizes.csvMegabytes * 1000000);
    comparison.Streams({"CSV, " + megabytes + " MB, all fields", file, totals, kOnce, kCsv});
    totals = MakeCsvFile(file, kSmallCsvBytes);
    comparison.Streams({"CSV, 15 kB, all fields", file, totals, kSmallCsv, kCsv});
    fs::remove(file);
  }
  if (wanted("lexer")) {
    const std::string file = comparison.File("tokens.txt");
    const std::string megabytes = std::to_string(sizes.tokenMegabytes);
    const auto totals = MakeTokenFile(file, sizes.tokenMegabytes * 1000000);
    comparison.Streams({"lexer, " + megabytes + " MB, all tokens", file, totals, kOnce, kLexers});
  }
}

}  // namespace

// compare [--quick] [--verbose] [--only flat|sections|small|csv|lexer] [--svg FILE]
int main(int argc, char** argv) try {
  bool quick = false;
  bool verbose = false;
  std::string only;
  std::string svg;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--quick")
      quick = true;
    else if (argument == "--verbose")
      verbose = true;
    else if (argument == "--only" && i + 1 < argc)
      only = argv[++i];
    else if (argument == "--svg" && i + 1 < argc)
      svg = argv[++i];
    else
      throw std::runtime_error("unknown option " + argument);
  }
  // Messages and character classes of sed, git and the libraries: the plain ones are the fastest.
  setenv("LC_ALL", "C", 1);
  RaiseStackLimit();
  const Sizes& sizes = quick ? kQuick : kFull;
  Comparison comparison{fs::path(argv[0]).parent_path().string(), sizes};
  comparison.verbose = verbose;
  CompareAll(comparison, sizes, only);
  WriteTable(stdout, comparison.rows);
  if (!svg.empty()) {
    std::FILE* stream = std::fopen(svg.c_str(), "w");
    if (stream == nullptr) throw std::runtime_error("cannot write " + svg);
    WriteSvg(stream, comparison.rows);
    std::fclose(stream);
  }
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "compare: %s\n", error.what());
  return 1;
}
