// SPDX-License-Identifier: MIT
// Edits entries in a run of lines, as careful hands do: blanks and trailing comments stay, an added
// entry looks like its neighbours, and what is not certain is refused. To be copied into a program,
// with text_file.h.
//
// The way: the line is cut out and becomes a `ConfigFile` of its own, whose separator is all that
// stands on this line between key and value: `=`, ` = `, a tab, three blanks. So no blank belongs
// to the value, and lines may differ.
#ifndef ZELCONFUTILS_EXAMPLES_FLAT_TEXT_H
#define ZELCONFUTILS_EXAMPLES_FLAT_TEXT_H

#include <algorithm>
#include <cctype>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ConfigFile.h"
#include "text_file.h"

struct FlatStyle {
  bool blanks = false;      ///< blanks part key from value (`Port 22`), not the first `=`
  bool ignoreCase = false;  ///< in keys, of ASCII letters
  bool semicolons = false;  ///< each entry ends in one, which is no part of the value
  bool scripts = false;     ///< lines from `postrotate` and its kin to `endscript` are no entries
  /// The characters that begin a trailing comment after white space; empty: there are none. Not
  /// given: a value in which `#` or `;` follows white space is not set, as nobody can tell.
  std::optional<std::string> note;
  std::string lineEnd = "\n";  ///< of a line that is added where there is none to be like
  std::string indent;          ///< likewise
};

/// Each edit throws `Refused`, with nothing changed, for a key that is missing or stands twice, for
/// a line that goes on in the next one, and for what could not be read again as it was written.
class FlatText {
 public:
  /// `firstLine` is the number of the text's first line, for messages.
  FlatText(std::string text, FlatStyle style, std::size_t firstLine = 1)
      : text_(std::move(text)), style_(std::move(style)), firstLine_(firstLine) {}

  const std::string& Text() const { return text_; }

  /// Where the first line with that key begins, as an offset; the text's length without one.
  std::size_t BeginOf(const std::string& key) const {
    const std::vector<Entry> found = Find(key);
    return found.empty() ? text_.size() : found.front().begin;
  }

  /// Sets the value of the one entry with that key, or adds it.
  void Set(const std::string& key, const std::string& value) {
    if (Find(key).empty()) return Add(key, value);
    const Entry entry = Only(key);
    if (entry.gap.empty()) Refuse(entry, "it has no value");
    if (entry.unclear) Refuse(entry, "part of its value may be a trailing comment");
    const std::string tail = text_.substr(entry.tail, entry.visibleEnd - entry.tail);
    std::string written = value;
    if (entry.value == entry.tail) {  // no blank is left that stood at an empty value
      if (entry.gap.size() > 1 && entry.gap.back() == '=') written.insert(0, " ");
      if (!tail.empty() && tail[0] != ';') written += ' ';
    }
    Attempt(key, value, 1, false, [&] {
      EditLine(entry, [&](Configuration::ConfigFile& line) {
        return line.SetCurrentEntry((written + tail).c_str()) != 0;
      });
    });
  }

  /// Adds an entry after the last one with that key, else after the last of all. It gets the
  /// indentation, the separator and the line end of that one.
  void Add(const std::string& key, const std::string& value) {
    const std::vector<Entry> kin = Find(key);
    std::vector<Entry> all = Entries(1);
    all.erase(std::remove_if(all.begin(), all.end(), [](const Entry& e) { return e.continued; }),
              all.end());
    if (!kin.empty() && kin.back().continued) Refuse(kin.back(), "it may belong to another line");

    Entry model;  // of all that is known of it, what a line has without a neighbour
    model.block = LastVisible();
    const char* usualGap = style_.blanks ? " " : " = ";
    model.gap = usualGap;
    model.lineEnd = style_.lineEnd;
    std::string indent = style_.indent;
    if (!kin.empty() || !all.empty()) {
      model = kin.empty() ? all.back() : kin.back();
      indent = text_.substr(model.begin, model.key - model.begin);
      if (model.lineEnd.empty()) model.lineEnd = style_.lineEnd;
      // One without a value does not show how the two are parted: then the nearest that does.
      const Entry* shown = &model;
      for (auto entry = all.rbegin(); shown->value == shown->tail && entry != all.rend(); ++entry)
        shown = &*entry;
      model.gap = shown->value != shown->tail ? shown->gap : usualGap;
    }
    Attempt(key, value, kin.size() + 1, false, [&] {
      std::string line = Compose(indent, key, model, value);
      if (model.block > 0 && text_[model.block - 1] != '\n')
        line.insert(0, model.lineEnd);  // mends a missing last line feed
      text_.insert(model.block, line);
    });
  }

  /// Gives the one entry with that key another that is not in use.
  void Rename(const std::string& key, const std::string& newKey) {
    const Entry entry = Only(key);
    if (!Find(newKey).empty()) throw Refused("there is an entry " + newKey + " already");
    if (entry.key != entry.lastWord) Refuse(entry, "a key of several words is not renamed");
    Attempt(newKey, Value(entry), 1, entry.unclear, [&] {
      EditLine(entry,
               [&](Configuration::ConfigFile& line) { return line.RenameEntry(newKey.c_str()); });
    });
  }

