// SPDX-License-Identifier: MIT
#include "tools/inventory/View.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include "tools/common/Terminal.h"
#include "tools/inventory/InventoryJson.h"
#include "tools/inventory/InventoryTable.h"

namespace tools::inventory {
namespace {

constexpr const char* CLEAR_SCREEN = "\033[H\033[2J";
// Title, headings, the line that counts the rest and the empty line after.
constexpr std::size_t TABLE_FRAME_LINES = 4;

std::size_t RowsPerTable(std::size_t terminalRows, std::size_t tables) {
  const std::size_t linesEach = terminalRows / tables;
  return std::max(linesEach, TABLE_FRAME_LINES + 1) - TABLE_FRAME_LINES;
}

}  // namespace

View::View(const Options& opts)
    : options(opts),
      redraws(opts.follow && opts.format == Format::table && TakesCommands(STDOUT_FILENO)) {}

TableRoom View::Room(std::size_t tables) const {
  const TerminalSize size = SizeOfTerminal(STDOUT_FILENO);
  TableRoom room;
  room.cells = size.columns;
  if (redraws && size.rows > 0) room.rows = RowsPerTable(size.rows, tables);
  return room;
}

void View::Show(const Model& inventory) {
  const Lists& lists = options.lists;
  ShowText(options.format == Format::json ? ToJson(inventory, lists) + '\n'
                                          : ToTables(inventory, lists, Room(lists.size())));
}

void View::ShowText(std::string text) {
  if (shown && text == last) return;
  if (redraws) std::cout << CLEAR_SCREEN;
  if (shown && !redraws && options.format == Format::table) std::cout << '\n';
  ShowLines(text);
  shown = true;
  last = std::move(text);
}

void View::ShowLines(const std::string& lines) {
  if (!(std::cout << lines).flush()) throw std::runtime_error("cannot write to standard output");
}

}  // namespace tools::inventory
