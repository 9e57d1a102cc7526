// SPDX-License-Identifier: MIT
#include "fleet/EtcdClient.h"

#include <exception>
#include <utility>

#include "fleet/Base64.h"
#include "fleet/Keys.h"

namespace kecpp::fleet {
namespace {

using nlohmann::json;

// gRPC's codes of refusals: what is refused so was not carried out. The others are of a member that
// lost its leader or its patience, and nobody knows what became of the request. "Database space
// exceeded" (8) is no clear refusal either: the write that exceeds it is carried out.
bool IsClear(int code) {
  constexpr int kClear[] = {3, 5, 6, 7, 9, 11, 12, 16};
  for (const int clear : kClear) {
    if (code == clear) return true;
  }
  return false;
}

std::string TextOf(const json& error) {
  for (const char* name : {"message", "error"}) {
    const auto found = error.find(name);
    if (found != error.end() && found->is_string()) return found->get<std::string>();
  }
  return "an error without a text";
}

int CodeOf(const json& error) {
  for (const char* name : {"code", "grpc_code"}) {
    const auto found = error.find(name);
    if (found != error.end() && found->is_number_integer()) return found->get<int>();
  }
  return 0;
}

[[noreturn]] void ThrowRefusal(const json& error) {
  const int code = CodeOf(error);
  throw EtcdError(IsClear(code) ? EtcdError::Kind::notDone : EtcdError::Kind::uncertain, code,
                  TextOf(error));
}

json ParseAnswer(const Transfer::Answer& answer) {
  json parsed = json::parse(answer.body, nullptr, false);
  if (answer.status == 200 && parsed.is_object()) return parsed;
  if (parsed.is_object()) ThrowRefusal(parsed);
  throw EtcdError(EtcdError::Kind::uncertain, 0,
                  "no answer of etcd's gateway, HTTP status " + std::to_string(answer.status));
}

// A reader that goes on from such a page never comes to an end.
[[noreturn]] void ThrowNoPage() {
  throw EtcdError(EtcdError::Kind::notDone, 0, "the cluster's keys do not come in order");
}

bool IsMember(std::string_view url) {
  for (const std::string_view scheme : {"http://", "https://"}) {
    if (url.substr(0, scheme.size()) != scheme) continue;
    const std::string_view rest = url.substr(scheme.size());
    return !rest.empty() && rest.find_first_of("/?#@ \t\r\n") == std::string_view::npos;
  }
  return false;
}

// Lines of a stream that come in pieces.
class Lines {
 public:
  explicit Lines(std::size_t mostBytes) : most(mostBytes) {}

  // False when `use` wants no more. Throws EtcdError.
  template <class Use>
  bool Take(std::string_view piece, Use use) {
    while (!piece.empty()) {
      const std::size_t end = piece.find('\n');
      line += piece.substr(0, end);
      if (line.size() > most) {
        throw EtcdError(EtcdError::Kind::notDone, 0, "a line of the stream is too long");
      }
      if (end == std::string_view::npos) return true;
      piece.remove_prefix(end + 1);
      const json parsed = json::parse(std::exchange(line, {}), nullptr, false);
      if (!Give(parsed, use)) return false;
    }
    return true;
  }

  const std::string& Rest() const { return line; }

 private:
  template <class Use>
  static bool Give(const json& parsed, Use use) {
    if (!parsed.is_object()) return true;
    const auto error = parsed.find("error");
    if (error != parsed.end()) ThrowRefusal(error->is_object() ? *error : parsed);
    const auto result = parsed.find("result");
    return use(result != parsed.end() ? *result : parsed);
  }

