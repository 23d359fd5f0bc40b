// SPDX-License-Identifier: MIT
// Writes that fail in the middle, as only the GNU runtime can make them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "config/lines/ConfigLineList.h"

namespace {

// The writer of a stream that takes 20000 bytes and then refuses one write, the first or a later
// one, and takes all others.
ssize_t TakeSome(void* cookie, const char*, size_t count) {
  size_t& left = *static_cast<size_t*>(cookie);
  if (left == 0) {
    left = 1 << 30;
    errno = ENOSPC;
    return 0;
  }
  const size_t taken = std::min(left, count);
  left -= taken;
  return static_cast<ssize_t>(taken);
}

TEST(RefusedWrite, OnceInTheMiddleIsEnough) {
  Configuration::ConfigLineList lines;
  for (int i = 0; i < 20000; ++i) lines.AddLine("key=value\n", true);
  for (const bool coalesced : {false, true}) {
    for (const std::size_t limit : {0u, 1u, 4096u, 20000u, 150000u, 199999u}) {
      std::size_t left = limit;
      std::FILE* stream = fopencookie(&left, "w", {nullptr, TakeSome, nullptr, nullptr});
      EXPECT_FALSE(lines.WriteAll(stream, coalesced) && std::fflush(stream) == 0) << limit;
      std::fclose(stream);
    }
  }
}

}  // namespace
