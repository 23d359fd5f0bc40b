// SPDX-License-Identifier: MIT
// Names of the library's inside that a program has for things of its own, with signatures that are
// the same to the linker. Beside the static library it would silently take one for the other.
#include <cstdio>
#include <cstdlib>

namespace Text {
char* Duplicate(const char*) {
  std::fputs("the library called the program's own Text::Duplicate\n", stderr);
  std::abort();
}
}  // namespace Text

namespace Platform {
enum class OpenMode {};
struct File {};
File OpenFile(const char*, OpenMode) {
  std::fputs("the library called the program's own Platform::OpenFile\n", stderr);
  std::abort();
}
}  // namespace Platform
