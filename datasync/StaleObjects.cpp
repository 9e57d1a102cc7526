// SPDX-License-Identifier: MIT
#include "datasync/StaleObjects.h"

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

void StaleObjects::Collect(unsigned int index, KE::Instance::KETypeCache& cache, Ids& ids) {
  ids.clear();
  KE::Instance::KECacheGuard caches(&cache);
  caches.LockKinds(kObjectKinds[index].group);
  KELib::KEString type(kObjectKinds[index].cacheClass);
  KE::Instance::KEDataCache* data = cache.GetDataCache(type);
  if (data == nullptr) return;
  for (auto it = data->Iterator(); !it.End(); ++it) ids.emplace(it->key.Cstr());
}

// The filters of a report that is open already have more to say when another one joins them.
void StaleObjects::Open(unsigned int index) {
  Report& report = reports[index];
  open |= Bit(index);
  report.orphans = report.covered = report.begun = report.over = false;
  report.silences = 0;
  report.since = GetSyncSeams().now();
}

void StaleObjects::Close(unsigned int index) {
  const bool orphans = reports[index].orphans;
  reports[index] = Report();
  reports[index].orphans = orphans;
  open &= ~Bit(index);
}

bool StaleObjects::FilterCame(Classes its, Classes others, KE::Instance::KETypeCache& cache) {
  bool needsEverything = false;
  for (unsigned int i = 0; i < kCount; ++i) {
    if ((its & Bit(i)) == 0) continue;
    Report& report = reports[i];
    if (IsOpen(Bit(i))) {
      Open(i);
    } else if (report.orphans) {
      Collect(i, cache, report.missing);
      if (report.missing.empty()) {
        report.orphans = false;
        continue;
      }
      Open(i);
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
    for (unsigned int i = 0; i < kCount; ++i) {
      if ((watched & Bit(i)) == 0) continue;
      Collect(i, cache, reports[i].missing);
      Open(i);
      if (reports[i].missing.empty()) Close(i);
    }
    expecting = false;
  }
  for (unsigned int i = 0; i < kCount; ++i) reports[i].covered = IsOpen(Bit(i));
  brief = AwaitsPart();
}

void StaleObjects::Strike(const KE::Stub::ManagedObjectReference& object) {
  const std::size_t index = KE::Instance::KindOf(object.type).Index();
  if (IsOpen(Bit(index))) reports[index].missing.erase(object.value.Cstr());
}

// Until everything was asked for, it is not known what is missing.
bool StaleObjects::IsPending(unsigned int index) const {
  return IsOpen(Bit(index)) && !reports[index].over && !expecting;
}

void StaleObjects::EndAnswer(bool advanced) {
  const SyncTime now = GetSyncSeams().now();
  for (unsigned int i = 0; i < kCount; ++i) {
    if (!IsPending(i)) continue;
    Report& report = reports[i];
    const bool isPart = advanced && filterSets && (report.covered || (named & Bit(i)) != 0);
    if (report.missing.empty()) {
      Close(i);
    } else if (isPart && !report.begun) {
      report.begun = true;
      report.since = now;
    } else if (report.begun && now - report.since >= kLongestReport) {
      report.over = true;
    }
  }
}

void StaleObjects::EndSilence() {
  const SyncTime now = GetSyncSeams().now();
  for (unsigned int i = 0; i < kCount; ++i) {
    Report& report = reports[i];
    if (!IsPending(i) || !report.covered) continue;
    if (report.begun) {
      report.over = true;
    } else if (!brief && ++report.silences > 1 && now - report.since >= kLongestReport) {
      report.over = true;
    }
  }
}

bool StaleObjects::AwaitsPart() const {
  for (unsigned int i = 0; i < kCount; ++i) {
    if (IsPending(i) && reports[i].begun) return true;
  }
  return false;
}

const ObjectKind* StaleObjects::StaleKind() {
  for (unsigned int i = 0; i < kCount; ++i) {
    if (!reports[i].over) continue;
    if (!reports[i].missing.empty()) return &kObjectKinds[i];
    Close(i);
  }
  return nullptr;
}

void StaleObjects::TakeStale(const ObjectKind& kind, KELib::KEString& id) {
  Ids& missing = reports[kind.Index()].missing;
  id = missing.begin()->c_str();
  missing.erase(missing.begin());
}

}  // namespace KE::Service
