// SPDX-License-Identifier: MIT
//
// The instances that conditions of queries are asked of, and which objects such a condition wants.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_AGENT_RECORDS_H
#define KECPP_TOOLS_AGENT_RECORDS_H

#include <string>

#include "tools/agent/Cursor.h"
#include "tools/agent/StoredInstances.h"
#include "tools/agent/query/Condition.h"

namespace tools::agent {

class StoredRecord final : public query::Record {
 public:
  explicit StoredRecord(const StoredInstance& storedInstance) : instance(storedInstance) {}

  bool Read(const ClassProperty& property, std::string& out) const override;

 private:
  const StoredInstance& instance;
};

// A link has no values that a condition can read.
class LinkRecord final : public query::Record {
 public:
  bool Read(const ClassProperty&, std::string&) const override { return false; }
};

// The objects of a class for which a condition holds. Throws OperationError, "invalid query".
Wanted WantedObjects(const query::Expression& condition, const ClassRow& type,
                     const std::string& alias);

}  // namespace tools::agent

#endif
