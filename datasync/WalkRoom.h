// SPDX-License-Identifier: MIT
//
// What the walk over an update set needs besides the set: kept from set to set, so that a small
// change costs no more allocations than the value that it brings.
//
// Thread safety: of the thread that runs a cycle.
#ifndef KECPP_DATASYNC_WALKROOM_H
#define KECPP_DATASYNC_WALKROOM_H

#include "datasync/ComputerSystems.h"
#include "datasync/UpdateInfo.h"
#include "foundation/KEString.h"
#include "foundation/KEStringBuffer.h"
#include "instance/KECacheGuard.h"
#include "xml/KEXmlCursor.h"

namespace KE::Service {

// A text that is set again and again, in a block that is kept.
class ReusedText {
 public:
  // `text` takes the block over for a while; GiveBack ends it, and in between Set fills it.
  void Lend(KELib::KEString& text) { text.Transfer(block); }
  void GiveBack(KELib::KEString& text) { block.Transfer(text); }

  void Set(KELib::KEString& text, const KELib::Xml::XmlSlice& value) { value.CopyTo(text, room); }

 private:
  KELib::KEString block;
  unsigned int room = 0;
};

struct WalkRoom {
  explicit WalkRoom(KE::Instance::KETypeCache& types) : systems(types), caches(&types) {}

  void Lend(UpdateInfo& ui) {
    kind.Lend(ui.kind);
    objectType.Lend(ui.obj.type);
    objectId.Lend(ui.obj.value);
    filterType.Lend(ui.filter.type);
    filterId.Lend(ui.filter.value);
  }
  void GiveBack(UpdateInfo& ui) {
    kind.GiveBack(ui.kind);
    objectType.GiveBack(ui.obj.type);
    objectId.GiveBack(ui.obj.value);
    filterType.GiveBack(ui.filter.type);
    filterId.GiveBack(ui.filter.value);
  }

  ComputerSystems systems;
  KE::Instance::KECacheGuard caches;  // holds something within an object set only
  ReusedText kind, objectType, objectId, filterType, filterId;
  // For texts that comments or sections split.
  KELib::KEStringBuffer propertyText, opText, valueText;
};

}  // namespace KE::Service

#endif
