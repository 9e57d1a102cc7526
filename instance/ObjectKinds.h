// SPDX-License-Identifier: MIT
//
// The kinds of server objects that the caches know: one row for each data cache, in the order in
// which the mutexes of data caches are taken.
//
// To add a kind: its stub class, here an enumerator and a row, and the table of its properties in
// datasync/ObjectProperties.cpp.
//
// Thread safety: constant.
#ifndef KECPP_INSTANCE_OBJECTKINDS_H
#define KECPP_INSTANCE_OBJECTKINDS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "foundation/KEString.h"
#include "stub/classes/ClassNames.h"
#include "xml/FixedText.h"

namespace KE::Instance {

// The position of a kind's row. `tasks` stays the last one.
enum class KindId : unsigned char { roles, privileges, identities, machines, hosts, tasks };

// Data caches whose stubs are linked with each other. They are locked together.
enum class LockGroup : unsigned char { authorization, computerSystems, tasks };

// How an object goes that left unseen.
enum class Sweep : unsigned char {
  byList,    // the server sends lists that name all there are (ListValue)
  byReport,  // the server reports each object there is when it is asked for everything
             // (StaleObjects)
  none
};

struct ObjectKind {
  KindId id;
  std::string_view serverType;    // empty in the last row: any type that no other row names
  const char* const& cacheClass;  // the class of the stubs, and the name of their data cache
  LockGroup group;
  Sweep sweep;

  constexpr std::size_t Index() const { return static_cast<std::size_t>(id); }
  constexpr bool IsAnyOther() const { return serverType.empty(); }
  bool Is(std::string_view type) const {
    return type.size() == serverType.size() &&
           KELib::Xml::SameText(type.data(), serverType.data(), type.size());
  }
};

// Types of server objects.
inline constexpr char kAuthorizationManager[] = "AuthorizationManager";
inline constexpr char kVirtualMachine[] = "VirtualMachine";
inline constexpr char kHostSystem[] = "HostSystem";

// clang-format off
inline constexpr ObjectKind kObjectKinds[] = {
    {KindId::roles, kAuthorizationManager, KE::Stub::Zorbel_RoleClass,
     LockGroup::authorization, Sweep::byList},
    {KindId::privileges, kAuthorizationManager, KE::Stub::Zorbel_PrivilegeClass,
     LockGroup::authorization, Sweep::byList},
    {KindId::identities, kAuthorizationManager, KE::Stub::Zorbel_IdentityClass,
     LockGroup::authorization, Sweep::byList},
    {KindId::machines, kVirtualMachine, KE::Stub::ZORBEL_VMComputerSystemClass,
     LockGroup::computerSystems, Sweep::byReport},
    {KindId::hosts, kHostSystem, KE::Stub::ZORBEL_ORXComputerSystemClass,
     LockGroup::computerSystems, Sweep::byReport},
    // Whatever else has the property "info.state" is a task.
    {KindId::tasks, {}, KE::Stub::TaskInfoClass, LockGroup::tasks, Sweep::none},
};
// clang-format on

inline constexpr std::size_t kObjectKindCount = std::size(kObjectKinds);

// The rows of one lock group.
struct KindRange {
  const ObjectKind* first;
  const ObjectKind* past;

  const ObjectKind* begin() const { return first; }
  const ObjectKind* end() const { return past; }
};

constexpr KindRange KindsOf(LockGroup group) {
  const ObjectKind* first = kObjectKinds;
  while (first->group != group) ++first;
  const ObjectKind* past = first;
  while (past != std::end(kObjectKinds) && past->group == group) ++past;
  return {first, past};
}

// For each row the rows of its lock group.
inline constexpr auto kLockedWith = [] {
  std::array<KindRange, kObjectKindCount> ranges{};
  for (const ObjectKind& kind : kObjectKinds) ranges[kind.Index()] = KindsOf(kind.group);
  return ranges;
}();

inline const KindRange& LockedWith(const ObjectKind& kind) {
  return kLockedWith[kind.Index()];
}

inline constexpr const ObjectKind& kAnyOther = kObjectKinds[kObjectKindCount - 1];

inline constexpr std::size_t kLongestType = [] {
  std::size_t longest = 0;
  for (const ObjectKind& kind : kObjectKinds) longest = std::max(longest, kind.serverType.size());
  return longest;
}();
// For each length the first row whose type has it, where the search begins; else the last row.
inline constexpr auto kFirstOfLength = [] {
  std::array<const ObjectKind*, kLongestType + 1> first{};
  for (std::size_t length = 0; length <= kLongestType; ++length) {
    first[length] = kObjectKinds;
    while (!first[length]->IsAnyOther() && first[length]->serverType.size() != length) {
      ++first[length];
    }
  }
  return first;
}();

// The kind of a server type; an object of several kinds has the first one. Of a type that is in no
// row the last one. O(number of kinds), without allocations: asked once for each object set.
inline const ObjectKind& KindOf(std::string_view serverType) {
  if (serverType.size() > kLongestType) return kAnyOther;
  const ObjectKind* kind = kFirstOfLength[serverType.size()];
  while (!kind->IsAnyOther() && !kind->Is(serverType)) ++kind;
  return *kind;
}

inline const ObjectKind& KindOf(const KELib::KEString& serverType) {
  return KindOf(std::string_view(serverType.Cstr()));
}

// The kind whose stubs are in the data cache of that name; null for a cache that no row names.
const ObjectKind* KindOfCache(const char* cacheClass);

// The place of a data cache in the order in which mutexes are taken. Caches that no row names share
// one place, before the tasks; among each other they are ordered by name.
std::size_t LockRank(const char* cacheClass);

}  // namespace KE::Instance

#endif
