// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_MODEL_H
#define ZELCONFUTILS_TESTS_FILE_MODEL_H

#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "ConfigException.h"
#include "OpenSectionFile.h"

/// A plain model of a sectioned file, and with an empty start token of a flat one. Lines and
/// sections are numbered; a line is its five parts, and everything is searched again each time.
class FileModel {
 public:
  using string = std::string;
  using Text = const std::string&;
  static constexpr int kUnset = -1, kEnd = -2;
  struct Walk {
    std::vector<int> ids;
    int at = kUnset;
    int First() const { return ids.empty() ? kEnd : ids.front(); }
    int Last() const { return ids.empty() ? kEnd : ids.back(); }
    std::vector<int>::iterator Place(int id) { return std::find(ids.begin(), ids.end(), id); }
    int Behind(int id) { return id == Last() ? kEnd : Place(id)[1]; }
    void Settle() { at = at == kUnset ? First() : at; }
    void Insert(int id, int front) { ids.insert(Place(front), id); }
    void Erase(int id) {
      at = Behind(id);
      ids.erase(Place(id));
    }
  };
  struct Item {  // a line without an entry is all head; a section has its name as key
    string head, key, gap, value, tail;
    int first, last;
    bool hasNameLine;
    Walk entries;
    size_t capacity = 0;
    string Line() const { return head + key + gap + value + tail; }
    bool Outgrown() {
      if (Line().size() <= capacity) return false;
      capacity = Line().size() + 32;
      return true;
    }
  };

  explicit FileModel(const FileTokens& tokens) : t(tokens) {}

  /// Takes the bytes of a file. False when they end inside a section.
  bool Load(Text image) {
    Cut(image);
    return Index();
  }
  /// Takes a text. "!" when it ends inside a section.
  string Attach(Text text) {
    size_t at = 0;
    for (size_t end; (end = text.find('\n', at)) != string::npos && end - at < 1023;) at = end + 1;
    Cut(text.substr(0, at));
    top.at = sections.at = kEnd;
    if (text.find('\n', at) != string::npos) return "0";  // a line that is too long
    return Index() ? "1" : "!";
  }

  string Image() const {
    string image;
    for (int id : lines.ids) image += items.at(id).Line();
    return image;
  }

  /// As the `Picture` of a file, with capacities.
  string Picture() const {
    string picture = Listed(top) + "; " + (sections.at == kUnset ? "^" : "");
    for (int id : sections.ids) {
      picture += (id == sections.at ? "*" : "") + items.at(id).key + "{";
      picture += Listed(items.at(id).entries) + "}";
    }
    return picture + (sections.at == kEnd ? "$" : "") + (stay ? "+" : "");
  }

