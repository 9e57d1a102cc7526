// SPDX-License-Identifier: MIT
//
// Prepared connections that share one cookie store, so that a login counts on each of them.
//
// A slot's handle is either free or in use. Two slots are what one data sync needs: it keeps one in
// its wait for updates and leaves one for all other calls.
//
// Thread safety: every operation but Init() and Release() from any thread. The mutex, a leaf of the
//   lock order, guards the slots and the preparation of a handle and is never held during a
//   transfer.
// Ownership: owns its handles. Handles are given back before the pool is released.
#ifndef KECPP_HTTP_HTTPCONNECTIONPOOL_H
#define KECPP_HTTP_HTTPCONNECTIONPOOL_H

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "foundation/KEExport.h"
#include "foundation/KEMutex.h"
#include "foundation/KEQuietCondition.h"
#include "foundation/KEThreadAnnotations.h"
#include "http/HttpHandle.h"

namespace KELib {
namespace Http {

class ConnectionInfo;
class CookieStore;

class KECPP_API HttpConnectionPool {
 public:
  HttpConnectionPool();
  HttpConnectionPool(const HttpConnectionPool&) = delete;
  HttpConnectionPool& operator=(const HttpConnectionPool&) = delete;
  ~HttpConnectionPool();  // calls Release()

  // Creates the cookie store and two handles. Throws HttpException; the pool is empty then.
  void Init();

  // Deletes all handles and the cookie store.
  void Release();

  // Makes it `slots` handles; more than 4 are ignored. Throws HttpException, without a change, when
  // a handle that would go is in use or a new one cannot be made.
  void SetSize(unsigned int slots);
  unsigned int GetSize() const;

  // Takes the lowest free slot and binds `ref` to it, preparing the handle for `info` on its first
  // use; a handle that `ref` held before is given back. Without a free slot `ref` stays as it is.
  // Throws as InitializeHttpPost; the handle is free and `ref` unchanged then.
  void GetHandle(ConnectionInfo* info, HttpHandleRef& ref);

  // Frees the handle's slot; a handle that is not in use is ignored. No reference holds it then.
  void FreeHandle(HttpHandle* handle);

  // For references. Hold: `ref` holds its handle, if that is in use. Share: so does `copy`, if
  // `ref` does. GiveBack: frees the slot of the handle that `ref` holds, if it holds one. The first
  // two throw std::bad_alloc; then the reference holds nothing.
  void Hold(const HttpHandleRef& ref);
  void Share(const HttpHandleRef& ref, const HttpHandleRef& copy);
  void GiveBack(const HttpHandleRef& ref);

  // Waits for a free slot, at most for `milliseconds`; it may return early. Whether there is one
  // now.
  bool WaitForFreeHandle(int milliseconds);

  // The largest body of a reply, in bytes, below 2^31. Unless set: 1 GiB, or 512 MB on 32-bit
  // builds. Concerns transfers that begin afterwards.
  void SetReplyLimit(unsigned int bytes) { replyLimit = bytes; }
  unsigned int GetReplyLimit() const { return replyLimit; }

  // What carries cookies between the handles; null where they share libcurl's own store.
  CookieStore* Cookies() { return cookies.get(); }

 private:
  using Slots = std::unique_ptr<std::unique_ptr<HttpHandle>[]>;

  void CreateShareNoLock() KECPP_REQUIRES(mutex);
  void ReleaseNoLock() KECPP_REQUIRES(mutex);
  void SetSizeNoLock(unsigned int slots) KECPP_REQUIRES(mutex);
  void GrowNoLock(unsigned int slots) KECPP_REQUIRES(mutex);
  void ShrinkNoLock(unsigned int slots) KECPP_REQUIRES(mutex);
  void ReplaceArraysNoLock(unsigned int slots) KECPP_REQUIRES(mutex);
  unsigned int FindFreeNoLock() const KECPP_REQUIRES(mutex);
  unsigned int FindInUseNoLock(const HttpHandle* handle) const KECPP_REQUIRES(mutex);
  void FreeSlotNoLock(unsigned int slot) KECPP_REQUIRES(mutex);
  void HoldNoLock(const HttpHandleRef& ref, HttpHandle* handle) KECPP_REQUIRES(mutex);
  bool IsHeldNoLock(const HttpHandleRef& ref, HttpHandle* handle) const KECPP_REQUIRES(mutex);
  void GiveBack(const HttpHandleRef& ref, HttpHandle* handle);
  void GiveBackNoLock(const HttpHandleRef& ref, HttpHandle* handle) KECPP_REQUIRES(mutex);

  void* share KECPP_GUARDED_BY(mutex) = nullptr;
  std::unique_ptr<KEMutex> mutex;
  Slots inUse KECPP_GUARDED_BY(mutex);
  Slots free KECPP_GUARDED_BY(mutex);
  unsigned int size KECPP_GUARDED_BY(mutex) = 0;

  // The references that hold a handle which is in use.
  std::vector<std::pair<const HttpHandleRef*, HttpHandle*>> holders KECPP_GUARDED_BY(mutex);
  KEQuietCondition handleFreed;
  std::mutex shareMutex;  // held by libcurl around its use of the cookie store
  std::atomic<unsigned int> replyLimit;
  std::unique_ptr<CookieStore> cookies;  // constant between Init and Release
};

}  // namespace Http
}  // namespace KELib

#endif
