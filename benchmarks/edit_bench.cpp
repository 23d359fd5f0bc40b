// SPDX-License-Identifier: MIT
// What the comparison cannot show: the cost of single edits and look-ups in an open file, and how
// it grows with the file. Each row ends in the number of lines, or of sections with 20 entries
// each: what is constant takes the same time in both sizes, what is linear ten times as long.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "ConfigFile.h"
#include "MultiSectionFile.h"

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;
using Configuration::ConfigFile;
using Configuration::MultiSectionConfigFile;

constexpr long kEntries = 20;
const std::string kValues[] = {std::string(20, 'a'),
                               std::string(30, 'b')};  // both within the slack

std::string Name(const char* kind, long i) {
  char name[32];
  std::snprintf(name, sizeof name, "%s_%07ld", kind, i);
  return name;
}

// A file that is gone with this object; the objects under test read it on construction.
class TextFile {
 public:
  explicit TextFile(const std::string& text)
      : path_((std::filesystem::temp_directory_path() / "zelconfutils_edit_bench").string()) {
    std::ofstream(path_, std::ios::binary) << text;
  }
  ~TextFile() { std::filesystem::remove(path_); }
  const char* Path() const { return path_.c_str(); }

 private:
  std::string path_;
};

std::unique_ptr<ConfigFile> OpenFlat(long lines) {
  std::string text;
  for (long i = 0; i < lines; ++i) text += Name("key", i) + " = value " + std::to_string(i) + "\n";
  const TextFile file(text);
  return std::make_unique<ConfigFile>(file.Path(), false, true, false, "=", "#", nullptr);
}

std::unique_ptr<MultiSectionConfigFile> OpenSections(long sections) {
  std::string text;
  for (long i = 0; i < sections; ++i) {
    text += "# what follows\nsection " + Name("section", i) + " {\n";
    for (long k = 0; k < kEntries; ++k) text += Name("key", k) + " = " + std::to_string(i) + "\n";
    text += "}\n";
  }
  const TextFile file(text);
  return std::make_unique<MultiSectionConfigFile>(file.Path(), false, true, true, false);
}

// The last key: the longest way.
void LookUpLast(State& state) {
  const auto file = OpenFlat(state.range(0));
  const std::string key = Name("key", state.range(0) - 1);
  char value[64];
  for (auto _ : state) DoNotOptimize(file->GetEntry(key.c_str(), value, sizeof value));
}

void SetWithinSlack(State& state) {
  const auto file = OpenFlat(state.range(0));
  std::size_t i = 0;
  file->GotoLastEntry();
  for (auto _ : state) file->SetCurrentEntry(kValues[++i % 2].c_str());
}

// Each time another entry, whose text has not moved before.
void SetThatMovesTheText(State& state) {
  const std::string value(60, 'v');
  auto file = OpenFlat(state.range(0));
  for (auto _ : state) {
    if (!file->GotoNextEntry()) {
      state.PauseTiming();
      file = OpenFlat(state.range(0));
      state.ResumeTiming();
    }
    file->SetCurrentEntry(value.c_str());
  }
}

void AddAndDelete(State& state) {
  const auto file = OpenFlat(state.range(0));
  for (auto _ : state) {
    file->AddEntry("added", "value", false);
    file->GotoLastEntry();
    DoNotOptimize(file->DeleteCurrentEntry());
  }
}

void GotoLastSection(State& state) {
  const auto file = OpenSections(state.range(0));
  const std::string name = Name("section", state.range(0) - 1);
  for (auto _ : state) DoNotOptimize(file->GotoSection(name.c_str()));
}

// The last key of a section in the middle of the file.
void SetInSection(State& state) {
  const auto file = OpenSections(state.range(0));
  const std::string key = Name("key", kEntries - 1);
  file->GotoSection(Name("section", state.range(0) / 2).c_str());
  std::size_t i = 0;
  for (auto _ : state) file->SetSectionEntry(key.c_str(), kValues[++i % 2].c_str());
}

void AddAndDeleteSection(State& state) {
  const auto file = OpenSections(state.range(0));
  for (auto _ : state) {
    file->AddSection("section_added", false);
    DoNotOptimize(file->DeleteSection());
  }
}

// A section with its 20 entries, one after the other.
void DeleteLoadedSection(State& state) {
  auto file = OpenSections(state.range(0));
  for (auto _ : state) {
    if (file->DeleteSection() == 0) {
      state.PauseTiming();
      file = OpenSections(state.range(0));
      state.ResumeTiming();
    }
  }
}

void Lines(benchmark::internal::Benchmark* row) { row->Arg(10000)->Arg(100000); }
void Sections(benchmark::internal::Benchmark* row) { row->Arg(1000)->Arg(10000); }

BENCHMARK(LookUpLast)->Apply(Lines);
BENCHMARK(SetWithinSlack)->Apply(Lines);
BENCHMARK(SetThatMovesTheText)->Apply(Lines);
BENCHMARK(AddAndDelete)->Apply(Lines);
BENCHMARK(GotoLastSection)->Apply(Sections);
BENCHMARK(SetInSection)->Apply(Sections);
BENCHMARK(AddAndDeleteSection)->Apply(Sections);
BENCHMARK(DeleteLoadedSection)->Apply(Sections);

}  // namespace

BENCHMARK_MAIN();
