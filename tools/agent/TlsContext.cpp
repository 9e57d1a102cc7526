// SPDX-License-Identifier: MIT
#include "tools/agent/TlsContext.h"

#include <openssl/err.h>

#include <stdexcept>

namespace tools::agent {
namespace {

// No RSA key exchange, no CBC. Those of TLS 1.3 are good.
constexpr const char* TLS_1_2_CIPHERS = "ECDHE+AESGCM:ECDHE+CHACHA20";

[[noreturn]] void Fail(const std::string& what) {
  const char* reason = ERR_reason_error_string(ERR_peek_last_error());
  throw std::runtime_error(what + (reason ? std::string(": ") + reason : std::string()));
}

// A daemon has no terminal on which to ask for a pass phrase.
int NoPassPhrase(char*, int, int, void*) {
  return 0;
}

}  // namespace

TlsContext MakeTlsContext(const std::string& certificateFile, const std::string& keyFile) {
  TlsContext context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
  if (!context || SSL_CTX_set_cipher_list(context.get(), TLS_1_2_CIPHERS) != 1) Fail("no TLS");
  SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
  SSL_CTX_set_default_passwd_cb(context.get(), NoPassPhrase);
  SSL_CTX_set_mode(context.get(),
                   SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
  if (SSL_CTX_use_certificate_chain_file(context.get(), certificateFile.c_str()) != 1) {
    Fail("cannot use the certificate " + certificateFile);
  }
  if (SSL_CTX_use_PrivateKey_file(context.get(), keyFile.c_str(), SSL_FILETYPE_PEM) != 1) {
    Fail("cannot use the key " + keyFile);
  }
  return context;
}

}  // namespace tools::agent
