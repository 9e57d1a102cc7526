// SPDX-License-Identifier: MIT
#include "http/HttpException.h"

#include "http/HttpConstants.h"

namespace KELib {
namespace Http {

HttpException::~HttpException() = default;

void BuildErrMsg(const char* message, const char* code, KEString& out) {
  KEString text(message != nullptr ? message : ERR_UNKNOWN);
  if (code != nullptr) {
    text += code;
    text += "\n";
  }
  out.Transfer(text);
}

void ThrowHttpException(const char* message) {
  ThrowHttpException(message, nullptr);
}

void ThrowHttpException(const char* message, const char* code) {
  KEString text;
  BuildErrMsg(message, code, text);
  throw HttpException(text.Str(), text.Length());
}

}  // namespace Http
}  // namespace KELib
