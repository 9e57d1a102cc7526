// SPDX-License-Identifier: MIT
#include "http/EasyOption.h"

#include <curl/curl.h>

#include "http/HttpException.h"

namespace KELib {
namespace Http {

namespace {

template <typename Value>
void Set(void* easy, int option, Value value, const OptionError& error) {
  if (curl_easy_setopt(easy, static_cast<CURLoption>(option), value) != CURLE_OK) {
    ThrowHttpException(error.message, error.code);
  }
}

}  // namespace

void SetEasyOption(void* easy, int option, long value, const OptionError& error) {
  Set(easy, option, value, error);
}

void SetEasyOption(void* easy, int option, const char* text, const OptionError& error) {
  Set(easy, option, text, error);
}

void SetEasyOption(void* easy, int option, void* object, const OptionError& error) {
  Set(easy, option, object, error);
}

}  // namespace Http
}  // namespace KELib
