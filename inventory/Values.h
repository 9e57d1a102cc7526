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

namespace kecpp {

// What belongs to a kind of object: its stubs, and its two forms.
template <Kind kind, class StubOfKind, template <class Text> class Form>
struct KindTypes {
  static constexpr Kind kKind = kind;
  using Stub = StubOfKind;
  using Copy = Form<std::string>;
  using View = Form<std::string_view>;
};

// The same by either of the forms.
template <class Object>
struct TypesOf;
template <class Text>
struct TypesOf<BasicHost<Text>>
    : KindTypes<Kind::host, KE::Stub::ZORBEL_ORXComputerSystem, BasicHost> {};
template <class Text>
struct TypesOf<BasicMachine<Text>>
    : KindTypes<Kind::machine, KE::Stub::ZORBEL_VMComputerSystem, BasicMachine> {};
template <class Text>
struct TypesOf<BasicRole<Text>> : KindTypes<Kind::role, KE::Stub::Zorbel_Role, BasicRole> {};
template <class Text>
struct TypesOf<BasicPrivilege<Text>>
    : KindTypes<Kind::privilege, KE::Stub::Zorbel_Privilege, BasicPrivilege> {};
template <class Text>
struct TypesOf<BasicIdentity<Text>>
    : KindTypes<Kind::identity, KE::Stub::Zorbel_Identity, BasicIdentity> {};

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

// Raw text to XML text.
std::string Encode(const std::string& raw);

}  // namespace kecpp

#endif
