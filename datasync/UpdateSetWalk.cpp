// SPDX-License-Identifier: MIT
#include "datasync/UpdateSetWalk.h"

#include "datasync/DataSyncConstants.h"
#include "datasync/KEDataSyncImpl.h"
#include "datasync/ListValue.h"
#include "datasync/ObjectTarget.h"
#include "datasync/StaleObjects.h"
#include "foundation/KEMutexGuard.h"
#include "foundation/Logger.h"
#include "instance/KECacheGuard.h"
#include "xml/XmlConstants.h"
#include "xml/XmlException.h"

namespace KE::Service {

namespace {

using KELib::KEMutexGuard;
using KELib::KEString;
using KELib::Xml::XmlSlice;

const char kLeave[] = "leave";

void ClearReference(KE::Stub::ManagedObjectReference& ref) {
  ref.type.Clear();
  ref.value.Clear();
}

void LogSkipped(const KE::Stub::ManagedObjectReference& filter) {
  KELib::KEStringBuffer text(0);
  text.Append("Skipped update for : Type : ");
  text.Append(filter.type);
  text.Append(" Value : ");
  text.Append(filter.value);
  text.Append("\n");
  KELib::Logging::Log(nullptr, KELib::Logging::LOG_LEVEL_VERBOSE, "%s", text.Str());
}

}  // namespace

// The locks of one object set, taken when its first change is met. While it stood unlocked another
// thread may have stopped the filter: then nothing of the object is touched.
class UpdateSetWalk::ObjectLock {
 public:
  ObjectLock(KEDataSyncImpl& owner, UpdateInfo& update) : sync(owner), ui(update) {}

  // True when the changes may be applied. Outside the analysis: the guards live as long as this.
  bool Take() KECPP_NO_THREAD_SAFETY_ANALYSIS {
    if (taken) return target != nullptr;
    taken = true;
    if (ui.syncInfo == nullptr) return false;
    table = std::make_unique<KEMutexGuard>(sync.GetMutex());
    ui.syncInfo = sync.FindFilterNoLock(ui.filter);
    if (ui.syncInfo == nullptr) {
      table.reset();
      return false;
    }
    caches = std::make_unique<KE::Instance::KECacheGuard>(sync.GetCache());
    caches->LockFor(ui.obj.type);
    target = std::make_unique<ObjectTarget>(ui, *sync.GetCache());
    return true;
  }

  ObjectTarget& Target() { return *target; }

