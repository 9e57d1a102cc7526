// SPDX-License-Identifier: MIT
#include "datasync/StaleObjects.h"

#include <algorithm>
#include <utility>

#include "datasync/PropertyList.h"
#include "instance/KECacheGuard.h"
#include "instance/KEDataIterator.h"

namespace KE::Service {

using KE::Instance::kObjectKinds;
using KE::Instance::ObjectKind;

namespace {

// However much the server has to say: a report is over then.
constexpr std::chrono::seconds kLongestReport{60};

constexpr StaleObjects::Classes Bit(std::size_t index) {
  return 1U << index;
}

}  // namespace

StaleObjects::Classes StaleObjects::ClassOf(const KELib::KEString& objectType) {
  const ObjectKind& kind = KE::Instance::KindOf(objectType);
  return kind.sweep == KE::Instance::Sweep::byReport ? Bit(kind.Index()) : 0;
}

StaleObjects::Classes StaleObjects::ClassesOf(const PropertyList& list) {
  Classes classes = 0;
  for (const auto& set : list.propertySets) classes |= ClassOf(list.At(set.type));
  return classes;
}

// Collects what is cached and not in `except`.
void StaleObjects::Collect(unsigned int index, KE::Instance::KETypeCache& cache, const Ids& except,
                           Ids& ids) {
  ids.clear();
  KE::Instance::KECacheGuard caches(&cache);
  caches.LockKinds(kObjectKinds[index].group);
  KELib::KEString type(kObjectKinds[index].cacheClass);
  KE::Instance::KEDataCache* data = cache.GetDataCache(type);
  if (data == nullptr) return;
  for (auto it = data->Iterator(); !it.End(); ++it) {
    std::string id = it->key.Cstr();
    if (except.count(id) == 0) ids.insert(std::move(id));
  }
}

void StaleObjects::Open(unsigned int index, SyncTime now) {
  Report& report = reports[index];
  open |= Bit(index);
  report.batch.since = report.news = now;
  report.orphans = false;
  report.awaited = true;
}

// The filters of a report that is open already have more to say when another one joins them. In the
// report's first minute that is waited for; a later one must not keep it open for ever.
void StaleObjects::Join(Report& report, SyncTime now) {
  report.covered = false;
  if (now - report.batch.since >= kLongestReport) return;
  report.awaited = true;
  report.silences = 0;
}

// Everything was asked for while the report was open: the server begins again.
void StaleObjects::AskAgain(Report& report, SyncTime now) {
  report.next.begun = false;
  report.next.since = report.news = now;
  report.orphans = false;
  report.awaited = true;
  report.silences = 0;
}

// What was missing in the first batch has gone, or was named.
void StaleObjects::Advance(unsigned int index) {
  Report& report = reports[index];
  report.over = false;
  report.batch = std::exchange(report.next, Batch());
  if (report.batch.missing.empty()) Close(index);
}

void StaleObjects::Close(unsigned int index) {
  const bool orphans = reports[index].orphans;
  reports[index] = Report();
  reports[index].orphans = orphans;
  open &= ~Bit(index);
}

bool StaleObjects::FilterCame(Classes its, Classes others, KE::Instance::KETypeCache& cache) {
  const SyncTime now = GetSyncSeams().now();
  bool needsEverything = false;
  for (unsigned int i = 0; i < kCount; ++i) {
    if ((its & Bit(i)) == 0) continue;
    Report& report = reports[i];
    if (IsOpen(Bit(i))) {
      Join(report, now);
    } else if (report.orphans) {
      Collect(i, cache, {}, report.batch.missing);
      Open(i, now);
      if (report.batch.missing.empty()) {
        Close(i);
        continue;
      }
      if ((others & Bit(i)) != 0) needsEverything = true;
    }
  }
  return needsEverything;
}

void StaleObjects::FilterWent(Classes its, Classes others) {
  for (unsigned int i = 0; i < kCount; ++i) {
    if ((its & Bit(i)) == 0) continue;
    reports[i].orphans = true;
    if ((others & Bit(i)) == 0) Close(i);
  }
}

void StaleObjects::BeginWait(bool everything, Classes watched, KE::Instance::KETypeCache& cache) {
  filterSets = false;
  named = 0;
  if (everything) {
    const SyncTime now = GetSyncSeams().now();
    for (unsigned int i = 0; i < kCount; ++i) {
      if ((watched & Bit(i)) == 0) continue;
      Report& report = reports[i];
      if (IsOpen(Bit(i))) {
        Collect(i, cache, report.batch.missing, report.next.missing);
        AskAgain(report, now);
      } else {
        Collect(i, cache, {}, report.batch.missing);
        Open(i, now);
      }
      if (report.batch.missing.empty()) Advance(i);
    }
    expecting = false;
  }
  for (unsigned int i = 0; i < kCount; ++i) reports[i].covered = IsOpen(Bit(i));
  brief = AwaitsPart();
}

void StaleObjects::Strike(const KE::Stub::ManagedObjectReference& object) {
  const std::size_t index = KE::Instance::KindOf(object.type).Index();
  if (!IsOpen(Bit(index))) return;
  Report& report = reports[index];
  const std::string id = object.value.Cstr();
  if (report.batch.missing.erase(id) + report.next.missing.erase(id) > 0) report.struck = true;
}

// Until everything was asked for, it is not known what is missing.
bool StaleObjects::IsPending(unsigned int index) const {
  return IsOpen(Bit(index)) && !reports[index].over && !expecting;
}

void StaleObjects::NotePart(Report& report, SyncTime now) {
  report.awaited = false;
  for (Batch* batch : {&report.batch, &report.next}) {
    if (batch->begun || batch->missing.empty()) continue;
    batch->begun = true;
    batch->since = now;
  }
}

// Under constant change: the first batch has had its time, and nothing of a report comes any more.
bool StaleObjects::IsDue(const Report& report, SyncTime now) {
  return !report.awaited && now - report.batch.since >= kLongestReport &&
         now - report.news >= std::chrono::milliseconds(kNextPartMs);
}

// All that is missing is stale.
void StaleObjects::EndInSilence(Report& report) {
  report.batch.missing.merge(report.next.missing);
  report.over = true;
}

void StaleObjects::EndAnswer(bool advanced) {
  const SyncTime now = GetSyncSeams().now();
  for (unsigned int i = 0; i < kCount; ++i) {
    if (!IsPending(i)) continue;
    Report& report = reports[i];
    if (std::exchange(report.struck, false)) report.news = now;
    if (advanced && filterSets && (report.covered || (named & Bit(i)) != 0)) NotePart(report, now);
    if (report.batch.missing.empty()) {
      Advance(i);
    } else if (IsDue(report, now)) {
      report.over = true;
    }
  }
}

void StaleObjects::EndSilence() {
  const SyncTime now = GetSyncSeams().now();
  for (unsigned int i = 0; i < kCount; ++i) {
    Report& report = reports[i];
    if (!IsPending(i) || !report.covered) continue;
    if (!report.awaited) {
      EndInSilence(report);
    } else if (!brief && ++report.silences > 1 &&
               now - std::max(report.batch.since, report.next.since) >= kLongestReport) {
      EndInSilence(report);
    }
  }
}

bool StaleObjects::AwaitsPart() const {
  for (unsigned int i = 0; i < kCount; ++i) {
    if (IsPending(i) && !reports[i].awaited) return true;
  }
  return false;
}

bool StaleObjects::AwaitsBegin() const {
  for (unsigned int i = 0; i < kCount; ++i) {
    if (IsPending(i) && reports[i].awaited) return true;
  }
  return false;
}

const ObjectKind* StaleObjects::StaleKind() {
  for (unsigned int i = 0; i < kCount; ++i) {
    if (!reports[i].over) continue;
    if (!reports[i].batch.missing.empty()) return &kObjectKinds[i];
    Advance(i);
  }
  return nullptr;
}

void StaleObjects::TakeStale(const ObjectKind& kind, KELib::KEString& id) {
  Ids& missing = reports[kind.Index()].batch.missing;
  id = missing.begin()->c_str();
  missing.erase(missing.begin());
}

}  // namespace KE::Service
