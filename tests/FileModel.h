// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_MODEL_H
#define ZELCONFUTILS_TESTS_FILE_MODEL_H

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>
#include <list>
#include <optional>
#include <string>
#include <utility>

#include "FileFixtures.h"

/// A plain model of a sectioned file, and with empty start and stop tokens of a flat one. A line is
/// kept in parts, and everything is searched again each time. A step takes the list that it works
/// on: the entries outside sections, the sections, or the entries of the current section.
class FileModel {
 public:
  using string = std::string;
  using Text = const std::string&;
  using size_t = std::size_t;

  /// All of it is head when the line is no entry.
  struct Line {
    string head = "", key = "", gap = "", value = "", tail = "";
    bool isShared = false;  // a name line that somebody else owns too
    string All() const { return head + key + gap + value + tail; }
  };
  using LinePlace = std::list<Line>::iterator;

  /// Elements in order, and a cursor that stays at its element.
  template <class Element>
  struct List : std::list<Element> {
    using Place = typename std::list<Element>::iterator;
    std::optional<Place> at = {};
    bool IsAtElement() { return at && *at != this->end(); }
    Element& Current() { return **at; }
    Place Find(Text name) {
      return std::find_if(this->begin(), this->end(),
                          [&](const Element& each) { return NameOf(each) == name; });
    }
    bool To(Place place) {
      if (place != this->end()) at = place;
      return place != this->end();
    }
    void Clear() { at = this->erase(this->begin(), this->end()); }
  };
  using Entries = List<LinePlace>;
  struct Section {
    string name = "";
    LinePlace start = {}, stop = {};
    bool hasNameLine = true;
    Entries entries = {};
  };

  explicit FileModel(const FileTokens& tokens) : t(tokens) {}

  // --- Which list, and what a call does to it first ---

  Entries entries;
  List<Section> sections;
  auto& Cleared(auto& list) {
    mark = false;
    return list;
  }
  auto& Settled(auto& list) {
    list.at = list.at.value_or(list.begin());
    return list;
  }
  /// The entries of the current section; without one an empty list that nobody remembers.
  Entries& InSection() {
    nothing.Clear();
    return sections.IsAtElement() ? sections.Current().entries : nothing;
  }
  Entries& InSettledSection() { return Settled(sections), InSection(); }

  // --- Steps of a cursor; they clear the mark ---

  bool Goto(auto& list, Text name) { return Cleared(list).To(list.Find(name)); }
  bool GotoFirst(auto& list) { return Cleared(list).To(list.begin()); }
  bool GotoLast(auto& list) { return GotoFirst(list) && list.To(std::prev(list.end())); }
  bool GotoPrevious(auto& list) {
    if (Cleared(list).at.value_or(list.begin()) == list.begin()) return false;
    return list.To(std::prev(*list.at));
  }
  bool GotoNext(auto& list) {
    const bool isThere = std::exchange(mark, false);  // a delete has put it on the next element
    if (!list.at) {
      list.at = list.begin();
    } else if (list.IsAtElement() && !isThere) {
      ++*list.at;
    }
    return list.IsAtElement();
  }
  void Unset(auto& list) { Cleared(list).at = {}; }
  void Restart() { Unset(entries), Unset(sections); }

  // --- Edits of entries ---

