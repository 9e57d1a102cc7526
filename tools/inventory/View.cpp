// SPDX-License-Identifier: MIT
#include "tools/inventory/View.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include "tools/common/ObjectJson.h"
#include "tools/common/Terminal.h"
#include "tools/inventory/InventoryJson.h"
#include "tools/inventory/InventoryTable.h"

namespace tools::inventory {
namespace {

constexpr const char* CLEAR_SCREEN = "\033[H\033[2J";
// Title, headings, the line that counts the rest and the empty line after.
constexpr std::size_t TABLE_FRAME_LINES = 4;

std::size_t RowsPerTable(std::size_t terminalRows, const Lists& lists) {
  const std::size_t linesEach = terminalRows / lists.size();
  return std::max(linesEach, TABLE_FRAME_LINES + 1) - TABLE_FRAME_LINES;
}

void Print(const std::string& text) {
  if (!(std::cout << text).flush()) throw std::runtime_error("cannot write to standard output");
}

}  // namespace

View::View(const Options& opts)
    : options(opts),
      redraws(opts.follow && opts.format == Format::table && TakesCommands(STDOUT_FILENO)) {}

std::string View::Render(const Model& inventory) const {
  if (options.format == Format::json) return ToJson(inventory, options.lists) + '\n';
  const TerminalSize size = SizeOfTerminal(STDOUT_FILENO);
  TableRoom room;
  room.cells = size.columns;
  if (redraws && size.rows > 0) room.rows = RowsPerTable(size.rows, options.lists);
  return ToTables(inventory, options.lists, room);
}

void View::Show(const Model& inventory) {
  std::string text = Render(inventory);
  if (shown && text == last) return;
  if (redraws) std::cout << CLEAR_SCREEN;
  if (shown && !redraws && options.format == Format::table) std::cout << '\n';
  Print(text);
  shown = true;
  last = std::move(text);
}

void View::ShowEvents(const std::vector<kecpp::Change>& changes,
                      const kecpp::Inventory& inventory) {
  Print(EventLines(changes, inventory,
                   [this](kecpp::Kind kind) { return HasKind(options.lists, kind); }));
}

}  // namespace tools::inventory
