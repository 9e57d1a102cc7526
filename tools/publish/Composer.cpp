// SPDX-License-Identifier: MIT
#include "tools/publish/Composer.h"

#include <openssl/sha.h>

#include <algorithm>
#include <iostream>
#include <utility>

#include "fleet/Documents.h"
#include "fleet/Keys.h"
#include "tools/common/CellText.h"
#include "tools/common/ObjectView.h"

namespace tools::publish {

using namespace kecpp::fleet;

Digest DigestOf(std::string_view lastingPart) {
  unsigned char whole[SHA256_DIGEST_LENGTH];
  SHA256(reinterpret_cast<const unsigned char*>(lastingPart.data()), lastingPart.size(), whole);
  Digest digest;
  std::copy_n(whole, digest.size(), digest.begin());
  return digest;
}

std::vector<Mark> Batch::TakeMarks() {
  std::vector<Mark> marks;
  marks.reserve(writes.size());
  for (Write& write : writes) marks.push_back(std::move(write.mark));
  writes.clear();
  return marks;
}

Composer::Composer(const kecpp::Inventory& from, const std::string& siteName, Marks& toPublish,
                   const Published& known, Counters& counts)
    : inventory(from),
      site(siteName),
      prefix(ObjectsOf(siteName)),
      marks(toPublish),
      published(known),
      counters(counts) {}

bool Composer::Shrink() {
  const bool isPossible = most > 1;
  most = std::max<std::size_t>(most / 2, 1);
  return isPossible;
}

Batch Composer::Compose(const Epoch& epoch, const Batch& before,
                        const std::function<void()>& pump) {
  std::unordered_set<std::string_view> underWay;
  for (const Write& write : before.writes) underWay.insert(write.mark.part);
  Batch batch;
  batch.writes.reserve(most);  // `underWay` looks at what is in it
  std::vector<Mark> left;
  while (batch.writes.size() < most && batch.transaction.Bytes() < Transaction::kMostBytes) {
    std::vector<Mark> one = marks.Take(1);
    if (one.empty()) break;
    if (underWay.count(one.front().part) != 0) {
      left.push_back(std::move(one.front()));
      continue;
    }
    Add(batch, std::move(one.front()), epoch);
    // One that changes again while this is composed is for the next batch.
    if (!batch.Empty()) underWay.insert(batch.writes.back().mark.part);
    pump();
  }
  marks.Return(std::move(left));
  return batch;
}

// What nobody could have published under that key is removed like an object that has gone.
void Composer::Add(Batch& batch, Mark mark, const Epoch& epoch) {
  const auto name = ParseObjectPart(mark.part);
  const Published::Entry* known = published.Find(mark.part);
  const std::int64_t revision = known ? known->revision : 0;
  Object object;
  if (!name || !FindObject(inventory, name->kind, name->key, object)) {
    if (known == nullptr) return;
    if (batch.Empty()) epoch.Guard(batch.transaction);
    batch.transaction.Compare(prefix + mark.part, revision);
    batch.transaction.Remove(prefix + mark.part);
    batch.writes.push_back({std::move(mark), false, {}});
    return;
  }
  const ObjectText text(site, object);
  const Digest digest = DigestOf(text.Lasting());
  if (known != nullptr && known->digest == digest) {
    ++counters.unchanged;
    return;
  }
  if (text.IsTooLong()) {
    std::cerr << "kecpp-publish: " + Printable(mark.part) +
                     " is too long for a document and is published without its properties\n";
  }
  if (batch.Empty()) epoch.Guard(batch.transaction);
  batch.transaction.Compare(prefix + mark.part, revision);
  batch.transaction.Put(prefix + mark.part, text.Whole(epoch.Number(), TimeText(mark.changed)));
  batch.writes.push_back({std::move(mark), true, digest});
}

}  // namespace tools::publish
