// SPDX-License-Identifier: MIT
// The price of a save: the plain one in both modes, the crash-safe one of the examples, and beside
// each the system calls that it cannot do without. Files lie in the current folder.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "../examples/safe_save.h"
#include "ConfigFile.h"

namespace {

constexpr const char* kFile = "save_bench.conf";
constexpr const char* kSibling = "save_bench.conf.new";

std::string Content(size_t bytes) {
  std::string text;
  for (int n = 0; text.size() < bytes; ++n) text += "entry" + std::to_string(n) + " = some value\n";
  return text;
}

void WriteTo(const char* path, const std::string& text, bool flush) {
  const int file = ::open(path, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(file, text.data() + done, text.size() - done);
    if (n <= 0) std::abort();
    done += static_cast<size_t>(n);
  }
  if (flush && ::fsync(file) != 0) std::abort();
  ::close(file);
}

// Runs `save` on a file of so many bytes that has just been loaded.
template <class Save>
void Run(benchmark::State& state, Save save) {
  const std::string text = Content(static_cast<size_t>(state.range(0)));
  WriteTo(kFile, text, false);
  Configuration::ConfigFile file(kFile, false, false, false, "=", "#", nullptr);
  for (auto _ : state) save(file, text);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  std::remove(kFile);
  std::remove(kSibling);
}

void WriteAlone(benchmark::State& state) {
  Run(state, [](auto&, const std::string& text) { WriteTo(kFile, text, false); });
}
void SaveByLines(benchmark::State& state) {
  Run(state, [](auto& file, const std::string&) { file.Save(false, nullptr); });
}
void SaveCoalesced(benchmark::State& state) {
  Run(state, [](auto& file, const std::string&) { file.Save(true, nullptr); });
}
void WriteFlushRenameFlush(benchmark::State& state) {
  Run(state, [](auto&, const std::string& text) {
    WriteTo(kSibling, text, true);
    std::rename(kSibling, kFile);
    const int folder = ::open(".", O_RDONLY | O_DIRECTORY);
    ::fsync(folder);
    ::close(folder);
  });
}
void SaveSafely(benchmark::State& state) {
  Run(state, [](auto& file, const std::string&) { SafeSave(kFile, ImageOf(file)); });
}

#define SIZES \
  ->Arg(4 << 10)->Arg(64 << 10)->Arg(1 << 20)->UseRealTime()->Unit(benchmark::kMicrosecond)
BENCHMARK(WriteAlone) SIZES;
BENCHMARK(SaveByLines) SIZES;
BENCHMARK(SaveCoalesced) SIZES;
BENCHMARK(WriteFlushRenameFlush) SIZES;
BENCHMARK(SaveSafely) SIZES;

}  // namespace

BENCHMARK_MAIN();