  // The steps, each on the walk `w`; what a read finds comes behind its result.
  string Next(Walk& w, Text, Text) {
    const bool stays = std::exchange(stay, false) && w.at >= 0;
    if (w.at != kEnd && !stays) w.at = w.at == kUnset ? w.First() : w.Behind(w.at);
    return Told(w.at != kEnd);
  }
  string Prev(Walk& w, Text, Text) {
    if (w.at == kUnset || w.at == w.First()) return "0";
    w.at = w.at == kEnd ? w.Last() : *(w.Place(w.at) - 1);
    return "1";
  }
  string First(Walk& w, Text, Text) { return Jump(w, w.First()); }
  string Last(Walk& w, Text, Text) { return Jump(w, w.Last()); }
  string Goto(Walk& w, Text name, Text) { return Jump(w, Find(w, name)); }
  string Count(Walk& w, Text, Text) { return std::to_string(w.ids.size()); }
  string Restart(Walk& w, Text, Text) {
    if (&w == &sections) top.at = kUnset;
    w.at = kUnset;
    return "-";
  }
  string Name(Walk& w, Text, Text) { return w.at == kEnd ? "!" : Copied(items[w.at].key); }
  string Get(Walk& w, Text key, Text) {
    return Find(w, key) == kEnd ? "0" : Copied(items[Find(w, key)].value);
  }
  string Read(Walk& w, Text, Text) {
    if (w.at == kEnd) return "0,";
    const string &key = items[w.at].key, &value = items[w.at].value;
    return std::to_string(key.empty() ? value.size() : key.size()) + key.c_str() + "," +
           value.c_str();
  }
  string SetTop(Walk& w, Text value, Text) {
    stay = stay && (w.at == kEnd || items[w.at].value == value);
    return Set(w, value, "");
  }
  string Set(Walk& w, Text value, Text) { return w.at < 0 ? "0" : SetValue(w.at, value); }
  string Rename(Walk& w, Text key, Text) {
    if (w.at == kEnd || key.empty() || IsFrozen(w.at)) return "0";
    Item line = items[w.at];
    // The place of an empty key is counted back from the first separator of the line.
    if (line.key.empty()) Part(line, line.head + line.gap, false);
    if ((line.gap + line.value + line.tail).size() > 1023) return "0";
    line.key = key;
    line.Outgrown();
    items[w.at] = line;
    return "1";
  }
  string Add(Walk& w, Text key, Text value) {
    if (&w == &nowhere) return "0";
    return Told(Compose(w, key, value, &w == &top ? kEnd : items[sections.at].last, kEnd) >= 0);
  }
  string AddFront(Walk& w, Text key, Text value) {
    return Told(Compose(w, key, value, lines.First(), w.First()) >= 0);
  }
  string Put(Walk& w, Text key, Text value) {
    if (Find(w, key) != kEnd) return SetValue(Find(w, key), value);
    return Add(w, key, value) == "1" ? "2" : "0";
  }
  string InsertTop(Walk& w, Text key, Text value) {
    stay = false;
    if (w.at == w.First()) return AddFront(w, key, value);
    return w.at == kEnd ? Add(w, key, value) : Told(Compose(w, key, value, w.at, w.at) >= 0);
  }
  string Insert(Walk& w, Text key, Text value) {
    if (&w == &nowhere) return "0";
    stay = false;
    w.Settle();
    if (w.at == kEnd) return Add(w, key, value);
    return Jump(w, Compose(w, key, value, w.at, w.at));
  }
  string Replace(Walk& w, Text key, Text value) {
    if (Find(w, key) == kEnd) return Insert(w, key, value);
    stay = false;
    return Told(Put(w, key, value) != "0");
  }
  string Delete(Walk& w, Text, Text) { return Told(w.at >= 0 && Erase(w, w.at)); }
  string DeleteKey(Walk& w, Text key, Text) {
    return Told(Find(w, key) >= 0 && Erase(w, Find(w, key)));
  }

  string SetName(Walk& w, Text name, Text) {
    if (w.at == kEnd || !items[w.at].hasNameLine || IsFrozen(items[w.at].first)) return "0";
    items[items[w.at].first].head = NameLine(name);
    items[w.at].key = name;
    return "1";
  }
  string AddS(Walk&, Text name, Text) { return Compose(name, kEnd, kEnd); }
  string AddFrontS(Walk& w, Text name, Text) { return Compose(name, lines.First(), w.First()); }
  string InsertS(Walk& w, Text name, Text) {
    if (w.at == w.First()) return AddFrontS(w, name, "");
    const int line = w.at == kEnd ? kEnd : items[w.at].first;
    return IsAnyones(&Item::last, line) ? "0" : Compose(name, line, w.at);
  }
  string DeleteS(Walk& w, Text, Text) {
    if (w.at == kEnd || IsFrozen(items[w.at].first) || IsFrozen(items[w.at].last)) return "!";
    const auto first = lines.Place(items[w.at].first), last = lines.Place(items[w.at].last);
    lines.ids.erase(first, last + 1);
    w.Erase(w.at);
    stay = true;
    return Count(w, "", "");
  }
  string DeleteName(Walk& w, Text name, Text) {
    return Goto(w, name, "") == "0" ? "!" : DeleteS(w, "", "");
  }

