// SPDX-License-Identifier: MIT
//
// The table of one kind of objects, filled row by row.
#ifndef KECPP_TOOLS_INVENTORY_OBJECTTABLE_H
#define KECPP_TOOLS_INVENTORY_OBJECTTABLE_H

#include <functional>
#include <string>
#include <vector>

#include "tools/common/Kinds.h"
#include "tools/common/ObjectView.h"
#include "tools/inventory/TextTable.h"

namespace tools::inventory {

class ObjectTable {
 public:
  // The first columns say whose object it is, such as its site. The kind outlives the table.
  explicit ObjectTable(const Kind& kind, const std::vector<std::string>& owners = {});

  // The name of the host that has that key; empty for one that is not known.
  using HostName = std::function<std::string(const std::string& key)>;
  void Add(const Object& object, const HostName& nameOf, std::vector<std::string> owners = {});

  std::string Format(const TableRoom& room) const { return table.Format(room); }

 private:
  const Kind& kind;
  std::vector<const PropertyRow*> rows;  // of the kind's columns
  TextTable table;
};

// The word for a CIM operational status, e.g. "OK" for 2; the number for one without a word.
std::string StatusWord(unsigned long operationalStatus);

}  // namespace tools::inventory

#endif
