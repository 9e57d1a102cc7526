// SPDX-License-Identifier: MIT
//
// Instances that do not come from the inventory: what the agent tells of itself, and what clients
// have made. There are few of them, so they are found by looking at all.
//
// Thread safety: an instance does not change once it is shared.
#ifndef KECPP_TOOLS_AGENT_STOREDINSTANCES_H
#define KECPP_TOOLS_AGENT_STOREDINSTANCES_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/agent/Request.h"
#include "tools/common/Schema.h"

namespace tools::agent {

class StoredInstance;
using Stored = std::shared_ptr<const StoredInstance>;

// The value of a property: one raw text, several of an array, or what a reference leads to.
struct StoredValue {
  std::vector<std::string> items;
  Stored target;
};

class StoredInstance {
 public:
  explicit StoredInstance(const ClassRow& type);

  // Gives a property its value; without one it is null. The class must have the property.
  StoredInstance& Set(std::string_view property, std::string_view value);
  StoredInstance& Set(std::string_view property, std::vector<std::string> items);
  StoredInstance& Set(std::string_view property, Stored target);

  const ClassRow& Type() const { return *type; }

  // All of them, inherited ones first, and the value of the one at that place.
  const std::vector<ClassProperty>& Properties() const { return properties; }
  const std::optional<StoredValue>& Value(std::size_t property) const { return values[property]; }

  // Whether an instance name means this one: its class or one above it, and all keys. A client may
  // leave out "CreationClassName".
  bool IsNamed(std::string_view className, const std::vector<KeyBinding>& keys) const;

 private:
  std::optional<StoredValue>& Slot(std::string_view property);

  const ClassRow* type;
  std::vector<ClassProperty> properties;
  std::vector<std::optional<StoredValue>> values;
};

// Where stored instances come from. Any thread may ask.
class StoredSource {
 public:
  virtual ~StoredSource() = default;

  // All that there are now.
  virtual std::vector<Stored> All() const = 0;

  // Makes one of a class, and gives it. Throws OperationError, as the next two do; here "not
  // supported".
  virtual Stored Create(const ClassRow& type, const std::vector<GivenProperty>& properties);

  // Gives one other values; only those properties that are in `wanted`, when there is such a list.
  virtual void Modify(const Stored& instance, const std::vector<GivenProperty>& properties,
                      const std::optional<std::vector<std::string>>& wanted);

  virtual void Delete(const Stored& instance);
};

}  // namespace tools::agent

#endif
