// SPDX-License-Identifier: MIT
//
// A data sync watches objects of the management daemon and keeps in-memory caches true.
//
// A watch is set up once with SetupDataSync: it creates a property filter on the server, fills the
// caches on the calling thread, and starts one background thread which calls "WaitForUpdates" again
// and again and applies every update set under the caches' mutexes.
//
// Thread safety: every operation may be called from any thread, but from none that holds the mutex
//   of a data cache or of a type cache: the sync thread takes the data sync's own mutex first and a
//   cache's mutex second. Readers of the caches need no operation of the data sync but GetCache.
// Ownership: the session owns its data sync; the data sync owns the type cache and the references
//   that SetupDataSync returns.
#ifndef KECPP_DATASYNC_KEDATASYNC_H
#define KECPP_DATASYNC_KEDATASYNC_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"
#include "foundation/KEVector.h"

namespace KELib {
class KEWaiter;
}
namespace KE::Stub {
class ManagedObjectReference;
}
namespace KE::Instance {
class KEChangeFeed;
class KETypeCache;
}  // namespace KE::Instance

namespace KE::Service {

class KEMethod;

// What a data sync says of itself. A plain copy; it changes no more.
struct KECPP_API KESyncStatus {
  bool firstFillDone = false;            // a first update set has been applied since the last stop
  bool loopRunning = false;              // the sync thread runs
  unsigned long long setsApplied = 0;    // update sets, and runs of property methods, ever applied
  unsigned int consecutiveFailures = 0;  // failed cycles since the last good one
  KELib::KEString lastFailure;           // text of the last failed cycle; empty when none failed
  long long lastFailureTime = 0;         // microseconds since the epoch, UTC; 0 when none failed
  KELib::KEString version;               // the server's version of the last update set
};

class KECPP_API KEDataSync {
 public:
  virtual ~KEDataSync();

  // Binds the data sync to its method invoker and the server's property collector. Neither is
  // owned; both outlive the data sync.
  virtual void Init(KEMethod* method, KE::Stub::ManagedObjectReference* propertyCollector) = 0;

  // Ends every watch: stops the sync thread, lets every blocked caller and every waiter go, and
  // empties the tables and the caches. Blocks until the thread has left. Usable again afterwards.
  virtual void Cleanup() = 0;

  // The caches, by type name. Lives as long as the data sync.
  virtual KE::Instance::KETypeCache* GetCache() = 0;

  // Watches the objects that `list` names (docs/watching.md has its grammar, and what can be
  // watched), starting at `root` (copied). `waiter`, which may be
  // null, is signalled when the watch's first data has arrived; it must live until it was signalled
  // or until StopDataSync, Cleanup or this call (when it throws) returned.
  //
  // The first watch fills the caches before the call returns; it gives up waiting after a time-out
  // or three failed attempts (GetStatus says so) and the sync thread goes on trying. While the
  // thread runs already, a further watch returns before its objects are there: pass a waiter.
  //
  // What is cached of the watched classes from an earlier watch is true when the call has returned
  // or, while the thread runs, when the waiter was signalled: what left meanwhile has been removed.
  // To find that out can take two seconds more, up to a minute while the server has ever more to
  // say. What no watch of a class names any more is removed then; it stays until somebody watches
  // the class again.
  //
  // Returns the reference that StopDataSync takes; owned by the data sync and valid until then, or
  // until a watch is set up after a stop (RequestStop, a logout): that ends the older watches.
  // Throws SystemException for a list that breaks the grammar, for a null root and after a stop has
  // begun; Exception with the server's or the transport's text when the filter cannot be created.
  virtual KE::Stub::ManagedObjectReference* SetupDataSync(KE::Stub::ManagedObjectReference* root,
                                                          KELib::KEVector<KELib::KEString>& list,
                                                          KELib::KEWaiter* waiter) = 0;

  // Ends the watch of `ref` (the pointer that SetupDataSync returned, or an equal
  // reference): its properties and its methods. Methods that several lists named go on until the
  // last of those lists is stopped. An unknown reference changes nothing. A failing server is
  // logged, not reported.
  virtual void StopDataSync(KE::Stub::ManagedObjectReference* ref) = 0;

  // Waits until the server task whose reference `response` holds (the answer of the method that
  // started it, not consumed) has ended. True exactly when it ended in "success". Blocks without
  // limit, but is let go by a stop, a cleanup and by three failed cycles in a row.
  virtual bool WaitForTask(KELib::KEString& response, KELib::KEWaiter* waiter) = 0;

  // Asks the sync thread to leave: sets the stop flag and cancels the wait that is out. Returns at
  // once or, when a cancel has to be sent, after the server answered. Takes no lock.
  virtual void RequestStop() = 0;

  // Fills `status`.
  virtual void GetStatus(KESyncStatus& status) = 0;

  // Waits until an update set or the answers of property methods were applied after the `seen`th
  // time (start with 0), at most `milliseconds` (zero or less: without limit). True when they were:
  // `seen` then holds the number of times.
  // False on time-out and at once when a stop was requested.
  virtual bool WaitForChange(unsigned long long& seen, int milliseconds) = 0;

  // A new feed of what is added, changed and removed in the caches (instance/KEChangeFeed.h). It
  // begins with all that is cached, as "added", and goes on without a gap. The caller owns it.
  // Takes the mutexes of the data caches, one at a time. O(cached objects). Throws SystemException
  // while the data sync is being stopped for good, std::bad_alloc.
  virtual KE::Instance::KEChangeFeed* OpenChangeFeed() = 0;
};

// Creates a data sync and initialises it. The caller owns it; see Init for its arguments.
KECPP_API KEDataSync* CreateDataSync(KEMethod* method,
                                     KE::Stub::ManagedObjectReference* propertyCollector);

}  // namespace KE::Service

#endif
