// SPDX-License-Identifier: MIT
// The sectioned file beside its limits: each operation is followed by the least that its work can
// cost, done on the same bytes in the same run. Rows end in the number of sections, of 20 entries
// each: what is linear takes ten times as long in the larger file, what is constant the same time.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "MultiSectionFile.h"

namespace {

using benchmark::DoNotOptimize;
using benchmark::State;
using Configuration::MultiSectionConfigFile;

constexpr int kEntries = 20;

struct Record {  // an element of a plain array: the least that a scan has to look at
  const char* name;
  std::size_t nameLength;
  const char* value;
  std::size_t valueLength;
};

struct Fixture {
  ~Fixture() { std::filesystem::remove(path); }
  std::string path, image;
  std::vector<Record> sections, entries;
};

std::string Name(const char* kind, long i) {
  char name[32];
  std::snprintf(name, sizeof name, "%s_%05ld", kind, i);
  return name;
}

const Fixture& For(const State& state) {
  static std::map<long, Fixture> all;
  const long count = state.range(0);
  Fixture& fixture = all[count];
  if (!fixture.image.empty()) return fixture;
  for (long i = 0; i < count; ++i) {
    fixture.image += "# what follows\nsection " + Name("section", i) + " {\n";
    for (int k = 0; k < kEntries; ++k) {
      fixture.image += Name("key", k) + " = value " + std::to_string(i) + "\n";
    }
    fixture.image += "}\n";
  }
  const char* const bytes = fixture.image.data();
  for (std::size_t at = 0, end; at < fixture.image.size(); at = end + 1) {
    end = fixture.image.find('\n', at);
    const std::string_view line(bytes + at, end - at);
    const std::size_t equals = line.find('=');
    if (line.substr(0, 7) == "section") {
      fixture.sections.push_back({bytes + at + 8, line.size() - 10, nullptr, 0});
    } else if (equals != line.npos) {
      fixture.entries.push_back(
          {bytes + at, equals - 1, bytes + at + equals + 1, line.size() - equals - 1});
    }
  }
  const std::string name = "zelconfutils_multisection_bench_" + std::to_string(count);
  fixture.path = (std::filesystem::temp_directory_path() / name).string();
  std::FILE* file = std::fopen(fixture.path.c_str(), "wb");
  std::fwrite(bytes, 1, fixture.image.size(), file);
  std::fclose(file);
  return fixture;
}

using File = std::unique_ptr<MultiSectionConfigFile>;

File Open(const State& state) {
  return std::make_unique<MultiSectionConfigFile>(For(state).path.c_str(), false, true, true,
                                                  false);
}

void CountBytes(State& state) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(For(state).image.size()));
}

void Load(State& state) {
  For(state);
  for (auto _ : state) {
    File file = Open(state);
    state.PauseTiming();
    file.reset();
    state.ResumeTiming();
  }
  CountBytes(state);
}

void LimitLoadFread(State& state) {
  std::vector<char> block(65536);
  for (auto _ : state) {
    std::FILE* file = std::fopen(For(state).path.c_str(), "rb");
    while (std::fread(block.data(), 1, block.size(), file) == block.size()) DoNotOptimize(block[0]);
    std::fclose(file);
  }
  CountBytes(state);
}

// What a load has to do beside reading: one allocated copy of the bytes, and a record for each
// line.
void LimitLoadSplitAndIndex(State& state) {
  const Fixture& fixture = For(state);
  for (auto _ : state) {
    std::FILE* file = std::fopen(fixture.path.c_str(), "rb");
    const std::unique_ptr<char[]> copy(new char[fixture.image.size()]);
    const std::size_t got = std::fread(copy.get(), 1, fixture.image.size(), file);
    std::fclose(file);
    std::vector<Record> records;
    for (const char *at = copy.get(), *const end = at + got; at != end;) {
      const auto left = static_cast<std::size_t>(end - at);
      const char* next = static_cast<const char*>(std::memchr(at, '\n', left)) + 1;
      const auto length = static_cast<std::size_t>(next - at);
      const void* equals = std::memchr(at, '=', length);
      records.push_back({at, length, static_cast<const char*>(equals), length});
      at = next;
    }
    DoNotOptimize(records.data());
  }
  CountBytes(state);
}

void Release(State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    File file = Open(state);
    state.ResumeTiming();
    file.reset();
  }
}

void WalkAll(State& state) {
  const File file = Open(state);
  char key[64], value[64];
  for (auto _ : state) {
    for (file->Restart(); file->GotoNextSection();) {
      DoNotOptimize(file->GetSectionName(key, sizeof key));
      for (file->RestartSection(); file->GotoSecNextEntry();) {
        DoNotOptimize(file->GetSecCurrentEntry(key, sizeof key, value, sizeof value));
      }
    }
  }
}

void LimitWalkArray(State& state) {
  char key[64], value[64];
  for (auto _ : state) {
    for (const Record& record : For(state).entries) {
      std::memcpy(key, record.name, record.nameLength);
      std::memcpy(value, record.value, record.valueLength);
      DoNotOptimize(key[0]);
      DoNotOptimize(value[0]);
    }
  }
}

