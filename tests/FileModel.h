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

/// A plain model of a sectioned file, and with empty start and stop tokens of a flat one. Its
/// operations have the names, arguments and results of the file classes' own. Each line is kept in
/// parts, and everything is searched again each time.
class FileModel {
 public:
  using string = std::string;
  using Text = const std::string&;
  using size_t = std::size_t;

  explicit FileModel(const FileTokens& tokens) : t(tokens) {}

  // --- The file ---

  /// Takes the bytes of a file, which `isCorrupted` when they end inside a section.
  void Load(Text image) {
    ClearAll();
    for (size_t at = 0; at < image.size(); at += lines.back()->head.size()) {
      AddLine({image.substr(at, std::min(image.find('\n', at), at + 1022) - at + 1)}, lines.size());
    }
    std::shared_ptr<Section> open;
    for (size_t i = 0; i < lines.size(); ++i) {
      const string line = lines[i]->head;
      const bool isHeader = *t.start && Has(line, Start()) &&
                            (!Has(line, t.separator) || line.find(Start()) <= Separator(line));
      if (line.find(t.comment) == 0) continue;
      if (open != nullptr && Has(line, Stop())) {
        std::exchange(open, nullptr)->stop = lines[i];
      } else if (open == nullptr && isHeader) {
        open = std::make_shared<Section>();
        open->hasNameLine = !IsTwoLineForm() || i > 0;
        open->start = IsTwoLineForm() && i > 0 ? lines[i - 1] : lines[i];
        if (open->hasNameLine) open->key = NameIn(open->start->Text());
        open->start->isShared |= open->start->IsEntry() || IsLastStopLine(open->start);
        sections.all.push_back(open);
      } else if (Has(line, t.separator)) {
        Parse(*lines[i]);
        (open != nullptr ? open->entries : entries).all.push_back(lines[i]);
      }
    }
    isCorrupted = open != nullptr;
  }
  /// Takes a text up to its last line feed; false at a line that is too long.
  bool AttachToBuffer(Text text) {
    size_t at = 0, end;
    while ((end = text.find('\n', at)) != string::npos && end - at < 1023) at = end + 1;
    Load(text.substr(0, at));
    if (end == string::npos) return true;
    entries = {{}, 0};
    sections = {{}, 0};
    return isCorrupted = false;
  }
  void ClearAll() {
    lines.clear();
    entries = {{}, 0};
    sections = {{}, 0};
    mark = false;
  }

  // --- Entries of a flat file, and those outside sections ---

  bool GotoEntry(Text key) { return Cleared(entries).To(entries.Find(key)); }
  bool GotoNextEntry() { return entries.Forward(mark); }
  bool GotoPreviousEntry() { return Cleared(entries).Back(); }
  bool GotoFirstEntry() { return Cleared(entries).To(0); }
  bool GotoLastEntry() { return Cleared(entries).ToLast(); }
  size_t GetEntry(Text key, char* buffer, size_t size) {
    return CopyValue(Cleared(entries), key, buffer, size);
  }
  size_t GetCurrentEntry(char* key, size_t keySize, char* value, size_t valueSize) {
    return CopyCurrent(entries, key, keySize, value, valueSize);
  }
  size_t GetEntryCount() const { return entries.End(); }
  bool AddEntry(Text key, Text value, bool atBeginning) {
    Cleared(entries);
    return atBeginning ? Compose(entries, 0, 0, key, value)
                       : Compose(entries, entries.End(), lines.size(), key, value);
  }
  bool InsertEntry(Text key, Text value) {
    Cleared(entries).Settle();
    if (entries.at == 0) return AddEntry(key, value, true);
    if (!entries.IsAtElement()) return AddEntry(key, value, false);
    return Compose(entries, *entries.at, LineOf(&entries.Current()), key, value);
  }
  size_t SetEntry(Text key, Text value) {
    const size_t found = Cleared(entries).Find(key);
    if (found < entries.End()) return SetValue(*entries.all[found], value);
    return AddEntry(key, value, false) ? 2 : 0;
  }
  size_t SetCurrentEntry(Text value) {
    entries.Settle();
    if (!entries.IsAtElement() || entries.Current().value == value) return entries.IsAtElement();
    mark = false;
    return SetValue(entries.Current(), value);
  }
  bool RenameEntry(Text newKey) { return Rename(entries, newKey); }
  bool DeleteEntry(Text key) { return Erase(Cleared(entries), entries.Find(key)); }
  bool DeleteCurrentEntry() {
    entries.Settle();
    return Erase(entries, *entries.at);
  }
  void Restart() {
    mark = false;
    entries.at = sections.at = {};
  }

