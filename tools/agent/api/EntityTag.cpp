// SPDX-License-Identifier: MIT
#include "tools/agent/api/EntityTag.h"

#include <openssl/evp.h>

namespace tools::agent::api {
namespace {

constexpr unsigned TAG_BYTES = 16;

}  // namespace

std::string EntityTagOf(const std::string& body) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  EVP_Digest(body.data(), body.size(), digest, &length, EVP_sha256(), nullptr);
  std::string tag = "\"";
  for (unsigned i = 0; i < TAG_BYTES && i < length; ++i) {
    tag += "0123456789abcdef"[digest[i] >> 4];
    tag += "0123456789abcdef"[digest[i] & 15];
  }
  return tag + '"';
}

// A tag is between quotes, so it is found whole. A weak one, "W/" in front, is as good here.
bool HasTag(const std::string& list, const std::string& tag) {
  return list == "*" || list.find(tag) != std::string::npos;
}

}  // namespace tools::agent::api
