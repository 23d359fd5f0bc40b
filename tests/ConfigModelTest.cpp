// SPDX-License-Identifier: MIT
// Random edits, held against a plain model that keeps each line as its five parts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OpenConfigFile.h"
#include "TestFiles.h"

namespace {

using std::size_t;
using std::string;

constexpr size_t kLongestLine = 1023, kTooSmall = 4294967295;

struct Tokens {
  string separator, comment, prefix;
};

struct Line {
  string head, key, gap, value, tail;  // gap: from the key to the value, separator included
  bool isEntry = false;
  size_t capacity = 0;
  string Text() const { return head + key + gap + value + tail; }
  bool Outgrown() {
    if (Text().size() <= capacity) return false;
    capacity = Text().size() + 32;
    return true;
  }
};

bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// Where the key ends that stands in front of the separator at `at`.
size_t KeyEnd(const string& text, size_t at) {
  while (at > 1 && IsSpace(text[at - 1])) --at;
  return at;
}

size_t Copy(const string& text, char* buffer, size_t size) {
  std::fill_n(buffer, size > text.size() ? text.size() + 1 : size, '\0');
  if (size <= text.size()) return kTooSmall;
  std::copy(text.begin(), text.end(), buffer);
  return text.size();
}

string Described(size_t capacity, bool isEntry, std::string_view key, std::string_view value) {
  string line = std::to_string(capacity);
  if (isEntry) line.append("[").append(key).append("|").append(value).append("]");
  return line += '\n';
}

class Model {
 public:
  explicit Model(Tokens tokens) : tokens_(std::move(tokens)) {}

  string disk;

  bool Save(bool, const char*) {
    disk = Image();
    return true;
  }
  void ClearAll() { AttachToBuffer("", nullptr); }
  void Reload() {
    ClearAll();
    for (size_t at = 0; at < disk.size(); at += lines_.back().Text().size()) {
      const size_t end = disk.substr(at, kLongestLine).find('\n');
      lines_.push_back(Classify(disk.substr(at, end == string::npos ? kLongestLine : end + 1)));
    }
    cursor_ = Next(kUnset);
  }
  bool AttachToBuffer(const char* bytes, const char*) {
    const string text = bytes;
    lines_.clear();
    stay_ = false;
    cursor_ = kEnd;
    for (size_t at = 0, end; (end = text.find('\n', at)) != string::npos; at = end + 1) {
      lines_.push_back(Classify(text.substr(at, end + 1 - at)));
      if (end + 1 - at > kLongestLine) {
        lines_.pop_back();
        for (Line& line : lines_) line = {line.Text(), "", "", "", "", false, line.capacity};
        return false;
      }
    }
    cursor_ = Next(kUnset);
    return true;
  }
  void Restart() {
    stay_ = false;
    cursor_ = kUnset;
  }
  bool GotoEntry(const char* key) { return MoveTo(Find(key)); }
  bool GotoNextEntry() {
    const bool stays = std::exchange(stay_, false);
    if (cursor_ != kEnd && !stays) cursor_ = Next(cursor_);
    return cursor_ != kEnd;
  }
  bool GotoPreviousEntry() { return MoveTo(cursor_ == kUnset ? kEnd : Previous(cursor_)); }
  bool GotoFirstEntry() { return MoveTo(Next(kUnset)); }
  bool GotoLastEntry() { return MoveTo(Previous(kEnd)); }
  size_t GetEntryCount() const {
    return static_cast<size_t>(
        std::count_if(lines_.begin(), lines_.end(), [](const Line& line) { return line.isEntry; }));
  }
  size_t GetEntry(const char* key, char* buffer, size_t size) {
    stay_ = false;
    const int found = Find(key);
    if (found != kEnd) return Copy(At(found).value, buffer, size);
    std::fill_n(buffer, size, '\0');
    return 0;
  }
  size_t GetCurrentEntry(char* key, size_t keySize, char* value, size_t valueSize) {
    if (!Settle()) return 0;
    const size_t keyResult = Copy(At(cursor_).key, key, keySize);
    if (keyResult == kTooSmall) return kTooSmall;
    const size_t valueResult = Copy(At(cursor_).value, value, valueSize);
    return valueResult == kTooSmall || keyResult == 0 ? valueResult : keyResult;
  }
  bool AddEntry(const char* key, const char* value, bool atBeginning) {
    return Compose(key, value, atBeginning ? 0 : static_cast<int>(lines_.size()));
  }
  bool InsertEntry(const char* key, const char* value) {
    const bool atEnd = !Settle();
    if (cursor_ == Next(kUnset)) return AddEntry(key, value, true);
    return atEnd ? AddEntry(key, value, false) : Compose(key, value, cursor_);
  }
  size_t SetEntry(const char* key, const char* value) {
    const int found = Find(key);
    stay_ = false;
    if (found == kEnd) return AddEntry(key, value, false) ? 2 : 0;
    return At(found).value == value ? 1 : SetValue(At(found), value);
  }
  size_t SetCurrentEntry(const char* value) {
    if (!Settle()) return 0;
    if (At(cursor_).value == value) return 1;
    stay_ = false;
    return SetValue(At(cursor_), value);
  }
  bool RenameEntry(const string& key) {
    if (!Settle() || key.empty()) return false;
    Line changed = At(cursor_);
    if (changed.key.empty()) {  // the place is counted back from the first separator of the line
      const string front = changed.head + changed.gap;
      const size_t place = KeyEnd(front, front.find(tokens_.separator));
      changed.head = front.substr(0, place);
      changed.gap = front.substr(place);
    }
    if ((changed.gap + changed.value + changed.tail).size() > kLongestLine) return false;
    changed.key = key;
    changed.Outgrown();
    At(cursor_) = changed;
    return true;
  }
  bool DeleteEntry(const char* key) {
    stay_ = false;
    const int found = Find(key);
    return found != kEnd && Delete(found);
  }
  bool DeleteCurrentEntry() { return Settle() && Delete(cursor_); }

