// SPDX-License-Identifier: MIT
//
// The stub that the current object set speaks of: found or created once, then filled property by
// property.
//
// Thread safety: the caller holds the filter-table mutex and the data caches of the object's kind.
// Ownership: the caches own the stubs; a target is of no use once the guard on the caches is let
// go.
#ifndef KECPP_DATASYNC_OBJECTTARGET_H
#define KECPP_DATASYNC_OBJECTTARGET_H

#include "datasync/ObjectCaches.h"
#include "datasync/ObjectProperties.h"
#include "datasync/UpdateInfo.h"
#include "instance/ChangeHub.h"
#include "instance/KETypeCache.h"
#include "xml/KEXmlCursor.h"

namespace KE::Service {

class ObjectTarget {
 public:
  // Is the target of `ui.obj`, which is of that kind, from now on. Nothing is looked up yet. `id`
  // is the object's identifier as well; the text that it points to outlives the target.
  ObjectTarget(UpdateInfo& ui, const KE::Instance::ObjectKind& kind, const KELib::Xml::XmlSlice& id,
               KE::Instance::KETypeCache& types, ObjectCaches& caches);
  ObjectTarget(UpdateInfo& ui, KE::Instance::KETypeCache& types, ObjectCaches& caches);
  // The feeds learn that the object has changed.
  ~ObjectTarget() {
    if (assigned) feeds->Changed(stub);
  }
  ObjectTarget(const ObjectTarget&) = delete;
  ObjectTarget& operator=(const ObjectTarget&) = delete;

  const KE::Instance::ObjectKind& Kind() const { return kind; }

  // Whether a value was applied to a stub that was cached before.
  bool WasCached() const { return stub != nullptr && !isNew; }

  // Applies one property's value. Unknown object types and properties are passed over, and so are
  // "remove" and "indirectRemove": the last value that was known is worth more than none.
  // Throws SystemException "No Data Map found for type :..." when the type has no data cache.
  void Apply(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& op,
             const KELib::Xml::XmlSlice& value);

  // The property of that path, null for one that is passed over. True when all that Apply does
  // with a value is Put, whatever the value is.
  bool IsPlain(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& op,
               const Property*& found) const;

  // Applies a value to a property that IsPlain has found.
  void Put(const Property* property, const KELib::Xml::XmlSlice& value) {
    KELib::Stub::KEStubBase& filled = Stub();
    if (property == nullptr) return;
    if (feeds != nullptr) assigned = assigned || property->Changes(filled, value);
    property->Put(filled, value, caches);
  }

  // The object has left the watch: deletes its stub; a task counts as ended.
  void Remove();

  // The property of that path when its values may be lists of references; null for others.
  static const Property* FindList(KE::Instance::KindId kind, const KELib::KEString& path);

  // A list of a property that FindList has found: begins it, and applies one item.
  void BeginList(const Property& list);
  void ApplyItem(const Property& list, const KELib::Xml::XmlSlice& item);

 private:
  KELib::Stub::KEStubBase& Stub() {
    if (stub == nullptr) FindStub();
    return *stub;
  }
  void FindStub();
  void ApplyToTask(const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& value);

  UpdateInfo& ui;
  KE::Instance::KETypeCache& types;
  ObjectCaches& caches;
  const KE::Instance::ObjectKind& kind;
  const KELib::Xml::XmlSlice id;
  const ObjectProperties* const properties;  // null for kinds whose objects are no stubs
  KELib::Stub::KEStubBase* stub = nullptr;   // null until it is needed
  bool isNew = false;                        // `stub` was made here
  KE::Instance::ChangeHub* feeds = nullptr;  // who has to learn of a change; null: nobody
  bool assigned = false;  // a property gets another value; then there are `feeds`
};

}  // namespace KE::Service

#endif
