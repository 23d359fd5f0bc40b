// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_SLOW_LEXER_H
#define ZELCONFUTILS_TESTS_SLOW_LEXER_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ZelLex.h"

/// A caller's own source: hands out any lines, notes each question, and throws once where told.
struct ListSource : StreamIterator {
  explicit ListSource(std::vector<std::string> given) : lines(std::move(given)) {}
  bool HasMoreLines() override { return log += '?', next < lines.size(); }
  std::string GetLine() override {
    log += '!';
    if (next != throwAt) return lines[next++];
    throwAt = SIZE_MAX;
    throw std::runtime_error("line");
  }

  std::vector<std::string> lines;
  std::string log;
  std::size_t next = 0, throwAt = SIZE_MAX;
};

/// The lexer once more, one byte at a time.
class SlowLexer {
 public:
  SlowLexer(StreamIterator* from, bool ignore) : source(from), ignoreWhiteSpaces(ignore) {}

  /// The next token as kind, length and text: a text may hold any byte.
  std::string GetToken() {
    Get();
    if (atEnd) return "end";
    const int kind = KindOf(current);
    std::string text(1, current);
    if (kind != 2 && kind != 3 && (kind != 4 || !ignoreWhiteSpaces)) return Show(kind, text);
    for (Get(); KindOf(current) == kind; Get()) text += current;
    if (--position < line.size()) current = line[position];  // else an empty line was the end
    return kind == 4 ? Show(0, "") : Show(kind, text);
  }
  static std::string GetToken(ZelLex& lexer) {
    const ZelLexToken* token = lexer.GetToken();
    return token == nullptr ? "end" : Show(token->kind, token->text);
  }

  /// Lexes the lines, and all of them as one buffer. Throws where the lexer differs in a token or
  /// in what it asks its source.
  static void Check(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line;
    for (const bool ignore : {false, true}) {
      ListSource list(lines), slowList(lines);
      BufferIterator buffer(text.c_str()), slowBuffer(text.c_str());
      ZelLex ofList(&list, ignore), ofBuffer(&buffer, ignore);
      SlowLexer slowOfList(&slowList, ignore), slowOfBuffer(&slowBuffer, ignore);
      for (int ends = 0; ends < 3;) {
        const std::string token = slowOfList.GetToken(), bufferToken = slowOfBuffer.GetToken();
        ZelLex copy(ofList);  // shares the source; the state comes back with the assignment
        if (GetToken(copy) != token || GetToken(ofBuffer) != bufferToken ||
            list.log != slowList.log) {
          throw std::logic_error("differs at " + token + bufferToken +
                                 " of: " + text.substr(0, 100));
        }
        ofList = copy;
        ends += token == "end" && bufferToken == "end";
      }
    }
  }

 private:
  static std::string Show(int kind, const std::string& text) {
    return std::to_string(kind) + ':' + std::to_string(text.size()) + text + ' ';
  }
  static int KindOf(signed char c) {
    if (std::strchr("!%^&*()-+={}|~[]\\;':\\\"<>?,./#_", c) != nullptr) return 1;
    if (c == 10) return 5;
    if (c == 32 || c == 9 || c == 11) return 4;
    return (c | 32) >= 'a' && (c | 32) <= 'z' ? 2 : c >= '0' && c <= '9' ? 3 : 0;
  }
  void Get() {
    if (current != -1 && position == line.size()) {
      const bool more = source->HasMoreLines() && !(line = source->GetLine()).empty();
      if (more) position = 0;
      if (!more) current = -1;
    }
    atEnd = atEnd || current == -1;
    if (current != -1) current = line[position++];
  }

  StreamIterator* source;
  bool ignoreWhiteSpaces, atEnd = false;
  std::string line;
  std::size_t position = 0;
  signed char current = 0;
};

#endif
