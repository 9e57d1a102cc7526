// SPDX-License-Identifier: MIT
#include "datasync/ObjectProperties.h"

#include <memory>

#include "instance/CacheConversion.h"
#include "instance/HostLinks.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"

namespace KE::Service {

namespace {

using KE::Instance::KindId;
using KE::Stub::ManagedObjectReference;
using KELib::KEString;
using KELib::Stub::KEStubBase;
using KELib::Xml::XmlSlice;
using Host = KE::Stub::ZORBEL_ORXComputerSystem;
using Machine = KE::Stub::ZORBEL_VMComputerSystem;

template <typename Stub>
KEStubBase* Make(ManagedObjectReference& object, unsigned int length) {
  auto stub = std::make_unique<Stub>();
  stub->Name.AssignExact(object.value.Cstr(), length);
  stub->MoRef.type = object.type;
  stub->MoRef.value.AssignExact(object.value.Cstr(), length);
  return stub.release();
}

// --- machines ------------------------------------------------------------------------------------

void PowerState(KEStubBase& stub, const XmlSlice& value, ObjectCaches&) {
  auto& machine = static_cast<Machine&>(stub);
  value.CopyTo(machine.PowerState);
  machine.OperationalStatus = KE::Instance::CodeOfPowerState({value.text, value.length});
}

bool PowerStateDiffers(const KEStubBase& stub, const XmlSlice& value) {
  return !Property::Holds(static_cast<const Machine&>(stub).PowerState, value);
}

// A host that is not cached changes nothing.
void HostOfMachine(KEStubBase& stub, const XmlSlice& id, ObjectCaches& caches) {
  auto* host = caches.Find<Host>(KindId::hosts, id);
  if (host == nullptr) return;
  KE::Instance::LinkToHost(static_cast<Machine&>(stub), *host, KE::Instance::OldLink::moved,
                           caches.Listener());
}

constexpr Property kMachineRows[] = {
    Text("name", &Machine::ElementName),
    Text("config.annotation", &Machine::Description),
    Text("config.uuid", &Machine::UUID),
    Text("config.files.vmPathName", &Machine::VMPathName),
    Text("config.guestFullName", &Machine::GuestFullName),
    Text("guest.hostName", &Machine::GuestHostName),
    Text("guest.ipAddress", &Machine::GuestIPAddress),
    Value("runtime.powerState", PowerState, PowerStateDiffers),
    Value("runtime.host", HostOfMachine),
};

// --- hosts ---------------------------------------------------------------------------------------

void OverallStatus(KEStubBase& stub, const XmlSlice& value, ObjectCaches&) {
  static_cast<Host&>(stub).OperationalStatus =
      KE::Instance::CodeOfOverallStatus({value.text, value.length});
}

bool OverallStatusDiffers(const KEStubBase& stub, const XmlSlice& value) {
  return KE::Instance::CodeOfOverallStatus({value.text, value.length}) !=
         static_cast<const Host&>(stub).OperationalStatus;
}

// A machine that is not cached is passed over.
void MachineOfHost(KEStubBase& stub, const XmlSlice& id, ObjectCaches& caches) {
  auto* machine = caches.Find<Machine>(KindId::machines, id);
  if (machine == nullptr) return;
  KE::Instance::LinkToHost(*machine, static_cast<Host&>(stub), KE::Instance::OldLink::replaced,
                           caches.Listener());
}

constexpr Property kHostRows[] = {
    Text("name", &Host::ElementName),
    Text("hardware.systemInfo.uuid", &Host::UUID),
    Text("hardware.systemInfo.vendor", &Host::Vendor),
    Text("hardware.systemInfo.model", &Host::Model),
    Value("summary.overallStatus", OverallStatus, OverallStatusDiffers),
    References("vm", MachineOfHost),
};

constexpr ObjectProperties kMachines = {Make<Machine>, TableOf<kMachineRows>()};
constexpr ObjectProperties kHosts = {Make<Host>, TableOf<kHostRows>()};

}  // namespace

// In the order of KindId.
constexpr const ObjectProperties* kPropertiesByKind[] = {
    nullptr, nullptr, nullptr, &kMachines, &kHosts, nullptr,
};

}  // namespace KE::Service
