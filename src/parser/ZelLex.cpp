// SPDX-License-Identifier: MIT
#include "ZelLex.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

#include "text/Text.h"

namespace Text = zelconfutils::Text;

namespace {

constexpr signed char kEndMark = -1;
constexpr std::size_t kLineLimit = std::numeric_limits<std::uint32_t>::max();  // of `position`

// Where a run ends cannot be predicted: to judge so many bytes at once, and to copy them all, costs
// less than one wrong guess, and most runs are shorter.
constexpr std::size_t kStep = 8;

constexpr std::uint64_t Eight(unsigned byte) { return byte * std::uint64_t{0x0101010101010101}; }

// The bytes of a run, for eight at once: to each byte below 0x80 a number is added that carries
// into its top bit from the lowest member on, and another that does so above the highest.
struct Members {
  std::uint64_t fold;  // makes upper case lower
  std::uint64_t fromLowest;
  std::uint64_t aboveHighest;
};

constexpr Members kLetters = {Eight('a' - 'A'), Eight(0x80 - 'a'), Eight(0x7f - 'z')};
constexpr Members kDigits = {0, Eight(0x80 - '0'), Eight(0x7f - '9')};

// How many of the `kStep` bytes from `bytes` on belong to the run.
std::size_t MembersAtFront(const char* bytes, const Members& members) {
  std::uint64_t eight = 0;
  std::memcpy(&eight, bytes, kStep);
  const std::uint64_t low = (eight | members.fold) & Eight(0x7f);
  const std::uint64_t belongs = (low + members.fromLowest) & ~(low + members.aboveHighest) & ~eight;
  const std::uint64_t strangers = ~belongs & Eight(0x80);
  return static_cast<std::size_t>(std::endian::native == std::endian::little
                                      ? std::countr_zero(strangers)
                                      : std::countl_zero(strangers)) /
         8;
}

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
    // The same for both: which of the two comes next cannot be predicted.
    if (!ReadShortRun(kind)) ReadRun(kind);
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
// one: `line` is empty then, and `position` stands past it. That is the end of the input.
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

// False, and nothing changed: a run of `kStep` bytes or more, or one close to the end of the line.
bool ZelLex::ReadShortRun(ZelLexTokenKind kind) {
  const char* const bytes = line.data() + position - 1;
  if (line.size() - position + 1 < kStep) return false;
  const std::size_t length = MembersAtFront(bytes, kind == DigitConstantToken ? kDigits : kLetters);
  if (length == kStep) return false;
  std::string& text = token->text;
  text.clear();
  text.append(bytes, kStep);
  text.resize(length);
  token->kind = kind;
  position += static_cast<std::uint32_t>(length) - 1;
  current = static_cast<signed char>(bytes[length]);
  return true;
}

// Finds the end of the run in the line and takes the bytes at once.
void ZelLex::ReadRun(ZelLexTokenKind kind) {
  ResetToken();
  std::size_t end = position;
  do {
    const char* const bytes = line.data();
    const std::size_t start = --position;  // a failed allocation finds the run unread
    end = start + 1;
    while (end < line.size() && KindOf(bytes[end]) == kind) ++end;
    token->text.append(bytes + start, end - start);
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
