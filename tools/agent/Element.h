// SPDX-License-Identifier: MIT
//
// The element by which the objects of one class are answered, prepared once: what is the same for
// each of them is encoded here and then only copied.
//
// Thread safety: constant once it is made.
#ifndef KECPP_TOOLS_AGENT_ELEMENT_H
#define KECPP_TOOLS_AGENT_ELEMENT_H

#include <vector>

#include "tools/agent/Rows.h"
#include "tools/agent/XmlWriter.h"

namespace tools::agent {

class Element {
 public:
  // How a cell is written: its text; a VALUE; the VALUE.ARRAY of a list. Nothing for null.
  enum class Form { Text, Value, List };

  // While it is prepared: takes what is the same for each object, in the order of the element.
  XmlWriter& Constant() { return constant; }

  // The cell of that column comes next.
  void AddCell(Form form, std::size_t column);

  void Write(const Rows& rows, std::size_t row, XmlWriter& out) const;

 private:
  struct Cell {
    std::size_t at;  // in `constant`
    Form form;
    std::size_t column;
  };

  XmlWriter constant;
  std::vector<Cell> cells;
};

}  // namespace tools::agent

#endif