// The first section, the last, one that is absent but as long.
std::string Wanted(const State& state) {
  const std::int64_t which = state.range(1);
  return Name("section", which == 0 ? 0 : which == 1 ? state.range(0) - 1 : 99999);
}

void GotoSection(State& state) {
  const File file = Open(state);
  const std::string name = Wanted(state);
  for (auto _ : state) DoNotOptimize(file->GotoSection(name.c_str()));
}

void LimitGotoArray(State& state) {
  const std::string name = Wanted(state);
  const std::vector<Record>& sections = For(state).sections;
  for (auto _ : state) {
    for (const Record& record : sections) {
      if (record.nameLength == name.size() &&
          std::memcmp(record.name, name.data(), name.size()) == 0) {
        DoNotOptimize(record.name);
        break;
      }
    }
  }
}

// The last key of a section in the middle of the file.
void SetInSection(State& state) {
  const File file = Open(state);
  const std::string key = Name("key", kEntries - 1);
  const std::string values[] = {std::string(20, 'a'), std::string(30, 'b')};
  file->GotoSection(Name("section", state.range(0) / 2).c_str());
  std::size_t i = 0;
  for (auto _ : state) file->SetSectionEntry(key.c_str(), values[++i % 2].c_str());
}

// A scan of the section's keys and the bytes of the value.
void LimitSetScanAndCopy(State& state) {
  const std::string key = Name("key", kEntries - 1);
  const std::string values[] = {std::string(20, 'a'), std::string(30, 'b')};
  const Record* const records = For(state).entries.data() + state.range(0) / 2 * kEntries;
  char line[64];
  std::size_t i = 0;
  for (auto _ : state) {
    int at = 0;
    while (std::string_view(records[at].name, records[at].nameLength) != key) ++at;
    const std::string& value = values[++i % 2];
    std::memcpy(line, value.data(), value.size());
    DoNotOptimize(line[0]);
    DoNotOptimize(at);
  }
}

void AddAndDeleteSection(State& state) {
  const File file = Open(state);
  for (auto _ : state) {
    file->AddSection("section_added", false);
    DoNotOptimize(file->DeleteSection());
  }
}

// Two allocations, and the bytes of both lines.
void LimitAddAllocateAndCopy(State& state) {
  static const char header[] = "section section_added {\n", stop[] = "}\n";
  for (auto _ : state) {
    const std::unique_ptr<char[]> first(new char[sizeof header + 33]);
    const std::unique_ptr<char[]> second(new char[sizeof stop + 33]);
    std::memcpy(first.get(), header, sizeof header);
    std::memcpy(second.get(), stop, sizeof stop);
    DoNotOptimize(first.get());
    DoNotOptimize(second.get());
  }
}

// A section with its 20 entries, one behind the other: the deletion alone.
void DeleteLoadedSection(State& state) {
  File file;
  for (auto _ : state) {
    if (file == nullptr || file->DeleteSection() == 0) {
      state.PauseTiming();
      file = Open(state);
      state.ResumeTiming();
    }
  }
}

template <bool kCoalesced>
void Save(State& state) {
  const File file = Open(state);
  const std::string target = For(state).path + ".saved";
  for (auto _ : state) {
    file->Save(kCoalesced, target.c_str());
    std::filesystem::remove(target);  // or the next save would wait for the disk
  }
  CountBytes(state);
}

void LimitSaveFwrite(State& state) {
  const std::string &target = For(state).path + ".saved", &image = For(state).image;
  for (auto _ : state) {
    std::FILE* file = std::fopen(target.c_str(), "wb");
    std::fwrite(image.data(), 1, image.size(), file);
    std::fclose(file);
    std::filesystem::remove(target);
  }
  CountBytes(state);
}

void Sizes(benchmark::internal::Benchmark* row) {
  row->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);
}
void Names(benchmark::internal::Benchmark* row) {  // the first, the last, one that is absent
  row->ArgsProduct({{2000, 20000}, {0, 1, 2}})->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Load)->Apply(Sizes);
BENCHMARK(LimitLoadFread)->Apply(Sizes);
BENCHMARK(LimitLoadSplitAndIndex)->Apply(Sizes);
BENCHMARK(WalkAll)->Apply(Sizes);
BENCHMARK(LimitWalkArray)->Apply(Sizes);
BENCHMARK(GotoSection)->Apply(Names);
BENCHMARK(LimitGotoArray)->Apply(Names);
BENCHMARK(SetInSection)->Arg(2000)->Arg(20000);
BENCHMARK(LimitSetScanAndCopy)->Arg(2000)->Arg(20000);
BENCHMARK(AddAndDeleteSection)->Arg(2000)->Arg(20000);
BENCHMARK(LimitAddAllocateAndCopy);
BENCHMARK(DeleteLoadedSection)->Arg(2000)->Arg(20000);
BENCHMARK(Save<false>)->Apply(Sizes);
BENCHMARK(Save<true>)->Apply(Sizes);
BENCHMARK(LimitSaveFwrite)->Apply(Sizes);
BENCHMARK(Release)->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();
