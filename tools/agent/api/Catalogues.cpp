// SPDX-License-Identifier: MIT
#include "tools/agent/api/Catalogues.h"

#include <malloc.h>

#include <algorithm>
#include <type_traits>
#include <utility>

#include "tools/agent/api/Items.h"

namespace tools::agent::api {
namespace {

constexpr std::size_t PLUS_ONE = 1;
constexpr std::size_t MINUS_ONE = -PLUS_ONE;
constexpr std::size_t MOST_DESCRIBED = 100;  // of the changes that come together

template <class Object>
constexpr kecpp::Kind KIND_OF = kecpp::Kind::host;
template <>
constexpr kecpp::Kind KIND_OF<kecpp::Machine> = kecpp::Kind::machine;
template <>
constexpr kecpp::Kind KIND_OF<kecpp::Role> = kecpp::Kind::role;
template <>
constexpr kecpp::Kind KIND_OF<kecpp::Privilege> = kecpp::Kind::privilege;
template <>
constexpr kecpp::Kind KIND_OF<kecpp::Identity> = kecpp::Kind::identity;

std::size_t& Of(std::array<std::size_t, 4>& sums, Power power) {
  return sums[static_cast<std::size_t>(power)];
}
std::size_t& Of(std::array<std::size_t, 4>& sums, Health health) {
  return sums[static_cast<std::size_t>(health)];
}

}  // namespace

// --- content -------------------------------------------------------------------------------------

HostTable::value_type* Catalogues::Content::HostOf(const std::string& key) {
  return &*hosts.try_emplace(key).first;
}

// The former host is released when nothing compares with it any more.
std::vector<const char*> Catalogues::Content::Put(kecpp::Kind kind, const std::string& key,
                                                  Row row) {
  Count(kind, row, PLUS_ONE);
  if (kind == kecpp::Kind::host) NameHost(key, true, row.texts.At(0));
  Catalogue& catalogue = Of(kind);
  if (catalogue.Add(key, row)) return {};
  const Row& former = *catalogue.Find(key);
  std::vector<const char*> fields = Differences(kind, former, row);
  HostTable::value_type* formerHost = former.host;
  Count(kind, former, MINUS_ONE);
  catalogue.Put(key, std::move(row));
  Release(formerHost);
  return fields;
}

void Catalogues::Content::Erase(kecpp::Kind kind, const std::string& key) {
  const Row* row = Of(kind).Find(key);
  if (!row) return;
  HostTable::value_type* host = row->host;
  Count(kind, *row, MINUS_ONE);
  Of(kind).Erase(key);
  if (kind == kecpp::Kind::host) NameHost(key, false, "");
  Release(host);
}

void Catalogues::Content::Count(kecpp::Kind kind, const Row& row, std::size_t one) {
  if (kind == kecpp::Kind::host) {
    sums.hosts += one;
    api::Of(sums.hostsByHealth, row.health) += one;
  } else if (kind == kecpp::Kind::machine) {
    sums.machines += one;
    api::Of(sums.machinesByPower, row.power) += one;
    api::Of(sums.machinesByHealth, row.health) += one;
    if (row.host) api::Of(row.host->second.byPower, row.power) += one;
  }
}

// Machines sort by the name of their host.
void Catalogues::Content::NameHost(const std::string& key, bool isThere, std::string_view name) {
  const auto host = hosts.try_emplace(key).first;
  if (host->second.name != name) {
    const KindInfo& machines = InfoOf(kecpp::Kind::machine);
    Of(kecpp::Kind::machine).ForgetOrder(*FindSort(machines, "host"));
    host->second.name = name;
  }
  host->second.isThere = isThere;
  Release(&*host);
}

// A machine may name a host that is not known, or not any more.
void Catalogues::Content::Release(HostTable::value_type* host) {
  if (host && !host->second.isThere && host->second.Machines() == 0) {
    hosts.erase(hosts.find(host->first));
  }
}

std::string Catalogues::Content::ItemText(kecpp::Kind kind, const std::string& key) const {
  const Row* row = Of(kind).Find(key);
  if (!row) return {};
  const auto host = kind == kecpp::Kind::host ? hosts.find(key) : hosts.end();
  return Dump(ItemOf(kind, key, *row, host == hosts.end() ? nullptr : &host->second));
}

// --- reading -------------------------------------------------------------------------------------

Catalogues::Catalogues(const kecpp::Inventory& shown) : inventory(shown) {}

std::shared_lock<std::shared_mutex> Catalogues::ReadLock() {
  const std::lock_guard<std::mutex> first(turn);
  return std::shared_lock<std::shared_mutex>(mutex);
}

std::unique_lock<std::shared_mutex> Catalogues::WriteLock() {
  const std::lock_guard<std::mutex> first(turn);
  return std::unique_lock<std::shared_mutex>(mutex);
}

template <class Use>
void Catalogues::Read(const ListQuery* query, const Use& use) {
  Touch();
  while (true) {
    {
      const auto lock = ReadLock();
      const auto* order = content && query
                              ? std::as_const(*content).Of(query->kind->kind).OrderBy(*query->sort)
                              : nullptr;
      if (content && (order || !query)) return use(std::as_const(*content), order);
    }
    const auto lock = WriteLock();
    if (!content) Build();
    if (query) content->Of(query->kind->kind).Sort(*query->sort);
  }
}

void Catalogues::Find(const ListQuery& query, const UsePage& use) {
  Read(&query, [&](const Content& read, const Catalogue::Order* order) {
    use(Select(*order, query), read.hosts);
  });
}

Sums Catalogues::Total() {
  Sums sums;
  Read(nullptr, [&](const Content& read, const Catalogue::Order*) { sums = read.sums; });
  return sums;
}

void Catalogues::Prepare() {
  const KindInfo& machines = InfoOf(kecpp::Kind::machine);
  ListQuery query;
  query.kind = &machines;
  query.sort = FindSort(machines, "name");
  Read(&query, [](const Content&, const Catalogue::Order*) {});
}

// --- keeping -------------------------------------------------------------------------------------

template <class Object>
Row Catalogues::LinkedRow(const Object& object) {
  Row row = RowOf(object);
  if constexpr (std::is_same_v<Object, kecpp::Machine>) {
    if (content && object.host) row.host = content->HostOf(*object.host);
  }
  return row;
}

template <class Object>
void Catalogues::BuildKind() {
  content->Of(KIND_OF<Object>).Reserve(inventory.Count(KIND_OF<Object>));
  inventory.ForEach<Object>(
      [&](const Object& object) { content->Put(KIND_OF<Object>, object.key, LinkedRow(object)); });
}

// What changes while it reads is among the changes that are still to be applied.
void Catalogues::Build() {
  content.emplace();
  try {
    BuildKind<kecpp::Host>();
    BuildKind<kecpp::Machine>();
    BuildKind<kecpp::Role>();
    BuildKind<kecpp::Privilege>();
    BuildKind<kecpp::Identity>();
  } catch (...) {
    content.reset();
    throw;
  }
}

template <class Object>
std::optional<Row> Catalogues::ReadRow(const std::string& key) {
  const std::optional<Object> object = inventory.Find<Object>(key);
  if (!object) return {};
  return LinkedRow(*object);
}

std::optional<Row> Catalogues::ReadRow(const kecpp::Change& change) {
  switch (change.kind) {
    case kecpp::Kind::host:
      return ReadRow<kecpp::Host>(change.key);
    case kecpp::Kind::machine:
      return ReadRow<kecpp::Machine>(change.key);
    case kecpp::Kind::role:
      return ReadRow<kecpp::Role>(change.key);
    case kecpp::Kind::privilege:
      return ReadRow<kecpp::Privilege>(change.key);
    default:
      return ReadRow<kecpp::Identity>(change.key);
  }
}

// What the change says may be over by now: the object is looked at as it is. Adds the keys of the
// hosts that have other machines or other numbers by power now.
KnownChange Catalogues::ApplyOne(const kecpp::Change& change, std::vector<std::string>& hosts) {
  KnownChange known{change, {}, {}, {}, {}};
  std::optional<Row> row = ReadRow(change);
  const Row* former = content ? content->Of(change.kind).Find(change.key) : nullptr;
  if (row || former) known.name = (row ? *row : *former).texts.At(0);
  const bool counts = !row || !former || row->host != former->host || row->power != former->power;
  if (counts && former && former->host) hosts.push_back(former->host->first);
  if (counts && row && row->host) hosts.push_back(row->host->first);
  if (content && row) {
    known.fields = content->Put(change.kind, change.key, std::move(*row));
  } else if (content) {
    content->Erase(change.kind, change.key);
  }
  if (change.type != kecpp::Change::Type::changed) known.fields.clear();
  return known;
}

std::vector<KnownChange> Catalogues::Apply(const std::vector<kecpp::Change>& changes) {
  const auto lock = WriteLock();
  if (content) {
    for (Catalogue& catalogue : content->catalogues) catalogue.Expect(changes.size());
  }
  std::vector<KnownChange> known;
  std::vector<std::vector<std::string>> hosts(changes.size());
  known.reserve(changes.size());
  for (const kecpp::Change& change : changes) {
    known.push_back(ApplyOne(change, hosts[known.size()]));
  }
  if (content && changes.size() <= MOST_DESCRIBED) {
    for (std::size_t i = 0; i < known.size(); ++i) Describe(known[i], hosts[i]);
  }
  return known;
}

// A host that is named by machines only is in no list.
void Catalogues::Describe(KnownChange& known, const std::vector<std::string>& keys) const {
  known.item = content->ItemText(known.change.kind, known.change.key);
  known.hosts.emplace();
  for (auto key = keys.begin(); key != keys.end(); ++key) {
    if (std::find(keys.begin(), key, *key) != key) continue;
    std::string item = content->ItemText(kecpp::Kind::host, *key);
    if (!item.empty()) known.hosts->push_back(std::move(item));
  }
}

// The allocator would keep the memory of many small pieces.
void Catalogues::Forget() {
  const auto lock = WriteLock();
  content.reset();
  malloc_trim(0);
}

void Catalogues::ForgetIfUnused() {
  const bool hasContent = [this] {
    const auto lock = ReadLock();
    return content.has_value();
  }();
  if (hasContent && lastUse.IsLongAgo()) Forget();
}

}  // namespace tools::agent::api
