// SPDX-License-Identifier: MIT
#include "config/KEConfig.h"

#include <syslog.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <string>

#include "config/DefaultConfig.h"
#include "config/KEConfigImpl.h"
#include "config/KEConfigSourceImpl.h"
#include "config/Malformation.h"
#include "foundation/Logger.h"
#include "support/Answers.h"
#include "support/CapturedLog.h"

namespace KELib {
namespace {

using KE::Service::DEFAULT_CONFIG_CONTENT;

std::unique_ptr<KEConfig> ConfigOf(const std::string& source) {
  KEString text(source.c_str());
  std::unique_ptr<KEConfig> config(CreateConfig(text, DEFAULT_CONFIG_CONTENT));
  EXPECT_EQ(source, text.Cstr()) << "the caller's text is not changed";
  return config;
}

std::string ValueOf(KEConfig& config, const char* key) {
  KEStringBuffer value;
  value = "not found";
  const bool found = config.GetConfigValue(key, value);
  EXPECT_NE(found, value.Equals("not found")) << key;
  return value.Cstr();
}

std::string LookUp(KEConfig& config, const std::string& step) {
  if (step.rfind("in ", 0) != 0) return ValueOf(config, step.c_str());
  KEString section(step.c_str() + 3);
  return config.FindParentConfigKey(section) ? "ok" : "not found";
}

std::string StepsThrough(const Row& row) {
  const auto config = ConfigOf(row[1]);
  return Stepwise(row[2], [&](const std::string& step) { return LookUp(*config, step); });
}

std::string DocumentOf(const Row& row) {
  const auto config = ConfigOf(row[1]);
  return ValueOf(*config, "level") + " of " + config->GetConfigPath().Cstr();
}

std::string FaultOf(const Row& row) {
  Malformation found;
  if (!FindMalformation(row[1].c_str(), found)) return "none";
  return std::to_string(found.line) + ": " + found.what.Cstr();
}

// What is logged when the document is taken.
std::string IgnoredIn(const Row& row) {
  CapturedLog::Clear();
  ConfigOf(row[1]);
  std::string all;
  for (const CapturedLog::Line& line : CapturedLog::Lines()) {
    EXPECT_EQ(LOG_ERR, line.priority);
    all += "; " + line.text.substr(line.text.find(": ") + 2);
  }
  return all.empty() ? "nothing" : all.substr(2);
}

TEST(KEConfig, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/lookups.txt",
                {{"steps", StepsThrough}, {"document", DocumentOf}, {"malformed", FaultOf}});
  ExpectAnswers(KECPP_TEST_DATA "/cases/ignored.txt", {{"ignored", IgnoredIn}});
  std::string deep("<?xml?>");
  for (int i = 0; i < 300000; ++i) deep += "<a>";
  EXPECT_EQ("line 1: <a> is not closed", IgnoredIn({"", deep}))
      << "the stack must not grow with it";
  const Row bad{"", "<?xml?><Config><cloud/></Config>"},
      other{"", "<?xml?><Config><fog/></Config>"};
  const std::string line = "unknown element \"cloud\" is ignored";
  EXPECT_EQ(line, IgnoredIn(bad));
  EXPECT_EQ("nothing", IgnoredIn(bad)) << "as before";
  EXPECT_NE("nothing", IgnoredIn(other));
  KELib::Logging::GetDefaultLogger()->SetLevel(KELib::Logging::LOG_LEVEL_NONE);
  EXPECT_EQ("nothing", IgnoredIn(bad));
  KELib::Logging::GetDefaultLogger()->SetLevel(KELib::Logging::LOG_LEVEL_VERBOSE);
  EXPECT_EQ(line, IgnoredIn(bad)) << "that was not logged does not count";
  const auto config = ConfigOf("");
  KEString value, key("userName"), none;
  EXPECT_TRUE(config->GetConfigValue(key, value));
  EXPECT_FALSE(config->GetConfigValue(nullptr, value));
  EXPECT_FALSE(config->GetConfigValue(none, value));
}

TEST(KEConfig, ReadsAFileUnlessItIsEmpty) {
  const std::string path = testing::TempDir() + "kecpp-config-" + std::to_string(getpid());
  std::ofstream(path) << "<level>error</level>";
  EXPECT_EQ("error of " + path, DocumentOf({"", path}));
  std::ofstream(path, std::ios::trunc).flush();
  EXPECT_EQ("verbose of DEFAULT_CONFIG", DocumentOf({"", path}));
  unlink(path.c_str());
  ASSERT_EQ(0, chdir(testing::TempDir().c_str()));
  std::ofstream(KELib::DEFAULT_CONFIG) << "<level>error</level>";
  EXPECT_EQ("verbose of DEFAULT_CONFIG", DocumentOf({"", KELib::DEFAULT_CONFIG}));
  unlink(KELib::DEFAULT_CONFIG);
}

TEST(KEConfig, RefusesEmptyContent) {
  auto* source = new KEConfigSourceImpl("<?xml?><a>1</a>");
  source->Content() = "b";
  EXPECT_STREQ("b", source->GetSourcePath().Cstr()) << "of a text that was not loaded";
  source->Content().Clear();
  KEConfigImpl config;
  EXPECT_EQ("SystemException: Configuration is not initialised.",
            Thrown([&] { config.GetConfigPath(); }));
  CapturedLog::Clear();
  for (KEConfigSource* given : std::initializer_list<KEConfigSource*>{nullptr, source}) {
    config.Init(given);
    const std::string refusal = "XmlException: Cannot use empty input XML";
    EXPECT_EQ(refusal, Thrown([&] { ValueOf(config, "a"); }));
    EXPECT_EQ(refusal, Thrown([&] { config.FindParentConfigKey("a"); }));
  }
  EXPECT_TRUE(CapturedLog::Lines().empty());
}

TEST(KEConfig, TakesTheDocumentOnce) {
  KEString source("<?xml?><a>1</a>"), other("<?xml?><a>2</a>");
  EXPECT_EQ(nullptr, CreateConfigSource(source, ""));
  EXPECT_EQ(nullptr, CreateConfig(source, nullptr));
  KEConfigSource* made = CreateConfigSource(source, "x");
  made->Init(other);
  EXPECT_STREQ("<?xml?><a>1</a>", made->Content().Cstr());
  const std::unique_ptr<KEConfigSource> late(CreateConfigSource(other, "x"));
  KEConfigImpl config;
  config.Init(made);
  config.Init(late.get());
  EXPECT_TRUE(made->Content().Empty());
  EXPECT_FALSE(late->Content().Empty());
  EXPECT_EQ("1", ValueOf(config, "a"));
}

TEST(KEConfig, RefusesToBeChanged) {
  const auto config = ConfigOf("");
  KEString a("a"), b("b"), none;
  EXPECT_THROW(config->SetConfigValue("a", "b"), NotImplementedException);
  EXPECT_THROW(config->SetConfigPair(a, b), NotImplementedException);
  EXPECT_THROW(config->SetConfigPair("a", "b"), NotImplementedException);
  EXPECT_THROW(config->SetParentConfigKey(a), NotImplementedException);
  EXPECT_THROW(config->GetConfigPair(a, b), NotImplementedException);
  EXPECT_TRUE(config->GetConfigPair(none, b));
  config->SetConfigValue("a", "");
  config->SetConfigPair(nullptr, "b");
  config->SetConfigValue(none, b);
}

}  // namespace
}  // namespace KELib
