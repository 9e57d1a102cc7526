// SPDX-License-Identifier: MIT
#include "simulator/Certificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace sim {

namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

File Open(const std::string& path) {
  File file(std::fopen(path.c_str(), "w"), &std::fclose);
  if (file == nullptr) throw std::runtime_error("cannot write " + path);
  return file;
}

}  // namespace

void MakeCertificate(const std::string& certFile, const std::string& keyFile) {
  const Key key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"), &EVP_PKEY_free);
  const Certificate certificate(X509_new(), &X509_free);
  if (key == nullptr || certificate == nullptr) throw std::runtime_error("cannot make a key");
  X509* x509 = certificate.get();
  ASN1_INTEGER_set(X509_get_serialNumber(x509), 1);
  X509_gmtime_adj(X509_getm_notBefore(x509), -3600);
  X509_gmtime_adj(X509_getm_notAfter(x509), 10L * 24 * 3600);
  X509_set_pubkey(x509, key.get());
  X509_NAME* name = X509_get_subject_name(x509);
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>("127.0.0.1"), -1, -1, 0);
  X509_set_issuer_name(x509, name);
  if (X509_sign(x509, key.get(), EVP_sha256()) == 0) throw std::runtime_error("cannot sign");
  PEM_write_X509(Open(certFile).get(), x509);
  PEM_write_PrivateKey(Open(keyFile).get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
}

}  // namespace sim
