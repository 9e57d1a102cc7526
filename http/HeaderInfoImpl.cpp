// SPDX-License-Identifier: MIT
#include "http/HeaderInfoImpl.h"

#include <curl/curl.h>

#include <cstring>
#include <new>

#include "foundation/KEException.h"
#include "foundation/KEString.h"

namespace KELib {
namespace Http {

const char* HeaderIteratorImpl::operator*() {
  return node != nullptr ? node->data : nullptr;
}

HeaderIterator& HeaderIteratorImpl::operator++() {
  if (node != nullptr) node = node->next;
  return *this;
}

HeaderIteratorImpl HeaderIteratorImpl::operator++(int) {
  HeaderIteratorImpl before = *this;
  ++*this;
  return before;
}

HeaderInfoImpl::~HeaderInfoImpl() {
  curl_slist_free_all(headers);
}

void HeaderInfoImpl::AddHeader(const char* key, const char* value) {
  if (key == nullptr) throw InvalidArgumentException("Header Key missing");
  KEString line(key);
  if (value == nullptr) {
    KEString text("Header value missing for Key: ");
    text += line;
    text += "\n";
    throw InvalidArgumentException(text.Str(), text.Length());
  }
  line += value;
  curl_slist* longer = curl_slist_append(headers, line.Cstr());
  if (longer == nullptr) throw std::bad_alloc();
  headers = longer;
}

curl_slist** HeaderInfoImpl::FindLink(const char* key) {
  curl_slist** link = &headers;
  while (*link != nullptr &&
         (key == nullptr || std::strncmp((*link)->data, key, std::strlen(key)) != 0)) {
    link = &(*link)->next;
  }
  return link;
}

void HeaderInfoImpl::RemoveHeader(const char* key) {
  curl_slist** link = FindLink(key);
  curl_slist* removed = *link;
  if (removed == nullptr) return;
  *link = removed->next;
  removed->next = nullptr;
  curl_slist_free_all(removed);
}

const char* HeaderInfoImpl::GetHeader(const char* key) {
  const curl_slist* found = *FindLink(key);
  return found != nullptr ? found->data : nullptr;
}

unsigned int HeaderInfoImpl::Count() const {
  unsigned int count = 0;
  for (const curl_slist* line = headers; line != nullptr; line = line->next) ++count;
  return count;
}

void HeaderInfoImpl::CutTo(unsigned int count) {
  curl_slist** link = &headers;
  for (; *link != nullptr && count > 0; --count) link = &(*link)->next;
  curl_slist_free_all(*link);
  *link = nullptr;
}

HeaderInfoImpl* CreateHeaderInfo() {
  return new HeaderInfoImpl;
}

}  // namespace Http
}  // namespace KELib
