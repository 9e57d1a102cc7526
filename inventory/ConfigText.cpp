// SPDX-License-Identifier: MIT
#include "inventory/ConfigText.h"

#include <kecpp.h>

#include <kecpp/inventory.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <memory>

namespace kecpp {
namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file.is_open() || file.bad()) throw Error("", "cannot read " + path);
  if (text.empty()) throw Error("", path + " is empty or no file");
  return text;
}

std::string ValueOf(KELib::KEConfig& document, const char* key) {
  KELib::KEString found;
  return document.GetConfigValue(key, found) ? found.Cstr() : "";
}

// The elements in the order in which they are looked for.
std::string UrlIn(KELib::KEConfig& document) {
  const std::string url = ValueOf(document, "url");
  if (!url.empty()) return url;
  const std::string proto = ValueOf(document, "proto");
  const std::string host = ValueOf(document, "host");
  const std::string port = ValueOf(document, "port");
  if (host.empty()) return host;
  return proto + "://" + host + (port.empty() ? "" : ":" + port);
}

// Without credentials and query.
std::string Bare(std::string url) {
  url.erase(std::min(url.find_first_of("?#"), url.size()));
  const std::size_t scheme = url.find("://");
  const std::size_t begin = scheme == std::string::npos ? 0 : scheme + 3;
  const std::size_t at = url.rfind('@', url.find('/', begin));
  if (at != std::string::npos && at >= begin) url.erase(begin, at + 1 - begin);
  return url;
}

}  // namespace

std::string UniqueConfigText(const std::string& config) {
  static std::atomic<unsigned long long> number{0};
  std::string text = config.empty() ? KE::Service::DEFAULT_CONFIG_CONTENT : config;
  if (text.compare(0, 5, KELib::XML_MARKER_TAG) != 0) text = ReadFile(text);
  // Blanks behind a document mean nothing to its readers: the number's bits.
  text += '\n';
  for (unsigned long long bits = ++number; bits != 0; bits /= 2) text += bits % 2 != 0 ? '\t' : ' ';
  return text;
}

// What is wrong with the document is said when the connection cannot be made with it.
ConfigFacts FactsOf(const std::string& text) {
  ConfigFacts facts;
  KELib::KEString source(text.c_str());
  try {
    const std::unique_ptr<KELib::KEConfig> document(
        KELib::CreateConfig(source, KE::Service::DEFAULT_CONFIG_CONTENT));
    if (document->FindParentConfigKey("ConnectionInfo")) facts.url = Bare(UrlIn(*document));
    if (document->FindParentConfigKey("LogInfo")) facts.logLevel = ValueOf(*document, "level");
  } catch (const KELib::Throwable&) {
    return facts;  // what was found before
  }
  return facts;
}

}  // namespace kecpp
