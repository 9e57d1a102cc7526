// SPDX-License-Identifier: MIT
#include "datasync/ObjectTarget.h"

#include <cstring>
#include <memory>

#include "datasync/DataSyncConstants.h"
#include "datasync/DataSyncInfo.h"
#include "instance/ChangeHub.h"
#include "stub/base/KEStubRef.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/TaskInfo.h"

namespace KE::Service {

namespace {

using KELib::KEString;
using KELib::Xml::XmlSlice;

bool IsRemoval(const XmlSlice& op) {
  return op.Is("remove") || op.Is("indirectRemove");
}

}  // namespace

ObjectTarget::ObjectTarget(UpdateInfo& update, KE::Instance::KETypeCache& cache,
                           ObjectCaches& objects)
    : ObjectTarget(update, KE::Instance::KindOf(update.obj.type),
                   {update.obj.value.Cstr(), update.obj.value.Length()}, cache, objects) {}

ObjectTarget::ObjectTarget(UpdateInfo& update, const KE::Instance::ObjectKind& objectKind,
                           const XmlSlice& identifier, KE::Instance::KETypeCache& cache,
                           ObjectCaches& objects)
    : ui(update),
      types(cache),
      caches(objects),
      kind(objectKind),
      id(identifier),
      properties(PropertiesOf(kind.id)) {}

void ObjectTarget::Apply(const XmlSlice& property, const XmlSlice& op, const XmlSlice& value) {
  const Property* found = nullptr;
  if (IsPlain(property, op, found)) {
    Put(found, value);
  } else if (kind.IsAnyOther()) {
    ApplyToTask(property, value);
  }
}

bool ObjectTarget::IsPlain(const XmlSlice& property, const XmlSlice& op,
                           const Property*& found) const {
  if (properties == nullptr || IsRemoval(op)) return false;
  found = properties->table.Find(property);
  return true;
}

// The caches are held until the feeds have learned of the change: a feed that is opened in between
// looks at the object afterwards.
void ObjectTarget::FindStub() {
  stub = &caches.FindOrFile(kind.id, ui.obj, id, properties->make, isNew);
  if (isNew) return;  // the feeds know
  feeds = caches.Listener();
  if (feeds != nullptr) feeds->Expect(*stub);
}

const Property* ObjectTarget::FindList(KE::Instance::KindId kind, const KEString& path) {
  const ObjectProperties* const properties = PropertiesOf(kind);
  if (properties == nullptr) return nullptr;
  const Property* const found = properties->table.Find({path.Cstr(), path.Length()});
  return found != nullptr && found->isList ? found : nullptr;
}

void ObjectTarget::BeginList(const Property& list) {
  if (list.beginList != nullptr) list.beginList(Stub());
}

void ObjectTarget::ApplyItem(const Property& list, const XmlSlice& item) {
  list.Put(Stub(), item, caches);
}

void ObjectTarget::ApplyToTask(const XmlSlice& property, const XmlSlice& value) {
  if (!property.Is(TaskInfoState, std::strlen(TaskInfoState))) return;
  if (!value.Is(SuccessStr, std::strlen(SuccessStr)) &&
      !value.Is(ErrorStr, std::strlen(ErrorStr))) {
    return;
  }
  KEString type(KE::Stub::TaskInfoClass);
  KELib::Stub::KEStubRef ref;
  types.GetVal(type, ui.obj.value, ref);
  auto* task = static_cast<KE::Stub::TaskInfo*>(ref.GetData());
  if (task == nullptr) {
    std::unique_ptr<KELib::Stub::KEStubBase> made(KE::Stub::CreateTaskInfo());
    task = static_cast<KE::Stub::TaskInfo*>(made.get());
    task->task.type = ui.obj.type;
    task->task.value = ui.obj.value;
    types.SetVal(type, ui.obj.value, task);
    made.release();
  }
  value.CopyTo(task->state);
  if (KE::Instance::ChangeHub* const listener = types.Listener()) listener->Changed(task);
  if (ui.syncInfo != nullptr) ui.syncInfo->taskPending = false;
}

void ObjectTarget::Remove() {
  stub = nullptr;  // what was assigned before is no news
  if (properties != nullptr) {
    KEString type(kind.cacheClass);
    types.RemoveValNoLock(type, ui.obj.value);
  } else if (ui.syncInfo != nullptr && ui.syncInfo->isTask) {
    ui.syncInfo->taskPending = false;  // it will never report its end
  }
}

}  // namespace KE::Service
