// SPDX-License-Identifier: MIT
//
// A table of texts for a terminal: titled, columns aligned by the cells that their texts take.
#ifndef KECPP_TOOLS_INVENTORY_TEXTTABLE_H
#define KECPP_TOOLS_INVENTORY_TEXTTABLE_H

#include <cstddef>
#include <string>
#include <vector>

namespace tools::inventory {

// How much of a table is shown. Zero: everything.
struct TableRoom {
  std::size_t rows = 0;   // of each table
  std::size_t cells = 0;  // of each line
};

class TextTable {
 public:
  TextTable(std::string title, std::vector<std::string> columns);

  // Appends a row with a cell for every column; see Printable for what is shown of a text.
  void AddRow(std::vector<std::string> cells);

  // The table, every line ended by a line feed. When not all rows fit, a last line says how many
  // are not shown. When the lines do not fit, the widest columns are cut to one width, with an
  // ellipsis in each text that is cut.
  std::string Format(const TableRoom& room) const;

 private:
  std::vector<std::size_t> WidthsWithin(std::size_t cells) const;

  std::string title;
  std::vector<std::vector<std::string>> rows;  // the first one holds the headings
  std::vector<std::size_t> widths;
};

}  // namespace tools::inventory

#endif
