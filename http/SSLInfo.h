// SPDX-License-Identifier: MIT
//
// The files of a client certificate. Nothing is checked here: a certificate type other than "PEM"
// is refused when the first secure connection is prepared.
//
// Thread safety: none.
#ifndef KECPP_HTTP_SSLINFO_H
#define KECPP_HTTP_SSLINFO_H

#include "foundation/KEExport.h"
#include "foundation/KEString.h"

namespace KELib {
namespace Http {

class KECPP_API SSLInfo {
 public:
  // Of type "PEM".
  SSLInfo(const KEString& certFile, const KEString& passPhrase, const KEString& keyFile,
          const KEString& CACertFile);

  // An empty type becomes "PEM".
  SSLInfo(const KEString& certFile, const KEString& passPhrase, const KEString& keyFile,
          const KEString& CACertFile, const KEString& certType);

  void SetCertFile(const KEString& file) { certFile = file; }
  void SetPassphrase(const KEString& phrase) { passPhrase = phrase; }
  void SetKeyFile(const KEString& file) { keyFile = file; }
  void SetCACertFile(const KEString& file) { CACertFile = file; }
  void SetCertType(const KEString& type) { certType = type; }

  KEString& GetCertFile() { return certFile; }
  KEString& GetPassPhrase() { return passPhrase; }
  KEString& GetKeyFile() { return keyFile; }
  KEString& GetCACertFile() { return CACertFile; }
  KEString& GetCertType() { return certType; }

 private:
  KEString certFile;
  KEString passPhrase;
  KEString keyFile;
  KEString CACertFile;
  KEString certType;
};

}  // namespace Http
}  // namespace KELib

#endif
