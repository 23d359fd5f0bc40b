// SPDX-License-Identifier: MIT
// set_zelconfutils FILE KEY VALUE: sets one entry that exists. White space behind the separator
// belongs to the value, so the old value's goes in front of the new one.
#include <cstdio>
#include <cstring>
#include <string>

#include "ConfigFile.h"
#include "SmartBuffer.h"

int main(int, char** arguments) try {
  Configuration::ConfigFile file(arguments[1], false, false, false, "=", "#", nullptr);
  if (!file.GotoEntry(arguments[2])) return 1;
  SmartBuffer old;
  file.GetCurrentEntry(nullptr, 0, &old, old.size());
  std::string value(&old, std::strspn(&old, " \t"));
  file.SetCurrentEntry((value + arguments[3]).c_str());
  return file.Save(true, nullptr) ? 0 : 1;
} catch (const ConfigException& error) {
  std::puts(error.what());
  return 1;
}
