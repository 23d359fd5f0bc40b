// SPDX-License-Identifier: MIT
// A sectioned file and steps on it, held against the model of the tests. Input: a byte for the
// tokens, one for the number of steps, two for each step; the rest is the file.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "../tests/SectionModel.h"
#include "ConfigException.h"

namespace {

void RequireEqual(const std::string& left, const std::string& right) {
  if (left == right) return;
  std::fprintf(stderr, "%s\n-- instead of --\n%s\n", left.c_str(), right.c_str());
  std::abort();
}

// Loads the image into both; false when it ends inside a section.
bool Take(OpenSectionFile& file, SectionModel& model, const std::string& image) {
  const bool whole = model.Load(image);
  bool taken = true;
  try {
    file.Take(image);
  } catch (const ConfigException&) {
    taken = false;
  }
  RequireEqual(Told(taken), Told(whole));
  return taken;
}

void RequireAgreement(OpenSectionFile& file, const SectionModel& model) {
  RequireEqual(file.Image(), model.Image());
  RequireEqual(file.Picture(), model.Picture());
  RequireEqual(file.Fault(), "");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const SectionTokens tokens[] = {{"section", "{\n", "}\n", "=", "#", ""},
                                         {"section", "\n{\n", "\n}\n", "=", "#", ""},
                                         {"", "\n[[", "]]", ":=", "//", "\t"},
                                         {"", " {\n", "}\n", " ", "#", "\t"}};
  static const std::string texts[] = {"",  "a", "b", "k1", "section", std::string(40, 'x'),
                                      "1", "}"};
  if (size < 2 || size < 2 + data[1] % 32u * 2) return 0;
  const std::uint8_t* const content = data + 2 + data[1] % 32u * 2;
  const std::string image(content, data + size);
  OpenSectionFile file(tokens[data[0] % 4u]);
  SectionModel model(tokens[data[0] % 4u]);
  if (!Take(file, model, image)) return 0;
  RequireEqual(file.Image(), image);
  RequireAgreement(file, model);
  for (const std::uint8_t* byte = data + 2; byte != content; byte += 2) {
    const SectionStep& step = SectionSteps()[byte[0] % std::size(SectionSteps())];
    const std::string &a = texts[byte[1] % 8u], &b = texts[byte[1] / 8u % 8u];
    RequireEqual(step.run(file, a.c_str(), b.c_str()), step.On(model, a, b));
    RequireAgreement(file, model);
  }
  if (Take(file, model, file.Image())) RequireAgreement(file, model);
  return 0;
}
