// SPDX-License-Identifier: MIT
//
// One object of any kind, as the table of classes (Schema.h) reads it. Its texts are what the
// inventory gave: decoded in the view of a copy, XML text otherwise.
//
// Thread safety: any thread. A view is good only inside the callback that receives it.
#ifndef KECPP_TOOLS_COMMON_OBJECTVIEW_H
#define KECPP_TOOLS_COMMON_OBJECTVIEW_H

#include <kecpp/inventory.h>

#include <functional>
#include <string>
#include <variant>

namespace tools {

using ObjectView =
    std::variant<const kecpp::HostView*, const kecpp::MachineView*, const kecpp::RoleView*,
                 const kecpp::PrivilegeView*, const kecpp::IdentityView*>;
using UseView = std::function<void(const ObjectView&)>;

using Object =
    std::variant<kecpp::Host, kecpp::Machine, kecpp::Role, kecpp::Privilege, kecpp::Identity>;

// As Inventory::ForEach, ForNext and Look with views.
void ForEachView(const kecpp::Inventory& inventory, kecpp::Kind kind, const UseView& use);
bool ForNextView(const kecpp::Inventory& inventory, kecpp::Kind kind, kecpp::Walk& walk,
                 std::size_t most, const UseView& use);
bool LookAtView(const kecpp::Inventory& inventory, kecpp::Kind kind, const std::string& key,
                const UseView& use);

// Copies one object; false, and nothing is copied, when it is not there.
bool FindObject(const kecpp::Inventory& inventory, kecpp::Kind kind, const std::string& key,
                Object& object);

// Calls `use` with a view of a copy.
void ViewObject(const Object& object, const UseView& use);

}  // namespace tools

#endif
