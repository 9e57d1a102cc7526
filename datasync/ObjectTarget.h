// SPDX-License-Identifier: MIT
//
// The stub that the current object set speaks of: found or created once, then filled property by
// property.
//
// Thread safety: the caller holds the filter-table mutex and the data caches of the object's type.
// Ownership: the caches own the stubs; a target is of no use once the guard on the caches is let
// go.
#ifndef KECPP_DATASYNC_OBJECTTARGET_H
#define KECPP_DATASYNC_OBJECTTARGET_H

#include "datasync/ComputerSystems.h"
#include "datasync/UpdateInfo.h"
#include "instance/KETypeCache.h"
#include "xml/KEXmlCursor.h"

namespace KE::Service {

class ObjectTarget {
 public:
  // Stands for `ui.obj` from now on. Nothing is looked up yet.
  ObjectTarget(UpdateInfo& ui, KE::Instance::KETypeCache& types, ComputerSystems& systems);

  bool IsComputerSystem() const { return kind != ObjectKind::other; }

  // Applies one property's value. Unknown object types and properties are passed over, and so are
  // "remove" and "indirectRemove": the last value that was known is worth more than none.
  // Throws SystemException "No Data Map found for type :..." when the type has no data cache.
  void Apply(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& op,
             const KELib::Xml::XmlSlice& value);

  // The object has left the watch: deletes its stub; a task counts as ended.
  void Remove();

  // The host runs the machine of that identifier: makes or moves the machine's link. Passed over
  // when the machine is not cached or the object no host.
  void LinkMachine(const KELib::Xml::XmlSlice& id);

 private:
  enum class ObjectKind { machine, host, other };

  KE::Stub::ZORBEL_VMComputerSystem& Machine();
  KE::Stub::ZORBEL_ORXComputerSystem& Host();
  void ApplyToMachine(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& value);
  void ApplyToHost(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& value);
  void ApplyToTask(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& value);
  const char* CacheType() const;

  UpdateInfo& ui;
  KE::Instance::KETypeCache& types;
  ComputerSystems& systems;
  ObjectKind kind;
  KE::Stub::ZORBEL_VMComputerSystem* machine = nullptr;
  KE::Stub::ZORBEL_ORXComputerSystem* host = nullptr;
};

}  // namespace KE::Service

#endif
