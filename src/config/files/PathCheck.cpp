// SPDX-License-Identifier: MIT
#include "config/files/PathCheck.h"

#include <cstring>

#include "platform/Platform.h"
#include "text/Text.h"

namespace Platform = zelconfutils::Platform;
namespace Text = zelconfutils::Text;

namespace Configuration {

namespace {

bool IsSlash(char c) { return c == '/' || c == '\\'; }

}  // namespace

PathCheck::PathCheck(const char* path, bool create)
    : length_(std::strlen(path)), text_(Text::Duplicate(path)), exists_(Check(create)) {}

bool PathCheck::Check(bool create) {
  // The first byte is not examined: what stands in the root has no directory to test.
  std::size_t slash = length_;
  do {
    if (slash <= 1) return true;
    --slash;
  } while (!IsSlash(text_[slash]));

  // After a drive's colon the slash stays: "C:" alone would be another directory.
  const bool isDriveRoot = text_[slash - 1] == ':';
  text_[isDriveRoot ? slash + 1 : slash] = '\0';
  if (Platform::IsDirectory(text_.get())) return true;
  if (!create) return false;

  text_[slash] = '/';
  text_[slash + 1] = '\0';
  MakeDirectories(text_.get());
  text_[slash] = '\0';
  return Platform::IsDirectory(text_.get());
}

void PathCheck::MakeDirectories(char* text) {
  for (char* at = IsSlash(*text) ? text + 1 : text; *at != '\0'; ++at) {
    if (!IsSlash(*at)) continue;
    *at = '\0';
    MakeDirectory(text);
    *at = '/';
  }
}

bool PathCheck::MakeDirectory(const char* directory) { return Platform::MakeDirectory(directory); }

}  // namespace Configuration
