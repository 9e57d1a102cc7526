// SPDX-License-Identifier: MIT
#include "tools/agent/Records.h"

#include <algorithm>
#include <memory>

namespace tools::agent {
namespace {

// An object as it is in the inventory.
class ViewRecord final : public query::Record {
 public:
  explicit ViewRecord(const ObjectView& objectView) : object(objectView) {}

  bool Read(const ClassProperty& property, std::string& out) const override {
    std::string stored;
    if (!property.row->read(object, stored)) return false;
    out += kecpp::Decode(stored);
    return true;
  }

 private:
  const ObjectView& object;
};

}  // namespace

bool StoredRecord::Read(const ClassProperty& property, std::string& out) const {
  const auto& all = instance.Properties();
  const auto found = std::find_if(all.begin(), all.end(), [&](const ClassProperty& candidate) {
    return candidate.row == property.row;
  });
  const auto& value = instance.Value(static_cast<std::size_t>(found - all.begin()));
  if (!value) return false;
  if (!property.row->isArray) {
    out += value->items.front();
    return true;
  }
  for (const std::string& item : value->items) (out += item) += '\0';
  return true;
}

Wanted WantedObjects(const query::Expression& expression, const ClassRow& type,
                     const std::string& alias) {
  const auto condition = std::make_shared<query::Condition>(expression, type, alias);
  return [condition](const ObjectView& object) { return condition->Holds(ViewRecord(object)); };
}

}  // namespace tools::agent
