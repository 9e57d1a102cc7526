// SPDX-License-Identifier: MIT
#include "datasync/CacheDump.h"

#include <algorithm>
#include <vector>

#include "instance/KECacheGuard.h"
#include "instance/KETypeCache.h"
#include "stub/classes/ClassNames.h"
#include "stub/classes/TaskInfo.h"
#include "stub/classes/ZORBEL_ORXComputerSystem.h"
#include "stub/classes/ZORBEL_VMComputerSystem.h"
#include "stub/classes/Zorbel_Identity.h"
#include "stub/classes/Zorbel_Privilege.h"
#include "stub/classes/Zorbel_Role.h"

namespace {

using namespace KE::Stub;
using KELib::KEString;
using KELib::Stub::KEStubBase;
using Links = std::unique_ptr<KELib::KEVector<KELib::Stub::KEAssocStubBase*>>;

// The text with what would end a line spelt out: the daemon's words may hold anything. By default
// without spaces too, so that lines sort by their keys whatever follows.
std::string Spelt(const KEString& raw, unsigned char last = ' ') {
  std::string text;
  for (const char c : std::string(raw.Cstr())) {
    const auto byte = static_cast<unsigned char>(c);
    text += byte <= last ? "\\" + std::to_string(byte) : std::string(1, c);
  }
  return text;
}

std::string KeyOf(KEStubBase* stub) {
  if (auto* system = dynamic_cast<CIM_System*>(stub)) return Spelt(system->Name);
  if (auto* role = dynamic_cast<Zorbel_Role*>(stub)) return Spelt(role->Name);
  if (auto* privilege = dynamic_cast<Zorbel_Privilege*>(stub)) return Spelt(privilege->InstanceID);
  if (auto* identity = dynamic_cast<Zorbel_Identity*>(stub)) return Spelt(identity->InstanceID);
  if (auto* task = dynamic_cast<TaskInfo*>(stub)) return Spelt(task->task.value);
  return "nobody";
}

// One line of the dump in the making.
class Line {
 public:
  Line(const char* kind, const KEString& key, KEStubBase& described)
      : text(std::string(kind) + " " + Spelt(key)), stub(described) {
    if (KeyOf(&stub) != Spelt(key)) text += " ODD";
  }

  Line& Text(const char* name, const KEString& value) {
    if (!value.Empty()) text += std::string(" ") + name + "=[" + Spelt(value, '\n') + "]";
    return *this;
  }
  Line& Status(unsigned short status) {
    if (status != 0) text += " status=" + std::to_string(status);
    return *this;
  }
  Line& Reference(const ManagedObjectReference& reference, const char* type) {
    const bool sound = reference.type.Equals(type) && KeyOf(&stub) == Spelt(reference.value);
    return sound ? *this : Text("ODD", reference.type);
  }
  Line& Partners(const char* name, Links& links) {
    std::vector<std::string> keys;
    KEString ownClass(stub.GetStubClassName());
    for (unsigned int i = 0; links != nullptr && i < links->Count(); ++i) {
      if (links->Get(i) != nullptr)
        keys.push_back(KeyOf(links->Get(i)->GetAssocInstance(ownClass)));
    }
    std::sort(keys.begin(), keys.end());
    for (std::size_t i = 0; i < keys.size(); ++i) {
      text += (i == 0 ? " " + std::string(name) + "=" : ",") + keys[i];
    }
    return *this;
  }

  std::string text;

 private:
  KEStubBase& stub;
};

Line Describe(const KEString& key, ZORBEL_VMComputerSystem& machine) {
  return Line("machine", key, machine)
      .Reference(machine.MoRef, "VirtualMachine")
      .Text("ElementName", machine.ElementName)
      .Text("Description", machine.Description)
      .Text("UUID", machine.UUID)
      .Text("GuestFullName", machine.GuestFullName)
      .Text("GuestHostName", machine.GuestHostName)
      .Text("GuestIPAddress", machine.GuestIPAddress)
      .Text("VMPathName", machine.VMPathName)
      .Text("PowerState", machine.PowerState)
      .Status(machine.OperationalStatus)
      .Partners("host", machine.HostedDependencies);
}

Line Describe(const KEString& key, ZORBEL_ORXComputerSystem& host) {
  return Line("host", key, host)
      .Reference(host.MoRef, "HostSystem")
      .Text("ElementName", host.ElementName)
      .Text("UUID", host.UUID)
      .Text("Vendor", host.Vendor)
      .Text("Model", host.Model)
      .Status(host.OperationalStatus)
      .Partners("machines", host.HostedDependencies);
}

Line Describe(const KEString& key, Zorbel_Role& role) {
  return Line("role", key, role)
      .Text("ElementName", role.ElementName)
      .Text("Caption", role.Caption)
      .Text("Description", role.Description)
      .Text("RoleType", role.RoleType)
      .Partners("privileges", role.PrivilegeMembers)
      .Partners("identities", role.IdentityMembers);
}

Line Describe(const KEString& key, Zorbel_Privilege& privilege) {
  return Line("privilege", key, privilege)
      .Text("ElementName", privilege.ElementName)
      .Partners("roles", privilege.MemberOfCollections);
}

Line Describe(const KEString& key, Zorbel_Identity& identity) {
  return Line("identity", key, identity).Partners("roles", identity.MemberOfCollections);
}

Line Describe(const KEString& key, TaskInfo& task) {
  return Line("task", key, task).Text("state", task.state);
}

// The line of a stub whose class is the cache's.
std::string LineOf(const KEString& key, KEStubBase& stub) {
  if (auto* machine = dynamic_cast<ZORBEL_VMComputerSystem*>(&stub))
    return Describe(key, *machine).text;
  if (auto* host = dynamic_cast<ZORBEL_ORXComputerSystem*>(&stub)) return Describe(key, *host).text;
  if (auto* role = dynamic_cast<Zorbel_Role*>(&stub)) return Describe(key, *role).text;
  if (auto* privilege = dynamic_cast<Zorbel_Privilege*>(&stub))
    return Describe(key, *privilege).text;
  if (auto* identity = dynamic_cast<Zorbel_Identity*>(&stub)) return Describe(key, *identity).text;
  return Describe(key, dynamic_cast<TaskInfo&>(stub)).text;
}

}  // namespace

std::string DumpCaches(KE::Instance::KETypeCache& types) {
  KE::Instance::KECacheGuard guard(&types);
  const auto caches = types.InLockOrder();  // once: one that is made meanwhile is not locked
  for (KE::Instance::KEDataCache* cache : caches) guard.Lock(cache);
  std::vector<std::string> lines;
  for (KE::Instance::KEDataCache* cache : caches) {
    for (auto it = cache->Iterator(); !it.End(); ++it) {
      lines.push_back(LineOf(it->key, *it->value) + "\n");
    }
  }
  std::sort(lines.begin(), lines.end());
  std::string text;
  for (const std::string& line : lines) text += line;
  return text;
}

std::string DumpObject(KE::Instance::KETypeCache& types, const char* className, KEString& key) {
  KEString type(className);
  KE::Instance::KECacheGuard guard(&types);
  guard.LockLinked(type);
  KE::Instance::KEDataCache* const cache = types.GetDataCache(type);
  KELib::Stub::KEStubRef ref;
  if (cache != nullptr) cache->GetVal(key, ref);
  return ref.HasData() ? LineOf(key, *ref.GetData()) + "\n" : "";
}
