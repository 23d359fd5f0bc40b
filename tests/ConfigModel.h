// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_CONFIG_MODEL_H
#define ZELCONFUTILS_TESTS_CONFIG_MODEL_H

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OpenConfigFile.h"

/// What `ConfigFile` promises, in the plainest way: a vector of lines, each as its five parts.
namespace ConfigModel {

using std::size_t;
using std::string;
using std::string_view;

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

inline bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

inline size_t Copy(const string& text, char* buffer, size_t size) {
  std::fill_n(buffer, size > text.size() ? text.size() + 1 : size, '\0');
  if (size <= text.size()) return 4294967295;
  std::copy(text.begin(), text.end(), buffer);
  return text.size();
}

/// All that can be told apart in an object, as text.
inline string State(bool isUnset, bool isEnd, bool stay) {
  string state = isUnset ? "unset" : isEnd ? "end" : "";
  return state += stay ? " stay\n" : "\n";
}
inline string State(const Line& line, bool isCurrent) {
  string state = std::to_string(line.capacity) + (isCurrent ? " > " : " ");
  return line.isEntry ? state.append(line.key + "|" + line.value + "\n") : state += '\n';
}

class File {
 public:
  /// A file with the content `bytes`, which also lie on the disk.
  File(Tokens tokens, string bytes) : tokens_(std::move(tokens)), disk_(std::move(bytes)) {
    Reload();
  }

  bool Save(bool, const char*) {
    disk_ = Image();
    return true;
  }
  void ClearAll() { AttachToBuffer("", nullptr); }
  void Reload() {
    ClearAll();
    for (size_t at = 0, bytes; at < disk_.size(); at += bytes) {
      bytes = std::min(disk_.substr(at, 1023).find('\n'), size_t{1022}) + 1;
      lines_.push_back(Classify(disk_.substr(at, bytes)));
    }
    cursor_ = Next(kUnset);
  }
  bool AttachToBuffer(const char* bytes, const char*) {
    const string text = bytes;
    lines_.clear();
    stay_ = false;
    cursor_ = kEnd;
    std::vector<Line> read;
    for (size_t at = 0, end; (end = text.find('\n', at)) != string::npos; at = end + 1) {
      const string line = text.substr(at, end + 1 - at);
      if (line.size() > 1023) return false;
      lines_.push_back({line, "", "", "", "", false, line.size() + 33});
      read.push_back(Classify(line));
    }
    lines_ = read;
    cursor_ = Next(kUnset);
    return true;
  }
  void Restart() {
    stay_ = false;
    cursor_ = kUnset;
  }
  bool GotoEntry(const char* key) { return MoveTo(Find(key)); }
  bool GotoNextEntry() {
    if (!std::exchange(stay_, false) && cursor_ != kEnd) cursor_ = Next(cursor_);
    return cursor_ != kEnd;
  }
  bool GotoPreviousEntry() { return MoveTo(cursor_ == kUnset ? kEnd : Previous(cursor_)); }
  bool GotoFirstEntry() { return MoveTo(Next(kUnset)); }
  bool GotoLastEntry() { return MoveTo(Previous(kEnd)); }
  size_t GetEntryCount() const {
    size_t count = 0;
    for (const Line& line : lines_) count += line.isEntry ? 1 : 0;
    return count;
  }
  size_t GetEntry(const char* key, char* buffer, size_t size) {
    stay_ = false;
    if (Find(key) != kEnd) return Copy(At(Find(key)).value, buffer, size);
    std::fill_n(buffer, size, '\0');
    return 0;
  }
  size_t GetCurrentEntry(char* key, size_t keySize, char* value, size_t valueSize) {
    if (!Settle()) return 0;
    const Line& line = At(cursor_);
    if (key != nullptr && Copy(line.key, key, keySize) == 4294967295) return 4294967295;
    const size_t keyLength = key != nullptr ? line.key.size() : 0;
    if (value == nullptr) return keyLength;
    if (Copy(line.value, value, valueSize) == 4294967295) return 4294967295;
    return keyLength != 0 ? keyLength : line.value.size();
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
    stay_ = false;
    const int found = Find(key);
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
      Part(changed, changed.head + changed.gap, false);
    }
    if ((changed.gap + changed.value + changed.tail).size() > 1023) return false;
    changed.key = key;
    changed.Outgrown();
    At(cursor_) = changed;
    return true;
  }
  bool DeleteEntry(const char* key) {
    stay_ = false;
    return Find(key) != kEnd && Delete(Find(key));
  }
  bool DeleteCurrentEntry() { return Settle() && Delete(cursor_); }

  string Image() const {
    string image;
    for (const Line& line : lines_) image += line.Text();
    return image;
  }
  string State() const {
    string state = ConfigModel::State(cursor_ == kUnset, cursor_ == kEnd, stay_);
    for (const Line& line : lines_) {
      state += ConfigModel::State(line, &line - lines_.data() == cursor_);
    }
    return state;
  }

 private:
  static constexpr int kUnset = -1, kEnd = 1 << 30;  // else the index of a line

