// SPDX-License-Identifier: MIT
//
// Keeps one site in the cluster as the inventory is: takes the site over, compares everything at
// the start, after each new connection to the daemon and every hour, and writes what changes.
//
// Every write compares the revision that it replaces and the epoch. After a request whose outcome
// is not known the epoch is taken again, so that the request cannot be carried out later, and what
// it was about is read and written as it is then.
//
// Thread safety: Run on one thread; the others from any.
#ifndef KECPP_TOOLS_PUBLISH_PUBLISHER_H
#define KECPP_TOOLS_PUBLISH_PUBLISHER_H

#include <kecpp/inventory.h>

#include <atomic>
#include <chrono>
#include <string>
#include <unordered_set>
#include <vector>

#include "fleet/EtcdClient.h"
#include "tools/publish/Composer.h"
#include "tools/publish/Counters.h"
#include "tools/publish/Epoch.h"
#include "tools/publish/Marks.h"
#include "tools/publish/Presence.h"
#include "tools/publish/Published.h"
#include "tools/publish/Trouble.h"

namespace tools::publish {

class Publisher {
 public:
  // Everything outlives the object.
  Publisher(const kecpp::Inventory& inventory, const std::string& site,
            kecpp::fleet::EtcdOptions options, Marks& marks, Counters& counters);

  // Publishes until it is ended. The inventory has been read before. Throws Fenced when another
  // publisher has the site.
  void Run();

  // Everything will be compared with the cluster: the daemon has another connection.
  void Reconcile();
  void SetConnected(bool isConnected);

  // False when Run has not come on for a minute, which no cluster and no wait make it.
  bool IsMoving() const;

  // Lets Run return when its request is done; Cut at once.
  void End();
  void Cut() { client.Cut(); }

 private:
  using Clock = std::chrono::steady_clock;

  void Step();
  void NoteMove() { moved = Clock::now().time_since_epoch().count(); }
  void TakeSite();
  void Renew();
  void ReadCluster();
  void MarkInventory();
  void LookForMissing();
  void ReadAgain();
  bool IsResting() const;
  bool SendBatch();
  Batch Send(Batch batch);
  void NoteRevision(std::int64_t revision);
  void Acknowledge(const Batch& batch, std::int64_t revision);
  void Doubt(Batch& batch);
  void GiveBack(Batch& batch);
  bool NoteAgreement();
  void ShowLife();
  bool ShowSite();
  void NoteSuccess();
  void AgreeLater();
  void NoteFailure(const kecpp::fleet::EtcdError& error);
  void Leave();

  const kecpp::Inventory& inventory;
  const std::string site;
  const std::string prefix;
  Marks& marks;
  Counters& counters;
  kecpp::fleet::EtcdClient client;
  Epoch epoch;
  Presence presence;
  Published published;
  Composer composer;
  Trouble trouble;

  std::atomic<bool> isEnding{false};
  std::atomic<bool> isConnected{true};
  std::atomic<bool> mustReconcile{true};
  std::atomic<Clock::rep> moved{Clock::now().time_since_epoch().count()};

  // Of Run's thread:
  bool hasSite = false;
  bool isSyncing = true;          // the inventory and the cluster are being compared
  bool mustRenew = false;         // the outcome of a request is not known, or the epoch was changed
  std::vector<Mark> doubtful;     // what the cluster has of these is not known
  Batch next;                     // composed while the one before was under way
  std::int64_t highest = 0;       // revision of the cluster
  std::uint64_t agreementAt = 0;  // everything is compared when marks have passed it; 0: it was
  std::chrono::milliseconds pause{0};
  Clock::time_point restUntil{};
  Clock::time_point showLifeAt{};
  Clock::time_point reconcileAt{};

  // What the cluster has and the inventory has not, since the comparison began; until it comes or
  // is taken for gone.
  std::unordered_set<std::string> missing;
  Clock::time_point missingSince{};
  Clock::time_point lastArrival{};
  Clock::time_point lookForMissingAt{};

  kecpp::fleet::SiteDocument shown;  // the last site/SITE
  bool isShown = false;
};

}  // namespace tools::publish

#endif
