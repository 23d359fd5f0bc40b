// SPDX-License-Identifier: MIT
// Joins two tables of the time zone database and prints which zones each country has:
//
//   tsv_report [COUNTRIES [ZONES]]      by default /usr/share/zoneinfo/{iso3166,zone1970}.tab
//
// Both are separated by tabs; a row that starts with '#' is a comment. A row of a wrong length is
// named and left out.
#include <cstdio>
#include <functional>
#include <map>
#include <string>

#include "CsvDocument.h"

namespace {

// Calls `use` for each row of `path` that has from `least` to `most` fields. The number of rows
// of another length, or -1 if the file cannot be read.
int ForEachRow(const char* path, int least, int most,
               const std::function<void(const CsvDocumentRow&)>& use) {
  CsvDocument document;
  CsvFieldDelimiter tab = TabDelimiter;
  document.SetFieldDelimiter(tab);
  if (!document.Load(path)) return -1;  // it has said why on the standard error stream

  int bad = 0;
  CsvDocumentRow row;  // one for the whole file, so that its strings are reused
  while (document.IsCsvRecordPresence()) {
    if (!document.GetRow(row) || row.GetField(0).rfind('#', 0) == 0) continue;
    const int fields = row.GetFieldsCount();
    if (fields < least || fields > most) {
      std::printf("%s: row %lu has %d fields: %s\n", path,
                  static_cast<unsigned long>(document.GetRowCount()), fields,
                  row.GetField(0).c_str());
      ++bad;
      continue;
    }
    use(row);
  }
  return bad;
}

}  // namespace

int main(int argc, char** argv) {
  const char* countries = argc > 1 ? argv[1] : "/usr/share/zoneinfo/iso3166.tab";
  const char* zones = argc > 2 ? argv[2] : "/usr/share/zoneinfo/zone1970.tab";

  std::map<std::string, std::string> names;  // by code
  std::size_t width = 0;
  const int badCountries = ForEachRow(countries, 2, 2, [&](const CsvDocumentRow& row) {
    const std::string name = row.GetField(1);
    if (name.size() > width) width = name.size();
    names[row.GetField(0)] = name;
  });

  std::multimap<std::string, std::string> zonesOf;  // by name
  const int badZones = ForEachRow(zones, 3, 4, [&](const CsvDocumentRow& row) {
    const std::string codes = row.GetField(0);  // "DE,DK": a zone may serve several countries
    for (std::size_t at = 0; at < codes.size(); at += 3) {
      const auto found = names.find(codes.substr(at, 2));
      if (found != names.end()) zonesOf.emplace(found->second, row.GetField(2));
    }
  });

  for (const auto& [name, zone] : zonesOf) {
    std::printf("%-*s  %s\n", static_cast<int>(width), name.c_str(), zone.c_str());
  }
  return badCountries == 0 && badZones == 0 ? 0 : 1;
}
