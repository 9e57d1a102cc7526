// SPDX-License-Identifier: MIT
#include "benchmarks/BarePost.h"

#include <curl/curl.h>

#include <cstring>
#include <stdexcept>

namespace bench {

namespace {

const char* const kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<soapenv:Envelope xmlns:soapenc=\"http://schemas.xmlsoap.org/soap/encoding/\"\n"
    " xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\"\n"
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"\n"
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
    "<soapenv:Body>\n";
const char* const kTail = "\n</soapenv:Body>\n</soapenv:Envelope>";

void LockShare(CURL*, curl_lock_data, curl_lock_access, void* mutex) {
  static_cast<std::mutex*>(mutex)->lock();
}

void UnlockShare(CURL*, curl_lock_data, void* mutex) {
  static_cast<std::mutex*>(mutex)->unlock();
}

}  // namespace

BarePost::BarePost(std::string target)
    : url(std::move(target)), easy(curl_easy_init()), share(curl_share_init()) {
  curl_share_setopt(share, CURLSHOPT_LOCKFUNC, &LockShare);
  curl_share_setopt(share, CURLSHOPT_UNLOCKFUNC, &UnlockShare);
  curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
  curl_share_setopt(share, CURLSHOPT_USERDATA, static_cast<void*>(&shareMutex));
  curl_easy_setopt(easy, CURLOPT_SHARE, share);
  for (const char* line : {"User-Agent: mpxa/0.1", "Cache-Control: no-cache",
                           "Content-Type: text/xml; charset=utf-8", "SOAPAction: \"\""}) {
    headers = curl_slist_append(static_cast<curl_slist*>(headers), line);
  }
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_NOPROXY, "");
  curl_easy_setopt(easy, CURLOPT_PROXY, "");
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(easy, CURLOPT_COOKIEFILE, "");
  curl_easy_setopt(easy, CURLOPT_TIMEOUT, 0L);
  curl_easy_setopt(easy, CURLOPT_POST, 1L);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &BarePost::Store);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText);
}

BarePost::~BarePost() {
  curl_easy_cleanup(easy);
  curl_share_cleanup(share);
  curl_slist_free_all(static_cast<curl_slist*>(headers));
}

void BarePost::Call(const std::string& method, const std::string& inner) {
  const std::string request = std::string(kHead) + "<" + method + " xmlns=\"urn:pxa25\">" + inner +
                              "</" + method + ">\n" + kTail;
  body.reset();
  length = room = 0;
  curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, request.c_str());
  curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, static_cast<long>(request.size()));
  const CURLcode result = curl_easy_perform(easy);
  if (result != CURLE_OK) throw std::runtime_error(curl_easy_strerror(result));
}

std::size_t BarePost::Store(char* data, std::size_t size, std::size_t count, void* self) {
  auto* post = static_cast<BarePost*>(self);
  if (post->body == nullptr) {
    curl_off_t announced = 0;
    curl_easy_getinfo(post->easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    post->room = static_cast<std::size_t>(announced);
    post->body.reset(new char[post->room + 1]);
  }
  const std::size_t bytes = size * count;
  if (post->length + bytes > post->room) return 0;
  std::memcpy(post->body.get() + post->length, data, bytes);
  post->length += bytes;
  post->body[post->length] = '\0';
  return bytes;
}

}  // namespace bench
