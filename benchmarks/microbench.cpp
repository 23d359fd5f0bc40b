// SPDX-License-Identifier: MIT
// What the comparison cannot show: the cost of a single edit in an open file, and how it grows; and
// the price of a save that survives a power cut. The files lie in the current folder.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include "../examples/safe_save.h"
#include "ConfigFile.h"
#include "MultiSectionFile.h"

namespace {

using benchmark::State;
using Configuration::ConfigFile;
using Sections = Configuration::MultiSectionConfigFile;

const std::string kFile = "microbench.conf";

template <class File>
std::unique_ptr<File> Open(long entries);

template <>
std::unique_ptr<ConfigFile> Open(long entries) {
  std::ofstream file(kFile, std::ios::binary);
  for (long i = 0; i < entries; ++i) file << "key_" << i << " = value " << i << '\n';
  file.close();
  return std::make_unique<ConfigFile>(kFile.c_str(), false, true, false, "=", "#", nullptr);
}

template <>
std::unique_ptr<Sections> Open(long entries) {
  std::ofstream file(kFile, std::ios::binary);
  for (long i = 0; i < entries; ++i) {
    if (i % 20 == 0) file << "# what follows\nsection section_" << i << " {\n";
    file << "key_" << i % 20 << " = " << i << (i % 20 == 19 ? "\n}\n" : "\n");
  }
  file.close();
  return std::make_unique<Sections>(kFile.c_str(), false, true, true, false);
}

// What is constant takes the same time in both sizes, what is linear ten times as long. `edit`
// returns false where nothing is left to edit: the file is opened anew, outside the time.
template <class File>
void Edits(State& state, bool (*edit)(File& file)) {
  auto file = Open<File>(state.range(0));
  for (auto _ : state) {
    if (edit(*file)) continue;
    state.PauseTiming();
    file = Open<File>(state.range(0));
    state.ResumeTiming();
  }
  std::remove(kFile.c_str());
}
#define EDITS(edit) BENCHMARK_CAPTURE(Edits, edit, edit)->Arg(10000)->Arg(100000)

// Two values in turn, both within the room that a line has to grow.
const char* NextValue() {
  static bool first = false;
  first = !first;
  return first ? "aaaaaaaaaaaaaaaaaaaa" : "bbbbbbbbbbbbbbbbbbbbbbbbbbbbbb";
}

bool SetWithinRoom(ConfigFile& file) {
  return file.GotoLastEntry() && file.SetCurrentEntry(NextValue()) != 0;
}
EDITS(SetWithinRoom);

// Each time another entry, whose text has not moved before.
bool SetThatMovesTheText(ConfigFile& file) {
  static const std::string value(60, 'v');
  return file.GotoNextEntry() && file.SetCurrentEntry(value.c_str()) != 0;
}
EDITS(SetThatMovesTheText);

bool AddAndDelete(ConfigFile& file) {
  return file.AddEntry("added", "value", false) && file.GotoLastEntry() &&
         file.DeleteCurrentEntry();
}
EDITS(AddAndDelete);

bool SetInSection(Sections& file) { return file.SetSectionEntry("key_19", NextValue()) != 0; }
EDITS(SetInSection);

bool AddAndDeleteSection(Sections& file) {
  return file.AddSection("section_added", false) && file.DeleteSection() != 0;
}
EDITS(AddAndDeleteSection);

// A section with its 20 entries, one after the other.
bool DeleteLoadedSection(Sections& file) { return file.DeleteSection() != 0; }
EDITS(DeleteLoadedSection);

void Saves(State& state, void (*save)(ConfigFile& file)) {
  const auto file = Open<ConfigFile>(state.range(0));
  for (auto _ : state) save(*file);
  std::remove(kFile.c_str());
}
// About 4 KiB, 64 KiB and 1 MiB. The time on the wall: most of it is waiting for the disk.
#define SAVES(save) \
  BENCHMARK_CAPTURE(Saves, save, save)->Arg(200)->Arg(3000)->Arg(45000)->UseRealTime()

void Save(ConfigFile& file) { file.Save(false, nullptr); }
SAVES(Save);

void SaveSafely(ConfigFile& file) { SafeSave(kFile, ImageOf(file)); }
SAVES(SaveSafely);

// What a safe save cannot do without.
void SaveFlushRenameFlush(ConfigFile& file) {
  const std::string sibling = kFile + ".new";
  const auto flush = [](const char* path) {
    const int descriptor = ::open(path, O_RDONLY);
    ::fsync(descriptor);
    ::close(descriptor);
  };
  file.Save(false, sibling.c_str());
  flush(sibling.c_str());
  std::rename(sibling.c_str(), kFile.c_str());
  flush(".");
}
SAVES(SaveFlushRenameFlush);

}  // namespace

BENCHMARK_MAIN();
