// SPDX-License-Identifier: MIT
// Lists the roles with the privileges that they give and the identities that hold them:
//   roles [CONFIG-FILE]
#include <kecpp.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

using namespace KE::Service;
using namespace KE::Stub;

// The stubs at the other end of a role's links. A link answers the class of one end with the stub
// at the other, so the role's class is named to get the members.
template <typename Member>
static std::string Members(Zorbel_Role& role, const char* linkClass) {
  std::string text;
  KELib::KEString links(linkClass), roleEnd(Zorbel_RoleClass);
  for (auto it = role.GetAssocIterator(links); !it.End(); ++it) {
    if (*it == nullptr) continue;  // a member that was deleted
    auto* member = static_cast<Member*>((*it)->GetAssocInstance(roleEnd));
    text += std::string(" ") + member->InstanceID.Cstr();
  }
  return text;
}

static void Print(KE::Instance::KETypeCache& cache) {
  KELib::KEString roleType(Zorbel_RoleClass), privilegeType(Zorbel_PrivilegeClass),
      identityType(Zorbel_IdentityClass);
  auto* roles = cache.GetDataCache(roleType);
  // Links lead into the other two caches, so their mutexes are held as well, always in this order.
  KELib::KEMutexGuard first(roles->GetMutex());
  KELib::KEMutexGuard second(cache.GetDataCache(privilegeType)->GetMutex());
  KELib::KEMutexGuard third(cache.GetDataCache(identityType)->GetMutex());
  std::string text;
  for (auto it = roles->Iterator(); !it.End(); ++it) {
    auto& role = static_cast<Zorbel_Role&>(*(*it)->value);
    text += std::string(role.ElementName.Cstr()) + "\n  gives" +
            Members<Zorbel_Privilege>(role, Zorbel_PrivilegeMemberOfCollectionClass) +
            "\n  held by" + Members<Zorbel_Identity>(role, Zorbel_IdentityMemberOfCollectionClass) +
            "\n";
  }
  third.Release();
  second.Release();
  first.Release();
  std::cout << text << std::flush;
}

int main(int argc, char** argv) try {
  const char* config = argc > 1 ? argv[1] : "";
  auto* instance = GetServiceManagerInstance()->GetServiceInstance(config, DEFAULT_CONFIG_CONTENT);
  if (!instance) return EXIT_FAILURE;
  KEDataSync* sync = instance->GetSession()->GetDataSync();
  std::unique_ptr<ManagedObjectReference> root(instance->GetReference("authorizationManager"));
  KELib::KEVector<KELib::KEString> list;
  // Roles and privileges are properties. Who holds a role is the answer of a method.
  for (const char* element : {PropSep, ObjectSep, TypeAuthorizationManager, "privilegeList",
                              "roleList", MethodSep, MethodRetrieveAllPermissions, CacheObjectSep,
                              Zorbel_RoleClass, Zorbel_PrivilegeClass, Zorbel_IdentityClass}) {
    list.Add(KELib::KEString(element));
  }
  sync->SetupDataSync(root.get(), list, nullptr);
  Print(*sync->GetCache());
  FreeServiceManagerInstance();
} catch (const KELib::Exception& error) {
  std::cerr << error.What() << '\n';
  return EXIT_FAILURE;
}
