// SPDX-License-Identifier: MIT
// Reads and answers; there is no walk and no saving.
#include <INIReader.h>

#include "KeyFile.h"

class Reader : public KeyFile {
 public:
  bool Load(const char* path) override {
    file = std::make_unique<INIReader>(path);
    return file->ParseError() == 0;
  }
  std::size_t LookUp(const char* section, const char* key, char* buffer) override {
    return CopyText(buffer, file->Get(section, key, "").c_str());
  }

 private:
  std::unique_ptr<INIReader> file;
};

std::unique_ptr<KeyFile> MakeKeyFile(bool) { return std::make_unique<Reader>(); }
