// SPDX-License-Identifier: MIT
#include "datasync/ObjectTarget.h"

#include <array>
#include <cstring>
#include <memory>

#include "datasync/DataSyncConstants.h"
#include "datasync/DataSyncInfo.h"
#include "instance/CacheConversion.h"
#include "instance/HostLinks.h"
#include "stub/base/KEStubRef.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/TaskInfo.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "xml/FixedText.h"

namespace KE::Service {

namespace {

using KE::Stub::ZORBEL_ORXComputerSystem;
using KE::Stub::ZORBEL_VMComputerSystem;
using KELib::KEString;
using KELib::Xml::XmlSlice;

// A property whose value is kept as it stands.
template <typename Stub>
struct TextProperty {
  XmlSlice path;
  KEString Stub::*field;
};

template <std::size_t N>
constexpr XmlSlice Path(const char (&text)[N]) {
  return {text, N - 1};
}

constexpr TextProperty<ZORBEL_VMComputerSystem> kMachineTexts[] = {
    {Path("name"), &ZORBEL_VMComputerSystem::ElementName},
    {Path("config.annotation"), &ZORBEL_VMComputerSystem::Description},
    {Path("config.uuid"), &ZORBEL_VMComputerSystem::UUID},
    {Path("config.files.vmPathName"), &ZORBEL_VMComputerSystem::VMPathName},
    {Path("config.guestFullName"), &ZORBEL_VMComputerSystem::GuestFullName},
    {Path("guest.hostName"), &ZORBEL_VMComputerSystem::GuestHostName},
    {Path("guest.ipAddress"), &ZORBEL_VMComputerSystem::GuestIPAddress},
};

constexpr TextProperty<ZORBEL_ORXComputerSystem> kHostTexts[] = {
    {Path("name"), &ZORBEL_ORXComputerSystem::ElementName},
    {Path("hardware.systemInfo.uuid"), &ZORBEL_ORXComputerSystem::UUID},
    {Path("hardware.systemInfo.vendor"), &ZORBEL_ORXComputerSystem::Vendor},
    {Path("hardware.systemInfo.model"), &ZORBEL_ORXComputerSystem::Model},
};

// The place of each path in its table, by the path's length, which tells the paths of one table
// apart.
constexpr unsigned int kLongestPath = 26;
using ByLength = std::array<unsigned char, kLongestPath + 1>;
constexpr unsigned char kNone = 255;

template <typename Stub, std::size_t N>
constexpr ByLength IndexOf(const TextProperty<Stub> (&table)[N]) {
  ByLength index{};
  for (unsigned int length = 0; length <= kLongestPath; ++length) {
    index[length] = kNone;
    for (unsigned char i = 0; i < N; ++i) {
      if (table[i].path.length == length) index[length] = i;
    }
  }
  return index;
}

constexpr ByLength kMachineIndex = IndexOf(kMachineTexts);
constexpr ByLength kHostIndex = IndexOf(kHostTexts);

template <typename Stub, std::size_t N>
bool ApplyText(Stub& stub, const TextProperty<Stub> (&table)[N], const ByLength& index,
               const XmlSlice& property, const XmlSlice& value) {
  if (property.length > kLongestPath || index[property.length] == kNone) return false;
  const TextProperty<Stub>& entry = table[index[property.length]];
  if (!KELib::Xml::SameText(property.text, entry.path.text, property.length)) return false;
  value.CopyTo(stub.*entry.field);
  return true;
}

bool IsRemoval(const XmlSlice& op) {
  return op.Is("remove") || op.Is("indirectRemove");
}

}  // namespace

ObjectTarget::ObjectTarget(UpdateInfo& update, KE::Instance::KETypeCache& cache,
                           ComputerSystems& computers)
    : ui(update), types(cache), systems(computers), kind(ObjectKind::other) {
  if (ui.obj.type.Equals(TypeVirtualMachine)) {
    kind = ObjectKind::machine;
  } else if (ui.obj.type.Equals(TypeHostSystem)) {
    kind = ObjectKind::host;
  }
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

ZORBEL_VMComputerSystem& ObjectTarget::Machine() {
  if (machine == nullptr) machine = systems.Machine(ui.obj);
  return *machine;
}

ZORBEL_ORXComputerSystem& ObjectTarget::Host() {
  if (host == nullptr) host = systems.Host(ui.obj);
  return *host;
}

void ObjectTarget::ApplyToMachine(const XmlSlice& property, const XmlSlice& value) {
  ZORBEL_VMComputerSystem& stub = Machine();
  if (ApplyText(stub, kMachineTexts, kMachineIndex, property, value)) return;
  if (property.Is("runtime.powerState")) {
    value.CopyTo(stub.PowerState);
    KE::Instance::ConvertVMPowerState(stub.PowerState, stub.OperationalStatus);
  } else if (property.Is("runtime.host")) {
    ZORBEL_ORXComputerSystem* partner = systems.FindHost(value);
    if (partner != nullptr) {
      KE::Instance::LinkToHost(stub, *partner, KE::Instance::OldLink::moved);
    }
  }
}

void ObjectTarget::ApplyToHost(const XmlSlice& property, const XmlSlice& value) {
  ZORBEL_ORXComputerSystem& stub = Host();
  if (ApplyText(stub, kHostTexts, kHostIndex, property, value)) return;
  if (property.Is("summary.overallStatus")) {
    KEString status;
    value.CopyTo(status);
    KE::Instance::ConvertHostOverallStatus(status, stub.OperationalStatus);
  } else if (property.Is("vm")) {
    LinkMachine(value);
  }
}

void ObjectTarget::LinkMachine(const XmlSlice& id) {
  if (kind != ObjectKind::host) return;
  ZORBEL_ORXComputerSystem& stub = Host();
  ZORBEL_VMComputerSystem* partner = systems.FindMachine(id);
  if (partner != nullptr) {
    KE::Instance::LinkToHost(*partner, stub, KE::Instance::OldLink::replaced);
  }
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
    types.RemoveValNoLock(type, ui.obj.value);
  } else if (ui.syncInfo != nullptr && ui.syncInfo->isTask) {
    ui.syncInfo->taskPending = false;  // it will never report its end
  }
}

}  // namespace KE::Service
