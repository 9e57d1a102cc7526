// SPDX-License-Identifier: MIT
//
// Finds the objects that are cached but gone on the server, of the kinds that are swept by report
// (instance/ObjectKinds.h).
//
// The server says nothing of what left while nobody watched, or while an update set was lost. So
// when it is about to name everything that a class has, what is cached of the class counts as
// missing; each name strikes one off; what is missing when the report is over is stale. A class is
// reported when a filter that watches it is new, and when everything is asked for.
//
// A server may split its report over several answers and does not say which is the last. A report
// is over when nothing is missing any more; when a part has come and the next wait stays unanswered
// for two seconds; 60 seconds after its first part, since under constant change there is always an
// answer. A server that is silent from the start may still be at work, or have nothing to report:
// the report is over when two waits in a row, and a minute, have passed.
//
// Filters may join all the time, and everything may be asked for again and again. Neither puts off
// the end of the 60 seconds, but the server is given two seconds after each request for everything
// and after each name that strikes something off: it may have begun its report again. What a
// further request counts as missing is a batch with its own 60 seconds.
//
// Thread safety: guarded by the data sync's filter-table mutex.
// Memory: the identifiers of what is cached of a class, while a report of it is open.
#ifndef KECPP_DATASYNC_STALEOBJECTS_H
#define KECPP_DATASYNC_STALEOBJECTS_H

#include <string>
#include <unordered_set>

#include "datasync/SyncSeams.h"
#include "instance/KETypeCache.h"
#include "instance/ObjectKinds.h"
#include "stub/classes/ManagedObjectReference.h"

namespace KE::Service {

class PropertyList;

class StaleObjects {
 public:
  // A set of classes, one bit each: 1 << ObjectKind::Index().
  using Classes = unsigned int;

  // How long a wait may stay unanswered while the next part of a report is awaited: a server that
  // has another part sends it sooner.
  static constexpr int kNextPartMs = 2000;

  // The classes of the object types that a list watches, and that of an object type; 0 for others.
  static Classes ClassesOf(const PropertyList& list);
  static Classes ClassOf(const KELib::KEString& objectType);

  // A filter that watches `its` classes was created; the other filters watch `others`. True when
  // everything has to be asked for: the cache may hold what no filter watches any more, and the
  // others will not say again what they watch. Takes the mutexes of the classes' lock groups.
  // O(cached objects) when a report begins, else O(1).
  bool FilterCame(Classes its, Classes others, KE::Instance::KETypeCache& cache);

  // A filter that watched `its` classes has gone. What is cached stays as it was last known when no
  // other filter watches the class.
  void FilterWent(Classes its, Classes others);

  // Everything will be asked for: until then no report is over.
  void ExpectEverything() { expecting = true; }

  // Nothing is cached and nothing watched from now on.
  void Forget() { *this = StaleObjects(); }

  // A wait is about to be sent, which asks for everything or not; the filters watch `watched`.
  // Complexity and locks as FilterCame when it asks for everything, else O(1).
  void BeginWait(bool everything, Classes watched, KE::Instance::KETypeCache& cache);

  // The server has sent a filter set of a filter that watches `classes`.
  void NoteFilterSet(Classes classes) {
    filterSets = true;
    named |= classes;
  }

  // The server has named an object.
  void Name(const KE::Stub::ManagedObjectReference& object) {
    if (open != 0) Strike(object);
  }

  // An answer was applied whole; `advanced`: its version is not that of its wait.
  void EndAnswer(bool advanced);

  // A wait stayed unanswered, by a server that is alive.
  void EndSilence();

  // Classes with a report that is not over, or whose stale objects are cached still.
  bool IsOpen(Classes classes) const { return (open & classes) != 0; }

  // A part of a report has come, and something is missing still.
  bool AwaitsPart() const;

  // No part has come yet of a report that the server may still be at work on.
  bool AwaitsBegin() const;

  // The kind of an object that is to be removed from its cache; null when there is none.
  const KE::Instance::ObjectKind* StaleKind();

  // Takes an object of that kind. Without memory nothing happens.
  void TakeStale(const KE::Instance::ObjectKind& kind, KELib::KEString& id);

 private:
  using Ids = std::unordered_set<std::string>;

  // What was cached when it was asked for, and has not been named since.
  struct Batch {
    Ids missing;
    bool begun = false;  // a part has come
    SyncTime since{};    // when the first part came or, before, when it was asked for
  };

  struct Report {
    Batch batch;
    Batch next;            // of a later request for everything; it follows `batch`
    bool orphans = false;  // the cache may hold what none of the filters watches
    bool covered = false;  // the last wait was sent when all filters of the report were there
    bool awaited = false;  // no part has come since a filter joined or everything was asked for
    bool over = false;     // what is missing in `batch` is stale
    bool struck = false;   // the current answer has struck something off
    unsigned int silences = 0;
    SyncTime news{};  // when everything was asked for, or when something was struck off last
  };

  void Open(unsigned int index, SyncTime now);
  void Join(Report& report, SyncTime now);
  void AskAgain(Report& report, SyncTime now);
  void Advance(unsigned int index);
  void Close(unsigned int index);
  void Strike(const KE::Stub::ManagedObjectReference& object);
  static void NotePart(Report& report, SyncTime now);
  static bool IsDue(const Report& report, SyncTime now);
  static void EndInSilence(Report& report);
  static void Collect(unsigned int index, KE::Instance::KETypeCache& cache, const Ids& except,
                      Ids& ids);
  bool IsPending(unsigned int index) const;

  static constexpr unsigned int kCount = KE::Instance::kObjectKindCount;
  static_assert(kCount <= sizeof(Classes) * 8);
  Report reports[kCount];  // by ObjectKind::Index()
  Classes open = 0;
  Classes named = 0;        // by the filter sets of the current answer
  bool filterSets = false;  // the current answer has one
  bool expecting = false;   // everything will be asked for
  bool brief = false;       // the last wait was a short one
};

}  // namespace KE::Service

#endif
