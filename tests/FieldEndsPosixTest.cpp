// SPDX-License-Identifier: MIT
// A record that ends where the process's memory does: to read on is a crash.
#include "csv/FieldEnds.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

namespace {

TEST(CsvFieldEnds, ReadNoByteAfterTheRecord) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const int access = PROT_READ | PROT_WRITE;
  void* const pages = mmap(nullptr, 2 * page, access, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(pages, MAP_FAILED);
  char* const end = static_cast<char*>(pages) + page;
  std::memset(pages, 'x', page);
  ASSERT_EQ(mprotect(end, page, PROT_NONE), 0);
  end[-1] = ',';
  for (std::size_t bytes = 1; bytes <= 200; ++bytes) {
    zelconfutils::FieldEnds ends(end - bytes, bytes, ',');
    EXPECT_EQ(ends.Next(), bytes - 1);
    EXPECT_GE(ends.Next(), bytes);
  }
  munmap(pages, 2 * page);
}

}  // namespace
