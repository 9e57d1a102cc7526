// SPDX-License-Identifier: MIT
#include "datasync/ObjectTarget.h"

#include <cstring>
#include <memory>

#include "datasync/DataSyncConstants.h"
#include "datasync/DataSyncInfo.h"
#include "instance/CacheConversion.h"
#include "stub/base/KEStubRef.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/TaskInfo.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace KE::Service {

namespace {

using KE::Stub::ZORBEL_ORXComputerSystem;
using KE::Stub::ZORBEL_VMComputerSystem;
using KELib::KEString;
using KELib::Xml::XmlSlice;

// A property whose value is kept as it stands.
template <typename Stub>
struct TextProperty {
  const char* path;
  KEString Stub::*field;
};

const TextProperty<ZORBEL_VMComputerSystem> kMachineTexts[] = {
    {"name", &ZORBEL_VMComputerSystem::ElementName},
    {"config.annotation", &ZORBEL_VMComputerSystem::Description},
    {"config.uuid", &ZORBEL_VMComputerSystem::UUID},
    {"config.files.vmPathName", &ZORBEL_VMComputerSystem::VMPathName},
    {"config.guestFullName", &ZORBEL_VMComputerSystem::GuestFullName},
    {"guest.hostName", &ZORBEL_VMComputerSystem::GuestHostName},
    {"guest.ipAddress", &ZORBEL_VMComputerSystem::GuestIPAddress},
};

const TextProperty<ZORBEL_ORXComputerSystem> kHostTexts[] = {
    {"name", &ZORBEL_ORXComputerSystem::ElementName},
    {"hardware.systemInfo.uuid", &ZORBEL_ORXComputerSystem::UUID},
    {"hardware.systemInfo.vendor", &ZORBEL_ORXComputerSystem::Vendor},
    {"hardware.systemInfo.model", &ZORBEL_ORXComputerSystem::Model},
};

template <typename Stub, std::size_t N>
bool ApplyText(Stub& stub, const TextProperty<Stub> (&table)[N], const XmlSlice& property,
               const XmlSlice& value) {
  for (const auto& entry : table) {
    if (!property.Is(entry.path, std::strlen(entry.path))) continue;
    value.CopyTo(stub.*entry.field);
    return true;
  }
  return false;
}

KELib::Stub::KEStubBase* Find(KE::Instance::KETypeCache& cache, const char* typeName,
                              KEString& key) {
  KEString type(typeName);
  KELib::Stub::KEStubRef ref;
  cache.GetVal(type, key, ref);
  return ref.GetData();
}

// Finds the stub of `obj` or files a new one.
template <typename Stub>
Stub* FindOrCreate(KE::Instance::KETypeCache& cache, const char* typeName,
                   KE::Stub::ManagedObjectReference& obj, Stub* (*create)()) {
  if (auto* found = static_cast<Stub*>(Find(cache, typeName, obj.value))) return found;
  std::unique_ptr<Stub> stub(create());
  stub->Name = obj.value;
  stub->MoRef.type = obj.type;
  stub->MoRef.value = obj.value;
  KEString type(typeName);
  cache.SetVal(type, obj.value, stub.get());
  return stub.release();
}

bool IsRemoval(const XmlSlice& op) {
  return op.Is("remove") || op.Is("indirectRemove");
}

}  // namespace

ObjectTarget::ObjectTarget(UpdateInfo& update, KE::Instance::KETypeCache& types)
    : ui(update), cache(types), kind(ObjectKind::other) {
  if (ui.obj.type.Equals(TypeVirtualMachine)) kind = ObjectKind::machine;
  if (ui.obj.type.Equals(TypeHostSystem)) kind = ObjectKind::host;
}

void ObjectTarget::Apply(const XmlSlice& property, const XmlSlice& op, const XmlSlice& value) {
  if (kind == ObjectKind::other) {
    ApplyToTask(property, value);
  } else if (IsRemoval(op)) {
    return;
  } else if (kind == ObjectKind::machine) {
    ApplyToMachine(property, value);
  } else {
    ApplyToHost(property, value);
  }
}

