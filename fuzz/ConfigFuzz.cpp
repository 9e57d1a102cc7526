// SPDX-License-Identifier: MIT
//
// A configuration document, read as the library reads its own; and the URL in it.
#include <memory>

#include "config/DefaultConfig.h"
#include "config/KEConfig.h"
#include "config/KEConfigSource.h"
#include "fuzz/Fuzz.h"
#include "http/Url.h"
#include "xml/XmlException.h"

namespace {

using KELib::KEString;

// Parts that were taken from a URL make one that has the same parts.
void CheckUrl(const KEString& url) {
  KEString proto, host, port, path;
  KELib::Http::ParseUrl(url, proto, host, port, path);
  if (proto.Empty() || host.Empty() || port.Empty() || path.Empty()) return;
  KEString built, proto2, host2, port2, path2;
  KELib::Http::BuildUrl(proto, host, port, path, built);
  KELib::Http::ParseUrl(built, proto2, host2, port2, path2);
  FUZZ_CHECK(proto.Equals(proto2) && host.Equals(host2) && path.Equals(path2));
  FUZZ_CHECK(port.Equals(port2));
}

// Whether the value's bytes are there in this order: comments inside of it are left out.
bool IsTakenFrom(const std::string& text, const KEString& value) {
  std::size_t at = 0;
  for (const char* c = value.Cstr(); *c != '\0'; ++c) {
    at = text.find(*c, at);
    if (at++ == std::string::npos) return false;
  }
  return true;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string rest = fuzz::Input(data, size).Rest();
  CheckUrl(KEString(rest.c_str()));

  // A text that begins otherwise would be taken for the name of a file.
  const std::string text = std::string(KELib::XML_MARKER_TAG) + rest;
  KEString source(text.c_str());
  try {
    const std::unique_ptr<KELib::KEConfig> config(
        KELib::CreateConfig(source, KE::Service::DEFAULT_CONFIG_CONTENT));
    for (const char* section : {"SSLInfo", "ConnectionInfo", "LoginInfo", "LogInfo"}) {
      if (!config->FindParentConfigKey(section)) continue;
      for (const char* key : {"certFile", "url", "timeout", "userName", "password", "level"}) {
        KEString value;
        if (config->GetConfigValue(key, value)) FUZZ_CHECK(IsTakenFrom(text, value));
        CheckUrl(value);
      }
    }
    FUZZ_CHECK(text == source.Cstr());
  } catch (const KELib::Xml::XmlException&) {
  }
  return 0;
}
