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

#include "datasync/UpdateInfo.h"
#include "instance/KETypeCache.h"
#include "xml/KEXmlCursor.h"

namespace KE::Stub {
class ZORBEL_ORXComputerSystem;
class ZORBEL_VMComputerSystem;
}  // namespace KE::Stub

namespace KE::Service {

class ObjectTarget {
 public:
  // Stands for `ui.obj` from now on. Nothing is looked up yet.
  ObjectTarget(UpdateInfo& ui, KE::Instance::KETypeCache& cache);

  // Applies one property's value. Unknown object types and properties are passed over, and so are
  // "remove" and "indirectRemove": the last value that was known is worth more than none.
  // Throws SystemException "No Data Map found for type :..." when the type has no data cache.
  void Apply(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& op,
             const KELib::Xml::XmlSlice& value);

  // The object has left the watch: deletes its stub; a task counts as ended.
  void Remove();

  // The stub of a host, created when it is new; null for other object types.
  KE::Stub::ZORBEL_ORXComputerSystem* Host();

 private:
  enum class ObjectKind { machine, host, other };

  KE::Stub::ZORBEL_VMComputerSystem* Machine();
  void ApplyToMachine(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& value);
  void ApplyToHost(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& value);
  void ApplyToTask(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& value);
  const char* CacheType() const;

  UpdateInfo& ui;
  KE::Instance::KETypeCache& cache;
  ObjectKind kind;
  KE::Stub::ZORBEL_VMComputerSystem* machine = nullptr;
  KE::Stub::ZORBEL_ORXComputerSystem* host = nullptr;
};

}  // namespace KE::Service

#endif
