// SPDX-License-Identifier: MIT
#include "Report.h"

#include <algorithm>
#include <cmath>

namespace {

template <class... Values>
std::string Print(const char* format, Values... values) {
  char text[128];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

std::string Digits(double value) {
  return Print(value < 10 ? "%.2f" : value < 100 ? "%.1f" : "%.0f", value);
}

std::string Time(const std::optional<Figure>& figure) {
  if (!figure) return "-";
  const double seconds = figure->seconds;
  if (seconds < 1e-3) return Digits(seconds * 1e6) + " µs";
  if (seconds < 10) return Digits(seconds * 1e3) + " ms";
  return Digits(seconds) + " s";
}

std::string Ratio(const Figure& ours, const std::optional<Figure>& other) {
  return other ? Digits(ours.seconds / other->seconds) : "-";
}

std::string Memory(const std::optional<Figure>& figure, std::size_t lines) {
  if (!figure) return "-";
  const double kib = static_cast<double>(figure->peakKib);
  const std::string mebibytes = Digits(kib / 1024);
  return lines == 0 ? mebibytes
                    : mebibytes + Print(" (%.0f B/line)", kib * 1024 / static_cast<double>(lines));
}

// The picture: a line for each row, from a hundredth of the peer's time to ten times as much.
constexpr double kLeft = 330;
constexpr double kDecade = 170;
constexpr double kLineHeight = 22;
constexpr double kTop = 60;
constexpr int kDecadesBelow = 2;
constexpr int kDecadesAbove = 1;

double Place(double ratio) {
  const double decades = std::clamp(std::log10(ratio), -1.0 * kDecadesBelow, 1.0 * kDecadesAbove);
  return kLeft + (decades + kDecadesBelow) * kDecade;
}

void WriteAxis(std::FILE* stream, double bottom) {
  constexpr const char* kLabels[] = {"1/100", "1/10", "as fast as the fastest peer", "10 times"};
  for (int i = 0; i <= kDecadesBelow + kDecadesAbove; ++i) {
    const double x = kLeft + i * kDecade;
    std::fprintf(stream,
                 "<line x1=\"%.0f\" y1=\"%.0f\" x2=\"%.0f\" y2=\"%.0f\" stroke=\"%s\"/>\n"
                 "<text x=\"%.0f\" y=\"%.0f\" text-anchor=\"middle\">%s</text>\n",
                 x, kTop - 10, x, bottom, i == kDecadesBelow ? "#444" : "#ccc", x, kTop - 16,
                 kLabels[i]);
  }
}

void WriteLine(std::FILE* stream, const Row& row, double y) {
  const double peer = row.peer->seconds;
  const double ours = Place(row.ours.seconds / peer);
  const double one = Place(1);
  std::fprintf(stream,
               "<text x=\"%.0f\" y=\"%.1f\" text-anchor=\"end\">%s</text>\n"
               "<rect x=\"%.1f\" y=\"%.1f\" width=\"%.1f\" height=\"12\" fill=\"%s\"/>\n",
               kLeft - 10, y + 10, row.item.c_str(), std::min(ours, one), y, std::abs(ours - one),
               ours <= one ? "#2b7bba" : "#d1495b");
  if (row.limit) {
    const double limit = Place(row.limit->seconds / peer);
    std::fprintf(stream, "<rect x=\"%.1f\" y=\"%.1f\" width=\"3\" height=\"16\" fill=\"#222\"/>\n",
                 limit - 1.5, y - 2);
  }
  std::fprintf(stream, "<text x=\"%.0f\" y=\"%.1f\">%s %s</text>\n",
               kLeft + (kDecadesBelow + kDecadesAbove) * kDecade + 10, y + 10,
               Ratio(row.ours, row.peer).c_str(), row.peerName.c_str());
}

}  // namespace

void WriteTable(std::FILE* stream, const std::vector<Row>& rows) {
  std::fputs(
      "| work item | ours | best peer | | ours / peer | limit | ours / limit | peak MiB, ours | "
      "peer |\n|---|--:|--:|---|--:|--:|--:|--:|--:|\n",
      stream);
  for (const Row& row : rows) {
    std::fprintf(stream, "| %s | %s | %s | %s | %s | %s | %s | %s | %s |\n", row.item.c_str(),
                 Time(row.ours).c_str(), Time(row.peer).c_str(), row.peerName.c_str(),
                 Ratio(row.ours, row.peer).c_str(), Time(row.limit).c_str(),
                 Ratio(row.ours, row.limit).c_str(), Memory(row.ours, row.lines).c_str(),
                 Memory(row.peer, row.lines).c_str());
  }
}

void WriteSvg(std::FILE* stream, const std::vector<Row>& rows) {
  const double width = kLeft + (kDecadesBelow + kDecadesAbove) * kDecade + 190;
  const double bottom = kTop + kLineHeight * static_cast<double>(rows.size());
  std::fprintf(stream,
               "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%.0f\" height=\"%.0f\" "
               "font-family=\"sans-serif\" font-size=\"12\">\n"
               "<rect width=\"100%%\" height=\"100%%\" fill=\"#fff\"/>\n"
               "<text x=\"10\" y=\"20\" font-size=\"14\">CPU time in proportion to the fastest "
               "peer: blue is faster, red slower; the black mark is the physical limit</text>\n",
               width, bottom + 14);
  WriteAxis(stream, bottom);
  double y = kTop;
  for (const Row& row : rows) {
    if (row.peer) WriteLine(stream, row, y);
    y += kLineHeight;
  }
  std::fputs("</svg>\n", stream);
}
