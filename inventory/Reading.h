// SPDX-License-Identifier: MIT
//
// Reads the caches of a connection. Nothing is held longer than some hundred objects take.
//
// Thread safety: any thread that holds no cache's mutex.
#ifndef KECPP_INVENTORY_READING_H
#define KECPP_INVENTORY_READING_H

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "instance/CacheWalk.h"
#include "instance/KECacheGuard.h"
#include "inventory/Connection.h"
#include "inventory/Values.h"

namespace kecpp {

// Objects for which the mutexes are held at a time.
inline constexpr std::size_t kPiece = 256;

// A mutex goes to who asks first: without a pause the sync thread would not wake up in time.
inline void GiveWay() {
  std::this_thread::sleep_for(std::chrono::microseconds(1));
}

// Calls `use` with pieces of the stubs of a kind, under the mutexes of its lock group, and `pause`
// after each without them.
template <class UsePiece, class Pause>
void ForEachPiece(const Connection& connection, Kind kind, UsePiece use, Pause pause) {
  KELib::KEString name(CacheOf(kind));
  KE::Instance::KEDataCache* cache = connection.Cache().GetDataCache(name);
  if (cache == nullptr) return;
  KE::Instance::CacheWalk walk;
  std::vector<KELib::Stub::KEStubBase*> piece;
  for (bool more = true; more;) {
    {
      KE::Instance::KECacheGuard guard(&connection.Cache());
      guard.LockLinked(name);
      more = walk.Next(*cache, kPiece, piece);
      if (more) use(piece);
    }
    if (more) pause();
  }
}

// Calls `visit` with a view of each stub, under the mutexes that the caller holds.
template <class Object, class Visit>
void VisitPiece(const std::vector<KELib::Stub::KEStubBase*>& piece, const Visit& visit) {
  using Types = TypesOf<Object>;
  typename Types::View view;
  for (KELib::Stub::KEStubBase* stub : piece) {
    auto* object = dynamic_cast<typename Types::Stub*>(stub);
    if (object == nullptr) continue;
    Fill(view, *object);
    visit(static_cast<const typename Types::View&>(view));
  }
}

// Calls `visit` with a view of each of the next objects of a walk, at most `most`, under the
// mutexes. False when there are none after them.
template <class Object, class Visit>
bool VisitNext(const Connection& connection, KE::Instance::CacheWalk& walk, std::size_t most,
               const Visit& visit) {
  KELib::KEString name(CacheOf(TypesOf<Object>::kKind));
  KE::Instance::KEDataCache* cache = connection.Cache().GetDataCache(name);
  if (cache == nullptr) return false;
  std::vector<KELib::Stub::KEStubBase*> piece;
  KE::Instance::KECacheGuard guard(&connection.Cache());
  guard.LockLinked(name);
  walk.Next(*cache, most, piece);
  VisitPiece<Object>(piece, visit);
  return !walk.AtEnd();
}

// Calls `visit` with a view of every object of the kind of `Object`, under the mutexes.
template <class Object, class Visit>
void ForEachView(const Connection& connection, const Visit& visit) {
  ForEachPiece(
      connection, TypesOf<Object>::kKind,
      [&](const std::vector<KELib::Stub::KEStubBase*>& piece) { VisitPiece<Object>(piece, visit); },
      GiveWay);
}

// Calls `visit` with a copy of every object, without the mutexes.
template <class Object, class Visit>
void ForEachCopy(const Connection& connection, const Visit& visit) {
  using Types = TypesOf<Object>;
  std::vector<typename Types::Copy> copies;
  ForEachPiece(
      connection, Types::kKind,
      [&](const std::vector<KELib::Stub::KEStubBase*>& piece) {
        copies.clear();
        VisitPiece<Object>(
            piece, [&](const typename Types::View& view) { copies.push_back(Decode(view)); });
      },
      [&] {
        for (const auto& copy : copies) visit(copy);
      });
}

// The objects of a kind; 0 before the connection has caches.
std::size_t CountOf(const Connection& connection, Kind kind);

// Copies of all objects, sorted by key. Pointers are sorted, so that an object is moved once.
template <class Object>
std::vector<Object> CopyAll(const Connection& connection) {
  using Types = TypesOf<Object>;
  std::vector<Object> found;
  found.reserve(CountOf(connection, Types::kKind) + kPiece);
  ForEachPiece(
      connection, Types::kKind,
      [&](const std::vector<KELib::Stub::KEStubBase*>& piece) {
        VisitPiece<Object>(
            piece, [&](const typename Types::View& view) { found.push_back(Decode(view)); });
      },
      [&] {
        if (found.capacity() < found.size() + kPiece) found.reserve(2 * found.capacity());
        GiveWay();
      });
  std::vector<Object*> order;
  order.reserve(found.size());
  for (Object& object : found) order.push_back(&object);
  std::sort(order.begin(), order.end(),
            [](const Object* left, const Object* right) { return left->key < right->key; });
  std::vector<Object> sorted;
  sorted.reserve(found.size());
  for (Object* object : order) sorted.push_back(std::move(*object));
  return sorted;
}

// Calls `use` with the stub of that key, under the mutexes. False when there is none. O(1), unless
// the key is missing and has characters that XML text may write in several ways.
bool LookAtStub(const Connection& connection, Kind kind, const std::string& key,
                const std::function<void(KELib::Stub::KEStubBase&)>& use);

template <class Object, class Visit>
bool LookAtView(const Connection& connection, const std::string& key, const Visit& visit) {
  using Types = TypesOf<Object>;
  bool found = false;
  LookAtStub(connection, Types::kKind, key, [&](KELib::Stub::KEStubBase& stub) {
    auto* object = dynamic_cast<typename Types::Stub*>(&stub);
    if (object == nullptr) return;
    typename Types::View view;
    Fill(view, *object);
    visit(static_cast<const typename Types::View&>(view));
    found = true;
  });
  return found;
}

template <class Object>
std::optional<Object> FindCopy(const Connection& connection, const std::string& key) {
  std::optional<Object> copy;
  LookAtView<Object>(connection, key, [&](const auto& view) { copy = Decode(view); });
  return copy;
}

}  // namespace kecpp

#endif