  string Image() const {
    string image;
    for (const Line& line : lines_) image += line.Text();
    return image;
  }
  // All that can be told apart: entries, where the cursor is, the flag, blocks.
  string State() const {
    string state = cursor_ == kUnset ? "unset" : cursor_ == kEnd ? "end" : "";
    if (stay_) state += " stay";
    for (size_t i = 0; i < lines_.size(); ++i) {
      const Line& line = lines_[i];
      state += Described(line.capacity, line.isEntry, line.key, line.value);
      if (static_cast<int>(i) == cursor_) state += " <-";
    }
    return state;
  }

 private:
  static constexpr int kUnset = -1, kEnd = 1 << 30;  // else the index of a line

  Line Classify(const string& text) const {
    const size_t at = tokens_.separator.empty() ? string::npos : text.find(tokens_.separator);
    if (text.rfind(tokens_.comment, 0) == 0 || at == string::npos) {
      return {text, "", "", "", "", false, text.size() + 33};
    }
    const size_t keyEnd = KeyEnd(text, at), value = at + tokens_.separator.size();
    size_t key = 0, end = text.size();
    while (key < keyEnd && IsSpace(text[key])) ++key;
    while (end > value && IsSpace(text[end - 1])) --end;
    return {text.substr(0, key),
            text.substr(key, keyEnd - key),
            text.substr(keyEnd, value - keyEnd),
            text.substr(value, end - value),
            text.substr(end),
            true,
            text.size() + 33};
  }
  Line& At(int i) { return lines_[static_cast<size_t>(i)]; }
  int Next(int i) const {
    for (++i; static_cast<size_t>(i) < lines_.size(); ++i) {
      if (lines_[static_cast<size_t>(i)].isEntry) return i;
    }
    return kEnd;
  }
  int Previous(int behind) const {
    int previous = kEnd;
    for (int i = Next(kUnset); i < behind; i = Next(i)) previous = i;
    return previous;
  }
  int Find(const string& key) {
    int i = Next(kUnset);
    while (i != kEnd && At(i).key != key) i = Next(i);
    return i;
  }
  bool MoveTo(int i) {
    stay_ = false;
    if (i != kEnd) cursor_ = i;
    return i != kEnd;
  }
  bool Settle() {
    if (cursor_ == kUnset) cursor_ = Next(kUnset);
    return cursor_ != kEnd;
  }
  bool Compose(const string& key, const string& value, int at) {
    stay_ = false;
    Line line{tokens_.prefix, key, tokens_.separator, value, "\n", true};
    if (line.Text().size() > kLongestLine || tokens_.separator.empty()) return false;
    line.capacity = line.Text().size() + 33;
    lines_.insert(lines_.begin() + at, line);
    if (cursor_ >= at && cursor_ != kEnd) ++cursor_;
    return true;
  }
  size_t SetValue(Line& line, const string& value) {
    if (line.tail.size() > kLongestLine) return 0;
    line.value = value;
    if (!line.Outgrown()) return 2;
    const string front = line.head + line.key + line.gap;
    const size_t at = front.find(tokens_.separator);
    if (at + tokens_.separator.size() == front.size()) {
      const size_t keyEnd = KeyEnd(front, at);
      size_t key = 0;
      while (key < keyEnd && IsSpace(front[key])) ++key;
      line.head = front.substr(0, key);
      line.key = front.substr(key, keyEnd - key);
      line.gap = front.substr(keyEnd);
    }
    return 2;
  }
  bool Delete(int i) {
    lines_.erase(lines_.begin() + i);
    cursor_ = Next(i - 1);
    return stay_ = true;
  }