 private:
  KEDataSyncImpl& sync;
  UpdateInfo& ui;
  bool taken = false;
  std::unique_ptr<KEMutexGuard> table;
  std::unique_ptr<KE::Instance::KECacheGuard> caches;
  std::unique_ptr<ObjectTarget> target;
};

UpdateSetWalk::UpdateSetWalk(KEDataSyncImpl& owner, UpdateInfo& update,
                             KELib::Xml::KEXmlCursor& text)
    : sync(owner), ui(update), cursor(text), propertyText(0), opText(0), valueText(0) {}

UpdateSetWalk::~UpdateSetWalk() = default;

void UpdateSetWalk::Run() {
  while (FindFilterSet() && ApplyFilterSet()) {
  }
}

bool UpdateSetWalk::FindFilterSet() {
  XmlSlice name;
  for (;;) {
    if (cursor.NextChild(name)) {
      if (name.Is("filterSet")) return true;
      if (name.Is("returnval")) {
        cursor.Enter();
      } else {
        cursor.SkipElement(name);
      }
    } else if (!cursor.PassEndTag(name) || name.Is("returnval")) {
      return false;
    }
  }
}

bool UpdateSetWalk::ApplyFilterSet() {
  static constexpr char kFilterSet[] = "filterSet";
  if (!cursor.Enter()) return true;
  XmlSlice name;
  bool begun = false;
  while (cursor.NextChild(name)) {
    if (name.Is("filter")) {
      ReadReference(name, ui.filter);
      begun = true;
      if (!BeginFilter()) return false;
    } else if (!begun) {
      cursor.SkipElement(name);
    } else if (name.Is("objectSet")) {
      ApplyObjectSet();
    } else if (name.Is("missingSet")) {
      ApplyMissingSet();
    } else {
      cursor.SkipElement(name);
    }
  }
  cursor.Leave({kFilterSet, sizeof(kFilterSet) - 1});
  EndFilter();
  return true;
}

bool UpdateSetWalk::BeginFilter() {
  KEMutexGuard guard(sync.GetMutex());
  ui.syncInfo = sync.FindFilterNoLock(ui.filter);
  if (ui.syncInfo == nullptr) {
    LogSkipped(ui.filter);
    sync.NoteUnknownFilter(ui.filter);
    return false;
  }
  ui.syncInfo->received = true;
  return true;
}

void UpdateSetWalk::EndFilter() {
  KEMutexGuard guard(sync.GetMutex());
  DataSyncInfo* info = ui.syncInfo != nullptr ? sync.FindFilterNoLock(ui.filter) : nullptr;
  if (info != nullptr && !info->taskPending) sync.ReleaseWaiterNoLock(info->waiter);
  ui.syncInfo = nullptr;
  ClearReference(ui.filter);
}

void UpdateSetWalk::ApplyObjectSet() {
  static constexpr char kObjectSet[] = "objectSet";
  if (!cursor.Enter()) return;
  ObjectLock lock(sync, ui);
  XmlSlice name;
  while (cursor.NextChild(name)) {
    if (name.Is("kind")) {
      ReadText(name, ui.kind);
    } else if (name.Is("obj")) {
      ReadReference(name, ui.obj);
    } else if (name.Is("changeSet") && !ui.kind.Equals(kLeave) && lock.Take()) {
      ApplyChangeSet(lock);
    } else {
      cursor.SkipElement(name);
    }
  }
  cursor.Leave({kObjectSet, sizeof(kObjectSet) - 1});
  if (ui.syncInfo != nullptr) sync.Stale().Name(ui.obj);
  if (ui.kind.Equals(kLeave) && lock.Take()) lock.Target().Remove();
  ui.kind.Clear();
  ClearReference(ui.obj);
}

void UpdateSetWalk::ApplyChangeSet(ObjectLock& lock) {
  static constexpr char kChangeSet[] = "changeSet";
  if (!cursor.Enter()) return;
  XmlSlice name, property, op;
  while (cursor.NextChild(name)) {
    if (name.Is("name")) {
      property = cursor.Text(name, propertyText);
    } else if (name.Is("op")) {
      op = cursor.Text(name, opText);
    } else if (name.Is("val") && property.length > 0) {
      ApplyValue(lock, property, op);
    } else {
      cursor.SkipElement(name);
    }
  }
  cursor.Leave({kChangeSet, sizeof(kChangeSet) - 1});
}

void UpdateSetWalk::ApplyValue(ObjectLock& lock, const XmlSlice& property, const XmlSlice& op) {
  static constexpr char kVal[] = "val";
  const XmlSlice val{kVal, sizeof(kVal) - 1};
  if (!cursor.HasChildElements()) {
    lock.Target().Apply(property, op, cursor.Text(val, valueText));
    return;
  }
  property.CopyTo(ui.name);
  op.CopyTo(ui.op);
  ListValue(ui, *sync.GetCache(), sync.Roles(), cursor).ApplyElement(val);
  ui.name.Clear();
  ui.op.Clear();
  ui.valueType.Clear();
}

void UpdateSetWalk::ApplyMissingSet() {
  static constexpr char kMissingSet[] = "missingSet";
  if (!cursor.Enter()) return;
  XmlSlice name;
  while (cursor.NextChild(name)) {
    if (name.Is("obj")) {
      ReadReference(name, ui.obj);
    } else {
      cursor.SkipElement(name);
    }
  }
  cursor.Leave({kMissingSet, sizeof(kMissingSet) - 1});
  ObjectLock lock(sync, ui);
  if (lock.Take()) lock.Target().Remove();
  ClearReference(ui.obj);
}

// The type stands in the first attribute that is not the schema type.
void UpdateSetWalk::ReadReference(const XmlSlice& name, KE::Stub::ManagedObjectReference& ref) {
  ref.type.Clear();
  XmlSlice attribute, value;
  bool typed = false;
  while (cursor.NextAttribute(attribute, value)) {
    if (typed || attribute.Is("xsi:type") || attribute.StartsWith("xmlns", 5)) continue;
    value.CopyTo(ref.type);
    typed = true;
  }
  ReadText(name, ref.value);
}

void UpdateSetWalk::ReadText(const XmlSlice& name, KEString& out) {
  cursor.Text(name, valueText).CopyTo(out);
}

}  // namespace KE::Service
