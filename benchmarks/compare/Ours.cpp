// SPDX-License-Identifier: MIT
#include "ConfigFile.h"
#include "KeyFile.h"
#include "MultiSectionFile.h"

namespace {

using Configuration::ConfigFile;
using Configuration::MultiSectionConfigFile;

class Flat : public KeyFile {
 public:
  bool Load(const char* path) override {
    file = std::make_unique<ConfigFile>(path, false, true, false, "=", "#", nullptr);
    return true;
  }
  std::size_t LookUp(const char*, const char* key, char* buffer) override {
    return file->GetEntry(key, buffer, kTextBytes);
  }
  WalkTotals Walk() override {
    WalkTotals totals;
    char key[kTextBytes];
    char value[kTextBytes];
    file->Restart();
    while (file->GotoNextEntry()) {
      totals.Count(file->GetCurrentEntry(key, kTextBytes, value, kTextBytes), value);
    }
    return totals;
  }
  bool Change(const char*, const char* key, const char* value) override {
    return file->SetEntry(key, value) != 0;
  }
  bool Save(const char* path, bool inOneCall) override { return file->Save(inOneCall, path); }

 private:
  std::unique_ptr<ConfigFile> file;
};

class Sectioned : public KeyFile {
 public:
  bool Load(const char* path) override {
    file = std::make_unique<MultiSectionConfigFile>(path, false, false, true, false);
    return true;
  }
  std::size_t LookUp(const char* section, const char* key, char* buffer) override {
    return file->GotoSection(section) ? file->GetSectionEntry(key, buffer, kTextBytes) : 0;
  }
  WalkTotals Walk() override {
    WalkTotals totals;
    char key[kTextBytes];
    char value[kTextBytes];
    file->Restart();
    while (file->GotoNextSection()) {
      file->RestartSection();
      while (file->GotoSecNextEntry()) {
        totals.Count(file->GetSecCurrentEntry(key, kTextBytes, value, kTextBytes), value);
      }
    }
    return totals;
  }
  bool Change(const char* section, const char* key, const char* value) override {
    return file->GotoSection(section) && file->SetSectionEntry(key, value) != 0;
  }
  bool Save(const char* path, bool inOneCall) override { return file->Save(inOneCall, path); }

 private:
  std::unique_ptr<MultiSectionConfigFile> file;
};

}  // namespace

std::unique_ptr<KeyFile> MakeKeyFile(bool sections) {
  if (sections) return std::make_unique<Sectioned>();
  return std::make_unique<Flat>();
}
