// SPDX-License-Identifier: MIT
#include "faults/Tables.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace faults {
namespace {

std::string Trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// "| a | b |" has two cells.
std::vector<std::string> Cells(std::string line) {
  line.erase(std::remove(line.begin(), line.end(), '`'), line.end());
  std::vector<std::string> cells;
  for (std::size_t at = 1, end; (end = line.find('|', at)) != std::string::npos; at = end + 1) {
    cells.push_back(Trimmed(line.substr(at, end - at)));
  }
  return cells;
}

}  // namespace

std::vector<Row> ReadTable(const std::string& path, const std::string& title) {
  std::ifstream file(path);
  std::string line;
  while (std::getline(file, line) && line.compare(0, title.size() + 3, "| " + title + " ") != 0) {
  }
  const std::vector<std::string> titles = Cells(line);
  std::vector<Row> rows;
  std::getline(file, line);  // the rule below the titles
  while (std::getline(file, line) && !line.empty() && line[0] == '|') {
    const std::vector<std::string> cells = Cells(line);
    if (cells.size() != titles.size()) throw std::runtime_error(path + ": " + line);
    Row& row = rows.emplace_back();
    for (std::size_t i = 0; i < cells.size(); ++i) row[titles[i]] = cells[i];
  }
  if (rows.empty()) throw std::runtime_error(path + ": no table " + title);
  return rows;
}

std::vector<std::string> Split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    const std::string part = Trimmed(text.substr(at, end - at));
    if (!part.empty() && part != "—") parts.push_back(part);
    at = end + separator.size();
  }
  return parts;
}

}  // namespace faults
