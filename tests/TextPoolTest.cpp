// SPDX-License-Identifier: MIT
// Where texts lie, and what must not be touched.
#include "config/memory/TextPool.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "config/memory/Poison.h"

namespace {

using namespace Configuration;

// A byte past a slab's end damages the heap, which the release of the slab tells. The address
// sanitizer is told what is not lent.
TEST(TextPool, TextsLieSideBySideAndKeepToTheirOwnBytes) {
  constexpr std::size_t kShortest = sizeof(void*), kLongestUsual = 254;
  for (std::size_t n = kShortest; n <= kLongestUsual; ++n) {
    SCOPED_TRACE(n);
    TextPool pool;
    char* texts[40];
    const auto expected = [&](std::size_t i) {
      return std::string(n + i % 20, static_cast<char>('a' + i % 26));
    };
    const auto take = [&](std::size_t i) {
      texts[i] = std::strcpy(pool.Take(n + i % 20), expected(i).c_str());
    };
    for (std::size_t i = 0; i < 40; ++i) take(i);
    if (n < 200) {
      EXPECT_LT(texts[1] - texts[0], static_cast<long>(n + 10 + Poison::kGapBytes));
    }
    for (std::size_t i = 0; i < 40; i += 2) pool.Give(texts[i]);
    for (std::size_t i = 0; i < 40; i += 2) take(i);
    for (std::size_t i = 0; i < 40; ++i) EXPECT_EQ(texts[i], expected(i));
    EXPECT_EQ(Poison::IsForbidden(texts[0] + n + 1), Poison::kGapBytes > 0);
    pool.Give(texts[0]);
    for (std::size_t i = 0; i <= n; ++i) {
      EXPECT_EQ(Poison::IsForbidden(texts[0] + i), Poison::kGapBytes > 0);
    }
  }
}

}  // namespace