  /// Deletes the one entry with that key, with its line.
  void Delete(const std::string& key) {
    const Entry entry = Only(key);
    text_.erase(entry.begin, entry.end - entry.begin);
  }

 private:
  // A line in pieces, as offsets into the text:  indentation key gap value tail blanks line-end
  struct Entry {
    std::size_t begin = 0, key = 0, lastWord = 0, value = 0, tail = 0, visibleEnd = 0, end = 0;
    std::size_t block = 0;   // the end of the last line that continues this one
    std::size_t number = 0;  // of the line
    std::string name, gap, lineEnd;
    bool continued = false;  // the line before ends in a backslash
    bool continues = false;  // this one does
    bool unclear = false;    // a trailing comment, or a part of the value
  };

  static bool IsBlank(char c) { return c == ' ' || c == '\t'; }

  [[noreturn]] static void Refuse(const Entry& entry, const std::string& why) {
    throw Refused("line " + std::to_string(entry.number) + ", " + entry.name + ": " + why);
  }

  std::string Value(const Entry& entry) const {
    return text_.substr(entry.value, entry.tail - entry.value);
  }

  // The key: up to the first `=`, or so many words.
  bool ReadKey(Entry& entry, std::size_t words) const {
    std::size_t at = entry.key;
    entry.lastWord = at;
    if (!style_.blanks) {
      at = std::min(text_.find('=', at), entry.visibleEnd);
      while (at > entry.key && IsBlank(text_[at - 1])) --at;
      entry.name = text_.substr(entry.key, at - entry.key);
    }
    for (std::size_t n = 0; style_.blanks && n < words; ++n) {
      while (at < entry.visibleEnd && IsBlank(text_[at])) ++at;
      if (at == entry.visibleEnd) return false;
      entry.lastWord = at;
      while (at < entry.visibleEnd && !IsBlank(text_[at]) && text_[at] != '=' &&
             !(style_.semicolons && text_[at] == ';'))
        ++at;
      entry.name += (n == 0 ? "" : " ") + text_.substr(entry.lastWord, at - entry.lastWord);
    }
    entry.value = at;
    while (entry.value < entry.visibleEnd && IsBlank(text_[entry.value])) ++entry.value;
    if (entry.value < entry.visibleEnd && text_[entry.value] == '=') ++entry.value;
    while (entry.value < entry.visibleEnd && IsBlank(text_[entry.value])) ++entry.value;
    entry.gap = text_.substr(at, entry.value - at);
    return !entry.name.empty();
  }

  // Where the value ends: before a trailing comment outside quotes, and a semicolon in brace files.
  void ReadTail(Entry& entry) const {
    const std::string marks = style_.note.value_or("#;");
    std::size_t first = entry.visibleEnd;
    bool quoted = false, anywhere = false;
    char quote = 0;
    for (std::size_t at = entry.value; at < entry.visibleEnd; ++at) {
      const char c = text_[at];
      if (quoted ? c == quote : c == '"' || c == '\'') {
        quoted = !quoted;
        quote = c;
      }
      if (!IsBlank(text_[at - 1]) || marks.find(c) == std::string::npos) continue;
      anywhere = true;
      if (!quoted) first = std::min(first, at);
    }
    entry.unclear = anywhere && (quoted || !style_.note);
    entry.tail = style_.note ? first : entry.visibleEnd;
    while (entry.tail > entry.value && IsBlank(text_[entry.tail - 1])) --entry.tail;
    if (style_.semicolons && entry.tail > entry.value && text_[entry.tail - 1] == ';') --entry.tail;
  }

  // All lines that are entries or, where the line before ends in a backslash, look like one. Keys
  // are taken as so many words.
  std::vector<Entry> Entries(std::size_t words) const {
    std::vector<Entry> entries;
    bool continued = false, inScript = false;
    std::size_t begin = 0, head = 0;
    for (std::size_t number = firstLine_; begin < text_.size(); ++number) {
      Entry entry = SplitLine(begin);
      entry.number = number;
      begin = entry.end;
      entry.continued = continued;
      if (continued) entries[head].block = entry.end;

      const std::string first = FirstWord(entry);
      const bool opens = style_.scripts && OpensScript(first);
      const bool silent = inScript || opens || first.empty() || std::strchr("#;!", first[0]);
      inScript = (inScript || opens) && first != "endscript";
      if (silent || !ReadKey(entry, words)) {
        continued = continued && !first.empty();
        continue;
      }
      ReadTail(entry);
      continued = entry.continues = text_[entry.visibleEnd - 1] == '\\';
      if (!entry.continued) head = entries.size();
      entries.push_back(entry);
    }
    return entries;
  }

