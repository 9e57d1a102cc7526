// SPDX-License-Identifier: MIT
//
// A table of texts for a terminal: titled, columns aligned by characters, not bytes.
#ifndef KECPP_AGENT_TEXTTABLE_H
#define KECPP_AGENT_TEXTTABLE_H

#include <cstddef>
#include <string>
#include <vector>

namespace inventory {

class TextTable {
 public:
  TextTable(std::string title, std::vector<std::string> columns);

  // Appends a row with a cell for every column. Control characters are shown as "?": a server's
  // text must not steer the terminal.
  void AddRow(std::vector<std::string> cells);

  // The table, every line ended by a line feed. At most `maxRows` rows are shown; a last line tells
  // how many there are beyond.
  std::string Format(std::size_t maxRows) const;

 private:
  std::string Line(const std::vector<std::string>& cells) const;

  std::string title;
  std::vector<std::vector<std::string>> rows;  // the first one holds the headings
  std::vector<std::size_t> widths;
};

// The number of characters of a UTF-8 text; a byte that belongs to none counts as one. Wide
// characters count as one too.
std::size_t CountCharacters(const std::string& text);

}  // namespace inventory

#endif
