// SPDX-License-Identifier: MIT
//
// Texts from a server on a terminal: how many cells they take, and which characters must not get
// there. All texts are UTF-8, in every locale.
//
// Thread safety: any thread.
#ifndef KECPP_TOOLS_COMMON_CELLTEXT_H
#define KECPP_TOOLS_COMMON_CELLTEXT_H

#include <cstddef>
#include <string>

namespace tools {

// The text with a "?" for every control character, every character that changes the direction of
// writing, and every byte that is not UTF-8: a server's text must not steer the terminal.
std::string Printable(const std::string& text);

// The cells that a printable text takes: two for a wide character, none for a combining one.
std::size_t CellsOf(const std::string& printable);

// The text itself when it takes at most `cells` cells, else as much of it as fits before an
// ellipsis. `cells` is at least 1.
std::string CutToCells(const std::string& printable, std::size_t cells);

}  // namespace tools

#endif
