// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "foundation/KEException.h"
#include "service/call/KEMethodImpl.h"
#include "service/call/KESoapClientImpl.h"
#include "service/call/ServiceConstants.h"
#include "soap/SoapException.h"
#include "soap/SoapRequest.h"
#include "soap/SoapResponse.h"
#include "support/CapturedLog.h"
#include "support/Thrown.h"

namespace KE::Service {
namespace {

using KELib::KEString;

// Keeps what it is asked to send and answers as the test says.
class FakeClient : public KESoapClientImpl {
 public:
  void Request(KELib::Soap::SoapRequest& request, KELib::Soap::SoapResponse& response) override {
    sent = request.content.Cstr();
    if (answer) answer();
    KEString text("<returnval/>");
    response.SetContent(text);
  }

  std::string sent;
  std::function<void()> answer;
};

void ThrowFault(const char* typeName) {
  KEString code, text, xml, name(typeName);
  auto* info = new KELib::Soap::SoapFaultInfo(code, text, new KELib::Soap::SoapFaultDetail(xml));
  info->detail->SetFaultTypeName(name);
  KELib::Soap::SoapException e;
  e.SetFaultInfo(info);
  e.Init(typeName, 0);
  throw e;
}

class MethodTest : public testing::Test {
 protected:
  MethodTest() : method(CreateMethod(&client)) { CapturedLog::Clear(); }

  // What a call throws when the client does `answer`.
  std::string ThrownAt(std::function<void()> answer) {
    client.answer = std::move(answer);
    return Thrown([&] { method->Invoke(targetNamespace, "Ping", "T", "v", result); });
  }
  std::string ThrownAtFault(const char* name) {
    return ThrownAt([name] { ThrowFault(name); });
  }

  FakeClient client;
  std::unique_ptr<KEMethod> method;
  KEString result{"before"};
};

TEST_F(MethodTest, WritesTheMethodElement) {
  method->Invoke(targetNamespace, methodName, svcInst, svcInst, result);
  EXPECT_EQ(
      "<RetrieveServiceContent xmlns=\"urn:pxa25\">\n"
      "<_this type=\"ServiceInstance\">ServiceInstance</_this>\n"
      "</RetrieveServiceContent>\n",
      client.sent);
  EXPECT_STREQ("<returnval/>", result.Cstr());
  method->Invoke("u", "Wait", "T", "v", "version", "", result);
  EXPECT_EQ(
      "<Wait xmlns=\"u\">\n<_this type=\"T\">v</_this>\n<version xsi:nil=\"true\"/>\n</Wait>\n",
      client.sent);
}

TEST_F(MethodTest, EveryFaultOfAServerIsASystemException) {
  for (const char* name : {"InvalidState", "NotAuthenticated", "RequestCanceled", "NoPermission"}) {
    EXPECT_EQ(std::string("SystemException: ") + name, ThrownAtFault(name));
  }
  EXPECT_EQ("SystemException: No Response Received.",
            ThrownAt([] { throw KELib::Soap::SoapException("No Response Received."); }));
  EXPECT_FALSE(CapturedLog::Contains("has no type"));
  EXPECT_STREQ("before", result.Cstr());
  EXPECT_EQ("nothing", ThrownAt(nullptr));
}

// In a process of its own: revoked privileges stay revoked.
TEST_F(MethodTest, FullFaultNamesHaveTheirOwnClassesAndMayRevoke) {
  EXPECT_EQ("InvalidPowerStateException: InvalidPowerStateFault",
            ThrownAtFault("InvalidPowerStateFault"));
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const std::string first = ThrownAtFault("NotAuthenticatedFault");
        FakeClient other;
        method.reset(CreateMethod(&other));
        fprintf(stderr, "%s\n%s\n%s", first.c_str(), ThrownAt(nullptr).c_str(), other.sent.c_str());
        _exit(7);
      },
      testing::ExitedWithCode(7),
      "NotAuthenticatedException: NotAuthenticatedFault\n"
      "NoPermissionException: Session privileges were revoked.\n$");
}

TEST_F(MethodTest, OtherFailuresAreLoggedAndFlattened) {
  EXPECT_EQ("RequestTimedOutException: late",
            ThrownAt([] { throw KELib::RequestTimedOutException("late"); }));
  EXPECT_EQ("RequestFailedException: gone",
            ThrownAt([] { throw KELib::RequestFailedException("gone"); }));
  EXPECT_TRUE(CapturedLog::Lines().empty());
  EXPECT_EQ("Exception: 100%s", ThrownAt([] { throw KELib::NotAuthenticatedException("100%s"); }));
  ASSERT_EQ(1u, CapturedLog::Lines().size());
  EXPECT_EQ("Unable to Invoke : Ping\n Content : \n\n - Exception : 100%s\n",
            CapturedLog::Lines()[0].text);
}

TEST_F(MethodTest, NeedsAClient) {
  method = std::make_unique<KEMethodImpl>();
  EXPECT_EQ(0u, ThrownAt(nullptr).find("SystemException: "));
  method = std::make_unique<KEMethod>();
  EXPECT_EQ(0u, ThrownAt(nullptr).find("NotImplementedException: "));
}

}  // namespace
}  // namespace KE::Service
