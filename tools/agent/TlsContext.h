// SPDX-License-Identifier: MIT
//
// Certificate and key of the server.
#ifndef KECPP_TOOLS_AGENT_TLSCONTEXT_H
#define KECPP_TOOLS_AGENT_TLSCONTEXT_H

#include <openssl/ssl.h>

#include <memory>
#include <string>

namespace tools::agent {

using TlsContext = std::shared_ptr<SSL_CTX>;

// Both are PEM files, the certificate with the chain that leads to it. TLS 1.2 at least, with
// forward secrecy and authenticated encryption only. Throws std::runtime_error.
TlsContext MakeTlsContext(const std::string& certificateFile, const std::string& keyFile);

}  // namespace tools::agent

#endif
