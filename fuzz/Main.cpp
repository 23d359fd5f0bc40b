// SPDX-License-Identifier: MIT
// Runs a fuzz target over the inputs of a directory and over a number of others that are patched
// together from them, for builds without libFuzzer: DIRECTORY NUMBER [SEED]
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "../tests/FailingNew.h"
#include "../tests/TestFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  std::vector<std::string> kept;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    kept.push_back(TestFiles::Read(entry.path().string(), std::ios::binary));
  }
  std::sort(kept.begin(), kept.end());
  const std::string path = TestFiles::Path("last.input");
  std::fprintf(stderr, "after a crash its input stands in %s\n",
               std::filesystem::absolute(path).string().c_str());
  const auto run = [&](const std::string& input) {
    TestFiles::Write(path, input, std::ios::binary);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  };
  for (const std::string& input : kept) run(input);
  std::mt19937 random(argc > 3 ? static_cast<unsigned>(std::stoul(argv[3])) : 1);
  for (int left = std::stoi(argv[2]); left > 0; --left) {
    std::string input;
    for (auto size = random() % 1000; input.size() < size; input += static_cast<char>(random())) {
      const std::string& piece = kept.at(random() % kept.size());
      input += piece.substr(random() % (piece.size() + 1), random() % 20);
    }
    const long blocks = FailingNew::LiveBlocks();
    run(input);
    if (FailingNew::LiveBlocks() != blocks) {
      throw std::logic_error("a leak, " + std::to_string(left - 1) + " inputs before the last");
    }
  }
}
