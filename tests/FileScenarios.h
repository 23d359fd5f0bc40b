// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_SCENARIOS_H
#define ZELCONFUTILS_TESTS_FILE_SCENARIOS_H

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "FileFixtures.h"

/// A file, a call, what it says, and what the file is then.
template <class File>
struct Scenario {
  std::string before;
  const char* call;
  std::string (*run)(File&);
  std::string result, after;
  std::string entries = "", sections = "";  // compared where they are given
};
/// The call as text and as code; other calls may follow as `file.NAME()`.
#define CALLING(File, ...) \
#__VA_ARGS__, [](File & file) { return Outcome([&] { return file.__VA_ARGS__; }); }

template <class File>
void Expect(const std::vector<Scenario<std::type_identity_t<File>>>& rows, const FileTokens& tokens,
            void (*before)(File&)) {
  for (const auto& row : rows) {
    SCOPED_TRACE(Quoted(row.before) + ": " + row.call);
    File file(row.before, tokens);
    before(file);
    EXPECT_EQ(row.run(file), row.result);
    EXPECT_EQ(file.Image(), row.after);
    if (!row.entries.empty()) {
      EXPECT_EQ(file.Entries(), row.entries);
    }
    if (!row.sections.empty()) {
      EXPECT_EQ(file.Sections(), row.sections);
    }
  }
}

#endif
