// SPDX-License-Identifier: MIT
#include "simulator/Inventory.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace sim {

namespace {

constexpr std::size_t kJournalLimit = 200000;

const char* const kString = " xsi:type=\"xsd:string\"";

std::string Reference(const char* type, const std::string& id) {
  return std::string("<ManagedObjectReference type=\"") + type + "\">" + id +
         "</ManagedObjectReference>";
}

std::string Number(const char* format, unsigned long long n) {
  char text[80];
  std::snprintf(text, sizeof(text), format, n);
  return text;
}

std::uint64_t Mix(std::uint64_t x) {
  x ^= x >> 33;
  x *= 0xff51afd7ed558ccdULL;
  x ^= x >> 33;
  return x;
}

std::string Uuid(std::uint64_t seed) {
  const std::uint64_t a = Mix(seed), b = Mix(seed + 1);
  char text[48];
  std::snprintf(text, sizeof(text), "%08x-%04x-%04x-%04x-%012llx", static_cast<unsigned int>(a),
                static_cast<unsigned int>(a >> 32) & 0xFFFFU, static_cast<unsigned int>(a >> 48),
                static_cast<unsigned int>(b) & 0xFFFFU, static_cast<unsigned long long>(b >> 16));
  return text;
}

// Now and then a name that must be escaped, or is not ASCII.
std::string Name(const char* stem, unsigned int n) {
  std::string name = stem + std::to_string(n);
  if (n % 17 == 5) name += " &lt;R&amp;D&gt;";
  if (n % 23 == 7) name += " K\xc3\xb6ln";
  return name;
}

unsigned short StatusOfPower(const std::string& state) {
  if (state == "poweredOn") return 2;
  if (state == "poweredOff") return 10;
  return state == "suspended" ? 15 : 0;
}

unsigned short StatusOfHost(const std::string& status) {
  if (status == "green") return 2;
  if (status == "yellow") return 3;
  return status == "red" ? 6 : 0;
}

}  // namespace

Property* Object::Find(const std::string& name) {
  for (Property& property : properties) {
    if (property.name == name) return &property;
  }
  return nullptr;
}

const std::string& Object::Text(const std::string& name) {
  static const std::string& none = *new std::string;
  const Property* property = Find(name);
  return property != nullptr ? property->xml : none;
}

Inventory::Inventory(unsigned int hosts, unsigned int machines, std::uint64_t seedValue)
    : seed(seedValue) {
  objects[kRoot] = {"Folder", {}, {kHosts, kMachines}, version};
  objects[kHosts] = {"Folder", {}, {}, version};
  objects[kMachines] = {"Folder", {}, {}, version};
  objects[kAuthorization] = {"AuthorizationManager",
                             {{"privilegeList", "", "", version}, {"roleList", "", "", version}},
                             {},
                             version};
  std::vector<std::string> hostIds;
  for (unsigned int i = 0; i < hosts; ++i) hostIds.push_back(AddHostLocked(Name("host", i + 1)));
  for (unsigned int i = 0; i < machines; ++i) {
    const std::string host = hostIds.empty() ? "" : hostIds[i % hostIds.size()];
    AddMachineLocked(Name("vm", i + 1), host);
  }
  for (const std::string& host : hostIds) ListMachinesLocked(host);

  privileges = {{"P.View", "View"}, {"P.Start", "Start &amp; stop"}, {"P.Admin", "Administer"}};
  roles["1"] = {
      "1", "Admin", "Administrator", "May do everything", true, {"P.View", "P.Start", "P.Admin"}};
  roles["7"] = {"7", "Op", "Operator", "Runs machines", false, {"P.View", "P.Start"}};
  permissions = {{"root", "1", false}, {"ann", "7", false}, {"staff", "7", true}};
  WriteAuthorizationLocked();
  journal.clear();
  journalStart = version;
}

// --- the journal ---------------------------------------------------------------------------------

void Inventory::TouchLocked(const std::string& id, Object& object) {
  object.changedAt = ++version;
  journal.emplace_back(version, id);
  while (journal.size() > kJournalLimit) {
    journalStart = journal.front().first;
    journal.pop_front();
  }
}

bool Inventory::ChangedSinceLocked(Version since, std::vector<std::string>& ids) const {
  if (since < journalStart) return false;
  std::set<std::string> unique;
  for (auto it = journal.rbegin(); it != journal.rend() && it->first > since; ++it) {
    unique.insert(it->second);
  }
  ids.assign(unique.begin(), unique.end());
  return true;
}

