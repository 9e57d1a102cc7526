// SPDX-License-Identifier: MIT
//
// Logging in with a local ticket, whose password stands in a file that the server names.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include "config/DefaultConfig.h"
#include "config/KEConfig.h"
#include "datasync/KEDataSync.h"
#include "foundation/KEException.h"
#include "instance/KEChangeFeed.h"
#include "service/call/KEMethod.h"
#include "service/entry/KESession.h"
#include "support/CapturedLog.h"
#include "xml/KEXmlBuffer.h"

namespace KE::Service {
namespace {

using KELib::KEString;
using testing::HasSubstr;

// Hands out a ticket, or none, and keeps the login that comes.
class TicketServer : public KEMethod {
 public:
  using KEMethod::Invoke;
  void Invoke(const char*, const char* method, KELib::Xml::KEXmlBuffer& body,
              KEString& result) override {
    if (method == std::string("AcquireLocalTicket")) {
      if (ticket == "refused") throw KELib::SystemException("NoPermission");
      result = ticket.c_str();
    } else if (method == std::string("Login")) {
      login = body.Str();
    } else if (method == std::string("Logout") && atLogout) {
      atLogout();
    }
  }

  std::string ticket, login;
  std::function<void()> atLogout;
};

class SessionTest : public testing::Test {
 protected:
  SessionTest() : path(testing::TempDir() + "kecpp-ticket-" + std::to_string(getpid())) {
    server.ticket = "<returnval><userName>local</userName><passwordFilePath>" + path +
                    "</passwordFilePath></returnval>";
    alarm(60);  // an open that waits for a writer
  }
  ~SessionTest() override {
    alarm(0);
    std::remove(path.c_str());
  }

  std::unique_ptr<KESession> Open(const std::string& localTicket) {
    CapturedLog::Clear();
    const std::string text =
        "<?xml version=\"1.0\"?><LoginInfo><localTicket>" + localTicket +
        "</localTicket><userName>root</userName><password>own&amp;</password></LoginInfo>";
    KEString source(text.c_str());
    KEString content(
        "<returnval><rootFolder type=\"Folder\">f</rootFolder>"
        "<propertyCollector type=\"PropertyCollector\">p</propertyCollector>"
        "<sessionManager type=\"SessionManager\">s</sessionManager></returnval>");
    const std::unique_ptr<KELib::KEConfig> config(
        KELib::CreateConfig(source, DEFAULT_CONFIG_CONTENT));
    return std::unique_ptr<KESession>(CreateSession(config.get(), &server, content));
  }

  // What the session sends to log in.
  std::string Login(const std::string& localTicket = "true") {
    Open(localTicket);
    return server.login;
  }

  TicketServer server;
  const std::string path;
};

TEST_F(SessionTest, ATicketsPasswordIsSentAsText) {
  std::ofstream(path) << "a<b&c";
  EXPECT_THAT(Login(), HasSubstr("<userName>local</userName>\n<password>a&lt;b&amp;c</password>"));
  EXPECT_THAT(Login("false"), HasSubstr("<userName>root</userName>"));
}

// So that its thread leaves without an error to log.
TEST_F(SessionTest, TheDataSyncIsStoppedBeforeTheLogout) {
  const std::unique_ptr<KESession> session = Open("false");
  const std::unique_ptr<KE::Instance::KEChangeFeed> feed(session->GetDataSync()->OpenChangeFeed());
  KE::Instance::KEChange change;
  int taken = 0;
  server.atLogout = [&] { taken = feed->Take(&change, 1, 0); };
  session->Logout();
  EXPECT_EQ(-1, taken);
}

TEST_F(SessionTest, WithoutATicketTheConfiguredPasswordIsSent) {
  for (const char* ticket : {"refused", "", "no XML", "<returnval><userName>local</userN",
                             "<returnval><userName>local</userName><passwordFilePath>/etc"}) {
    server.ticket = ticket;
    EXPECT_THAT(Login(), HasSubstr("<userName>root</userName>\n<password>own&amp;</password>"))
        << ticket;
    EXPECT_EQ(1u, CapturedLog::Count("icket information"));
  }
}

TEST_F(SessionTest, WithoutAReadableFileTheConfiguredPasswordIsSentForTheTicketsUser) {
  const std::string expected = "<userName>local</userName>\n<password>own&amp;</password>";
  EXPECT_THAT(Login(), HasSubstr(expected)) << "the file is missing";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_THAT(Login(), HasSubstr(expected)) << "what is no regular file holds no password";
  EXPECT_TRUE(CapturedLog::Contains("Unable to read the local ticket's password file\n"));
  server.ticket = "<returnval><userName>local</userName></returnval>";
  EXPECT_THAT(Login(), HasSubstr(expected)) << "the ticket names no file";
  EXPECT_TRUE(CapturedLog::Contains("Invalid Local Ticket information. No password file.\n"));
}

}  // namespace
}  // namespace KE::Service
