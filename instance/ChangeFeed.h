// SPDX-License-Identifier: MIT
//
// A feed as its owner holds it: the hub does the work.
#ifndef KECPP_INSTANCE_CHANGEFEED_H
#define KECPP_INSTANCE_CHANGEFEED_H

#include <memory>

#include "instance/ChangeHub.h"
#include "instance/KEChangeFeed.h"

namespace KE::Instance {

class ChangeFeed final : public KEChangeFeed {
 public:
  // Opens it on the hub of `types`, which has one. Locks and errors as ChangeHub::Open.
  ChangeFeed(std::shared_ptr<ChangeHub> hub, KETypeCache& types);
  ~ChangeFeed() override;
  ChangeFeed(const ChangeFeed&) = delete;
  ChangeFeed& operator=(const ChangeFeed&) = delete;

  int Take(KEChange* changes, int max, int milliseconds) override;
  int Wait(int milliseconds) override;
  void Close() override;

 private:
  const std::shared_ptr<ChangeHub> hub;
  ChangeHub::Reader& reader;
};

}  // namespace KE::Instance

#endif