Object* Inventory::FindLocked(const std::string& id) {
  const auto found = objects.find(id);
  return found != objects.end() ? &found->second : nullptr;
}

void Inventory::Done() {
  changed.notify_all();
}

bool Inventory::SetLocked(const std::string& id, const std::string& name, const std::string& xml) {
  Object* object = FindLocked(id);
  Property* property = object != nullptr ? object->Find(name) : nullptr;
  if (property == nullptr) return false;
  property->xml = xml;
  TouchLocked(id, *object);
  property->changedAt = version;
  return true;
}

bool Inventory::Set(const std::string& id, const std::string& property, const std::string& xml) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (!SetLocked(id, property, xml)) return false;
  Done();
  return true;
}

// --- hosts and machines --------------------------------------------------------------------------

std::string Inventory::AddHostLocked(const std::string& name) {
  const unsigned int n = nextHost++;
  const std::string id = Number("host-%llu", n);
  Object& host = objects[id];
  host.type = "HostSystem";
  host.properties = {{"name", name, kString, 0},
                     {"summary.overallStatus", n % 5 == 4 ? "yellow" : "green", kString, 0},
                     {"hardware.systemInfo.uuid", Uuid(seed * 1000003 + n), kString, 0},
                     {"hardware.systemInfo.vendor", "Zorbel Systems", kString, 0},
                     {"hardware.systemInfo.model", Number("ORX %llu00", n % 9 + 1), kString, 0},
                     {"vm", "", " xsi:type=\"ArrayOfManagedObjectReference\"", 0}};
  TouchLocked(id, host);
  for (Property& property : host.properties) property.changedAt = version;
  machinesOf[id];
  Object& folder = objects[kHosts];
  folder.children.push_back(id);
  TouchLocked(kHosts, folder);
  return id;
}

std::string Inventory::AddMachineLocked(const std::string& name, const std::string& host) {
  const unsigned int n = nextMachine++;
  const std::string id = Number("vm-%llu", n);
  static const char* const kStates[] = {"poweredOn", "poweredOff", "suspended"};
  static const char* const kSystems[] = {"Debian GNU/Linux 12 (64-bit)", "Other Linux (32-bit)",
                                         "FreeBSD &amp; friends"};
  const std::uint64_t random = Mix(seed + n);
  Object& machine = objects[id];
  machine.type = "VirtualMachine";
  machine.properties = {
      {"name", name, kString, 0},
      {"config.annotation", n % 3 == 0 ? "" : Number("Machine number %llu", n), kString, 0},
      {"config.uuid", Uuid(seed * 7919 + n), kString, 0},
      {"config.files.vmPathName", "[store1] " + id + "/" + id + ".cfg", kString, 0},
      {"runtime.powerState", kStates[random % 3], " xsi:type=\"VirtualMachinePowerState\"", 0},
      {"runtime.host", host, " type=\"HostSystem\" xsi:type=\"ManagedObjectReference\"", 0},
      {"config.guestFullName", kSystems[random / 3 % 3], kString, 0},
      {"guest.hostName", id + ".example.org", kString, 0},
      {"guest.ipAddress",
       Number("10.%llu.", n >> 16 & 255) + Number("%llu.", n >> 8 & 255) + Number("%llu", n & 255),
       kString, 0}};
  TouchLocked(id, machine);
  for (Property& property : machine.properties) property.changedAt = version;
  if (!host.empty()) machinesOf[host].push_back(id);
  Object& folder = objects[kMachines];
  folder.children.push_back(id);
  TouchLocked(kMachines, folder);
  return id;
}

void Inventory::ListMachinesLocked(const std::string& host) {
  if (host.empty()) return;
  std::string xml;
  for (const std::string& id : machinesOf[host]) xml += Reference("VirtualMachine", id);
  SetLocked(host, "vm", xml);
}

std::string Inventory::CreateMachine(const std::string& name, const std::string& host) {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::string id = AddMachineLocked(name, host);
  ListMachinesLocked(host);
  Done();
  return id;
}

