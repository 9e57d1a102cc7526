// SPDX-License-Identifier: MIT
//
// Writes stored instances and their names as CIM-XML elements.
//
// Thread safety: one writer belongs to one thread.
#ifndef KECPP_TOOLS_AGENT_STOREDELEMENTS_H
#define KECPP_TOOLS_AGENT_STOREDELEMENTS_H

#include <string>

#include "tools/agent/StoredInstances.h"
#include "tools/agent/XmlWriter.h"

namespace tools::agent {

class StoredElements {
 public:
  // `host` is this machine's name in absolute paths, `nameSpace` the name of the namespace as the
  // client has it. `origins`: write each property's class of origin. The arguments outlive the
  // object.
  StoredElements(XmlWriter& out, const std::string& host, const std::string& nameSpace,
                 bool origins);

  // INSTANCENAME, INSTANCEPATH, and INSTANCE with those of its properties that are in `wanted`.
  void Name(const StoredInstance& instance);
  void Path(const StoredInstance& instance);
  void Instance(const StoredInstance& instance, const std::vector<ClassProperty>& wanted);

 private:
  void Property(const ClassProperty& property, const std::optional<StoredValue>& value);
  void Reference(const StoredInstance& target);

  XmlWriter& out;
  const std::string& host;
  const std::string& nameSpace;
  bool origins;
};

}  // namespace tools::agent

#endif
