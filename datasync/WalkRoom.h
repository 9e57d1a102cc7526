// SPDX-License-Identifier: MIT
//
// What the walk over an update set needs besides the set: kept from set to set, so that a small
// change costs no more allocations than the value that it brings.
//
// Thread safety: one walk at a time, see RoomLoan.
#ifndef KECPP_DATASYNC_WALKROOM_H
#define KECPP_DATASYNC_WALKROOM_H

#include <atomic>
#include <memory>

#include "datasync/DataSyncConstants.h"
#include "datasync/LearnedSteps.h"
#include "datasync/LearnedText.h"
#include "datasync/ObjectCaches.h"
#include "datasync/UpdateInfo.h"
#include "foundation/KEString.h"
#include "foundation/KEStringBuffer.h"
#include "instance/ObjectKinds.h"
#include "xml/KEXmlCursor.h"

namespace KE::Service {

// A text that is set again and again, and by Set alone: its block is kept.
class ReusedText {
 public:
  explicit ReusedText(KELib::KEString& set) : text(set) {}

  void Set(const KELib::Xml::XmlSlice& value) { value.CopyTo(text, room); }

 private:
  KELib::KEString& text;
  unsigned int room = 0;
};

// What an object set says of its object, besides the identifier.
struct ObjectHead {
  KELib::Xml::XmlSlice type;
  const KE::Instance::ObjectKind* objectKind = nullptr;
  bool leaves = false;
};

// What was looked up of the filter that the room's update names.
struct CurrentFilter {
  DataSyncInfo* info = nullptr;
  unsigned long long generation = 0;  // of the filters, when it was looked up; 0: never
};

// What a filter set begins with.
struct FilterHead {
  KELib::Xml::XmlSlice type, id;
  bool isCurrent = false;  // the room's update names this filter
};

struct WalkRoom {
  explicit WalkRoom(KE::Instance::KETypeCache& types)
      : update(Val, nullptr),
        objects(types),
        objectType(update.obj.type),
        objectId(update.obj.value),
        filterType(update.filter.type),
        filterId(update.filter.value) {}
  WalkRoom(const WalkRoom&) = delete;
  WalkRoom& operator=(const WalkRoom&) = delete;

  UpdateInfo update;
  std::atomic<bool> taken{false};  // by a RoomLoan
  ObjectCaches objects;
  ObjectCaches::HeldMutexes caches;  // holds something within an object set only
  ReusedText objectType, objectId, filterType, filterId;
  KELib::Xml::KnownTagRests tags;
  LearnedSteps learned[KE::Instance::kObjectKindCount];
  LearnedText begin;   // of a result, up to its version
  LearnedText filter;  // the element that names a filter
  FilterHead filterParts;
  CurrentFilter current;
  LearnedText head;      // of an object set, up to the object's identifier
  ObjectHead headParts;  // what is in it
  // For texts that comments or sections split.
  KELib::KEStringBuffer propertyText, opText, valueText;
};

// The use of a room by one walk. A walk that another thread makes meanwhile gets another room.
class RoomLoan {
 public:
  RoomLoan(WalkRoom& shared, KE::Instance::KETypeCache& types) {
    if (shared.taken.exchange(true)) {
      own = std::make_unique<WalkRoom>(types);
    } else {
      lent = &shared;
    }
  }
  ~RoomLoan() {
    if (lent != nullptr) lent->taken = false;
  }
  RoomLoan(const RoomLoan&) = delete;
  RoomLoan& operator=(const RoomLoan&) = delete;

  WalkRoom& Room() { return lent != nullptr ? *lent : *own; }

 private:
  WalkRoom* lent = nullptr;
  std::unique_ptr<WalkRoom> own;
};

}  // namespace KE::Service

#endif
