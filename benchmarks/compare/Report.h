// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_COMPARE_REPORT_H
#define ZELCONFUTILS_COMPARE_REPORT_H

#include <cstddef>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

/// The median of a work item's runs.
struct Figure {
  double seconds = 0;  ///< CPU time
  long peakKib = 0;    ///< the most memory resident by the end of the item
};

struct Row {
  std::string item;
  Figure ours;
  std::optional<Figure> peer;  ///< the fastest
  std::string peerName;
  std::optional<Figure> limit;
  std::size_t lines = 0;  ///< of the file, where the memory is told for each of them too
};

/// The rows as a Markdown table.
void WriteTable(std::FILE* stream, const std::vector<Row>& rows);

/// The rows as a picture: our time and the limit in proportion to the fastest peer's.
void WriteSvg(std::FILE* stream, const std::vector<Row>& rows);

#endif