 private:
  void Cut(Text image) {
    *this = FileModel(t);
    for (size_t at = 0; at < image.size(); at += items[lastId].head.size()) {
      const string reach = image.substr(at, 1023);
      const size_t end = reach.find('\n');
      AddLine(end == string::npos ? reach : reach.substr(0, end + 1), kEnd);
    }
  }
  bool Index() {
    int open = kUnset;
    for (int id : lines.ids) {
      const string line = items[id].head;
      const size_t start = line.find(Start()), separator = Separator(line);
      if (line.find(t.comment) == 0) continue;
      if (*t.start != '\0' && open == kUnset && start != string::npos && separator >= start) {
        const bool above = TwoLines() && id != lines.First();
        const int nameLine = above ? *(lines.Place(id) - 1) : id;
        open = AddSection(nameLine, kUnset, kEnd, "");
        items[open].hasNameLine = above || !TwoLines();
        if (items[open].hasNameLine) items[open].key = NameIn(items[nameLine].Line());
      } else if (open != kUnset && line.find(Stop()) != string::npos) {
        items[std::exchange(open, kUnset)].last = id;
      } else if (separator != string::npos) {
        Parse(open == kUnset ? top : items[open].entries, id, separator);
      }
    }
    sections.at = sections.First();
    top.at = top.First();
    stay = false;
    return open == kUnset;
  }
  // Of the first one; an empty separator is nowhere.
  size_t Separator(Text line) const {
    return *t.separator == '\0' ? string::npos : line.find(t.separator);
  }
  bool TwoLines() const { return t.start[0] == '\n'; }
  string Start() const { return t.start + (t.start[0] == '\n'); }
  string Stop() const { return t.stop + (t.stop[0] == '\n'); }
  static bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
  static string Copied(Text text) { return std::to_string(text.size()) + text.c_str(); }
  string NameIn(Text line) const {
    const size_t n = line.size(), s = TwoLines() ? 0 : Start().size();
    size_t end = n > s ? n - s - 1 : 0;
    while (end > 0 && IsSpace(line[end])) --end;
    if (n > s && !IsSpace(line[end])) ++end;
    const size_t at = *t.keyword == '\0' ? string::npos : line.find(t.keyword);
    const size_t begin = at == string::npos ? 0 : at + std::strlen(t.keyword) + 1;
    return begin < end ? line.substr(begin, end - begin) : "";
  }
  string NameLine(Text name) const {
    const string keyword = name.empty() || *t.keyword == '\0' ? "" : t.keyword + string(" ");
    return keyword + name + (TwoLines() ? "\n" : name.empty() ? t.start : string(" ") + t.start);
  }
  // Parts `front`, the line up to the value, into head, key and gap by its first separator.
  void Part(Item& line, Text front, bool hasKey) const {
    size_t end = Separator(front), key = 0;
    while (end > 1 && IsSpace(front[end - 1])) --end;
    while (hasKey && key < end && IsSpace(front[key])) ++key;
    if (!hasKey) key = end;
    line.head = front.substr(0, key);
    line.key = front.substr(key, end - key);
    line.gap = front.substr(end);
  }
  void Parse(Walk& w, int id, size_t at) {
    const string line = items[id].head;
    const size_t value = at + std::strlen(t.separator);
    size_t end = line.size();
    while (end > value && IsSpace(line[end - 1])) --end;
    Part(items[id], line.substr(0, value), true);
    items[id].value = line.substr(value, end - value);
    items[id].tail = line.substr(end);
    w.Insert(id, kEnd);
  }
  int AddLine(Text text, int front) {
    items[++lastId].head = text;
    items[lastId].capacity = text.size() + 33;
    lines.Insert(lastId, front);
    return lastId;
  }
  int AddSection(int first, int last, int front, Text name) {
    items[++lastId] = {"", name, "", "", "", first, last, true, {}};
    sections.Insert(lastId, front);
    return lastId;
  }
  string Compose(Text name, int line, int front) {
    const int first = AddLine(NameLine(name), line);
    if (TwoLines()) AddLine(Start(), line);
    return Jump(sections, AddSection(first, AddLine(Stop(), line), front, name));
  }
  int Compose(Walk& w, Text key, Text value, int line, int front) {
    Item composed{t.prefix, key, t.separator, value, "\n", kUnset, kUnset, false, {}};
    composed.capacity = composed.Line().size() + 33;
    if (composed.Line().size() > 1023 || *t.separator == '\0') return kEnd;
    const int id = AddLine("", line);
    items[id] = composed;
    w.Insert(id, front);
    return id;
  }
  bool IsAnyones(int Item::*which, int line) const {
    return std::any_of(sections.ids.begin(), sections.ids.end(),
                       [&](int id) { return items.at(id).*which == line; });
  }
  bool IsFrozen(int line) {  // a name line that somebody else owns too
    return TwoLines() && IsAnyones(&Item::first, line) &&
           (IsAnyones(&Item::last, line) || top.Place(line) != top.ids.end());
  }
  int Find(const Walk& w, Text name) const {
    for (int id : w.ids) {
      if (items.at(id).key == name) return id;
    }
    return kEnd;
  }
  string Jump(Walk& w, int id) {
    stay = false;
    if (id != kEnd) w.at = id;
    return Told(id != kEnd);
  }
  string SetValue(int id, Text value) {
    Item& line = items[id];
    if (line.value == value) return "1";
    if (IsFrozen(id) || line.tail.size() > 1023) return "0";
    line.value = value;
    const string front = line.head + line.key + line.gap;
    const size_t first = Separator(front) + std::strlen(t.separator);
    // A text that has moved is parted anew, unless the key itself holds a separator.
    if (line.Outgrown() && first == front.size()) Part(line, front, true);
    return "2";
  }
  bool Erase(Walk& w, int id) {
    if (IsFrozen(id)) return false;
    w.Erase(id);
    lines.Erase(id);
    return stay = true;
  }
  string Listed(const Walk& w) const {
    string listed = w.at == kUnset ? "^" : "";
    for (int id : w.ids) {
      const Item& line = items.at(id);
      listed += (id == w.at ? "*" : "") + line.key + "[" + line.value + "]";
      listed += std::to_string(line.capacity);
    }
    return listed + (w.at == kEnd ? "$" : "");
  }

