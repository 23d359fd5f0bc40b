// SPDX-License-Identifier: MIT
// What the work costs at least: the bytes read with fread and written with fwrite, one loop over
// them that finds the entries, and a contiguous array of what it found. Reads either file form.
#include <sys/stat.h>

#include <cstdio>
#include <vector>

#include "KeyFile.h"

namespace {

struct Record {
  const char* key;
  std::size_t keyLength;
  const char* value;
  std::size_t valueLength;
};

struct Section {
  const char* name;
  std::size_t nameLength;
  std::size_t firstRecord;
};

class Bytes : public KeyFile {
 public:
  explicit Bytes(bool manySections) : hasSections(manySections) {}

  bool Load(const char* path) override {
    std::FILE* stream = std::fopen(path, "rb");
    if (stream == nullptr) return false;
    struct stat status;
    if (fstat(fileno(stream), &status) != 0) return false;
    size = static_cast<std::size_t>(status.st_size);
    text.reset(new char[size]);
    const bool read = std::fread(text.get(), 1, size, stream) == size;
    std::fclose(stream);
    Index();
    return read;
  }

  std::size_t LookUp(const char* section, const char* key, char* buffer) override {
    const Record* record = Find(section, key);
    return record != nullptr ? Copy(buffer, record->value, record->valueLength) : 0;
  }

  WalkTotals Walk() override {
    WalkTotals totals;
    char key[kTextBytes];
    char value[kTextBytes];
    for (const Record& record : records) {
      Copy(value, record.value, record.valueLength);
      totals.Count(Copy(key, record.key, record.keyLength), value);
    }
    return totals;
  }

  bool Change(const char* section, const char* key, const char* value) override {
    changed = Find(section, key);
    newValue = value;
    return changed != nullptr;
  }

  bool Save(const char* path) override {
    std::FILE* stream = std::fopen(path, "wb");
    if (stream == nullptr) return false;
    std::setvbuf(stream, nullptr, _IONBF, 0);
    bool written = true;
    const char* rest = text.get();
    if (changed != nullptr) {
      const std::size_t length = std::strlen(newValue);
      const std::size_t front = static_cast<std::size_t>(changed->value - rest);
      written = std::fwrite(rest, 1, front, stream) == front &&
                std::fwrite(newValue, 1, length, stream) == length;
      rest = changed->value + changed->valueLength;
    }
    const std::size_t left = static_cast<std::size_t>(text.get() + size - rest);
    written = written && std::fwrite(rest, 1, left, stream) == left;
    return std::fclose(stream) == 0 && written;
  }

 private:
  static std::size_t Copy(char* buffer, const char* bytes, std::size_t length) {
    std::memcpy(buffer, bytes, length);
    buffer[length] = '\0';
    return length;
  }

  // A line is a comment, an entry, a header "[name]" or "section name {", or nothing; neither
  // key nor value of the data has blanks around it, but the loop looks, as a reader has to.
  void Index() {
    // Untouched room costs nothing, growing would.
    records.reserve(size / 8);
    const char* const end = text.get() + size;
    for (const char* line = text.get(); line < end;) {
      const char* stop =
          static_cast<const char*>(std::memchr(line, '\n', static_cast<std::size_t>(end - line)));
      if (stop == nullptr) stop = end;
      if (*line != '#') IndexLine(line, stop);
      line = stop + 1;
    }
  }

  void IndexLine(const char* line, const char* stop) {
    const char* equals =
        static_cast<const char*>(std::memchr(line, '=', static_cast<std::size_t>(stop - line)));
    if (equals == nullptr) {
      if (hasSections) IndexHeader(line, stop);
      return;
    }
    const char* keyEnd = equals;
    const char* value = equals + 1;
    while (line < keyEnd && *line <= ' ') ++line;
    while (keyEnd > line && keyEnd[-1] <= ' ') --keyEnd;
    while (stop > value && stop[-1] <= ' ') --stop;
    records.push_back({line, static_cast<std::size_t>(keyEnd - line), value,
                       static_cast<std::size_t>(stop - value)});
  }

  void IndexHeader(const char* line, const char* stop) {
    if (stop - line > 8 && stop[-1] == '{') {
      sections.push_back({line + 8, static_cast<std::size_t>(stop - line - 10), records.size()});
    }
  }

  const Record* Find(const char* section, const char* key) const {
    const Record* record = records.data();
    const Record* stop = record + records.size();
    if (hasSections) {
      const std::size_t length = std::strlen(section);
      for (std::size_t i = 0; i < sections.size(); ++i) {
        if (sections[i].nameLength != length) continue;
        if (std::memcmp(sections[i].name, section, length) != 0) continue;
        record = records.data() + sections[i].firstRecord;
        if (i + 1 < sections.size()) stop = records.data() + sections[i + 1].firstRecord;
        break;
      }
    }
    const std::size_t length = std::strlen(key);
    for (; record != stop; ++record) {
      if (record->keyLength == length && std::memcmp(record->key, key, length) == 0) return record;
    }
    return nullptr;
  }

  bool hasSections;
  std::unique_ptr<char[]> text;
  std::size_t size = 0;
  std::vector<Record> records;
  std::vector<Section> sections;
  const Record* changed = nullptr;
  const char* newValue = nullptr;
};

}  // namespace

std::unique_ptr<KeyFile> MakeKeyFile(bool sections) { return std::make_unique<Bytes>(sections); }
