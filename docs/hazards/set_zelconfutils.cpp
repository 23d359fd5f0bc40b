// SPDX-License-Identifier: MIT
// set_zelconfutils FILE KEY VALUE            SetEntry in a flat file
// set_zelconfutils FILE SECTION KEY VALUE    SetSectionEntry in a file with blocks
#include <cstdio>

#include "ConfigFile.h"
#include "MultiSectionFile.h"

int main(int count, char** arguments) try {
  if (count == 4) {
    Configuration::ConfigFile file(arguments[1], false, false, false, "=", "#", nullptr);
    return file.SetEntry(arguments[2], arguments[3]) != 0 && file.Save(true, nullptr) ? 0 : 1;
  }
  Configuration::MultiSectionConfigFile file(arguments[1], false, false, false, false);
  if (!file.GotoSection(arguments[2])) return 1;
  return file.SetSectionEntry(arguments[3], arguments[4]) != 0 && file.Save(true, nullptr) ? 0 : 1;
} catch (const ConfigException& error) {
  std::puts(error.what());
  return 1;
}
