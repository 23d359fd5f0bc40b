// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_MODEL_H
#define ZELCONFUTILS_TESTS_FILE_MODEL_H

#include <algorithm>
#include <cctype>
#include <cstring>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "OpenFiles.h"

/// A plain model of a sectioned file, and with an empty start token of a flat one. Everything is
/// searched again each time; the three kinds of walks run on the same functions.
class FileModel {
 public:
  using string = std::string;
  using Text = const std::string&;
  struct Record;
  /// Records in order, and a cursor: unset, the place of one, or their count for end.
  struct Walk {
    std::vector<Record*> all;
    int at = -1;
    int End() const { return static_cast<int>(all.size()); }
    bool IsAtRecord() const { return at >= 0 && at < End(); }
    Record& Current() const { return *all.begin()[at]; }
    void Settle() { at = std::max(at, 0); }
    void Insert(int place, Record* record) {
      all.insert(all.begin() + place, record);
      at += at >= place;
    }
  };
  /// A line, all of it head when it has no entry; or a section, its name as the key.
  struct Record {
    string head = "", key = "", gap = "", value = "", tail = "";
    Record *first = nullptr, *last = nullptr;   // its lines
    bool hasNameLine = true, isFrozen = false;  // a name line that somebody else owns too
    size_t capacity = 0;
    Walk entries = {};
    string Line() const { return head + key + gap + value + tail; }
    bool Outgrows() {
      if (Line().size() <= capacity) return false;
      capacity = Line().size() + 32;
      return true;
    }
  };

  explicit FileModel(const FileTokens& tokens) : t(tokens) {}

  /// Takes the bytes of a file. "!" when they end inside a section.
  string Load(Text image) {
    ClearAll(top, "", "");
    for (size_t at = 0; at < image.size(); at += lines.back()->head.size()) {
      AddLine({image.substr(at, std::min(image.find('\n', at), at + 1022) - at + 1)}, End());
    }
    return Index() ? "1" : "!";
  }
  /// Takes a text: up to its last line feed, or "0" and all in front of a line that is too long.
  string Attach(Text text) {
    size_t at = 0, end;
    while ((end = text.find('\n', at)) != string::npos && end - at < 1023) at = end + 1;
    if (end == string::npos) return Load(text.substr(0, at));
    Load(text.substr(0, at));
    top = sections = {{}, 0};
    return "0";
  }

  string Image() const {
    string image;
    for (const Record* line : lines) image += line->Line();
    return image;
  }
  /// As those of a file.
  string Picture() const { return Listed(top) + "; " + Listed(sections) + (stay ? "+" : ""); }
  string Capacities() const {
    string all;
    for (const Record* line : lines) all += std::to_string(line->capacity) + " ";
    return all;
  }

