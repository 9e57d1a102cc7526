// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryTable.h"

#include <kecpp.h>

#include <unordered_map>

namespace tools::inventory {
namespace {

using Form = Column::Form;

std::string Decoded(std::string_view xmlText) {
  KELib::KEString decoded;
  KELib::Xml::DecodeEntities(std::string(xmlText).c_str(), decoded);
  return decoded.Cstr();
}

std::string Joined(const std::vector<std::string_view>& keys) {
  std::string all;
  for (const std::string_view key : keys) all += (all.empty() ? "" : ", ") + Decoded(key);
  return all;
}

std::string StatusWordOf(const std::vector<std::string_view>& items) {
  return items.empty() ? "" : StatusWord(std::stoul(std::string(items.front())));
}

using HostNames = std::unordered_map<std::string_view, std::string_view>;

HostNames NamesOf(const Rows& hosts) {
  HostNames names;
  const std::size_t name = hosts.ColumnOf("ElementName");
  for (std::size_t row = 0; row < hosts.Count(); ++row) {
    names[hosts.Key(row)] = hosts.Value(row, name).value_or("");
  }
  return names;
}

std::string Cell(Form form, const std::optional<std::string_view>& value, const HostNames& hosts) {
  if (!value) return form == Form::hostName ? "-" : "";
  switch (form) {
    case Form::status:
      return StatusWordOf(Items(*value));
    case Form::count:
      return std::to_string(Items(*value).size());
    case Form::items:
      return Joined(Items(*value));
    case Form::hostName: {
      const auto host = hosts.find(*value);
      return host == hosts.end() ? "" : Decoded(host->second);
    }
    default:
      return Decoded(*value);
  }
}

std::string Table(const Kind& kind, const Rows& rows, const HostNames& hosts,
                  const TableRoom& room) {
  std::vector<std::string> headings;
  for (const Column& column : kind.columns) headings.emplace_back(column.heading);
  TextTable table(kind.title, headings);
  for (const std::size_t row : rows.ByKey()) {
    std::vector<std::string> cells;
    for (const Column& column : kind.columns) {
      cells.push_back(Cell(column.form, rows.Value(row, rows.ColumnOf(column.value)), hosts));
    }
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

std::string ToTables(const InventoryCopy& inventory, const Lists& lists, const TableRoom& room) {
  const HostNames hosts = NamesOf(inventory.Of(*FindKind("hosts")));
  std::string text;
  for (const Kind* kind : lists) {
    text += (text.empty() ? "" : "\n") + Table(*kind, inventory.Of(*kind), hosts, room);
  }
  return text;
}

}  // namespace tools::inventory