  // Parts `front`, the line up to the value, into head, key and gap by its first separator.
  void Part(Line& line, const string& front, bool hasKey) const {
    size_t end = front.find(tokens_.separator), key = 0;
    while (end > 1 && IsSpace(front[end - 1])) --end;
    while (hasKey && key < end && IsSpace(front[key])) ++key;
    if (!hasKey) key = end;
    line.head = front.substr(0, key);
    line.key = front.substr(key, end - key);
    line.gap = front.substr(end);
  }
  Line Classify(const string& text) const {
    Line line{text, "", "", "", "", false, text.size() + 33};
    const size_t at = text.find(tokens_.separator), value = at + tokens_.separator.size();
    const bool isComment = text.rfind(tokens_.comment, 0) == 0;
    if (isComment || tokens_.separator.empty() || at == string::npos) return line;
    size_t end = text.size();
    while (end > value && IsSpace(text[end - 1])) --end;
    Part(line, text.substr(0, value), true);
    line.value = text.substr(value, end - value);
    line.tail = text.substr(end);
    line.isEntry = true;
    return line;
  }
  Line& At(int i) { return lines_[static_cast<size_t>(i)]; }
  int Next(int i) const {
    const auto isEntry = [](const Line& line) { return line.isEntry; };
    const auto next = std::find_if(lines_.begin() + (i + 1), lines_.end(), isEntry);
    return next == lines_.end() ? kEnd : static_cast<int>(next - lines_.begin());
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
    line.capacity = line.Text().size() + 33;
    if (line.Text().size() > 1023 || tokens_.separator.empty()) return false;
    lines_.insert(lines_.begin() + at, line);
    if (cursor_ >= at && cursor_ != kEnd) ++cursor_;
    return true;
  }
  size_t SetValue(Line& line, const string& value) const {
    if (line.tail.size() > 1023) return 0;
    line.value = value;
    const string front = line.head + line.key + line.gap;
    const size_t first = front.find(tokens_.separator) + tokens_.separator.size();
    // A text that has moved is parted anew, unless the key itself holds a separator.
    if (line.Outgrown() && first == front.size()) Part(line, front, true);
    return 2;
  }
  bool Delete(int i) {
    lines_.erase(lines_.begin() + i);
    cursor_ = Next(i - 1);
    return stay_ = true;
  }

  Tokens tokens_;
  string disk_;
  std::vector<Line> lines_;
  int cursor_ = kUnset;
  bool stay_ = false;
};

inline string State(const OpenConfigFile& file) {
  string state = State(file.cursor->IsUnset(), file.cursor->IsEnd(), file.afterDelete);
  auto next = file.entries->begin();
  for (const Configuration::ConfigLine& line : file.lines->Lines()) {
    Line copy{"", "", "", "", "", false, line.capacity};
    const auto entry = next;
    copy.isEntry = entry != file.entries->end() && &*(*entry).line == &line;
    if (copy.isEntry) {
      copy.key = (*entry).Name();
      copy.value = (*entry).Value();
      ++next;
    }
    state += State(copy, copy.isEntry && *file.cursor == file.entries->PositionOf(entry));
  }
  return state;
}

/// One call of an operation, its arguments in plenty. Sizes of 40 stand for no buffer.
struct Call {
  string_view operation;
  string key, value;
  size_t size = 20, otherSize = 20;
  bool flag = false;
};

constexpr string_view kOperations[] = {
    "Restart",       "GotoEntry",    "GotoNext",       "GotoPrevious", "GotoFirst", "GotoLast",
    "GetEntryCount", "GetEntry",     "GetCurrent",     "AddEntry",     "Insert",    "SetEntry",
    "SetCurrent",    "Rename",       "DeleteEntry",    "Delete",       "GotoNext",  "GotoPrevious",
    "SetCurrent",    "GotoPrevious", "AttachToBuffer", "Reload",       "ClearAll",  "Save"};

/// The same call on the product or on the model; the result and both buffers as text.
template <class AnyFile>
string Do(AnyFile& file, const Call& with) {
  const string_view name = with.operation;
  const char *key = with.key.c_str(), *value = with.value.c_str();
  string buffer(40, '?'), other(40, '?');
  const auto call = [&]() -> size_t {
    if (name == "GotoEntry") return file.GotoEntry(key);
    if (name == "GotoNext") return file.GotoNextEntry();
    if (name == "GotoPrevious") return file.GotoPreviousEntry();
    if (name == "GotoFirst") return file.GotoFirstEntry();
    if (name == "GotoLast") return file.GotoLastEntry();
    if (name == "GetEntryCount") return file.GetEntryCount();
    if (name == "AddEntry") return file.AddEntry(key, value, with.flag);
    if (name == "Insert") return file.InsertEntry(key, value);
    if (name == "SetEntry") return file.SetEntry(key, value);
    if (name == "SetCurrent") return file.SetCurrentEntry(value);
    if (name == "Rename") return file.RenameEntry(key);
    if (name == "DeleteEntry") return file.DeleteEntry(key);
    if (name == "Delete") return file.DeleteCurrentEntry();
    if (name == "Save") return file.Save(with.flag, nullptr);
    if (name == "AttachToBuffer") return file.AttachToBuffer(file.Image().c_str(), key);
    if (name == "GetEntry") return file.GetEntry(key, buffer.data(), with.size);
    if (name == "GetCurrent") {
      return file.GetCurrentEntry(with.size < 40 ? buffer.data() : nullptr, with.size,
                                  with.otherSize < 40 ? other.data() : nullptr, with.otherSize);
    }
    name == "Restart" ? file.Restart() : name == "Reload" ? file.Reload() : file.ClearAll();
    return 0;
  };
  return std::to_string(call()) + " " + buffer + other;
}

/// Where product and model differ after the same call on both, or an empty text.
inline string Difference(OpenConfigFile& file, File& model, const Call& call) {
  const string result = Do(file, call), expected = Do(model, call);
  if (result != expected) return "result: " + result + " instead of " + expected;
  if (file.Image() != model.Image()) return "image: " + file.Image() + "\n--\n" + model.Image();
  if (State(file) != model.State()) return "state: " + State(file) + "--\n" + model.State();
  return file.Fault();
}

}  // namespace ConfigModel

#endif
