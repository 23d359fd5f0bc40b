// SPDX-License-Identifier: MIT
#define SI_NO_CONVERSION  // plain chars in and out
#include <SimpleIni.h>

#include "KeyFile.h"

class Simple : public KeyFile {
 public:
  bool Load(const char* path) override { return file.LoadFile(path) == SI_OK; }
  std::size_t LookUp(const char* section, const char* key, char* buffer) override {
    const char* value = file.GetValue(section, key);
    return value != nullptr ? CopyText(buffer, value) : 0;
  }
  WalkTotals Walk() override {
    WalkTotals totals;
    CSimpleIniCaseA::TNamesDepend sections;
    file.GetAllSections(sections);
    for (const auto& section : sections) {
      for (const auto& entry : *file.GetSection(section.pItem)) {
        totals.CopyAndCount(entry.first.pItem, entry.second);
      }
    }
    return totals;
  }
  bool Change(const char* section, const char* key, const char* value) override {
    return file.SetValue(section, key, value) == SI_UPDATED;
  }
  bool Save(const char* path, bool) override { return file.SaveFile(path, false) == SI_OK; }

 private:
  CSimpleIniCaseA file{true};
};

std::unique_ptr<KeyFile> MakeKeyFile(bool) { return std::make_unique<Simple>(); }
