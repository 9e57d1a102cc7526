// SPDX-License-Identifier: MIT
//
// Makes transactions of marks: copies each object as it is now, and leaves out what the cluster has
// already.
//
// Thread safety: one thread at a time.
#ifndef KECPP_TOOLS_PUBLISH_COMPOSER_H
#define KECPP_TOOLS_PUBLISH_COMPOSER_H

#include <kecpp/inventory.h>

#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "fleet/Transaction.h"
#include "tools/publish/Counters.h"
#include "tools/publish/Epoch.h"
#include "tools/publish/Marks.h"
#include "tools/publish/Published.h"

namespace tools::publish {

struct Write {
  Mark mark;
  bool isPut = false;  // or a removal
  Digest digest{};
};

struct Batch {
  kecpp::fleet::Transaction transaction;
  std::vector<Write> writes;

  bool Empty() const { return writes.empty(); }
  std::vector<Mark> TakeMarks();
};

class Composer {
 public:
  // Everything outlives the object.
  Composer(const kecpp::Inventory& inventory, const std::string& site, Marks& marks,
           const Published& published, Counters& counters);

  // Takes marks until it has a batch or there are none. Those of objects that `before` writes are
  // left: one write at a time is under way for each. `pump` is called in between.
  Batch Compose(const Epoch& epoch, const Batch& before, const std::function<void()>& pump);

  // A batch has fewer writes from now on. False when it has one already.
  bool Shrink();

 private:
  void Add(Batch& batch, Mark mark, const Epoch& epoch);

  const kecpp::Inventory& inventory;
  const std::string site;
  const std::string prefix;
  Marks& marks;
  const Published& published;
  Counters& counters;
  std::size_t most = 100;  // writes in a transaction: with the epoch's less than the limit of 128
};

}  // namespace tools::publish

#endif
