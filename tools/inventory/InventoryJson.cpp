// SPDX-License-Identifier: MIT
#include "tools/inventory/InventoryJson.h"

#include <charconv>
#include <nlohmann/json.hpp>

namespace tools::inventory {
namespace {

using Json = nlohmann::ordered_json;

Json ListOf(const std::vector<std::string_view>& items) {
  Json list = Json::array();
  for (const std::string_view item : items) list.push_back(item);
  return list;
}

// Null when the text is no number.
Json NumberOf(std::string_view digits) {
  unsigned long long number = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return read.ec == std::errc() ? Json(number) : Json(nullptr);
}

// CIM has the status as a list of one number; here it is the number.
Json ValueOf(const PropertyRow& row, const std::optional<std::string_view>& value) {
  if (!value) return nullptr;
  if (row.type != CimType::String) return NumberOf(*value);
  return row.isArray ? ListOf(Items(*value)) : Json(*value);
}

Json Objects(const Rows& rows) {
  Json list = Json::array();
  for (const std::size_t row : rows.ByKey()) {
    Json object = Json::object();
    for (std::size_t column = 0; column < rows.Columns().size(); ++column) {
      const PropertyRow& property = *rows.Columns()[column].row;
      object[property.name] = ValueOf(property, rows.Value(row, column));
    }
    list.push_back(std::move(object));
  }
  return list;
}

}  // namespace

std::string ToJson(const InventoryCopy& inventory, const Lists& lists) {
  Json document = Json::object();
  for (const Kind* kind : lists) document[kind->name] = Objects(inventory.Of(*kind));
  return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace tools::inventory
