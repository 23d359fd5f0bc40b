// SPDX-License-Identifier: MIT
// A name of the library's inside that a program has for a thing of its own, with a signature that
// is the same to the linker. Beside the static library it would silently take one for the other.
#include <cstdio>
#include <cstdlib>

namespace Text {
char* Duplicate(const char*) {
  std::fputs("the library called the program's own Text::Duplicate\n", stderr);
  std::abort();
}
}  // namespace Text
