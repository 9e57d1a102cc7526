// SPDX-License-Identifier: MIT
#include "tools/publish/Epoch.h"

#include <unistd.h>

#include <algorithm>
#include <random>

#include "fleet/Documents.h"
#include "fleet/Keys.h"

namespace tools::publish {
namespace {

using namespace kecpp::fleet;

// Two processes may have the same number on hosts of the same name.
std::string NameOfThisProcess() {
  char host[256] = {};
  gethostname(host, sizeof host - 1);
  std::random_device random;
  return std::string(host) + ' ' + std::to_string(getpid()) + ' ' + std::to_string(random());
}

}  // namespace

Epoch::Epoch(EtcdClient& to, const std::string& site)
    : client(to), key(EpochOf(site)), publisher(NameOfThisProcess()) {}

std::optional<KeyValue> Epoch::Look() {
  Transaction look;
  look.Get(key);
  const TransactionResult seen = ReadResult(client.Read(Transaction::kPath, look.Text()));
  return seen.read.empty() ? std::nullopt : seen.read.front();
}

// When the answer is lost, the next attempt finds the key as it is then.
void Epoch::Claim(const std::optional<KeyValue>& from) {
  const auto document = from ? ReadEpoch(from->value) : std::nullopt;
  const std::uint64_t mine = std::max(number, document ? document->epoch : 0) + 1;
  Transaction claim;
  claim.Compare(key, from ? from->revision : 0);
  claim.Put(key, ToText(EpochDocument{mine, publisher}, TimeText(NowMilliseconds())));
  const TransactionResult result = client.Commit(claim);
  if (!result.succeeded) {
    throw EtcdError(EtcdError::Kind::notDone, 0, "another publisher takes the site at this moment");
  }
  number = mine;
  revision = result.revision;
}

void Epoch::TakeOver() {
  Claim(Look());
}

bool Epoch::Renew() {
  const auto found = Look();
  const auto document = found ? ReadEpoch(found->value) : std::nullopt;
  const bool isMine = document && document->publisher == publisher;
  if (document && !isMine && document->epoch > number) {
    throw Fenced("another publisher has taken the site over: " + document->publisher);
  }
  Claim(found);
  return isMine;
}

void Epoch::Guard(Transaction& transaction) const {
  transaction.Compare(key, revision);
  transaction.ElseGet(key);
}

bool Epoch::IsHeld(const TransactionResult& failed) const {
  return !failed.read.empty() && failed.read.front() && failed.read.front()->revision == revision;
}

}  // namespace tools::publish
