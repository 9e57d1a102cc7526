// SPDX-License-Identifier: MIT
#include "http/HttpTransfer.h"

#include <curl/curl.h>

#include "foundation/KEException.h"
#include "http/CallLimits.h"
#include "http/CallTrace.h"
#include "http/CookieStore.h"
#include "http/EasyOption.h"
#include "http/HttpConstants.h"
#include "http/HttpException.h"
#include "http/Interrupter.h"
#include "http/SocketRegistry.h"

namespace KELib {
namespace Http {

namespace {

// libcurl's progress callback, called at the moment that Performer was given and about once a
// second from then on: anything but 0 ends the transfer.
int CheckProgress(void* transfer, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<HttpTransfer*>(transfer)->IsAnswerLate() ? 1 : 0;
}

}  // namespace

HttpTransfer::HttpTransfer(HttpHandle& taken, HttpConnectionPool& owner, ConnectionInfo& settings)
    : handle(taken), pool(owner), info(settings) {}

HttpTransfer::~HttpTransfer() {
  void* const nothing = nullptr;
  curl_easy_setopt(handle.handle, CURLOPT_ERRORBUFFER, nothing);
  curl_easy_setopt(handle.handle, CURLOPT_WRITEDATA, nothing);
  curl_easy_setopt(handle.handle, CURLOPT_POSTFIELDS, nothing);
  // A handle that cannot be put right is prepared again for its next user.
  if (limited && !handle.SetTimeout(handle.timeout)) handle.prepared = false;
  if (!answerDue) return;
  curl_easy_setopt(handle.handle, CURLOPT_NOPROGRESS, 1L);
  curl_easy_setopt(handle.handle, CURLOPT_XFERINFOFUNCTION, nullptr);
  curl_easy_setopt(handle.handle, CURLOPT_XFERINFODATA, nothing);
  handle.prepared = false;  // the settings may want the progress shown
}

void HttpTransfer::Run(HttpRequest& request, HttpResponse& response) {
  const bool changed = ChangeTimeout(request.GetTimeout());
  ApplyTimeLimit();
  PointAt(request, response);
  const int result = Perform();
  const bool isLate = late && !interrupted && result != CURLE_OK;
  const bool timedOut = isLate || (result == CURLE_OPERATION_TIMEDOUT && !interrupted);
  KEString text = result != CURLE_OK ? ErrorText(result) : KEString();
  if (isLate) text = "No answer within the time limit.";
  LeaveTrace(timedOut ? CURLE_OPERATION_TIMEDOUT : result, text);
  if (result != CURLE_OK) {
    if (timedOut) {
      throw RequestTimedOutException(text.Str(), text.Length());
    }
    response.SetErrorCode(result);
    response.SetErrorString(text.Cstr());
  }
  if (changed) RestoreTimeout();
}

bool HttpTransfer::ChangeTimeout(long long seconds) {
  if (seconds <= 0 || seconds == info.GetTimeout()) return false;
  if (!handle.SetTimeout(seconds)) throw HttpException("Unable to set request timeout.");
  return true;
}

void HttpTransfer::RestoreTimeout() {
  if (!handle.SetTimeout(info.GetTimeout())) {
    throw HttpException("Unable to restore connection timeout.");
  }
  limited = false;
}

void HttpTransfer::ApplyTimeLimit() {
  const CallLimits* scope = CallLimits::Current();
  if (scope != nullptr) ApplyAnswerLimit(scope->AnswerLimit());
  const long limit = scope != nullptr ? scope->TransferLimit() : 0;
  if (limit <= 0 || (handle.timeout > 0 && handle.timeout <= limit / 1000)) return;
  if (curl_easy_setopt(handle.handle, CURLOPT_TIMEOUT_MS, limit) != CURLE_OK) {
    throw HttpException("Unable to set request timeout.");
  }
  limited = true;
}

void HttpTransfer::ApplyAnswerLimit(long milliseconds) {
  if (milliseconds <= 0) return;
  answerDue = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  void* easy = handle.handle;
  const bool set = curl_easy_setopt(easy, CURLOPT_XFERINFODATA, this) == CURLE_OK &&
                   curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, &CheckProgress) == CURLE_OK &&
                   curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L) == CURLE_OK;
  if (!set) throw HttpException("Unable to set request timeout.");
}

