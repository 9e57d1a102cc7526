// SPDX-License-Identifier: MIT
//
// One request and its reply on a handle that the calling thread has taken.
//
// Thread safety: a transfer belongs to one thread; it holds no lock.
#ifndef KECPP_HTTP_HTTPTRANSFER_H
#define KECPP_HTTP_HTTPTRANSFER_H

#include <chrono>
#include <cstddef>
#include <optional>

#include "http/ConnectionInfo.h"
#include "http/HttpConnectionPool.h"
#include "http/HttpHandle.h"
#include "http/HttpReceiver.h"
#include "http/HttpRequest.h"
#include "http/HttpResponse.h"

namespace KELib {
namespace Http {

class HttpTransfer {
 public:
  HttpTransfer(HttpHandle& handle, HttpConnectionPool& pool, ConnectionInfo& info);
  HttpTransfer(const HttpTransfer&) = delete;
  HttpTransfer& operator=(const HttpTransfer&) = delete;

  // Leaves nothing in the handle that points to request or response.
  ~HttpTransfer();

  // Posts, as HttpClient::Post. A transfer that the scope's interrupter has ended has failed,
  // whatever its result. After a time-out the handle keeps the request's own time-out.
  void Run(HttpRequest& request, HttpResponse& response);

  // libcurl's write callback: no exception may cross it. A number other than that of
  // the bytes makes the transfer fail; the transfer, which is the callback's object, then knows
  // why.
  static std::size_t StoreChunk(char* data, std::size_t size, std::size_t count,
                                void* transfer) noexcept;

  // True when nothing of the answer has come within the time that a CallLimits scope allows.
  bool IsAnswerLate() noexcept;

 private:
  std::size_t Store(const char* data, unsigned int length) noexcept;
  void ExpectAnnounced();
  void KeepReason(const char* reason) noexcept;

  bool ChangeTimeout(long long seconds);
  void ApplyTimeLimit();
  void ApplyAnswerLimit(long milliseconds);
  void PointAt(HttpRequest& request, HttpResponse& response);
  int Perform();
  void LeaveTrace(int result, const KEString& text);
  KEString ErrorText(int result) const;
  void RestoreTimeout();

  HttpHandle& handle;
  HttpConnectionPool& pool;
  ConnectionInfo& info;
  std::optional<HttpReceiver> receiver;
  bool begun = false;    // the first chunk has come
  KEString storeError;   // why the last chunk was refused
  bool limited = false;  // the handle's time-out is that of a CallLimits scope
  bool interrupted = false;
  std::optional<std::chrono::steady_clock::time_point> answerDue;  // the CallLimits scope's limit
  bool late = false;  // the transfer was ended because its answer had not begun
};

}  // namespace Http
}  // namespace KELib

#endif
