// SPDX-License-Identifier: MIT
#include "http/Url.h"

#include "http/ConnectionInfo.h"
#include "support/Answers.h"

namespace KELib::Http {
namespace {

std::string Built(const Row& row) {
  KEString url;
  BuildUrl(row[1].c_str(), row[2].c_str(), row[3].c_str(), row[4].c_str(), url);
  return url.Cstr();
}

std::string Parsed(const Row& row) {
  KEString parts[] = {"p", "h", "1", "/old"};
  ParseUrl(row[1].c_str(), parts[0], parts[1], parts[2], parts[3]);
  std::string all;
  for (KEString& part : parts) all += (part.Empty() ? "-" : part.Cstr()) + std::string(" ");
  return all.substr(0, all.size() - 1);
}

std::string Checked(const Row& row) {
  ConnectionInfo info(nullptr, "", false);
  info.SetUrl(row[1].c_str());
  info.SetProto(row[2].c_str());
  info.SetHostName(row[3].c_str());
  info.SetPort(row[4].c_str());
  ThrowExceptionIfInvalidUrl(&info);
  return "fine";
}

TEST(UrlTest, AnswersTheCases) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/url.txt",
                {{"build", Built}, {"parse", Parsed}, {"check", Checked}});
}

TEST(UrlTest, ArgumentsMayBeTheSameText) {
  KEString text("Http://Host:1/Path"), proto, port, path;
  ParseUrl(text, proto, text, port, path);
  EXPECT_STREQ("host", text.Cstr());
  BuildUrl(proto, text, port, path, path);
  EXPECT_STREQ("http://host:1/path", path.Cstr());
}

TEST(ConnectionInfoTest, KeepsPartsAsGivenAndDefaultsOnlyTheUrl) {
  ConnectionInfo info(nullptr, "HTTPS", "", "", "Sdk", true);
  EXPECT_STREQ("", info.GetPort().Cstr());
  EXPECT_FALSE(info.IsSecureConnection());
  EXPECT_EQ(0, info.GetTimeout());
  info.SetProto("https");
  EXPECT_TRUE(info.IsSecureConnection());
  EXPECT_STREQ("HTTPS://localhost:443/Sdk", info.GetUrl().Cstr());
}

TEST(ConnectionInfoTest, OwnsItsSslInfo) {
  ConnectionInfo info(new SSLInfo("c", "", "k", "a"), "https://h", true);
  EXPECT_STREQ("PEM", info.GetSSLInfo()->GetCertType().Cstr());
  info.SetSSLInfo(info.GetSSLInfo());
  info.SetSSLInfo(new SSLInfo("c", "", "k", "a", "DER"));
  EXPECT_STREQ("DER", info.GetSSLInfo()->GetCertType().Cstr());
}

}  // namespace
}  // namespace KELib::Http
