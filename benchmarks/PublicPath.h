// SPDX-License-Identifier: MIT
//
// The library as an agent uses it, from the SOAP client to the caches, with a server that needs no
// login.
#ifndef KECPP_BENCHMARKS_PUBLICPATH_H
#define KECPP_BENCHMARKS_PUBLICPATH_H

#include <memory>
#include <string>

#include "datasync/KEDataSync.h"
#include "service/call/KEMethod.h"
#include "service/call/KESoapClient.h"
#include "stub/classes/ManagedObjectReference.h"

namespace bench {

class PublicPath {
 public:
  // Nothing is sent yet. Throws std::runtime_error.
  explicit PublicPath(const std::string& url);
  ~PublicPath();

  // Watches every machine and host; returns when the caches are full.
  void Watch();

  KE::Service::KEMethod& Method() { return *method; }
  KE::Service::KEDataSync& Sync() { return *sync; }

 private:
  std::unique_ptr<KE::Service::KESoapClient> client;
  std::unique_ptr<KE::Service::KEMethod> method;
  KE::Stub::ManagedObjectReference collector;
  std::unique_ptr<KE::Service::KEDataSync> sync;
};

}  // namespace bench

#endif