 public:
  FileTokens t;
  Walk lines, top, sections;
  Walk nowhere;  // of the entries without a section

  std::map<int, Item> items;
  bool stay = false;
  int lastId = 0;
};

/// One call, on a file and on its model.
template <class F>
struct Step {
  std::string name;    // "e." of the current section's entries, "t." of the top level
  std::string policy;  // c ends the stay first, s settles the section, e the walk's own cursor
  std::string (*run)(F& f, const char* a, const char* b);
  std::string (FileModel::*model)(FileModel::Walk&, const std::string&, const std::string&);

  std::string On(FileModel& m, const std::string& a, const std::string& b) const {
    if (policy.find('c') != std::string::npos) m.stay = false;
    if (policy.find('s') != std::string::npos) m.sections.Settle();
    m.nowhere = {{}, FileModel::kEnd};
    auto& w = name[1] != '.'       ? m.sections
              : name[0] == 't'     ? m.top
              : m.sections.at >= 0 ? m.items[m.sections.at].entries
                                   : m.nowhere;
    if (policy.find('e') != std::string::npos) w.Settle();
    return (m.*model)(w, a, b);
  }
};

template <class F>
std::vector<Step<F>> TopLevelSteps() {
  using A = const char*;
  using M = FileModel;
  return {
      {"t.count", "", [](F& f, A, A) { return Told(f.GetEntryCount()); }, &M::Count},
      {"t.goto", "c", [](F& f, A a, A) { return Told(f.GotoEntry(a)); }, &M::Goto},
      {"t.next", "", [](F& f, A, A) { return Told(f.GotoNextEntry()); }, &M::Next},
      {"t.prev", "c", [](F& f, A, A) { return Told(f.GotoPreviousEntry()); }, &M::Prev},
      {"t.first", "c", [](F& f, A, A) { return Told(f.GotoFirstEntry()); }, &M::First},
      {"t.last", "c", [](F& f, A, A) { return Told(f.GotoLastEntry()); }, &M::Last},
      {"t.get", "c", [](F& f, A a, A) { return f.Get(&F::GetEntry, a); }, &M::Get},
      {"t.read", "e", [](F& f, A, A) { return f.Read(&F::GetCurrentEntry); }, &M::Read},
      {"t.rename", "e", [](F& f, A a, A) { return Told(f.RenameEntry(a)); }, &M::Rename},
      {"t.add", "c", [](F& f, A a, A b) { return Told(f.AddEntry(a, b, false)); }, &M::Add},
      {"t.addfront", "c", [](F& f, A a, A b) { return Told(f.AddEntry(a, b, true)); },
       &M::AddFront},
      {"t.insert", "e", [](F& f, A a, A b) { return Told(f.InsertEntry(a, b)); }, &M::InsertTop},
      {"t.put", "c", [](F& f, A a, A b) { return Told(f.SetEntry(a, b)); }, &M::Put},
      {"t.deletekey", "c", [](F& f, A a, A) { return Told(f.DeleteEntry(a)); }, &M::DeleteKey},
      {"t.delete", "e", [](F& f, A, A) { return Told(f.DeleteCurrentEntry()); }, &M::Delete},
  };
}

