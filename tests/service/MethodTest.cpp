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
#include "tests/support/CapturedLog.h"

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

  // The message of the exception, which must be exactly of this class.
  template <typename Kind>
  std::string Thrown() {
    try {
      method->Invoke(targetNamespace, "Ping", "T", "v", result);
    } catch (const KELib::Exception& e) {
      EXPECT_EQ(typeid(Kind), typeid(e)) << typeid(e).name();
      return e.What();
    }
    return "nothing was thrown";
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
    client.answer = [name] { ThrowFault(name); };
    EXPECT_EQ(name, Thrown<KELib::SystemException>());
  }
  client.answer = [] { throw KELib::Soap::SoapException("No Response Received."); };
  EXPECT_EQ("No Response Received.", Thrown<KELib::SystemException>());
  EXPECT_STREQ("before", result.Cstr());
  client.answer = nullptr;
  EXPECT_EQ("nothing was thrown", Thrown<KELib::SystemException>());
}

// In a process of its own: revoked privileges stay revoked.
TEST_F(MethodTest, FullFaultNamesHaveTheirOwnClassesAndMayRevoke) {
  client.answer = [] { ThrowFault("InvalidPowerStateFault"); };
  EXPECT_EQ("InvalidPowerStateFault", Thrown<KE::InvalidPowerStateException>());
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        client.answer = [] { ThrowFault("NotAuthenticatedFault"); };
        Thrown<KELib::NotAuthenticatedException>();
        FakeClient other;
        method.reset(CreateMethod(&other));
        const std::string text = Thrown<KELib::NoPermissionException>();
        const bool refused = text == "Session privileges were revoked." && other.sent.empty();
        _exit(refused && !HasFailure() ? 7 : 1);
      },
      testing::ExitedWithCode(7), "");
}

TEST_F(MethodTest, OtherFailuresAreLoggedAndFlattened) {
  client.answer = [] { throw KELib::RequestTimedOutException("late"); };
  EXPECT_EQ("late", Thrown<KELib::RequestTimedOutException>());
  client.answer = [] { throw KELib::RequestFailedException("gone"); };
  EXPECT_EQ("gone", Thrown<KELib::RequestFailedException>());
  EXPECT_TRUE(CapturedLog::Lines().empty());

  client.answer = [] { throw KELib::NotAuthenticatedException("100%s"); };
  EXPECT_EQ("100%s", Thrown<KELib::Exception>());
  ASSERT_EQ(1u, CapturedLog::Lines().size());
  EXPECT_EQ("Unable to Invoke : Ping\n Content : \n\n - Exception : 100%s\n",
            CapturedLog::Lines()[0].text);
}

TEST_F(MethodTest, NeedsAClient) {
  method = std::make_unique<KEMethodImpl>();
  Thrown<KELib::SystemException>();
  method = std::make_unique<KEMethod>();
  EXPECT_EQ("NotImplementedException", Thrown<KELib::NotImplementedException>());
}

}  // namespace
}  // namespace KE::Service
