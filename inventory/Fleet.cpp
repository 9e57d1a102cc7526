// SPDX-License-Identifier: MIT
#include <kecpp/fleet.h>

#include <algorithm>
#include <type_traits>
#include <utility>

#include "inventory/FleetFollowerImpl.h"
#include "inventory/FleetReader.h"
#include "inventory/FleetStore.h"

namespace kecpp {
namespace {

constexpr std::size_t kPiece = 256;  // objects that are copied under the store's mutex

template <class Object>
constexpr Kind KindOf() {
  return static_cast<Kind>(fleet::Object(Object()).index());
}

// By key. `use` runs without a lock.
template <class Object, class Use>
void ForEachOf(const FleetStore& store, const std::string& site, Use use) {
  const Kind kind = KindOf<Object>();
  std::optional<std::string> last;
  while (true) {
    std::vector<fleet::Object> piece = store.Next(site, kind, last, kPiece);
    if (piece.empty()) return;
    last = std::get<Object>(piece.back()).key;
    for (fleet::Object& object : piece) use(std::get<Object>(std::move(object)));
  }
}

}  // namespace

class Fleet::Impl {
 public:
  explicit Impl(const FleetOptions& options) : reader(options, store) {}
  ~Impl() {
    reader.Close();
    store->Clear();
  }
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  // While no member answers, nothing is known to be true any longer.
  Site AsFarAsKnown(Site site) const {
    const FleetStatus status = reader.Status();
    if (status.state != FleetStatus::State::connected) {
      site.asOf = std::min(site.asOf, status.since);
    }
    return site;
  }

  const std::shared_ptr<FleetStore> store = std::make_shared<FleetStore>();
  FleetReader reader;
};

Fleet::Fleet(const FleetOptions& options) : impl(std::make_unique<Impl>(options)) {
  impl->reader.Start();
}

Fleet::~Fleet() = default;

void Fleet::Close() {
  impl->reader.Close();
}

FleetStatus Fleet::State() const {
  return impl->reader.Status();
}

bool Fleet::WaitForState(const FleetStatus& seen, std::chrono::milliseconds limit) const {
  return impl->reader.WaitForStatus(seen, limit);
}

std::vector<Site> Fleet::Sites() const {
  std::vector<Site> sites = impl->store->Sites();
  for (Site& site : sites) site = impl->AsFarAsKnown(std::move(site));
  return sites;
}

std::optional<Site> Fleet::FindSite(const std::string& name) const {
  auto site = impl->store->FindSite(name);
  if (site) site = impl->AsFarAsKnown(std::move(*site));
  return site;
}

std::size_t Fleet::Count(const std::string& site, Kind kind) const {
  return impl->store->Count(site, kind);
}

std::size_t Fleet::Count(Kind kind) const {
  return impl->store->Count(kind);
}

FleetFollower Fleet::Follow() const {
  auto follower = std::make_shared<FleetFollower::Impl>(impl->store);
  impl->store->Add(follower);
  return FleetFollower(std::move(follower));
}

template <class Object>
std::vector<Object> Fleet::All(const std::string& site) const {
  std::vector<Object> all;
  ForEachOf<Object>(*impl->store, site, [&](Object&& object) { all.push_back(std::move(object)); });
  return all;
}

template <class Object>
std::optional<Object> Fleet::Find(const std::string& site, const std::string& key) const {
  auto found = impl->store->Find(site, KindOf<Object>(), key);
  if (!found) return {};
  return std::get<Object>(std::move(*found));
}

template <class Object>
void Fleet::ForEach(
    const std::function<void(const std::string& site, const Object& object)>& visit) const {
  const FleetStore& store = *impl->store;
  for (auto site = store.SiteAfter({}); site; site = store.SiteAfter(site)) {
    ForEachOf<Object>(store, *site, [&](const Object& object) { visit(*site, object); });
  }
}

#define KECPP_INSTANTIATE(Object)                                                                \
  template KECPP_INVENTORY_API std::vector<Object> Fleet::All<Object>(const std::string&) const; \
  template KECPP_INVENTORY_API std::optional<Object> Fleet::Find<Object>(                        \
      const std::string&, const std::string&) const;                                             \
  template KECPP_INVENTORY_API void Fleet::ForEach<Object>(                                      \
      const std::function<void(const std::string&, const Object&)>&) const

KECPP_INSTANTIATE(Host);
KECPP_INSTANTIATE(Machine);
KECPP_INSTANTIATE(Role);
KECPP_INSTANTIATE(Privilege);
KECPP_INSTANTIATE(Identity);

}  // namespace kecpp
