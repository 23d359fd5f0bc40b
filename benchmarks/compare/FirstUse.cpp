// SPDX-License-Identifier: MIT
// What a command-line tool pays: FILE SECTION KEY, one value, and the end.
#include "KeyFile.h"

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  char value[kTextBytes];
  const auto file = MakeKeyFile(false);
  return file->Load(argv[1]) && file->LookUp(argv[2], argv[3], value) != 0 ? 0 : 1;
}
