// SPDX-License-Identifier: MIT
#include "datasync/StepWalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <pugixml.hpp>

#include "foundation/KEMutexGuard.h"
#include "instance/KECacheGuard.h"
#include "instance/KEDataCache.h"
#include "stub/classes/ClassNames.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {
namespace {

// The element's own text, behind leading blanks.
std::string Text(const pugi::xml_node& element) {
  std::string text;
  for (const auto part : element.children()) {
    if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata) text += part.value();
  }
  return text.erase(0, std::min(text.size(), text.find_first_not_of(" \n")));
}

class Walk {
 public:
  Walk(KEDataSyncImpl& owner, const std::string& set, Steps which)
      : sync(owner), text(set), steps(which), ui("val", nullptr) {
    document.load_buffer(set.data(), set.size(), pugi::parse_cdata);
  }

  void Run() {
    for (const auto filterSet : document.child("returnval").children("filterSet")) {
      if (filterSet.child("filter").empty()) continue;
      Take(filterSet.child("filter"), ui.filter);
      ui.syncInfo = sync.FindFilter(ui.filter);
      if (ui.syncInfo == nullptr) return;
      for (const auto part : filterSet.children()) {
        if (std::strcmp(part.name(), "objectSet") == 0) ApplyObject(part);
        if (std::strcmp(part.name(), "missingSet") == 0) Remove(part, true);
      }
    }
  }

 private:
  static void Take(const pugi::xml_node& node, Stub::ManagedObjectReference& reference) {
    const auto type = node.find_attribute(
        [](auto attribute) { return std::strchr(attribute.name(), ':') == nullptr; });
    reference.type = type.value();
    reference.value = Text(node).c_str();
  }

  // A reader behind the name of that node's start tag.
  void Read(const pugi::xml_node& node, KELib::Xml::KEXmlReader& reader) {
    KELib::KEString rest(text.c_str() + node.offset_debug() - 1);
    reader.SetInput(rest, false);
    EXPECT_TRUE(reader.FindElementTag(node.name()));
  }

  void Remove(const pugi::xml_node& object, bool missing) {
    KELib::Xml::KEXmlReader reader;
    Take(object.child("obj"), ui.obj);
    missing ? sync.UpdateMissingType(ui, reader) : sync.UpdateObjectLeave(ui, reader);
  }

  void ApplyObject(const pugi::xml_node& object) {
    ui.kind = Text(object.child("kind")).c_str();
    if (ui.kind.Equals("leave") && object.child("changeSet").empty()) return Remove(object, false);
    Take(object.child("obj"), ui.obj);
    for (const auto change : object.children("changeSet")) {
      const auto value = change.child("val");
      ui.name = Text(change.child("name")).c_str();
      ui.op = Text(change.child("op")).c_str();
      ui.valueType = "";
      if (value.empty() || ui.name.Empty()) continue;
      KELib::Xml::KEXmlReader reader;
      Read(value, reader);
      if (value.find_child([](auto child) { return child.type() == pugi::node_element; })) {
        ApplyList(value, reader);
      } else {
        sync.UpdateSimpleType(ui, reader);
      }
    }
  }

  void ApplyList(const pugi::xml_node& value, KELib::Xml::KEXmlReader& reader) {
    const auto schema = value.attribute("xsi:type");
    const std::string type = (schema ? schema : value.first_attribute()).value();
    const std::size_t prefix = sizeof("ArrayOf") - 1;
    const bool isArray = type.compare(0, prefix, "ArrayOf") == 0;
    const bool isRights = ui.obj.type.Equals("AuthorizationManager");
    const bool isRoles = isRights && ui.name.Equals("roleList");
    const bool isPrivileges = isRights && ui.name.Equals("privilegeList");
    const bool isMachines = ui.name.Equals("vm") && ui.obj.type.Equals("HostSystem");
    if (steps == Steps::values || (!isRoles && !isPrivileges && !isMachines)) {
      return sync.UpdateComplexType(ui, reader);
    }
    Instance::KEMultiCacheLock lock;
    sync.LockCaches(lock, ui);
    KELib::KEMutexGuard guard(sync.GetMutex());
    Instance::KECacheGuard caches(sync.GetCache());
    caches.LockFor(ui.obj.type);
    if (isArray) ui.valueType = type.c_str() + prefix;
    if (!isArray) {
      sync.UpdateSingleComplexType(ui, reader, nullptr, nullptr, nullptr);
    } else if (steps == Steps::lists || isMachines) {
      sync.UpdateArrayOfComplexType(ui, reader, nullptr, nullptr);
    } else if (isRoles) {
      ApplyItems(value, Stub::Zorbel_RoleClass, "roleId");
    } else {
      ApplyItems(value, Stub::Zorbel_PrivilegeClass, "privId");
    }
  }

  void ApplyItems(const pugi::xml_node& list, const char* cacheClass, const char* keyTag) {
    KELib::KEString type(cacheClass);
    Instance::KEDataCache* const cache = sync.GetCache()->GetDataCache(type);
    KELib::KEHashmap<KELib::KEString, bool> seen;
    for (const auto item : list.children(ui.valueType.Cstr())) {
      KELib::Xml::KEXmlReader reader, again;
      Read(item, reader);
      Read(item, again);
      sync.UpdateSingleComplexType(ui, reader, nullptr, nullptr, &seen);
      KELib::KEString key("what was there");
      sync.GetAssociatedType(keyTag, cache, again, key);
      if (item.child(keyTag).first_child().empty()) continue;  // that was another item's
      EXPECT_EQ(key.Cstr(), Text(item.child(keyTag)));
      EXPECT_TRUE(seen.Contains(key));
    }
    sync.ProcessArrayDeletes(nullptr, seen);
    sync.ProcessArrayDeletes(cache, seen);
  }

  KEDataSyncImpl& sync;
  const std::string& text;
  const Steps steps;
  UpdateInfo ui;
  pugi::xml_document document;
};

}  // namespace

void ApplyBySteps(KEDataSyncImpl& sync, const std::string& set, Steps steps) {
  Walk(sync, set, steps).Run();
}

}  // namespace KE::Service
