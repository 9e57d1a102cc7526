// SPDX-License-Identifier: MIT
//
// Writes instances, links and their names as CIM-XML elements.
//
// Thread safety: one writer belongs to one thread.
#ifndef KECPP_TOOLS_AGENT_OBJECTELEMENTS_H
#define KECPP_TOOLS_AGENT_OBJECTELEMENTS_H

#include <string>
#include <string_view>

#include "tools/agent/Queries.h"
#include "tools/agent/Rows.h"
#include "tools/agent/XmlWriter.h"

namespace tools::agent {

class ObjectElements {
 public:
  // `host` is this machine's name in absolute paths. `origins`: write each property's class of
  // origin. Both arguments outlive the object.
  ObjectElements(XmlWriter& out, const std::string& host, bool origins);

  // Of the object in that row: INSTANCENAME, INSTANCE, and the two within their path.
  void Name(const Rows& rows, std::size_t row);
  void Instance(const Rows& rows, std::size_t row);
  void Path(const Rows& rows, std::size_t row);

  // Of a link. `properties` are the roles that are written, all of the class's or some.
  void Name(const Link& link);
  void Instance(const Link& link, const std::vector<ClassProperty>& properties);
  void Path(const Link& link);

 private:
  void NameOf(const ClassRow& type, std::string_view key);
  void OpenPath();
  void ClosePath();
  void OpenProperty(const char* element, const ClassProperty& property);
  void Property(const ClassProperty& property, std::optional<std::string_view> value);
  void End(const Link& link, const PropertyRow& role);

  XmlWriter& out;
  const std::string& host;
  bool origins;
};

}  // namespace tools::agent

#endif
