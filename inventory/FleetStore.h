// SPDX-License-Identifier: MIT
//
// What a Fleet knows: sites, their objects, the links that are derived from them, and the followers
// that are given what changes.
//
// Thread safety: any thread. One mutex guards everything, the followers' entries too; nothing waits
//   on the network or calls a program's code under it. It is held for some hundred objects at most,
//   once for each site's objects at the end of a reading.
// Complexity: O(log n) an object and a link.
#ifndef KECPP_INVENTORY_FLEETSTORE_H
#define KECPP_INVENTORY_FLEETSTORE_H

#include <kecpp/fleet.h>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "fleet/Documents.h"

namespace kecpp {

// One thing that was read in the cluster. Without a value it is not there, or cannot be read.
struct ObjectNews {
  Kind kind;
  std::string key;
  std::optional<fleet::Object> object;
  std::int64_t changed = 0;  // milliseconds since 1970
};
struct SiteNews {
  std::optional<fleet::SiteDocument> document;
};
struct LifeNews {
  bool isLive;
};
struct FleetNews {
  std::string site;
  std::variant<ObjectNews, SiteNews, LifeNews> what;
};

// A place in the order of all that is known: by site; the site itself, then its objects by kind and
// key.
struct FleetPlace {
  std::string site;
  int stage = -1;  // -1: before the site itself; 0: the site; from 1 on: its kinds
  std::string key;

  bool IsBehind(const FleetChange& change) const;  // or at it
};

class FleetStore {
 public:
  using Clock = std::chrono::system_clock;

  // Takes over what is there, each at most some hundred at a time.
  void Apply(std::vector<FleetNews>&& news);

  // What is not applied between the two is gone in the end. The first one lets followers begin. A
  // reading that is not ended counts for nothing; another one may begin.
  void BeginReading();
  void EndReading();

  std::vector<Site> Sites() const;
  std::optional<Site> FindSite(const std::string& name) const;
  std::optional<fleet::Object> Find(const std::string& site, Kind kind,
                                    const std::string& key) const;
  std::size_t Count(const std::string& site, Kind kind) const;
  std::size_t Count(Kind kind) const;

  // The next objects of a kind of a site behind `after`, by key, at most `most`; from the first
  // one without `after`.
  std::vector<fleet::Object> Next(const std::string& site, Kind kind,
                                  const std::optional<std::string>& after, std::size_t most) const;
  // The first site behind that one.
  std::optional<std::string> SiteAfter(const std::optional<std::string>& after) const;

  // Adds the follower. It begins with all that is known.
  void Add(const std::shared_ptr<FleetFollower::Impl>& follower);
  // Closes the followers, and those that are added from now on.
  void Close();

  // Forgets what is known and closes the followers.
  void Clear();

 private:
  friend class FleetFollower::Impl;

  struct Held {
    fleet::Object object;  // without derived links
    unsigned reading;      // the last one that it was found in, or that began before it came
  };
  using Objects = std::map<std::string, Held>;
  using Keys = std::set<std::string>;
  struct Record {
    std::optional<fleet::SiteDocument> document;
    unsigned documentReading = 0;
    bool isLive = false;
    unsigned lifeReading = 0;
    std::int64_t changed = 0;        // the latest of an object, milliseconds since 1970
    Clock::time_point trueUntil{};   // when this reader learned that it is no longer
    std::array<Objects, 5> objects;  // by Kind
    std::array<std::map<std::string, Keys>, 5> links;  // by kind and key of what they lead to

    bool IsEmpty() const;
    std::size_t Size() const;
  };
  using Records = std::map<std::string, Record>;

  void ApplyNoLock(FleetNews&& news);
  void ApplyObjectNoLock(Records::iterator site, ObjectNews&& news);
  void ChangeSiteNoLock(Records::iterator site, const std::function<void(Record&)>& change);
  void ChangeLinksNoLock(Records::iterator site, const std::string& key,
                         const fleet::Object* before, const fleet::Object* now);
  void RemoveUnreadNoLock(Records::iterator site);
  void CloseFollowersNoLock();
  void NoteNoLock(Change::Type type, const std::string& site, std::optional<Kind> kind,
                  const std::string& key);
  void WakeNoLock();
  Site SiteNoLock(const std::string& name, const Record& record) const;
  static fleet::Object WithLinks(const Record& record, const Held& held);
  // The next entries behind `place`, at most `most`, which it is moved to.
  std::vector<FleetChange> WalkNoLock(FleetPlace& place, std::size_t most) const;

  mutable std::mutex mutex;
  Records sites;  // guarded by `mutex`, like all below
  unsigned reading = 0;
  bool isFilled = false;  // everything was read once
  bool isClosed = false;
  std::vector<std::weak_ptr<FleetFollower::Impl>> followers;
};

}  // namespace kecpp

#endif
