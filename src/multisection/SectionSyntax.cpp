// SPDX-License-Identifier: MIT
#include "multisection/SectionSyntax.h"

#include <algorithm>

#include "config/entries/EntrySyntax.h"
#include "text/Text.h"

namespace Text = zelconfutils::Text;

namespace Configuration::SectionSyntax {

using EntrySyntax::Find;
using EntrySyntax::FindInFreshLine;
using EntrySyntax::IsComment;
using EntrySyntax::kNone;

LineClass ClassifyOutside(std::string_view line, const SectionTokens& tokens) {
  if (IsComment(line, tokens.comment)) return {LineKind::kSkipped, kNone};
  const std::size_t separatorAt = Find(line, tokens.separator);
  const std::size_t startAt = FindInFreshLine(line, tokens.StartNeedle());
  if (startAt != kNone && separatorAt >= startAt) return {LineKind::kHeader, kNone};
  return {separatorAt != kNone ? LineKind::kEntry : LineKind::kSkipped, separatorAt};
}

LineClass ClassifyInside(std::string_view line, const SectionTokens& tokens) {
  if (IsComment(line, tokens.comment)) return {LineKind::kSkipped, kNone};
  if (FindInFreshLine(line, tokens.StopNeedle()) != kNone) return {LineKind::kStop, kNone};
  const std::size_t separatorAt = Find(line, tokens.separator);
  return {separatorAt != kNone ? LineKind::kEntry : LineKind::kSkipped, separatorAt};
}

NameSpan CutName(std::string_view nameLine, const SectionTokens& tokens) {
  // Where the token was found plays no part: it is taken to stand at the line's end.
  const std::size_t tokenLength = tokens.IsTwoLineForm() ? 0 : tokens.StartNeedle().size();
  const std::string_view untilToken = nameLine.substr(0, nameLine.size() - tokenLength);
  std::size_t end = EntrySyntax::TrimmedLength(untilToken);
  if (end == 1 && Text::IsSpace(untilToken[0])) end = 0;

  std::size_t start = 0;
  if (const std::size_t keywordAt = Find(nameLine, tokens.keyword); keywordAt != kNone) {
    start = std::min(keywordAt + tokens.keyword.size() + 1, nameLine.size());
  }
  return {start, std::max(end, start) - start};
}

NameLine ComposeNameLine(std::string_view name, const SectionTokens& tokens) {
  const bool twoLineForm = tokens.IsTwoLineForm();
  NameLine line = {{}, 0};
  if (!name.empty()) {
    if (!tokens.keyword.empty()) line.text.append(tokens.keyword).append(1, ' ');
    line.nameAt = line.text.size();
    line.text.append(name);
    if (!twoLineForm) line.text.append(1, ' ');
  }
  line.text.append(twoLineForm ? "\n" : tokens.startToken);
  return line;
}

}  // namespace Configuration::SectionSyntax
