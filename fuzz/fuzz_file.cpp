// SPDX-License-Identifier: MIT
// Flat and sectioned files beside a model, through the steps that the input decides.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "../tests/FileWalk.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    RunFileWalk({reinterpret_cast<const char*>(data), size});
  } catch (const std::runtime_error& failure) {
    std::fputs(failure.what(), stderr);
    std::abort();
  }
  return 0;
}
