// SPDX-License-Identifier: MIT
#include "FuzzedFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const FileTokens tokens[] = {{"section", "{\n", "}\n", "=", "#", ""},
                                      {"section", "\n{\n", "\n}\n", "=", "#", ""},
                                      {"", "\n[[", "]]", ":=", "//", "\t"},
                                      {"", " {\n", "}\n", " ", "#", "\t"}};
  return HoldAgainstModel<OpenSectionFile>(tokens, data, size);
}
