// SPDX-License-Identifier: MIT
#include "tools/publish/Presence.h"

#include "fleet/Keys.h"

namespace tools::publish {

using namespace kecpp::fleet;

Presence::Presence(EtcdClient& to, const Epoch& own, const std::string& site)
    : client(to), epoch(own), living{LivingOf(site)}, state{SiteOf(site)} {}

// A key that is not as it is thought to be is compared once more as it is: only this publisher has
// a right to it.
bool Presence::Put(OwnKey& key, const std::string& text, std::int64_t underLease) {
  constexpr int kAttempts = 3;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    Transaction put;
    epoch.Guard(put);
    put.Compare(key.name, key.revision);
    put.ElseGet(key.name);
    put.Put(key.name, text, underLease);
    const TransactionResult result = client.Commit(put);
    if (result.succeeded) {
      key.revision = result.revision;
      return true;
    }
    if (!epoch.IsHeld(result)) return false;
    const bool isThere = result.read.size() > 1 && result.read[1];
    key.revision = isThere ? result.read[1]->revision : 0;
  }
  throw EtcdError(EtcdError::Kind::notDone, 0, "somebody else writes " + key.name);
}

bool Presence::IsKeptAlive() {
  if (lease == 0) return false;
  const auto answer = client.Call("lease/keepalive", R"({"ID":")" + std::to_string(lease) + "\"}");
  const auto result = answer.find("result");
  return result != answer.end() && result->is_object() && ReadNumber(*result, "TTL") > 0;
}

bool Presence::ShowLife() {
  if (!IsKeptAlive()) {
    lease = 0;
    const auto answer =
        client.Call("lease/grant", R"({"TTL":")" + std::to_string(kLeaseSeconds) + "\"}");
    lease = ReadNumber(answer, "ID");
    livingEpoch = 0;
  }
  if (livingEpoch == epoch.Number()) return CheckEpoch();
  const std::string text =
      ToText(EpochDocument{epoch.Number(), epoch.Publisher()}, TimeText(NowMilliseconds()));
  if (!Put(living, text, lease)) return false;
  livingEpoch = epoch.Number();
  return true;
}

bool Presence::Show(const SiteDocument& document) {
  return Put(state, ToText(document), 0);
}

bool Presence::CheckEpoch() {
  Transaction check;
  epoch.Guard(check);
  return client.Commit(check).succeeded;
}

void Presence::Leave() {
  if (lease == 0) return;
  client.Call("lease/revoke", R"({"ID":")" + std::to_string(lease) + "\"}");
  lease = 0;
}

}  // namespace tools::publish
