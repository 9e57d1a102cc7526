// SPDX-License-Identifier: MIT
#include "tools/agent/indications/StateText.h"

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "tools/agent/indications/GivenInstance.h"

namespace tools::agent {
namespace {

using Json = nlohmann::ordered_json;

constexpr int FORMAT = 1;

// A reference as the class and the name of what it leads to.
Json WriteProperty(const GivenProperty& property) {
  if (property.reference.isReference) {
    return {{"class", property.reference.referenceClass},
            {"name", property.reference.referenceKeys.front().value}};
  }
  return property.isArray ? Json(property.values) : Json(property.values.front());
}

Json WriteInstance(const KeptInstance& kept) {
  Json properties = Json::object();
  for (const GivenProperty& property : kept.properties) {
    properties[property.name] = WriteProperty(property);
  }
  Json json = {{"class", kept.type->name}, {"properties", std::move(properties)}};
  if (kept.failingSince != 0) json["failingSince"] = kept.failingSince;
  return json;
}

GivenProperty ReadProperty(const ClassRow& type, const std::string& name, const Json& json) {
  GivenProperty given;
  given.name = name;
  given.isNull = false;
  given.isArray = json.is_array();
  if (json.is_object()) {
    given.reference.isReference = true;
    given.reference.name = name;
    given.reference.referenceClass = json.at("class").get<std::string>();
    given.reference.referenceKeys = {NameKey(json.at("name").get<std::string>())};
    return given;
  }
  if (json.is_array()) {
    given.values = json.get<std::vector<std::string>>();
  } else {
    given.values = {json.get<std::string>()};
  }
  for (const ClassProperty& property : PropertiesOf(type)) {
    if (SameName(property.row->name, name)) given.type = TypeName(property.row->type);
  }
  return given;
}

KeptInstance ReadInstance(const Json& json) {
  KeptInstance kept;
  const auto name = json.at("class").get<std::string>();
  kept.type = FindClass(name, INTEROP);
  if (!kept.type) throw std::runtime_error("there is no class " + name);
  for (const auto& [property, value] : json.at("properties").items()) {
    kept.properties.push_back(ReadProperty(*kept.type, property, value));
  }
  kept.failingSince = json.value("failingSince", 0LL);
  return kept;
}

}  // namespace

std::string WriteState(const std::vector<KeptInstance>& instances) {
  Json all = Json::array();
  for (const KeptInstance& kept : instances) all.push_back(WriteInstance(kept));
  return Json{{"format", FORMAT}, {"instances", std::move(all)}}.dump(1) + "\n";
}

std::vector<KeptInstance> ReadState(const std::string& text) {
  const Json json = Json::parse(text);
  if (json.at("format").get<int>() != FORMAT) throw std::runtime_error("it has another format");
  std::vector<KeptInstance> instances;
  for (const Json& one : json.at("instances")) instances.push_back(ReadInstance(one));
  return instances;
}

}  // namespace tools::agent