ZORBEL_VMComputerSystem* ObjectTarget::Machine() {
  if (machine == nullptr && kind == ObjectKind::machine) {
    machine = FindOrCreate(cache, KE::Stub::ZORBEL_VMComputerSystemClass, ui.obj,
                           &KE::Stub::CreateZORBEL_VMComputerSystem);
  }
  return machine;
}

ZORBEL_ORXComputerSystem* ObjectTarget::Host() {
  if (host == nullptr && kind == ObjectKind::host) {
    host = FindOrCreate(cache, KE::Stub::ZORBEL_ORXComputerSystemClass, ui.obj,
                        &KE::Stub::CreateZORBEL_ORXComputerSystem);
  }
  return host;
}

void ObjectTarget::ApplyToMachine(const XmlSlice& property, const XmlSlice& value) {
  ZORBEL_VMComputerSystem* stub = Machine();
  if (ApplyText(*stub, kMachineTexts, property, value)) return;
  if (property.Is("runtime.powerState")) {
    value.CopyTo(stub->PowerState);
    KE::Instance::ConvertVMPowerState(stub->PowerState, stub->OperationalStatus);
  } else if (property.Is("runtime.host")) {
    KEString hostType, hostId;
    value.CopyTo(hostId);
    KE::Instance::ChangeVMsHostRef(stub, hostType, hostId, &cache);
  }
}

void ObjectTarget::ApplyToHost(const XmlSlice& property, const XmlSlice& value) {
  ZORBEL_ORXComputerSystem* stub = Host();
  if (ApplyText(*stub, kHostTexts, property, value)) return;
  if (property.Is("summary.overallStatus")) {
    KEString status;
    value.CopyTo(status);
    KE::Instance::ConvertHostOverallStatus(status, stub->OperationalStatus);
  } else if (property.Is("vm")) {
    KE::Stub::ManagedObjectReference machineRef;
    value.CopyTo(machineRef.value);
    KE::Instance::ChangeHostsVMRefs(stub, &machineRef, &cache);
  }
}

void ObjectTarget::ApplyToTask(const XmlSlice& property, const XmlSlice& value) {
  if (!property.Is(TaskInfoState, std::strlen(TaskInfoState))) return;
  if (!value.Is(SuccessStr, std::strlen(SuccessStr)) &&
      !value.Is(ErrorStr, std::strlen(ErrorStr))) {
    return;
  }
  auto* task = static_cast<KE::Stub::TaskInfo*>(Find(cache, KE::Stub::TaskInfoClass, ui.obj.value));
  if (task == nullptr) {
    std::unique_ptr<KELib::Stub::KEStubBase> made(KE::Stub::CreateTaskInfo());
    task = static_cast<KE::Stub::TaskInfo*>(made.get());
    task->task.type = ui.obj.type;
    task->task.value = ui.obj.value;
    KEString type(KE::Stub::TaskInfoClass);
    cache.SetVal(type, ui.obj.value, task);
    made.release();
  }
  value.CopyTo(task->state);
  if (ui.syncInfo != nullptr) ui.syncInfo->taskPending = false;
}

const char* ObjectTarget::CacheType() const {
  if (kind == ObjectKind::machine) return KE::Stub::ZORBEL_VMComputerSystemClass;
  if (kind == ObjectKind::host) return KE::Stub::ZORBEL_ORXComputerSystemClass;
  return nullptr;
}

void ObjectTarget::Remove() {
  machine = nullptr;
  host = nullptr;
  if (const char* name = CacheType()) {
    KEString type(name);
    cache.RemoveValNoLock(type, ui.obj.value);
  } else if (ui.syncInfo != nullptr && ui.syncInfo->isTask) {
    ui.syncInfo->taskPending = false;  // it will never report its end
  }
}

}  // namespace KE::Service
