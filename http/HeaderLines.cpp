// SPDX-License-Identifier: MIT
#include "http/HeaderLines.h"

#include <curl/curl.h>

#include <cstring>

#include "foundation/KEString.h"

namespace KELib {
namespace Http {

namespace {

curl_slist* AppendLine(curl_slist* list, const char* line) {
  const char* colon = std::strchr(line, ':');
  if (colon == nullptr || colon[1 + std::strspn(colon + 1, " \t")] != '\0') {
    return curl_slist_append(list, line);
  }
  KEString withoutValue;
  withoutValue.AssignExact(line, static_cast<unsigned int>(colon - line));
  withoutValue += ";";
  return curl_slist_append(list, withoutValue.Cstr());
}

}  // namespace

curl_slist* CopyHeaderLines(const curl_slist* lines) {
  curl_slist* copy = nullptr;
  try {
    for (; lines != nullptr; lines = lines->next) {
      curl_slist* longer = AppendLine(copy, lines->data);
      if (longer == nullptr) {
        curl_slist_free_all(copy);
        return nullptr;
      }
      copy = longer;
    }
  } catch (...) {
    curl_slist_free_all(copy);
    throw;
  }
  return copy;
}

}  // namespace Http
}  // namespace KELib
