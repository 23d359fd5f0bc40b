// SPDX-License-Identifier: MIT
// KIND SIZE FILE: makes data, the same each time.
//
//   flat SIZE      one section with so many lines, a fifth of them comments and a tenth blank
//   sections SIZE  so many sections, a comment before and a blank line after each: as
//                  `section NAME {` for the library, and in FILE.ini for the others
//   csv SIZE       records of 10 fields, some 145 bytes each, until there are SIZE bytes; no quotes
//   tokens SIZE    lines of words, numbers, punctuation and blanks, until there are SIZE bytes
//
// The keys of a section are unique.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>

namespace {

constexpr const char* kWords[] = {
    "address", "backup",  "buffer", "cache",    "client", "color",    "connect", "count",
    "debug",   "default", "device", "dir",      "enable", "file",     "filter",  "font",
    "format",  "host",    "image",  "interval", "key",    "language", "level",   "limit",
    "log",     "max",     "memory", "min",      "mode",   "module",   "name",    "network",
    "output",  "path",    "port",   "prefix",   "proxy",  "queue",    "rate",    "retry",
    "server",  "size",    "socket", "speed",    "start",  "status",   "timeout", "user"};

class Random {
 public:
  explicit Random(std::uint64_t seed) : engine(seed) {}
  std::size_t Below(std::size_t bound) { return engine() % bound; }
  std::string Word() { return kWords[Below(std::size(kWords))]; }

  std::string Digits(std::size_t longest) {
    std::string made(1 + Below(longest), '0');
    for (char& c : made) c = static_cast<char>('0' + Below(10));
    return made;
  }

  std::string Value() {
    const std::size_t kind = Below(5);
    if (kind == 0) return Digits(6);
    if (kind == 1) return Below(2) != 0 ? "true" : "false";
    if (kind == 2) return std::string("/usr/") + Word() + "/" + Word();
    if (kind == 3) return Digits(3) + "." + Digits(3) + "." + Digits(3);
    return Word() + " " + Word();
  }

  std::string Entry(std::size_t number) {
    const std::string key = Word() + "-" + Word() + "-" + std::to_string(number);
    return key + "=" + Value() + "\n";
  }

  std::string Comment() {
    std::string made = "# the";
    for (std::size_t words = 6 + Below(6); words != 0; --words) (made += ' ') += Word();
    return made + "\n";
  }

 private:
  std::mt19937_64 engine;  // the standard fixes its sequence, not that of its distributions
};

void MakeFlatFile(const std::string& path, std::size_t lines) {
  Random random(1);
  std::ofstream file(path, std::ios::binary);
  file << "[main]\n";  // the others take no entry outside a section
  for (std::size_t line = 1; line < lines; ++line) {
    const std::size_t kind = random.Below(10);
    if (kind == 0) {
      file << '\n';
    } else if (kind < 3) {
      file << random.Comment();
    } else {
      file << random.Entry(line);
    }
  }
}

void MakeSectionFiles(const std::string& path, std::size_t sections) {
  constexpr std::size_t kEntriesPerSection = 20;
  Random random(3);
  std::ofstream file(path, std::ios::binary);
  std::ofstream ini(path + ".ini", std::ios::binary);
  for (std::size_t i = 0; i < sections; ++i) {
    const std::string name = random.Word() + "-" + std::to_string(i);
    const std::string comment = random.Comment();
    file << comment << "section " << name << " {\n";
    ini << comment << '[' << name << "]\n";
    for (std::size_t number = 0; number < kEntriesPerSection; ++number) {
      const std::string line = random.Entry(number);
      file << line;
      ini << line;
    }
    file << "}\n\n";
    ini << '\n';
  }
}

void MakeCsvFile(const std::string& path, std::size_t bytes) {
  constexpr std::size_t kColumns = 10;
  Random random(5);
  std::ofstream file(path, std::ios::binary);
  for (std::size_t written = 0; written < bytes;) {
    std::string record;
    for (std::size_t column = 0; column < kColumns; ++column) {
      record += column % 3 == 0 ? random.Digits(10) : random.Value();
      if (column % 2 == 1) ((record += ' ') += random.Word() + " ") += random.Word();
      record += column + 1 < kColumns ? ',' : '\n';
    }
    file << record;
    written += record.size();
  }
}

void MakeTokenFile(const std::string& path, std::size_t bytes) {
  const std::string marks = "=;,.(){}+-\":";
  Random random(6);
  std::ofstream file(path, std::ios::binary);
  for (std::size_t written = 0; written < bytes;) {
    std::string line(random.Below(3) * 2, ' ');
    for (std::size_t words = 2 + random.Below(8); words != 0; --words) {
      line += random.Below(3) != 0 ? random.Word() : random.Digits(6);
      if (random.Below(2) != 0) line += marks[random.Below(marks.size())];
      line += random.Below(8) != 0 ? ' ' : '\t';
    }
    file << (line += '\n');
    written += line.size();
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string kind = argv[1];
  const std::size_t size = std::strtoull(argv[2], nullptr, 10);
  if (kind == "flat") MakeFlatFile(argv[3], size);
  if (kind == "sections") MakeSectionFiles(argv[3], size);
  if (kind == "csv") MakeCsvFile(argv[3], size);
  if (kind == "tokens") MakeTokenFile(argv[3], size);
}
