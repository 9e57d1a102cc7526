// SPDX-License-Identifier: MIT
#include "config/KEConfig.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <string>

#include "config/DefaultConfig.h"
#include "config/KEConfigImpl.h"
#include "config/KEConfigSource.h"
#include "foundation/KEException.h"
#include "xml/XmlException.h"

namespace KELib {
namespace {

using KE::Service::DEFAULT_CONFIG_CONTENT;

std::unique_ptr<KEConfig> ConfigOf(const char* source) {
  KEString text(source);
  std::unique_ptr<KEConfig> config(CreateConfig(text, DEFAULT_CONFIG_CONTENT));
  EXPECT_STREQ(source, text.Cstr()) << "the caller's text is not changed";
  return config;
}

std::string ValueOf(KEConfig& config, const char* key) {
  KEString value("unchanged");
  const bool found = config.GetConfigValue(key, value);
  return (found ? "" : "not found, ") + std::string(value.Cstr());
}

class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& text)
      : path(testing::TempDir() + "kecpp-config-" + std::to_string(getpid())) {
    std::ofstream(path) << text;
  }
  ~TemporaryFile() { unlink(path.c_str()); }
  const std::string path;
};

TEST(KEConfig, TheDefaultDocumentReadsInItsOrder) {
  const char* const expected[][3] = {{"SSLInfo", "certFile", "/etc/zorbel/ssl/rui.crt"},
                                     {nullptr, "passPhrase", ""},
                                     {nullptr, "keyFile", "/etc/zorbel/ssl/rui.key"},
                                     {nullptr, "CACertFile", "/etc/zorbel/ssl/rui.crt"},
                                     {"ConnectionInfo", "url", "http://localhost/sdk/pxaService"},
                                     {nullptr, "proto", ""},
                                     {nullptr, "host", ""},
                                     {nullptr, "port", ""},
                                     {nullptr, "path", ""},
                                     {nullptr, "proxyHost", ""},
                                     {nullptr, "proxyPort", ""},
                                     {nullptr, "timeout", "60"},
                                     {nullptr, "verboseHttpLogging", "false"},
                                     {"LoginInfo", "localTicket", "true"},
                                     {nullptr, "userName", "root"},
                                     {nullptr, "password", ""},
                                     {"LogInfo", "level", "verbose"}};
  const std::unique_ptr<KEConfig> config = ConfigOf("");
  for (const auto& row : expected) {
    if (row[0] != nullptr) {
      EXPECT_TRUE(config->FindParentConfigKey(row[0])) << row[0];
    }
    EXPECT_EQ(row[2], ValueOf(*config, row[1])) << row[1];
  }
  EXPECT_EQ("not found, unchanged", ValueOf(*config, "level"));

  const std::string text = DEFAULT_CONFIG_CONTENT;
  EXPECT_EQ(
      0u, text.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Config>\n   <SSLInfo>\n      <"));
  EXPECT_NE(std::string::npos, text.find("\n      <passPhrase/>\n"));
  EXPECT_NE(std::string::npos, text.find("\n      <password></password>\n   </LoginInfo>\n"));
  EXPECT_EQ("\n   </LogInfo>\n</Config>\n", text.substr(text.size() - 25));
}

TEST(KEConfig, LooksForwardOnly) {
  const std::unique_ptr<KEConfig> config = ConfigOf("DEFAULT_CONFIG");
  KEString value, key("userName"), none;
  EXPECT_TRUE(config->FindParentConfigKey("LoginInfo"));
  EXPECT_EQ("not found, unchanged", ValueOf(*config, "certFile"));
  EXPECT_TRUE(config->GetConfigValue(key, value));
  EXPECT_STREQ("root", value.Cstr());
  EXPECT_FALSE(config->GetConfigValue(nullptr, value));
  EXPECT_FALSE(config->GetConfigValue(none, value));

  const std::unique_ptr<KEConfig> bare = ConfigOf("<?xml?><a>1</a>");
  EXPECT_EQ("1", ValueOf(*bare, "a"));
  EXPECT_EQ("not found, unchanged", ValueOf(*bare, "a")) << "also at the end of the text";
  EXPECT_FALSE(bare->FindParentConfigKey("a"));
}

TEST(KEConfig, FindsItsDocument) {
  const char* const text = "<?xml version=\"1.0\"?><level>info</level>";
  const struct {
    std::string source, path, level;
  } cases[] = {{text, text, "info"},
               {"/nonexistent/kecpp.xml", "DEFAULT_CONFIG", "verbose"},
               {testing::TempDir(), "DEFAULT_CONFIG", "verbose"},
               {"", "DEFAULT_CONFIG", "verbose"}};
  for (const auto& c : cases) {
    const std::unique_ptr<KEConfig> config = ConfigOf(c.source.c_str());
    EXPECT_EQ(c.path, config->GetConfigPath().Cstr());
    EXPECT_EQ(c.level, ValueOf(*config, "level")) << c.source;
  }
}

TEST(KEConfig, ReadsAFileUnlessItIsEmpty) {
  {
    const TemporaryFile file("<level>error</level>");
    const std::unique_ptr<KEConfig> config = ConfigOf(file.path.c_str());
    EXPECT_EQ(file.path, config->GetConfigPath().Cstr());
    EXPECT_EQ("error", ValueOf(*config, "level"));
  }
  const TemporaryFile empty("");
  const std::unique_ptr<KEConfig> config = ConfigOf(empty.path.c_str());
  EXPECT_STREQ("DEFAULT_CONFIG", config->GetConfigPath().Cstr());
  EXPECT_EQ("verbose", ValueOf(*config, "level"));
}

TEST(KEConfig, TakesTheDocumentOnce) {
  KEString source("<?xml?><a>1</a>"), other("<?xml?><a>2</a>");
  EXPECT_TRUE(IsXmlStringSource(source));
  EXPECT_EQ(nullptr, CreateConfigSource(source, ""));
  EXPECT_EQ(nullptr, CreateConfig(source, nullptr));
  KEConfigSource* made = CreateConfigSource(source, "x");
  made->Init(other);
  EXPECT_STREQ("<?xml?><a>1</a>", made->Content().Cstr());
  const std::unique_ptr<KEConfigSource> late(CreateConfigSource(other, "x"));
  KEConfigImpl config;
  KEString value;
  EXPECT_THROW(config.GetConfigValue("a", value), Xml::XmlException) << "an empty document";
  config.Init(made);
  config.Init(late.get());
  EXPECT_TRUE(made->Content().Empty());
  EXPECT_FALSE(late->Content().Empty());
  EXPECT_EQ("1", ValueOf(config, "a"));
}

TEST(KEConfig, RefusesToBeChanged) {
  const std::unique_ptr<KEConfig> config = ConfigOf("");
  KEString a("a"), b("b"), none;
  EXPECT_THROW(config->SetConfigValue("a", "b"), NotImplementedException);
  EXPECT_THROW(config->SetConfigPair(a, b), NotImplementedException);
  EXPECT_THROW(config->SetParentConfigKey(""), NotImplementedException);
  EXPECT_THROW(config->GetConfigPair(a, b), NotImplementedException);
  EXPECT_TRUE(config->GetConfigPair(none, b));
  EXPECT_NO_THROW(config->SetConfigValue("a", ""));
  EXPECT_NO_THROW(config->SetConfigPair(nullptr, "b"));
  EXPECT_NO_THROW(config->SetConfigValue(none, b));
}

}  // namespace
}  // namespace KELib
