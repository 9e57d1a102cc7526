// SPDX-License-Identifier: MIT
//
// The cursor over one update set: what is being applied right now.
//
// Thread safety: belongs to the thread that applies the set.
// Ownership: the two tags and the record are borrowed; the references are held by value.
#ifndef KECPP_DATASYNC_UPDATEINFO_H
#define KECPP_DATASYNC_UPDATEINFO_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Service {

struct DataSyncInfo;

struct KECPP_API UpdateInfo {
  // `valueTag`: the element that holds a value ("val" in update sets, "returnval" in the answers of
  // property methods). `arrayItemTag`: the element name of list items where a value says no type;
  // null in update sets. Both must outlive the object.
  UpdateInfo(const char* valueTag, const char* arrayItemTag);
  UpdateInfo(const UpdateInfo&) = delete;
  UpdateInfo& operator=(const UpdateInfo&) = delete;

  const char* valueTag;
  const char* arrayItemTag;
  KE::Stub::ManagedObjectReference filter;      // the filter of the current filter set
  KE::Stub::ManagedObjectReference* filterRef;  // always &filter
  KELib::KEString kind;                      // what happened to the object: "enter", "leave", ...
  KELib::KEString op;                        // what happened to the property: "assign", ...
  KELib::KEString name;                      // the property's path
  KE::Stub::ManagedObjectReference obj;      // the current object
  KE::Stub::ManagedObjectReference* objRef;  // always &obj
  KELib::KEString valueType;                 // item type of the current list value
  DataSyncInfo* syncInfo = nullptr;          // record of the current filter; null between sets
};

}  // namespace KE::Service

#endif
