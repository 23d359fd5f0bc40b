// SPDX-License-Identifier: MIT
#include "FuzzedFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const FileTokens tokens[] = {{"", "", "", "=", "#", ""},
                                      {"", "", "", ":=", "#", "\t"},
                                      {"", "", "", " = ", "//", "  "},
                                      {"", "", "", "\t", "#", ""}};
  return HoldAgainstModel<OpenConfigFile>(tokens, data, size);
}
