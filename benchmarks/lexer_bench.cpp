// SPDX-License-Identifier: MIT
// Tokens and bytes per second of the lexer, on text in memory and on a file. The limit beside it
// is a loop written by hand over the same bytes and classes, which makes the same strings.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "ZelLex.h"

namespace {

constexpr std::size_t kTextBytes = 1 << 20;

// Words, numbers, blanks and punctuation in lines of some 40 bytes, as in a configuration file.
const std::string& Corpus() {
  static const std::string text = [] {
    std::mt19937 random(1);
    const auto run = [&random](const char* bytes, unsigned count, unsigned longest) {
      std::string made(1 + random() % longest, ' ');
      for (char& c : made) c = bytes[random() % count];
      return made;
    };
    std::string made;
    while (made.size() < kTextBytes) {
      made += run("abcdefghijklmnopqrstuvwxyz", 26, 12) + "_" + run("ABCDEFGH", 8, 6) + " = ";
      made += run("0123456789", 10, 6) + "." + run("0123456789", 10, 3) + "; # ";
      made += run("etaoinshr", 9, 8) + " " + run("etaoinshr", 9, 8) + "\n";
    }
    return made;
  }();
  return text;
}

// The same text as a file in the page cache.
class CorpusFile {
 public:
  CorpusFile() : path((std::filesystem::temp_directory_path() / "zel_lexer_bench.txt").string()) {
    std::ofstream(path, std::ios::binary) << Corpus();
  }
  ~CorpusFile() { std::remove(path.c_str()); }
  const char* Path() const { return path.c_str(); }

 private:
  std::string path;
};

std::int64_t LexByHand(const std::string& text) {
  static const auto kinds = [] {
    std::array<unsigned char, 256> made = {};
    for (const char* c = "!%^&*()-+={}|~[]\\;':\"<>?,./#_"; *c != '\0'; ++c) {
      made[static_cast<unsigned char>(*c)] = PunctuationToken;
    }
    for (int c = 'a'; c <= 'z'; ++c) made[c] = made[c - 32] = StringConstantToken;
    for (int c = '0'; c <= '9'; ++c) made[c] = DigitConstantToken;
    made[' '] = made['\t'] = made['\v'] = WhiteSpaceToken;
    made['\n'] = NewLineToken;
    return made;
  }();
  std::int64_t tokens = 0;
  const auto* next = reinterpret_cast<const unsigned char*>(text.data());
  const auto* const end = next + text.size();
  while (next != end) {
    const auto* const start = next;
    const unsigned char kind = kinds[*next++];
    if (kind == StringConstantToken || kind == DigitConstantToken) {
      while (next != end && kinds[*next] == kind) ++next;
    }
    std::string token(reinterpret_cast<const char*>(start), static_cast<std::size_t>(next - start));
    benchmark::DoNotOptimize(token);
    ++tokens;
  }
  return tokens;
}

std::int64_t Lex(StreamIterator& source) {
  ZelLex lexer(&source, false);
  std::int64_t tokens = 0;
  while (const ZelLexToken* token = lexer.GetToken()) {
    std::string text = token->text;
    benchmark::DoNotOptimize(text);
    ++tokens;
  }
  return tokens;
}

void Report(benchmark::State& state, std::int64_t tokens) {
  state.SetItemsProcessed(tokens);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(Corpus().size()));
}

void BufferByHand(benchmark::State& state) {
  std::int64_t tokens = 0;
  for (auto _ : state) tokens += LexByHand(Corpus());
  Report(state, tokens);
}
BENCHMARK(BufferByHand);

void BufferByLexer(benchmark::State& state) {
  std::int64_t tokens = 0;
  for (auto _ : state) {
    BufferIterator source(Corpus().c_str());
    tokens += Lex(source);
  }
  Report(state, tokens);
}
BENCHMARK(BufferByLexer);

void FileByHand(benchmark::State& state) {
  const CorpusFile file;
  std::int64_t tokens = 0;
  for (auto _ : state) {
    std::string text(Corpus().size(), '\0');
    std::FILE* stream = std::fopen(file.Path(), "rb");
    if (stream == nullptr || std::fread(text.data(), 1, text.size(), stream) != text.size()) {
      state.SkipWithError("the file cannot be read");
    }
    if (stream != nullptr) std::fclose(stream);
    tokens += LexByHand(text);
  }
  Report(state, tokens);
}
BENCHMARK(FileByHand);

void FileByLexer(benchmark::State& state) {
  const CorpusFile file;
  std::int64_t tokens = 0;
  for (auto _ : state) {
    FileIterator source(file.Path());
    tokens += Lex(source);
  }
  Report(state, tokens);
}
BENCHMARK(FileByLexer);

void FileLines(benchmark::State& state) {
  const CorpusFile file;
  std::int64_t lines = 0;
  for (auto _ : state) {
    FileIterator source(file.Path());
    while (source.HasMoreLines()) {
      std::string line = source.GetLine();
      benchmark::DoNotOptimize(line);
      ++lines;
    }
  }
  Report(state, lines);
}
BENCHMARK(FileLines);

}  // namespace

BENCHMARK_MAIN();