/// All that moves, reads or edits.
template <class F>
const std::vector<Step<F>>& Steps();

template <>
inline const std::vector<Step<OpenConfigFile>>& Steps() {
  using F = OpenConfigFile;
  using A = const char*;
  using M = FileModel;
  static const auto steps = [] {
    std::vector<Step<F>> made = TopLevelSteps<F>();
    made.push_back(
        {"t.restart", "c", [](F& f, A, A) { return f.Restart(), std::string("-"); }, &M::Restart});
    made.push_back(
        {"t.set", "e", [](F& f, A a, A) { return Told(f.SetCurrentEntry(a)); }, &M::SetTop});
    return made;
  }();
  return steps;
}

template <>
inline const std::vector<Step<OpenSectionFile>>& Steps() {
  using F = OpenSectionFile;
  using A = const char*;
  using M = FileModel;
  static const auto steps = [] {
    std::vector<Step<F>> made = {
        {"next", "", [](F& f, A, A) { return Told(f.GotoNextSection()); }, &M::Next},
        {"prev", "c", [](F& f, A, A) { return Told(f.GotoPreviousSection()); }, &M::Prev},
        {"first", "c", [](F& f, A, A) { return Told(f.GotoFirstSection()); }, &M::First},
        {"last", "c", [](F& f, A, A) { return Told(f.GotoLastSection()); }, &M::Last},
        {"goto", "c", [](F& f, A a, A) { return Told(f.GotoSection(a)); }, &M::Goto},
        {"count", "", [](F& f, A, A) { return Told(f.GetSectionCount()); }, &M::Count},
        {"name", "ce", [](F& f, A, A) { return f.Name(); }, &M::Name},
        {"rename", "ce", [](F& f, A a, A) { return Told(f.SetSectionName(a)); }, &M::SetName},
        {"add", "c", [](F& f, A a, A) { return Told(f.AddSection(a, false)); }, &M::AddS},
        {"addfront", "c", [](F& f, A a, A) { return Told(f.AddSection(a, true)); }, &M::AddFrontS},
        {"insert", "e", [](F& f, A a, A) { return Told(f.InsertSection(a)); }, &M::InsertS},
        {"delete", "e", [](F& f, A, A) { return Told(f.DeleteSection()); }, &M::DeleteS},
        {"deletename", "c", [](F& f, A a, A) { return Told(f.DeleteSection(a)); }, &M::DeleteName},
        {"restart", "c", [](F& f, A, A) { return f.Restart(), std::string("-"); }, &M::Restart},
        {"e.count", "s", [](F& f, A, A) { return Told(f.GetSecEntryCount()); }, &M::Count},
        {"e.goto", "sc", [](F& f, A a, A) { return Told(f.GotoSecEntry(a)); }, &M::Goto},
        {"e.next", "s", [](F& f, A, A) { return Told(f.GotoSecNextEntry()); }, &M::Next},
        {"e.prev", "sc", [](F& f, A, A) { return Told(f.GotoSecPrevEntry()); }, &M::Prev},
        {"e.first", "sc", [](F& f, A, A) { return Told(f.GotoSecFirstEntry()); }, &M::First},
        {"e.last", "sc", [](F& f, A, A) { return Told(f.GotoSecLastEntry()); }, &M::Last},
        {"e.restart", "c", [](F& f, A, A) { return f.RestartSection(), std::string("-"); },
         &M::Restart},
        {"e.get", "sc", [](F& f, A a, A) { return f.Get(&F::GetSectionEntry, a); }, &M::Get},
        {"e.read", "sce", [](F& f, A, A) { return f.Read(&F::GetSecCurrentEntry); }, &M::Read},
        {"e.set", "c", [](F& f, A a, A) { return Told(f.SetSecCurrentEntry(a)); }, &M::Set},
        {"e.rename", "sce", [](F& f, A a, A) { return Told(f.RenameSectionEntry(a)); }, &M::Rename},
        {"e.add", "sc", [](F& f, A a, A b) { return Told(f.AddSectionEntry(a, b)); }, &M::Add},
        {"e.put", "sc", [](F& f, A a, A b) { return Told(f.SetSectionEntry(a, b)); }, &M::Put},
        {"e.insert", "s", [](F& f, A a, A b) { return Told(f.InsertSectionEntry(a, b, false)); },
         &M::Insert},
        {"e.replace", "s", [](F& f, A a, A b) { return Told(f.InsertSectionEntry(a, b, true)); },
         &M::Replace},
        {"e.deletekey", "sc", [](F& f, A a, A) { return Told(f.DeleteSectionEntry(a)); },
         &M::DeleteKey},
        {"e.delete", "c", [](F& f, A, A) { return Told(f.DeleteSectionEntry()); }, &M::Delete},
    };
    const auto more = TopLevelSteps<F>();
    made.insert(made.end(), more.begin(), more.end());
    return made;
  }();
  return steps;
}

/// Where product and model differ after the same call on both, or an empty text.
template <class F>
std::string Difference(F& file, FileModel& model, const std::string& result,
                       const std::string& expected) {
  if (result != expected) return "result: " + result + " instead of " + expected;
  if (file.Image() != model.Image()) return "image: " + file.Image() + "\n--\n" + model.Image();
  const std::string picture = file.Picture(true);
  if (picture != model.Picture()) return "picture: " + picture + "\n--\n" + model.Picture();
  return file.Fault();
}

/// Takes a text into both.
template <class F>
std::string Attach(F& file, FileModel& model, const std::string& text, const char* path) {
  std::string result;
  try {
    result = Told(file.AttachToBuffer(text.c_str(), path));
  } catch (const ConfigException&) {
    result = "!";
  }
  const std::string expected = model.Attach(text.c_str());
  if (result != expected || result == "!") return result == expected ? "" : "attach: " + result;
  return Difference(file, model, result, expected);
}

#endif