  // The steps, each on the walk `w`.
  string Next(Walk& w, Text, Text) {
    const bool stays = std::exchange(stay, false) && w.at >= 0;
    if (w.at < w.End() && !stays) ++w.at;
    return Told(w.at < w.End());
  }
  string Prev(Walk& w, Text, Text) { return w.at > 0 ? Jump(w, w.at - 1) : "0"; }
  string First(Walk& w, Text, Text) { return Jump(w, 0); }
  string Last(Walk& w, Text, Text) { return Jump(w, w.End() - 1); }
  string Goto(Walk& w, Text name, Text) { return Jump(w, Find(w, name)); }
  string Count(Walk& w, Text, Text) { return std::to_string(w.End()); }
  string Restart(Walk& w, Text, Text) {
    if (&w == &sections) top.at = -1;
    w.at = -1;
    return "1";
  }
  string ClearAll(Walk&, Text, Text) {
    *this = FileModel(t);
    top.at = sections.at = 0;
    return "1";
  }
  string Name(Walk& w, Text, Text) {
    return w.IsAtRecord() ? Whole(w.Current().key) : "! untouched";
  }
  string Get(Walk& w, Text key, Text) {
    return Find(w, key) < w.End() ? Whole(w.all.begin()[Find(w, key)]->value) : "0zeros";
  }
  string Read(Walk& w, Text, Text) {
    if (!w.IsAtRecord()) return "00 untouched,0 untouched,0~0~";
    const string &key = w.Current().key, &value = w.Current().value;
    const string result = Told(key.empty() ? value.size() : key.size());
    return result + Whole(key) + "," + Whole(value) + ",!~!" + key.c_str();
  }
  string Set(Walk& w, Text, Text value) {
    return w.IsAtRecord() ? SetValue(w.Current(), value) : "0";
  }
  string SetTop(Walk& w, Text, Text value) {
    const string result = Set(w, "", value);
    if (w.IsAtRecord() && result != "1") stay = false;
    return result;
  }
  string Rename(Walk& w, Text key, Text) {
    if (!w.IsAtRecord() || key.empty() || w.Current().isFrozen) return "0";
    Record line = w.Current();
    // The place of an empty key is counted back from the first separator of the line.
    if (line.key.empty()) Part(line, line.head + line.gap, false);
    if ((line.gap + line.value + line.tail).size() > 1023) return "0";
    line.key = key;
    line.Outgrows();
    w.Current() = line;
    return "1";
  }
  string RenameSection(Walk& w, Text name, Text) {
    if (!w.IsAtRecord() || !w.Current().hasNameLine || w.Current().first->isFrozen) return "0";
    w.Current().first->head = NameLine(name);
    w.Current().first->Outgrows();
    w.Current().key = name;
    return "1";
  }
  string Add(Walk& w, Text key, Text value) {
    const bool inside = &w != &top && &w != &sections && &w != &nowhere;
    return Compose(w, key, value, inside ? Place(sections.Current().last) : End(), w.End());
  }
  string AddFront(Walk& w, Text key, Text value) { return Compose(w, key, value, 0, 0); }
  string Insert(Walk& w, Text key, Text value) {
    if (w.at == 0) return AddFront(w, key, value);
    if (w.at == w.End()) return Add(w, key, value);
    return Compose(w, key, value, Place(w.Current().first), w.at);
  }
  string InsertIn(Walk& w, Text key, Text value) {
    if (&w == &nowhere) return "0";
    stay = false;
    w.Settle();
    const int place = w.at;
    if (place == w.End()) return Add(w, key, value);
    const string result = Compose(w, key, value, Place(w.all.begin()[place]), place);
    w.at = place;  // on the new entry
    return result;
  }
  string Put(Walk& w, Text key, Text value) {
    if (Find(w, key) < w.End()) return SetValue(*w.all.begin()[Find(w, key)], value);
    return Add(w, key, value) == "1" ? "2" : "0";
  }
  string Replace(Walk& w, Text key, Text value) {
    if (Find(w, key) == w.End()) return InsertIn(w, key, value);
    stay = false;
    return Told(Put(w, key, value) != "0");
  }
  string Delete(Walk& w, Text, Text) { return Told(w.at >= 0 && Erase(w, w.at)); }
  string DeleteKey(Walk& w, Text key, Text) { return Told(Erase(w, Find(w, key))); }
  string DeleteSection(Walk& w, Text, Text) { return Erase(w, w.at) ? Count(w, "", "") : "!"; }
  string DeleteName(Walk& w, Text name, Text) {
    return Goto(w, name, "") == "1" ? DeleteSection(w, "", "") : "!";
  }

  FileTokens t;
  std::vector<Record*> lines;
  Walk top, sections, nowhere;  // the last without a current section
  bool stay = false;