bool HttpTransfer::IsAnswerLate() noexcept {
  late = !begun && answerDue && std::chrono::steady_clock::now() >= *answerDue;
  return late;
}

void HttpTransfer::PointAt(HttpRequest& request, HttpResponse& response) {
  void* easy = handle.handle;
  char* body = request.GetContent().Str();
  // The text's own length: the caller may have changed it in place.
  const long length = static_cast<long>(request.GetContent().Length());
  SetEasyOption(easy, CURLOPT_POSTFIELDS, static_cast<void*>(body),
                {ERR_HTTP_POST_REQUEST, "0040"});
  SetEasyOption(easy, CURLOPT_POSTFIELDSIZE, length, {ERR_HTTP_POST_REQUEST, "0041"});
  receiver.emplace(response, pool.GetReplyLimit());
  SetEasyOption(easy, CURLOPT_WRITEDATA, static_cast<void*>(this), {ERR_HTTP_POST_REQUEST, "0042"});
  handle.errorText[0] = '\0';
  SetEasyOption(easy, CURLOPT_ERRORBUFFER, static_cast<void*>(handle.errorText),
                {ERR_HTTP_POST_REQUEST, "0043"});
  SetEasyOption(easy, CURLOPT_URL, info.GetUrl().Cstr(), {ERR_HTTP_POST_REQUEST, "0044"});
}

// A cut connection can look like the regular end of a reply, so the result alone does not decide.
int HttpTransfer::Perform() {
  const CallLimits* scope = CallLimits::Current();
  CookieStore* const cookies = pool.Cookies();
  if (cookies != nullptr) {
    if (handle.cookies == nullptr) handle.cookies = std::make_unique<HandleCookies>();
    cookies->Load(handle.handle, *handle.cookies);
  }
  CURLcode result = CURLE_OK;
  {
    const Interrupter::Registration registration(
        scope != nullptr ? scope->GetInterrupter() : nullptr, *handle.sockets);
    result = static_cast<CURLcode>(handle.sockets->Transfers().Perform(handle.handle, answerDue));
  }
  if (cookies != nullptr) cookies->Save(handle.handle, *handle.cookies);
  interrupted = handle.sockets->IsCut();
  return interrupted && result == CURLE_OK ? CURLE_ABORTED_BY_CALLBACK : result;
}

void HttpTransfer::LeaveTrace(int result, const KEString& text) {
  CallTrace* trace = CallTrace::Current();
  if (trace == nullptr) return;
  long systemError = 0;
  curl_easy_getinfo(handle.handle, CURLINFO_OS_ERRNO, &systemError);
  curl_easy_getinfo(handle.handle, CURLINFO_RESPONSE_CODE, &trace->status);
  trace->url = info.GetUrl();
  trace->NoteTransfer(result, static_cast<int>(systemError), text);
}

KEString HttpTransfer::ErrorText(int result) const {
  if (!storeError.Empty()) return storeError;
  if (handle.errorText[0] != '\0') return handle.errorText;
  if (interrupted) return "Transfer interrupted.";
  return curl_easy_strerror(static_cast<CURLcode>(result));
}

std::size_t HttpTransfer::StoreChunk(char* data, std::size_t size, std::size_t count,
                                     void* transfer) noexcept {
  // The library hands over at most some hundred kilobytes at once.
  const auto length = static_cast<unsigned int>(size * count);
  return transfer != nullptr ? static_cast<HttpTransfer*>(transfer)->Store(data, length) : 0;
}

std::size_t HttpTransfer::Store(const char* data, unsigned int length) noexcept {
  try {
    if (!begun) ExpectAnnounced();
    receiver->Add(data, length);
    return length;
  } catch (const Throwable& refusal) {
    KeepReason(refusal.What());
  } catch (...) {
    KeepReason("Out of memory for the reply.");
  }
  return 0;
}

// Without an announcement the length is -1.
void HttpTransfer::ExpectAnnounced() {
  begun = true;
  if (CallLimits::Current() != nullptr) CallLimits::Current()->NoteAnswer();
  curl_off_t length = -1;
  curl_easy_getinfo(handle.handle, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  if (length > 0) receiver->Expect(static_cast<unsigned long long>(length));
}

void HttpTransfer::KeepReason(const char* reason) noexcept {
  try {
    storeError = reason;
  } catch (...) {
    // The transfer fails all the same, with the library's own text.
  }
}

}  // namespace Http
}  // namespace KELib
