// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MULTISECTION_SECTION_SYNTAX_H
#define ZELCONFUTILS_MULTISECTION_SECTION_SYNTAX_H

#include <cstddef>
#include <string>
#include <string_view>

/// What a line means in a sectioned file, and how a section's own lines are composed: text in,
/// offsets out.
namespace Configuration::SectionSyntax {

/// A leading line feed of a section token says how lines are laid out; it is neither searched for
/// nor part of a composed line.
constexpr std::string_view WithoutLeadingLineFeed(std::string_view token) {
  return token.substr(token.substr(0, 1) == "\n" ? 1 : 0);
}

/// The tokens of a file object, lent for one call.
struct SectionTokens {
  std::string_view startToken;
  std::string_view stopToken;
  std::string_view separator;
  std::string_view comment;
  std::string_view keyword;

  /// The name stands on a line of its own, before the line with the start token.
  bool IsTwoLineForm() const { return startToken.substr(0, 1) == "\n"; }
  std::string_view StartNeedle() const { return WithoutLeadingLineFeed(startToken); }
  std::string_view StopNeedle() const { return WithoutLeadingLineFeed(stopToken); }
};

enum class LineKind { kSkipped, kEntry, kHeader, kStop };

struct LineClass {
  LineKind kind;
  std::size_t separatorAt;  ///< of an entry
};

/// A line outside sections: header, comment, entry or nothing, the first that fits. A separator
/// before the start token makes it an entry.
LineClass ClassifyOutside(std::string_view line, const SectionTokens& tokens);

/// A line inside a section: comment, stop line, entry or nothing, the first that fits. Sections do
/// not nest.
LineClass ClassifyInside(std::string_view line, const SectionTokens& tokens);

struct NameSpan {
  std::size_t start;
  std::size_t length;
};

/// The section's name in its name line: from after the keyword and one more byte, or from the
/// line's first byte, up to the start token that is taken to end the line (in the two-line form up
/// to the line's end), less the white space there.
NameSpan CutName(std::string_view nameLine, const SectionTokens& tokens);

struct NameLine {
  std::string text;
  std::size_t nameAt;  ///< 0 for an empty name, which has no keyword either
};

/// The first line of a section with that name.
NameLine ComposeNameLine(std::string_view name, const SectionTokens& tokens);

}  // namespace Configuration::SectionSyntax

#endif