  // The line that begins there: its ends, and where its first word begins.
  Entry SplitLine(std::size_t begin) const {
    const auto isSpace = [this](std::size_t at) {
      return std::isspace(static_cast<unsigned char>(text_[at])) != 0;
    };
    Entry entry;
    const std::size_t feed = text_.find('\n', begin);
    entry.begin = entry.key = begin;
    entry.end = entry.block = feed == std::string::npos ? text_.size() : feed + 1;
    entry.visibleEnd = entry.end;
    while (entry.visibleEnd > begin && isSpace(entry.visibleEnd - 1)) --entry.visibleEnd;
    while (entry.key < entry.visibleEnd && isSpace(entry.key)) ++entry.key;
    if (feed != std::string::npos)
      entry.lineEnd = feed > begin && text_[feed - 1] == '\r' ? "\r\n" : "\n";
    return entry;
  }

  std::string FirstWord(const Entry& entry) const {
    std::size_t end = entry.key;
    while (end < entry.visibleEnd && !IsBlank(text_[end])) ++end;
    return text_.substr(entry.key, end - entry.key);
  }
  static bool OpensScript(const std::string& word) {
    static const char* const words[] = {"prerotate", "postrotate", "firstaction", "lastaction",
                                        "preremove"};
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
  }

  bool SameKey(const std::string& one, const std::string& other) const {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [this](char a, char b) {
      const auto low = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
      return style_.ignoreCase ? low(a) == low(b) : a == b;
    });
  }

  std::vector<Entry> Find(const std::string& key) const {
    const auto blanks = std::count(key.begin(), key.end(), ' ');
    std::vector<Entry> found = Entries(style_.blanks ? static_cast<std::size_t>(blanks) + 1 : 1);
    found.erase(std::remove_if(found.begin(), found.end(),
                               [&](const Entry& e) { return !SameKey(e.name, key); }),
                found.end());
    return found;
  }

  Entry Only(const std::string& key) const {
    const std::vector<Entry> found = Find(key);
    if (found.empty()) throw Refused("there is no entry " + key);
    if (found.size() > 1)
      Refuse(found[1], "stands in line " + std::to_string(found[0].number) + " already");
    if (found[0].continues) Refuse(found[0], "it goes on in the next line");
    if (found[0].continued) Refuse(found[0], "it may belong to the line before");
    return found[0];
  }

  // The end of the last line that is not blank.
  std::size_t LastVisible() const {
    const std::size_t last = text_.find_last_not_of(" \t\r\n");
    if (last == std::string::npos) return 0;
    const std::size_t feed = text_.find('\n', last);
    return feed == std::string::npos ? text_.size() : feed + 1;
  }

  // One line as the library writes it, in the manner of the model.
  std::string Compose(const std::string& indent, const std::string& key, const Entry& model,
                      std::string value) const {
    std::string gap = model.gap;
    if (value.empty()) gap.erase(gap.find_last_not_of(" \t") + 1);
    if (style_.semicolons) value += ';';
    if (gap.empty()) return indent + key + value + model.lineEnd;
    value += model.lineEnd.substr(0, model.lineEnd.size() - 1);  // the CR of CR LF
    Configuration::ConfigFile line(nullptr, false, false, false, gap.c_str(), "#", indent.c_str());
    if (!line.AddEntry(key.c_str(), value.c_str(), false))
      throw Refused(key + ": a line has at most 1023 bytes");
    return TextOf(line, 2048);
  }

  // Changes one line as a text of its own: see above.
  template <class Change>
  void EditLine(const Entry& entry, Change change) {
    std::string text = text_.substr(entry.lastWord, entry.end - entry.lastWord);
    if (entry.lineEnd.empty()) text += '\n';  // a text in memory needs it
    const char* noComment = "\n";
    Configuration::ConfigFile line(text.c_str(), false, false, true,
                                   entry.gap.empty() ? "\n" : entry.gap.c_str(), noComment,
                                   nullptr);
    if (TextOf(line, 2048) != text || !change(line))
      Refuse(entry, "its line is too long, or holds a NUL byte");
    text = TextOf(line, 2048);
    if (entry.lineEnd.empty()) text.pop_back();
    text_.replace(entry.lastWord, entry.end - entry.lastWord, text);
  }

  // Makes a change and reads what it has written: the last of so many entries with that key. All
  // stays as it was if that is something else.
  template <class Change>
  void Attempt(const std::string& key, const std::string& value, std::size_t count, bool unclear,
               Change change) {
    const std::string lineBreaks("\r\n\0", 3);
    if ((key + value).find_first_of(lineBreaks) != std::string::npos)
      throw Refused("a line feed, CR or NUL cannot be part of an entry");
    const std::string before = text_;
    change();
    const std::vector<Entry> found = Find(key);
    if (found.size() == count) {
      const Entry& last = found.back();
      if (Value(last) == value && !last.continued && !last.continues && last.unclear == unclear)
        return;
    }
    text_ = before;
    throw Refused(key + ": with this value it would be read as something else");
  }

  std::string text_;
  FlatStyle style_;
  std::size_t firstLine_;
};

#endif
