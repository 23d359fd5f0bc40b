/* SPDX-License-Identifier: MIT */
/* set_gkeyfile FILE GROUP KEY VALUE: sets one key, comments and translations kept. */
#include <glib.h>

int main(int count, char** arguments) {
  GKeyFile* file = g_key_file_new();
  GError* error = NULL;
  if (count != 5) return 2;
  if (!g_key_file_load_from_file(file, arguments[1],
                                 G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS, &error)) {
    g_print("%s\n", error->message);
    return 1;
  }
  g_key_file_set_string(file, arguments[2], arguments[3], arguments[4]);
  return g_key_file_save_to_file(file, arguments[1], NULL) ? 0 : 1;
}
