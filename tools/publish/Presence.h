// SPDX-License-Identifier: MIT
//
// What a publisher says of itself in the cluster: live/SITE, which goes when its lease is not kept
// alive, and site/SITE.
//
// Thread safety: one thread at a time.
#ifndef KECPP_TOOLS_PUBLISH_PRESENCE_H
#define KECPP_TOOLS_PUBLISH_PRESENCE_H

#include <cstdint>
#include <string>

#include "fleet/Documents.h"
#include "fleet/EtcdClient.h"
#include "tools/publish/Epoch.h"

namespace tools::publish {

class Presence {
 public:
  // Everything outlives the object.
  Presence(kecpp::fleet::EtcdClient& client, const Epoch& epoch, const std::string& site);

  // Keeps the lease alive, or gets another one, and sees to live/SITE. Throws EtcdError; false when
  // the site is another's.
  bool ShowLife();

  // Writes site/SITE. The same results.
  bool Show(const kecpp::fleet::SiteDocument& document);

  // Only compares the epoch. The same results.
  bool CheckEpoch();

  // Readers see at once that the publisher has ended. Throws EtcdError.
  void Leave();

 private:
  struct OwnKey {
    std::string name;
    std::int64_t revision = 0;  // as far as it is known
  };

  bool Put(OwnKey& key, const std::string& text, std::int64_t underLease);
  bool IsKeptAlive();

  kecpp::fleet::EtcdClient& client;
  const Epoch& epoch;
  OwnKey living;
  OwnKey state;
  std::int64_t lease = 0;         // 0: none
  std::uint64_t livingEpoch = 0;  // that live/SITE was written with
};

}  // namespace tools::publish

#endif