  Tokens tokens_;
  std::vector<Line> lines_;
  int cursor_ = kUnset;
  bool stay_ = false;
};

string State(const OpenConfigFile& file) {
  string state = file.cursor->IsUnset() ? "unset" : file.cursor->IsEnd() ? "end" : "";
  if (file.afterDelete) state += " stay";
  auto entry = file.entries->begin();
  for (const Configuration::ConfigLine& line : file.lines->Lines()) {
    const bool isEntry = entry != file.entries->end() && &*(*entry).line == &line;
    state += Described(line.capacity, isEntry, isEntry ? (*entry).Name() : "",
                       isEntry ? (*entry).Value() : "");
    if (!isEntry) continue;
    if (file.cursor->IsAtElement() && &**file.cursor == &*entry) state += " <-";
    ++entry;
  }
  return state;
}

struct Arguments {
  string key, value;
  size_t size, otherSize;
  bool flag;
};

constexpr int kOperations = 24;

// The same call on the product and on the model; the result and all buffers as text.
template <class File>
string Do(int operation, File& file, const Arguments& with) {
  const char *key = with.key.c_str(), *value = with.value.c_str();
  string buffer(40, '?'), other(40, '?');
  const auto code = [&](size_t result) { return std::to_string(result) + buffer + other; };
  switch (operation) {
    case 0:
      file.Restart();
      return "";
    case 1:
      return code(file.GotoEntry(key));
    case 2:
    case 3:
    case 4:
      return code(file.GotoNextEntry());
    case 5:
    case 6:
      return code(file.GotoPreviousEntry());
    case 7:
      return code(file.GotoFirstEntry());
    case 8:
      return code(file.GotoLastEntry());
    case 9:
      return code(file.GetEntryCount());
    case 10:
      return code(file.GetEntry(key, buffer.data(), with.size));
    case 11:
      return code(file.GetCurrentEntry(buffer.data(), with.size, other.data(), with.otherSize));
    case 12:
      return code(file.AddEntry(key, value, with.flag));
    case 13:
    case 14:
      return code(file.InsertEntry(key, value));
    case 15:
      return code(file.SetEntry(key, value));
    case 16:
    case 17:
      return code(file.SetCurrentEntry(value));
    case 18:
    case 19:
      return code(file.RenameEntry(key));
    case 20:
      return code(file.DeleteEntry(key));
    case 21:
      return code(file.DeleteCurrentEntry());
    case 22:
      return code(file.Save(with.flag, nullptr));
    default:  // seldom, since these forget what came before
      if (with.size < 30) return "";
      if (with.size < 32) file.ClearAll();
      if (with.size < 35) return code(file.AttachToBuffer(file.Image().c_str(), with.key.c_str()));
      file.Reload();
      return "";
  }
}

class Random {
 public:
  explicit Random(unsigned seed) : generator_(seed) {}
  size_t Below(size_t end) { return generator_() % end; }
  // Up to `most` pieces: tokens, white space, letters, now and then a long run of one byte.
  string Pieces(size_t most, bool isFile) {
    static const string pieces[] = {
        "a", "b",  "key",   " ",    "\t", "=",  ":=",   " = ",
        "#", "//", "v\xE4", "\v\f", "\n", "\n", "\r\n", string(1, '\0')};
    string text;
    for (size_t n = Below(most + 1); n > 0; --n) {
      const size_t which = Below(isFile ? 16 : 12);
      text += pieces[which];
      if (Below(40) == 0) text.append(Below(isFile ? 1500 : 60), " x"[Below(2)]);
      if (Below(1000) == 0) text.append(1000 + Below(40), " x"[Below(2)]);
    }
    return text;
  }

