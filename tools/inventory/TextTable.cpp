// SPDX-License-Identifier: MIT
#include "tools/inventory/TextTable.h"

#include <algorithm>

#include "tools/common/CellText.h"

namespace tools::inventory {
namespace {

constexpr std::size_t INDENT = 2;
constexpr std::size_t GAP = 3;
constexpr std::size_t LEAST_WIDTH = 3;  // of a column that is cut

std::string Line(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) {
  std::string line(INDENT, ' ');
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string cell = CutToCells(cells[i], std::max<std::size_t>(widths[i], 1));
    line += cell;
    line.append(widths[i] - std::min(widths[i], CellsOf(cell)) + GAP, ' ');
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

}  // namespace

TextTable::TextTable(std::string tableTitle, std::vector<std::string> columns)
    : title(std::move(tableTitle)), widths(columns.size(), 0) {
  AddRow(std::move(columns));
}

void TextTable::AddRow(std::vector<std::string> cells) {
  cells.resize(widths.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    cells[i] = Printable(cells[i]);
    widths[i] = std::max(widths[i], CellsOf(cells[i]));
  }
  rows.push_back(std::move(cells));
}

// The largest width to which the wider columns can be cut so that a line fits.
std::vector<std::size_t> TextTable::WidthsWithin(std::size_t cells) const {
  std::vector<std::size_t> cut = widths;
  if (cells == 0 || cut.empty()) return cut;
  const std::size_t around = INDENT + GAP * (cut.size() - 1);
  for (std::size_t limit = *std::max_element(cut.begin(), cut.end()); limit >= LEAST_WIDTH;
       --limit) {
    std::size_t total = around;
    for (std::size_t& width : cut) total += width = std::min(width, limit);
    if (total <= cells) break;
  }
  return cut;
}

std::string TextTable::Format(const TableRoom& room) const {
  const std::vector<std::size_t> shownWidths = WidthsWithin(room.cells);
  const std::size_t total = rows.size() - 1;
  const std::size_t shown = room.rows == 0 ? total : std::min(total, room.rows);
  std::string text;
  const auto add = [&](const std::string& line) {
    text += (room.cells == 0 ? line : CutToCells(line, room.cells)) + '\n';
  };
  add(title + " (" + std::to_string(total) + ")");
  for (std::size_t i = 0; i <= shown; ++i) add(Line(rows[i], shownWidths));
  if (shown < total) add("  ... and " + std::to_string(total - shown) + " more");
  return text;
}

}  // namespace tools::inventory
