// SPDX-License-Identifier: MIT
//
// The body that arrived, or the reason why none did.
//
// Thread safety: none.
#ifndef KECPP_HTTP_HTTPRESPONSE_H
#define KECPP_HTTP_HTTPRESPONSE_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {
namespace Http {

class KECPP_API HttpResponse {
 public:
  HttpResponse() = default;
  HttpResponse(const HttpResponse&) = delete;
  HttpResponse& operator=(const HttpResponse&) = delete;

  // The body. The caller may take it over with KEString::Transfer; the response is empty then.
  KEString& GetContent() { return content; }

  // libcurl's result code, 0 when the transfer succeeded, and its error text.
  int GetErrorCode() const { return errorCode; }
  KEString& GetErrorString() { return errorString; }
  bool IsRequestError() const { return errorCode > 0; }
  void SetErrorCode(int code) { errorCode = code; }
  void SetErrorString(const char* text) { errorString = text; }

  // Appends `length` bytes. Amortised O(length); O(content) in programs with their own operator
  // new. The content is a text: what was appended behind a NUL may be lost. Throws HttpException
  // when the content would exceed 1 GiB (512 MB on 32-bit builds) and std::bad_alloc; the content
  // is unchanged then.
  void AddContent(const char* data, unsigned int length);

 private:
  KEString content;
  int errorCode = 0;
  KEString errorString;
};

// Appends size * count bytes at `data` to the HttpResponse at `response`. Returns their number.
// Throws as HttpResponse::AddContent.
KECPP_API unsigned int WriteResponse(void* data, unsigned int size, unsigned int count,
                                     void* response);

}  // namespace Http
}  // namespace KELib

#endif
