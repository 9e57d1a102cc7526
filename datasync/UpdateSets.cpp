// SPDX-License-Identifier: MIT
//
// The data sync's operations that apply update sets: the walk over a whole set, and the single
// steps for those who hold a reader that stands on a value already.
#include <cstring>

#include "datasync/ComputerSystems.h"
#include "datasync/DataSyncConstants.h"
#include "datasync/KEDataSyncImpl.h"
#include "datasync/ListValue.h"
#include "datasync/ObjectTarget.h"
#include "datasync/UpdateSetWalk.h"
#include "datasync/Watches.h"
#include "foundation/KEMutexGuard.h"
#include "instance/KECacheGuard.h"
#include "instance/ObjectKinds.h"
#include "xml/KEXmlCursor.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

using KELib::KEMutexGuard;
using KELib::KEString;
using KELib::Xml::KEXmlCursor;
using KELib::Xml::KEXmlReader;
using KELib::Xml::XmlSlice;

namespace {

XmlSlice SliceOf(const KEString& text) {
  return {text.Cstr(), text.Length()};
}

XmlSlice SliceOf(const char* text) {
  return {text, static_cast<unsigned int>(std::strlen(text))};
}

}  // namespace

void KEDataSyncImpl::UpdateSetToCache(UpdateInfo& ui, KEXmlReader& r) {
  unknownFilter.type.Clear();
  unknownFilter.value.Clear();
  ui.syncInfo = nullptr;
  try {
    RoomLoan loan(*walkRoom, *typeCache);
    KEXmlCursor cursor(r, &loan.Room().tags);
    UpdateSetWalk walk(*watches, *typeCache, cursor, loan.Room());
    if (!walk.Run()) {
      unknownFilter.type = loan.Room().update.filter.type;
      unknownFilter.value = loan.Room().update.filter.value;
    }
    cursor.MoveReader();
    watches->ReleaseAfterSet(false);
  } catch (...) {
    watches->ReleaseAfterSet(true);
    throw;
  }
}

void KEDataSyncImpl::LockCaches(KE::Instance::KEMultiCacheLock& lock, UpdateInfo& ui) {
  const KE::Instance::ObjectKind& kind = KE::Instance::KindOf(ui.obj.type);
  if (kind.IsAnyOther()) return;
  for (const KE::Instance::ObjectKind& each : KE::Instance::KindsOf(kind.group)) {
    KEString type(each.cacheClass);
    lock.LockCache(typeCache.get(), type);
  }
}

void KEDataSyncImpl::UpdateSimpleType(UpdateInfo& ui, KEXmlReader& r) {
  KEMutexGuard guard(watches->GetMutex());
  KE::Instance::KECacheGuard caches(typeCache.get());
  caches.LockFor(ui.obj.type);
  KEXmlCursor cursor(r);
  KELib::KEStringBuffer joined(0);
  const XmlSlice value = cursor.Text(SliceOf(ui.valueTag), joined);
  ComputerSystems systems(*typeCache);
  ObjectTarget target(ui, *typeCache, systems);
  const XmlSlice op = SliceOf(ui.op);
  if (ui.kind.Equals("leave") && !op.Is("remove") && !op.Is("indirectRemove")) {
    target.Remove();
  } else {
    target.Apply(SliceOf(ui.name), op, value);
  }
  cursor.MoveReader();
}

void KEDataSyncImpl::UpdateComplexType(UpdateInfo& ui, KEXmlReader& r) {
  KEMutexGuard guard(watches->GetMutex());
  KE::Instance::KECacheGuard caches(typeCache.get());
  ListValue::LockFor(ui, caches);
  KEXmlCursor cursor(r);
  ComputerSystems systems(*typeCache);
  ListValue value(ui, *typeCache, systems, watches->RolesNoLock(), cursor);
  if (cursor.InStartTag()) {
    value.ApplyElement(SliceOf(ui.valueTag));
  } else {
    value.ApplyBareItems();
  }
  cursor.MoveReader();
}

void KEDataSyncImpl::UpdateArrayOfComplexType(UpdateInfo& ui, KEXmlReader& r,
                                              KE::Instance::KEDataCache* primary,
                                              KE::Instance::KEDataCache* secondary) {
  KEMutexGuard guard(watches->GetMutex());
  KEXmlCursor cursor(r);
  ComputerSystems systems(*typeCache);
  ListValue value(ui, *typeCache, systems, watches->RolesNoLock(), cursor);
  if (cursor.InStartTag() && !cursor.Enter()) return;
  value.ApplyItems(primary, secondary);
  XmlSlice ended;
  cursor.PassEndTag(ended);
  cursor.MoveReader();
}

void KEDataSyncImpl::UpdateSingleComplexType(UpdateInfo& ui, KEXmlReader& r,
                                             KE::Instance::KEDataCache* primary,
                                             KE::Instance::KEDataCache* secondary,
                                             KELib::KEHashmap<KEString, bool>* seen) {
  KEMutexGuard guard(watches->GetMutex());
  KEXmlCursor cursor(r);
  ComputerSystems systems(*typeCache);
  ListValue value(ui, *typeCache, systems, watches->RolesNoLock(), cursor);
  const XmlSlice item = ui.valueType.Empty() ? SliceOf(ui.valueTag) : SliceOf(ui.valueType);
  value.ApplyItem(item, primary, secondary, seen);
  cursor.MoveReader();
}

void KEDataSyncImpl::ProcessArrayDeletes(KE::Instance::KEDataCache* cache,
                                         KELib::KEHashmap<KEString, bool>& seen) {
  if (cache == nullptr) return;
  KEMutexGuard guard(watches->GetMutex());
  ListValue::DeleteUnseen(*cache, seen);
}

void KEDataSyncImpl::GetAssociatedType(const char* tag, KE::Instance::KEDataCache*, KEXmlReader& r,
                                       KEString& out) {
  out.Clear();
  if (r.FindElementTag(tag)) r.GetElementValue(tag, out);
}

void KEDataSyncImpl::UpdateMissingType(UpdateInfo& ui, KEXmlReader&) {
  KEMutexGuard guard(watches->GetMutex());
  KE::Instance::KECacheGuard caches(typeCache.get());
  caches.LockFor(ui.obj.type);
  ComputerSystems systems(*typeCache);
  ObjectTarget(ui, *typeCache, systems).Remove();
}

void KEDataSyncImpl::UpdateObjectLeave(UpdateInfo& ui, KEXmlReader& r) {
  UpdateMissingType(ui, r);
}

}  // namespace KE::Service
