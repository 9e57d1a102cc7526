// SPDX-License-Identifier: MIT
#include "http/HttpConnectionPool.h"

#include <curl/curl.h>

#include <algorithm>
#include <utility>

#include "foundation/KEMutexGuard.h"
#include "http/CookieStore.h"
#include "http/HttpConstants.h"
#include "http/HttpException.h"
#include "http/HttpReceiver.h"

namespace KELib {
namespace Http {

namespace {

constexpr unsigned int kStandardSize = 2;
constexpr unsigned int kLargestSize = 4;

// A share that could not be prepared whole has no mutex yet when it is cleaned up.
void LockShare(CURL*, curl_lock_data, curl_lock_access, void* mutex) {
  if (mutex != nullptr) static_cast<std::mutex*>(mutex)->lock();
}

void UnlockShare(CURL*, curl_lock_data, void* mutex) {
  if (mutex != nullptr) static_cast<std::mutex*>(mutex)->unlock();
}

// The locks are not optional. With two threads and cookies in the replies, eleven of eleven runs
// without them were aborted inside libcurl within three seconds (damaged heap); with
// them none in 40,000 requests. The mutex comes last, so that never one of the two works without
// the other.
bool PrepareShare(void* share, std::mutex* mutex) {
  return curl_share_setopt(share, CURLSHOPT_LOCKFUNC, &LockShare) == CURLSHE_OK &&
         curl_share_setopt(share, CURLSHOPT_UNLOCKFUNC, &UnlockShare) == CURLSHE_OK &&
         (CookieStore::IsNeeded() ||
          curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE) == CURLSHE_OK) &&
         curl_share_setopt(share, CURLSHOPT_USERDATA, static_cast<void*>(mutex)) == CURLSHE_OK;
}

}  // namespace

HttpConnectionPool::HttpConnectionPool()
    : mutex(std::make_unique<KEMutex>()), replyLimit(HttpReceiver::DEFAULT_LIMIT) {}

HttpConnectionPool::~HttpConnectionPool() {
  Release();
}

void HttpConnectionPool::Init() {
  KEMutexGuard guard(mutex.get());
  if (share == nullptr) CreateShareNoLock();
  try {
    SetSizeNoLock(kStandardSize);
  } catch (...) {
    if (size == 0) ReleaseNoLock();
    throw;
  }
}

void HttpConnectionPool::CreateShareNoLock() {
  if (CookieStore::IsNeeded()) cookies = std::make_unique<CookieStore>();
  void* created = curl_share_init();
  if (created == nullptr) ThrowHttpException(ERR_HTTP_SETUP, "0000");
  if (!PrepareShare(created, &shareMutex)) {
    curl_share_cleanup(created);
    ThrowHttpException(ERR_HTTP_SETUP, "0001");
  }
  share = created;
}

void HttpConnectionPool::Release() {
  KEMutexGuard guard(mutex.get());
  ReleaseNoLock();
}

void HttpConnectionPool::ReleaseNoLock() {
  inUse.reset();
  free.reset();
  holders.clear();
  size = 0;
  if (share != nullptr) curl_share_cleanup(share);
  share = nullptr;
  cookies.reset();
}

// --- size ----------------------------------------------------------------------------------------

unsigned int HttpConnectionPool::GetSize() const {
  KEMutexGuard guard(mutex.get());
  return size;
}

void HttpConnectionPool::SetSize(unsigned int slots) {
  KEMutexGuard guard(mutex.get());
  SetSizeNoLock(slots);
}

void HttpConnectionPool::SetSizeNoLock(unsigned int slots) {
  if (slots > kLargestSize) return;
  if (slots > size) {
    GrowNoLock(slots);
  } else if (slots < size) {
    ShrinkNoLock(slots);
  }
}

void HttpConnectionPool::GrowNoLock(unsigned int slots) {
  std::vector<std::unique_ptr<HttpHandle>> added;
  while (added.size() < slots - size) {
    added.push_back(std::make_unique<HttpHandle>());
    added.back()->Init(share);
  }
  const unsigned int first = size;
  ReplaceArraysNoLock(slots);
  std::move(added.begin(), added.end(), &free[first]);
  handleFreed.Broadcast();
}

void HttpConnectionPool::ShrinkNoLock(unsigned int slots) {
  for (unsigned int slot = slots; slot < size; ++slot) {
    if (inUse[slot] != nullptr) {
      throw HttpException("Unable to resize Connection Pool. In Use.");
    }
  }
  ReplaceArraysNoLock(slots);
}

void HttpConnectionPool::ReplaceArraysNoLock(unsigned int slots) {
  Slots newInUse = std::make_unique<std::unique_ptr<HttpHandle>[]>(slots);
  Slots newFree = std::make_unique<std::unique_ptr<HttpHandle>[]>(slots);
  for (unsigned int slot = 0; slot < std::min(size, slots); ++slot) {
    newInUse[slot] = std::move(inUse[slot]);
    newFree[slot] = std::move(free[slot]);
  }
  inUse = std::move(newInUse);
  free = std::move(newFree);
  size = slots;
}

// --- taking and giving back ----------------------------------------------------------------------

unsigned int HttpConnectionPool::FindFreeNoLock() const {
  unsigned int slot = 0;
  while (slot < size && free[slot] == nullptr) ++slot;
  return slot;
}

unsigned int HttpConnectionPool::FindInUseNoLock(const HttpHandle* handle) const {
  if (handle == nullptr) return size;
  unsigned int slot = 0;
  while (slot < size && inUse[slot].get() != handle) ++slot;
  return slot;
}

void HttpConnectionPool::GetHandle(ConnectionInfo* info, HttpHandleRef& ref) {
  HttpConnectionPool* const pool = ref.pool;
  HttpHandle* const former = ref.handle;
  {
    KEMutexGuard guard(mutex.get());
    const unsigned int slot = FindFreeNoLock();
    if (slot == size) return;
    HttpHandle* handle = free[slot].get();
    if (!handle->prepared) {
      InitializeHttpPost(info, handle);
      handle->prepared = true;
    }
    holders.reserve(holders.size() + 1);  // from here on nothing fails
    inUse[slot] = std::move(free[slot]);
    if (pool == this) GiveBackNoLock(ref, former);
    HoldNoLock(ref, handle);
    ref.handle = handle;
    ref.pool = this;
  }
  if (pool != nullptr && pool != this) pool->GiveBack(ref, former);
}

void HttpConnectionPool::FreeHandle(HttpHandle* handle) {
  KEMutexGuard guard(mutex.get());
  FreeSlotNoLock(FindInUseNoLock(handle));
}

void HttpConnectionPool::FreeSlotNoLock(unsigned int slot) {
  if (slot >= size) return;
  const HttpHandle* const handle = inUse[slot].get();
  holders.erase(std::remove_if(holders.begin(), holders.end(),
                               [&](const auto& holder) { return holder.second == handle; }),
                holders.end());
  free[slot] = std::move(inUse[slot]);
  handleFreed.Signal();
}

// --- who holds what ------------------------------------------------------------------------------

bool HttpConnectionPool::IsHeldNoLock(const HttpHandleRef& ref, HttpHandle* handle) const {
  return std::find(holders.begin(), holders.end(), std::make_pair(&ref, handle)) != holders.end();
}

void HttpConnectionPool::HoldNoLock(const HttpHandleRef& ref, HttpHandle* handle) {
  for (auto& [holder, held] : holders) {
    if (holder == &ref) {
      held = handle;
      return;
    }
  }
  holders.emplace_back(&ref, handle);
}

void HttpConnectionPool::Hold(const HttpHandleRef& ref) {
  KEMutexGuard guard(mutex.get());
  if (FindInUseNoLock(ref.handle) < size) HoldNoLock(ref, ref.handle);
}

void HttpConnectionPool::Share(const HttpHandleRef& ref, const HttpHandleRef& copy) {
  KEMutexGuard guard(mutex.get());
  if (IsHeldNoLock(ref, ref.handle)) HoldNoLock(copy, ref.handle);
}

void HttpConnectionPool::GiveBack(const HttpHandleRef& ref) {
  GiveBack(ref, ref.handle);
}

void HttpConnectionPool::GiveBack(const HttpHandleRef& ref, HttpHandle* handle) {
  KEMutexGuard guard(mutex.get());
  GiveBackNoLock(ref, handle);
}

void HttpConnectionPool::GiveBackNoLock(const HttpHandleRef& ref, HttpHandle* handle) {
  if (IsHeldNoLock(ref, handle)) FreeSlotNoLock(FindInUseNoLock(handle));
}

bool HttpConnectionPool::WaitForFreeHandle(int milliseconds) {
  KEMutexGuard guard(mutex.get());
  if (FindFreeNoLock() == size) handleFreed.Wait(*mutex, milliseconds);
  return FindFreeNoLock() < size;
}

}  // namespace Http
}  // namespace KELib
