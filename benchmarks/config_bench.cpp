// SPDX-License-Identifier: MIT
// The flat file beside its limits: each operation is followed by the least that its work can cost,
// done on the same bytes in the same run. Rows end in the number of lines of the file, 30 per cent
// of which are comments and blanks.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ConfigFile.h"

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;
using Configuration::ConfigFile;

struct Record {  // an entry of a plain array: the least that a scan has to look at
  const char* key;
  std::size_t keyLength;
  const char* value;
  std::size_t valueLength;
};

struct Fixture {
  ~Fixture() { std::filesystem::remove(path); }
  std::string path, image, first, last, absent = "setting_absent0";
  std::vector<Record> records;
};

std::string Key(long i) {
  char key[32];
  std::snprintf(key, sizeof key, "setting_%07ld", i);
  return key;
}

const Fixture& For(long lines) {
  static std::map<long, Fixture> all;
  Fixture& fixture = all[lines];
  if (!fixture.image.empty()) return fixture;
  for (long i = 0; i < lines; ++i) {
    if (i % 10 == 0) {
      fixture.image += "# what the next settings are good for\n";
    } else if (i % 10 == 4 || i % 10 == 7) {
      fixture.image += "\n";
    } else {
      fixture.last = Key(i);
      if (fixture.first.empty()) fixture.first = fixture.last;
      fixture.image += fixture.last + " = value " + std::to_string(i) + "\n";
    }
  }
  const std::string name = "zelconfutils_config_bench_" + std::to_string(lines);
  fixture.path = (std::filesystem::temp_directory_path() / name).string();
  std::FILE* file = std::fopen(fixture.path.c_str(), "wb");
  std::fwrite(fixture.image.data(), 1, fixture.image.size(), file);
  std::fclose(file);
  for (std::size_t at = 0, end; at < fixture.image.size(); at = end + 1) {
    end = fixture.image.find('\n', at);
    const std::size_t equals = fixture.image.substr(at, end - at).find('=');
    if (equals == std::string::npos) continue;
    const char* line = fixture.image.data() + at;
    fixture.records.push_back({line, equals - 1, line + equals + 1, end - at - equals - 1});
  }
  return fixture;
}

std::unique_ptr<ConfigFile> Open(const Fixture& fixture) {
  return std::make_unique<ConfigFile>(fixture.path.c_str(), false, true, false, "=", "#", nullptr);
}

void CountBytes(State& state, const Fixture& fixture) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fixture.image.size()));
}

void Load(State& state) {
  const Fixture& fixture = For(state.range(0));
  for (auto _ : state) {
    std::unique_ptr<ConfigFile> file = Open(fixture);
    state.PauseTiming();
    file.reset();
    state.ResumeTiming();
  }
  CountBytes(state, fixture);
}

void LoadAndRelease(State& state) {
  const Fixture& fixture = For(state.range(0));
  for (auto _ : state) Open(fixture);
  CountBytes(state, fixture);
}

void LimitLoadFread(State& state) {
  const Fixture& fixture = For(state.range(0));
  std::vector<char> block(65536);
  for (auto _ : state) {
    std::FILE* file = std::fopen(fixture.path.c_str(), "rb");
    while (std::fread(block.data(), 1, block.size(), file) == block.size()) DoNotOptimize(block[0]);
    std::fclose(file);
  }
  CountBytes(state, fixture);
}

// What a load has to do beside reading: one allocated copy of the bytes, split at each line feed.
void LimitLoadFreadAndSplit(State& state) {
  const Fixture& fixture = For(state.range(0));
  for (auto _ : state) {
    std::FILE* file = std::fopen(fixture.path.c_str(), "rb");
    const std::unique_ptr<char[]> copy(new char[fixture.image.size()]);
    const std::size_t got = std::fread(copy.get(), 1, fixture.image.size(), file);
    std::fclose(file);
    const char* const end = copy.get() + got;
    std::size_t lines = 0;
    for (const char* at = copy.get(); at != end; ++lines) {
      at = static_cast<const char*>(std::memchr(at, '\n', static_cast<std::size_t>(end - at))) + 1;
    }
    DoNotOptimize(lines);
  }
  CountBytes(state, fixture);
}

const std::string& KeyOf(const Fixture& fixture, std::int64_t which) {
  return which == 0 ? fixture.first : which == 1 ? fixture.last : fixture.absent;
}

void Lookup(State& state) {
  const Fixture& fixture = For(state.range(0));
  const std::unique_ptr<ConfigFile> file = Open(fixture);
  const std::string& key = KeyOf(fixture, state.range(1));
  char value[64];
  for (auto _ : state) DoNotOptimize(file->GetEntry(key.c_str(), value, sizeof value));
}

void LimitLookupArray(State& state) {
  const Fixture& fixture = For(state.range(0));
  const std::string_view key = KeyOf(fixture, state.range(1));
  for (auto _ : state) {
    for (const Record& record : fixture.records) {
      if (record.keyLength == key.size() && std::memcmp(record.key, key.data(), key.size()) == 0) {
        DoNotOptimize(record.value);
        break;
      }
    }
  }
}

