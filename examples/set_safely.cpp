// SPDX-License-Identifier: MIT
// set_safely [--plain] FILE KEY VALUE...: sets one entry to each value in turn and saves each time,
// safely, or with the plain `Save` to see the difference. After a failed safe save the file is the
// old one and the object goes on; after a failed plain save neither is of use.
#include <cstdio>
#include <cstring>

#include "ConfigFile.h"
#include "safe_save.h"

namespace {

bool Save(Configuration::ConfigFile& file, const char* path, const char* key) try {
  SafeSave(path, ImageOf(file));
  return true;
} catch (const std::runtime_error& error) {
  char kept[64] = "";
  file.GetEntry(key, kept, sizeof kept);
  std::printf("not saved: %s; in memory %s=%s\n", error.what(), key, kept);
  return false;
}

}  // namespace

int main(int count, char** arguments) try {
  const bool plain = count > 1 && std::strcmp(arguments[1], "--plain") == 0;
  char** rest = arguments + (plain ? 2 : 1);
  if (arguments + count - rest < 3) return std::puts("set_safely [--plain] FILE KEY VALUE..."), 2;
  const char* path = rest[0];
  const char* key = rest[1];

  for (const std::string& name : LeftoverSaves(path))
    std::printf("left by a save that was killed, or one still running: %s\n", name.c_str());
  Configuration::ConfigFile file(path, false, true, false, "=", "#", nullptr);
  if (!plain) {
    if (!file.GotoEntry(key) && MendLastLine(path)) file.Reload();
    RequireHolds(path, ImageOf(file));
  }
  bool saved = true;
  for (char** value = rest + 2; *value != nullptr; ++value) {
    file.SetEntry(key, *value);
    if (plain) {
      file.Save(true, nullptr);
    } else {
      saved = Save(file, path, key) && saved;
    }
  }
  if (saved) std::printf("saved: %s\n", key);
  return saved ? 0 : 1;
} catch (const std::exception& error) {
  std::printf("%s\n", error.what());
  return 1;
}
