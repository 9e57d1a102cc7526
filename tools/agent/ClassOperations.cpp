// SPDX-License-Identifier: MIT
#include "tools/agent/ClassOperations.h"

#include "tools/agent/ClassElements.h"

namespace tools::agent {
namespace {

bool IsDirectlyBelow(const ClassRow& type, const ClassRow* top) {
  if (!type.parent) return !top;
  return top && SameName(type.parent, top->name);
}

std::vector<const ClassRow*> ClassesBelow(const Request& request) {
  const ClassRow* top = request.Text("ClassName").empty() ? nullptr : &RequestedClass(request);
  const bool deep = request.Flag("DeepInheritance", false);
  std::vector<const ClassRow*> found;
  for (const ClassRow* type : AllClasses()) {
    const bool below =
        deep ? !top || (type != top && DerivesFrom(*type, *top)) : IsDirectlyBelow(*type, top);
    if (below) found.push_back(type);
  }
  return found;
}

ClassDetail Detail(const Request& request) {
  return {request.Flag("LocalOnly", true), request.Flag("IncludeQualifiers", true),
          request.Flag("IncludeClassOrigin", false)};
}

}  // namespace

Content EnumerateClasses(const Call& call) {
  return [classes = ClassesBelow(call.request), detail = Detail(call.request)](XmlWriter& out) {
    for (const ClassRow* type : classes) WriteClass(out, *type, PropertiesOf(*type), detail);
  };
}

Content EnumerateClassNames(const Call& call) {
  return [classes = ClassesBelow(call.request)](XmlWriter& out) {
    for (const ClassRow* type : classes) out.Empty("CLASSNAME", {{"NAME", type->name}});
  };
}

Content GetClass(const Call& call) {
  const ClassRow& type = RequestedClass(call.request);
  return [&type, properties = WantedProperties(call.request, type), detail = Detail(call.request)](
             XmlWriter& out) { WriteClass(out, type, properties, detail); };
}

Content EnumerateNamespaces(const Call&) {
  return [](XmlWriter& out) {
    out.Open("INSTANCENAME", {{"CLASSNAME", "CIM_Namespace"}});
    out.Open("KEYBINDING", {{"NAME", "Name"}});
    out.Open("KEYVALUE", {{"VALUETYPE", "string"}, {"TYPE", "string"}});
    out.Text(NAMESPACE_NAME);
    out.Close("KEYVALUE");
    out.Close("KEYBINDING");
    out.Close("INSTANCENAME");
  };
}

}  // namespace tools::agent
