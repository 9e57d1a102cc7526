// SPDX-License-Identifier: MIT
#include "benchmarks/Store.h"

#include "benchmarks/Checksum.h"

namespace bench {

namespace {

template <typename Owner>
struct TextProperty {
  std::string_view path;
  std::string Owner::*field;
};

constexpr TextProperty<Machine> kMachineTexts[] = {
    {"name", &Machine::name},
    {"config.annotation", &Machine::annotation},
    {"config.uuid", &Machine::uuid},
    {"config.files.vmPathName", &Machine::pathName},
    {"config.guestFullName", &Machine::guestFullName},
    {"guest.hostName", &Machine::guestHostName},
    {"guest.ipAddress", &Machine::guestAddress},
};

constexpr TextProperty<Host> kHostTexts[] = {
    {"name", &Host::name},
    {"hardware.systemInfo.uuid", &Host::uuid},
    {"hardware.systemInfo.vendor", &Host::vendor},
    {"hardware.systemInfo.model", &Host::model},
};

template <typename Owner, std::size_t N>
bool SetText(Owner& owner, const TextProperty<Owner> (&table)[N], std::string_view property,
             std::string_view value) {
  for (const auto& entry : table) {
    if (entry.path != property) continue;
    (owner.*entry.field).assign(value);
    return true;
  }
  return false;
}

unsigned short PowerStatus(std::string_view state) {
  if (state == "poweredOn") return 2;
  if (state == "poweredOff") return 10;
  return state == "suspended" ? 15 : 0;
}

unsigned short OverallStatus(std::string_view status) {
  if (status == "green") return 2;
  if (status == "yellow") return 3;
  return status == "red" ? 6 : 0;
}

template <typename Owner>
Owner* FindOrEnter(std::unordered_map<std::string, std::unique_ptr<Owner>>& all,
                   std::string_view type, std::string_view id) {
  std::unique_ptr<Owner>& slot = all[std::string(id)];
  if (slot == nullptr) {
    slot = std::make_unique<Owner>();
    slot->id.assign(id);
    slot->reference.type.assign(type);
    slot->reference.value.assign(id);
  }
  return slot.get();
}

}  // namespace

Store::Object::Object(Store& owner, std::string_view type, std::string_view id) : store(owner) {
  if (type == "VirtualMachine") machine = FindOrEnter(store.machines, type, id);
  if (type == "HostSystem") host = FindOrEnter(store.hosts, type, id);
  if (machine != nullptr && store.changeList != nullptr) store.changeList->emplace_back(id);
}

const Machine* Store::FindMachine(const std::string& id) const {
  const auto found = machines.find(id);
  return found == machines.end() ? nullptr : found->second.get();
}

void Store::Object::Set(std::string_view property, std::string_view value) {
  if (machine != nullptr) {
    SetMachine(property, value);
  } else if (host != nullptr) {
    SetHost(property, value);
  }
}

void Store::Object::SetMachine(std::string_view property, std::string_view value) {
  if (SetText(*machine, kMachineTexts, property, value)) return;
  if (property == "runtime.powerState") {
    SetPowerState(value);
  } else if (property == "runtime.host") {
    SetHostOf(value);
  }
}

void Store::Object::SetPowerState(std::string_view state) {
  machine->powerState.assign(state);
  machine->status = PowerStatus(state);
}

void Store::Object::SetHostOf(std::string_view id) {
  const auto found = store.hosts.find(std::string(id));
  if (found != store.hosts.end()) Link(*machine, *found->second);
}

void Store::Object::SetHost(std::string_view property, std::string_view value) {
  if (SetText(*host, kHostTexts, property, value)) return;
  if (property == "summary.overallStatus") SetOverallStatus(value);
}

void Store::Object::SetOverallStatus(std::string_view status) {
  host->status = OverallStatus(status);
}

void Store::Object::AddMachine(std::string_view id) {
  if (host == nullptr) return;
  const auto found = store.machines.find(std::string(id));
  if (found != store.machines.end()) Link(*found->second, *host);
}

void Store::Link(Machine& machine, Host& host) {
  if (machine.host == &host) return;
  Unlink(machine);
  machine.place = host.machines.size();
  host.machines.push_back(&machine);
  machine.host = &host;
}

void Store::Unlink(Machine& machine) {
  if (machine.host == nullptr) return;
  std::vector<Machine*>& list = machine.host->machines;
  list[machine.place] = list.back();
  list[machine.place]->place = machine.place;
  list.pop_back();
  machine.host = nullptr;
}

std::uint64_t Store::Checksum() const {
  std::uint64_t sum = 0;
  for (const auto& [key, m] : machines) {
    sum += HashObject(
        {key, m->id, m->name, m->annotation, m->uuid, m->guestFullName, m->guestHostName,
         m->guestAddress, m->pathName, m->powerState, m->reference.type, m->reference.value,
         m->host != nullptr ? std::string_view(m->host->id) : std::string_view()},
        m->status);
  }
  for (const auto& [key, h] : hosts) {
    sum += HashObject(
        {key, h->id, h->name, h->uuid, h->vendor, h->model, h->reference.type, h->reference.value},
        h->status);
    for (const Machine* m : h->machines) sum += HashObject({key, m->id}, 0);
  }
  return sum;
}

std::size_t Store::Walk() const {
  std::size_t sum = 0;
  for (const auto& [key, m] : machines) {
    sum += m->name.size();
    if (m->host != nullptr) sum += m->host->name.size();
  }
  return sum;
}

// All at once, as the library empties its caches: no machine needs to leave its host's list first.
void Store::Drop() {
  machines.clear();
  hosts.clear();
}

}  // namespace bench
