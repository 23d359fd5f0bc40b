// SPDX-License-Identifier: MIT
// KIND SIZE FILE: makes data, the same each time, and prints what each step must find in it, and
// the section and the key of the entry to change.
//
//   flat SIZE      one section with so many lines, a fifth of them comments and a tenth blank
//   sections SIZE  so many sections, a comment before and a blank line after each: as
//                  `section NAME {` for the library, and in FILE.ini for the others
//   csv SIZE       records of 10 fields, some 145 bytes each, until there are SIZE bytes; no quotes
//   tokens SIZE    lines of words, numbers, punctuation and blanks, until there are SIZE bytes
//
// The keys of a section are unique. Beside the first two comes FILE.probes: the entry to change, in
// the middle, and 1,000 to look up.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

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

  std::string Comment() {
    std::string made = "# the";
    for (std::size_t words = 6 + Below(6); words != 0; --words) (made += ' ') += Word();
    return made + "\n";
  }

 private:
  std::mt19937_64 engine;  // the standard fixes its sequence, not that of its distributions
};

// What the entries of a file add up to, and those to look up.
class Entries {
 public:
  explicit Entries(std::uint64_t seed) : random(seed) {}

  // Gives the line. Each entry of a file of any length comes among the picked with the same chance.
  // The first one past the middle is the one to change.
  std::string Add(const std::string& section, const std::string& key, const std::string& value,
                  bool pastMiddle) {
    const std::string name = section + " " + key;
    ++count;
    keyBytes += key.size();
    firstBytes += static_cast<unsigned char>(value[0]);
    if (pastMiddle && change.empty()) change = name;
    if (picked.size() < kProbes) {
      picked.emplace_back(name, value.size());
    } else if (const std::size_t i = random.Below(count); i < kProbes) {
      picked[i] = {name, value.size()};
    }
    return key + "=" + value + "\n";
  }

  void Tell(const std::string& probes) {
    std::ofstream file(probes, std::ios::binary);
    file << change << '\n';
    std::size_t foundBytes = 0;
    for (std::size_t i = 0; i < kProbes; ++i) {
      const auto& [name, valueLength] = picked[random.Below(picked.size())];
      file << name << '\n';
      foundBytes += valueLength;
    }
    std::cout << "walk " << count << ' ' << keyBytes << ' ' << firstBytes << "\nlookup "
              << foundBytes << "\nchange " << change << '\n';
  }

 private:
  static constexpr std::size_t kProbes = 1000;
  Random random;
  std::size_t count = 0;
  std::size_t keyBytes = 0;
  std::size_t firstBytes = 0;                               // the sum of the values' first bytes
  std::string change;                                       // section and key
  std::vector<std::pair<std::string, std::size_t>> picked;  // section and key, length of the value
};

std::string UniqueKey(Random& random, std::size_t number) {
  return random.Word() + "-" + random.Word() + "-" + std::to_string(number);
}

void MakeFlatFile(const std::string& path, std::size_t lines) {
  Random random(1);
  Entries entries(2);
  std::ofstream file(path, std::ios::binary);
  file << "[main]\n";  // the others take no entry outside a section
  for (std::size_t line = 1; line < lines; ++line) {
    const std::size_t kind = random.Below(10);
    if (kind == 0) {
      file << '\n';
    } else if (kind < 3) {
      file << random.Comment();
    } else {
      const std::string key = UniqueKey(random, line);
      file << entries.Add("main", key, random.Value(), line >= lines / 2);
    }
  }
  entries.Tell(path + ".probes");
}

void MakeSectionFiles(const std::string& path, std::size_t sections) {
  constexpr std::size_t kEntriesPerSection = 20;
  Random random(3);
  Entries entries(4);
  std::ofstream file(path, std::ios::binary);
  std::ofstream ini(path + ".ini", std::ios::binary);
  for (std::size_t i = 0; i < sections; ++i) {
    const std::string name = random.Word() + "-" + std::to_string(i);
    const std::string comment = random.Comment();
    file << comment << "section " << name << " {\n";
    ini << comment << '[' << name << "]\n";
    for (std::size_t number = 0; number < kEntriesPerSection; ++number) {
      const std::string key = UniqueKey(random, number);
      const std::string line = entries.Add(name, key, random.Value(), i >= sections / 2);
      file << line;
      ini << line;
    }
    file << "}\n\n";
    ini << '\n';
  }
  entries.Tell(path + ".probes");
}

void MakeCsvFile(const std::string& path, std::size_t bytes) {
  constexpr std::size_t kColumns = 10;
  Random random(5);
  std::size_t fields = 0;
  std::size_t fieldBytes = 0;
  std::ofstream file(path, std::ios::binary);
  while (fields + fieldBytes < bytes) {  // each field has one byte after it
    for (std::size_t column = 0; column < kColumns; ++column) {
      std::string field = column % 3 == 0 ? random.Digits(10) : random.Value();
      if (column % 2 == 1) ((field += ' ') += random.Word() + " ") += random.Word();
      file << field << (column + 1 < kColumns ? ',' : '\n');
      fieldBytes += field.size();
    }
    fields += kColumns;
  }
  std::cout << "read " << fields << ' ' << fieldBytes << "\nonly " << fields << " 0\n";
}

// A token is a run of letters, a run of digits, or a single other byte.
void MakeTokenFile(const std::string& path, std::size_t bytes) {
  const std::string marks = "=;,.(){}+-\":";
  Random random(6);
  std::size_t tokens = 0;
  std::size_t written = 0;
  std::ofstream file(path, std::ios::binary);
  while (written < bytes) {
    std::string line(random.Below(3) * 2, ' ');
    tokens += line.size();
    for (std::size_t words = 2 + random.Below(8); words != 0; --words) {
      line += random.Below(3) != 0 ? random.Word() : random.Digits(6);
      const bool marked = random.Below(2) != 0;
      if (marked) line += marks[random.Below(marks.size())];
      line += random.Below(8) != 0 ? ' ' : '\t';
      tokens += marked ? 3 : 2;
    }
    file << line << '\n';
    tokens += 1;
    written += line.size() + 1;
  }
  std::cout << "read " << tokens << ' ' << written << '\n';
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
  return 0;
}
