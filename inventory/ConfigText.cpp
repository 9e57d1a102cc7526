// SPDX-License-Identifier: MIT
#include "inventory/ConfigText.h"

#include <kecpp.h>

#include <kecpp/inventory.h>

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

std::unique_ptr<KELib::KEConfig> Parse(const std::string& text) {
  // What is wrong with the document is logged when the connection reads it.
  auto* logger = KELib::Logging::GetDefaultLogger();
  const auto level = logger->GetLevel();
  logger->SetLevel(KELib::Logging::LOG_LEVEL_NONE);
  KELib::KEString source(text.c_str());
  std::unique_ptr<KELib::KEConfig> document;
  try {
    document.reset(KELib::CreateConfig(source, KE::Service::DEFAULT_CONFIG_CONTENT));
  } catch (const KELib::Throwable&) {
    document.reset();  // connecting says what is wrong
  }
  logger->SetLevel(level);
  return document;
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
  return text + "\n<!-- connection " + std::to_string(++number) + " -->\n";
}

std::string UrlOf(const std::string& text) {
  const std::unique_ptr<KELib::KEConfig> document = Parse(text);
  if (!document || !document->FindParentConfigKey("ConnectionInfo")) return {};
  const auto value = [&](const char* key) {
    KELib::KEString found;
    return std::string(document->GetConfigValue(key, found) ? found.Cstr() : "");
  };
  const std::string url = value("url");
  if (!url.empty()) return Bare(url);
  const std::string proto = value("proto");
  const std::string host = value("host");
  const std::string port = value("port");
  return host.empty() ? host : proto + "://" + host + (port.empty() ? "" : ":" + port);
}

void ApplyLogLevel(const std::string& text) {
  const std::unique_ptr<KELib::KEConfig> document = Parse(text);
  KELib::KEString level;
  if (document && document->FindParentConfigKey("LogInfo") &&
      document->GetConfigValue("level", level)) {
    KELib::Logging::GetDefaultLogger()->SetLevelByName(level.Cstr());
  }
}

}  // namespace kecpp
