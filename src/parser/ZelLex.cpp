// SPDX-License-Identifier: MIT
#include "ZelLex.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/Text.h"

namespace {

constexpr signed char kEndMark = -1;
constexpr std::size_t kLineLimit = std::numeric_limits<std::uint32_t>::max();  // of `position`

// A copy of one fixed length costs less than one whose length cannot be predicted.
constexpr std::size_t kShortRun = 8;

}  // namespace

ZelLex::ZelLex(StreamIterator* lineSource, bool skipWhiteSpaces)
    : source(lineSource),
      token(new ZelLexToken),
      position(0),
      current(0),
      ignoreWhiteSpaces(skipWhiteSpaces),
      atEnd(false) {}

ZelLex::ZelLex(const ZelLex& other) : ZelLex(other.source, other.ignoreWhiteSpaces) {
  *this = other;
}

ZelLex& ZelLex::operator=(const ZelLex& other) {
  ZelLexToken record = *other.token;
  std::string unread = other.line;
  source = other.source;
  *token = std::move(record);
  line = std::move(unread);
  position = other.position;
  current = other.current;
  ignoreWhiteSpaces = other.ignoreWhiteSpaces;
  atEnd = other.atEnd;
  return *this;
}

ZelLex::~ZelLex() { delete token; }

ZelLexToken* ZelLex::GetToken() {
  const char first = GetChar();
  if (atEnd) [[unlikely]] {
    ResetToken();
    return nullptr;
  }
  const ZelLexTokenKind kind = KindOf(first);
  if (kind == StringConstantToken || kind == DigitConstantToken) {
    ReadRun(kind);  // the same for both: which of the two comes next cannot be predicted
  } else if (kind == WhiteSpaceToken && ignoreWhiteSpaces) {
    IgnoreWhiteSpaces();
  } else {
    std::string& text = token->text;
    if (text.empty()) text.push_back(first);
    text.resize(1);  // no longer than it is: unlike an assignment, that is done in place
    text.front() = first;
    token->kind = kind;
  }
  return token;
}

char ZelLex::GetChar() {
  if (current == kEndMark || (position == line.size() && !FetchLine())) [[unlikely]] {
    atEnd = true;
    current = kEndMark;
  } else {
    current = static_cast<signed char>(line[position++]);
  }
  return static_cast<char>(current);
}

// The byte to step back to is missing where a source follows an unterminated line with an empty
// one: `line` is empty then, and `position` stands behind it. That is the end of the input.
int ZelLex::PutChar() {
  --position;
  current = position < line.size() ? static_cast<signed char>(line[position]) : kEndMark;
  return current;
}

void ZelLex::ResetToken() {
  token->kind = UnknownToken;
  token->text.clear();
}

void ZelLex::IgnoreWhiteSpaces() {
  ReadRun(WhiteSpaceToken);
  ResetToken();
}

// How many bytes from `bytes` on are of that kind, `left` at most. Where a run ends cannot be
// predicted: eight bytes are judged without a branch, which costs less than one wrong guess.
std::size_t ZelLex::RunLength(const char* bytes, std::size_t left, ZelLexTokenKind kind) {
  constexpr unsigned kStep = 8;
  std::size_t length = 0;
  for (; left - length >= kStep; length += kStep) {
    unsigned ofKind = 0;
    for (unsigned i = 0; i < kStep; ++i) {
      ofKind |= static_cast<unsigned>(KindOf(bytes[length + i]) == kind) << i;
    }
    const auto run = static_cast<unsigned>(std::countr_one(ofKind));
    if (run < kStep) return length + run;
  }
  while (length < left && KindOf(bytes[length]) == kind) ++length;
  return length;
}

// Finds the end of the run in the line and takes the bytes at once.
void ZelLex::ReadRun(ZelLexTokenKind kind) {
  ResetToken();
  std::size_t end = position;
  do {
    const char* const bytes = line.data();
    const std::size_t start = --position;  // a failed allocation finds the run unread
    end = start + 1 + RunLength(bytes + start + 1, line.size() - start - 1, kind);
    const std::size_t length = end - start;
    if (token->text.empty() && length <= kShortRun && line.size() - start >= kShortRun) {
      token->text.resize(kShortRun);
      std::memcpy(token->text.data(), bytes + start, kShortRun);
      token->text.resize(length);
    } else {
      token->text.append(bytes + start, length);
    }
    position = static_cast<std::uint32_t>(end);
    current = static_cast<signed char>(bytes[end]);
  } while (end == line.size() && RunGoesOn(kind));
  token->kind = kind;
}

// The line ended inside the run. Where the source throws, the run is put back as the line to read.
bool ZelLex::RunGoesOn(ZelLexTokenKind kind) {
  try {
    GetChar();
  } catch (...) {
    line.swap(token->text);
    position = 0;
    throw;
  }
  if (KindOf(static_cast<char>(current)) == kind) return true;
  PutChar();
  return false;
}

// False at the end of the input.
bool ZelLex::FetchLine() {
  if (source == nullptr || !source->HasMoreLines()) return false;
  line = source->GetLine();
  if (line.empty()) return false;
  if (line.size() > kLineLimit) line.resize(kLineLimit);
  position = 0;
  return true;
}

ZelLexTokenKind ZelLex::KindOf(char c) {
  static constexpr auto kKinds = [] {
    std::array<std::uint8_t, 256> kinds = {};
    for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
      const char member = static_cast<char>(byte);
      if (IsOneOf(member, "!%^&*()-+={}|~[]\\;':\\\"<>?,./#_")) {
        kinds[byte] = PunctuationToken;
      } else if (member == '\n') {
        kinds[byte] = NewLineToken;
      } else if (member == ' ' || member == '\t' || member == '\v') {
        kinds[byte] = WhiteSpaceToken;
      } else if (Text::IsLetter(member)) {
        kinds[byte] = StringConstantToken;
      } else if (Text::IsDigit(member)) {
        kinds[byte] = DigitConstantToken;
      }
    }
    return kinds;
  }();
  return static_cast<ZelLexTokenKind>(kKinds[static_cast<unsigned char>(c)]);
}
