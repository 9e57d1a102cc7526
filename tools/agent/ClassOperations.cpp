// SPDX-License-Identifier: MIT
#include "tools/agent/ClassOperations.h"

#include "tools/agent/ClassElements.h"
#include "tools/agent/PathElements.h"
#include "tools/agent/Qualifiers.h"

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
  for (const ClassRow* type : AllClasses(request.space->space)) {
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
    for (const Namespace& row : NAMESPACES) {
      out.Open("INSTANCENAME", {{"CLASSNAME", "CIM_Namespace"}});
      WriteTextKey(out, "Name", row.name);
      out.Close("INSTANCENAME");
    }
  };
}

Content EnumerateQualifiers(const Call&) {
  return [](XmlWriter& out) {
    for (const QualifierRow& row : AllQualifiers()) WriteDeclaration(out, row);
  };
}

Content GetQualifier(const Call& call) {
  const std::string name = call.request.Text("QualifierName");
  if (name.empty()) throw OperationError(Status::InvalidParameter, "QualifierName is missing");
  const QualifierRow* row = FindQualifier(name);
  if (!row) throw OperationError(Status::NotFound, "there is no qualifier " + name);
  return [row](XmlWriter& out) { WriteDeclaration(out, *row); };
}

}  // namespace tools::agent
