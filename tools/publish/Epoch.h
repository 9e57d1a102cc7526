// SPDX-License-Identifier: MIT
//
// Who publishes a site. Every transaction compares the revision of the key epoch/SITE, so that
// nothing is carried out any more that was sent before it changed: neither by another publisher,
// nor by this one in a request whose answer was lost.
//
// Thread safety: one thread at a time.
#ifndef KECPP_TOOLS_PUBLISH_EPOCH_H
#define KECPP_TOOLS_PUBLISH_EPOCH_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "fleet/EtcdClient.h"

namespace tools::publish {

// Another publisher has taken the site over.
class Fenced : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Epoch {
 public:
  // `client` outlives the object.
  Epoch(kecpp::fleet::EtcdClient& client, const std::string& site);

  // Takes the site from who has it. Throws EtcdError.
  void TakeOver();

  // Takes the site again: from now on nothing that was sent before is carried out. False when the
  // key was not as this publisher left it, because the cluster was restored or emptied: what is
  // thought to be there is void. Throws Fenced and EtcdError.
  bool Renew();

  // Lets the transaction fail unless the site is still this publisher's; then the first thing that
  // it reads is the key.
  void Guard(kecpp::fleet::Transaction& transaction) const;
  // Whether a transaction failed for another reason.
  bool IsHeld(const kecpp::fleet::TransactionResult& failed) const;

  std::uint64_t Number() const { return number; }
  const std::string& Publisher() const { return publisher; }

 private:
  std::optional<kecpp::fleet::KeyValue> Look();
  void Claim(const std::optional<kecpp::fleet::KeyValue>& from);

  kecpp::fleet::EtcdClient& client;
  const std::string key;
  const std::string publisher;  // this process and no other
  std::uint64_t number = 0;
  std::int64_t revision = 0;
};

}  // namespace tools::publish

#endif
