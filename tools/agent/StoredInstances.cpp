// SPDX-License-Identifier: MIT
#include "tools/agent/StoredInstances.h"

#include <algorithm>
#include <utility>

#include "tools/agent/Errors.h"

namespace tools::agent {
namespace {

bool IsValue(const StoredValue& value, const KeyBinding& key) {
  if (!key.isReference) return !value.target && value.items.front() == key.value;
  return value.target && value.target->IsNamed(key.referenceClass, key.referenceKeys);
}

[[noreturn]] void NotChanged(const ClassRow& type) {
  throw OperationError(Status::NotSupported,
                       std::string("instances of ") + type.name + " are not changed by clients");
}

}  // namespace

StoredInstance::StoredInstance(const ClassRow& rowType)
    : type(&rowType), properties(PropertiesOf(rowType)), values(properties.size()) {}

std::optional<StoredValue>& StoredInstance::Slot(std::string_view property) {
  const auto found = std::find_if(
      properties.begin(), properties.end(),
      [&](const ClassProperty& candidate) { return SameName(candidate.row->name, property); });
  return values.at(static_cast<std::size_t>(found - properties.begin()));
}

StoredInstance& StoredInstance::Set(std::string_view property, std::string_view value) {
  Slot(property) = StoredValue{{std::string(value)}, nullptr};
  return *this;
}

StoredInstance& StoredInstance::Set(std::string_view property, std::vector<std::string> items) {
  Slot(property) = StoredValue{std::move(items), nullptr};
  return *this;
}

StoredInstance& StoredInstance::Set(std::string_view property, Stored target) {
  Slot(property) = StoredValue{{}, std::move(target)};
  return *this;
}

bool StoredInstance::IsNamed(std::string_view className,
                             const std::vector<KeyBinding>& keys) const {
  const ClassRow* named = FindClass(className, INTEROP);
  if (!named || !DerivesFrom(*type, *named)) return false;
  std::size_t matched = 0;
  for (std::size_t i = 0; i < properties.size(); ++i) {
    const PropertyRow& row = *properties[i].row;
    if (!row.isKey) continue;
    const auto key = std::find_if(keys.begin(), keys.end(), [&](const KeyBinding& candidate) {
      return SameName(candidate.name, row.name) || (candidate.name.empty() && keys.size() == 1);
    });
    if (key == keys.end() && SameName(row.name, CREATION_CLASS_NAME)) continue;
    if (key == keys.end() || !values[i] || !IsValue(*values[i], *key)) return false;
    ++matched;
  }
  return matched == keys.size();
}

Stored StoredSource::Create(const ClassRow& type, const std::vector<GivenProperty>&) {
  NotChanged(type);
}

void StoredSource::Modify(const Stored& instance, const std::vector<GivenProperty>&,
                          const std::optional<std::vector<std::string>>&) {
  NotChanged(instance->Type());
}

void StoredSource::Delete(const Stored& instance) {
  NotChanged(instance->Type());
}

}  // namespace tools::agent
