// SPDX-License-Identifier: MIT
#include <kecpp/inventory.h>

#include "inventory/Keeper.h"
#include "inventory/Reading.h"

namespace kecpp {
namespace {

using Arguments = std::vector<std::pair<std::string, std::string>>;

KELib::KEString Call(Connection& connection, const std::string& method, const Target& target,
                     const Arguments& arguments) {
  KELib::Xml::KEXmlBuffer body;
  body.StartAddElementTag(method.c_str());
  body.AddNamespace(nullptr, KE::Service::targetNamespace);
  body.AddElementTagAttrAndValue(KE::Service::ThisMorefTag, KE::Service::MorefTypeAttr,
                                 Encode(target.type).c_str(), Encode(target.key).c_str());
  for (const auto& [name, value] : arguments) {
    body.AddElementTagAndValue(name.c_str(), Encode(value).c_str());
  }
  body.EndAddElementTag(method.c_str());
  KELib::KEString result;
  try {
    connection.Method().Invoke(KE::Service::targetNamespace, method.c_str(), body, result);
  } catch (const KELib::Throwable& error) {
    throw Error(connection.Url(), "cannot call " + method + ": " + error.What());
  }
  return result;
}

Connection::Use Required(const Keeper& keeper) {
  Connection::Use connection = keeper.Current();
  if (!connection) throw Error("", "not connected: " + keeper.GetStatus().reason);
  return connection;
}

}  // namespace

Error::Error(const std::string& where, const std::string& why)
    : std::runtime_error(where.empty() ? why : where + ": " + why), url(where), reason(why) {}
Error::~Error() = default;

class Walk::Impl {
 public:
  KE::Instance::CacheWalk walk;
};

Walk::Walk() : impl(std::make_unique<Impl>()) {}
Walk::Walk(Walk&&) noexcept = default;
Walk& Walk::operator=(Walk&&) noexcept = default;
Walk::~Walk() = default;

class Inventory::Impl {
 public:
  explicit Impl(const Options& options) : keeper(options) {}

  Keeper keeper;
};

Inventory::Inventory(const Options& options) : impl(std::make_unique<Impl>(options)) {
  impl->keeper.Start();
}

Inventory::~Inventory() = default;

void Inventory::Close() {
  impl->keeper.Close();
}

kecpp::Status Inventory::State() const {
  return impl->keeper.GetStatus();
}

bool Inventory::WaitForState(const kecpp::Status& seen, std::chrono::milliseconds limit) const {
  return impl->keeper.WaitForStatus(seen, limit);
}

Follower Inventory::Follow() const {
  return Follower(impl->keeper.Follow());
}

std::size_t Inventory::Count(Kind kind) const {
  const Connection::Use connection = impl->keeper.Known();
  return connection ? CountOf(*connection.operator->(), kind) : 0;
}

std::string Inventory::Invoke(const std::string& method, const Target& target,
                              const Arguments& arguments) {
  const Connection::Use connection = Required(impl->keeper);
  return Call(*connection.operator->(), method, target, arguments).Cstr();
}

bool Inventory::RunTask(const std::string& method, const Target& target,
                        const Arguments& arguments) {
  const Connection::Use connection = Required(impl->keeper);
  KELib::KEString response = Call(*connection.operator->(), method, target, arguments);
  const std::unique_ptr<KELib::KEWaiter> waiter(KELib::CreateKEWaiter());
  try {
    return connection->Sync().WaitForTask(response, waiter.get());
  } catch (const KELib::Throwable& error) {
    throw Error(connection->Url(), "cannot wait for " + method + ": " + error.What());
  }
}

// --- reading -------------------------------------------------------------------------------------

template <class Object>
std::vector<Object> Inventory::All() const {
  const Connection::Use connection = impl->keeper.Current();
  if (!connection) return {};
  return CopyAll<Object>(*connection.operator->());
}

template <class Object>
std::optional<Object> Inventory::Find(const std::string& key) const {
  const Connection::Use connection = impl->keeper.Current();
  if (!connection) return {};
  return FindCopy<Object>(*connection.operator->(), key);
}

template <class Object>
void Inventory::ForEach(const std::function<void(const Object&)>& visit) const {
  const Connection::Use connection = impl->keeper.Current();
  if (!connection) return;
  if constexpr (std::is_same_v<Object, typename TypesOf<Object>::View>) {
    ForEachView<Object>(*connection.operator->(), visit);
  } else {
    ForEachCopy<Object>(*connection.operator->(), visit);
  }
}

template <class View>
bool Inventory::ForNext(Walk& walk, std::size_t most,
                        const std::function<void(const View&)>& visit) const {
  const Connection::Use connection = impl->keeper.Current();
  return connection && VisitNext<View>(*connection.operator->(), walk.impl->walk, most, visit);
}

template <class View>
bool Inventory::Look(const std::string& key, const std::function<void(const View&)>& visit) const {
  const Connection::Use connection = impl->keeper.Current();
  return connection && LookAtView<View>(*connection.operator->(), key, visit);
}

#define KECPP_INSTANTIATE(Copy, View)                                                        \
  template KECPP_INVENTORY_API std::vector<Copy> Inventory::All<Copy>() const;               \
  template KECPP_INVENTORY_API std::optional<Copy> Inventory::Find<Copy>(const std::string&) \
      const;                                                                                 \
  template KECPP_INVENTORY_API void Inventory::ForEach<Copy>(                                \
      const std::function<void(const Copy&)>&) const;                                        \
  template KECPP_INVENTORY_API void Inventory::ForEach<View>(                                \
      const std::function<void(const View&)>&) const;                                        \
  template KECPP_INVENTORY_API bool Inventory::ForNext<View>(                                \
      Walk&, std::size_t, const std::function<void(const View&)>&) const;                    \
  template KECPP_INVENTORY_API bool Inventory::Look<View>(                                   \
      const std::string&, const std::function<void(const View&)>&) const

KECPP_INSTANTIATE(Host, HostView);
KECPP_INSTANTIATE(Machine, MachineView);
KECPP_INSTANTIATE(Role, RoleView);
KECPP_INSTANTIATE(Privilege, PrivilegeView);
KECPP_INSTANTIATE(Identity, IdentityView);

}  // namespace kecpp
