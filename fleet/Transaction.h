// SPDX-License-Identifier: MIT
//
// A transaction of the cluster: everything is done if each key has the revision that it is thought
// to have; nothing otherwise.
//
// Thread safety: none.
#ifndef KECPP_FLEET_TRANSACTION_H
#define KECPP_FLEET_TRANSACTION_H

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kecpp::fleet {

struct KeyValue {
  std::string key;
  std::string value;
  std::int64_t revision = 0;  // of its last change
};

// What a transaction's text consists of, built by appending: a batch is a hundred kilobytes.
class Transaction {
 public:
  static constexpr const char* kPath = "kv/txn";
  // The cluster takes 1.5 MiB and 128 operations. A batch is ended when it has so many bytes.
  static constexpr std::size_t kMostBytes = 900000;

  // The key's last change was that revision; 0: there is no such key.
  void Compare(std::string_view key, std::int64_t revision);
  // Done if all compared keys are as thought. `lease` 0 is none.
  void Put(std::string_view key, std::string_view value, std::int64_t lease = 0);
  void Remove(std::string_view key);
  void Get(std::string_view key);
  // Done if not.
  void ElseGet(std::string_view key);

  std::size_t Bytes() const { return compares.size() + success.size() + failure.size(); }
  std::string Text() const;

 private:
  std::string compares;
  std::string success;
  std::string failure;
};

struct TransactionResult {
  bool succeeded = false;
  std::int64_t revision = 0;                  // the cluster's; of what was put
  std::vector<std::optional<KeyValue>> read;  // one for each Get or ElseGet; nothing: no such key
};
// Throws EtcdError for what is no answer to a transaction.
TransactionResult ReadResult(const nlohmann::json& answer);

// A key of an answer. Throws EtcdError for what is none.
KeyValue ReadKeyValue(const nlohmann::json& entry);

// A number, which the gateway writes as a text and leaves out when it is 0. Throws EtcdError.
std::int64_t ReadNumber(const nlohmann::json& object, const char* name);

// The revision of an answer's header.
std::int64_t ReadRevision(const nlohmann::json& answer);

}  // namespace kecpp::fleet

#endif
