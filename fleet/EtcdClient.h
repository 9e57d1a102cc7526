// SPDX-License-Identifier: MIT
//
// A client of an etcd cluster, over the JSON gateway of its members (paths "/v3/..."): it stays
// with one member until that fails, goes on to the next, logs in and logs in again when the login
// ends.
//
// Thread safety: one thread at a time; Cut from any.
#ifndef KECPP_FLEET_ETCDCLIENT_H
#define KECPP_FLEET_ETCDCLIENT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "fleet/EtcdError.h"
#include "fleet/Transaction.h"
#include "fleet/Transfer.h"

namespace kecpp::fleet {

struct EtcdOptions {
  std::vector<std::string> members;  // "http://HOST:PORT" or https; at least one
  TlsFiles tls;
  std::string user;  // empty: without a login
  std::string password;
  std::chrono::milliseconds limit{5000};          // of a request
  std::size_t mostBytes = std::size_t{64} << 20;  // of an answer
  std::size_t first = 0;                          // member to begin with, modulo their number
};

// "http(s)://HOST:PORT[,...]" as a list of members, without a slash at the end; empty when a part
// is no such URL.
std::vector<std::string> ParseMembers(std::string_view text);

class EtcdClient {
 public:
  explicit EtcdClient(EtcdOptions options);

  // Asks once: what changes something must not be sent twice. `path` is such as "kv/txn". After a
  // failure that another member may not have, the next request goes to the next member. Throws
  // EtcdError.
  nlohmann::json Call(const std::string& path, std::string body);

  // The same in two steps: Begin sends, Finish waits for the answer. Advance goes on sending.
  void Begin(const std::string& path, std::string body);
  void Advance() { transfer.Advance(); }
  nlohmann::json Finish();

  // Asks one member after the other, each once, until one answers: for what only reads.
  nlohmann::json Read(const std::string& path, const std::string& body);

  // A watch or the like: `use` gets each line of the answer, as JSON, until it returns false.
  // Throws EtcdError when nothing came for `silence`, the stream ends, the cluster ends it with an
  // error, or it is cut; then the next request goes to the next member.
  using UseLine = std::function<bool(const nlohmann::json& line)>;
  void Stream(const std::string& path, const std::string& body, std::chrono::milliseconds silence,
              const UseLine& use);

  // Carries a transaction out. Throws EtcdError.
  TransactionResult Commit(const Transaction& transaction) {
    return ReadResult(Call(Transaction::kPath, transaction.Text()));
  }

  // From now on every request fails at once.
  void Cut() { transfer.Cut(); }

  // The member that the next request goes to.
  const std::string& Member() const { return options.members[member]; }

 private:
  void LogIn();
  std::vector<std::string> Headers() const;
  std::string Url(const std::string& ofPath) const;
  nlohmann::json FinishOnce();
  void NextMember();

  const EtcdOptions options;
  Transfer transfer;
  std::size_t member = 0;
  std::string token;    // of the login; empty: none
  bool isOpen = false;  // the cluster asks for no login, though a user was given
  std::string path;     // of what is under way, for another try behind a login
  std::string body;
};

// Calls `use` with each key from `begin` to before `end`, or with `begin` alone when `end` is
// empty, in order, all as they were at one revision, which it returns: `revision`, or the present
// one when that is 0. What `use` got is void when it throws EtcdError, which may say IsCompacted.
using UseKey = std::function<void(KeyValue&& entry)>;
std::int64_t ReadRange(EtcdClient& client, std::string_view begin, std::string_view end,
                       const UseKey& use, std::int64_t revision = 0);

// The same with all keys that begin with `prefix`.
std::int64_t ReadPrefix(EtcdClient& client, std::string_view prefix, const UseKey& use);

}  // namespace kecpp::fleet

#endif
