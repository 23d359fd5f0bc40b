// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_FUZZ_FUZZED_FILE_H
#define ZELCONFUTILS_FUZZ_FUZZED_FILE_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "../tests/FileModel.h"

inline void Require(const std::string& difference) {
  if (difference.empty()) return;
  std::fprintf(stderr, "%s\n", difference.c_str());
  std::abort();
}

/// A file and steps on it, held against the model of the tests. Input: a byte for the tokens, one
/// for the number of steps, two for each step; the rest is the file.
template <class F>
int HoldAgainstModel(const FileTokens (&tokens)[4], const std::uint8_t* data, std::size_t size) {
  static const std::string texts[] = {
      "", "a", "b", "k1", "section", std::string(40, 'x'), " = ", std::string(1000, 'v')};
  if (size < 2 || size < 2 + data[1] % 32u * 2) return 0;
  const std::uint8_t* const content = data + 2 + data[1] % 32u * 2;
  Twin<F> twin(tokens[data[0] % 4u]);
  F& file = twin.file;
  FileModel& model = twin.model;
  Require(twin.Take(std::string(content, data + size)));
  for (const std::uint8_t* byte = data + 2; byte != content && file.lines != nullptr; byte += 2) {
    const Step<F>& step = Steps<F>()[byte[0] % Steps<F>().size()];
    const std::string &a = texts[byte[1] % 8u], &b = texts[byte[1] / 8u % 8u];
    Require(twin.Difference(step.run(file, a.c_str(), b.c_str()), step.On(model, a, b)));
  }
  if (file.lines == nullptr) return 0;
  const std::string image = model.Image();
  const auto attach = [&] { return Told(file.AttachToBuffer(image.c_str(), nullptr)); };
  Require(twin.Difference(Outcome(attach), model.Attach(image.c_str())));
  return 0;
}

#endif
