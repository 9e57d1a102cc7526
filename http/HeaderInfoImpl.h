// SPDX-License-Identifier: MIT
//
// Header lines in the list type of libcurl.
//
// Thread safety: none.
#ifndef KECPP_HTTP_HEADERINFOIMPL_H
#define KECPP_HTTP_HEADERINFOIMPL_H

#include "foundation/KEExport.h"
#include "http/HeaderInfo.h"

struct curl_slist;

namespace KELib {
namespace Http {

class KECPP_API HeaderIteratorImpl : public HeaderIterator {
 public:
  // Begins at `first`, which may be null. The list is borrowed.
  explicit HeaderIteratorImpl(curl_slist* first) : node(first) {}

  bool End() override { return node == nullptr; }
  const char* operator*() override;
  const char* operator->() override { return **this; }
  HeaderIterator& operator++() override;
  HeaderIteratorImpl operator++(int) override;

 private:
  curl_slist* node;
};

// Owns a list of header lines in the transport's own form.
class KECPP_API HeaderInfoImpl : public HeaderInfo {
 public:
  HeaderInfoImpl() = default;
  HeaderInfoImpl(const HeaderInfoImpl&) = delete;
  HeaderInfoImpl& operator=(const HeaderInfoImpl&) = delete;
  ~HeaderInfoImpl() override;

  void AddHeader(const char* key, const char* value) override;
  void RemoveHeader(const char* key) override;
  bool HasHeaders() override { return headers != nullptr; }
  const char* GetHeader(const char* key) override;

  // At the first line.
  virtual HeaderIteratorImpl GetHeaderIterator() { return HeaderIteratorImpl(headers); }

  // How many lines there are, and removal of all but the first `count`.
  unsigned int Count() const;
  void CutTo(unsigned int count);

  // The list itself, null while it is empty. It stays this object's.
  curl_slist* GetHeaders() { return headers; }

 private:
  // Where the pointer to the first line that begins with `key` is stored, or to the list's end.
  curl_slist** FindLink(const char* key);

  curl_slist* headers = nullptr;
};

// A new, empty list, owned by the caller.
KECPP_API HeaderInfoImpl* CreateHeaderInfo();

}  // namespace Http
}  // namespace KELib

#endif