 private:
  bool Index() {
    Record *open = nullptr, *before = nullptr, *last = nullptr;
    for (Record* const line : lines) {
      const size_t start = line->head.find(Start()), separator = Separator(line->head);
      if (line->head.find(t.comment) == 0) {
      } else if (open != nullptr && line->head.find(Stop()) != string::npos) {
        std::exchange(open, nullptr)->last = last = line;
      } else if (open == nullptr && *t.start && start != string::npos && separator >= start) {
        const bool above = before != nullptr && TwoLines();
        if (above) before->isFrozen = before == last || !before->gap.empty();
        open = &records.emplace_back();
        open->hasNameLine = above || !TwoLines();
        open->first = above ? before : line;
        if (open->hasNameLine) open->key = NameIn(open->first->Line());
        sections.all.push_back(open);
      } else if (separator != string::npos) {
        Walk& w = open != nullptr ? open->entries : top;
        Parse(*line);
        w.all.push_back(line);
      }
      before = line;
    }
    return open == nullptr;
  }
  // Of the first one; an empty separator is nowhere.
  size_t Separator(Text line) const { return *t.separator ? line.find(t.separator) : string::npos; }
  bool TwoLines() const { return t.start[0] == '\n'; }
  string Start() const { return t.start + (t.start[0] == '\n'); }
  string Stop() const { return t.stop + (t.stop[0] == '\n'); }
  static string Whole(Text text) { return std::to_string(text.size()) + text; }
  // Where the text in front of `end` ends without its white space.
  static size_t Trimmed(Text text, size_t least, size_t end) {
    while (end > least && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
    return end;
  }
  string NameIn(Text line) const {
    const size_t end = Trimmed(line, 0, line.size() - (TwoLines() ? 0 : Start().size()));
    const size_t at = *t.keyword ? line.find(t.keyword) : string::npos;
    const size_t begin = at == string::npos ? 0 : at + std::strlen(t.keyword) + 1;
    return begin < end ? line.substr(begin, end - begin) : "";
  }
  string NameLine(Text name) const {
    const string keyword = name.empty() || !*t.keyword ? "" : t.keyword + string(" ");
    return keyword + name + (TwoLines() ? "\n" : name.empty() ? t.start : string(" ") + t.start);
  }
  // Parts `front`, the line up to the value, into head, key and gap by its first separator.
  void Part(Record& line, Text front, bool hasKey) const {
    const size_t end = Trimmed(front, Separator(front) > 0, Separator(front));
    const size_t blanks = front.find_first_not_of(" \t\n\v\f\r");
    line.head = front.substr(0, hasKey ? std::min(blanks, end) : end);
    line.key = front.substr(line.head.size(), end - line.head.size());
    line.gap = front.substr(end);
  }
  void Parse(Record& line) const {
    const string text = line.head;
    const size_t value = Separator(text) + std::strlen(t.separator);
    const size_t end = Trimmed(text, value, text.size());
    Part(line, text.substr(0, value), true);
    line.value = text.substr(value, end - value);
    line.tail = text.substr(end);
  }
  int End() const { return static_cast<int>(lines.size()); }
  int Place(const Record* line) const {
    return static_cast<int>(std::find(lines.begin(), lines.end(), line) - lines.begin());
  }
  Record* AddLine(const Record& parts, int place) {
    Record* const line = &records.emplace_back(parts);
    line->first = line->last = line;
    line->capacity = line->Line().size() + 33;
    return *lines.insert(lines.begin() + place, line);
  }
  string Compose(Walk& w, Text key, Text value, int line, int place) {
    if (&w == &sections) {
      const bool isStop =
          line < End() && lines.begin()[line]->isFrozen && lines.begin()[line]->gap.empty();
      if (isStop) return "0";
      Record* const name = AddLine({NameLine(key)}, line++);
      if (TwoLines()) AddLine({Start()}, line++);
      Record* const stop = AddLine({Stop()}, line);
      w.Insert(place, &records.emplace_back(Record{"", key, "", "", "", name, stop}));
      w.at = place;
      stay = false;
    } else {
      const Record made = {t.prefix, key, t.separator, value, "\n"};
      if (&w == &nowhere || made.Line().size() > 1023 || !*t.separator) return "0";
      w.Insert(place, AddLine(made, line));
    }
    return "1";
  }
  static int Find(const Walk& w, Text name) {
    const auto isNamed = [&](const Record* record) { return record->key == name; };
    return static_cast<int>(std::find_if(w.all.begin(), w.all.end(), isNamed) - w.all.begin());
  }
  static string Jump(Walk& w, int place) {
    if (place < 0 || place >= w.End()) return "0";
    w.at = place;
    return "1";
  }
  string SetValue(Record& line, Text value) {
    if (line.value == value) return "1";
    if (line.isFrozen) return "0";
    line.value = value;
    const string front = line.head + line.key + line.gap;
    const size_t first = Separator(front) + std::strlen(t.separator);
    // A text that has moved is parted anew, unless the key itself holds a separator.
    if (line.Outgrows() && first == front.size()) Part(line, front, true);
    return "2";
  }
  bool Erase(Walk& w, int place) {
    if (place >= w.End()) return false;
    const Record& record = *w.all.begin()[place];
    if (record.first->isFrozen || record.last->isFrozen) return false;
    const auto begin = lines.begin() + Place(record.first);
    lines.erase(begin, lines.begin() + Place(record.last) + 1);
    w.all.erase(w.all.begin() + place);
    w.at = place;
    return stay = true;
  }
  string Listed(const Walk& w) const {
    string listed = w.at < 0 ? "^" : "";
    for (int i = 0; i < w.End(); ++i) {
      const Record& r = *w.all.begin()[i];
      listed += (i == w.at ? "*" : "") + r.key;
      listed += &w == &sections ? Listed(r.entries).insert(0, 1, '{') + "}" : "[" + r.value + "]";
    }
    return listed + (w.at == w.End() ? "$" : "");
  }

  std::deque<Record> records;  // whatever was made since the last load
};

#endif
