// SPDX-License-Identifier: MIT
// Runs a fuzz target over the inputs of a directory and over a number of others that are patched
// together from them, for builds without libFuzzer: DIRECTORY NUMBER [SEED]
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "../tests/FailingNew.h"
#include "../tests/TestFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void Run(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  std::vector<std::string> inputs;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    inputs.push_back(TestFiles::Read(entry.path().string(), std::ios::binary));
  }
  std::sort(inputs.begin(), inputs.end());
  for (const std::string& input : inputs) Run(input);
  std::mt19937 random(static_cast<unsigned>(argc > 3 ? std::atoi(argv[3]) : 1));
  for (int i = std::atoi(argv[2]); i > 0; --i) {
    std::string input;
    for (auto size = random() % 1000; input.size() < size; input += static_cast<char>(random())) {
      const std::string& piece = inputs[random() % inputs.size()];
      input += piece.substr(random() % (piece.size() + 1), random() % 20);
    }
    const long blocks = FailingNew::LiveBlocks();
    Run(input);
    if (FailingNew::LiveBlocks() == blocks) continue;
    std::fprintf(stderr, "a leak, %d inputs before the last\n", i - 1);
    return 1;
  }
  std::printf("%zu inputs kept, %s made\n", inputs.size(), argv[2]);
  return inputs.empty() ? 1 : 0;
}
