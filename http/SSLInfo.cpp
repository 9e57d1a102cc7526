// SPDX-License-Identifier: MIT
#include "http/SSLInfo.h"

#include "http/HttpConstants.h"

namespace KELib {
namespace Http {

SSLInfo::SSLInfo(const KEString& certificate, const KEString& phrase, const KEString& key,
                 const KEString& authorities)
    : SSLInfo(certificate, phrase, key, authorities, KEString()) {}

SSLInfo::SSLInfo(const KEString& certificate, const KEString& phrase, const KEString& key,
                 const KEString& authorities, const KEString& type)
    : certFile(certificate),
      passPhrase(phrase),
      keyFile(key),
      CACertFile(authorities),
      certType(type.Empty() ? DEFAULT_SSL_CERT_TYPE : type.Cstr()) {}

}  // namespace Http
}  // namespace KELib
