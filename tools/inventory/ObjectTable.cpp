// SPDX-License-Identifier: MIT
#include "tools/inventory/ObjectTable.h"

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

std::string Cell(const Column& column, const PropertyRow& row, const ObjectView& object,
                 const ObjectTable::HostName& nameOf) {
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
      return nameOf(text);
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

std::vector<std::string> Headings(const Kind& kind, std::vector<std::string> headings) {
  for (const Column& column : kind.columns) headings.emplace_back(column.heading);
  return headings;
}

}  // namespace

ObjectTable::ObjectTable(const Kind& ofKind, const std::vector<std::string>& owners)
    : kind(ofKind), table(kind.title, Headings(kind, owners)) {
  for (const Column& column : kind.columns) rows.push_back(&RowOf(kind, column));
}

void ObjectTable::Add(const Object& object, const HostName& nameOf,
                      std::vector<std::string> cells) {
  ViewObject(object, [&](const ObjectView& view) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      cells.push_back(Cell(kind.columns[i], *rows[i], view, nameOf));
    }
  });
  table.AddRow(std::move(cells));
}

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

}  // namespace tools::inventory