  // --- Sections ---

  bool GotoSection(Text name) { return Cleared(sections).To(sections.Find(name)); }
  bool GotoNextSection() { return sections.Forward(mark); }
  bool GotoPreviousSection() { return Cleared(sections).Back(); }
  bool GotoFirstSection() { return Cleared(sections).To(0); }
  bool GotoLastSection() { return Cleared(sections).ToLast(); }
  size_t GetSectionCount() const { return sections.End(); }
  size_t GetSectionName(char* buffer, size_t size) {
    Cleared(sections).Settle();
    return sections.IsAtElement() ? CopyOut(sections.Current().key, buffer, size) : kTooSmall;
  }
  bool SetSectionName(Text name) {
    Cleared(sections).Settle();
    if (!sections.IsAtElement()) return false;
    Section& section = sections.Current();
    if (!section.hasNameLine || section.start->isShared) return false;
    section.start->head = NameLine(name);
    section.key = name;
    return true;
  }
  bool AddSection(Text name, bool atFront) {
    return AddSection(name, atFront ? 0 : sections.End(), atFront ? 0 : lines.size());
  }
  bool AddSection(bool atFront) { return AddSection("", atFront); }
  bool InsertSection(Text name) {
    sections.Settle();
    const size_t place = *sections.at;
    if (place == 0) return AddSection(name, true);
    if (place == sections.End()) return AddSection(name, false);
    if (sections.all[place - 1]->stop == sections.Current().start) return false;
    return AddSection(name, place, LineOf(sections.Current().start.get()));
  }
  size_t DeleteSection() {
    sections.Settle();
    if (!sections.IsAtElement()) return kTooSmall;
    const Section section = sections.Current();
    if (section.start->isShared || section.stop->isShared) return kTooSmall;
    const auto begin = lines.begin();
    lines.erase(begin + Offset(LineOf(section.start.get())),
                begin + Offset(LineOf(section.stop.get()) + 1));
    sections.all.erase(sections.all.begin() + Offset(*sections.at));
    mark = true;
    return sections.End();
  }
  size_t DeleteSection(Text name) { return GotoSection(name) ? DeleteSection() : kTooSmall; }

  // --- Entries of the current section ---

  size_t GetSecEntryCount() { return Settled().End(); }
  bool GotoSecEntry(Text key) { return Cleared(Settled()).To(Settled().Find(key)); }
  bool GotoSecNextEntry() { return Settled().Forward(mark); }
  bool GotoSecPrevEntry() { return Cleared(Settled()).Back(); }
  bool GotoSecFirstEntry() { return Cleared(Settled()).To(0); }
  bool GotoSecLastEntry() { return Cleared(Settled()).ToLast(); }
  void RestartSection() { Cleared(Current()).at = {}; }
  size_t GetSectionEntry(Text key, char* buffer, size_t size) {
    return CopyValue(Cleared(Settled()), key, buffer, size);
  }
  size_t GetSecCurrentEntry(char* key, size_t keySize, char* value, size_t valueSize) {
    return CopyCurrent(Cleared(Settled()), key, keySize, value, valueSize);
  }
  size_t SetSecCurrentEntry(Text value) {
    Lines& list = Cleared(Current());
    return list.IsAtElement() ? SetValue(list.Current(), value) : 0;
  }
  bool RenameSectionEntry(Text newKey) { return Rename(Cleared(Settled()), newKey); }
  bool AddSectionEntry(Text key, Text value) {
    Lines& list = Cleared(Settled());
    if (!sections.IsAtElement()) return false;
    return Compose(list, list.End(), LineOf(sections.Current().stop.get()), key, value);
  }
  size_t SetSectionEntry(Text key, Text value) {
    Lines& list = Cleared(Settled());
    if (list.Find(key) < list.End()) return SetValue(*list.all[list.Find(key)], value);
    return AddSectionEntry(key, value) ? 2 : 0;
  }
  bool InsertSectionEntry(Text key, Text value, bool replaceExisting) {
    Lines& list = Settled();
    if (!sections.IsAtElement()) return false;
    if (replaceExisting && list.Find(key) < list.End()) return SetSectionEntry(key, value) != 0;
    list.Settle();
    if (!list.IsAtElement()) return AddSectionEntry(key, value);
    mark = false;
    const size_t place = *list.at;
    if (!Compose(list, place, LineOf(&list.Current()), key, value)) return false;
    list.at = place;
    return true;
  }
  bool DeleteSectionEntry(Text key) { return Erase(Cleared(Settled()), Settled().Find(key)); }
  bool DeleteSectionEntry() {
    Lines& list = Cleared(Current());
    return list.IsAtElement() && Erase(list, *list.at);
  }

