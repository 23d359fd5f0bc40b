// SPDX-License-Identifier: MIT
// Names of the library's inside that a program has for things of its own. Beside the static library
// the linker would silently take one for the other.
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void CalledByTheLibrary(const char* name) {
  std::fprintf(stderr, "the library called the program's own %s\n", name);
  std::exit(1);
}

}  // namespace

// The signatures are those of the library, for the same names to the linker.
namespace Text {
char* Duplicate(const char*) { CalledByTheLibrary("Text::Duplicate"); }
}  // namespace Text

namespace TextBlock {
void Set(char*&, const char*) { CalledByTheLibrary("TextBlock::Set"); }
}  // namespace TextBlock

namespace Platform {
enum class OpenMode {};
struct File {};
File OpenFile(const char*, OpenMode) { CalledByTheLibrary("Platform::OpenFile"); }
}  // namespace Platform

struct CsvRecordReader {
  explicit CsvRecordReader(std::size_t);
};
CsvRecordReader::CsvRecordReader(std::size_t) { CalledByTheLibrary("CsvRecordReader"); }
