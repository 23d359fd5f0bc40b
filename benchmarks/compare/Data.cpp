// SPDX-License-Identifier: MIT
#include "Data.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <random>
#include <vector>

namespace {

constexpr std::size_t kProbes = 1000;

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
  const char* Word() { return kWords[Below(std::size(kWords))]; }

  std::string Digits(std::size_t longest) {
    std::string made(1 + Below(longest), '0');
    for (char& c : made) c = static_cast<char>('0' + Below(10));
    return made;
  }

  std::string Value() {
    switch (Below(5)) {
      case 0:
        return Digits(6);
      case 1:
        return Below(2) != 0 ? "true" : "false";
      case 2:
        return std::string("/usr/") + Word() + "/" + Word();
      case 3:
        return Digits(3) + "." + Digits(3) + "." + Digits(3);
      default:
        return std::string(Word()) + " " + Word();
    }
  }

 private:
  std::mt19937_64 engine;  // the standard fixes its sequence, not that of its distributions
};

class Probes {
 public:
  Probes(std::uint64_t seed, KeyFileTotals& count) : random(seed), totals(count) {}

  // Each entry of a file of any length comes among the picked ones with the same chance.
  void Add(const std::string& section, const std::string& key, const std::string& value) {
    ++totals.entries;
    totals.keyBytes += key.size();
    totals.firstBytes += static_cast<unsigned char>(value[0]);
    if (picked.size() < kProbes) {
      picked.push_back({section, key, value.size()});
    } else if (const std::size_t i = random.Below(totals.entries); i < kProbes) {
      picked[i] = {section, key, value.size()};
    }
  }

  void Change(const std::string& section, const std::string& key) {
    if (!totals.changeKey.empty()) return;
    totals.changeSection = section;
    totals.changeKey = key;
  }

  void Write(const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << totals.changeSection << ' ' << totals.changeKey << '\n';
    for (std::size_t i = 0; i < kProbes; ++i) {
      const Probe& probe = picked[random.Below(picked.size())];
      file << probe.section << ' ' << probe.key << '\n';
      totals.foundBytes += probe.valueLength;
    }
  }

 private:
  struct Probe {
    std::string section;
    std::string key;
    std::size_t valueLength;
  };
  Random random;
  KeyFileTotals& totals;
  std::vector<Probe> picked;
};

std::string Comment(Random& random) {
  std::string made = "# the";
  for (std::size_t words = 6 + random.Below(6); words != 0; --words) {
    made += std::string(" ") + random.Word();
  }
  return made + "\n";
}

std::string UniqueKey(Random& random, std::size_t number) {
  return std::string(random.Word()) + "-" + random.Word() + "-" + std::to_string(number);
}

}  // namespace

KeyFileTotals MakeFlatFile(const std::string& path, const std::string& probesPath,
                           std::size_t lines) {
  KeyFileTotals totals;
  Random random(1);
  Probes probes(2, totals);
  std::ofstream file(path, std::ios::binary);
  file << "[main]\n";  // the others take no entry outside a section
  for (std::size_t line = 1; line < lines; ++line) {
    const std::size_t kind = random.Below(10);
    if (kind == 0) {
      file << '\n';
    } else if (kind < 3) {
      file << Comment(random);
    } else {
      const std::string key = UniqueKey(random, line);
      const std::string value = random.Value();
      file << key << '=' << value << '\n';
      probes.Add("main", key, value);
      if (line >= lines / 2) probes.Change("main", key);
    }
  }
  probes.Write(probesPath);
  return totals;
}

KeyFileTotals MakeSectionFiles(const std::string& path, const std::string& iniPath,
                               const std::string& probesPath, std::size_t sections) {
  KeyFileTotals totals;
  Random random(3);
  Probes probes(4, totals);
  std::ofstream file(path, std::ios::binary);
  std::ofstream ini(iniPath, std::ios::binary);
  for (std::size_t i = 0; i < sections; ++i) {
    const std::string name = std::string(random.Word()) + "-" + std::to_string(i);
    const std::string comment = Comment(random);
    file << comment << "section " << name << " {\n";
    ini << comment << '[' << name << "]\n";
    for (std::size_t entry = 0; entry < kEntriesPerSection; ++entry) {
      const std::string key = UniqueKey(random, entry);
      const std::string value = random.Value();
      file << key << '=' << value << '\n';
      ini << key << '=' << value << '\n';
      probes.Add(name, key, value);
      if (i >= sections / 2) probes.Change(name, key);
    }
    file << "}\n\n";
    ini << '\n';
  }
  probes.Write(probesPath);
  return totals;
}

StreamTotals MakeCsvFile(const std::string& path, std::size_t bytes) {
  constexpr std::size_t kColumns = 10;
  StreamTotals totals;
  Random random(5);
  std::ofstream file(path, std::ios::binary);
  for (std::size_t written = 0; written < bytes;) {
    std::string record;
    for (std::size_t column = 0; column < kColumns; ++column) {
      std::string field = column % 3 == 0 ? random.Digits(10) : random.Value();
      if (column % 2 == 1) field += std::string(" ") + random.Word() + " " + random.Word();
      totals.bytes += field.size();
      record += field + (column + 1 < kColumns ? "," : "\n");
    }
    totals.count += kColumns;
    written += record.size();
    file << record;
  }
  return totals;
}

StreamTotals MakeTokenFile(const std::string& path, std::size_t bytes) {
  constexpr const char* kMarks[] = {"=", ";", ",", ".", "(", ")", "{", "}", "+", "-", "\"", ":"};
  StreamTotals totals;
  Random random(6);
  std::ofstream file(path, std::ios::binary);
  while (totals.bytes < bytes) {
    std::string line(random.Below(3) * 2, ' ');
    for (std::size_t words = 2 + random.Below(8); words != 0; --words) {
      line += random.Below(3) != 0 ? std::string(random.Word()) : random.Digits(6);
      if (random.Below(2) != 0) line += kMarks[random.Below(std::size(kMarks))];
      line += random.Below(8) != 0 ? " " : "\t";
    }
    line += '\n';
    int last = 0;
    for (const char c : line) {
      const auto byte = static_cast<unsigned char>(c);
      const int kind = std::isalpha(byte) ? 1 : std::isdigit(byte) ? 2 : 0;
      if (kind == 0 || kind != last) ++totals.count;
      last = kind;
    }
    totals.bytes += line.size();
    file << line;
  }
  return totals;
}
