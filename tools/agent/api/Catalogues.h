// SPDX-License-Identifier: MIT
//
// The rows of all kinds, with sums over them: made when the first request needs them, kept true by
// the changes that are given to it, and forgotten when nobody has asked for a minute.
//
// Thread safety: any thread. Locks: `turn`, `mutex`, then those of the inventory.
#ifndef KECPP_TOOLS_AGENT_API_CATALOGUES_H
#define KECPP_TOOLS_AGENT_API_CATALOGUES_H

#include <kecpp/inventory.h>

#include <array>
#include <functional>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <vector>

#include "tools/agent/api/Catalogue.h"
#include "tools/agent/api/ListQuery.h"

namespace tools::agent::api {

// By the order of Power and of Health.
struct Sums {
  std::size_t hosts = 0;
  std::size_t machines = 0;
  std::array<std::size_t, 4> hostsByHealth = {};
  std::array<std::size_t, 4> machinesByPower = {};
  std::array<std::size_t, 4> machinesByHealth = {};
};

// A change, and what the rows said of it.
struct KnownChange {
  kecpp::Change change;
  std::string name;                 // empty for an object that has none, or had none that is known
  std::vector<const char*> fields;  // that differ; empty when there were no rows

  // What lists show after all changes that were taken in together, as JSON: of the object, and of
  // each host whose numbers of machines it changed. Empty where that is not known.
  std::string item;
  std::optional<std::vector<std::string>> hosts;
};

class Catalogues {
 public:
  // The inventory outlives the object.
  explicit Catalogues(const kecpp::Inventory& inventory);

  // Takes in changes, in the order in which they are to be told. O(changes), whether there are rows
  // or not. Many at once are not described by items: who shows them asks for what is in view.
  std::vector<KnownChange> Apply(const std::vector<kecpp::Change>& changes);

  // Calls `use` with the page, whose rows are good until it returns; under the lock.
  using UsePage = std::function<void(const Page& page, const HostTable& hosts)>;
  void Find(const ListQuery& query, const UsePage& use);

  Sums Total();

  // Reads the inventory, unless there are rows, and sorts machines by name, as most lists are asked
  // for first.
  void Prepare();

  // Somebody is still interested.
  void Touch() { lastUse.Touch(); }

  // Forgets the rows: the next request reads all objects.
  void Forget();

  // Likewise, when nobody has been interested for a minute.
  void ForgetIfUnused();

 private:
  struct Content {
    std::array<Catalogue, KINDS.size()> catalogues;
    HostTable hosts;
    Sums sums;

    Catalogue& Of(kecpp::Kind kind) { return catalogues[static_cast<std::size_t>(kind)]; }
    const Catalogue& Of(kecpp::Kind kind) const {
      return catalogues[static_cast<std::size_t>(kind)];
    }

    // Gives the names of the fields that differ from those of the row that was there.
    std::vector<const char*> Put(kecpp::Kind kind, const std::string& key, Row row);
    void Erase(kecpp::Kind kind, const std::string& key);

    // The entry of a host, a new one when it is not known.
    HostTable::value_type* HostOf(const std::string& key);

    // What lists show of an object, as JSON; empty for one that is not there.
    std::string ItemText(kecpp::Kind kind, const std::string& key) const;

   private:
    void Count(kecpp::Kind kind, const Row& row, std::size_t one);
    void NameHost(const std::string& key, bool isThere, std::string_view name);
    void Release(HostTable::value_type* host);
  };

  // Calls `use` with the content, which has the order that the query needs, if there is one.
  template <class Use>
  void Read(const ListQuery* query, const Use& use);
  void Build();
  template <class Object>
  void BuildKind();
  template <class Object>
  std::optional<Row> ReadRow(const std::string& key);
  std::optional<Row> ReadRow(const kecpp::Change& change);
  KnownChange ApplyOne(const kecpp::Change& change, std::vector<std::string>& hosts);
  void Describe(KnownChange& known, const std::vector<std::string>& hosts) const;
  template <class Object>
  Row LinkedRow(const Object& object);

  std::shared_lock<std::shared_mutex> ReadLock();
  std::unique_lock<std::shared_mutex> WriteLock();

  const kecpp::Inventory& inventory;
  LastUse lastUse;
  std::mutex turn;  // taken to take `mutex`: readers that never cease would keep writers out
  std::shared_mutex mutex;
  std::optional<Content> content;  // guarded by `mutex`
};

}  // namespace tools::agent::api

#endif
