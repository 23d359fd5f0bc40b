// SPDX-License-Identifier: MIT
// locked_update FILE KEY COUNT: adds 1 to an entry, COUNT times, beside other processes that do the
// same. The library locks a file during one read or one save; what lies between them, read, edit
// and save, is one step only for those who agree on a lock of their own.
#include <cstdio>
#include <cstdlib>

#include "ConfigFile.h"
#include "SmartBuffer.h"
#include "safe_save.h"

namespace {

void Increment(const char* path, const char* key) {
  const CompanionLock lock(path);
  Configuration::ConfigFile file(path, false, true, false, "=", "#", nullptr);
  if (!file.GotoEntry(key) && MendLastLine(path)) file.Reload();
  RequireHolds(path, ImageOf(file));
  SmartBuffer value;
  file.GetEntry(key, &value, value.size());
  if (file.SetEntry(key, std::to_string(std::atol(&value) + 1).c_str()) == 0)
    throw Refused(std::string(path) + ": no line takes this entry: " + key);
  SafeSave(path, ImageOf(file));
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 4) return std::puts("locked_update FILE KEY COUNT"), 2;
  for (long n = std::atol(arguments[3]); n > 0; --n) Increment(arguments[1], arguments[2]);
  return 0;
} catch (const std::exception& error) {
  std::printf("%s\n", error.what());
  return 1;
}
