// SPDX-License-Identifier: MIT
#include "fleet/Transaction.h"

#include <charconv>

#include "fleet/Base64.h"
#include "fleet/EtcdError.h"

namespace kecpp::fleet {
namespace {

[[noreturn]] void Refuse(const char* what) {
  throw EtcdError(EtcdError::Kind::uncertain, 0,
                  std::string("the cluster's answer has no sound ") + what);
}

void Begin(std::string& list, std::string_view text) {
  if (!list.empty()) list += ',';
  list += text;
}

std::string BytesOf(const nlohmann::json& entry, const char* name) {
  const auto found = entry.find(name);
  if (found == entry.end()) return {};  // an empty text is left out
  if (!found->is_string()) Refuse(name);
  auto bytes = DecodeBase64(found->get_ref<const std::string&>());
  if (!bytes) Refuse(name);
  return std::move(*bytes);
}

}  // namespace

void Transaction::Compare(std::string_view key, std::int64_t revision) {
  Begin(compares, R"({"target":"MOD","key":")");
  AppendBase64(compares, key);
  ((compares += R"(","mod_revision":")") += std::to_string(revision)) += "\"}";
}

void Transaction::Put(std::string_view key, std::string_view value, std::int64_t lease) {
  Begin(success, R"({"request_put":{"key":")");
  AppendBase64(success, key);
  success += R"(","value":")";
  AppendBase64(success, value);
  success += '"';
  if (lease != 0) ((success += R"(,"lease":")") += std::to_string(lease)) += '"';
  success += "}}";
}

void Transaction::Remove(std::string_view key) {
  Begin(success, R"({"request_delete_range":{"key":")");
  AppendBase64(success, key);
  success += "\"}}";
}

void Transaction::Get(std::string_view key) {
  Begin(success, R"({"request_range":{"key":")");
  AppendBase64(success, key);
  success += "\"}}";
}

void Transaction::ElseGet(std::string_view key) {
  Begin(failure, R"({"request_range":{"key":")");
  AppendBase64(failure, key);
  failure += "\"}}";
}

std::string Transaction::Text() const {
  std::string text;
  text.reserve(Bytes() + 64);
  text += "{\"compare\":[";
  text += compares;
  text += "],\"success\":[";
  text += success;
  text += "],\"failure\":[";
  text += failure;
  return text += "]}";
}

std::int64_t ReadNumber(const nlohmann::json& object, const char* name) {
  const auto found = object.find(name);
  if (found == object.end()) return 0;
  if (!found->is_string()) Refuse(name);
  const auto& text = found->get_ref<const std::string&>();
  std::int64_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) Refuse(name);
  return number;
}

std::int64_t ReadRevision(const nlohmann::json& answer) {
  const auto header = answer.find("header");
  if (header == answer.end() || !header->is_object()) Refuse("header");
  return ReadNumber(*header, "revision");
}

KeyValue ReadKeyValue(const nlohmann::json& entry) {
  if (!entry.is_object()) Refuse("key");
  return {BytesOf(entry, "key"), BytesOf(entry, "value"), ReadNumber(entry, "mod_revision")};
}

TransactionResult ReadResult(const nlohmann::json& answer) {
  TransactionResult result;
  result.revision = ReadRevision(answer);
  const auto succeeded = answer.find("succeeded");
  result.succeeded = succeeded != answer.end() && *succeeded == true;
  const auto responses = answer.find("responses");
  if (responses == answer.end()) return result;
  if (!responses->is_array()) Refuse("responses");
  for (const nlohmann::json& response : *responses) {
    const auto range = response.is_object() ? response.find("response_range") : response.end();
    if (range == response.end() || !range->is_object()) continue;
    const auto entries = range->find("kvs");
    result.read.emplace_back();
    if (entries != range->end() && entries->is_array() && !entries->empty()) {
      result.read.back() = ReadKeyValue(entries->front());
    }
  }
  return result;
}

}  // namespace kecpp::fleet
