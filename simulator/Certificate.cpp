// SPDX-License-Identifier: MIT
#include "simulator/Certificate.h"

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <stdexcept>

namespace sim {

namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;

Certificate Sign(const Key& key) {
  Certificate certificate(X509_new(), &X509_free);
  X509* x509 = certificate.get();
  if (x509 == nullptr) return certificate;
  ASN1_INTEGER_set(X509_get_serialNumber(x509), 1);
  X509_gmtime_adj(X509_getm_notBefore(x509), -3600);
  X509_gmtime_adj(X509_getm_notAfter(x509), 10L * 24 * 3600);
  X509_set_pubkey(x509, key.get());
  X509_NAME* name = X509_get_subject_name(x509);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("127.0.0.1"), -1, -1, 0);
  X509_set_issuer_name(x509, name);
  if (X509_sign(x509, key.get(), EVP_sha256()) == 0) certificate.reset();
  return certificate;
}

}  // namespace

TlsContext MakeTlsContext() {
  TlsContext context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
  const Key key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"), &EVP_PKEY_free);
  const Certificate certificate = key != nullptr ? Sign(key) : Certificate(nullptr, &X509_free);
  if (context == nullptr || certificate == nullptr ||
      SSL_CTX_use_certificate(context.get(), certificate.get()) != 1 ||
      SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1) {
    throw std::runtime_error("cannot make a certificate");
  }
  return context;
}

}  // namespace sim
