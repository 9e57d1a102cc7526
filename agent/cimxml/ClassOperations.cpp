// SPDX-License-Identifier: MIT
#include "agent/cimxml/ClassOperations.h"

#include "agent/cimxml/ClassElements.h"

namespace cimxml {
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

void EnumerateClasses(const Call& call) {
  const ClassDetail detail = Detail(call.request);
  for (const ClassRow* type : ClassesBelow(call.request)) {
    WriteClass(call.out, *type, PropertiesOf(*type), detail);
  }
}

void EnumerateClassNames(const Call& call) {
  for (const ClassRow* type : ClassesBelow(call.request)) {
    call.out.Empty("CLASSNAME", {{"NAME", type->name}});
  }
}

void GetClass(const Call& call) {
  const ClassRow& type = RequestedClass(call.request);
  WriteClass(call.out, type, WantedProperties(call.request, type), Detail(call.request));
}

void EnumerateNamespaces(const Call& call) {
  call.out.Open("INSTANCENAME", {{"CLASSNAME", "CIM_Namespace"}});
  call.out.Open("KEYBINDING", {{"NAME", "Name"}});
  call.out.Open("KEYVALUE", {{"VALUETYPE", "string"}, {"TYPE", "string"}});
  call.out.Text(NAMESPACE_NAME);
  call.out.Close("KEYVALUE");
  call.out.Close("KEYBINDING");
  call.out.Close("INSTANCENAME");
}

}  // namespace cimxml
