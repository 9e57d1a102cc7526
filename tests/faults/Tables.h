// SPDX-License-Identifier: MIT
//
// The tables of a Markdown document.
#ifndef KECPP_TESTS_FAULTS_TABLES_H
#define KECPP_TESTS_FAULTS_TABLES_H

#include <map>

#include "support/Rows.h"

namespace faults {

using Entry = std::map<std::string, std::string>;  // by the column's title; without code quotes

// The rows of the table whose first column has this title, in order. Throws std::runtime_error
// when there is none.
inline std::vector<Entry> ReadTable(const std::string& path, const std::string& title) {
  std::ifstream file(path);
  Row titles;
  std::vector<Entry> table;
  for (std::string line; std::getline(file, line);) {
    line.erase(std::remove(line.begin(), line.end(), '`'), line.end());
    const Row cells = Split(line);  // "| a | b |" has an empty one at either end
    if (titles.empty() && cells.size() > 2 && cells[1] == title) {
      titles = cells;
      std::getline(file, line);  // the rule below the titles
    } else if (!titles.empty()) {
      if (line.empty()) break;
      if (cells.size() != titles.size()) throw std::runtime_error(path + ": " + line);
      Entry& entry = table.emplace_back();
      for (std::size_t i = 1; i + 1 < cells.size(); ++i) entry[titles[i]] = cells[i];
    }
  }
  if (table.empty()) throw std::runtime_error(path + ": no table " + title);
  return table;
}

// What stands between separators; an em dash stands for nothing.
inline Row Parts(const std::string& text, const std::string& separator) {
  Row parts = Split(text, separator);
  const auto isNothing = [](const std::string& part) { return part.empty() || part == "—"; };
  parts.erase(std::remove_if(parts.begin(), parts.end(), isNothing), parts.end());
  return parts;
}

}  // namespace faults

#endif
