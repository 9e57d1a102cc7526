// SPDX-License-Identifier: MIT
//
// A configuration document, read by element name.
//
// Look-ups go forward from the last one and never back: read a document in its own order, first the
// section (FindParentConfigKey), then its values. What lies before the last look-up is not found.
// Init, and so CreateConfig, logs at level "error" what the library's own look-ups will not find.
//
// Thread safety: none.
// Errors: XmlException for a malformed document; the setters, which are not provided, throw
//   NotImplementedException.
#ifndef KECPP_CONFIG_KECONFIG_H
#define KECPP_CONFIG_KECONFIG_H

#include "foundation/KEExport.h"
#include "foundation/KEStringBuffer.h"

namespace KELib {

class KEConfigSource;

class KECPP_API KEConfig {
 public:
  virtual ~KEConfig();

  // Takes the source, which belongs to the configuration from then on, and its document. Only the
  // first call has an effect; a source that was not taken stays the caller's.
  virtual void Init(KEConfigSource* source) = 0;

  // Where the document came from (KEConfigSource::GetSourcePath).
  virtual KEString& GetConfigPath() = 0;

  // Enters the next element of that name. False when there is none.
  virtual bool FindParentConfigKey(const char* name) = 0;
  virtual bool FindParentConfigKey(KEString& name) = 0;

  // Not provided: throws for a key that is not empty, otherwise true.
  virtual bool GetConfigPair(KEString& key, KEString value) = 0;

  // The text of the next element of that name. False, and `value` is as it was, when there is none
  // or the name is null or empty.
  virtual bool GetConfigValue(const char* key, KEString& value) = 0;
  virtual bool GetConfigValue(KEString& key, KEString& value) = 0;
  bool GetConfigValue(const char* key, KEStringBuffer& value) {
    return GetConfigValue(key, KEStringEdit(value).Text());
  }
  bool GetConfigValue(KEString& key, KEStringBuffer& value) {
    return GetConfigValue(key, KEStringEdit(value).Text());
  }

  // Not provided: the first always throws, the others when both texts are not empty.
  virtual void SetParentConfigKey(const char* name) = 0;
  virtual void SetParentConfigKey(KEString& name) = 0;
  virtual void SetConfigPair(const char* name, const char* value) = 0;
  virtual void SetConfigPair(KEString& name, KEString& value) = 0;
  virtual void SetConfigValue(const char* name, const char* value) = 0;
  virtual void SetConfigValue(KEString& name, KEString& value) = 0;
};

// A new configuration that the caller owns, read from `source` (not changed) as CreateConfigSource
// says; null when `defaultContent` is null or empty.
KECPP_API KEConfig* CreateConfig(KEString& source, const char* defaultContent);

}  // namespace KELib

#endif
