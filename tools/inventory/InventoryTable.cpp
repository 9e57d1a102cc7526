// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryTable.h"

#include <algorithm>

#include "tools/common/Split.h"

namespace tools::inventory {
namespace {

using Form = Column::Form;

std::string Joined(const std::vector<std::string_view>& keys) {
  std::string all;
  for (const std::string_view key : keys) all += (all.empty() ? "" : ", ") + std::string(key);
  return all;
}

std::string NameOfHost(const Model& inventory, const std::string& key) {
  const Object* host = inventory.Find(kecpp::Kind::host, key);
  return host ? std::get<kecpp::Host>(*host).name : "";
}

std::string Cell(const Column& column, const PropertyRow& row, const ObjectView& object,
                 const Model& inventory) {
  std::string text;
  if (!row.read(object, text)) return column.form == Form::hostName ? "-" : "";
  switch (column.form) {
    case Form::status:
      return StatusWord(std::stoul(text));
    case Form::count:
      return std::to_string(Split(text, '\0').size());
    case Form::items:
      return Joined(Split(text, '\0'));
    case Form::hostName:
      return NameOfHost(inventory, text);
    default:
      return text;
  }
}

const PropertyRow& RowOf(const Kind& kind, const Column& column) {
  const auto& values = ValuesOf(kind);
  return *std::find_if(values.begin(), values.end(), [&](const ClassProperty& property) {
            return std::string_view(property.row->name) == column.value;
          })->row;
}

std::string Table(const Kind& kind, const Model& inventory, const TableRoom& room) {
  std::vector<std::string> headings;
  std::vector<const PropertyRow*> rows;
  for (const Column& column : kind.columns) {
    headings.emplace_back(column.heading);
    rows.push_back(&RowOf(kind, column));
  }
  TextTable table(kind.title, headings);
  for (const auto& [key, object] : inventory.Of(kind.kind)) {
    std::vector<std::string> cells;
    ViewObject(object, [&](const ObjectView& view) {
      for (std::size_t i = 0; i < rows.size(); ++i) {
        cells.push_back(Cell(kind.columns[i], *rows[i], view, inventory));
      }
    });
    table.AddRow(std::move(cells));
  }
  return table.Format(room);
}

}  // namespace

std::string StatusWord(unsigned long operationalStatus) {
  switch (operationalStatus) {
    case 0:
      return "unknown";
    case 2:
      return "OK";
    case 3:
      return "degraded";
    case 6:
      return "error";
    case 10:
      return "stopped";
    case 15:
      return "dormant";
    default:
      return std::to_string(operationalStatus);
  }
}

std::string ToTables(const Model& inventory, const Lists& lists, const TableRoom& room) {
  std::string text;
  for (const Kind* kind : lists) {
    text += (text.empty() ? "" : "\n") + Table(*kind, inventory, room);
  }
  return text;
}

}  // namespace tools::inventory