void Walk(State& state) {
  const std::unique_ptr<ConfigFile> file = Open(For(state.range(0)));
  char key[64], value[64];
  for (auto _ : state) {
    for (file->Restart(); file->GotoNextEntry();) {
      DoNotOptimize(file->GetCurrentEntry(key, sizeof key, value, sizeof value));
    }
  }
}

void LimitWalkArray(State& state) {
  char key[64], value[64];
  for (auto _ : state) {
    for (const Record& record : For(state.range(0)).records) {
      std::memcpy(key, record.key, record.keyLength);
      std::memcpy(value, record.value, record.valueLength);
      DoNotOptimize(key[0]);
      DoNotOptimize(value[0]);
    }
  }
}

// The first entry, so that the search costs nothing.
void SetWithinSlack(State& state) {
  const std::unique_ptr<ConfigFile> file = Open(For(state.range(0)));
  const std::string values[] = {std::string(20, 'a'), std::string(30, 'b')};
  std::size_t i = 0;
  file->GotoFirstEntry();
  for (auto _ : state) file->SetCurrentEntry(values[++i % 2].c_str());
}

// Each time another entry, whose text has not moved before.
void SetThatMovesTheText(State& state) {
  const Fixture& fixture = For(state.range(0));
  const std::string value(60, 'v');
  std::unique_ptr<ConfigFile> file;
  for (auto _ : state) {
    if (file == nullptr || !file->GotoNextEntry()) {
      state.PauseTiming();
      file = Open(fixture);
      state.ResumeTiming();
    }
    file->SetCurrentEntry(value.c_str());
  }
}

// An allocation, a copy of the line and the value's bytes.
void LimitSetAllocateAndCopy(State& state) {
  const std::string line = "setting_0000001 = value 1\n", value(60, 'v');
  for (auto _ : state) {
    const std::unique_ptr<char[]> block(new char[line.size() + value.size() + 33]);
    std::memcpy(block.get(), line.data(), line.size());
    std::memcpy(block.get() + 17, value.data(), value.size());
    DoNotOptimize(block.get());
  }
}

template <bool kCoalesced>
void Save(State& state) {
  const Fixture& fixture = For(state.range(0));
  const std::unique_ptr<ConfigFile> file = Open(fixture);
  const std::string target = fixture.path + ".saved";
  for (auto _ : state) {
    file->Save(kCoalesced, target.c_str());
    std::filesystem::remove(target);  // or the next save would wait for the disk
  }
  CountBytes(state, fixture);
}

void LimitSaveFwrite(State& state) {
  const Fixture& fixture = For(state.range(0));
  const std::string target = fixture.path + ".saved";
  for (auto _ : state) {
    std::FILE* file = std::fopen(target.c_str(), "wb");
    std::fwrite(fixture.image.data(), 1, fixture.image.size(), file);
    std::fclose(file);
    std::filesystem::remove(target);
  }
  CountBytes(state, fixture);
}

void SaveToBuffer(State& state) {
  const Fixture& fixture = For(state.range(0));
  const std::unique_ptr<ConfigFile> file = Open(fixture);
  std::vector<char> buffer(fixture.image.size() + 1);
  for (auto _ : state) {
    file->SaveToBuffer(buffer.data(), buffer.size());
    DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
  }
  CountBytes(state, fixture);
}

void LimitSaveToBufferMemcpy(State& state) {
  const Fixture& fixture = For(state.range(0));
  std::vector<char> buffer(fixture.image.size());
  for (auto _ : state) {
    std::memcpy(buffer.data(), fixture.image.data(), buffer.size());
    DoNotOptimize(buffer.data());
    benchmark::ClobberMemory();
  }
  CountBytes(state, fixture);
}

void Release(State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    std::unique_ptr<ConfigFile> file = Open(For(state.range(0)));
    state.ResumeTiming();
    file.reset();
  }
}

void Sizes(benchmark::internal::Benchmark* row) {
  row->Arg(100)->Arg(1000000)->Unit(benchmark::kMicrosecond);
}
void Keys(benchmark::internal::Benchmark* row) {  // the first, the last, one that is absent
  row->ArgsProduct({{100, 1000000}, {0, 1, 2}})->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Load)->Apply(Sizes);
BENCHMARK(LoadAndRelease)->Apply(Sizes);
BENCHMARK(LimitLoadFread)->Apply(Sizes);
BENCHMARK(LimitLoadFreadAndSplit)->Apply(Sizes);
BENCHMARK(Lookup)->Apply(Keys);
BENCHMARK(LimitLookupArray)->Apply(Keys);
BENCHMARK(Walk)->Apply(Sizes);
BENCHMARK(LimitWalkArray)->Apply(Sizes);
BENCHMARK(SetWithinSlack)->Arg(100)->Arg(1000000);
BENCHMARK(SetThatMovesTheText)->Arg(100)->Arg(1000000);
BENCHMARK(LimitSetAllocateAndCopy);
BENCHMARK(Save<false>)->Apply(Sizes);
BENCHMARK(Save<true>)->Apply(Sizes);
BENCHMARK(LimitSaveFwrite)->Apply(Sizes);
BENCHMARK(SaveToBuffer)->Apply(Sizes);
BENCHMARK(LimitSaveToBufferMemcpy)->Apply(Sizes);
BENCHMARK(Release)->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();
