// SPDX-License-Identifier: MIT
// set_safely [--plain] FILE KEY VALUE...: sets one entry to each value in turn and saves each time,
// safely, or with the plain `Save` to see the difference. After a failed safe save the file is the
// old one and the object goes on; after a failed plain save neither is of use.
#include <cstdio>
#include <cstring>
#include <system_error>

#include "ConfigFile.h"
#include "safe_save.h"

int main(int count, char** arguments) try {
  const bool plain = count > 1 && std::strcmp(arguments[1], "--plain") == 0;
  char** rest = arguments + (plain ? 2 : 1);
  if (arguments + count - rest < 3) return std::puts("set_safely [--plain] FILE KEY VALUE..."), 2;
  const char* path = rest[0];
  const char* key = rest[1];

  int failed = 0;
  Configuration::ConfigFile file(path, false, true, false, "=", "#", nullptr);
  for (char** value = rest + 2; *value != nullptr; ++value) {
    file.SetEntry(key, *value);
    try {
      if (plain) {
        file.Save(true, nullptr);
      } else {
        SafeSave(path, ImageOf(file));
      }
    } catch (const std::system_error& error) {
      char kept[64] = "";
      file.GetEntry(key, kept, sizeof kept);
      std::printf("not saved: %s; in memory %s=%s\n", error.what(), key, kept);
      failed = 1;
    }
  }
  if (failed == 0) std::printf("saved: %s\n", key);
  return failed;
} catch (const std::exception& error) {
  std::printf("%s\n", error.what());
  return 1;
}
