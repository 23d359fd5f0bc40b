// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_OPEN_SECTION_FILE_H
#define ZELCONFUTILS_TESTS_OPEN_SECTION_FILE_H

#include <string>

#include "MultiSectionFile.h"
#include "OpenConfigFile.h"
#include "multisection/ConfigSection.h"

/// A `MultiSectionFile` that tests may look into.
class OpenSectionFile : public OpenFile<Configuration::MultiSectionFile> {
 public:
  using MultiSectionFile::entryCursor;
  using MultiSectionFile::sectionCursor;
  using MultiSectionFile::sections;

  explicit OpenSectionFile(const FileTokens& with, const char* source = nullptr,
                           bool create = false, bool reads = false, bool isText = false)
      : OpenFile(source, create, reads, isText, with.keyword, with.start, with.stop, with.separator,
                 with.comment, with.prefix) {}

  std::string Name() {
    return Copied([&](char* to, std::size_t size) { return GetSectionName(to, size); });
  }

  /// `*x[1]y[2]; A{^a[1]}*B{b[2]$}+`: top level, sections, the flag.
  std::string Picture() const {
    const auto show = [](const Configuration::ConfigSection& s) {
      const char *const text = s.startLine->text, *const end = text + s.startLine->length;
      const bool stray = s.name != nullptr && (s.name < text || s.name + s.nameLength > end);
      return std::string(stray ? "?{" : "{") + Listed(s.entries, s.entryCursor) + "}";
    };
    return Listed(*entries, *entryCursor) + "; " + Listed(*sections, *sectionCursor, show) +
           (afterDelete ? "+" : "");
  }
};

#endif
