// SPDX-License-Identifier: MIT
//
// A self-signed certificate for 127.0.0.1, made at start.
#ifndef KECPP_SIMULATOR_CERTIFICATE_H
#define KECPP_SIMULATOR_CERTIFICATE_H

#include <openssl/ssl.h>

#include <memory>

namespace sim {

using TlsContext = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;

// A server's TLS settings with a new key and certificate. Throws std::runtime_error.
TlsContext MakeTlsContext();

}  // namespace sim

#endif
