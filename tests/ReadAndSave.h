// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_READ_AND_SAVE_H
#define ZELCONFUTILS_TESTS_READ_AND_SAVE_H

#include <string>

#include "OpenConfigFile.h"

/// What a read of the file at `path` says: its image, or its message.
inline std::string Reading(const std::string& path, bool readOnly) {
  return Outcome(
      [&] { return OpenConfigFile(path.c_str(), false, readOnly, false, "=", "#", "").Image(); });
}

/// What a save of `text` to `path` says.
inline std::string Saving(const std::string& path, bool coalesced, const std::string& text) {
  OpenConfigFile file(nullptr, false, false, false, "=", "#", "");
  file.AttachToBuffer(text.c_str(), path.c_str());
  return Outcome([&] { return file.Save(coalesced, nullptr) ? "saved" : "not saved"; });
}

#endif
