// SPDX-License-Identifier: MIT
#include "http/Url.h"

#include <gtest/gtest.h>

#include <string>

#include "http/ConnectionInfo.h"
#include "http/HttpException.h"

namespace {

using KELib::KEString;
using KELib::Http::BuildUrl;
using KELib::Http::ConnectionInfo;
using KELib::Http::HttpException;
using KELib::Http::SSLInfo;

std::string Built(const char* proto, const char* host, const char* port, const char* path) {
  KEString url;
  BuildUrl(proto, host, port, path, url);
  return url.Cstr();
}

TEST(UrlTest, BuildsWithDefaultsForMissingParts) {
  EXPECT_EQ("https://localhost:443", Built("", "", "", ""));
  EXPECT_EQ("http://h:443", Built("http", "h", "", ""));
  EXPECT_EQ("http://h:443/sdk", Built("http", "h", "80a", "sdk"));
  EXPECT_EQ("HTTP://h:8080/sdk", Built("HTTP", "h", "8080", "/sdk"));
}

// The parts before parsing are "p", "h", "1" and "/old", so that untouched ones show.
std::string Parsed(const char* url) {
  KEString proto("p"), host("h"), port("1"), path("/old");
  KELib::Http::ParseUrl(url, proto, host, port, path);
  return std::string(proto.Cstr()) + "|" + host.Cstr() + "|" + port.Cstr() + "|" + path.Cstr();
}

TEST(UrlTest, ParsesInLowerCaseAndLeavesWhatIsAbsent) {
  EXPECT_EQ("https|host|8443|/sdk/pxaservice", Parsed("HTTPS://Host:8443/SDK/pxaService"));
  EXPECT_EQ("http|host|80|/old", Parsed("http://host"));
  EXPECT_EQ("https|host|443|/", Parsed("https://host/"));
  EXPECT_EQ("ftp|host|1|/old", Parsed("ftp://host"));
  EXPECT_EQ("p|host||/old", Parsed("host:x9"));
  EXPECT_EQ("http|host||/a:b", Parsed("http://host:/a:b"));
  EXPECT_EQ("http||80|//", Parsed("http:////"));
  EXPECT_EQ("p||1|/old", Parsed(""));
  EXPECT_EQ("|a|1|/b://c", Parsed("://a/b://c"));
}

TEST(UrlTest, ArgumentsMayBeTheSameText) {
  KEString text("Http://Host:1/Path"), proto, port, path;
  KELib::Http::ParseUrl(text, proto, text, port, path);
  EXPECT_STREQ("host", text.Cstr());
  KELib::Http::BuildUrl(proto, text, port, path, path);
  EXPECT_STREQ("http://host:1/path", path.Cstr());
}

TEST(ConnectionInfoTest, KeepsPartsAsGivenAndDefaultsOnlyTheUrl) {
  ConnectionInfo info(nullptr, "HTTPS", "", "", "Sdk", true);
  EXPECT_STREQ("", info.GetPort().Cstr());
  EXPECT_STREQ("HTTPS://localhost:443/Sdk", info.GetUrl().Cstr());
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

std::string Complaint(ConnectionInfo& info) {
  try {
    KELib::Http::ThrowExceptionIfInvalidUrl(&info);
  } catch (const HttpException& e) {
    return e.What();
  }
  return "";
}

TEST(ConnectionInfoTest, ComplainsAboutTheFirstMissingPart) {
  ConnectionInfo info(nullptr, "", false);
  EXPECT_EQ("Url is invalid and empty", Complaint(info));
  info.SetUrl("x");
  EXPECT_EQ("Invalid protocol specified", Complaint(info));
  info.SetProto("gopher");
  EXPECT_EQ("No HostName", Complaint(info));
  info.SetHostName("h");
  EXPECT_EQ("Port is not a number", Complaint(info));
  info.SetPort("1");
  EXPECT_EQ("", Complaint(info));
}

}  // namespace
