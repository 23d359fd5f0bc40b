// SPDX-License-Identifier: MIT
// What the work costs at least: the bytes read with fread and written with fwrite, one loop over
// them that finds the entries, and a contiguous array of what it found. Reads either file form.
#include <string_view>
#include <vector>

#include "Files.h"
#include "KeyFile.h"

namespace {

struct Record {
  std::string_view key;
  std::string_view value;
};

struct Section {
  std::string_view name;
  std::size_t firstRecord;
};

std::size_t Copy(char* buffer, std::string_view text) {
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
  return text.size();
}

const char* FindByte(const char* bytes, char c, const char* end) {
  return static_cast<const char*>(std::memchr(bytes, c, static_cast<std::size_t>(end - bytes)));
}

class Bytes : public KeyFile {
 public:
  bool Load(const char* path) override {
    text = ReadWhole(path, size);
    if (text != nullptr) Index();
    return text != nullptr;
  }

  std::size_t LookUp(const char* section, const char* key, char* buffer) override {
    const Record* record = Find(section, key);
    return record != nullptr ? Copy(buffer, record->value) : 0;
  }

  WalkTotals Walk() override {
    WalkTotals totals;
    char key[kTextBytes];
    char value[kTextBytes];
    for (const Record& record : records) {
      Copy(value, record.value);
      totals.Count(Copy(key, record.key), value);
    }
    return totals;
  }

  bool Change(const char* section, const char* key, const char* value) override {
    changed = Find(section, key);
    newValue = value;
    return changed != nullptr;
  }

  bool Save(const char* path, bool) override {
    const char* const end = text.get() + size;
    if (changed == nullptr) return WritePieces(path, {{text.get(), end}});
    const std::string_view old = changed->value;
    return WritePieces(path, {{text.get(), old.begin()}, newValue, {old.end(), end}});
  }

 private:
  // A line is a comment, an entry, a header "[name]" or "section name {", or nothing; neither
  // key nor value of the data has blanks around it, but the loop looks, as a reader has to.
  void Index() {
    // Untouched room costs nothing, growing would.
    records.reserve(size / 8);
    const char* const end = text.get() + size;
    for (const char* line = text.get(); line < end;) {
      const char* stop = FindByte(line, '\n', end);
      if (stop == nullptr) stop = end;
      if (*line != '#') IndexLine(line, stop);
      line = stop + 1;
    }
  }

  void IndexLine(const char* line, const char* stop) {
    const char* const equals = FindByte(line, '=', stop);
    if (equals == nullptr) {
      // "section " before the name, " {" after it.
      if (stop - line > 8 && stop[-1] == '{') {
        sections.push_back({{line + 8, stop - 2}, records.size()});
      }
      return;
    }
    const char* keyEnd = equals;
    const char* const value = equals + 1;
    while (line < keyEnd && *line <= ' ') ++line;
    while (keyEnd > line && keyEnd[-1] <= ' ') --keyEnd;
    while (stop > value && stop[-1] <= ' ') --stop;
    records.push_back({{line, keyEnd}, {value, stop}});
  }

  const Record* Find(std::string_view section, std::string_view key) const {
    const Record* record = records.data();
    const Record* stop = record + records.size();
    for (std::size_t i = 0; i < sections.size(); ++i) {
      if (sections[i].name != section) continue;
      record = records.data() + sections[i].firstRecord;
      if (i + 1 < sections.size()) stop = records.data() + sections[i + 1].firstRecord;
      break;
    }
    while (record != stop && record->key != key) ++record;
    return record != stop ? record : nullptr;
  }

  std::unique_ptr<char[]> text;
  std::size_t size = 0;
  std::vector<Record> records;
  std::vector<Section> sections;
  const Record* changed = nullptr;
  std::string_view newValue;
};

}  // namespace

std::unique_ptr<KeyFile> MakeKeyFile(bool) { return std::make_unique<Bytes>(); }
