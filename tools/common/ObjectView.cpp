// SPDX-License-Identifier: MIT
#include "tools/common/ObjectView.h"

#include <utility>
#include <vector>

namespace tools {
namespace {

using namespace kecpp;
using Views = std::vector<std::string_view>;

template <template <class Text> class Form>
struct Forms {
  using Copy = Form<std::string>;
  using View = Form<std::string_view>;
};

// Calls `call` with the forms of a kind.
template <class Call>
auto WithForms(Kind kind, Call call) {
  switch (kind) {
    case Kind::host:
      return call(Forms<BasicHost>());
    case Kind::machine:
      return call(Forms<BasicMachine>());
    case Kind::role:
      return call(Forms<BasicRole>());
    case Kind::privilege:
      return call(Forms<BasicPrivilege>());
    default:
      return call(Forms<BasicIdentity>());
  }
}

Views ViewsOf(const std::vector<std::string>& texts) {
  return Views(texts.begin(), texts.end());
}

HostView ViewOf(const Host& host) {
  return {host.key,    host.name,  host.description,       host.uuid,
          host.vendor, host.model, host.operationalStatus, ViewsOf(host.machines)};
}

MachineView ViewOf(const Machine& machine) {
  MachineView view{machine.key,
                   machine.name,
                   machine.description,
                   machine.uuid,
                   machine.guestFullName,
                   machine.guestHostName,
                   machine.guestIPAddress,
                   machine.path,
                   machine.powerStateText,
                   machine.powerState,
                   machine.operationalStatus,
                   {}};
  if (machine.host) view.host = *machine.host;
  return view;
}

RoleView ViewOf(const Role& role) {
  return {role.key,
          role.name,
          role.caption,
          role.description,
          role.type,
          ViewsOf(role.privileges),
          ViewsOf(role.identities)};
}

PrivilegeView ViewOf(const Privilege& privilege) {
  return {privilege.key, privilege.name, ViewsOf(privilege.roles)};
}

IdentityView ViewOf(const Identity& identity) {
  return {identity.key, ViewsOf(identity.roles)};
}

}  // namespace

void ForEachView(const Inventory& inventory, Kind kind, const UseView& use) {
  WithForms(kind, [&](auto forms) {
    using View = typename decltype(forms)::View;
    inventory.ForEach<View>([&](const View& view) { use(&view); });
  });
}

bool ForNextView(const Inventory& inventory, Kind kind, Walk& walk, std::size_t most,
                 const UseView& use) {
  return WithForms(kind, [&](auto forms) {
    using View = typename decltype(forms)::View;
    return inventory.ForNext<View>(walk, most, [&](const View& view) { use(&view); });
  });
}

bool LookAtView(const Inventory& inventory, Kind kind, const std::string& key, const UseView& use) {
  return WithForms(kind, [&](auto forms) {
    using View = typename decltype(forms)::View;
    return inventory.Look<View>(key, [&](const View& view) { use(&view); });
  });
}

bool FindObject(const Inventory& inventory, Kind kind, const std::string& key, Object& object) {
  return WithForms(kind, [&](auto forms) {
    auto found = inventory.Find<typename decltype(forms)::Copy>(key);
    if (found) object = std::move(*found);
    return found.has_value();
  });
}

void ViewObject(const Object& object, const UseView& use) {
  std::visit(
      [&](const auto& copy) {
        const auto view = ViewOf(copy);
        use(&view);
      },
      object);
}

}  // namespace tools
