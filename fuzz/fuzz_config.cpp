// SPDX-License-Identifier: MIT
// A flat file and calls on it, held against the model of the tests. Input: a byte for the tokens,
// one for the number of calls, three for each call; the rest is the file.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "../tests/ConfigModel.h"
#include "../tests/TestFiles.h"

namespace {

void Require(const std::string& difference) {
  if (difference.empty()) return;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}

// The key of the entry that `byte` chooses, or a new one.
std::string KeyFor(const OpenConfigFile& file, unsigned byte) {
  unsigned n = byte % 8;
  for (const Configuration::ConfigEntry& entry : *file.entries) {
    if (n-- == 0) return std::string(entry.Name()).c_str();
  }
  return std::string(byte % 7, 'k');
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TestFiles::TemporaryDirectory directory;
  static const std::string path = directory.Path("file");
  static const char* const separators[] = {"=", ":=", " = ", "\t"};
  if (size < 2) return 0;
  const char* const separator = separators[data[0] % 4];
  const char* const comment = (data[0] & 4) != 0 ? "//" : "#";
  const char* const prefix = (data[0] & 8) != 0 ? "  " : "";
  const std::uint8_t* const end = data + size;
  const std::uint8_t* const calls = data + 2;
  const std::uint8_t* content = calls;
  for (unsigned i = data[1] % 32u; i > 0 && end - content >= 3; --i) content += 3;

  const std::string bytes(content, end);
  TestFiles::Write(path, bytes);
  OpenConfigFile file(path, separator, comment, prefix);
  ConfigModel::File model({separator, comment, prefix}, bytes);
  for (const std::uint8_t* call = calls; call != content; call += 3) {
    const std::string_view operation = ConfigModel::kOperations[call[0] % 24u];
    const std::string key = operation == "AttachToBuffer" ? path : KeyFor(file, call[1]);
    const std::string value(call[2] % 64u * (call[0] < 240 ? 1 : 40), 'v');
    Require(Difference(file, model,
                       {operation, key, value, call[1] % 41u, call[2] % 41u, call[1] % 2 == 0}));
  }
  for (const char* operation : {"AttachToBuffer", "Save", "Reload"}) {
    Require(Difference(file, model, {operation, path, "", 0, 0, size % 2 == 0}));
  }
  return 0;
}