  // --- What there is to see ---

  bool isCorrupted = false;
  string Image() const {
    string image;
    for (const auto& line : lines) image += line->Text();
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
  /// All of it is head when the line is no entry.
  struct Line {
    string head = "", key = "", gap = "", value = "", tail = "";
    bool isShared = false;  // a name line that somebody else owns too
    string Text() const { return head + key + gap + value + tail; }
    bool IsEntry() const { return !gap.empty(); }
  };
  template <class Element>
  struct List {
    std::vector<std::shared_ptr<Element>> all = {};
    CursorPlace at = {};
    size_t End() const { return all.size(); }
    bool IsAtElement() const { return at < End() && at; }
    Element& Current() const { return *all[*at]; }
    void Settle() { at = at.value_or(0); }
    bool To(size_t place) {
      if (place < End()) at = place;
      return place < End();
    }
    bool ToLast() { return End() > 0 && To(End() - 1); }
    bool Back() { return at > 0u && To(*at - 1); }
    bool Forward(bool& mark) {
      const bool isThere = std::exchange(mark, false);  // a delete has put it on the next element
      if (!at) {
        at = 0;
      } else if (IsAtElement() && !isThere) {
        ++*at;
      }
      return IsAtElement();
    }
    size_t Find(Text name) const {
      const auto isNamed = [&](const auto& element) { return element->key == name; };
      return static_cast<size_t>(std::find_if(all.begin(), all.end(), isNamed) - all.begin());
    }
    void Insert(size_t place, std::shared_ptr<Element> element) {
      all.insert(all.begin() + Offset(place), element);
      if (at >= place) ++*at;  // the cursor keeps its element
    }
  };
  using Lines = List<Line>;
  struct Section {
    string key = "";  // its name
    Lines entries = {};
    std::shared_ptr<Line> start = nullptr, stop = nullptr;
    bool hasNameLine = true;
  };

  static std::ptrdiff_t Offset(size_t n) { return static_cast<std::ptrdiff_t>(n); }
  template <class L>
  L& Cleared(L& list) {
    mark = false;
    return list;
  }
  /// The entries of the current section; without one an empty list that nobody remembers.
  Lines& Current() {
    nothing = {{}, 0};
    return sections.IsAtElement() ? sections.Current().entries : nothing;
  }
  Lines& Settled() {
    sections.Settle();
    return Current();
  }

  // Copies out whole or not at all.
  static size_t CopyOut(Text text, char* buffer, size_t size) {
    std::fill_n(buffer, size <= text.size() ? size : 0, '\0');
    if (size <= text.size()) return kTooSmall;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return text.size();
  }
  static size_t CopyValue(const Lines& list, Text key, char* buffer, size_t size) {
    if (list.Find(key) < list.End()) return CopyOut(list.all[list.Find(key)]->value, buffer, size);
    std::fill_n(buffer, size, '\0');
    return 0;
  }
  static size_t CopyCurrent(Lines& list, char* key, size_t keySize, char* value, size_t valueSize) {
    list.Settle();
    if (!list.IsAtElement()) return 0;
    const size_t ofKey = key != nullptr ? CopyOut(list.Current().key, key, keySize) : 0;
    if (ofKey == kTooSmall || value == nullptr) return ofKey;
    const size_t ofValue = CopyOut(list.Current().value, value, valueSize);
    return ofKey == 0 || ofValue == kTooSmall ? ofValue : ofKey;
  }

  size_t LineOf(const Line* line) const {
    const auto isIt = [&](const auto& other) { return other.get() == line; };
    return static_cast<size_t>(std::find_if(lines.begin(), lines.end(), isIt) - lines.begin());
  }
  std::shared_ptr<Line> AddLine(const Line& parts, size_t place) {
    return *lines.insert(lines.begin() + Offset(place), std::make_shared<Line>(parts));
  }
  bool Compose(Lines& list, size_t place, size_t lineAt, Text key, Text value) {
    const Line line = {t.prefix, key, t.separator, value, "\n"};
    if (line.Text().size() > 1023) return false;
    list.Insert(place, AddLine(line, lineAt));
    return true;
  }
  bool AddSection(Text name, size_t place, size_t lineAt) {
    Section section = {name};
    section.start = AddLine({NameLine(name)}, lineAt++);
    if (IsTwoLineForm()) AddLine({Start()}, lineAt++);
    section.stop = AddLine({Stop()}, lineAt);
    sections.Insert(place, std::make_shared<Section>(section));
    sections.at = place;
    mark = false;
    return true;
  }
  static size_t SetValue(Line& line, Text value) {
    if (line.value == value) return 1;
    if (line.isShared || line.tail.size() > 1023) return 0;
    line.value = value;
    return 2;
  }
  bool Rename(Lines& list, Text key) {
    list.Settle();
    if (!list.IsAtElement() || key.empty() || list.Current().isShared) return false;
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
  bool Erase(Lines& list, size_t place) {
    if (place >= list.End() || list.all[place]->isShared) return false;
    lines.erase(lines.begin() + Offset(LineOf(list.all[place].get())));
    list.all.erase(list.all.begin() + Offset(place));
    list.at = place;
    return mark = true;
  }

  // Reading. A token's leading line feed belongs to the line before.
  static bool Has(Text line, Text token) { return line.find(token) != string::npos; }
  bool IsTwoLineForm() const { return t.start[0] == '\n'; }
  string Start() const { return t.start + (t.start[0] == '\n'); }
  string Stop() const { return t.stop + (t.stop[0] == '\n'); }
  size_t Separator(Text line) const { return line.find(t.separator); }
  bool IsLastStopLine(const std::shared_ptr<Line>& line) const {
    return !sections.all.empty() && sections.all.back()->stop == line;
  }
  // Where the first `end` bytes end without their white space.
  static size_t Trimmed(Text text, size_t least, size_t end) {
    while (end > least && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
    return end;
  }
  // The first byte of a line is not looked at from behind.
  size_t KeyEnd(Text line) const { return Trimmed(line, Separator(line) > 0, Separator(line)); }
  void Parse(Line& line) const {
    const string text = line.head;
    const size_t value = Separator(text) + std::strlen(t.separator);
    const size_t valueEnd = Trimmed(text, value, text.size());
    const size_t key = std::min(text.find_first_not_of(" \t\n\v\f\r"), KeyEnd(text));
    line = {text.substr(0, key), text.substr(key, KeyEnd(text) - key),
            text.substr(KeyEnd(text), value - KeyEnd(text)), text.substr(value, valueEnd - value),
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
    return keyword + name +
           (IsTwoLineForm() ? "\n"
            : name.empty()  ? t.start
                            : string(" ") + t.start);
  }
  static string EntriesText(const Lines& list) {
    std::vector<string> shown;
    for (const auto& line : list.all) shown.push_back(EntryText(line->key, line->value));
    return ListText(shown, list.at);
  }

  FileTokens t;
  std::vector<std::shared_ptr<Line>> lines;
  Lines entries, nothing;
  List<Section> sections;
  bool mark = false;
};

#endif