  const std::size_t most;
  std::string line;
};

}  // namespace

std::vector<std::string> ParseMembers(std::string_view text) {
  std::vector<std::string> members;
  while (true) {
    const std::size_t comma = text.find(',');
    std::string_view url = text.substr(0, comma);
    if (!url.empty() && url.back() == '/') url.remove_suffix(1);
    if (!IsMember(url)) return {};
    members.emplace_back(url);
    if (comma == std::string_view::npos) return members;
    text.remove_prefix(comma + 1);
  }
}

EtcdClient::EtcdClient(EtcdOptions given)
    : options(std::move(given)), transfer(options.tls, options.mostBytes) {
  if (options.members.empty()) {
    throw EtcdError(EtcdError::Kind::notDone, 0, "no member of a cluster is named");
  }
  member = options.first % options.members.size();
}

std::string EtcdClient::Url(const std::string& ofPath) const {
  return Member() + "/v3/" + ofPath;
}

// Without "Expect:" a large request would wait for a "100-continue" that the gateway never sends.
// The last one lets a member that has lost its leader say so instead of falling silent.
std::vector<std::string> EtcdClient::Headers() const {
  std::vector<std::string> headers = {"Content-Type: application/json",
                                      "Expect:", "Grpc-Metadata-hasleader: true"};
  if (!token.empty()) headers.push_back("Authorization: " + token);
  return headers;
}

void EtcdClient::NextMember() {
  member = (member + 1) % options.members.size();
}

void EtcdClient::LogIn() {
  token.clear();
  const std::string login = json{{"name", options.user}, {"password", options.password}}.dump(
      -1, ' ', true, json::error_handler_t::replace);
  try {
    transfer.Begin(Url("auth/authenticate"), login, Headers(), options.limit);
    const json answer = ParseAnswer(transfer.Finish());
    const auto found = answer.find("token");
    if (found == answer.end() || !found->is_string()) {
      throw EtcdError(EtcdError::Kind::notDone, 0, "the login gives no token");
    }
    token = found->get<std::string>();
  } catch (const EtcdError& error) {
    if (error.IsWithoutAuthentication()) {
      isOpen = true;
      return;
    }
    if (!error.IsAnswer()) NextMember();
    // What was to be done behind the login was not begun.
    throw EtcdError(EtcdError::Kind::notDone, 0, std::string("cannot log in: ") + error.what());
  }
}

void EtcdClient::Begin(const std::string& toPath, std::string text) {
  if (token.empty() && !options.user.empty() && !isOpen) LogIn();
  path = toPath;
  body = std::move(text);
  transfer.Begin(Url(path), body, Headers(), options.limit);
}

json EtcdClient::FinishOnce() {
  try {
    return ParseAnswer(transfer.Finish());
  } catch (const EtcdError& error) {
    if (!error.IsAnswer()) NextMember();
    throw;
  }
}

// A login that has ended is made again, and the request, which was refused for it, sent again.
json EtcdClient::Finish() {
  try {
    return FinishOnce();
  } catch (const EtcdError& error) {
    if (!error.IsLogin() || options.user.empty()) throw;
  }
  isOpen = false;
  LogIn();
  transfer.Begin(Url(path), body, Headers(), options.limit);
  return FinishOnce();
}

json EtcdClient::Call(const std::string& toPath, std::string text) {
  Begin(toPath, std::move(text));
  return Finish();
}

json EtcdClient::Read(const std::string& fromPath, const std::string& text) {
  for (std::size_t left = options.members.size();; --left) {
    try {
      return Call(fromPath, text);
    } catch (const EtcdError& error) {
      if (error.IsAnswer() || left <= 1) throw;
    }
  }
}

void EtcdClient::Stream(const std::string& fromPath, const std::string& text,
                        std::chrono::milliseconds silence, const UseLine& use) {
  if (token.empty() && !options.user.empty() && !isOpen) LogIn();
  Lines lines(options.mostBytes);
  std::exception_ptr failure;
  bool isEnough = false;
  const auto sink = [&](std::string_view piece) {
    try {
      isEnough = !lines.Take(piece, use);
    } catch (...) {
      failure = std::current_exception();  // libcurl is in between
    }
    return !isEnough && !failure;
  };
  try {
    const long status = transfer.Stream(Url(fromPath), text, Headers(), silence, sink);
    if (isEnough) return;
    if (failure) std::rethrow_exception(failure);
    // A refusal comes without an end of its line.
    ParseAnswer({status == 200 ? 0 : status, lines.Rest()});
  } catch (const EtcdError& error) {
    if (error.IsLogin()) token.clear();
    if (!error.IsAnswer()) NextMember();
    throw;
  }
}

std::int64_t ReadPrefix(EtcdClient& client, std::string_view prefix, const UseKey& use) {
  return ReadRange(client, prefix, EndOfPrefix(prefix), use);
}

std::int64_t ReadRange(EtcdClient& client, std::string_view begin, std::string_view end,
                       const UseKey& use, std::int64_t revision) {
  constexpr int kPage = 512;  // at most 45 MB of the longest documents
  std::string from(begin);
  while (true) {
    std::string request = R"({"key":")";
    AppendBase64(request, from);
    if (!end.empty()) {
      request += R"(","range_end":")";
      AppendBase64(request, end);
    }
    request += R"(","limit":")" + std::to_string(kPage) + '"';
    if (revision != 0) request += R"(,"revision":")" + std::to_string(revision) + '"';
    const json answer = client.Read("kv/range", request + '}');
    if (revision == 0) revision = ReadRevision(answer);
    const auto entries = answer.find("kvs");
    const std::string before = from;
    if (entries != answer.end() && entries->is_array()) {
      for (const json& entry : *entries) {
        KeyValue read = ReadKeyValue(entry);
        if (read.key < from) ThrowNoPage();
        from = read.key + '\0';
        use(std::move(read));
      }
    }
    const auto more = answer.find("more");
    if (more == answer.end() || *more != true) return revision;
    if (from == before) ThrowNoPage();
  }
}

}  // namespace kecpp::fleet
