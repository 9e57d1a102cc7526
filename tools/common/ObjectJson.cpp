// SPDX-License-Identifier: MIT
#include "tools/common/ObjectJson.h"

#include <nlohmann/json.hpp>

#include "tools/common/Split.h"

namespace tools {
namespace {

using Json = nlohmann::ordered_json;

// CIM has the status as a list of one number; here it is the number.
Json ValueOf(const PropertyRow& row, const ObjectView& object) {
  std::string text;
  if (!row.read(object, text)) return nullptr;
  if (row.type != CimType::String) return std::stoul(text);
  if (!row.isArray) return text;
  Json list = Json::array();
  for (const std::string_view item : Split(text, '\0')) list.push_back(item);
  return list;
}

Json ViewJson(const Kind& kind, const ObjectView& view) {
  Json object = Json::object();
  for (const ClassProperty& property : ValuesOf(kind)) {
    object[property.row->name] = ValueOf(*property.row, view);
  }
  return object;
}

}  // namespace

const char* WordFor(kecpp::Change::Type type) {
  switch (type) {
    case kecpp::Change::Type::added:
      return "added";
    case kecpp::Change::Type::changed:
      return "changed";
    default:
      return "removed";
  }
}

Json ObjectJson(const Kind& kind, const Object& copy) {
  Json object;
  ViewObject(copy, [&](const ObjectView& view) { object = ViewJson(kind, view); });
  return object;
}

std::string LineOf(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string ToJson(const Kind& kind, const ObjectView& object) {
  return LineOf(ViewJson(kind, object));
}

std::string ToJson(const kecpp::Change& change, const Object* object) {
  Json event = {
      {"change", WordFor(change.type)}, {"kind", kecpp::NameOf(change.kind)}, {"key", change.key}};
  if (object) event["object"] = ObjectJson(KindRow(change.kind), *object);
  return LineOf(event);
}

}  // namespace tools
