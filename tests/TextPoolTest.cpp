// SPDX-License-Identifier: MIT
// Where texts lie, and what must not be touched; that each keeps to its own bytes is a rule of
// the files that they belong to.
#include "config/memory/TextPool.h"

#include <gtest/gtest.h>

#include <cstring>

#include "config/memory/Poison.h"

namespace {

using namespace Configuration;

constexpr std::size_t kShortest = sizeof(void*);
constexpr std::size_t kLongestUsual = 254;

TEST(TextPool, UsualTextsLieSideBySide) {
  TextPool pool;
  pool.Expect(kLongestUsual, kLongestUsual * kLongestUsual);
  char* last = pool.Take(kShortest);
  for (std::size_t n = kShortest + 1; n <= kLongestUsual; ++n) {
    char* text = pool.Take(n);
    EXPECT_LT(text, last + n + 2 + 8 + Poison::kGapBytes) << n;
    last = text;
  }
}

// A byte past a slab's end damages the heap, which the release of the slab tells.
TEST(TextPool, TextsOfEachSizeKeepToTheirSlabs) {
  for (std::size_t n = kShortest; n <= kLongestUsual; ++n) {
    TextPool pool;
    for (int i = 0; i < 40; ++i) std::memset(pool.Take(n), 'x', n + 1);
  }
}

TEST(TextPool, WhatIsNotLentMayNotBeTouched) {
  if (Poison::kGapBytes == 0) GTEST_SKIP() << "only the address sanitizer can tell";
  TextPool pool;
  for (std::size_t n = kShortest; n <= kLongestUsual + 1; ++n) {
    SCOPED_TRACE(n);
    char* text = pool.Take(n);
    std::memset(text, 't', n + 1);
    EXPECT_TRUE(Poison::IsForbidden(text + n + 1));
    pool.Give(text);
    for (std::size_t i = 0; i <= n; ++i) EXPECT_TRUE(Poison::IsForbidden(text + i));
  }
}

}  // namespace
