// SPDX-License-Identifier: MIT
//
// Case files: a line is a row, its fields stand between bars ("a | b | c"). Empty lines and lines
// that begin with "#" say nothing.
#ifndef KECPP_TESTS_SUPPORT_ROWS_H
#define KECPP_TESTS_SUPPORT_ROWS_H

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

using Row = std::vector<std::string>;

// What stands between separators, without the blanks around it.
inline Row Split(const std::string& text, const std::string& separator = "|") {
  Row parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    const std::size_t first = std::min(text.find_first_not_of(' ', at), end);
    std::size_t last = end;
    while (last > first && text[last - 1] == ' ') --last;
    parts.push_back(text.substr(first, last - first));
    at = end + separator.size();
  }
  return parts;
}

// All rows of a file, in order. Throws std::runtime_error when there are none.
inline std::vector<Row> ReadRows(const std::string& path) {
  std::ifstream file(path);
  std::vector<Row> rows;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') rows.push_back(Split(line));
  }
  if (rows.empty()) throw std::runtime_error("no rows in " + path);
  return rows;
}

#endif
