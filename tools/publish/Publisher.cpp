// SPDX-License-Identifier: MIT
#include "tools/publish/Publisher.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "fleet/Documents.h"
#include "fleet/Keys.h"
#include "tools/common/ObjectView.h"

namespace tools::publish {
namespace {

using namespace kecpp::fleet;
using std::chrono::milliseconds;

constexpr std::chrono::seconds kShowLifeEvery(10);  // a third of the lease
constexpr std::chrono::hours kReconcileEvery(1);
constexpr std::chrono::seconds kLongestMove(60);  // several requests at their limit
constexpr milliseconds kFirstPause(100);
constexpr milliseconds kLongestPause(5000);
constexpr milliseconds kLookForMissingEvery(200);
constexpr milliseconds kArrivalPause(5000);  // between parts of a report
constexpr milliseconds kArrivalLimit(60000);
constexpr std::size_t kBusy = 100;  // marks: the next batch is composed while one is under way

// A small transaction costs the cluster nearly as much as one with a hundred changes. So the
// publisher rests after each, in proportion to what the cluster took, and changes gather meanwhile.
constexpr int kRestShare = 2;
constexpr milliseconds kLongestRest(25);

void Append(std::vector<Mark>& to, std::vector<Mark> marks) {
  to.insert(to.end(), std::make_move_iterator(marks.begin()), std::make_move_iterator(marks.end()));
}

}  // namespace

Publisher::Publisher(const kecpp::Inventory& from, const std::string& siteName, EtcdOptions options,
                     Marks& toPublish, Counters& counts)
    : inventory(from),
      site(siteName),
      prefix(ObjectsOf(siteName)),
      marks(toPublish),
      counters(counts),
      client(std::move(options)),
      epoch(client, siteName),
      presence(client, epoch, siteName),
      composer(from, siteName, toPublish, published, counts) {}

void Publisher::Reconcile() {
  mustReconcile = true;
  marks.Wake();
}

void Publisher::SetConnected(bool connected) {
  if (isConnected.exchange(connected) != connected) marks.Wake();
}

bool Publisher::IsMoving() const {
  return Clock::now().time_since_epoch() - Clock::duration(moved) < kLongestMove;
}

void Publisher::End() {
  isEnding = true;
  marks.Wake();
}

void Publisher::Run() {
  while (!isEnding) {
    try {
      NoteMove();
      Step();
    } catch (const EtcdError& error) {
      NoteFailure(error);
    } catch (const Fenced&) {
      counters.isFenced = true;
      throw;
    }
  }
  Leave();
}

void Publisher::NoteFailure(const EtcdError& error) {
  if (isEnding) return;
  ++counters.failed;
  counters.isInTrouble = true;
  trouble.Begin(error.what());
  if (error.IsUncertain()) mustRenew = true;
  pause = std::clamp(2 * pause, kFirstPause, kLongestPause);
  const auto end = Clock::now() + pause;
  while (!isEnding && Clock::now() < end) marks.WaitForWake(end);
}

// One thing that is due, the most urgent first; or a wait until something is.
void Publisher::Step() {
  if (!hasSite) return TakeSite();
  if (mustRenew) return Renew();
  if (Clock::now() >= showLifeAt) return ShowLife();
  if (mustReconcile || Clock::now() >= reconcileAt) return ReadCluster();
  if (!doubtful.empty()) return ReadAgain();
  if (!missing.empty() && Clock::now() >= lookForMissingAt) LookForMissing();
  if (!ShowSite()) return;
  if (IsResting()) return marks.Wait(kBusy, std::min(restUntil, showLifeAt));
  const bool isSent = SendBatch();
  const bool isNews = NoteAgreement();
  if (mustRenew || !doubtful.empty()) return;
  NoteSuccess();
  if (isSent || isNews) return;
  const auto due = std::min(showLifeAt, reconcileAt);
  marks.Wait(1, missing.empty() ? due : std::min(due, lookForMissingAt));
}

void Publisher::NoteSuccess() {
  trouble.End();
  counters.isInTrouble = false;
  pause = milliseconds(0);
}

void Publisher::TakeSite() {
  epoch.TakeOver();
  hasSite = true;
  mustReconcile = true;
}

void Publisher::Renew() {
  GiveBack(next);
  if (!epoch.Renew()) mustReconcile = true;  // the cluster was restored
  ++counters.renewed;
  mustRenew = false;
  showLifeAt = {};
}

// --- comparing -----------------------------------------------------------------------------------

// Nothing is under way. What is read is compared by looking at each object as at any other change:
// one that the cluster has and the inventory does not is removed then, if it is still so. While the
// inventory may not have all yet, that is put off.
void Publisher::ReadCluster() {
  GiveBack(next);
  doubtful.clear();
  if (mustReconcile.exchange(false)) isSyncing = true;
  if (!ShowSite()) {
    mustReconcile = true;
    return;
  }
  published.Clear();
  try {
    ReadPrefix(client, prefix, [&](KeyValue&& entry) {
      NoteMove();
      published.Put(entry.key.substr(prefix.size()),
                    {entry.revision, DigestOf(LastingPart(entry.value))});
    });
  } catch (const EtcdError&) {
    mustReconcile = true;
    throw;
  }
  missing.clear();
  published.ForEach([&](const std::string& part) { missing.insert(part); });
  MarkInventory();
  missingSince = lastArrival = isSyncing ? Clock::now() : Clock::time_point();
  AgreeLater();
  reconcileAt = Clock::now() + kReconcileEvery;
  counters.objects = published.Size();
}

void Publisher::MarkInventory() {
  const std::int64_t now = NowMilliseconds();
  const auto mark = [&](kecpp::Kind kind) {
    return [&, kind](const auto& object) {
      const std::string part = ObjectPart(kind, object.key);
      missing.erase(part);
      marks.Add(part, now);
    };
  };
  inventory.ForEach<kecpp::Host>(mark(kecpp::Kind::host));
  inventory.ForEach<kecpp::Machine>(mark(kecpp::Kind::machine));
  inventory.ForEach<kecpp::Role>(mark(kecpp::Kind::role));
  inventory.ForEach<kecpp::Privilege>(mark(kecpp::Kind::privilege));
  inventory.ForEach<kecpp::Identity>(mark(kecpp::Kind::identity));
}

// A daemon may report in parts and does not say which is the last: what no part has brought for
// five seconds has gone. What comes is marked as any change is.
void Publisher::LookForMissing() {
  lookForMissingAt = Clock::now() + kLookForMissingEvery;
  for (auto part = missing.begin(); part != missing.end();) {
    const auto name = ParseObjectPart(*part);
    Object object;
    const bool hasCome = name && FindObject(inventory, name->kind, name->key, object);
    if (hasCome) lastArrival = Clock::now();
    part = hasCome ? missing.erase(part) : std::next(part);
  }
  const auto now = Clock::now();
  if (now < lastArrival + kArrivalPause && now < missingSince + kArrivalLimit) return;
  for (const std::string& part : missing) marks.Add(part, NowMilliseconds());
  missing.clear();
  AgreeLater();
}

// What the cluster has of the objects whose last write is in doubt.
void Publisher::ReadAgain() {
  constexpr std::size_t kMost = 100;
  const std::size_t count = std::min(kMost, doubtful.size());
  Transaction look;
  for (std::size_t i = 0; i < count; ++i) look.Get(prefix + doubtful[i].part);
  const TransactionResult seen = ReadResult(client.Read(Transaction::kPath, look.Text()));
  if (seen.read.size() != count) {
    throw EtcdError(EtcdError::Kind::notDone, 0, "the cluster does not answer every question");
  }
  for (std::size_t i = 0; i < count; ++i) {
    const auto& found = seen.read[i];
    if (found) {
      published.Put(doubtful[i].part, {found->revision, DigestOf(LastingPart(found->value))});
    } else {
      published.Remove(doubtful[i].part);
    }
  }
  const auto end = doubtful.begin() + static_cast<std::ptrdiff_t>(count);
  marks.Return({std::make_move_iterator(doubtful.begin()), std::make_move_iterator(end)});
  doubtful.erase(doubtful.begin(), end);
  if (agreementAt != 0) AgreeLater();
}

void Publisher::AgreeLater() {
  agreementAt = marks.Place();
}

// True when everything that was to be compared has just become the same.
bool Publisher::NoteAgreement() {
  if (agreementAt == 0 || !doubtful.empty() || !missing.empty() || !marks.HasPassed(agreementAt)) {
    return false;
  }
  for (const Write& write : next.writes) {
    if (write.mark.place < agreementAt) return false;
  }
  agreementAt = 0;
  isSyncing = false;
  counters.agreed = NowMilliseconds();
  ++counters.agreements;
  return true;
}

// --- writing -------------------------------------------------------------------------------------

bool Publisher::IsResting() const {
  return next.Empty() && marks.Size() < kBusy && Clock::now() < restUntil;
}

// False when there is nothing to write.
bool Publisher::SendBatch() {
  Batch batch = next.Empty() ? composer.Compose(epoch, {}, [] {}) : std::exchange(next, {});
  if (batch.Empty()) return false;
  next = Send(std::move(batch));
  return true;
}

// Gives the next batch when there is enough for one.
Batch Publisher::Send(Batch batch) {
  Batch following;
  try {
    const auto begin = Clock::now();
    client.Begin(Transaction::kPath, batch.transaction.Text());
    if (marks.Size() >= kBusy) {
      following = composer.Compose(epoch, batch, [this] { client.Advance(); });
    }
    const TransactionResult result = ReadResult(client.Finish());
    const auto end = Clock::now();
    restUntil = end + std::min<Clock::duration>(kRestShare * (end - begin), kLongestRest);
    NoteRevision(result.revision);
    if (result.succeeded) {
      Acknowledge(batch, result.revision);
    } else {
      ++counters.contested;
      if (!epoch.IsHeld(result)) mustRenew = true;
      Doubt(batch);
    }
  } catch (const EtcdError& error) {
    GiveBack(following);
    if (error.IsTooLarge() && !composer.Shrink()) {
      // It would keep all others from being written. What changes of it is tried again.
      trouble.Begin(batch.writes.front().mark.part + ": " + error.what());
      return {};
    }
    if (error.IsUncertain()) {
      Doubt(batch);
    } else {
      GiveBack(batch);
    }
    throw;
  }
  return following;
}

// A cluster that was restored has lost revisions that were there: nothing that is known of it
// holds.
void Publisher::NoteRevision(std::int64_t revision) {
  if (revision < highest) mustReconcile = true;
  highest = revision;
}

void Publisher::Acknowledge(const Batch& batch, std::int64_t revision) {
  for (const Write& write : batch.writes) {
    if (write.isPut) {
      published.Put(write.mark.part, {revision, write.digest});
      ++counters.put;
    } else {
      published.Remove(write.mark.part);
      ++counters.removed;
    }
  }
  ++counters.transactions;
  counters.objects = published.Size();
}

void Publisher::Doubt(Batch& batch) {
  Append(doubtful, batch.TakeMarks());
}

void Publisher::GiveBack(Batch& batch) {
  marks.Return(batch.TakeMarks());
  batch = {};
  if (agreementAt != 0) AgreeLater();
}

// --- saying how it is ----------------------------------------------------------------------------

void Publisher::ShowLife() {
  if (!presence.ShowLife()) {
    mustRenew = true;
    return;
  }
  showLifeAt = Clock::now() + kShowLifeEvery;
  isShown = isShown && shown.objects == counters.objects;  // their number is not news more often
}

// False when the site is not this publisher's any more.
bool Publisher::ShowSite() {
  SiteDocument now;
  now.agent = KECPP_TOOLS_VERSION;
  now.epoch = epoch.Number();
  now.isComplete = !isSyncing;
  now.isConnected = isConnected;
  now.objects = counters.objects;
  if (counters.agreed != 0) now.agreed = TimeText(counters.agreed);
  const bool isSame = isShown && shown.epoch == now.epoch && shown.agreed == now.agreed &&
                      shown.isComplete == now.isComplete && shown.isConnected == now.isConnected;
  if (isSame) return true;
  isShown = presence.Show(now);
  mustRenew = !isShown;
  shown = now;
  return isShown;
}

// Not at any price: the lease ends by itself.
void Publisher::Leave() {
  try {
    presence.Leave();
  } catch (const EtcdError&) {
  }
}

}  // namespace tools::publish
