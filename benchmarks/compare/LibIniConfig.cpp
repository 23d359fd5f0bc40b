// SPDX-License-Identifier: MIT
// Seeks a key through the list of its section.
#include "Files.h"
#include "KeyFile.h"

// Its headers are for C alone, and do not include what they need.
extern "C" {
#include <collection.h>
#include <ini_configobj.h>

#include <ini_configmod.h>
#include <simplebuffer.h>
}

class IniConfig : public KeyFile {
 public:
  ~IniConfig() override { ini_config_destroy(config); }
  bool Load(const char* path) override {
    ini_cfgfile* file = nullptr;
    if (ini_config_create(&config) != 0 || ini_config_file_open(path, 0, &file) != 0) return false;
    const int result = ini_config_parse(file, INI_STOP_ON_ANY, INI_MV1S_ALLOW | INI_MS_MERGE,
                                        INI_PARSE_NOWRAP, config);
    ini_config_file_destroy(file);
    return result == 0;
  }
  std::size_t LookUp(const char* section, const char* key, char* buffer) override {
    const char* value = Find(section, key);
    return value != nullptr ? CopyText(buffer, value) : 0;
  }
  WalkTotals Walk() override {
    WalkTotals totals;
    int sectionCount = 0;
    char** sections = ini_get_section_list(config, &sectionCount, nullptr);
    for (int i = 0; i < sectionCount; ++i) {
      int keyCount = 0;
      char** keys = ini_get_attribute_list(config, sections[i], &keyCount, nullptr);
      for (int k = 0; k < keyCount; ++k) totals.CopyAndCount(keys[k], Find(sections[i], keys[k]));
      ini_free_attribute_list(keys);
    }
    ini_free_section_list(sections);
    return totals;
  }
  bool Change(const char* section, const char* key, const char* value) override {
    return ini_config_add_str_value(config, section, key, value, nullptr, 0, 1000, COL_DSP_END,
                                    nullptr, 0, INI_VA_MOD_E) == 0;
  }
  bool Save(const char* path, bool) override {
    simplebuffer* buffer = nullptr;
    if (simplebuffer_alloc(&buffer) != 0 || ini_config_serialize(config, buffer) != 0) return false;
    const auto* bytes = static_cast<const char*>(simplebuffer_get_vbuf(buffer));
    const bool written = WritePieces(path, {{bytes, simplebuffer_get_len(buffer)}});
    simplebuffer_free(buffer);
    return written;
  }

 private:
  const char* Find(const char* section, const char* key) {
    value_obj* value = nullptr;
    ini_get_config_valueobj(section, key, config, INI_GET_FIRST_VALUE, &value);
    return value != nullptr ? ini_get_const_string_config_value(value, nullptr) : nullptr;
  }

  ini_cfgobj* config = nullptr;
};

std::unique_ptr<KeyFile> MakeKeyFile(bool) { return std::make_unique<IniConfig>(); }
