// SPDX-License-Identifier: MIT
//
// The inventories of many sites, as kecpp-publish keeps them in an etcd cluster: read as one
// snapshot, then kept true by a watch.
//
//   kecpp::Fleet fleet({"http://etcd-1:2379,http://etcd-2:2379"});  // filled, or kecpp::Error
//   for (const kecpp::Site& site : fleet.Sites()) std::cout << site.name << '\n';
//   kecpp::FleetFollower changes = fleet.Follow();
//   while (changes.Wait(std::chrono::minutes(1))) {
//     for (const kecpp::FleetChange& change : changes.Next()) ...
//   }
//
// A site is what one management daemon manages. Its objects have the same values as in
// kecpp::Inventory; the site's name and the key lead to one. Link with -lkecpp-inventory. Programs
// of this version run with every later version 1.x.
//
// Reconnecting: a background thread watches one member of the cluster and goes on at another one,
// without a gap, when the member ends, falls silent for five seconds or loses the majority. While
// none answers, everything stays as last known, and State() says so; attempts come after pauses
// that double from 0.1 to 5 seconds. When the cluster no longer has the changes from there on
// (compaction), or was restored, everything is read again, and followers get what differs.
//
// What is in the cluster is not trusted: a document that is too long, broken or of another version
// is as if it were not there; State() counts it.
//
// Threads: every operation may be called from any thread. Nothing else may run on a Fleet while it
// is destroyed, except FleetFollowers' Wait, which returns then. Texts: UTF-8; keys and names of
// sites are any bytes.
#ifndef KECPP_FLEET_H
#define KECPP_FLEET_H

#include <kecpp/inventory.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kecpp {

// --- connecting ----------------------------------------------------------------------------------

// How a Fleet is made.
struct FleetOptions {
  // Members of one etcd cluster: "http(s)://HOST:PORT[,...]". Other members are tried when one
  // fails.
  std::string members;

  // The sites that are read, as a shell's pattern ("*", "?", "[...]") for the whole name; empty:
  // all. With a name without these characters nothing else of the cluster is asked for, so a user
  // who may read that site only is enough.
  std::string sites{};

  std::string user{};  // of the cluster; empty: without a login
  std::string password{};

  // For https: files in PEM form. Empty: the system's authorities; no certificate of one's own.
  std::string authorities{};
  std::string certificate{};
  std::string key{};

  // True: the constructor returns at once, and the background thread goes on trying to connect.
  bool connectInBackground = false;

  // How long the constructor may take; zero: until everything is read, or the first attempt fails.
  std::chrono::milliseconds connectTimeout{0};
};

// How the connection to the cluster is.
struct FleetStatus {
  enum class State {
    connecting,  // nothing was read whole yet
    connected,
    lost,  // no member answers; everything is as last known
  };

  State state = State::connecting;
  std::string reason;                           // why it is lost, or not made yet; else empty
  std::chrono::system_clock::time_point since;  // of this state
  unsigned long long readings = 0;              // how often everything was read whole
  unsigned long long skipped = 0;               // documents that could not be read
  std::string lastSkipped;                      // the last one's key in the cluster, and why
};

// --- values --------------------------------------------------------------------------------------

// What is known of a site besides its objects.
struct Site {
  // Of its objects in the cluster: being compared with the daemon's, or complete.
  enum class State { syncing, complete };

  std::string name;
  State state = State::syncing;
  bool isLive = false;           // its publisher runs; false at the latest 30 s after its end
  bool isConnected = false;      // its publisher to the daemon
  unsigned long long epoch = 0;  // of its publisher; a later publisher has a larger one
  std::string agent;             // its publisher's version
  std::size_t objects = 0;       // of all kinds, as this reader has them

  // When its publisher last compared everything, by its clock; the epoch: never.
  std::chrono::system_clock::time_point agreed;

  // Until when the objects are known to be true: now while IsTrue and the cluster answers;
  // otherwise the latest of the last agreement, the last change of an object and, when this reader
  // was there, the end of that. The epoch when nothing of this is known.
  std::chrono::system_clock::time_point asOf;

  // The objects are true within a second.
  bool IsTrue() const { return isLive && isConnected && state == State::complete; }
};

// --- changes -------------------------------------------------------------------------------------

