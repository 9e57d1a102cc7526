// SPDX-License-Identifier: MIT
//
// Walks one update set, structure by structure, and hands each change on:
//   returnval { filterSet { filter, objectSet { kind, obj, changeSet { name, op, val } },
//               missingSet { obj } } }
// The walk never leaves the element that it is in: what an element lacks is not taken from the
// next.
//
// Locks: for every object set, and for every missing object, the filter-table mutex and then the
//   data caches of the object's type, once. Between two objects both are free, so that readers and
//   callers wait for one object at most. A set of one object takes the table mutex once: it is kept
//   from the filter to the object, and from the object until the walk is destroyed.
#ifndef KECPP_DATASYNC_UPDATESETWALK_H
#define KECPP_DATASYNC_UPDATESETWALK_H

#include "datasync/LookAhead.h"
#include "datasync/UpdateInfo.h"
#include "datasync/WalkRoom.h"
#include "foundation/HeldMutexes.h"
#include "xml/KEXmlCursor.h"

namespace KE::Service {

class RoleMemory;
class StaleObjects;
class Watches;

class UpdateSetWalk {
 public:
  // `cursor` is anywhere in front of the filter sets. All four outlive the walk.
  UpdateSetWalk(Watches& watches, KE::Instance::KETypeCache& types, KELib::Xml::KEXmlCursor& cursor,
                WalkRoom& room);
  UpdateSetWalk(const UpdateSetWalk&) = delete;
  UpdateSetWalk& operator=(const UpdateSetWalk&) = delete;

  // Applies everything up to the end of the result. False when it ended before, at a filter that
  // nobody watches: that is logged, and the room's update names it. Throws what the cursor and the
  // caches throw; what was applied before stays.
  bool Run();

 private:
  class ObjectLock;

  bool EnterFilterSet();
  bool ApplyFilterSet();
  bool PassKnownFilter();
  void SetFilter(const KELib::Xml::XmlSlice& type, const KELib::Xml::XmlSlice& id);
  bool BeginFilter();
  void FindFilter();
  void EndFilter();
  void ApplyObjectSet();
  void FetchNext(const KE::Instance::ObjectKind& kind);
  void TakeHead();
  void SetKind(const KELib::Xml::XmlSlice& kind);
  void ClearObject();
  void SetObject(const KELib::Xml::XmlSlice& type, const KELib::Xml::XmlSlice& id);
  void ReadObject(const KELib::Xml::XmlSlice& name);
  void ApplyLearned(ObjectLock& lock);
  void ApplyChangeSet(ObjectLock& lock, const char* begin);
  bool TakePropertyAndOp(KELib::Xml::XmlSlice& property, KELib::Xml::XmlSlice& op);
  void ApplyValue(ObjectLock& lock, const KELib::Xml::XmlSlice& val,
                  const KELib::Xml::XmlSlice& property, const KELib::Xml::XmlSlice& op);
  void ApplyMissingSet();
  KELib::Xml::XmlSlice ReadType();

  Watches& watches;
  RoleMemory& roles;  // these two are guarded by the filter-table mutex
  StaleObjects& stale;
  KE::Instance::KETypeCache& types;
  KELib::Xml::KEXmlCursor& cursor;
  WalkRoom& room;
  UpdateInfo& ui;                              // the room's
  KELib::HeldMutexes<1> table;                 // the filter-table mutex
  bool tableServed = false;                    // an object was applied since it was taken
  const KE::Instance::ObjectKind* objectKind;  // of `ui.obj`; set with it
  KELib::Xml::XmlSlice objectId;               // likewise
  bool leaves = false;                         // the object set's kind is "leave"
  LookAhead ahead;
  bool wasCached = false;  // the object of the last object set
};

}  // namespace KE::Service

#endif
