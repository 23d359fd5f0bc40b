// SPDX-License-Identifier: MIT
// Random edits, held against the model. ZELCONFUTILS_TEST_SEED repeats a run.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <random>

#include "ConfigModel.h"
#include "TestFiles.h"

namespace {

class Random {
 public:
  explicit Random(unsigned seed) : generator_(seed) {}
  std::size_t Below(std::size_t end) { return generator_() % end; }
  // Up to `most` pieces: tokens, white space, letters, now and then a long run of one byte.
  std::string Pieces(std::size_t most, bool isFile) {
    static const std::string pieces[] = {
        "a", "b",  "key", " ",     "\t",   "=",  ":=", " = ",
        "#", "//", "\v",  "v\xE4", "\r\n", "\n", "\n", std::string(1, '\0')};
    std::string text;
    for (std::size_t n = Below(most + 1); n > 0; --n) {
      text += pieces[Below(isFile ? 16 : 13)];
      if (Below(40) == 0) text.append(Below(isFile ? 1500 : 60), " x"[Below(2)]);
      if (Below(1000) == 0) text.append(1000 + Below(40), " x"[Below(2)]);
    }
    return text;
  }

 private:
  std::mt19937 generator_;
};

TEST(ConfigModel, AgreesWithRandomEdits) {
  static const ConfigModel::Tokens tokens[] = {
      {"=", "#", ""},    {":=", "#", "\t"}, {" = ", "//", "  "}, {"\t", "#", ""},
      {"=", "//", "a="}, {"=", "", "#"},    {"==", "#", " = "},  {"", "#", ""}};
  const char* given = std::getenv("ZELCONFUTILS_TEST_SEED");
  const unsigned seed =
      given != nullptr ? static_cast<unsigned>(std::atol(given)) : std::random_device()();
  std::cout << "ZELCONFUTILS_TEST_SEED=" << seed << "\n";
  Random random(seed);
  TestFiles::TemporaryDirectory directory;
  const std::string path = directory.Path("file");
  for (int round = 0; round < 400; ++round) {
    const ConfigModel::Tokens& with = tokens[random.Below(std::size(tokens))];
    const std::string bytes = random.Pieces(60, true);
    ConfigModel::File model(with, bytes);
    TestFiles::Write(path, bytes);
    OpenConfigFile file(path, with.separator.c_str(), with.comment.c_str(), with.prefix.c_str());
    for (int step = 0; step < 60; ++step) {
      ConfigModel::Call call = {ConfigModel::kOperations[random.Below(20)],
                                random.Pieces(3, false),
                                random.Pieces(6, false),
                                random.Below(41),
                                random.Below(41),
                                random.Below(2) == 1};
      if (random.Below(30) == 0) {  // seldom, since these forget what came before
        call.operation = ConfigModel::kOperations[20 + random.Below(4)];
        call.key = path;
        if (call.operation == "Save") std::filesystem::remove(path);
      }
      const std::string before = ConfigModel::State(file) + file.Image();
      ASSERT_EQ(Difference(file, model, call), "")
          << call.operation << ", key " << testing::PrintToString(call.key) << ", value "
          << testing::PrintToString(call.value) << ", before:\n"
          << before;
      if (call.operation == "Save") {
        ASSERT_EQ(TestFiles::Read(path), model.Image());
      }
    }
  }
}

}  // namespace
