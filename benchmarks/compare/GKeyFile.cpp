// SPDX-License-Identifier: MIT
#include <glib.h>

#include "Files.h"
#include "KeyFile.h"

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
    gchar** groups = g_key_file_get_groups(file, nullptr);
    for (gchar** group = groups; *group != nullptr; ++group) {
      gchar** keys = g_key_file_get_keys(file, *group, nullptr, nullptr);
      for (gchar** next = keys; *next != nullptr; ++next) {
        gchar* value = g_key_file_get_value(file, *group, *next, nullptr);
        totals.CopyAndCount(*next, value);
        g_free(value);
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
  bool Save(const char* path, bool) override {
    gsize length = 0;
    gchar* data = g_key_file_to_data(file, &length, nullptr);
    const bool written = WritePieces(path, {{data, length}});
    g_free(data);
    return written;
  }

 private:
  GKeyFile* file = nullptr;
};

std::unique_ptr<KeyFile> MakeKeyFile(bool) { return std::make_unique<GLib>(); }
