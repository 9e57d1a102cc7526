// SPDX-License-Identifier: MIT
#include "datasync/PromisedSteps.h"

#include <cstring>

#include "datasync/ListValue.h"
#include "datasync/ObjectCaches.h"
#include "datasync/ObjectTarget.h"
#include "datasync/Watches.h"
#include "foundation/KEMutexGuard.h"
#include "instance/KECacheGuard.h"
#include "instance/ObjectKinds.h"
#include "xml/KEXmlCursor.h"
#include "xml/KEXmlReader.h"

namespace KE::Service {

namespace {

using KELib::KEMutexGuard;
using KELib::KEString;
using KELib::Xml::KEXmlCursor;
using KELib::Xml::KEXmlReader;
using KELib::Xml::XmlSlice;

XmlSlice SliceOf(const KEString& text) {
  return {text.Cstr(), text.Length()};
}

XmlSlice SliceOf(const char* text) {
  return {text, static_cast<unsigned int>(std::strlen(text))};
}

}  // namespace

PromisedSteps::PromisedSteps(Watches& owner, KE::Instance::KETypeCache& typeCache)
    : watches(owner), types(typeCache) {}

void PromisedSteps::LockCaches(KE::Instance::KEMultiCacheLock& lock, UpdateInfo& ui) {
  const KE::Instance::ObjectKind& kind = KE::Instance::KindOf(ui.obj.type);
  if (kind.IsAnyOther()) return;
  for (const KE::Instance::ObjectKind& each : KE::Instance::KindsOf(kind.group)) {
    KEString type(each.cacheClass);
    lock.LockCache(&types, type);
  }
}

void PromisedSteps::UpdateSimpleType(UpdateInfo& ui, KEXmlReader& r) {
  KEMutexGuard guard(watches.GetMutex());
  KE::Instance::KECacheGuard caches(&types);
  caches.LockFor(ui.obj.type);
  KEXmlCursor cursor(r);
  KELib::KEStringBuffer joined(0);
  const XmlSlice value = cursor.Text(SliceOf(ui.valueTag), joined);
  ObjectCaches objects(types);
  ObjectTarget target(ui, types, objects);
  const XmlSlice op = SliceOf(ui.op);
  if (ui.kind.Equals("leave") && !op.Is("remove") && !op.Is("indirectRemove")) {
    target.Remove();
  } else {
    target.Apply(SliceOf(ui.name), op, value);
  }
  cursor.MoveReader();
}

void PromisedSteps::UpdateComplexType(UpdateInfo& ui, KEXmlReader& r) {
  KEMutexGuard guard(watches.GetMutex());
  ListValue::ApplyAt(ui, r, types, watches.RolesNoLock());
}

void PromisedSteps::UpdateArrayOfComplexType(UpdateInfo& ui, KEXmlReader& r,
                                             KE::Instance::KEDataCache* primary,
                                             KE::Instance::KEDataCache* secondary) {
  KEMutexGuard guard(watches.GetMutex());
  KEXmlCursor cursor(r);
  ObjectCaches objects(types);
  ListValue value(ui, types, objects, watches.RolesNoLock(), cursor);
  if (cursor.InStartTag() && !cursor.Enter()) return;
  value.ApplyItems(primary, secondary);
  XmlSlice ended;
  cursor.PassEndTag(ended);
  cursor.MoveReader();
}

void PromisedSteps::UpdateSingleComplexType(UpdateInfo& ui, KEXmlReader& r,
                                            KE::Instance::KEDataCache* primary,
                                            KE::Instance::KEDataCache* secondary,
                                            KELib::KEHashmap<KEString, bool>* seen) {
  KEMutexGuard guard(watches.GetMutex());
  KEXmlCursor cursor(r);
  ObjectCaches objects(types);
  ListValue value(ui, types, objects, watches.RolesNoLock(), cursor);
  const XmlSlice item = ui.valueType.Empty() ? SliceOf(ui.valueTag) : SliceOf(ui.valueType);
  value.ApplySingle(item, primary, secondary, seen);
  cursor.MoveReader();
}

void PromisedSteps::ProcessArrayDeletes(KE::Instance::KEDataCache* cache,
                                        KELib::KEHashmap<KEString, bool>& seen) {
  if (cache == nullptr) return;
  KEMutexGuard guard(watches.GetMutex());
  ListValue::DeleteUnseen(*cache, seen);
}

void PromisedSteps::GetAssociatedType(const char* tag, KEXmlReader& r, KEString& out) {
  out.Clear();
  if (r.FindElementTag(tag)) r.GetElementValue(tag, out);
}

void PromisedSteps::UpdateMissingType(UpdateInfo& ui) {
  KEMutexGuard guard(watches.GetMutex());
  KE::Instance::KECacheGuard caches(&types);
  caches.LockFor(ui.obj.type);
  ObjectCaches objects(types);
  ObjectTarget(ui, types, objects).Remove();
}

}  // namespace KE::Service