bool Inventory::RemoveMachine(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  Object* machine = FindLocked(id);
  if (machine == nullptr || machine->type != "VirtualMachine") return false;
  const std::string host = machine->Text("runtime.host");
  auto& list = machinesOf[host];
  list.erase(std::remove(list.begin(), list.end(), id), list.end());
  TouchLocked(id, *machine);
  objects.erase(id);
  Object& folder = objects[kMachines];
  folder.children.erase(std::remove(folder.children.begin(), folder.children.end(), id),
                        folder.children.end());
  TouchLocked(kMachines, folder);
  ListMachinesLocked(host);
  Done();
  return true;
}

bool Inventory::MoveMachine(const std::string& id, const std::string& host) {
  const std::lock_guard<std::mutex> lock(mutex);
  Object* machine = FindLocked(id);
  if (machine == nullptr || machine->type != "VirtualMachine" || objects.count(host) == 0) {
    return false;
  }
  const std::string from = machine->Text("runtime.host");
  if (from == host) return true;
  auto& list = machinesOf[from];
  list.erase(std::remove(list.begin(), list.end(), id), list.end());
  machinesOf[host].push_back(id);
  SetLocked(id, "runtime.host", host);
  ListMachinesLocked(from);
  ListMachinesLocked(host);
  Done();
  return true;
}

std::string Inventory::CreateHost(const std::string& name) {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::string id = AddHostLocked(name);
  Done();
  return id;
}

bool Inventory::RemoveHost(const std::string& id) {
  const std::vector<std::string> hosts = Ids("HostSystem");
  std::vector<std::string> machines;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    Object* host = FindLocked(id);
    if (host == nullptr || host->type != "HostSystem" || hosts.size() < 2) return false;
    machines = machinesOf[id];
  }
  const std::string& other = hosts[0] == id ? hosts[1] : hosts[0];
  for (const std::string& machine : machines) MoveMachine(machine, other);
  const std::lock_guard<std::mutex> lock(mutex);
  TouchLocked(id, objects[id]);
  objects.erase(id);
  machinesOf.erase(id);
  Object& folder = objects[kHosts];
  folder.children.erase(std::remove(folder.children.begin(), folder.children.end(), id),
                        folder.children.end());
  TouchLocked(kHosts, folder);
  Done();
  return true;
}

std::vector<std::string> Inventory::Ids(const std::string& type) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (type == "HostSystem") return objects[kHosts].children;
  return objects[kMachines].children;
}

// --- authorization -------------------------------------------------------------------------------

void Inventory::WriteAuthorizationLocked() {
  std::string list;
  for (const auto& [id, name] : privileges) {
    list += "<AuthorizationPrivilege><privId>" + id + "</privId><name>" + name +
            "</name></AuthorizationPrivilege>";
  }
  std::string roleList;
  for (const auto& [id, role] : roles) {
    roleList += "<AuthorizationRole><roleId>" + id + "</roleId><system>" +
                (role.system ? "true" : "false") + "</system><name>" + role.name +
                "</name><info><label>" + role.label + "</label><summary>" + role.summary +
                "</summary></info>";
    for (const std::string& privilege : role.privileges) {
      roleList += "<privilege>" + privilege + "</privilege>";
    }
    roleList += "</AuthorizationRole>";
  }
  SetLocked(kAuthorization, "privilegeList", list);
  SetLocked(kAuthorization, "roleList", roleList);
  Object& manager = objects[kAuthorization];
  manager.Find("privilegeList")->attributes = " xsi:type=\"ArrayOfAuthorizationPrivilege\"";
  manager.Find("roleList")->attributes = " xsi:type=\"ArrayOfAuthorizationRole\"";
}

void Inventory::SetRole(const Role& role) {
  const std::lock_guard<std::mutex> lock(mutex);
  roles[role.id] = role;
  WriteAuthorizationLocked();
  Done();
}

bool Inventory::RemoveRole(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (roles.erase(id) == 0) return false;
  WriteAuthorizationLocked();
  Done();
  return true;
}

void Inventory::SetPrivilege(const std::string& id, const std::string& name) {
  const std::lock_guard<std::mutex> lock(mutex);
  privileges[id] = name;
  WriteAuthorizationLocked();
  Done();
}

bool Inventory::RemovePrivilege(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (privileges.erase(id) == 0) return false;
  WriteAuthorizationLocked();
  Done();
  return true;
}

void Inventory::SetPermissions(const std::vector<Permission>& all) {
  const std::lock_guard<std::mutex> lock(mutex);
  permissions = all;
}

