// SPDX-License-Identifier: MIT
//
// The HTTP transport could not be set up, or all of its connections are busy. A transfer that fails
// is not thrown: HttpResponse carries its error (and RequestTimedOutException reports a time-out).
#ifndef KECPP_HTTP_HTTPEXCEPTION_H
#define KECPP_HTTP_HTTPEXCEPTION_H

#include "foundation/KEException.h"
#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {
namespace Http {

class KECPP_API HttpException : public KELib::Exception {
 public:
  using Exception::Exception;
  ~HttpException() override;
};

// Makes `out` the message (null: "Unknown Error") and, unless `code` is null, the code and a
// newline.
KECPP_API void BuildErrMsg(const char* message, const char* code, KEString& out);

// Throw HttpException with that text, of which the exception owns a copy.
[[noreturn]] KECPP_API void ThrowHttpException(const char* message);
[[noreturn]] KECPP_API void ThrowHttpException(const char* message, const char* code);

}  // namespace Http
}  // namespace KELib

#endif
