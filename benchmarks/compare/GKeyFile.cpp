// SPDX-License-Identifier: MIT
#include <glib.h>

#include <cstdio>

#include "KeyFile.h"

namespace {

class GLib : public KeyFile {
 public:
  ~GLib() override {
    if (file != nullptr) g_key_file_free(file);
  }
  bool Load(const char* path) override {
    file = g_key_file_new();
    return g_key_file_load_from_file(file, path, G_KEY_FILE_KEEP_COMMENTS, nullptr) != FALSE;
  }
  std::size_t LookUp(const char* section, const char* key, char* buffer) override {
    gchar* value = g_key_file_get_value(file, section, key, nullptr);
    if (value == nullptr) return 0;
    const std::size_t length = CopyText(buffer, value);
    g_free(value);
    return length;
  }
  WalkTotals Walk() override {
    WalkTotals totals;
    char key[kTextBytes];
    char value[kTextBytes];
    gchar** groups = g_key_file_get_groups(file, nullptr);
    for (gchar** group = groups; *group != nullptr; ++group) {
      gchar** keys = g_key_file_get_keys(file, *group, nullptr, nullptr);
      for (gchar** next = keys; *next != nullptr; ++next) {
        LookUp(*group, *next, value);
        totals.Count(CopyText(key, *next), value);
      }
      g_strfreev(keys);
    }
    g_strfreev(groups);
    return totals;
  }
  bool Change(const char* section, const char* key, const char* value) override {
    g_key_file_set_value(file, section, key, value);
    return true;
  }
  // g_key_file_save_to_file would also wait for the disk.
  bool Save(const char* path) override {
    gsize length = 0;
    gchar* data = g_key_file_to_data(file, &length, nullptr);
    std::FILE* stream = std::fopen(path, "wb");
    if (stream == nullptr) return false;
    const bool written = std::fwrite(data, 1, length, stream) == length;
    g_free(data);
    return std::fclose(stream) == 0 && written;
  }

 private:
  GKeyFile* file = nullptr;
};

}  // namespace

std::unique_ptr<KeyFile> MakeKeyFile(bool) { return std::make_unique<GLib>(); }