// One entry of a FleetFollower: what became of which object, or of a site.
struct FleetChange {
  Change::Type type;
  std::string site;
  std::optional<Kind> kind;  // none: of the site itself, all of Site but `objects` and `asOf`
  std::string key;           // empty for a site
};

// What changed since its reader looked last: as Follower, for the objects of all sites and for the
// sites. A new one begins with all that is known, as `added`, each site before its objects; before
// everything was read once it has nothing.
//
// One thread waits and takes; any other may Close. It may outlive its Fleet.
class KECPP_INVENTORY_API FleetFollower {
 public:
  FleetFollower(FleetFollower&&) noexcept;
  FleetFollower& operator=(FleetFollower&&) noexcept;
  ~FleetFollower();

  // Waits until Next has something, at most for `limit`. False when the time is over, and at once
  // when it is closed or its Fleet has gone.
  bool Wait(std::chrono::milliseconds limit);

  // Up to `max` changes, oldest first, without waiting. Empty when there are none.
  std::vector<FleetChange> Next(std::size_t max = 1000);

  // Lets Wait go. From then on there is nothing to take.
  void Close();
  bool Closed() const;  // by Close, or with its Fleet

  class Impl;

 private:
  friend class Fleet;
  explicit FleetFollower(std::shared_ptr<Impl> made);

  std::shared_ptr<Impl> impl;
};

// --- the fleet -----------------------------------------------------------------------------------

// The inventories of all sites; see the head of this file.
class KECPP_INVENTORY_API Fleet {
 public:
  // Connects and reads everything. Throws Error.
  explicit Fleet(const FleetOptions& options);
  // Ends the thread at once, unless the system looks up a host's name.
  ~Fleet();
  Fleet(const Fleet&) = delete;
  Fleet& operator=(const Fleet&) = delete;

  // Ends the background thread and lets every wait return: from then on nothing is followed,
  // State() says lost, and what is known stays readable.
  void Close();

  FleetStatus State() const;
  // Waits until the state is another than `seen` has, at most for `limit`; true when it is.
  bool WaitForState(const FleetStatus& seen, std::chrono::milliseconds limit) const;

  // All sites, by name.
  std::vector<Site> Sites() const;
  std::optional<Site> FindSite(const std::string& site) const;

  // All objects of a kind of a site, sorted by key; empty without such a site. The fleet is kept
  // from applying changes for some hundred objects at a time only.
  std::vector<Host> Hosts(const std::string& site) const { return All<Host>(site); }
  std::vector<Machine> Machines(const std::string& site) const { return All<Machine>(site); }
  std::vector<Role> Roles(const std::string& site) const { return All<Role>(site); }
  std::vector<Privilege> Privileges(const std::string& site) const { return All<Privilege>(site); }
  std::vector<Identity> Identities(const std::string& site) const { return All<Identity>(site); }

  // One object. O(log n) and its links.
  std::optional<Host> FindHost(const std::string& site, const std::string& key) const {
    return Find<Host>(site, key);
  }
  std::optional<Machine> FindMachine(const std::string& site, const std::string& key) const {
    return Find<Machine>(site, key);
  }
  std::optional<Role> FindRole(const std::string& site, const std::string& key) const {
    return Find<Role>(site, key);
  }
  std::optional<Privilege> FindPrivilege(const std::string& site, const std::string& key) const {
    return Find<Privilege>(site, key);
  }
  std::optional<Identity> FindIdentity(const std::string& site, const std::string& key) const {
    return Find<Identity>(site, key);
  }

  // Any kind: `Object` is Host, Machine, Role, Privilege or Identity.
  template <class Object>
  std::vector<Object> All(const std::string& site) const;
  template <class Object>
  std::optional<Object> Find(const std::string& site, const std::string& key) const;

  // Calls `visit`, without a lock, with a copy of every object of a kind, by site and key: each
  // that is there from the first call to the last once, one that comes or goes meanwhile once or
  // not at all. What `visit` throws ends the visit.
  template <class Object>
  void ForEach(
      const std::function<void(const std::string& site, const Object& object)>& visit) const;

  // The objects of a kind, of one site or of all; those that have arrived while everything is
  // being read.
  std::size_t Count(const std::string& site, Kind kind) const;
  std::size_t Count(Kind kind) const;

  FleetFollower Follow() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl;
};

}  // namespace kecpp

#endif
