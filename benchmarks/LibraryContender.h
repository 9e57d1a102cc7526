// SPDX-License-Identifier: MIT
//
// The library, from the text of a reply to the filled caches, by the operation that its sync thread
// calls for every reply. The server in front of it hands out a filter and answers nothing else.
#ifndef KECPP_BENCHMARKS_LIBRARYCONTENDER_H
#define KECPP_BENCHMARKS_LIBRARYCONTENDER_H

#include "benchmarks/Contender.h"
#include "datasync/KEDataSyncImpl.h"
#include "instance/KEChangeFeed.h"
#include "instance/KETypeCache.h"
#include "service/call/KEMethod.h"
#include "stub/classes/ManagedObjectReference.h"

namespace bench {

class FilterServer final : public KE::Service::KEMethod {
 public:
  using KEMethod::Invoke;
  void Invoke(const char* ns, const char* method, KELib::Xml::KEXmlBuffer& body,
              KELib::KEString& result) override;
  void Invoke(const char*, const char*, const char*, const char*, KELib::KEString&) override {}
};

class LibraryContender : public Contender {
 public:
  LibraryContender();

  void Apply(Text text) override;
  std::uint64_t Checksum() override;
  std::size_t Walk() override;
  void Drop() override;

  KE::Service::KEDataSync& Sync() { return sync; }
  KE::Instance::KETypeCache& Cache() { return *sync.GetCache(); }

 private:
  void CreateCaches();

  FilterServer server;
  KE::Stub::ManagedObjectReference collector;
  KE::Service::KEDataSyncImpl sync;
};

// With a change feed open from the start, from which nobody takes.
class LibraryContenderWithFeed final : public LibraryContender {
 public:
  LibraryContenderWithFeed() : feed(Sync().OpenChangeFeed()) {}

  KE::Instance::KEChangeFeed& Feed() { return *feed; }

 private:
  const std::unique_ptr<KE::Instance::KEChangeFeed> feed;
};

}  // namespace bench

#endif
