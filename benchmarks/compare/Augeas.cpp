// SPDX-License-Identifier: MIT
// Saves only what has changed, beside the file that it read.
#include <augeas.h>

#include <cstdio>
#include <string>

#include "KeyFile.h"

namespace {

class Tree : public KeyFile {
 public:
  ~Tree() override { aug_close(handle); }
  bool Load(const char* path) override {
    // The lens of an INI file with "#" and "=" and nothing more.
    aug_set(handle, "/augeas/load/File/lens", "Puppet.lns");
    aug_set(handle, "/augeas/load/File/incl", path);
    file = path;
    return aug_load(handle) == 0 && aug_match(handle, ("/files" + file).c_str(), nullptr) == 1;
  }
  std::size_t LookUp(const char* section, const char* key, char* buffer) override {
    const char* value = nullptr;
    if (aug_get(handle, Name(section, key).c_str(), &value) != 1 || value == nullptr) return 0;
    return CopyText(buffer, value);
  }
  bool Change(const char* section, const char* key, const char* value) override {
    return aug_set(handle, Name(section, key).c_str(), value) == 0;
  }
  bool Save(const char* path) override {
    return aug_save(handle) == 0 && std::rename((file + ".augnew").c_str(), path) == 0;
  }

 private:
  std::string Name(const char* section, const char* key) const {
    return "/files" + file + "/" + section + "/" + key;
  }

  augeas* handle = aug_init("/", nullptr, AUG_SAVE_NEWFILE | AUG_NO_MODL_AUTOLOAD);
  std::string file;
};

}  // namespace

std::unique_ptr<KeyFile> MakeKeyFile(bool) { return std::make_unique<Tree>(); }
