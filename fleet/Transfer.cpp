// SPDX-License-Identifier: MIT
#include "fleet/Transfer.h"

#include <curl/curl.h>

#include <algorithm>
#include <new>
#include <utility>

namespace kecpp::fleet {
namespace {

constexpr long kConnectSeconds = 2;
constexpr int kLongestPollMs = 1000;

void InitLibcurl() {
  static const CURLcode done = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (done != CURLE_OK) throw std::bad_alloc();
}

template <class Value>
void Set(CURL* easy, CURLoption option, Value value) {
  const CURLcode code = curl_easy_setopt(easy, option, value);
  if (code == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
  if (code != CURLE_OK) {
    throw EtcdError(EtcdError::Kind::notDone, 0, curl_easy_strerror(code));
  }
}

// Before a connection is there nothing was sent.
bool IsBeforeSending(CURLcode code) {
  switch (code) {
    case CURLE_COULDNT_CONNECT:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_URL_MALFORMAT:
    case CURLE_UNSUPPORTED_PROTOCOL:
      return true;
    default:
      return false;
  }
}

}  // namespace

class Transfer::Handles {
 public:
  Handles() {
    InitLibcurl();
    multi = curl_multi_init();
    easy = curl_easy_init();
    if (multi == nullptr || easy == nullptr) {
      Free();
      throw std::bad_alloc();
    }
  }
  ~Handles() { Free(); }
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;

  void SetHeaders(const std::vector<std::string>& lines) {
    curl_slist_free_all(headers);
    headers = nullptr;
    for (const std::string& line : lines) {
      curl_slist* longer = curl_slist_append(headers, line.c_str());
      if (longer == nullptr) throw std::bad_alloc();
      headers = longer;
    }
    Set(easy, CURLOPT_HTTPHEADER, headers);
  }

  CURLM* multi = nullptr;
  CURL* easy = nullptr;

 private:
  void Free() {
    curl_easy_cleanup(easy);
    curl_multi_cleanup(multi);
    curl_slist_free_all(headers);
  }

  curl_slist* headers = nullptr;
};

Transfer::Transfer(const TlsFiles& tls, std::size_t mostBytes)
    : most(mostBytes), handles(std::make_unique<Handles>()) {
  CURL* easy = handles->easy;
  Set(easy, CURLOPT_NOSIGNAL, 1L);
  Set(easy, CURLOPT_PROXY, "");  // the environment's proxies are not for a cluster
  Set(easy, CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
  Set(easy, CURLOPT_TCP_KEEPALIVE, 1L);
  Set(easy, CURLOPT_TCP_KEEPIDLE, 10L);
  Set(easy, CURLOPT_TCP_KEEPINTVL, 5L);
  Set(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  if (!tls.authorities.empty()) Set(easy, CURLOPT_CAINFO, tls.authorities.c_str());
  if (!tls.certificate.empty()) Set(easy, CURLOPT_SSLCERT, tls.certificate.c_str());
  if (!tls.key.empty()) Set(easy, CURLOPT_SSLKEY, tls.key.c_str());
  Set(easy, CURLOPT_WRITEFUNCTION, &Transfer::Take);
  Set(easy, CURLOPT_WRITEDATA, static_cast<void*>(this));
}

Transfer::~Transfer() {
  GiveUp();
}

void Transfer::GiveUp() {
  if (isUnderWay) curl_multi_remove_handle(handles->multi, handles->easy);
  isUnderWay = false;
}

// libcurl calls it: nothing may be thrown through it.
std::size_t Transfer::Take(char* bytes, std::size_t size, std::size_t count, void* self) try {
  auto& transfer = *static_cast<Transfer*>(self);
  const std::size_t length = size * count;
  if (transfer.sink != nullptr) return (*transfer.sink)({bytes, length}) ? length : 0;
  transfer.isTooLong = transfer.answer.body.size() + length > transfer.most;
  if (transfer.isTooLong) return 0;
  transfer.answer.body.append(bytes, length);
  return length;
} catch (...) {
  return 0;
}

void Transfer::Begin(const std::string& url, std::string body,
                     const std::vector<std::string>& headers, std::chrono::milliseconds limit) {
  GiveUp();
  CURL* easy = handles->easy;
  request = std::move(body);
  answer = {};
  isTooLong = false;
  Set(easy, CURLOPT_URL, url.c_str());
  handles->SetHeaders(headers);
  Set(easy, CURLOPT_POSTFIELDS, request.data());
  Set(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.size()));
  Set(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(limit.count()));
  Set(easy, CURLOPT_LOW_SPEED_TIME, 0L);
  if (curl_multi_add_handle(handles->multi, easy) != CURLM_OK) throw std::bad_alloc();
  isUnderWay = true;
  Advance();
}

void Transfer::Advance() {
  int running = 0;
  if (isUnderWay) curl_multi_perform(handles->multi, &running);
}

bool Transfer::IsDone() {
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(handles->multi, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    result = message->data.result;
    return true;
  }
  return false;
}

Transfer::Answer Transfer::Finish() {
  if (!isUnderWay) throw EtcdError(EtcdError::Kind::notDone, 0, "nothing is under way");
  while (Advance(), !IsDone()) {
    if (isCut) {
      GiveUp();
      throw EtcdError(EtcdError::Kind::uncertain, 0, "ended before the cluster answered");
    }
    curl_multi_poll(handles->multi, nullptr, 0, kLongestPollMs, nullptr);
  }
  return Result();
}

Transfer::Answer Transfer::Result() {
  const auto code = static_cast<CURLcode>(result);
  curl_easy_getinfo(handles->easy, CURLINFO_RESPONSE_CODE, &answer.status);
  GiveUp();
  if (code == CURLE_OK) return std::move(answer);
  const auto kind = IsBeforeSending(code) ? EtcdError::Kind::notDone : EtcdError::Kind::uncertain;
  throw EtcdError(kind, 0, isTooLong ? "the answer is too long" : curl_easy_strerror(code));
}

long Transfer::Stream(const std::string& url, std::string body,
                      const std::vector<std::string>& headers, std::chrono::milliseconds silence,
                      const Sink& use) {
  struct WithSink {
    explicit WithSink(Transfer& owner, const Sink& sink) : transfer(owner) {
      transfer.sink = &sink;
    }
    ~WithSink() {
      transfer.GiveUp();
      transfer.sink = nullptr;
    }
    Transfer& transfer;
  };
  bool isRefused = false;
  const Sink guarded = [&](std::string_view piece) { return !(isRefused = !use(piece)); };
  const WithSink with(*this, guarded);
  Begin(url, std::move(body), headers, std::chrono::milliseconds(0));
  Set(handles->easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
  Set(handles->easy, CURLOPT_LOW_SPEED_TIME,
      std::max(1L, static_cast<long>(silence.count() / 1000)));
  try {
    return Finish().status;
  } catch (const EtcdError&) {
    if (!isRefused) throw;
    return answer.status;
  }
}

void Transfer::Cut() {
  isCut = true;
  curl_multi_wakeup(handles->multi);
}

}  // namespace kecpp::fleet
