// SPDX-License-Identifier: MIT
//
// Certificate and key of the server.
#ifndef KECPP_AGENT_CIMXML_TLSCONTEXT_H
#define KECPP_AGENT_CIMXML_TLSCONTEXT_H

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace cimxml {

struct TlsContextFree {
  void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
using TlsContext = std::unique_ptr<SSL_CTX, TlsContextFree>;

// Both are PEM files, the certificate with the chain that leads to it; TLS 1.2 at least. Throws
// std::runtime_error.
TlsContext MakeTlsContext(const std::string& certificateFile, const std::string& keyFile);

}  // namespace cimxml

#endif
