// SPDX-License-Identifier: MIT
// Compares a new key with all that it has: for small files only. Drops comments.
#include <iniparser/iniparser.h>

#include <cstdio>

#include "KeyFile.h"

class Parser : public KeyFile {
 public:
  ~Parser() override {
    if (file != nullptr) iniparser_freedict(file);
  }
  bool Load(const char* path) override {
    file = iniparser_load(path);
    return file != nullptr;
  }
  std::size_t LookUp(const char* section, const char* key, char* buffer) override {
    char name[kTextBytes];
    const char* value = iniparser_getstring(file, Name(name, section, key), nullptr);
    return value != nullptr ? CopyText(buffer, value) : 0;
  }
  // Its names are "section:key"; a section stands among them without a value.
  WalkTotals Walk() override {
    WalkTotals totals;
    for (int i = 0, seen = 0; seen < file->n; ++i) {
      if (file->key[i] == nullptr) continue;
      ++seen;
      const char* colon = std::strchr(file->key[i], ':');
      if (colon != nullptr && file->val[i] != nullptr) totals.CopyAndCount(colon + 1, file->val[i]);
    }
    return totals;
  }
  bool Change(const char* section, const char* key, const char* value) override {
    char name[kTextBytes];
    return iniparser_set(file, Name(name, section, key), value) == 0;
  }
  bool Save(const char* path, bool) override {
    std::FILE* stream = std::fopen(path, "w");
    if (stream == nullptr) return false;
    iniparser_dump_ini(file, stream);
    return std::fclose(stream) == 0;
  }

 private:
  static const char* Name(char* name, const char* section, const char* key) {
    const std::size_t length = CopyText(name, section);
    name[length] = ':';
    CopyText(name + length + 1, key);
    return name;
  }

  dictionary* file = nullptr;
};

std::unique_ptr<KeyFile> MakeKeyFile(bool) { return std::make_unique<Parser>(); }
