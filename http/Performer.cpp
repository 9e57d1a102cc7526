// SPDX-License-Identifier: MIT
#include "http/Performer.h"

#include <curl/curl.h>

#include <algorithm>

namespace KELib {
namespace Http {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kLongestWait = std::chrono::hours(1);  // timers of libcurl end it earlier

int CodeOf(CURLMcode code) {
  if (code == CURLM_OK) return CURLE_OK;
  return code == CURLM_OUT_OF_MEMORY ? CURLE_OUT_OF_MEMORY : CURLE_BAD_FUNCTION_ARGUMENT;
}

int WaitUntil(std::optional<Clock::time_point> look) {
  if (!look) return static_cast<int>(kLongestWait.count());
  const auto left = std::chrono::ceil<milliseconds>(*look - Clock::now());
  return static_cast<int>(left.count() > 0 ? std::min(left, kLongestWait).count() : 1000);
}

}  // namespace

void Performer::CloseConnections() {
  if (multi != nullptr) curl_multi_cleanup(multi);
  multi = nullptr;
}

int Performer::Perform(void* easy, std::optional<Clock::time_point> look) {
  if (multi == nullptr) multi = curl_multi_init();
  if (multi == nullptr) return CURLE_OUT_OF_MEMORY;
  const int refused = CodeOf(curl_multi_add_handle(multi, easy));
  if (refused != CURLE_OK) return refused;
  const int result = Run(look);
  curl_multi_remove_handle(multi, easy);
  return result;
}

int Performer::Run(std::optional<Clock::time_point> look) {
  for (int running = 1;;) {
    CURLMcode code = curl_multi_perform(multi, &running);
    if (code == CURLM_OK && running == 0) return Result();
    if (code == CURLM_OK) code = curl_multi_poll(multi, nullptr, 0, WaitUntil(look), nullptr);
    if (code != CURLM_OK) return CodeOf(code);
  }
}

int Performer::Result() const {
  int left = 0;
  const CURLMsg* message = curl_multi_info_read(multi, &left);
  return message != nullptr ? message->data.result : CURLE_OUT_OF_MEMORY;
}

}  // namespace Http
}  // namespace KELib
