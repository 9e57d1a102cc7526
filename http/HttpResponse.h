// SPDX-License-Identifier: MIT
//
// The body that arrived, or the reason why none did.
//
// The content's room grows geometrically, or is taken at once when the server announces a length.
// It is bounded, because a server could otherwise fill the agent's memory.
//
// Thread safety: none of its own.
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

  // In bytes, without a scan. 0 once the content was taken over.
  unsigned int GetContentLength();

  // The transfer library's result code, 0 when the transfer succeeded, and its error text.
  int GetErrorCode() const { return errorCode; }
  KEString& GetErrorString() { return errorString; }
  bool IsRequestError() const { return errorCode > 0; }
  void SetErrorCode(int code) { errorCode = code; }
  void SetErrorString(const char* text) { errorString = text; }

  // Appends exactly `length` bytes. Amortised O(length). Throws HttpException beyond the size limit
  // and std::bad_alloc; the content is unchanged then.
  void AddContent(const char* data, unsigned int length);

  // Takes room for a body of `length` bytes at once, up to 512 MB (32-bit: 256 MB), since an
  // announcement may be wrong; longer bodies grow from there. Without enough memory nothing
  // happens. Throws HttpException when the body would exceed the size limit.
  void ExpectContent(unsigned long long length);

  // The largest content, in bytes, below 2^31: 1 GiB, or 512 MB on 32-bit builds.
  void SetSizeLimit(unsigned int bytes);
  unsigned int GetSizeLimit() const { return sizeLimit; }

 private:
  friend class HttpTransfer;

  void NoticeForeignContent();
  void CheckLimit(unsigned long long length) const;
  void Reallocate(unsigned int room);

  KEString content;
  int errorCode = 0;
  KEString errorString;

  unsigned int contentLength = 0;
  unsigned int capacity = 0;    // characters that fit into the content's block
  const char* block = nullptr;  // the content's block that the two numbers are about
  void* source = nullptr;       // asked for the announced length at the first chunk
  KEString storeError;          // why the last chunk of a transfer was refused
  unsigned int sizeLimit = sizeof(void*) > 4 ? 1024U << 20 : 512U << 20;
};

// Appends size * count bytes at `data` to the HttpResponse at `response`. Returns their number.
// Throws as HttpResponse::AddContent.
KECPP_API unsigned int WriteResponse(void* data, unsigned int size, unsigned int count,
                                     void* response);

}  // namespace Http
}  // namespace KELib

#endif