 private:
  std::mt19937 generator_;
};

TEST(ConfigModel, AgreesWithRandomEdits) {
  static const Tokens tokens[] = {{"=", "#", ""},     {":=", "#", "\t"}, {" = ", "//", "  "},
                                  {"\t", "#", ""},    {"=", "//", "a="}, {"=", "", "#"},
                                  {"==", "#", " = "}, {"", "#", ""}};
  const char* given = std::getenv("ZELCONFUTILS_TEST_SEED");
  const unsigned seed = given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                                         : std::random_device()();
  std::cout << "ZELCONFUTILS_TEST_SEED=" << seed << "\n";
  Random random(seed);
  TestFiles::TemporaryDirectory directory;
  const string path = directory.Path("file");
  for (int round = 0; round < 2000; ++round) {
    const Tokens& with = tokens[random.Below(std::size(tokens))];
    Model model(with);
    model.disk = random.Pieces(60, true);
    // Cutting a file that was just written waits for the disk on some file systems: no file is.
    std::filesystem::remove(path);
    TestFiles::Write(path, model.disk);
    OpenConfigFile file(path, with.separator.c_str(), with.comment.c_str(), with.prefix.c_str());
    model.Reload();
    for (int step = 0; step < 60; ++step) {
      const int operation = static_cast<int>(random.Below(kOperations));
      Arguments arguments{random.Pieces(3, false), random.Pieces(6, false), random.Below(40),
                          random.Below(40), random.Below(2) == 1};
      // The next read is to meet the same file under both.
      if (operation == kOperations - 1) arguments.key = path;
      SCOPED_TRACE(testing::Message()
                   << "round " << round << " step " << step << " operation " << operation);
      if (operation == 22) std::filesystem::remove(path);
      const string before = State(file) + "\n" + file.Image();
      ASSERT_EQ(Do(operation, file, arguments), Do(operation, model, arguments)) << before;
      ASSERT_EQ(file.Image(), model.Image()) << before;
      ASSERT_EQ(State(file), model.State()) << before;
      ASSERT_EQ(file.Fault(), "") << before;
      if (operation == 22) {
        ASSERT_EQ(TestFiles::Read(path), model.disk);
      }
    }
  }
}

}  // namespace