  bool Add(Entries& list, Text key, Text value) {
    if (&Cleared(list) == &nothing) return false;
    const LinePlace line = &list == &entries ? lines.end() : sections.Current().stop;
    return Compose(list, list.end(), line, key, value);
  }
  bool AddAtTop(Text key, Text value) {
    return Compose(Cleared(entries), entries.begin(), lines.begin(), key, value);
  }
  /// Directly before the current one.
  bool Insert(Entries& list, Text key, Text value) {
    if (&list == &nothing) return false;
    if (!Settled(Cleared(list)).IsAtElement()) return Add(list, key, value);
    return Compose(list, *list.at, list.Current(), key, value);
  }
  bool InsertOutside(Text key, Text value) {
    const bool isFirst = Settled(entries).at == entries.begin();
    return isFirst ? AddAtTop(key, value) : Insert(entries, key, value);
  }
  /// The new entry becomes the current one, but at end.
  bool InsertIn(Entries& list, Text key, Text value) {
    const bool isAdded = Insert(list, key, value);
    if (isAdded && list.IsAtElement()) --*list.at;
    return isAdded;
  }
  bool Replace(Entries& list, Text key, Text value) {
    const bool isNew = list.Find(key) == list.end();
    return isNew ? InsertIn(list, key, value) : Set(list, key, value) != 0;
  }
  size_t Set(Entries& list, Text key, Text value) {
    const auto found = Cleared(list).Find(key);
    if (found != list.end()) return SetValue(**found, value);
    return Add(list, key, value) ? 2 : 0;
  }
  size_t SetCurrent(Entries& list, Text value) {
    return list.IsAtElement() ? SetValue(*list.Current(), value) : 0;
  }
  size_t SetCurrentOutside(Text value) {
    const size_t result = SetCurrent(Settled(entries), value);
    if (entries.IsAtElement() && result != 1) mark = false;
    return result;
  }
  bool Rename(Entries& list, Text key) {
    if (!Settled(list).IsAtElement() || key.empty()) return false;
    Line line = *list.Current();
    if (line.key.empty()) {  // its place is counted back from the first separator of the line
      const string front = line.head + line.gap;
      line.head = front.substr(0, KeyEnd(front));
      line.gap = front.substr(KeyEnd(front));
    }
    if (line.isShared || (line.gap + line.value + line.tail).size() > 1023) return false;
    line.key = key;
    *list.Current() = line;
    return true;
  }
  bool Delete(Entries& list, Text key) { return DeleteAt(Cleared(list), list.Find(key)); }
  bool DeleteCurrent(Entries& list) { return list.at && DeleteAt(list, *list.at); }

  // --- Edits of sections ---

  bool AddSection(Text name, bool atFront) {
    return atFront ? Compose(name, sections.begin(), lines.begin())
                   : Compose(name, sections.end(), lines.end());
  }
  bool InsertSection(Text name) {
    const auto place = *Settled(sections).at;
    const bool isFirst = place == sections.begin();
    if (isFirst || !sections.IsAtElement()) return AddSection(name, isFirst);
    return std::prev(place)->stop != place->start && Compose(name, place, place->start);
  }
  bool RenameSection(Text name) {
    if (!Settled(Cleared(sections)).IsAtElement()) return false;
    Section& section = sections.Current();
    if (!section.hasNameLine || section.start->isShared) return false;
    section.start->head = NameLine(name);
    section.name = name;
    return true;
  }
  static constexpr size_t kNoSection = 4294967295;
  size_t DeleteSection() {
    if (!Settled(sections).IsAtElement()) return kNoSection;
    const Section& section = sections.Current();
    if (section.start->isShared || section.stop->isShared) return kNoSection;
    lines.erase(section.start, std::next(section.stop));
    sections.at = sections.erase(*sections.at);
    mark = true;
    return sections.size();
  }
  size_t DeleteSection(Text name) { return Goto(sections, name) ? DeleteSection() : kNoSection; }

  // --- The file ---

  void Clear() {
    sections.Clear();
    entries.Clear();
    lines.clear();
    mark = false;
  }
  /// Takes the bytes of a file: false when they end inside a section.
  bool Load(Text image) {
    Clear();
    for (size_t at = 0; at < image.size(); at += lines.back().head.size()) {
      lines.push_back({image.substr(at, std::min(image.find('\n', at), at + 1022) - at + 1)});
    }
    Section* open = nullptr;
    for (LinePlace line = lines.begin(); line != lines.end(); ++line) {
      const string text = line->head;
      const size_t start = *t.start ? text.find(Start()) : string::npos;
      if (text.find(t.comment) == 0) {
      } else if (open != nullptr && text.find(Stop()) != string::npos) {
        std::exchange(open, nullptr)->stop = line;
      } else if (open == nullptr && start != string::npos && start <= Separator(text)) {
        open = &Open(line);
      } else if (Separator(text) != string::npos) {
        Parse(*line);
        (open != nullptr ? open->entries : entries).push_back(line);
      }
    }
    entries.at = entries.begin();
    sections.at = sections.begin();
    return open == nullptr;
  }
  string Image() const {
    string image;
    for (const Line& line : lines) image += line.All();
    return image;
  }
  string Dump() {
    const auto show = [](Section& each) { return SectionText(each.name, Shown(each.entries)); };
    // Without sections an unset cursor and one at end are the same to a caller.
    const string shown = sections.empty() ? "(none)" : Shown(sections, show);
    return DumpText(Image(), Shown(entries), shown, mark);
  }

