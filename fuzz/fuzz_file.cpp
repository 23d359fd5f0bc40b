// SPDX-License-Identifier: MIT
// Flat and sectioned files beside a model, through the steps that the input decides.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <ios>
#include <stdexcept>
#include <string_view>

#include "../tests/FileWalk.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const FileTokens tokens[] = {
      kFlatTokens,
      {"", "", "", ":=", "#", "\t"},
      {"", "", "", " = ", "//", ""},
      {"", "", "", "\t", "#", "  "},
      {"", "", "", "=", "//", "a="},
      {"", "", "", "=", "", ""},
      {"", "", "", "==", "#", " "},
      kPresetTokens,
      kTwoLineTokens,
      {"section", "\n{\n", "\n}\n", "=", "#", ""},
      {"", "\nBEGIN\n", "END\n", ":=", "//", "\t"},
      {"a", "\n{", "\n}", "==", ";;", ""},
      {"section", "{{", "}}", "=", "#", ""},
      {"{\n", " {\n", "}\n", " ", "#", "\t"},  // keyword and separator are in the start token
  };
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  Choices choices(input);
  const FileTokens& chosen = choices.OneOf(tokens);
  try {
    if (*chosen.start == '\0') FileWalk<FlatFile>(chosen, choices).Run();
    if (*chosen.start != '\0') FileWalk<SectionFile>(chosen, choices).Run();
  } catch (const std::runtime_error& failure) {
    const auto kept = std::filesystem::temp_directory_path() / "failed-walk.input";
    TestFiles::Write(kept.string(), input, std::ios::binary);
    std::fprintf(stderr, "%s\ninput kept in %s; in fuzz/corpus/file it is walked with the others\n",
                 failure.what(), kept.string().c_str());
    std::abort();
  }
  return 0;
}
