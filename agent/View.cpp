// SPDX-License-Identifier: MIT
#include "agent/View.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <stdexcept>

#include "agent/InventoryJson.h"
#include "agent/InventoryTable.h"

namespace inventory {
namespace {

constexpr const char* CLEAR_SCREEN = "\033[H\033[2J";
constexpr std::size_t NO_LIMIT = static_cast<std::size_t>(-1);
// Title, headings, the line that counts the rest and the empty line after.
constexpr std::size_t TABLE_FRAME_LINES = 4;

std::size_t RowsPerTable(const Lists& lists) {
  winsize size = {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0) return NO_LIMIT;
  const std::size_t tables =
      lists.hosts + lists.machines + lists.privileges + lists.roles + lists.identities;
  const std::size_t linesEach = size.ws_row / tables;
  return std::max(linesEach, TABLE_FRAME_LINES + 1) - TABLE_FRAME_LINES;
}

}  // namespace

View::View(const Options& opts)
    : options(opts), redraws(opts.follow && !opts.json && isatty(STDOUT_FILENO)) {}

std::string View::Render(const Inventory& inventory) const {
  if (options.json) return ToJson(inventory, options.lists) + '\n';
  return ToTables(inventory, options.lists, redraws ? RowsPerTable(options.lists) : NO_LIMIT);
}

void View::Show(const Inventory& inventory) {
  std::string text = Render(inventory);
  if (shown && text == last) return;
  if (redraws) std::cout << CLEAR_SCREEN;
  if (shown && !redraws && !options.json) std::cout << '\n';
  if (!(std::cout << text).flush()) throw std::runtime_error("cannot write to standard output");
  shown = true;
  last = std::move(text);
}

}  // namespace inventory
