// SPDX-License-Identifier: MIT
//
// What the caches hold, in the form in which kecpp-inventory prints it and the simulated daemon
// tells its truth; texts stay XML text. Takes the caches' mutexes; any thread.
#ifndef KECPP_TESTS_SUPPORT_READCACHES_H
#define KECPP_TESTS_SUPPORT_READCACHES_H

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "instance/KECacheGuard.h"
#include "inventory/Values.h"
#include "tools/common/ObjectJson.h"

inline void SortLinks(kecpp::HostView& view) {
  std::sort(view.machines.begin(), view.machines.end());
}
inline void SortLinks(kecpp::MachineView&) {}
inline void SortLinks(kecpp::RoleView& view) {
  std::sort(view.privileges.begin(), view.privileges.end());
  std::sort(view.identities.begin(), view.identities.end());
}
template <class View>
void SortLinks(View& view) {
  std::sort(view.roles.begin(), view.roles.end());
}

// The caller holds the mutexes.
template <class View>
void AddList(KE::Instance::KETypeCache& cache, nlohmann::json& document) {
  using Types = kecpp::TypesOf<View>;
  const tools::Kind& kind = tools::KindRow(Types::kKind);
  KELib::KEString name(kecpp::CacheOf(Types::kKind));
  KE::Instance::KEDataCache* data = cache.GetDataCache(name);
  std::map<std::string, nlohmann::json> objects;
  for (auto it = data ? data->Iterator() : KE::Instance::KEDataIterator(); !it.End(); ++it) {
    View view;
    kecpp::Fill(view, static_cast<typename Types::Stub&>(*(*it)->value));
    SortLinks(view);
    objects[std::string(view.key)] =
        nlohmann::json::parse(tools::ToJson(kind, static_cast<const View*>(&view)));
  }
  document[kind.name] = nlohmann::json::array();
  for (auto& [key, object] : objects) document[kind.name].push_back(std::move(object));
}

inline nlohmann::json ReadCaches(KE::Instance::KETypeCache& cache) {
  nlohmann::json document = nlohmann::json::object();
  {
    KE::Instance::KECacheGuard guard(&cache);
    guard.LockComputerSystems();
    AddList<kecpp::HostView>(cache, document);
    AddList<kecpp::MachineView>(cache, document);
  }
  KE::Instance::KECacheGuard guard(&cache);
  guard.LockAuthorization();
  AddList<kecpp::RoleView>(cache, document);
  AddList<kecpp::PrivilegeView>(cache, document);
  AddList<kecpp::IdentityView>(cache, document);
  return document;
}

#endif
