// SPDX-License-Identifier: MIT
//
// From the library's stubs to the values of the interface.
//
// Thread safety: hold the mutexes of the caches of the stub's lock group (instance/ObjectKinds.h)
//   while a view is made and used.
#ifndef KECPP_INVENTORY_VALUES_H
#define KECPP_INVENTORY_VALUES_H

#include <kecpp.h>

#include <kecpp/inventory.h>

#include <string>
#include <string_view>
#include <type_traits>

namespace kecpp {

// The stubs of a kind of object: what both of its forms have in common.
template <Kind>
struct Stubs;
template <>
struct Stubs<Kind::host> {
  using Stub = KE::Stub::ZORBEL_ORXComputerSystem;
  using Copy = Host;
  using View = HostView;
};
template <>
struct Stubs<Kind::machine> {
  using Stub = KE::Stub::ZORBEL_VMComputerSystem;
  using Copy = Machine;
  using View = MachineView;
};
template <>
struct Stubs<Kind::role> {
  using Stub = KE::Stub::Zorbel_Role;
  using Copy = Role;
  using View = RoleView;
};
template <>
struct Stubs<Kind::privilege> {
  using Stub = KE::Stub::Zorbel_Privilege;
  using Copy = Privilege;
  using View = PrivilegeView;
};
template <>
struct Stubs<Kind::identity> {
  using Stub = KE::Stub::Zorbel_Identity;
  using Copy = Identity;
  using View = IdentityView;
};

// The kind of a form.
template <class Form>
struct KindOfForm;
template <class Text>
struct KindOfForm<BasicHost<Text>> : std::integral_constant<Kind, Kind::host> {};
template <class Text>
struct KindOfForm<BasicMachine<Text>> : std::integral_constant<Kind, Kind::machine> {};
template <class Text>
struct KindOfForm<BasicRole<Text>> : std::integral_constant<Kind, Kind::role> {};
template <class Text>
struct KindOfForm<BasicPrivilege<Text>> : std::integral_constant<Kind, Kind::privilege> {};
template <class Text>
struct KindOfForm<BasicIdentity<Text>> : std::integral_constant<Kind, Kind::identity> {};
template <class Form>
inline constexpr Kind kKindOf = KindOfForm<Form>::value;

inline constexpr Kind kKinds[] = {Kind::host, Kind::machine, Kind::role, Kind::privilege,
                                  Kind::identity};

// The name of the kind's data cache.
const char* CacheOf(Kind kind);

// The kind whose data cache has that name; false for another one.
bool FindKind(const char* cacheClass, Kind& kind);

// Replace what `view` holds; its room is used again.
void Fill(HostView& view, const KE::Stub::ZORBEL_ORXComputerSystem& stub);
void Fill(MachineView& view, const KE::Stub::ZORBEL_VMComputerSystem& stub);
void Fill(RoleView& view, const KE::Stub::Zorbel_Role& stub);
void Fill(PrivilegeView& view, const KE::Stub::Zorbel_Privilege& stub);
void Fill(IdentityView& view, const KE::Stub::Zorbel_Identity& stub);

// The copies, with decoded texts and sorted links.
Host Decode(const HostView& view);
Machine Decode(const MachineView& view);
Role Decode(const RoleView& view);
Privilege Decode(const PrivilegeView& view);
Identity Decode(const IdentityView& view);

// XML text to raw text and back.
std::string Decode(std::string_view xmlText);
std::string Encode(const std::string& raw);

}  // namespace kecpp

#endif
