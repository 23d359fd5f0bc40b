// SPDX-License-Identifier: MIT
// Reads a table of 100 MB with 10 columns as texts of std::string. The limit is fread of the same
// file: through a block as the reader has it, and whole into a new buffer. Each line tells its
// CPU time as a multiple of both.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <filesystem>
#include <limits>
#include <memory>
#include <random>
#include <string>

#include "CsvDocument.h"
#ifdef ZELCONFUTILS_HAVE_FCCP
#define CSV_IO_NO_THREAD  // its thread would only move the copy of the file to another core
#include <libfccp/csv.h>
#endif
#ifdef ZELCONFUTILS_HAVE_LIBCSV
#include <csv.h>
#endif

namespace {

constexpr std::size_t kFileBytes = 100'000'000;
constexpr int kColumns = 10;
constexpr std::size_t kBlockBytes = std::size_t{64} * 1024;
constexpr int kRuns = 5;

struct Table {
  const char* name;
  unsigned shortest, longest;  // bytes of a field
  std::string path = {};
  double blocks = 0, whole = 0;  // seconds of CPU for fread

  void Write();
};

double CpuSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

struct Close {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, Close>;

std::size_t ReadThrough(const std::string& path, std::size_t bufferBytes) {
  const Stream stream(std::fopen(path.c_str(), "rb"));
  const std::unique_ptr<char[]> buffer(new char[bufferBytes]);
  std::size_t total = 0;
  while (const std::size_t bytes = std::fread(buffer.get(), 1, bufferBytes, stream.get())) {
    total += bytes;
    benchmark::DoNotOptimize(buffer.get());
  }
  return total;
}

double BestOf(const std::string& path, std::size_t bufferBytes) {
  double best = std::numeric_limits<double>::max();
  for (int run = 0; run < kRuns; ++run) {
    const double start = CpuSeconds();
    ReadThrough(path, bufferBytes);
    best = std::min(best, CpuSeconds() - start);
  }
  return best;
}

void Table::Write() {
  path = (std::filesystem::temp_directory_path() /
          ("zelconfutils_csv_bench_" + std::to_string(std::random_device()()) + name))
             .string();
  const Stream stream(std::fopen(path.c_str(), "wb"));
  std::mt19937 random(20240607);
  std::size_t total = 0;
  for (std::string row; total < kFileBytes; total += row.size()) {
    row.clear();
    for (int column = 0; column < kColumns; ++column) {
      for (auto n = shortest + random() % (longest - shortest + 1); n > 0; --n) {
        row += "abcdefghijklmnopqrstuvwxyz0123456789"[random() % 36];
      }
      row += column + 1 < kColumns ? ',' : '\n';
    }
    std::fwrite(row.data(), 1, row.size(), stream.get());
  }
  std::fflush(stream.get());
  blocks = BestOf(path, kBlockBytes);
  whole = BestOf(path, kFileBytes + 4096);
}

// What a reader does with a table. Returns the bytes of all fields, which all must agree on.
using Reader = std::size_t (*)(const std::string& path);

std::size_t DocumentRows(const std::string& path) {
  CsvDocument document;
  CsvDocumentRow row;
  std::size_t rows = 0;
  document.Load(path.c_str());
  while (document.IsCsvRecordPresence()) rows += document.GetRow(row) ? 1 : 0;
  return rows;
}

std::size_t DocumentRowsAndFields(const std::string& path) {
  CsvDocument document;
  CsvDocumentRow row;
  std::size_t rows = 0;
  document.Load(path.c_str());
  while (document.IsCsvRecordPresence()) {
    rows += document.GetRow(row) ? 1 : 0;
    for (unsigned short i = 0; i < row.GetFieldsCount(); ++i) {
      benchmark::DoNotOptimize(row.GetField(i));
    }
  }
  return rows;
}

#ifdef ZELCONFUTILS_HAVE_FCCP
std::size_t Fccp(const std::string& path) {
  io::CSVReader<kColumns> reader(path);
  std::string a, b, c, d, e, f, g, h, i, j;
  std::size_t rows = 0;
  while (reader.read_row(a, b, c, d, e, f, g, h, i, j)) ++rows;
  return rows;
}
#endif

#ifdef ZELCONFUTILS_HAVE_LIBCSV
struct Libcsv {
  std::string fields[kColumns];
  std::size_t column = 0, rows = 0;

  static void Field(void* text, std::size_t bytes, void* self) {
    auto& my = *static_cast<Libcsv*>(self);
    my.fields[my.column++ % kColumns].assign(static_cast<const char*>(text), bytes);
  }
  static void Row(int, void* self) {
    static_cast<Libcsv*>(self)->column = 0;
    ++static_cast<Libcsv*>(self)->rows;
  }
  static std::size_t Read(const std::string& path) {
    Libcsv my;
    csv_parser parser;
    csv_init(&parser, 0);
    const Stream stream(std::fopen(path.c_str(), "rb"));
    const std::unique_ptr<char[]> block(new char[kBlockBytes]);
    while (const std::size_t bytes = std::fread(block.get(), 1, kBlockBytes, stream.get())) {
      csv_parse(&parser, block.get(), bytes, Field, Row, &my);
    }
    csv_fini(&parser, Field, Row, &my);
    csv_free(&parser);
    return my.rows;
  }
};
#endif

void Run(benchmark::State& state, Reader read, const Table* table) {
  const std::size_t rows = DocumentRows(table->path);
  double seconds = 0;
  for (auto _ : state) {
    const double start = CpuSeconds();
    if (read(table->path) != rows) state.SkipWithError("another number of rows");
    seconds += CpuSeconds() - start;
  }
  seconds /= static_cast<double>(state.iterations());
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kFileBytes));
  state.counters["x_fread_blocks"] = seconds / table->blocks;
  state.counters["x_fread_whole"] = seconds / table->whole;
}

}  // namespace

int main(int argc, char** argv) {
  static Table tables[] = {{"4to12", 4, 12}, {"9to9", 9, 9}, {"1to8", 1, 8}, {"10to40", 10, 40}};
  static const struct {
    const char* name;
    Reader read;
  } readers[] = {
      {"GetRow", DocumentRows},
      {"GetRow+GetField", DocumentRowsAndFields},
#ifdef ZELCONFUTILS_HAVE_FCCP
      {"fast-cpp-csv-parser", Fccp},
#endif
#ifdef ZELCONFUTILS_HAVE_LIBCSV
      {"libcsv", Libcsv::Read},
#endif
  };
  benchmark::Initialize(&argc, argv);
  for (Table& table : tables) {
    table.Write();
    std::printf(
        "%s: 100 MB, %d columns of %u to %u bytes; fread in blocks %.1f ms, whole %.1f ms\n",
        table.name, kColumns, table.shortest, table.longest, table.blocks * 1e3, table.whole * 1e3);
    for (const auto& reader : readers) {
      benchmark::RegisterBenchmark((std::string(table.name) + "/" + reader.name).c_str(), Run,
                                   reader.read, &table)
          ->Unit(benchmark::kMillisecond)
          ->Iterations(kRuns);
    }
  }
  benchmark::RunSpecifiedBenchmarks();
  for (const Table& table : tables) std::filesystem::remove(table.path);
}
