// SPDX-License-Identifier: MIT
//
// The one implementation of KEConfig.
#ifndef KECPP_CONFIG_KECONFIGIMPL_H
#define KECPP_CONFIG_KECONFIGIMPL_H

#include <memory>

#include "config/KEConfig.h"
#include "config/KEConfigSource.h"
#include "xml/KEXmlReader.h"

namespace KELib {

class KECPP_API KEConfigImpl : public KEConfig {
 public:
  KEConfigImpl();
  ~KEConfigImpl() override;
  KEConfigImpl(const KEConfigImpl&) = delete;
  KEConfigImpl& operator=(const KEConfigImpl&) = delete;

  void Init(KEConfigSource* source) override;
  KEString& GetConfigPath() override;
  bool FindParentConfigKey(const char* name) override;
  bool FindParentConfigKey(KEString& name) override;
  bool GetConfigPair(KEString& key, KEString value) override;
  using KEConfig::GetConfigValue;
  bool GetConfigValue(const char* key, KEString& value) override;
  bool GetConfigValue(KEString& key, KEString& value) override;
  void SetParentConfigKey(const char* name) override;
  void SetParentConfigKey(KEString& name) override;
  void SetConfigPair(const char* name, const char* value) override;
  void SetConfigPair(KEString& name, KEString& value) override;
  void SetConfigValue(const char* name, const char* value) override;
  void SetConfigValue(KEString& name, KEString& value) override;

 private:
  std::unique_ptr<KEConfigSource> source;  // null until Init
  Xml::KEXmlReader reader;                 // holds the document
};

}  // namespace KELib

#endif
