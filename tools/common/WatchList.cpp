// SPDX-License-Identifier: MIT
#include "tools/common/WatchList.h"

#include <initializer_list>
#include <string>

#include "tools/common/Kinds.h"
#include "tools/common/Split.h"

namespace tools {
namespace {

using namespace KE::Service;
using List = KELib::KEVector<KELib::KEString>;

void Add(List& list, std::string_view element) {
  list.Add(KELib::KEString(std::string(element).c_str()));
}

void Add(List& list, std::initializer_list<const char*> elements) {
  for (const char* element : elements) Add(list, std::string_view(element));
}

void AddProperties(List& list, Group group) {
  for (const Kind& kind : Kinds()) {
    if (kind.group != group || !kind.serverType) continue;
    Add(list, {PropSep, ObjectSep, kind.serverType});
    for (const std::string_view path : Split(kind.paths, ' ')) Add(list, path);
  }
}

void AddCaches(List& list, Group group) {
  Add(list, {CacheObjectSep});
  for (const ClassRow* type : ClassesOf(group)) Add(list, {type->name});
}

}  // namespace

void ListSystems(List& list) {
  AddProperties(list, Group::systems);
  Add(list, {TraversalSep, "folderWalk", ObjectSep, "Folder", PropSep, "childEntity", SelectSep,
             "folderWalk"});
  AddCaches(list, Group::systems);
}

void ListAuthorization(List& list) {
  AddProperties(list, Group::authorization);
  Add(list, {MethodSep, "RetrieveAllPermissions"});
  AddCaches(list, Group::authorization);
}

}  // namespace tools
