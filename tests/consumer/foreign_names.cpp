// SPDX-License-Identifier: MIT
// A program that has the names of the library's inside for things of its own. It links the static
// library, where the linker would silently take one for the other.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "ConfigFile.h"
#include "CsvDocument.h"
#include "MultiSectionFile.h"
#include "Tree.h"
#include "ZelParser.h"

namespace {

[[noreturn]] void CalledByTheLibrary(const char* name) {
  std::fprintf(stderr, "the library called the program's own %s\n", name);
  std::exit(1);
}

}  // namespace

// NOLINTBEGIN: the signatures are those of the library, for the same names to the linker.
#define OWN(result, name, ...) \
  result name(__VA_ARGS__) { CalledByTheLibrary(#name); }

namespace Text {
OWN(bool, EqualIgnoringCase, const char*, const char*)
OWN(char*, Duplicate, const char*)
}  // namespace Text

namespace TextBlock {
OWN(void, Set, char*&, const char*)
OWN(void, Adopt, char*&, char*&, const char*)
OWN(void, Wipe, char*)
OWN(bool, Match, const char*, const char*)
}  // namespace TextBlock

namespace Platform {
OWN(std::FILE*, OpenFile, const char*, const char*)
OWN(int, Descriptor, std::FILE*)
OWN(std::int64_t, FileLength, int)
OWN(bool, TryLockBytes, int, std::int64_t)
OWN(bool, UnlockBytes, int, std::int64_t)
OWN(void, SleepMilliseconds, unsigned)
OWN(bool, MakeDirectory, const char*)
OWN(bool, IsDirectory, const char*)
OWN(void, PreferLargePages, void*, std::size_t)
}  // namespace Platform

class CsvRecordReader {
 public:
  explicit CsvRecordReader(std::size_t);
  std::FILE* Open(const char*);
  bool ReadRecord();
  bool Fill();
};
CsvRecordReader::CsvRecordReader(std::size_t) { CalledByTheLibrary("CsvRecordReader"); }
OWN(std::FILE*, CsvRecordReader::Open, const char*)
OWN(bool, CsvRecordReader::ReadRecord, )
OWN(bool, CsvRecordReader::Fill, )

class FieldEnds {
 public:
  FieldEnds(const char*, std::size_t, char);
  std::size_t Next();
};
FieldEnds::FieldEnds(const char*, std::size_t, char) { CalledByTheLibrary("FieldEnds"); }
OWN(std::size_t, FieldEnds::Next, )
// NOLINTEND

namespace {

struct TokenCount : ZelParser {
  bool Parse(void* count) override {
    while (GetToken() != nullptr) ++*static_cast<int*>(count);
    return true;
  }
};

}  // namespace

int main(int, char** argv) {
  const std::string path = std::string(argv[0]) + ".txt";
  Configuration::ConfigFile flat("one = 1\n", false, true, true, "=", "#", "");
  flat.Save(true, path.c_str());
  flat.AttachToBuffer("one,2\n", path.c_str());
  flat.Save(false, nullptr);
  flat.Reload();
  Configuration::MultiSectionConfigFile sectioned("section two {\n}\n", false, false, true, true);
  sectioned.AddSectionEntry("a", "b");
  int tokens = 0;
  TokenCount().ParseFile(path.c_str(), &tokens);
  ZelSectionHolder tree;
  tree.GetRootItem()->AddChild(ZelSection("four"))->GetData()->AddEntry("key", "value", nullptr);
  CsvDocument table;
  table.Load(path.c_str());
  CsvDocumentRow row;
  table.GetRow(row);
  std::remove(path.c_str());

  char printed[64];
  std::snprintf(printed, sizeof printed, "%zu %zu %d %d %s", flat.GetEntryCount(),
                sectioned.GetSecEntryCount(), tokens,
                tree.GetRootItem()->GetData()->GetEntryList()->empty(), row.GetField(1).c_str());
  const char* const expected = "0 1 4 1 2";
  if (std::strcmp(printed, expected) == 0) return 0;
  std::fprintf(stderr, "expected %s\n actual  %s\n", expected, printed);
  return 1;
}