 private:
  bool Compose(Entries& list, Entries::Place place, LinePlace next, Text key, Text value) {
    const Line line = {t.prefix, key, t.separator, value, "\n"};
    if (line.All().size() > 1023) return false;
    list.insert(place, lines.insert(next, line));
    return true;
  }
  bool Compose(Text name, List<Section>::Place place, LinePlace next) {
    Section section = {name};
    section.start = lines.insert(next, {NameLine(name)});
    if (IsTwoLineForm()) lines.insert(next, {Start()});
    section.stop = lines.insert(next, {Stop()});
    return Cleared(sections).To(sections.insert(place, section));
  }
  static Text NameOf(LinePlace entry) { return entry->key; }
  static Text NameOf(const Section& section) { return section.name; }
  static size_t SetValue(Line& line, Text value) {
    if (line.value == value) return 1;
    if (line.isShared) return 0;
    line.value = value;
    return 2;
  }
  bool DeleteAt(Entries& list, Entries::Place place) {
    if (place == list.end() || (*place)->isShared) return false;
    lines.erase(*place);
    list.at = list.erase(place);
    return mark = true;
  }
  /// The section whose start token is in that line.
  Section& Open(LinePlace line) {
    Section section;
    section.hasNameLine = !IsTwoLineForm() || line != lines.begin();
    section.start = IsTwoLineForm() && section.hasNameLine ? std::prev(line) : line;
    if (section.hasNameLine) section.name = NameIn(section.start->All());
    const bool isEntry = !section.start->gap.empty();
    const bool isStop = !sections.empty() && sections.back().stop == section.start;
    section.start->isShared = isEntry || isStop;
    return sections.emplace_back(section);
  }

  // A token's leading line feed belongs to the line before.
  bool IsTwoLineForm() const { return t.start[0] == '\n'; }
  string Start() const { return t.start + (t.start[0] == '\n'); }
  string Stop() const { return t.stop + (t.stop[0] == '\n'); }
  size_t Separator(Text line) const { return line.find(t.separator); }
  // Where the first `end` bytes end without their white space.
  static size_t Trimmed(Text text, size_t least, size_t end) {
    while (end > least && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
    return end;
  }
  // A blank that is the line's first byte is not passed.
  size_t KeyEnd(Text line) const { return Trimmed(line, Separator(line) > 0, Separator(line)); }
  void Parse(Line& line) const {
    const string text = line.head;
    const size_t keyEnd = KeyEnd(text),
                 key = std::min(text.find_first_not_of(" \t\n\v\f\r"), keyEnd);
    const size_t value = Separator(text) + std::strlen(t.separator);
    const size_t valueEnd = Trimmed(text, value, text.size());
    line = {text.substr(0, key), text.substr(key, keyEnd - key),
            text.substr(keyEnd, value - keyEnd), text.substr(value, valueEnd - value),
            text.substr(valueEnd)};
  }
  string NameIn(Text line) const {
    const size_t end = Trimmed(line, 0, line.size() - (IsTwoLineForm() ? 0 : Start().size()));
    const size_t keyword = *t.keyword ? line.find(t.keyword) : string::npos;
    const size_t begin = keyword == string::npos ? 0 : keyword + std::strlen(t.keyword) + 1;
    return begin < end ? line.substr(begin, end - begin) : "";
  }
  string NameLine(Text name) const {
    const string keyword = name.empty() || !*t.keyword ? "" : t.keyword + string(" ");
    if (IsTwoLineForm()) return keyword + name + "\n";
    return keyword + name + (name.empty() ? "" : " ") + t.start;
  }
  static string Shown(auto& list, auto show) {
    const auto isAt = [&](auto place) { return list.at == place; };
    return ListText(list, !list.at, isAt, show);
  }
  static string Shown(Entries& list) {
    return Shown(list, [](LinePlace entry) { return EntryText(entry->key, entry->value); });
  }

  FileTokens t;
  std::list<Line> lines;
  Entries nothing;
  bool mark = false;
};

#endif
