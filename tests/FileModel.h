// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FILE_MODEL_H
#define ZELCONFUTILS_TESTS_FILE_MODEL_H

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

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
  /// Elements in order, and a cursor.
  template <class Element>
  struct List {
    std::vector<std::shared_ptr<Element>> all = {};
    CursorPlace at = {};
    size_t End() const { return all.size(); }
    bool IsAtElement() const { return at && *at < End(); }
    Element& Current() const { return *all[*at]; }
    size_t Find(Text name) const {
      size_t place = 0;
      while (place < End() && all[place]->key != name) ++place;
      return place;
    }
    bool To(size_t place) {
      if (place < End()) at = place;
      return place < End();
    }
    void Insert(size_t place, std::shared_ptr<Element> element) {
      all.insert(all.begin() + static_cast<std::ptrdiff_t>(place), element);
      if (at >= place) ++*at;  // the cursor keeps its element
    }
    void Erase(size_t place) {
      all.erase(all.begin() + static_cast<std::ptrdiff_t>(place));
      at = place;
    }
  };
  using Lines = List<Line>;
  struct Section {
    string key = "";  // its name
    Lines entries = {};
    std::shared_ptr<Line> start = nullptr, stop = nullptr;
    bool hasNameLine = true;
  };

  explicit FileModel(const FileTokens& tokens) : t(tokens) {}

  // --- Which list, and what a call does to it first ---

  Lines entries;
  List<Section> sections;
  template <class L>
  L& Cleared(L& list) {
    mark = false;
    return list;
  }
  template <class L>
  L& Settled(L& list) {
    list.at = list.at.value_or(0);
    return list;
  }
  /// The entries of the current section; without one an empty list that nobody remembers.
  Lines& InSection() {
    nothing = {{}, 0};
    return sections.IsAtElement() ? sections.Current().entries : nothing;
  }
  Lines& InSettledSection() { return Settled(sections), InSection(); }

  // --- Steps of a cursor; they clear the mark ---

  bool Goto(auto& list, Text name) { return Cleared(list).To(list.Find(name)); }
  bool GotoFirst(auto& list) { return Cleared(list).To(0); }
  bool GotoLast(auto& list) { return Cleared(list).To(list.End() - 1); }
  bool GotoPrevious(auto& list) { return Cleared(list).at > 0u && list.To(*list.at - 1); }
  bool GotoNext(auto& list) {
    const bool isThere = std::exchange(mark, false);  // a delete has put it on the next element
    if (!list.at) {
      list.at = 0;
    } else if (list.IsAtElement() && !isThere) {
      ++*list.at;
    }
    return list.IsAtElement();
  }
  void Unset(auto& list) { Cleared(list).at = {}; }
  void Restart() { Unset(entries), Unset(sections); }
  size_t Count(const auto& list) const { return list.End(); }

  // --- Edits of entries ---

  bool Add(Lines& list, Text key, Text value) {
    if (&Cleared(list) == &nothing) return false;
    const bool isOutside = &list == &entries;
    return Compose(list, list.End(), isOutside ? lines.End() : LineOf(sections.Current().stop), key,
                   value);
  }
  bool AddAtTop(Text key, Text value) { return Compose(Cleared(entries), 0, 0, key, value); }
  /// Directly before the current one.
  bool Insert(Lines& list, Text key, Text value) {
    if (&list == &nothing) return false;
    if (!Settled(Cleared(list)).IsAtElement()) return Add(list, key, value);
    return Compose(list, *list.at, LineOf(list.all[*list.at]), key, value);
  }
  bool InsertOutside(Text key, Text value) {
    return Settled(entries).at == 0u ? AddAtTop(key, value) : Insert(entries, key, value);
  }
  /// The new entry becomes the current one, but at end.
  bool InsertIn(Lines& list, Text key, Text value) {
    const bool isAdded = Insert(list, key, value);
    if (isAdded && list.IsAtElement()) --*list.at;
    return isAdded;
  }
  bool Replace(Lines& list, Text key, Text value) {
    return list.Find(key) < list.End() ? Set(list, key, value) != 0 : InsertIn(list, key, value);
  }
  size_t Set(Lines& list, Text key, Text value) {
    const size_t found = Cleared(list).Find(key);
    if (found < list.End()) return SetValue(*list.all[found], value);
    return Add(list, key, value) ? 2 : 0;
  }
  size_t SetCurrent(Lines& list, Text value) {
    return list.IsAtElement() ? SetValue(list.Current(), value) : 0;
  }
  size_t SetCurrentOutside(Text value) {
    const size_t result = SetCurrent(Settled(entries), value);
    if (entries.IsAtElement() && result != 1) mark = false;
    return result;
  }
  bool Rename(Lines& list, Text key) {
    if (!Settled(list).IsAtElement() || key.empty() || list.Current().isShared) return false;
    Line line = list.Current();
    if (line.key.empty()) {  // its place is counted back from the first separator of the line
      const string front = line.head + line.gap;
      line.head = front.substr(0, KeyEnd(front));
      line.gap = front.substr(KeyEnd(front));
    }
    if ((line.gap + line.value + line.tail).size() > 1023) return false;
    line.key = key;
    list.Current() = line;
    return true;
  }
  bool Delete(Lines& list, Text key) { return DeleteAt(Cleared(list), list.Find(key)); }
  bool DeleteCurrent(Lines& list) { return list.at && DeleteAt(list, *list.at); }

  // --- Edits of sections ---

  bool AddSection(Text name, bool atFront) {
    return Compose(name, atFront ? 0 : sections.End(), atFront ? 0 : lines.End());
  }
  bool InsertSection(Text name) {
    const size_t place = *Settled(sections).at;
    if (place == 0 || place == sections.End()) return AddSection(name, place == 0);
    const auto& line = sections.Current().start;
    return sections.all[place - 1]->stop != line && Compose(name, place, LineOf(line));
  }
  bool RenameSection(Text name) {
    if (!Settled(Cleared(sections)).IsAtElement()) return false;
    Section& section = sections.Current();
    if (!section.hasNameLine || section.start->isShared) return false;
    section.start->head = NameLine(name);
    section.key = name;
    return true;
  }
  size_t DeleteSection() {
    if (!Settled(sections).IsAtElement()) return kTooSmall;
    const Section section = sections.Current();
    if (section.start->isShared || section.stop->isShared) return kTooSmall;
    const size_t start = LineOf(section.start);
    for (size_t n = LineOf(section.stop) - start + 1; n > 0; --n) lines.Erase(start);
    sections.Erase(*sections.at);
    mark = true;
    return sections.End();
  }
  size_t DeleteSection(Text name) { return Goto(sections, name) ? DeleteSection() : kTooSmall; }

  // --- The file ---

  void Clear() {
    lines = entries = {{}, 0};
    sections = {{}, 0};
    isCorrupted = mark = false;
  }
  /// Takes the bytes of a file, which `isCorrupted` when they end inside a section.
  void Load(Text image) {
    Clear();
    for (size_t at = 0; at < image.size(); at += lines.all.back()->head.size()) {
      AddLine({image.substr(at, std::min(image.find('\n', at), at + 1022) - at + 1)}, lines.End());
    }
    std::shared_ptr<Section> open;
    std::shared_ptr<Line> before, lastStop;
    for (const auto& line : lines.all) {
      const string text = line->head;
      const size_t start = *t.start ? text.find(Start()) : string::npos;
      if (text.find(t.comment) == 0) {
      } else if (open != nullptr && text.find(Stop()) != string::npos) {
        std::exchange(open, nullptr)->stop = lastStop = line;
      } else if (open == nullptr && start != string::npos && start <= Separator(text)) {
        const bool isNamedAbove = IsTwoLineForm() && before != nullptr;
        open = std::make_shared<Section>();
        open->hasNameLine = isNamedAbove || !IsTwoLineForm();
        open->start = isNamedAbove ? before : line;
        if (open->hasNameLine) open->key = NameIn(open->start->All());
        open->start->isShared |= open->start == lastStop || !open->start->gap.empty();
        sections.all.push_back(open);
      } else if (Separator(text) != string::npos) {
        Parse(*line);
        (open != nullptr ? open->entries : entries).all.push_back(line);
      }
      before = line;
    }
    isCorrupted = open != nullptr;
  }
  /// Takes a text up to its last line feed; false at a line that is too long.
  bool Attach(Text text) {
    size_t at = 0, end;
    while ((end = text.find('\n', at)) != string::npos && end - at < 1023) at = end + 1;
    Load(text.substr(0, at));
    if (end == string::npos) return true;
    entries = {{}, 0};
    sections = {{}, 0};
    return isCorrupted = false;
  }
  bool isCorrupted = false;

  string Image() const {
    string image;
    for (const auto& line : lines.all) image += line->All();
    return image;
  }
  string Dump() const {
    std::vector<string> shown;
    for (const auto& section : sections.all) {
      shown.push_back(SectionText(section->key, EntriesText(section->entries)));
    }
    // Without sections an unset cursor and one at end are the same to a caller.
    return DumpText(Image(), EntriesText(entries),
                    shown.empty() ? "(none)" : ListText(shown, sections.at), mark);
  }

 private:
  size_t LineOf(const std::shared_ptr<Line>& line) const {
    return static_cast<size_t>(std::find(lines.all.begin(), lines.all.end(), line) -
                               lines.all.begin());
  }
  std::shared_ptr<Line> AddLine(const Line& parts, size_t place) {
    lines.Insert(place, std::make_shared<Line>(parts));
    return lines.all[place];
  }
  bool Compose(Lines& list, size_t place, size_t lineAt, Text key, Text value) {
    const Line line = {t.prefix, key, t.separator, value, "\n"};
    if (line.All().size() > 1023) return false;
    list.Insert(place, AddLine(line, lineAt));
    return true;
  }
  bool Compose(Text name, size_t place, size_t lineAt) {
    Section section = {name};
    section.start = AddLine({NameLine(name)}, lineAt++);
    if (IsTwoLineForm()) AddLine({Start()}, lineAt++);
    section.stop = AddLine({Stop()}, lineAt);
    sections.Insert(place, std::make_shared<Section>(section));
    return Cleared(sections).To(place);
  }
  static size_t SetValue(Line& line, Text value) {
    if (line.value == value) return 1;
    if (line.isShared) return 0;
    line.value = value;
    return 2;
  }
  bool DeleteAt(Lines& list, size_t place) {
    if (place >= list.End() || list.all[place]->isShared) return false;
    lines.Erase(LineOf(list.all[place]));
    list.Erase(place);
    return mark = true;
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
  static string EntriesText(const Lines& list) {
    std::vector<string> shown;
    for (const auto& line : list.all) shown.push_back(EntryText(line->key, line->value));
    return ListText(shown, list.at);
  }

  FileTokens t;
  Lines lines, nothing;
  bool mark = false;
};

#endif
