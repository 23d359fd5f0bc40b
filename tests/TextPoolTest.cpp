// SPDX-License-Identifier: MIT
// Lends and takes back texts of every size beside others. Under the address sanitizer the pool
// also tells which bytes are lent, so that a block of the wrong size is caught at the first touch.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "config/memory/Poison.h"
#include "config/memory/TextPool.h"

namespace {

using namespace Configuration;

constexpr std::size_t kShortest = sizeof(void*);
constexpr std::size_t kLongestUsual = 254;
constexpr std::size_t kLongestTried = 300;

class Texts : public testing::Test {
 protected:
  // Takes a text and fills all of its capacity.
  char* TakeFull(std::size_t capacity, char fill) {
    char* text = pool.Take(capacity);
    std::memset(text, fill, capacity);
    text[capacity] = '\0';
    return text;
  }

  TextPool pool;
};

TEST_F(Texts, EachHasAllItsCapacityBesideOthers) {
  for (const bool expected : {false, true}) {
    if (expected) pool.Expect(kLongestTried, kLongestTried * kLongestTried / 2);
    std::vector<char*> texts;
    for (std::size_t n = kShortest; n <= kLongestTried; ++n) {
      texts.push_back(TakeFull(n, static_cast<char>('a' + n % 26)));
    }
    for (std::size_t n = kShortest; n <= kLongestTried; ++n) {
      EXPECT_EQ(texts[n - kShortest], std::string(n, static_cast<char>('a' + n % 26)));
      EXPECT_EQ(TextPool::Capacity(texts[n - kShortest]), n);
    }
    pool.Reset();
  }
}

TEST_F(Texts, RoomsGivenBackServeTheNextTextsOfTheirSize) {
  constexpr int kTexts = 40;  // over the end of a slab or two
  for (std::size_t n = kShortest; n <= kLongestUsual; ++n) {
    SCOPED_TRACE(n);
    std::set<char*> first;
    std::set<char*> second;
    for (int i = 0; i < kTexts; ++i) first.insert(TakeFull(n, 'f'));
    for (char* text : first) {
      EXPECT_EQ(text, std::string(n, 'f'));
      pool.Give(text);
    }
    for (int i = 0; i < kTexts; ++i) second.insert(TakeFull(n, 's'));
    EXPECT_EQ(first, second);
    pool.Reset();
  }
}

TEST_F(Texts, UsualOnesLieSideBySide) {
  pool.Expect(kLongestUsual, kLongestUsual * kLongestUsual);
  char* last = TakeFull(kShortest, 'x');
  for (std::size_t n = kShortest + 1; n <= kLongestUsual; ++n) {
    char* text = TakeFull(n, 'x');
    EXPECT_LT(text, last + n + 2 + 8 + Poison::kGapBytes) << n;
    last = text;
  }
}

TEST_F(Texts, WhatIsNotLentMayNotBeTouched) {
  if (Poison::kGapBytes == 0) GTEST_SKIP() << "only the address sanitizer can tell";
  for (std::size_t n = kShortest; n <= kLongestTried; ++n) {
    SCOPED_TRACE(n);
    char* text = TakeFull(n, 't');
    char* next = TakeFull(n, 'n');
    EXPECT_TRUE(Poison::IsForbidden(text + n + 1));
    EXPECT_FALSE(Poison::IsForbidden(text + n));
    pool.Give(text);
    for (std::size_t i = 0; i <= n; ++i) EXPECT_TRUE(Poison::IsForbidden(text + i));
    EXPECT_EQ(next, std::string(n, 'n'));
  }
}

}  // namespace
