// SPDX-License-Identifier: MIT
//
// Any bytes as a request, read and answered from caches that hold one of everything. Nothing
// crashes, and every answer is XML again.
#include <kecpp.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <pugixml.hpp>
#include <string_view>

#include "tools/agent/Errors.h"
#include "tools/agent/Operations.h"

namespace {

using namespace KE::Stub;

// Files a new stub, under its key, in a new cache.
template <class Stub, class Base>
Stub* File(KE::Instance::KETypeCache& cache, const char* type, Stub* stub,
           KELib::KEString Base::*key, const char* keyText) {
  KELib::KEString typeName(type);
  stub->*key = keyText;
  cache.CreateDataCache(typeName);
  cache.SetVal(typeName, stub->*key, stub);
  return stub;
}

using Links = std::unique_ptr<KELib::KEVector<KELib::Stub::KEAssocStubBase*>>;

// Lists a link at both of its ends.
template <class Link, class Member>
void LinkTo(Zorbel_Role* role, Links& ofRole, Member* member, Link* link) {
  link->Collection = role;
  link->Member = member;
  ofRole = std::make_unique<Links::element_type>();
  ofRole->Add(link);
  member->MemberOfCollections = std::make_unique<Links::element_type>();
  member->MemberOfCollections->Add(link);
}

// Never destroyed, as the process of a fuzzer never ends by itself.
KE::Instance::KETypeCache& MakeCaches() {
  auto& cache = *new KE::Instance::KETypeCache;
  auto* host = File(cache, ZORBEL_ORXComputerSystemClass, CreateZORBEL_ORXComputerSystem(),
                    &ZORBEL_ORXComputerSystem::Name, "h");
  auto* machine = File(cache, ZORBEL_VMComputerSystemClass, CreateZORBEL_VMComputerSystem(),
                       &ZORBEL_VMComputerSystem::Name, "a&amp;b");
  auto* role = File(cache, Zorbel_RoleClass, CreateZorbel_Role(), &Zorbel_Role::Name, "1");
  auto* privilege = File(cache, Zorbel_PrivilegeClass, CreateZorbel_Privilege(),
                         &Zorbel_Privilege::InstanceID, "P");
  auto* identity = File(cache, Zorbel_IdentityClass, CreateZorbel_Identity(),
                        &Zorbel_Identity::InstanceID, "&#97;nn");
  machine->ElementName = "\x01\xff&#1;&#xD800;<>";  // nothing of this may stand in XML
  machine->MoRef.value = machine->Name;
  KELib::KEString hostType("HostSystem");
  KE::Instance::ChangeVMsHostRef(machine, hostType, host->Name, &cache);
  LinkTo(role, role->PrivilegeMembers, privilege, CreateZorbel_PrivilegeMemberOfCollection());
  LinkTo(role, role->IdentityMembers, identity, CreateZorbel_IdentityMemberOfCollection());
  return cache;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static auto& gate = *new tools::agent::CacheGate(std::chrono::milliseconds(0));
  static const bool opened = (gate.Open({&MakeCaches(), true}), true);
  static const auto& operations = *new tools::agent::Operations(gate);
  if (!opened) return 0;
  try {
    const auto request = tools::agent::ParseRequest({reinterpret_cast<const char*>(data), size});
    const std::string answer = operations.Answer(request, "host").text;
    pugi::xml_document document;
    if (!document.load_string(answer.c_str()) || !document.child("CIM")) std::abort();
  } catch (const tools::agent::MessageError&) {
  }
  return 0;
}