std::string Inventory::PermissionsXml() {
  const std::lock_guard<std::mutex> lock(mutex);
  std::string xml;
  for (const Permission& permission : permissions) {
    xml += "<returnval><principal>" + permission.principal + "</principal><group>" +
           (permission.group ? "true" : "false") + "</group><roleId>" + permission.roleId +
           "</roleId></returnval>";
  }
  return xml;
}

// --- tasks ---------------------------------------------------------------------------------------

std::string Inventory::StartTask() {
  const std::lock_guard<std::mutex> lock(mutex);
  const std::string id = Number("task-%llu", nextTask++);
  Object& task = objects[id];
  task.type = "Task";
  task.properties = {{"info.state", "queued", " xsi:type=\"TaskInfoState\"", 0}};
  TouchLocked(id, task);
  task.properties[0].changedAt = version;
  Done();
  return id;
}

void Inventory::RemoveTask(const std::string& id) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (Object* task = FindLocked(id)) {
    TouchLocked(id, *task);
    objects.erase(id);
    Done();
  }
}

// --- the truth -----------------------------------------------------------------------------------

nlohmann::json Inventory::Truth() {
  using nlohmann::json;
  const std::lock_guard<std::mutex> lock(mutex);
  std::map<std::string, json> hosts, machines, roleTruth, privilegeTruth, identities;
  for (const std::string& id : objects[kHosts].children) {
    Object& host = objects[id];
    std::vector<std::string> list = machinesOf[id];
    std::sort(list.begin(), list.end());
    hosts[id] = {{"Name", id},
                 {"ElementName", host.Text("name")},
                 {"Description", ""},
                 {"UUID", host.Text("hardware.systemInfo.uuid")},
                 {"Vendor", host.Text("hardware.systemInfo.vendor")},
                 {"Model", host.Text("hardware.systemInfo.model")},
                 {"OperationalStatus", StatusOfHost(host.Text("summary.overallStatus"))},
                 {"machines", list}};
  }
  for (const std::string& id : objects[kMachines].children) {
    Object& machine = objects[id];
    const std::string& on = machine.Text("runtime.host");
    machines[id] = {{"Name", id},
                    {"ElementName", machine.Text("name")},
                    {"Description", machine.Text("config.annotation")},
                    {"UUID", machine.Text("config.uuid")},
                    {"GuestFullName", machine.Text("config.guestFullName")},
                    {"GuestHostName", machine.Text("guest.hostName")},
                    {"GuestIPAddress", machine.Text("guest.ipAddress")},
                    {"VMPathName", machine.Text("config.files.vmPathName")},
                    {"PowerState", machine.Text("runtime.powerState")},
                    {"OperationalStatus", StatusOfPower(machine.Text("runtime.powerState"))},
                    {"host", on.empty() ? json(nullptr) : json(on)}};
  }
  std::map<std::string, std::set<std::string>> rolesOfPrivilege, rolesOfIdentity, identitiesOfRole;
  for (const Permission& permission : permissions) {
    if (permission.group) continue;
    rolesOfIdentity[permission.principal];
    if (roles.count(permission.roleId) == 0) continue;
    rolesOfIdentity[permission.principal].insert(permission.roleId);
    identitiesOfRole[permission.roleId].insert(permission.principal);
  }
  for (const auto& [id, role] : roles) {
    std::set<std::string> known;
    for (const std::string& privilege : role.privileges) {
      if (privileges.count(privilege) == 0) continue;
      known.insert(privilege);
      rolesOfPrivilege[privilege].insert(id);
    }
    roleTruth[id] = {{"Name", id},
                     {"ElementName", role.name},
                     {"Caption", role.label},
                     {"Description", role.summary},
                     {"RoleType", role.system ? "SystemDefined" : "UserDefined"},
                     {"privileges", known},
                     {"identities", identitiesOfRole[id]}};
  }
  for (const auto& [id, name] : privileges) {
    privilegeTruth[id] = {
        {"InstanceID", id}, {"ElementName", name}, {"roles", rolesOfPrivilege[id]}};
  }
  for (const auto& [principal, held] : rolesOfIdentity) {
    identities[principal] = {{"InstanceID", principal}, {"roles", held}};
  }
  const auto values = [](const std::map<std::string, json>& from) {
    json list = json::array();
    for (const auto& entry : from) list.push_back(entry.second);
    return list;
  };
  return {{"hosts", values(hosts)},
          {"machines", values(machines)},
          {"privileges", values(privilegeTruth)},
          {"roles", values(roleTruth)},
          {"identities", values(identities)}};
}

}  // namespace sim
